#pragma once

// AT-SPI 2 spoken directly over D-Bus on the accessibility bus (PLATFORM.md): the registry's
// applications, a process's menu bar, and MenuNode over accessible objects. Requests are
// pipelined, each carries the 1-second time-out (less when the walk's deadline is nearer), and
// none may be made on the main thread.

#include "AtspiTypes.h"
#include "menus/MenuTree.h"

#include <QDBusConnection>
#include <atomic>
#include <memory>
#include <optional>

namespace corvane::atspi {

// Why a menu bar could not be had; logged as the crawl's "AXError %d".
enum MenuBarError : int {
    menuBarFound = 0,
    busUnavailable = 1,
    applicationNotFound = 2,
    noMenuBar = 3,
    requestTimedOut = 4,
};
QString describe(MenuBarError error);

inline constexpr int requestTimeoutMs = 1000;

// The accessibility bus of this session, connected once per process. Absent, with a reason,
// when the session bus or the a11y bus cannot be reached.
std::optional<QDBusConnection> accessibilityBus(QString* whyNot = nullptr);

// Requests sent from the main thread so far (there must be none; tests check it).
int mainThreadRequestCount();

struct ApplicationEntry {
    Reference root;
    qint64 pid = 0;
    QString name;    // the accessible name of the application
    QString toolkit; // "gtk", "Qt", …
};

class Session;

// The registry's applications with their process ids, this process left out.
QList<ApplicationEntry> applications(const std::shared_ptr<Session>& session);

// A whole application's objects from one Cache.GetItems call (GTK fills it once a client has
// registered an event listener), indexed by object path. Menu items carry no index in their
// parent there, so the table answers what an object is, never in which order children come.
struct ObjectTable {
    QHash<QString, CacheItem> byPath;
    QHash<QString, QList<QString>> childrenOf; // parent path → child paths, in no particular order
};

class Session : public std::enable_shared_from_this<Session> {
public:
    Session(QDBusConnection bus, WalkBudget& budget) : m_bus(std::move(bus)), m_budget(budget) {}

    QDBusConnection& bus() { return m_bus; }
    WalkBudget& budget() { return m_budget; }
    bool isQt = false;
    std::shared_ptr<const ObjectTable> table;    // present when the application's cache was read
    QHash<QString, QString> keyBindings;         // object path → key binding, prefetched
    QHash<QString, QList<Reference>> childLists; // object path → GetChildren, prefetched

    // Using the table, requests in one pipelined wave the children of every menu and the key
    // binding of every leaf item below `menuBar`.
    void prefetch(const QString& menuBarPath);

    // Sends without waiting. An invalid call is returned once the budget is exhausted.
    QDBusPendingCall send(const Reference& target, const QString& interface, const QString& method,
                          const QVariantList& arguments = {});
    // Waits for one reply; a time-out is noted in the budget. Absent on any error.
    std::optional<QDBusMessage> wait(QDBusPendingCall& call, QDBusError* error = nullptr);
    std::optional<QDBusMessage> call(const Reference& target, const QString& interface,
                                     const QString& method, const QVariantList& arguments = {},
                                     QDBusError* error = nullptr);

private:
    QDBusConnection m_bus;
    WalkBudget& m_budget;
};

class Node : public MenuNode, public std::enable_shared_from_this<Node> {
public:
    Node(std::shared_ptr<Session> session, Reference reference)
        : m_session(std::move(session)), m_reference(std::move(reference))
    {}

    const Reference& reference() const { return m_reference; }
    uint role() const { return m_role; }
    std::optional<quint64> states() const { return m_states; }
    int childCount() const { return m_childCount; }

    QList<std::shared_ptr<MenuNode>> children() override;
    std::optional<QString> title() override { return m_name; }
    std::shared_ptr<MenuNode> submenu() override;
    bool enabled() override;
    bool checked() override;
    ShortcutKeys shortcut() override;
    PressResult press() override;

    QList<std::shared_ptr<Node>> childNodes();
    // A node whose role, name, state and child count come from the object table.
    static std::shared_ptr<Node> fromTable(const std::shared_ptr<Session>& session,
                                           const CacheItem& item);
    // Reads role, name, state and child count of every node in one pipelined round.
    static void loadInfo(const QList<std::shared_ptr<Node>>& nodes);

private:
    static void loadKeyBindings(const QList<std::shared_ptr<Node>>& nodes);
    ShortcutKeys parseKeyBinding(const QString& binding) const;

    std::shared_ptr<Session> m_session;
    Reference m_reference;
    std::optional<QString> m_name;
    uint m_role = 0;
    std::optional<quint64> m_states;
    int m_childCount = -1;
    std::optional<QList<std::shared_ptr<Node>>> m_children;
    std::optional<ShortcutKeys> m_shortcut;
};

// MenuSource over the accessibility bus: finds the process on the registry, its frame and,
// breadth-first at most 8 levels below it, the first MENU_BAR.
class MenuBarFinder : public MenuSource {
public:
    MenuBar menuBar(qint64 pid, WalkBudget& budget) override;
};

// Registers an event listener with the registry once per process, so that GTK applications
// publish their object cache.
void ensureEventListener(QDBusConnection& bus);
// The application's whole object table, or null when it publishes none (Qt).
std::shared_ptr<const ObjectTable> readObjectTable(Session& session, const Reference& root);

} // namespace corvane::atspi
