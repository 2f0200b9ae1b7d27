#include "DBusMenu.h"

#include "AppIdentity.h"
#include "AtspiClient.h"
#include "KdeActions.h"
#include "menus/MenuWalk.h"
#include "shortcuts/ShortcutDisplay.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMutex>
#include <QThread>

namespace corvane::dbusmenu {

namespace {

Q_LOGGING_CATEGORY(lcMenu, "com.vantorel.corvane.dbusmenu", QtInfoMsg)

const QString layoutSignature = QStringLiteral("(ia{sv}av)");
const QString registrarService = QStringLiteral("com.canonical.AppMenu.Registrar");
const QString registrarPath = QStringLiteral("/com/canonical/AppMenu/Registrar");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");

// The item's children, one level deeper than its own, below the depth limit: menu bar, menus,
// then as many submenu levels as a crawl takes.
constexpr int layoutLevels = MenuWalk::depthLimit + 1;

template <typename T> std::optional<T> property(const Item& item, const char* name)
{
    const QVariant value = item.properties.value(QLatin1String(name));
    if (!value.isValid() || value.metaType() != QMetaType::fromType<T>())
        return std::nullopt;
    return value.value<T>();
}

// One exporter's menu: where it is, and the budget of the crawl or press reading it.
struct Exporter {
    QDBusConnection bus;
    QString service;
    QString path;
    WalkBudget& budget;
    int itemsLeft = MenuWalk::itemCap * 4; // separators and hidden items count too

    // A call within the budget; nothing when it failed, timed out or the budget is spent.
    std::optional<QDBusMessage> call(const QString& method, const QVariantList& arguments)
    {
        if (budget.exhausted())
            return std::nullopt;
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, menuInterface, method);
        message.setArguments(arguments);
        const QDBusMessage reply = atspi::callWithin(bus, message, budget);
        if (reply.type() == QDBusMessage::ErrorMessage) {
            qCWarning(lcMenu, "dbusmenu: %s of %s failed: %s", qUtf8Printable(method),
                      qUtf8Printable(service), qUtf8Printable(reply.errorMessage()));
            return std::nullopt;
        }
        return reply;
    }

    // The layout below `id`, `levels` deep.
    std::optional<Item> layout(int id, int levels)
    {
        const auto reply = call(QStringLiteral("GetLayout"), {id, levels, QStringList()});
        if (!reply || reply->arguments().size() < 2)
            return std::nullopt;
        const QVariant layout = reply->arguments().at(1);
        if (layout.metaType() != QMetaType::fromType<QDBusArgument>())
            return std::nullopt;
        return readLayout(layout.value<QDBusArgument>(), itemsLeft, levels);
    }
};

class Node : public MenuNode, public std::enable_shared_from_this<Node> {
public:
    Node(std::shared_ptr<Exporter> exporter, Item item)
        : m_exporter(std::move(exporter)), m_item(std::move(item))
    {}

    QList<std::shared_ptr<MenuNode>> children() override
    {
        QList<std::shared_ptr<MenuNode>> nodes;
        for (const Item& child : std::as_const(m_item.children))
            if (property<bool>(child, "visible").value_or(true))
                nodes.append(std::make_shared<Node>(m_exporter, child));
        return nodes;
    }

    std::optional<QString> title() override
    {
        if (property<QString>(m_item, "type") == u"separator")
            return std::nullopt;
        const auto label = property<QString>(m_item, "label");
        return label ? std::optional(ShortcutDisplay::withoutMnemonicMarks(*label, u'_'))
                     : std::nullopt;
    }

    std::shared_ptr<MenuNode> submenu() override
    {
        const bool isSubmenu = property<QString>(m_item, "children-display") == u"submenu";
        if (!isSubmenu && m_item.children.isEmpty())
            return nullptr;
        if (m_item.children.isEmpty()) {
            // Filled when it opens: announce that, then read it again.
            m_exporter->call(QStringLiteral("Event"),
                             {m_item.id, QStringLiteral("opened"),
                              QVariant::fromValue(QDBusVariant(QString())), 0u});
            m_exporter->call(QStringLiteral("AboutToShow"), {m_item.id});
            if (auto again = m_exporter->layout(m_item.id, MenuWalk::depthLimit))
                m_item.children = again->children;
            m_exporter->call(QStringLiteral("Event"),
                             {m_item.id, QStringLiteral("closed"),
                              QVariant::fromValue(QDBusVariant(QString())), 0u});
        }
        return shared_from_this();
    }

