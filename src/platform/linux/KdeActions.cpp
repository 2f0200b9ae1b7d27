#include "KdeActions.h"

#include "AppIdentity.h"
#include "AtspiClient.h"
#include "menus/MenuWalk.h"
#include "shortcuts/ShortcutDisplay.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QKeySequence>
#include <QLoggingCategory>
#include <QXmlStreamReader>
#include <array>

namespace corvane::kdeactions {

namespace {

Q_LOGGING_CATEGORY(lcActions, "com.vantorel.corvane.kdeactions", QtInfoMsg)

const QString actionInterface = QStringLiteral("org.qtproject.Qt.QAction");
constexpr const char* sourceName = "the application's actions";

// A node of the tree built from the flat list: the bar, a menu, or an action.
class ActionNode : public MenuNode, public std::enable_shared_from_this<ActionNode> {
public:
    QString text;
    QList<std::shared_ptr<MenuNode>> items; // a menu's actions; empty for an action
    bool isMenu = false;
    bool isEnabled = true;
    bool isChecked = false;
    ShortcutKeys keys;
    std::function<PressResult()> trigger;

    QList<std::shared_ptr<MenuNode>> children() override { return items; }
    std::optional<QString> title() override { return text; }
    std::shared_ptr<MenuNode> submenu() override { return isMenu ? shared_from_this() : nullptr; }
    bool enabled() override { return isEnabled; }
    bool checked() override { return isChecked; }
    ShortcutKeys shortcut() override { return keys; }
    PressResult press() override
    {
        return trigger ? trigger() : PressResult{PressResult::Status::error, 0};
    }
};

// Requests within the walk's budget, each at most one second.
struct Caller {
    QDBusConnection bus;
    QString service;
    WalkBudget& budget;

    int timeout() const { return budget.requestTimeoutMs(atspi::requestTimeoutMs); }

    std::optional<QDBusMessage> call(const QString& path, const QString& interface,
                                     const QString& method, const QVariantList& arguments = {})
    {
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
        message.setArguments(arguments);
        const QDBusMessage reply = atspi::callWithin(bus, message, budget);
        if (reply.type() != QDBusMessage::ReplyMessage)
            return std::nullopt;
        return reply;
    }

    // The names of the object's children, from its introspection data.
    QStringList children(const QString& path)
    {
        const auto reply =
            call(path, QStringLiteral("org.freedesktop.DBus.Introspectable"), "Introspect");
        if (!reply || reply->arguments().isEmpty())
            return {};
        QXmlStreamReader xml(reply->arguments().constFirst().toString());
        QStringList names;
        int depth = 0;
        while (!xml.atEnd()) {
            const auto token = xml.readNext();
            if (token == QXmlStreamReader::StartElement) {
                if (++depth == 2 && xml.name() == u"node")
                    names << xml.attributes().value(QStringLiteral("name")).toString();
            } else if (token == QXmlStreamReader::EndElement) {
                --depth;
            }
        }
        return names;
    }
};

std::optional<QString> busNameOf(const QDBusConnection& bus, qint64 pid, int timeoutMs)
{
    const QDBusMessage reply =
        bus.call(QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                "org.freedesktop.DBus", "ListNames"),
                 QDBus::Block, timeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    const QString suffix = u'-' + QString::number(pid);
    for (const QString& name : reply.arguments().constFirst().toStringList())
        if (name.startsWith(u"org.kde.") && name.endsWith(suffix))
            return name;
    return std::nullopt;
}

} // namespace

namespace {

// The menus the actions are grouped into, in a menu bar's usual order; the last takes the rest.
const char* const menuNames[] = {
    QT_TRANSLATE_NOOP("KdeActions", "File"),      QT_TRANSLATE_NOOP("KdeActions", "Edit"),
    QT_TRANSLATE_NOOP("KdeActions", "View"),      QT_TRANSLATE_NOOP("KdeActions", "Go"),
    QT_TRANSLATE_NOOP("KdeActions", "Bookmarks"), QT_TRANSLATE_NOOP("KdeActions", "Tools"),
    QT_TRANSLATE_NOOP("KdeActions", "Settings"),  QT_TRANSLATE_NOOP("KdeActions", "Window"),
    QT_TRANSLATE_NOOP("KdeActions", "Help"),      QT_TRANSLATE_NOOP("KdeActions", "Other"),
};

// The standard action-name prefixes and the menu (in menuNames) of each.
const std::pair<const char*, size_t> prefixes[] = {
    {"file_", 0},  {"edit_", 1},     {"view_", 2},    {"go_", 3},     {"bookmarks_", 4},
    {"tools_", 5}, {"settings_", 6}, {"options_", 6}, {"window_", 7}, {"help_", 8},
};

size_t menuIndex(const QString& actionName)
{
    for (const auto& [prefix, menu] : prefixes)
        if (actionName.startsWith(QLatin1String(prefix)))
            return menu;
    return std::size(menuNames) - 1;
}

} // namespace

QString menuFor(const QString& actionName)
{
    return QCoreApplication::translate("KdeActions", menuNames[menuIndex(actionName)]);
}

ShortcutKeys shortcutFrom(const QList<int>& keyCodes)
{
    if (keyCodes.isEmpty() || keyCodes.first() == 0)
        return ShortcutKeys::none;
    const QKeySequence sequence(QKeyCombination::fromCombined(keyCodes.first()));
    return ShortcutDisplay::fromAccelerator(sequence.toString(QKeySequence::PortableText));
}

MenuSource::MenuBar Source::menuBar(qint64 pid, WalkBudget& budget)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return {nullptr, busUnavailable, sourceName};
    Caller caller{bus, {}, budget};
    const auto service = busNameOf(bus, pid, caller.timeout());
    if (!service)
        return {nullptr, noMenuBar, sourceName};
    caller.service = *service;

