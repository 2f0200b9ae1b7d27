#pragma once

// Menus a window exports as a DBusMenu (com.canonical.dbusmenu) and registers with the desktop's
// global-menu registrar (com.canonical.AppMenu.Registrar). Qt applications do so on a desktop with
// a global menu, whether or not they are on the accessibility bus, and Chromium-family browsers,
// which have no menu bar in their windows, do too. Corvane only asks a registrar that is there: it
// never takes the registrar's name, because while any process owns it, Qt applications that start
// take the menu bar out of their windows.
//
// A layout is read whole in one GetLayout call and bounded like an accessibility crawl: the item
// cap, the depth limit, the crawl's deadline and one-second requests. A submenu that comes back
// empty is asked for again after AboutToShow. Hidden items are left out; separators have no title.

#include "menus/MenuTree.h"

#include <QDBusArgument>
#include <QVariantMap>

namespace corvane::dbusmenu {

struct Item {
    int id = 0;
    QVariantMap properties;
    QList<Item> children;
};

// Reads GetLayout's layout, (ia{sv}av), taking at most `itemsLeft` items (counted down) and
// `levels` levels of children. Nothing when the argument is not a layout; a child that is not one
// is left out.
std::optional<Item> readLayout(const QDBusArgument& argument, int& itemsLeft, int levels);

// The first key sequence of a "shortcut" property ([["Control", "Shift", "s"]]) as keys in the
// desktop's order; none when a name is not a key.
ShortcutKeys shortcutFrom(const QList<QStringList>& sequences);

// The front window's DBusMenu through the registrar on the session bus (X11: the process's
// top-level windows are asked for in turn).
//
// Where no registrar runs and `mayBorrowRegistrar` says so (the user's "Read browser menus"), a
// Chromium-family browser is read all the same: Corvane owns the registrar's name for a few
// milliseconds on a connection of its own, notes the windows the browser registers (it does within
// 1–2 ms of the name appearing), lets the name go, and reads those menus directly (they stay
// exported). The price: a Qt application that starts in those milliseconds takes the menu bar out
// of its window.
class Source : public MenuSource {
public:
    explicit Source(std::function<bool()> mayBorrowRegistrar = [] { return false; })
        : m_mayBorrowRegistrar(std::move(mayBorrowRegistrar))
    {}
    MenuBar menuBar(qint64 pid, WalkBudget& budget) override;

private:
    std::function<bool()> m_mayBorrowRegistrar;
};

// Whether the process runs a Chromium-family browser (by its program's file name).
bool isChromiumBrowser(qint64 pid);

} // namespace corvane::dbusmenu

namespace corvane {
// Every source of an application's menus, in the order they are asked: its menu bar on the
// accessibility bus (also a hidden one), its window's DBusMenu, then a KDE application's actions.
std::shared_ptr<MenuSource> desktopMenuSources(std::function<bool()> mayBorrowRegistrar);
} // namespace corvane
