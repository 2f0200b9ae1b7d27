#pragma once

// AT-SPI 2 spoken directly over D-Bus on the accessibility bus: the registry's applications, a
// process's menu bar, and MenuNode over accessible objects. Requests are pipelined, each carries
// the 1-second time-out (less when the walk's deadline is nearer), and none may be made on the main
// thread.

#include "AtspiTypes.h"
#include "menus/MenuTree.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <atomic>
#include <memory>
#include <optional>

namespace corvane::atspi {

inline constexpr int requestTimeoutMs = 1000;

// `message` sent on `bus` and its answer waited for within `budget` (one request's time at the
// most); a time-out is noted in the budget. An error message when it failed or the budget is
// spent.
QDBusMessage callWithin(const QDBusConnection& bus, const QDBusMessage& message,
                        WalkBudget& budget);

// Bounds on what another application can make Corvane hold (docs/robustness.md). Requests are
// pipelined with at most `requestWindow` objects unanswered at a time; the children of an
// element are read in pages of `pageSize` as the walk reaches them, and only the first
// `maxChildren` of one element are considered. A title longer than `maxTitleLength` UTF-16 units
// is treated as unreadable (the item is skipped like an untitled one); so is a key binding longer
// than `maxKeyBindingLength`.
inline constexpr qsizetype requestWindow = 16;
inline constexpr qsizetype pageSize = 256;
inline constexpr qsizetype maxChildren = 10000;
inline constexpr qsizetype maxTitleLength = 1024;
inline constexpr qsizetype maxKeyBindingLength = 256;

// The accessibility bus of this session, connected once per process. Absent, with a reason,
// when the session bus or the a11y bus cannot be reached.
std::optional<QDBusConnection> accessibilityBus(QString* whyNot = nullptr);

// Forgets the key bindings kept for the next crawls (Session::recentKeyBinding): the crawl
// benchmark times crawls that read everything.
void forgetRecentKeyBindings();

// Requests sent from the main thread so far (there must be none; tests check it).
int mainThreadRequestCount();
// Connections made straight to an application (GetApplicationBusAddress) so far.
int directConnectionCount();
// Whether an address an application hands out may be connected to: one local socket, nothing
// else (a hostile answer must not make Corvane open a network connection).
bool isLocalPeerAddress(const QString& address);

struct ApplicationEntry {
    Reference root;
    qint64 pid = 0;
    QString name;    // the accessible name of the application
    QString toolkit; // "gtk", "Qt", …
};

class Session;

// The registry's applications with their process ids, this process left out.
QList<ApplicationEntry> applications(const std::shared_ptr<Session>& session);
// The registry's application of process `pid`. Only the bus itself and that application are
// asked, so a frozen application elsewhere on the bus holds nobody up.
std::optional<ApplicationEntry> application(const std::shared_ptr<Session>& session, qint64 pid);

// The process whose window is active now (a frame with state ACTIVE), for a workspace that starts
// after the last activation event; absent when none says so within two seconds.
std::optional<qint64> activeApplicationProcess();

// A process the registry does not list may still be on the bus: its toolkit asks the registry
// once, and a registration that failed leaves its objects on its own connection, which is then
// read directly. `why` tells the rest apart: on the bus with no objects (applicationUnpublished),
// not on the bus (applicationNotFound), or started less than `startupGraceSeconds` ago
// (applicationStarting; it is not asked at all, so that nothing adds to its start).
inline constexpr double startupGraceSeconds = 5;
std::optional<ApplicationEntry> unregisteredApplication(const std::shared_ptr<Session>& session,
                                                        qint64 pid, MenuBarError* why);

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
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    QDBusConnection& bus() { return m_bus; }
    WalkBudget& budget() { return m_budget; }
    bool isQt = false;
    std::shared_ptr<const ObjectTable> table;    // present when the application's cache was read
    QHash<QString, QString> keyBindings;         // object path → key binding, prefetched
    QHash<QString, QList<Reference>> childLists; // object path → GetChildren, prefetched
    bool notedOverlongTitle = false;             // logged once per session

    // Using the table, requests in one pipelined wave the children of every menu and the key
    // binding of every leaf item below `menuBar`.
    void prefetch(const QString& menuBarPath);

    // Asks the application at `root` for its own bus address and, when it gives a local one,
    // sends the requests for its objects there from then on: no bus daemon between, half the
    // hops and none of the daemon's work. Without one, everything goes over the bus as before.
    void connectDirectly(const Reference& root);

    // Key bindings a crawl of the same application read a moment ago, by bus name and object path:
    // the two crawls of one peek are about a second apart, and shortcuts do not change in between,
    // so the second one asks only for titles, states and children (a GTK menu bar of 500 items:
    // 500 requests fewer).
    std::optional<QString> recentKeyBinding(const Reference& object) const;
    void rememberKeyBinding(const Reference& object, const QString& binding);

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
    std::optional<QDBusConnection> m_peer; // the application's own connection, if any
    QString m_peerService;                 // its name on the bus, which references carry
};

class Node : public MenuNode, public std::enable_shared_from_this<Node> {
public:
    Node(std::shared_ptr<Session> session, Reference reference)
        : m_session(std::move(session)), m_reference(std::move(reference))
    {}

    const Reference& reference() const { return m_reference; }
    uint role();
    std::optional<quint64> states();
    int childCount();

    QList<std::shared_ptr<MenuNode>> children() override;
    std::optional<QString> title() override;
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
    // For applications without an object table (Qt): reads below `menuBar` what the walk will ask,
    // as the walk asks it (titled items only, submenus to the depth limit, the first page of each
    // element), one level of every menu per pipelined wave instead of one element at a time.
    // Bounded by the walk's budget and by itemCap + pageSize objects; the walk reads anything left
    // over as before.
    static void prefetchMenus(const std::shared_ptr<Node>& menuBar);

private:
    struct Siblings;
    // Reads this node's role, name, state and child count if not read yet, together with the
    // rest of its page of siblings.
    void ensureInfo();
    static void loadKeyBindings(const QList<std::shared_ptr<Node>>& nodes);
    // One read in two halves, so that reads of many nodes can be pipelined together.
    QList<QDBusPendingCall> sendInfo(); // role, name, state, child count
    void receiveInfo(QList<QDBusPendingCall>& calls);
    QDBusPendingCall sendKeyBinding();
    void receiveKeyBinding(QDBusPendingCall& call);
    // Takes the binding a crawl a moment ago read (Session::recentKeyBinding); false when none.
    bool takeRecentKeyBinding();
    QDBusPendingCall sendChildren();
    void receiveChildren(QDBusPendingCall& call);
    void adoptChildren(const QList<Reference>& references);
    void setName(const QString& name); // absent when longer than maxTitleLength
    // Whether the walk reads this item at all: it skips untitled ones (and too long titles).
    bool isTitled() const { return m_name && !m_name->isEmpty(); }
    ShortcutKeys parseKeyBinding(const QString& binding) const;

    std::shared_ptr<Session> m_session;
    Reference m_reference;
    std::optional<QString> m_name;
    uint m_role = 0;
    std::optional<quint64> m_states;
    int m_childCount = -1;
    bool m_infoLoaded = false;
    std::optional<QList<std::shared_ptr<Node>>> m_children;
    std::shared_ptr<Siblings> m_childPages; // owns the page state of m_children
    std::weak_ptr<Siblings> m_siblings;     // the page state of this node's own siblings
    qsizetype m_index = 0;                  // this node's place among them
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