    // The main window whose X window is the process's front one, else the first.
    QString windowPath;
    const QList<quint32> windows = AppIdentity::topLevelWindows(pid);
    for (const QString& app : caller.children(QStringLiteral("/"))) {
        if (app == u"MainApplication")
            continue;
        for (const QString& child : caller.children(u'/' + app)) {
            if (!child.startsWith(u"MainWindow_"))
                continue;
            const QString path = u'/' + app + u'/' + child;
            const auto id = caller.call(path, QStringLiteral("org.kde.KMainWindow"), "winId");
            const bool front = id && !id->arguments().isEmpty() &&
                               windows.contains(quint32(id->arguments().constFirst().toLongLong()));
            if (windowPath.isEmpty() || front)
                windowPath = path;
            if (front)
                break;
        }
    }
    if (windowPath.isEmpty())
        return {nullptr, budget.timedOut() ? requestTimedOut : noMenuBar, sourceName};

    // Every action's properties, asked at once.
    const QString actionsPath = windowPath + QStringLiteral("/actions");
    QStringList names = caller.children(actionsPath);
    names = names.mid(0, MenuWalk::itemCap);
    QList<QDBusPendingCall> calls;
    for (const QString& name : std::as_const(names)) {
        QDBusMessage message = QDBusMessage::createMethodCall(
            *service, actionsPath + u'/' + name, QStringLiteral("org.freedesktop.DBus.Properties"),
            QStringLiteral("GetAll"));
        message.setArguments({actionInterface});
        calls << bus.asyncCall(message, caller.timeout());
    }
    auto bar = std::make_shared<ActionNode>();
    bar->isMenu = true;
    std::array<std::shared_ptr<ActionNode>, std::size(menuNames)> menus;
    for (qsizetype i = 0; i < calls.size(); ++i) {
        calls[i].waitForFinished();
        const QDBusMessage reply = calls[i].reply();
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
            if (reply.errorName() == u"org.freedesktop.DBus.Error.NoReply")
                budget.noteTimeout();
            continue;
        }
        const QVariantMap properties =
            qdbus_cast<QVariantMap>(reply.arguments().constFirst().value<QDBusArgument>());
        const auto flag = [&properties](const char* name, bool fallback) {
            const QVariant value = properties.value(QLatin1String(name));
            return value.metaType() == QMetaType::fromType<bool>() ? value.toBool() : fallback;
        };
        const QVariant text = properties.value(QStringLiteral("text"));
        if (!flag("visible", true) || text.metaType() != QMetaType::fromType<QString>())
            continue;
        auto action = std::make_shared<ActionNode>();
        action->text = ShortcutDisplay::withoutMnemonicMarks(text.toString(), u'&');
        action->isEnabled = flag("enabled", true);
        action->isChecked = flag("checkable", false) && flag("checked", false);
        const QVariant shortcut = properties.value(QStringLiteral("shortcut"));
        if (shortcut.metaType() == QMetaType::fromType<QDBusArgument>()) {
            const QDBusArgument argument = shortcut.value<QDBusArgument>();
            if (argument.currentSignature() == u"(ai)") {
                QList<int> codes;
                argument.beginStructure();
                argument >> codes;
                argument.endStructure();
                action->keys = shortcutFrom(codes);
            }
        }
        action->trigger = [bus, service = *service, path = actionsPath + u'/' + names[i]] {
            const QDBusMessage reply =
                bus.call(QDBusMessage::createMethodCall(service, path, actionInterface, "trigger"),
                         QDBus::Block, atspi::requestTimeoutMs);
            if (reply.type() == QDBusMessage::ReplyMessage)
                return MenuNode::PressResult{MenuNode::PressResult::Status::pressed, 0};
            // An action that opens a modal dialog answers when the dialog closes.
            return MenuNode::PressResult{reply.errorName() == u"org.freedesktop.DBus.Error.NoReply"
                                             ? MenuNode::PressResult::Status::timedOut
                                             : MenuNode::PressResult::Status::error,
                                         0};
        };
        auto& into = menus[menuIndex(names[i])];
        if (!into) {
            into = std::make_shared<ActionNode>();
            into->text = menuFor(names[i]);
            into->isMenu = true;
        }
        into->items << action;
    }
    for (const auto& menu : menus)
        if (menu)
            bar->items << menu;
    qCDebug(lcActions, "kde actions: %ld published under %s", long(names.size()),
            qUtf8Printable(actionsPath));
    if (bar->items.isEmpty())
        return {nullptr, budget.timedOut() ? requestTimedOut : noMenuBar, sourceName};
    return {bar, menuBarFound, sourceName};
}

} // namespace corvane::kdeactions
