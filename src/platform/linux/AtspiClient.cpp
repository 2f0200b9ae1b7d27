#include "AtspiClient.h"

#include "AppIdentity.h"
#include "menus/MenuWalk.h"
#include "shortcuts/ShortcutDisplay.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusReply>
#include <QDBusVariant>
#include <QMutex>
#include <QThread>
#include <climits>
#include <deque>
#include <mutex>

namespace corvane::atspi {

namespace {

std::atomic<int> mainThreadRequests{0};

// How long a key binding read by one crawl serves the next crawls of the same application.
constexpr std::chrono::seconds keyBindingsKept{5};
struct RecentBinding {
    QString binding;
    std::chrono::steady_clock::time_point readAt;
};
QMutex recentBindingsLock;
QHash<QString, RecentBinding> recentBindings; // "service path" → binding
std::atomic<int> directConnections{0};

bool onMainThread()
{
    const QCoreApplication* app = QCoreApplication::instance();
    return app && QThread::currentThread() == app->thread();
}

template <typename T>
std::optional<T> firstArgument(const std::optional<QDBusMessage>& reply, const char* signature)
{
    if (!reply || reply->signature() != QLatin1String(signature) || reply->arguments().isEmpty())
        return std::nullopt;
    const QVariant value = reply->arguments().constFirst();
    if constexpr (std::is_same_v<T, QString> || std::is_same_v<T, uint> || std::is_same_v<T, int> ||
                  std::is_same_v<T, bool> || std::is_same_v<T, QStringList>) {
        return value.value<T>();
    } else {
        return qdbus_cast<T>(value.value<QDBusArgument>());
    }
}

// The value inside a Properties.Get reply ("v"), if it has the expected D-Bus type.
std::optional<QVariant> propertyValue(const std::optional<QDBusMessage>& reply, int metaType)
{
    if (!reply || reply->signature() != QLatin1String("v") || reply->arguments().isEmpty())
        return std::nullopt;
    const QVariant inner = reply->arguments().constFirst().value<QDBusVariant>().variant();
    if (inner.typeId() != metaType)
        return std::nullopt;
    return inner;
}

QVariantList propertyArguments(const QString& name)
{
    return {accessibleInterface, name};
}

// AT-SPI sends a state set as two 32-bit words; bit n of (w1 << 32) | w0 is state n.
std::optional<quint64> stateSet(const QList<uint>& words)
{
    if (words.size() < 2)
        return std::nullopt;
    return (quint64(words[1]) << 32) | words[0];
}

// The errors that mean the application did not answer in time.
bool isTimeout(const QDBusError& error)
{
    return error.type() == QDBusError::NoReply || error.type() == QDBusError::Timeout ||
           error.type() == QDBusError::TimedOut;
}

// A menu item without children: a command, whose key binding is read.
bool isLeafMenuItem(uint role, int childCount)
{
    return childCount == 0 &&
           (role == roleMenuItem || role == roleCheckMenuItem || role == roleRadioMenuItem);
}

// Sends `count` requests, `send(i)` making those of item i, with at most `requestWindow` items
// unanswered at a time, and hands each item's pending calls to `receive(i, pending)` in order.
template <typename Send, typename Receive>
void pipelined(qsizetype count, Send send, Receive receive)
{
    std::deque<decltype(send(qsizetype(0)))> inFlight;
    qsizetype sent = 0;
    for (qsizetype i = 0; i < count; ++i) {
        while (sent < count && sent - i < requestWindow)
            inFlight.push_back(send(sent++));
        receive(i, inFlight.front());
        inFlight.pop_front();
    }
}

} // namespace

void forgetRecentKeyBindings()
{
    const QMutexLocker locker(&recentBindingsLock);
    recentBindings.clear();
}

int mainThreadRequestCount()
{
    return mainThreadRequests.load();
}

std::optional<QDBusConnection> accessibilityBus(QString* whyNot)
{
    static QMutex lock;
    static std::optional<QDBusConnection> connection;
    const QMutexLocker locker(&lock);
    if (connection && connection->isConnected())
        return connection;

    registerTypes();
    QDBusConnection session = QDBusConnection::sessionBus();
    if (!session.isConnected()) {
        if (whyNot)
            *whyNot = QStringLiteral(
                "no D-Bus session bus (DBUS_SESSION_BUS_ADDRESS is not set or not reachable)");
        return std::nullopt;
    }
    QDBusMessage request = QDBusMessage::createMethodCall(
        QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
        QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress"));
    const QDBusReply<QString> address = session.call(request, QDBus::Block, requestTimeoutMs * 5);
    if (!address.isValid() || address.value().isEmpty()) {
        if (whyNot)
            *whyNot = QStringLiteral(
                "no accessibility bus: org.a11y.Bus does not answer (is at-spi2-core installed?)");
        return std::nullopt;
    }
    QDBusConnection bus =
        QDBusConnection::connectToBus(address.value(), QStringLiteral("corvane-a11y"));
    if (!bus.isConnected()) {
        if (whyNot)
            *whyNot =
                QStringLiteral("cannot connect to the accessibility bus at ") + address.value();
        return std::nullopt;
    }
    connection = bus;
    return connection;
}

QDBusPendingCall Session::send(const Reference& target, const QString& interface,
                               const QString& method, const QVariantList& arguments)
{
    if (onMainThread())
        ++mainThreadRequests;
    if (m_budget.exhausted())
        return QDBusPendingCall::fromError(
            QDBusError(QDBusError::TimedOut, QStringLiteral("deadline passed")));
    const bool direct = m_peer && target.service == m_peerService;
    QDBusMessage message = QDBusMessage::createMethodCall(direct ? QString() : target.service,
                                                          target.path.path(), interface, method);
    message.setArguments(arguments);
    return (direct ? *m_peer : m_bus)
        .asyncCall(message, m_budget.requestTimeoutMs(requestTimeoutMs));
}

QDBusMessage callWithin(const QDBusConnection& bus, const QDBusMessage& message, WalkBudget& budget)
{
    if (budget.exhausted())
        return message.createErrorReply(QDBusError::TimedOut, QStringLiteral("deadline passed"));
    const QDBusMessage reply =
        bus.call(message, QDBus::Block, budget.requestTimeoutMs(requestTimeoutMs));
    if (reply.errorName() == u"org.freedesktop.DBus.Error.NoReply")
        budget.noteTimeout();
    return reply;
}

bool isLocalPeerAddress(const QString& address)
{
    // One unix-socket address only: no TCP, no list of alternatives to fall through to.
    return (address.startsWith(u"unix:path=/") || address.startsWith(u"unix:abstract=")) &&
           !address.contains(u';');
}

int directConnectionCount()
{
    return directConnections.load();
}

Session::~Session()
{
    if (m_peer)
        QDBusConnection::disconnectFromPeer(m_peer->name());
}

void Session::connectDirectly(const Reference& root)
{
    const auto address = firstArgument<QString>(
        call(root, applicationInterface, QStringLiteral("GetApplicationBusAddress")), "s");
    if (!address || !isLocalPeerAddress(*address))
        return;
    static std::atomic<int> serial = 0;
    QDBusConnection peer = QDBusConnection::connectToPeer(
        *address, QStringLiteral("corvane-atspi-peer-%1").arg(++serial));
    if (!peer.isConnected()) {
        QDBusConnection::disconnectFromPeer(peer.name());
        return;
    }
    ++directConnections;
    m_peer = peer;
    m_peerService = root.service;
}

std::optional<QDBusMessage> Session::wait(QDBusPendingCall& call, QDBusError* error)
{
    call.waitForFinished();
    const QDBusMessage reply = call.reply();
    if (reply.type() == QDBusMessage::ReplyMessage)
        return reply;
    const QDBusError e = call.error();
    if (isTimeout(e))
        m_budget.noteTimeout();
    if (error)
        *error = e;
    return std::nullopt;
}

std::optional<QDBusMessage> Session::call(const Reference& target, const QString& interface,
                                          const QString& method, const QVariantList& arguments,
                                          QDBusError* error)
{
    QDBusPendingCall pending = send(target, interface, method, arguments);
    return wait(pending, error);
}

namespace {

const Reference busDaemon{QStringLiteral("org.freedesktop.DBus"),
                          QDBusObjectPath("/org/freedesktop/DBus")};

std::optional<QList<Reference>> registryChildren(Session& session)
{
    const Reference registry{registryService, QDBusObjectPath(rootPath)};
    auto roots = firstArgument<QList<Reference>>(
        session.call(registry, accessibleInterface, QStringLiteral("GetChildren")), "a(so)");
    if (roots)
        roots->removeIf([](const Reference& root) { return root.isNull(); });
    return roots;
}

QDBusPendingCall sendProcessId(Session& session, const Reference& root)
{
    return session.send(busDaemon, QStringLiteral("org.freedesktop.DBus"),
                        QStringLiteral("GetConnectionUnixProcessID"), {root.service});
}

struct PendingEntry {
    QDBusPendingCall name, toolkit;
};

PendingEntry sendNameAndToolkit(Session& session, const Reference& root)
{
    return {
        session.send(root, propertiesInterface, QStringLiteral("Get"), propertyArguments("Name")),
        session.send(root, propertiesInterface, QStringLiteral("Get"),
                     {applicationInterface, QStringLiteral("ToolkitName")})};
}

ApplicationEntry entry(Session& session, const Reference& root, qint64 pid, PendingEntry& pending)
{
    const auto name = propertyValue(session.wait(pending.name), QMetaType::QString);
    const auto toolkit = propertyValue(session.wait(pending.toolkit), QMetaType::QString);
    return {root, pid, name ? name->toString().left(maxTitleLength) : QString(),
            toolkit ? toolkit->toString().left(maxTitleLength) : QString()};
}

} // namespace

QList<ApplicationEntry> applications(const std::shared_ptr<Session>& session)
{
    const auto roots = registryChildren(*session);
    if (!roots)
        return {};
    // Pipelined: each application's process id, name and toolkit.
    struct Pending {
        QDBusPendingCall pid;
        PendingEntry entry;
    };
    QList<ApplicationEntry> result;
    const qint64 self = QCoreApplication::applicationPid();
    pipelined(
        roots->size(),
        [&](qsizetype i) {
            const Reference& root = (*roots)[i];
            return Pending{sendProcessId(*session, root), sendNameAndToolkit(*session, root)};
        },
        [&](qsizetype i, Pending& p) {
            const auto pid = firstArgument<uint>(session->wait(p.pid), "u");
            ApplicationEntry e = entry(*session, (*roots)[i], pid.value_or(0), p.entry);
            if (pid && qint64(*pid) != self) // Corvane's own windows are on the bus too
                result.append(e);
        });
    return result;
}

std::optional<ApplicationEntry> application(const std::shared_ptr<Session>& session, qint64 pid)
{
    const auto roots = registryChildren(*session);
    if (!roots)
        return std::nullopt;
    // The bus answers the process ids; of several roots of one process, the last one counts.
    std::optional<Reference> found;
    pipelined(
        roots->size(), [&](qsizetype i) { return sendProcessId(*session, (*roots)[i]); },
        [&](qsizetype i, QDBusPendingCall& call) {
            if (firstArgument<uint>(session->wait(call), "u") == uint(pid))
                found = (*roots)[i];
        });
    if (!found)
        return std::nullopt;
    PendingEntry pending = sendNameAndToolkit(*session, *found);
    return entry(*session, *found, pid, pending);
}

std::optional<ApplicationEntry> unregisteredApplication(const std::shared_ptr<Session>& session,
                                                        qint64 pid, MenuBarError* why)
{
    if (AppIdentity::secondsSinceStart(pid).value_or(startupGraceSeconds) < startupGraceSeconds) {
        *why = applicationStarting;
        return std::nullopt;
    }
    *why = applicationNotFound;
    const auto names =
        firstArgument<QStringList>(session->call(busDaemon, QStringLiteral("org.freedesktop.DBus"),
                                                 QStringLiteral("ListNames")),
                                   "as");
    if (!names)
        return std::nullopt;
    QList<Reference> connections;
    for (const QString& name : *names)
        if (name.startsWith(u':') && connections.size() < maxChildren)
            connections.append(Reference{name, QDBusObjectPath(rootPath)});
    QList<Reference> ofProcess;
    pipelined(
        connections.size(), [&](qsizetype i) { return sendProcessId(*session, connections[i]); },
        [&](qsizetype i, QDBusPendingCall& call) {
            if (firstArgument<uint>(session->wait(call), "u") == uint(pid))
                ofProcess.append(connections[i]);
        });
    for (const Reference& root : ofProcess) {
        const auto role = firstArgument<uint>(
            session->call(root, accessibleInterface, QStringLiteral("GetRole")), "u");
        if (role != uint(roleApplication))
            continue;
        PendingEntry pending = sendNameAndToolkit(*session, root);
        return entry(*session, root, pid, pending);
    }
    if (!ofProcess.isEmpty() && !session->budget().timedOut())
        *why = applicationUnpublished;
    return std::nullopt;
}

// Four requests per node. Properties.GetAll would fold Name and ChildCount into one, but Qt 6.4's
// bridge crashes the application on it (measured here: featherpad segfaults): never send it.
// Qt, which has no object table, is asked for the children themselves instead of their count:
// the same number of requests, and an item's submenu element, and a menu's items, are known
// one round trip sooner (two fewer waves per menu level).
QList<QDBusPendingCall> Node::sendInfo()
{
    Session& session = *m_session;
    const Reference& r = m_reference;
    return {session.send(r, accessibleInterface, QStringLiteral("GetRole")),
            session.send(r, propertiesInterface, QStringLiteral("Get"), propertyArguments("Name")),
            session.send(r, accessibleInterface, QStringLiteral("GetState")),
            session.isQt ? sendChildren()
                         : session.send(r, propertiesInterface, QStringLiteral("Get"),
                                        propertyArguments("ChildCount"))};
}

void Node::receiveInfo(QList<QDBusPendingCall>& calls)
{
    Session& session = *m_session;
    m_infoLoaded = true;
    m_role = firstArgument<uint>(session.wait(calls[0]), "u").value_or(0);
    if (const auto name = propertyValue(session.wait(calls[1]), QMetaType::QString))
        setName(name->toString());
    if (const auto words = firstArgument<QList<uint>>(session.wait(calls[2]), "au"))
        m_states = stateSet(*words);
    if (!session.isQt) {
        m_childCount =
            propertyValue(session.wait(calls[3]), QMetaType::Int).value_or(QVariant(-1)).toInt();
    } else if (const auto references =
                   firstArgument<QList<Reference>>(session.wait(calls[3]), "a(so)")) {
        m_childCount = int(std::min<qsizetype>(references->size(), INT_MAX));
        if (!m_children) // children already read keep theirs
            adoptChildren(*references);
    }
}

QDBusPendingCall Node::sendKeyBinding()
{
    return m_session->send(m_reference, actionInterface, QStringLiteral("GetKeyBinding"), {0});
}

void Node::receiveKeyBinding(QDBusPendingCall& call)
{
    const auto binding = firstArgument<QString>(m_session->wait(call), "s");
    m_shortcut = binding ? parseKeyBinding(*binding) : ShortcutKeys::none;
    if (binding)
        m_session->rememberKeyBinding(m_reference, *binding);
}

bool Node::takeRecentKeyBinding()
{
    const auto binding = m_session->recentKeyBinding(m_reference);
    if (binding)
        m_shortcut = parseKeyBinding(*binding);
    return binding.has_value();
}

std::optional<QString> Session::recentKeyBinding(const Reference& object) const
{
    const QMutexLocker locker(&recentBindingsLock);
    const auto it = recentBindings.constFind(object.service + u' ' + object.path.path());
    if (it == recentBindings.constEnd() ||
        std::chrono::steady_clock::now() - it->readAt > keyBindingsKept)
        return std::nullopt;
    return it->binding;
}

void Session::rememberKeyBinding(const Reference& object, const QString& binding)
{
    const auto now = std::chrono::steady_clock::now();
    const QMutexLocker locker(&recentBindingsLock);
    // Old ones go first: the table holds the last few seconds' crawls and nothing more.
    recentBindings.removeIf(
        [now](const auto& entry) { return now - entry.value().readAt > keyBindingsKept; });
    recentBindings.insert(object.service + u' ' + object.path.path(), {binding, now});
}

QDBusPendingCall Node::sendChildren()
{
    return m_session->send(m_reference, accessibleInterface, QStringLiteral("GetChildren"));
}

void Node::receiveChildren(QDBusPendingCall& call)
{
    adoptChildren(firstArgument<QList<Reference>>(m_session->wait(call), "a(so)")
                      .value_or(QList<Reference>()));
}

void Node::loadInfo(const QList<std::shared_ptr<Node>>& nodes)
{
    pipelined(
        nodes.size(), [&](qsizetype i) { return nodes[i]->sendInfo(); },
        [&](qsizetype i, QList<QDBusPendingCall>& calls) { nodes[i]->receiveInfo(calls); });
}

void Node::prefetchMenus(const std::shared_ptr<Node>& menuBar)
{
    // What one wave asks of a node, and why: `depth` is the walk's depth of the submenu that lists
    // the node (the menu bar's children: 0).
    enum class Ask { children, itemChildren, info, candidateInfo, keyBinding };
    struct Request {
        std::shared_ptr<Node> node;
        Ask ask;
        int depth;
    };
    QList<Request> wave;
    QList<Request> deciding; // Qt items whose children's roles the wave reads
    if (menuBar->m_children)
        for (const auto& child : menuBar->m_children->mid(0, pageSize))
            wave.append({child, Ask::info, 0});
    else if (menuBar->m_childCount != 0)
        wave.append({menuBar, Ask::children, -1});
    qsizetype objects = 0; // whose info was asked; past the limit the walk reads in pages
    const qsizetype objectLimit = MenuWalk::itemCap + pageSize;

    while (!wave.isEmpty() && !menuBar->m_session->budget().exhausted()) {
        pipelined(
            wave.size(),
            [&](qsizetype i) -> QList<QDBusPendingCall> {
                Node& node = *wave[i].node;
                switch (wave[i].ask) {
                case Ask::children:
                case Ask::itemChildren:
                    return {node.sendChildren()};
                case Ask::info:
                case Ask::candidateInfo:
                    return node.sendInfo();
                case Ask::keyBinding:
                    return {node.sendKeyBinding()};
                }
                return {};
            },
            [&](qsizetype i, QList<QDBusPendingCall>& calls) {
                Node& node = *wave[i].node;
                switch (wave[i].ask) {
                case Ask::children:
                case Ask::itemChildren:
                    node.receiveChildren(calls[0]);
                    break;
                case Ask::info:
                case Ask::candidateInfo:
                    node.receiveInfo(calls);
                    break;
                case Ask::keyBinding:
                    node.receiveKeyBinding(calls[0]);
                    break;
                }
            });

        // The next wave: what the walk will ask next, as it would ask it.
        QList<Request> next, nextDeciding;
        const auto ask = [&](const std::shared_ptr<Node>& node, Ask what, int depth) {
            if ((what == Ask::info || what == Ask::candidateInfo) && objects++ >= objectLimit)
                return false;
            if (what == Ask::keyBinding && node->takeRecentKeyBinding())
                return true;
            next.append({node, what, depth});
            return true;
        };
        // A submenu element's first page of items, or its children first where not yet known.
        const auto askItems = [&](const std::shared_ptr<Node>& element, int depth) {
            if (!element->m_children) {
                ask(element, Ask::children, depth);
                return;
            }
            for (const auto& child : element->m_children->mid(0, pageSize))
                ask(child, Ask::info, depth + 1);
        };
        // A Qt item's children, to find which is its submenu element (decided once the next
        // wave has read their roles), or its children first where not yet known.
        const auto askCandidates = [&](const Request& item) {
            if (!item.node->m_children) {
                ask(item.node, Ask::itemChildren, item.depth);
                return;
            }
            bool asked = false;
            for (const auto& child : item.node->m_children->mid(0, pageSize))
                asked = ask(child, Ask::candidateInfo, item.depth) || asked;
            if (asked)
                nextDeciding.append(item);
            if (item.node->m_children->isEmpty())
                ask(item.node, Ask::keyBinding, item.depth); // no submenu: a command
        };
        // A Qt item's submenu element is its first child of role MENU or POPUP_MENU.
        for (const Request& r : std::as_const(deciding)) {
            std::shared_ptr<Node> submenu;
            for (const auto& child : *r.node->m_children)
                if (!submenu && child->m_infoLoaded &&
                    (child->m_role == roleMenu || child->m_role == rolePopupMenu))
                    submenu = child;
            if (!submenu)
                ask(r.node, Ask::keyBinding, r.depth);
            else if (submenu->m_childCount != 0 && r.depth < MenuWalk::depthLimit)
                askItems(submenu, r.depth);
        }
        for (const Request& r : std::as_const(wave)) {
            const auto& node = r.node;
            switch (r.ask) {
            case Ask::children: // a submenu element: its first page of items
                askItems(node, r.depth);
                break;
            case Ask::itemChildren: // a Qt item: which child is its submenu element
                askCandidates(r);
                break;
            case Ask::info:
                if (!node->isTitled())
                    break;                      // the walk skips it
                if (node->m_role == roleMenu) { // GTK: the item is its own submenu element
                    if (node->m_childCount != 0 && r.depth < MenuWalk::depthLimit)
                        askItems(node, r.depth);
                } else if (node->m_childCount != 0) {
                    askCandidates(r);
                } else {
                    ask(node, Ask::keyBinding, r.depth);
                }
                break;
            case Ask::candidateInfo: // decided with its item, above
            case Ask::keyBinding:
                break;
            }
        }
        wave = std::move(next);
        deciding = std::move(nextDeciding);
    }
}

void Node::setName(const QString& name)
{
    if (name.size() <= maxTitleLength) {
        m_name = name;
        return;
    }
    m_name.reset();
    if (!m_session->notedOverlongTitle) {
        m_session->notedOverlongTitle = true;
        qCWarning(lcCrawl,
                  "crawl: skipping items whose titles are longer than %ld characters (one is %ld)",
                  long(maxTitleLength), long(name.size()));
    }
}

void Session::prefetch(const QString& menuBarPath)
{
    if (!table)
        return;
    // Bounded like the crawl: depth 6 below the menu bar and a little past the item cap.
    QStringList leaves, menus{menuBarPath};
    QList<std::pair<QString, int>> stack{{menuBarPath, 0}};
    while (!stack.isEmpty() && leaves.size() < 3000) {
        const auto [path, depth] = stack.takeLast();
        for (const QString& child : table->childrenOf.value(path)) {
            const CacheItem& item = table->byPath[child];
            if (isLeafMenuItem(item.role, item.childCount)) {
                leaves.append(child);
            } else if (depth < 6 && item.childCount != 0) {
                menus.append(child);
                stack.append({child, depth + 1});
            }
        }
    }
    QStringList unread;
    for (const QString& leaf : std::as_const(leaves)) {
        if (const auto binding = recentKeyBinding(table->byPath.value(leaf).object))
            keyBindings.insert(leaf, *binding);
        else
            unread.append(leaf);
    }
    pipelined(
        unread.size(),
        [&](qsizetype i) {
            return send(table->byPath.value(unread[i]).object, actionInterface,
                        QStringLiteral("GetKeyBinding"), {0});
        },
        [&](qsizetype i, QDBusPendingCall& call) {
            if (const auto binding = firstArgument<QString>(wait(call), "s")) {
                keyBindings.insert(unread[i], *binding);
                rememberKeyBinding(table->byPath.value(unread[i]).object, *binding);
            }
        });
    pipelined(
        menus.size(),
        [&](qsizetype i) {
            return send(table->byPath.value(menus[i]).object, accessibleInterface,
                        QStringLiteral("GetChildren"));
        },
        [&](qsizetype i, QDBusPendingCall& call) {
            if (const auto references = firstArgument<QList<Reference>>(wait(call), "a(so)"))
                childLists.insert(menus[i], *references);
        });
}

void Node::loadKeyBindings(const QList<std::shared_ptr<Node>>& nodes)
{
    QList<std::shared_ptr<Node>> leaves;
    for (const auto& node : nodes) {
        if (node->m_shortcut)
            continue; // read by the level-wise prefetch
        const auto prefetched =
            node->m_session->keyBindings.constFind(node->m_reference.path.path());
        if (prefetched != node->m_session->keyBindings.constEnd())
            node->m_shortcut = node->parseKeyBinding(*prefetched);
        else if (isLeafMenuItem(node->m_role, node->m_childCount) && node->isTitled() &&
                 !node->takeRecentKeyBinding())
            leaves.append(node);
    }
    pipelined(
        leaves.size(), [&](qsizetype i) { return leaves[i]->sendKeyBinding(); },
        [&](qsizetype i, QDBusPendingCall& call) { leaves[i]->receiveKeyBinding(call); });
}

// The children of one element, read in pages as the walk reaches them: a walk that stops at
// the item cap or the deadline asks nothing about the items after that point.
struct Node::Siblings {
    QList<std::shared_ptr<Node>> nodes;
    qsizetype loaded = 0; // nodes before this have been read

    void loadThrough(qsizetype index)
    {
        if (index < loaded)
            return;
        const qsizetype end = std::min(nodes.size(), std::max(index + 1, loaded + pageSize));
        const QList<std::shared_ptr<Node>> page = nodes.mid(loaded, end - loaded);
        loaded = end;
        QList<std::shared_ptr<Node>> unread;
        for (const auto& node : page)
            if (!node->m_infoLoaded)
                unread.append(node);
        loadInfo(unread);
        loadKeyBindings(page);
    }
};

void Node::ensureInfo()
{
    // Table nodes come with their info, but their page still reads its key bindings.
    if (const auto siblings = m_siblings.lock())
        siblings->loadThrough(m_index);
    if (!m_infoLoaded)
        loadInfo({shared_from_this()});
}

uint Node::role()
{
    ensureInfo();
    return m_role;
}

std::optional<quint64> Node::states()
{
    ensureInfo();
    return m_states;
}

int Node::childCount()
{
    ensureInfo();
    return m_childCount;
}

std::shared_ptr<Node> Node::fromTable(const std::shared_ptr<Session>& session,
                                      const CacheItem& item)
{
    auto node = std::make_shared<Node>(session, item.object);
    node->setName(item.name);
    node->m_role = item.role;
    node->m_states = stateSet(item.states);
    node->m_childCount = item.childCount;
    node->m_infoLoaded = true;
    return node;
}

QList<std::shared_ptr<Node>> Node::childNodes()
{
    if (m_children)
        return *m_children;
    ensureInfo();
    m_children.emplace();
    if (m_childCount == 0)
        return *m_children;
    const auto prefetched = m_session->childLists.constFind(m_reference.path.path());
    if (prefetched != m_session->childLists.constEnd()) {
        adoptChildren(*prefetched);
    } else {
        QDBusPendingCall call = sendChildren();
        receiveChildren(call);
    }
    return *m_children;
}

void Node::adoptChildren(const QList<Reference>& references)
{
    // The order comes from GetChildren: GTK's object cache gives menu items no index in their
    // parent (-1). What the cache does know (role, name, state, child count) is not asked again.
    m_children.emplace();
    const auto& table = m_session->table;
    m_childPages = std::make_shared<Siblings>();
    for (const Reference& r : references) {
        if (r.isNull())
            continue;
        if (m_children->size() == maxChildren)
            break;
        const auto cached = table ? table->byPath.constFind(r.path.path())
                                  : QHash<QString, CacheItem>::const_iterator();
        auto child = table && cached != table->byPath.constEnd()
                         ? fromTable(m_session, *cached)
                         : std::make_shared<Node>(m_session, r);
        child->m_siblings = m_childPages;
        child->m_index = m_children->size();
        m_children->append(child);
    }
    m_childPages->nodes = *m_children;
}

QList<std::shared_ptr<MenuNode>> Node::children()
{
    const auto nodes = childNodes();
    return {nodes.begin(), nodes.end()};
}

std::shared_ptr<MenuNode> Node::submenu()
{
    // GTK: an item of role MENU is its own submenu element. Qt: an item with a MENU or
    // POPUP_MENU child has that child as its submenu element.
    ensureInfo();
    if (m_role == roleMenu)
        return shared_from_this();
    if (m_childCount == 0)
        return nullptr;
    for (const auto& child : childNodes())
        if (child->role() == roleMenu || child->role() == rolePopupMenu)
            return child;
    return nullptr;
}

std::optional<QString> Node::title()
{
    ensureInfo();
    return m_name;
}

bool Node::enabled()
{
    ensureInfo();
    if (!m_states)
        return true;
    return hasState(*m_states, stateEnabled) || hasState(*m_states, stateSensitive);
}

bool Node::checked()
{
    ensureInfo();
    return m_states && hasState(*m_states, stateChecked);
}

ShortcutKeys Node::parseKeyBinding(const QString& binding) const
{
    if (binding.size() > maxKeyBindingLength)
        return ShortcutKeys::none;
    if (!m_session->isQt) {
        // GTK: "mnemonic;path;accelerator"; the third field is the accelerator.
        const QStringList fields = binding.split(u';');
        return ShortcutDisplay::fromAccelerator(fields.size() >= 3 ? fields[2] : QString());
    }
    const ShortcutKeys keys = ShortcutDisplay::fromAccelerator(binding);
    // Qt answers with the item's mnemonic when it has no shortcut.
    if (ShortcutDisplay::isQtMnemonic(keys, m_name.value_or(QString())))
        return ShortcutKeys::none;
    return keys;
}

ShortcutKeys Node::shortcut()
{
    ensureInfo();
    if (!m_shortcut && !takeRecentKeyBinding()) {
        QDBusPendingCall call = sendKeyBinding();
        receiveKeyBinding(call);
    }
    return *m_shortcut;
}

MenuNode::PressResult Node::press()
{
    // The action named "click" (GTK) or "Press" (Qt), else action 0.
    int index = 0;
    if (const auto actions = firstArgument<QList<ActionInfo>>(
            m_session->call(m_reference, actionInterface, QStringLiteral("GetActions")),
            "a(sss)")) {
        for (qsizetype i = 0; i < actions->size(); ++i) {
            if ((*actions)[i].name == u"click" || (*actions)[i].name == u"Press") {
                index = int(i);
                break;
            }
        }
    }
    QDBusError error;
    const auto reply =
        m_session->call(m_reference, actionInterface, QStringLiteral("DoAction"), {index}, &error);
    if (reply) {
        const auto done = firstArgument<bool>(reply, "b");
        if (done && *done)
            return {PressResult::Status::pressed, 0};
        return {PressResult::Status::error, -1}; // the application answered that it did not act
    }
    if (isTimeout(error))
        return {PressResult::Status::timedOut, 0};
    return {PressResult::Status::error, int(error.type())};
}

void ensureEventListener(QDBusConnection& bus)
{
    static std::once_flag once;
    std::call_once(once, [&bus] {
        QDBusMessage message = QDBusMessage::createMethodCall(
            registryService, QStringLiteral("/org/a11y/atspi/registry"),
            QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("RegisterEvent"));
        message.setArguments({QStringLiteral("window:activate"), QStringList(), QString()});
        bus.call(message, QDBus::Block, requestTimeoutMs);
    });
}

std::shared_ptr<const ObjectTable> readObjectTable(Session& session, const Reference& root)
{
    const auto reply = session.call(Reference{root.service, QDBusObjectPath(cachePath)},
                                    cacheInterface, QStringLiteral("GetItems"));
    if (!reply || reply->signature() != QLatin1String("a((so)(so)(so)iiassusau)") ||
        reply->arguments().isEmpty())
        return nullptr;
    const auto items =
        qdbus_cast<QList<CacheItem>>(reply->arguments().constFirst().value<QDBusArgument>());
    if (items.isEmpty())
        return nullptr;
    auto table = std::make_shared<ObjectTable>();
    for (const CacheItem& item : items) {
        const QString path = item.object.path.path();
        table->byPath.insert(path, item);
        table->childrenOf[item.parent.path.path()].append(path);
    }
    return table;
}

std::optional<qint64> activeApplicationProcess()
{
    const auto bus = accessibilityBus();
    if (!bus)
        return std::nullopt;
    WalkBudget budget(std::chrono::seconds(2));
    auto session = std::make_shared<Session>(*bus, budget);
    for (const ApplicationEntry& app : applications(session)) {
        auto root = std::make_shared<Node>(session, app.root);
        const QList<std::shared_ptr<Node>> windows = root->childNodes();
        Node::loadInfo(windows);
        for (const auto& window : windows)
            if (window->states() && hasState(*window->states(), stateActive))
                return app.pid;
        if (budget.exhausted())
            break;
    }
    return std::nullopt;
}

MenuSource::MenuBar MenuBarFinder::menuBar(qint64 pid, WalkBudget& budget)
{
    const auto bus = accessibilityBus();
    if (!bus)
        return {nullptr, busUnavailable};
    auto session = std::make_shared<Session>(*bus, budget);
    std::optional<ApplicationEntry> entry = application(session, pid);
    MenuBarError missing = applicationNotFound;
    if (!entry && !budget.timedOut())
        entry = unregisteredApplication(session, pid, &missing);
    if (!entry)
        return {nullptr, budget.timedOut() ? requestTimedOut : missing};
    session->isQt = entry->toolkit == u"Qt";

    // GTK publishes every object, closed menus included, in one call; Qt's cache is empty, so
    // Qt applications are read level by level.
    std::shared_ptr<Node> root;
    if (!session->isQt) {
        // GTK answers on a connection of its own, without the bus daemon between (Qt has none).
        session->connectDirectly(entry->root);
        ensureEventListener(session->bus());
        session->table = readObjectTable(*session, entry->root);
        if (session->table && session->table->byPath.contains(rootPath))
            root = Node::fromTable(session, session->table->byPath.value(rootPath));
        else
            session->table = nullptr;
    }
    if (!root) {
        root = std::make_shared<Node>(session, entry->root);
        Node::loadInfo({root});
    }
    QList<std::shared_ptr<Node>> frames;
    for (const auto& child : root->childNodes())
        if (child->role() == roleFrame)
            frames.append(child);
    if (frames.isEmpty())
        frames = root->childNodes();
    // The frame with state ACTIVE, else the first SHOWING one, else the first.
    std::shared_ptr<Node> frame;
    for (const auto& f : frames)
        if (!frame && f->states() && hasState(*f->states(), stateActive))
            frame = f;
    for (const auto& f : frames)
        if (!frame && f->states() && hasState(*f->states(), stateShowing))
            frame = f;
    if (!frame && !frames.isEmpty())
        frame = frames.first();
    if (!frame)
        return {nullptr, budget.timedOut() ? requestTimedOut : noMenuBar};

    QList<std::shared_ptr<Node>> level{frame};
    for (int depth = 0; depth < 8 && !level.isEmpty(); ++depth) {
        QList<std::shared_ptr<Node>> next;
        for (const auto& node : level) {
            for (const auto& child : node->childNodes()) {
                if (child->role() == roleMenuBar) {
                    if (session->table)
                        session->prefetch(child->reference().path.path());
                    else
                        Node::prefetchMenus(child);
                    return {child, menuBarFound};
                }
                next.append(child);
            }
        }
        level = next;
    }
    return {nullptr, budget.timedOut() ? requestTimedOut : noMenuBar};
}

} // namespace corvane::atspi
