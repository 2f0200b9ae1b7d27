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

    int timeout() const
    {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            budget.deadline() - WalkBudget::Clock::now());
        return int(std::clamp<qint64>(left.count(), 1, atspi::requestTimeoutMs));
    }

    std::optional<QDBusMessage> call(const QString& path, const QString& interface,
                                     const QString& method, const QVariantList& arguments = {})
    {
        if (budget.exhausted())
            return std::nullopt;
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
        message.setArguments(arguments);
        const QDBusMessage reply = bus.call(message, QDBus::Block, timeout());
        if (reply.type() != QDBusMessage::ReplyMessage) {
            if (reply.errorName() == u"org.freedesktop.DBus.Error.NoReply")
                budget.noteTimeout();
            return std::nullopt;
        }
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

QString menuFor(const QString& actionName)
{
    static const std::pair<const char*, const char*> prefixes[] = {
        {"file_", QT_TRANSLATE_NOOP("KdeActions", "File")},
        {"edit_", QT_TRANSLATE_NOOP("KdeActions", "Edit")},
        {"view_", QT_TRANSLATE_NOOP("KdeActions", "View")},
        {"go_", QT_TRANSLATE_NOOP("KdeActions", "Go")},
        {"bookmarks_", QT_TRANSLATE_NOOP("KdeActions", "Bookmarks")},
        {"tools_", QT_TRANSLATE_NOOP("KdeActions", "Tools")},
        {"settings_", QT_TRANSLATE_NOOP("KdeActions", "Settings")},
        {"options_", QT_TRANSLATE_NOOP("KdeActions", "Settings")},
        {"window_", QT_TRANSLATE_NOOP("KdeActions", "Window")},
        {"help_", QT_TRANSLATE_NOOP("KdeActions", "Help")},
    };
    for (const auto& [prefix, menu] : prefixes)
        if (actionName.startsWith(QLatin1String(prefix)))
            return QCoreApplication::translate("KdeActions", menu);
    return QCoreApplication::translate("KdeActions", "Other");
}

QString plainText(const QString& text)
{
    QString plain;
    plain.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'&' && i + 1 < text.size())
            ++i; // the marked character, or the second of "&&"
        plain += text[i];
    }
    return plain;
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
    QHash<QString, std::shared_ptr<ActionNode>> menus;
    QStringList order;
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
        action->text = plainText(text.toString());
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
        const QString menu = menuFor(names[i]);
        auto& into = menus[menu];
        if (!into) {
            into = std::make_shared<ActionNode>();
            into->text = menu;
            into->isMenu = true;
            order << menu;
        }
        into->items << action;
    }
    // In the menu bar's usual order, "Other" last.
    static const QStringList prefixes{"file_",  "edit_",     "view_",   "go_",   "bookmarks_",
                                      "tools_", "settings_", "window_", "help_", ""};
    for (const QString& prefix : prefixes) {
        const QString menu = menuFor(prefix.isEmpty() ? QStringLiteral("other") : prefix);
        if (const auto it = menus.constFind(menu); it != menus.constEnd() && order.contains(menu)) {
            bar->items << *it;
            order.removeAll(menu);
        }
    }
    qCDebug(lcActions, "kde actions: %ld published under %s", long(names.size()),
            qUtf8Printable(actionsPath));
    if (bar->items.isEmpty())
        return {nullptr, budget.timedOut() ? requestTimedOut : noMenuBar, sourceName};
    return {bar, menuBarFound, sourceName};
}

} // namespace corvane::kdeactions