    bool enabled() override { return property<bool>(m_item, "enabled").value_or(true); }

    bool checked() override
    {
        return !property<QString>(m_item, "toggle-type").value_or(QString()).isEmpty() &&
               property<int>(m_item, "toggle-state") == 1;
    }

    ShortcutKeys shortcut() override
    {
        const QVariant value = m_item.properties.value(QStringLiteral("shortcut"));
        if (value.metaType() != QMetaType::fromType<QDBusArgument>())
            return ShortcutKeys::none;
        const QDBusArgument argument = value.value<QDBusArgument>();
        if (argument.currentSignature() != u"aas")
            return ShortcutKeys::none;
        QList<QStringList> sequences;
        argument >> sequences;
        return shortcutFrom(sequences);
    }

    PressResult press() override
    {
        const auto reply = m_exporter->call(QStringLiteral("Event"),
                                            {m_item.id, QStringLiteral("clicked"),
                                             QVariant::fromValue(QDBusVariant(QString())), 0u});
        if (reply)
            return {PressResult::Status::pressed, 0};
        return {m_exporter->budget.timedOut() ? PressResult::Status::timedOut
                                              : PressResult::Status::error,
                0};
    }

private:
    std::shared_ptr<Exporter> m_exporter;
    Item m_item;
};

// The registrar's part while the name is borrowed: notes each RegisterWindow, answers every call.
class BorrowedRegistrar : public QDBusVirtualObject {
public:
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        if (message.member() == u"RegisterWindow" && message.signature() == u"uo") {
            const QMutexLocker locker(&lock);
            windows.insert(
                message.arguments().at(0).toUInt(),
                {message.service(), message.arguments().at(1).value<QDBusObjectPath>().path()});
        }
        connection.send(message.createReply());
        return true;
    }
    QString introspect(const QString&) const override
    {
        return QStringLiteral("<interface name=\"com.canonical.AppMenu.Registrar\">"
                              "<method name=\"RegisterWindow\"><arg type=\"u\" direction=\"in\"/>"
                              "<arg type=\"o\" direction=\"in\"/></method></interface>");
    }
    std::optional<std::pair<QString, QString>> find(const QList<quint32>& ids)
    {
        const QMutexLocker locker(&lock);
        for (const quint32 id : ids)
            if (const auto it = windows.constFind(id); it != windows.constEnd())
                return *it;
        return std::nullopt;
    }

private:
    QMutex lock;
    QHash<quint32, std::pair<QString, QString>> windows;
};

// Owns the registrar's name for at most `limit` (less once one of `windowIds` registered) and
// returns where that window's menu is exported.
std::optional<std::pair<QString, QString>> borrowRegistrar(const QList<quint32>& windowIds,
                                                           std::chrono::milliseconds limit)
{
    const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (address.isEmpty())
        return std::nullopt;
    const QString name = QStringLiteral("corvane-borrowed-registrar");
    std::optional<std::pair<QString, QString>> found;
    {
        QDBusConnection bus = QDBusConnection::connectToBus(address, name);
        // Its own thread: the crawl thread waits below, and the object answers meanwhile.
        QThread thread;
        BorrowedRegistrar registrar;
        registrar.moveToThread(&thread);
        thread.start();
        if (bus.registerVirtualObject(registrarPath, &registrar) &&
            bus.registerService(registrarService)) {
            qCInfo(lcMenu, "dbusmenu: the registrar's name is borrowed for a browser's menus");
            QElapsedTimer waited;
            waited.start();
            while (!(found = registrar.find(windowIds)) && waited.elapsed() < limit.count())
                QThread::msleep(2);
            bus.unregisterService(registrarService);
        }
        bus.unregisterObject(registrarPath);
        thread.quit();
        thread.wait();
    }
    QDBusConnection::disconnectFromBus(name);
    return found;
}

} // namespace

