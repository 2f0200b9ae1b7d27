#include "ShellCompanion.h"

#include "shortcuts/ShortcutDisplay.h"

#include <QAction>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVirtualObject>
#include <QLoggingCategory>
#include <QMenu>
#include <QStandardPaths>

namespace corvane {

namespace {

struct MenuEntry {
    QString id, label;
    bool enabled = true, separator = false;
};

QDBusArgument& operator<<(QDBusArgument& argument, const MenuEntry& entry)
{
    argument.beginStructure();
    argument << entry.id << entry.label << entry.enabled << entry.separator;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEntry& entry)
{
    argument.beginStructure();
    argument >> entry.id >> entry.label >> entry.enabled >> entry.separator;
    argument.endStructure();
    return argument;
}

} // namespace
} // namespace corvane

Q_DECLARE_METATYPE(corvane::MenuEntry)

namespace corvane {

namespace {

Q_LOGGING_CATEGORY(lcCompanion, "com.vantorel.corvane.companion")

const QString shell = QStringLiteral("org.gnome.Shell");
const QString companionPath = QStringLiteral("/com/vantorel/Corvane/Companion");
const QString companionInterface = QStringLiteral("com.vantorel.Corvane.Companion1");
const QString extensionsInterface = QStringLiteral("org.gnome.Shell.Extensions");
const QString menuPath = QStringLiteral("/com/vantorel/Corvane/StatusMenu");

QDBusPendingCall callShell(const QString& path, const QString& interface, const QString& method,
                           const QVariantList& arguments = {})
{
    QDBusMessage call = QDBusMessage::createMethodCall(shell, path, interface, method);
    call.setArguments(arguments);
    return QDBusConnection::sessionBus().asyncCall(call, 2000);
}

// Then `then` with the reply, on this thread, while `context` lives.
void whenAnswered(const QDBusPendingCall& call, QObject* context,
                  std::function<void(const QDBusMessage&)> then)
{
    auto* watcher = new QDBusPendingCallWatcher(call, context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [watcher, then = std::move(then)] {
                         watcher->deleteLater();
                         then(watcher->reply());
                     });
}

// The tray menu for the top-bar icon: Entries() → a(ssbb) (id, label, enabled, separator) of the
// visible entries in order, Activate(id).
class MenuExport : public QDBusVirtualObject {
public:
    explicit MenuExport(QPointer<QMenu>& menu) : m_menu(menu)
    {
        qDBusRegisterMetaType<MenuEntry>();
        qDBusRegisterMetaType<QList<MenuEntry>>();
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        if (!m_menu || (message.member() != u"Entries" && message.member() != u"Activate"))
            return false;
        // The entries that change are brought up to date, as when the tray opens the menu.
        Q_EMIT m_menu->aboutToShow();
        const QList<QAction*> actions = m_menu->actions();
        if (message.member() == u"Activate") {
            bool isNumber = false;
            const int index = message.arguments().value(0).toString().toInt(&isNumber);
            if (isNumber && index >= 0 && index < actions.size() && actions[index]->isEnabled())
                actions[index]->trigger();
            connection.send(message.createReply());
            return true;
        }
        QList<MenuEntry> entries;
        for (qsizetype i = 0; i < actions.size(); ++i) {
            const QAction* action = actions[i];
            if (action->isVisible())
                entries.append({QString::number(i),
                                ShortcutDisplay::withoutMnemonicMarks(action->text(), u'&'),
                                action->isEnabled(), action->isSeparator()});
        }
        connection.send(message.createReply(QVariant::fromValue(entries)));
        return true;
    }

    QString introspect(const QString&) const override
    {
        return QStringLiteral(
            "<interface name=\"com.vantorel.Corvane.StatusMenu\">"
            "<method name=\"Entries\"><arg direction=\"out\" type=\"a(ssbb)\"/></method>"
            "<method name=\"Activate\"><arg direction=\"in\" type=\"s\"/></method></interface>");
    }

private:
    QPointer<QMenu>& m_menu;
};

} // namespace

ShellCompanion::ShellCompanion(Wanted wanted, QObject* parent)
    : DesktopCompanion(parent), m_wanted(wanted),
      m_shellWatcher(new QDBusServiceWatcher(shell, QDBusConnection::sessionBus(),
                                             QDBusServiceWatcher::WatchForOwnerChange, this))
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    // The companion's signals come from the Shell only, addressed to this process.
    bus.connect(shell, companionPath, companionInterface, QStringLiteral("Available"), this,
                SLOT(subscribe()));
    bus.connect(shell, companionPath, companionInterface, QStringLiteral("Gone"), this,
                SLOT(onGone()));
    bus.connect(shell, companionPath, companionInterface, QStringLiteral("ModifierKey"), this,
                SLOT(onModifierKey(uint, bool, qlonglong)));
    bus.connect(shell, companionPath, companionInterface, QStringLiteral("KeyPressed"), this,
                SLOT(onKeyPressed()));
    bus.connect(shell, companionPath, companionInterface, QStringLiteral("FocusChanged"), this,
                SLOT(onFocusChanged(uint, QString)));
    bus.connect(shell, QStringLiteral("/org/gnome/Shell"), extensionsInterface,
                QStringLiteral("ExtensionStateChanged"), this,
                SLOT(onExtensionStateChanged(QString, QVariantMap)));
    connect(m_shellWatcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& owner) {
                if (owner.isEmpty())
                    setState(State::notNeeded);
                else
                    subscribe();
            });
    subscribe();
}

