#include "AtspiClient.h"

#include "shortcuts/ShortcutDisplay.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusReply>
#include <QDBusVariant>
#include <QMutex>
#include <QThread>
#include <mutex>

namespace corvane::atspi {

namespace {

std::atomic<int> mainThreadRequests{0};

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
                  std::is_same_v<T, bool>) {
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

} // namespace

QString describe(MenuBarError error)
{
    switch (error) {
    case menuBarFound:
        return QStringLiteral("found");
    case busUnavailable:
        return QStringLiteral("the accessibility bus is not reachable");
    case applicationNotFound:
        return QStringLiteral("the application is not on the accessibility bus");
    case noMenuBar:
        return QStringLiteral("the application shows no menu bar");
    case requestTimedOut:
        return QStringLiteral("the application did not answer in time");
    }
    return QStringLiteral("unknown");
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
    QDBusMessage message =
        QDBusMessage::createMethodCall(target.service, target.path.path(), interface, method);
    message.setArguments(arguments);
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        m_budget.deadline() - WalkBudget::Clock::now());
    const int timeout = int(std::clamp<qint64>(left.count(), 1, requestTimeoutMs));
    return m_bus.asyncCall(message, timeout);
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

QList<ApplicationEntry> applications(const std::shared_ptr<Session>& session)
{
    const Reference registry{registryService, QDBusObjectPath(rootPath)};
    const auto roots = firstArgument<QList<Reference>>(
        session->call(registry, accessibleInterface, QStringLiteral("GetChildren")), "a(so)");
    if (!roots)
        return {};
    // Pipelined: each application's process id, name and toolkit.
    const Reference bus{QStringLiteral("org.freedesktop.DBus"),
                        QDBusObjectPath("/org/freedesktop/DBus")};
    struct Pending {
        Reference root;
        QDBusPendingCall pid, name, toolkit;
    };
    QList<Pending> pending;
    for (const Reference& root : *roots) {
        if (root.isNull())
            continue;
        pending.append({root,
                        session->send(bus, QStringLiteral("org.freedesktop.DBus"),
                                      QStringLiteral("GetConnectionUnixProcessID"), {root.service}),
                        session->send(root, propertiesInterface, QStringLiteral("Get"),
                                      propertyArguments("Name")),
                        session->send(root, propertiesInterface, QStringLiteral("Get"),
                                      {applicationInterface, QStringLiteral("ToolkitName")})});
    }
    QList<ApplicationEntry> result;
    const qint64 self = QCoreApplication::applicationPid();
    for (Pending& p : pending) {
        const auto pid = firstArgument<uint>(session->wait(p.pid), "u");
        const auto name = propertyValue(session->wait(p.name), QMetaType::QString);
        const auto toolkit = propertyValue(session->wait(p.toolkit), QMetaType::QString);
        if (!pid || qint64(*pid) == self) // Corvane's own windows are on the bus too
            continue;
        result.append({p.root, qint64(*pid), name ? name->toString() : QString(),
                       toolkit ? toolkit->toString() : QString()});
    }
    return result;
}

// Four requests per node. Properties.GetAll would fold Name and ChildCount into one, but Qt 6.4's
// bridge crashes the application on it (measured here: featherpad segfaults): never send it.
void Node::loadInfo(const QList<std::shared_ptr<Node>>& nodes)
{
    if (nodes.isEmpty())
        return;
    Session& session = *nodes.first()->m_session;
    struct Pending {
        QDBusPendingCall role, name, state, count;
    };
    QList<Pending> pending;
    pending.reserve(nodes.size());
    for (const auto& node : nodes) {
        const Reference& r = node->m_reference;
        pending.append(
            {session.send(r, accessibleInterface, QStringLiteral("GetRole")),
             session.send(r, propertiesInterface, QStringLiteral("Get"), propertyArguments("Name")),
             session.send(r, accessibleInterface, QStringLiteral("GetState")),
             session.send(r, propertiesInterface, QStringLiteral("Get"),
                          propertyArguments("ChildCount"))});
    }
    for (qsizetype i = 0; i < nodes.size(); ++i) {
        Node& node = *nodes[i];
        Pending& p = pending[i];
        node.m_role = firstArgument<uint>(session.wait(p.role), "u").value_or(0);
        if (const auto name = propertyValue(session.wait(p.name), QMetaType::QString))
            node.m_name = name->toString();
        if (const auto words = firstArgument<QList<uint>>(session.wait(p.state), "au"))
            node.m_states = stateSet(*words);
        node.m_childCount =
            propertyValue(session.wait(p.count), QMetaType::Int).value_or(QVariant(-1)).toInt();
    }
}

void Session::prefetch(const QString& menuBarPath)
{
    if (!table)
        return;
    // Bounded like the crawl: depth 6 below the menu bar and a little past the item cap.
    QList<std::pair<QString, QDBusPendingCall>> bindings, lists;
    QList<std::pair<QString, int>> stack{{menuBarPath, 0}};
    lists.append({menuBarPath, send(table->byPath.value(menuBarPath).object, accessibleInterface,
                                    QStringLiteral("GetChildren"))});
    while (!stack.isEmpty() && bindings.size() < 3000) {
        const auto [path, depth] = stack.takeLast();
        for (const QString& child : table->childrenOf.value(path)) {
            const CacheItem& item = table->byPath[child];
            const uint r = item.role;
            if (isLeafMenuItem(r, item.childCount)) {
                bindings.append({child, send(item.object, actionInterface,
                                             QStringLiteral("GetKeyBinding"), {0})});
            } else if (depth < 6 && item.childCount != 0) {
                lists.append(
                    {child, send(item.object, accessibleInterface, QStringLiteral("GetChildren"))});
                stack.append({child, depth + 1});
            }
        }
    }
    for (auto& [path, call] : bindings)
        if (const auto binding = firstArgument<QString>(wait(call), "s"))
            keyBindings.insert(path, *binding);
    for (auto& [path, call] : lists)
        if (const auto references = firstArgument<QList<Reference>>(wait(call), "a(so)"))
            childLists.insert(path, *references);
}

void Node::loadKeyBindings(const QList<std::shared_ptr<Node>>& nodes)
{
    QList<std::pair<std::shared_ptr<Node>, QDBusPendingCall>> pending;
    for (const auto& node : nodes) {
        const uint r = node->m_role;
        const auto prefetched =
            node->m_session->keyBindings.constFind(node->m_reference.path.path());
        if (prefetched != node->m_session->keyBindings.constEnd()) {
            node->m_shortcut = node->parseKeyBinding(*prefetched);
            continue;
        }
        if (isLeafMenuItem(r, node->m_childCount))
            pending.append({node, node->m_session->send(node->m_reference, actionInterface,
                                                        QStringLiteral("GetKeyBinding"), {0})});
    }
    for (auto& [node, call] : pending) {
        const auto binding = firstArgument<QString>(node->m_session->wait(call), "s");
        node->m_shortcut = binding ? node->parseKeyBinding(*binding) : ShortcutKeys::none;
    }
}

std::shared_ptr<Node> Node::fromTable(const std::shared_ptr<Session>& session,
                                      const CacheItem& item)
{
    auto node = std::make_shared<Node>(session, item.object);
    node->m_name = item.name;
    node->m_role = item.role;
    node->m_states = stateSet(item.states);
    node->m_childCount = item.childCount;
    return node;
}

QList<std::shared_ptr<Node>> Node::childNodes()
{
    if (m_children)
        return *m_children;
    m_children.emplace();
    if (m_childCount == 0)
        return *m_children;
    const auto prefetched = m_session->childLists.constFind(m_reference.path.path());
    const auto references =
        prefetched != m_session->childLists.constEnd()
            ? std::optional<QList<Reference>>(*prefetched)
            : firstArgument<QList<Reference>>(
                  m_session->call(m_reference, accessibleInterface, QStringLiteral("GetChildren")),
                  "a(so)");
    if (!references)
        return *m_children;
    // The order comes from GetChildren: GTK's object cache gives menu items no index in their
    // parent (-1). What the cache does know (role, name, state, child count) is not asked again.
    const auto& table = m_session->table;
    QList<std::shared_ptr<Node>> unknown;
    for (const Reference& r : *references) {
        if (r.isNull())
            continue;
        const auto cached = table ? table->byPath.constFind(r.path.path())
                                  : QHash<QString, CacheItem>::const_iterator();
        if (table && cached != table->byPath.constEnd()) {
            m_children->append(fromTable(m_session, *cached));
        } else {
            m_children->append(std::make_shared<Node>(m_session, r));
            unknown.append(m_children->constLast());
        }
    }
    loadInfo(unknown);
    loadKeyBindings(*m_children);
    return *m_children;
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
    if (m_role == roleMenu)
        return shared_from_this();
    if (m_childCount == 0)
        return nullptr;
    for (const auto& child : childNodes())
        if (child->m_role == roleMenu || child->m_role == rolePopupMenu)
            return child;
    return nullptr;
}

bool Node::enabled()
{
    if (!m_states)
        return true;
    return hasState(*m_states, stateEnabled) || hasState(*m_states, stateSensitive);
}

bool Node::checked()
{
    return m_states && hasState(*m_states, stateChecked);
}

ShortcutKeys Node::parseKeyBinding(const QString& binding) const
{
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
    if (!m_shortcut) {
        const auto binding = firstArgument<QString>(
            m_session->call(m_reference, actionInterface, QStringLiteral("GetKeyBinding"), {0}),
            "s");
        m_shortcut = binding ? parseKeyBinding(*binding) : ShortcutKeys::none;
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

MenuSource::MenuBar MenuBarFinder::menuBar(qint64 pid, WalkBudget& budget)
{
    const auto bus = accessibilityBus();
    if (!bus)
        return {nullptr, busUnavailable};
    // The registry listing asks every application; one that is frozen must not end the walk of
    // another, so the listing has its own budget with the same deadline.
    WalkBudget listingBudget(budget.deadline() - WalkBudget::Clock::now());
    std::optional<ApplicationEntry> entry;
    for (const ApplicationEntry& candidate :
         applications(std::make_shared<Session>(*bus, listingBudget)))
        if (candidate.pid == pid)
            entry = candidate;
    if (!entry)
        return {nullptr, applicationNotFound};
    auto session = std::make_shared<Session>(*bus, budget);
    session->isQt = entry->toolkit == u"Qt";

    // GTK publishes every object, closed menus included, in one call; Qt's cache is empty, so
    // Qt applications are read level by level.
    std::shared_ptr<Node> root;
    if (!session->isQt) {
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
                    session->prefetch(child->reference().path.path());
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