std::optional<Item> readLayout(const QDBusArgument& argument, int& itemsLeft, int levels)
{
    if (argument.currentSignature() != layoutSignature || itemsLeft <= 0)
        return std::nullopt;
    --itemsLeft;
    Item item;
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        if (levels <= 0 || itemsLeft <= 0)
            continue; // read past, not kept
        const QVariant value = child.variant();
        if (value.metaType() != QMetaType::fromType<QDBusArgument>())
            continue;
        if (auto read = readLayout(value.value<QDBusArgument>(), itemsLeft, levels - 1))
            item.children.append(std::move(*read));
    }
    argument.endArray();
    argument.endStructure();
    return item;
}

ShortcutKeys shortcutFrom(const QList<QStringList>& sequences)
{
    if (sequences.isEmpty() || sequences.first().isEmpty())
        return ShortcutKeys::none;
    const QStringList& keys = sequences.first();
    QString accelerator;
    for (qsizetype i = 0; i + 1 < keys.size(); ++i) {
        if (keys[i].contains(u'<') || keys[i].contains(u'>'))
            return ShortcutKeys::none;
        accelerator += u'<' + keys[i] + u'>';
    }
    return ShortcutDisplay::fromAccelerator(accelerator + keys.last());
}

bool isChromiumBrowser(qint64 pid)
{
    static const QStringList programs{"chromium",      "chrome",      "google-chrome", "brave",
                                      "brave-browser", "vivaldi-bin", "msedge",        "opera"};
    return programs.contains(QFileInfo(AppIdentity::executableOf(pid)).fileName());
}

MenuSource::MenuBar Source::menuBar(qint64 pid, WalkBudget& budget)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return {nullptr, busUnavailable, "the global menu"};
    const QList<quint32> windows = AppIdentity::topLevelWindows(pid);
    for (const quint32 window : windows) {
        if (budget.exhausted())
            break;
        QDBusMessage request = QDBusMessage::createMethodCall(
            registrarService, registrarPath, registrarService, QStringLiteral("GetMenuForWindow"));
        request.setArguments({window});
        const QDBusMessage reply =
            bus.call(request, QDBus::Block, budget.requestTimeoutMs(atspi::requestTimeoutMs));
        if (reply.type() == QDBusMessage::ErrorMessage) {
            if (reply.errorName() == u"org.freedesktop.DBus.Error.ServiceUnknown")
                break; // no registrar on this desktop
            continue;
        }
        const QVariantList answer = reply.arguments();
        if (answer.size() < 2 || answer[0].metaType() != QMetaType::fromType<QString>() ||
            answer[1].metaType() != QMetaType::fromType<QDBusObjectPath>())
            continue;
        const QString service = answer[0].toString();
        const QString path = answer[1].value<QDBusObjectPath>().path();
        if (service.isEmpty() || path.isEmpty() || path == u"/")
            continue;
        auto exporter = std::make_shared<Exporter>(Exporter{bus, service, path, budget});
        if (auto root = exporter->layout(0, layoutLevels))
            return {std::make_shared<Node>(exporter, std::move(*root)), menuBarFound,
                    "the global menu"};
        return {nullptr, budget.timedOut() ? requestTimedOut : noMenuBar, "the global menu"};
    }
    const bool registrarRuns = bus.interface()->isServiceRegistered(registrarService);
    if (!windows.isEmpty() && !registrarRuns && !budget.exhausted() && isChromiumBrowser(pid) &&
        m_mayBorrowRegistrar()) {
        if (const auto found = borrowRegistrar(windows, std::chrono::milliseconds(200))) {
            auto exporter =
                std::make_shared<Exporter>(Exporter{bus, found->first, found->second, budget});
            if (auto root = exporter->layout(0, layoutLevels))
                return {std::make_shared<Node>(exporter, std::move(*root)), menuBarFound,
                        "the browser's menus"};
        }
    }
    return {nullptr, budget.timedOut() ? requestTimedOut : noMenuBar, "the global menu"};
}

} // namespace corvane::dbusmenu

std::shared_ptr<corvane::MenuSource>
corvane::desktopMenuSources(std::function<bool()> mayBorrowRegistrar)
{
    return std::make_shared<FirstMenuSource>(QList<std::shared_ptr<MenuSource>>{
        std::make_shared<atspi::MenuBarFinder>(),
        std::make_shared<dbusmenu::Source>(std::move(mayBorrowRegistrar)),
        std::make_shared<kdeactions::Source>()});
}