ShellCompanion::~ShellCompanion()
{
    if (m_menuExport)
        QDBusConnection::sessionBus().unregisterObject(menuPath);
    delete m_menuExport;
}

void ShellCompanion::subscribe()
{
    if (m_subscribing || m_state == State::on)
        return;
    m_subscribing = true;
    QVariantMap wanted{{QStringLiteral("keys"), m_wanted.keys},
                       {QStringLiteral("focus"), m_wanted.focus},
                       {QStringLiteral("placement"), m_wanted.placement},
                       {QStringLiteral("topBarIcon"), m_wanted.topBarIcon}};
    whenAnswered(
        callShell(companionPath, companionInterface, QStringLiteral("Subscribe"), {wanted}), this,
        [this](const QDBusMessage& reply) {
            m_subscribing = false;
            if (reply.type() == QDBusMessage::ErrorMessage) {
                readState();
                return;
            }
            if (m_state != State::on)
                qCInfo(lcCompanion, "companion: GNOME Shell's companion %s answers",
                       qUtf8Printable(reply.arguments().value(0).toString()));
            setState(State::on);
        });
}

void ShellCompanion::onGone()
{
    qCInfo(lcCompanion, "companion: switched off in GNOME Shell");
    setState(State::off);
}

void ShellCompanion::onExtensionStateChanged(const QString& changed, const QVariantMap&)
{
    if (changed == uuid && m_state != State::on)
        readState();
}

// The Shell's record of the extension: none when the Shell started before it was installed.
void ShellCompanion::readState()
{
    whenAnswered(
        callShell(QStringLiteral("/org/gnome/Shell"), extensionsInterface,
                  QStringLiteral("GetExtensionInfo"), {uuid}),
        this, [this](const QDBusMessage& reply) {
            if (reply.type() == QDBusMessage::ErrorMessage) {
                setState(State::notNeeded); // not GNOME Shell
                return;
            }
            const QVariantMap info = qdbus_cast<QVariantMap>(reply.arguments().value(0));
            // The Shell's ExtensionState: 1 enabled, 2 disabled, 3 error, 4 out of
            // date, 6 initialized (installed, never enabled).
            switch (info.value(QStringLiteral("state")).toInt()) {
            case 1:
                break; // starting: its Available comes next
            case 3:
            case 4:
                setState(State::failed);
                break;
            case 2:
            case 6:
                setState(State::off);
                break;
            default:
                setState(QStandardPaths::locate(
                             QStandardPaths::GenericDataLocation,
                             QStringLiteral("gnome-shell/extensions/%1/metadata.json").arg(uuid))
                                 .isEmpty()
                             ? State::notInstalled
                             : State::needsRestart);
            }
        });
}

void ShellCompanion::setState(State state)
{
    if (state == m_state)
        return;
    m_state = state;
    Q_EMIT stateChanged();
}

void ShellCompanion::turnOn()
{
    // The Shell runs no extension at all while extensions are switched off as a whole.
    QDBusMessage enableAll = QDBusMessage::createMethodCall(
        shell, QStringLiteral("/org/gnome/Shell"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Set"));
    enableAll.setArguments({extensionsInterface, QStringLiteral("UserExtensionsEnabled"),
                            QVariant::fromValue(QDBusVariant(true))});
    QDBusConnection::sessionBus().asyncCall(enableAll, 2000);
    whenAnswered(callShell(QStringLiteral("/org/gnome/Shell"), extensionsInterface,
                           QStringLiteral("EnableExtension"), {uuid}),
                 this, [this](const QDBusMessage& reply) {
                     if (reply.type() == QDBusMessage::ErrorMessage ||
                         !reply.arguments().value(0).toBool())
                         qCWarning(lcCompanion, "companion: GNOME Shell did not switch it on (%s)",
                                   qUtf8Printable(reply.errorMessage()));
                     readState();
                 });
}

void ShellCompanion::exportMenu(QMenu* menu)
{
    m_menu = menu;
    if (m_menuExport)
        return;
    auto* exported = new MenuExport(m_menu);
    if (QDBusConnection::sessionBus().registerVirtualObject(menuPath, exported))
        m_menuExport = exported;
    else
        delete exported;
}

void ShellCompanion::showTopBarIcon(bool shown)
{
    if (m_wanted.topBarIcon == shown)
        return;
    m_wanted.topBarIcon = shown;
    if (m_state == State::on)
        callShell(companionPath, companionInterface, QStringLiteral("ShowTopBarIcon"), {shown});
}

void ShellCompanion::onModifierKey(uint keysym, bool pressed, qlonglong)
{
    Q_EMIT modifierKey(keysym, pressed);
}

void ShellCompanion::onKeyPressed()
{
    Q_EMIT keyPressed();
}

void ShellCompanion::onFocusChanged(uint pid, const QString& appId)
{
    Q_EMIT focusChanged(pid, appId);
}

} // namespace corvane
