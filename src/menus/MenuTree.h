#pragma once

// The small tree interface the crawl and the press walk: children, title, role kind, enabled,
// checked, shortcut, press. The AT-SPI backend implements it; tests build trees in memory. Every
// read tolerates failure: an unreadable value is absent, an empty list, or the documented default.

#include "MenuCatalog.h"

#include <QHash>
#include <QList>
#include <QString>
#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>

namespace corvane {

class MenuNode {
public:
    virtual ~MenuNode() = default;

    virtual QList<std::shared_ptr<MenuNode>> children() = 0;
    virtual std::optional<QString> title() = 0;
    // The element whose children are this item's submenu entries, or null when the item is a
    // command (GTK: an item of role MENU is its own submenu; Qt: a MENU or POPUP_MENU child).
    virtual std::shared_ptr<MenuNode> submenu() = 0;
    virtual bool enabled() = 0; // true when unreadable
    virtual bool checked() = 0;
    virtual ShortcutKeys shortcut() = 0;

    struct PressResult {
        enum class Status { pressed, timedOut, error };
        Status status = Status::error;
        int code = 0; // for error: what the application or the bus answered
    };
    virtual PressResult press() = 0;
};

// One crawl's or press's budget: the deadline, and whether a request has timed out (a frozen
// application ends the crawl at once, like the deadline).
class WalkBudget {
public:
    using Clock = std::chrono::steady_clock;

    explicit WalkBudget(Clock::duration limit) : m_deadline(Clock::now() + limit) {}
    // No deadline (a press): far off but finite, so that time left can be computed safely.
    WalkBudget() : WalkBudget(std::chrono::hours(24 * 365)) {}

    bool exhausted() const { return m_timedOut || Clock::now() >= m_deadline; }
    void noteTimeout() { m_timedOut = true; }
    bool timedOut() const { return m_timedOut; }
    Clock::time_point deadline() const { return m_deadline; }
    // How long one request may wait: what is left of the budget, at least 1 ms, at most `capMs`.
    int requestTimeoutMs(int capMs) const
    {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(m_deadline - Clock::now());
        return int(std::clamp<qint64>(left.count(), 1, capMs));
    }

private:
    Clock::time_point m_deadline;
    bool m_timedOut = false;
};

// Why a menu bar could not be had; logged as the crawl's "AXError %d".
enum MenuBarError : int {
    menuBarFound = 0,
    busUnavailable = 1,
    applicationNotFound = 2,
    noMenuBar = 3,
    requestTimedOut = 4,
    // On the accessibility bus but publishing nothing: the application's start went wrong, and
    // only a restart brings it on.
    applicationUnpublished = 5,
    // Not listed yet, and started moments ago: it may still be joining.
    applicationStarting = 6,
};
QString describe(MenuBarError error);

// Where a walk starts: the menu bar of a process, read within the walk's budget. `error` is 0 when
// a menu bar was found.
class MenuSource {
public:
    virtual ~MenuSource() = default;

    struct MenuBar {
        std::shared_ptr<MenuNode> node;
        int error = 0;
        const char* source = "accessibility"; // for the log: where the menus were read
    };
    virtual MenuBar menuBar(qint64 pid, WalkBudget& budget) = 0;
};

// Several sources asked in order within one budget: the first menu bar found wins. Without one,
// the first source's answer stands (it says best why an application could not be read). A
// process is asked first where its menus were last found, so that its commands, their ids and a
// press keep to one source.
class FirstMenuSource : public MenuSource {
public:
    explicit FirstMenuSource(QList<std::shared_ptr<MenuSource>> sources)
        : m_sources(std::move(sources))
    {}
    MenuBar menuBar(qint64 pid, WalkBudget& budget) override;

private:
    QList<std::shared_ptr<MenuSource>> m_sources;
    QHash<qint64, qsizetype> m_lastFound; // used on the crawl thread only
};

} // namespace corvane
