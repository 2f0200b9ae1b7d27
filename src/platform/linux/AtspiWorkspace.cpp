#include "AtspiWorkspace.h"

#include "AppIdentity.h"
#include "AtspiClient.h"
#include "menus/MenuCrawler.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QPointer>

namespace corvane {

namespace {
Q_LOGGING_CATEGORY(lcWorkspace, "com.vantorel.corvane.workspace")
const QString windowEvents = QStringLiteral("org.a11y.atspi.Event.Window");
} // namespace

AtspiWorkspace::AtspiWorkspace(QObject* parent) : Workspace(parent)
{
    auto bus = atspi::accessibilityBus();
    if (!bus)
        return;
    m_available = bus->connect(QString(), QString(), windowEvents, QStringLiteral("Activate"), this,
                               SLOT(activated(QDBusMessage))) &&
                  bus->connect(QString(), QString(), windowEvents, QStringLiteral("Deactivate"),
                               this, SLOT(deactivated(QDBusMessage)));
    // Toolkits send window events only while some client has asked the registry for them.
    for (const QString& event :
         {QStringLiteral("window:activate"), QStringLiteral("window:deactivate")}) {
        QDBusMessage message = QDBusMessage::createMethodCall(
            QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("/org/a11y/atspi/registry"),
            QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("RegisterEvent"));
        message.setArguments({event, QStringList(), QString()});
        bus->asyncCall(message, atspi::requestTimeoutMs);
    }
    // The window active before Corvane started sends no event until the next change: asked once,
    // off the main thread, and taken unless an activation came meanwhile.
    QPointer<AtspiWorkspace> self(this);
    MenuCrawler::queue().post([self] {
        const std::optional<qint64> pid = atspi::activeApplicationProcess();
        if (!pid)
            return;
        const RunningApp app = AppIdentity::forProcess(*pid);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, app] {
                if (!self || self->m_activations > 0 || self->m_front)
                    return;
                self->m_front = app;
                if (app.pid != thisProcessId() && app.appId)
                    self->m_seen.append(app);
                Q_EMIT self->applicationActivated(app);
            },
            Qt::QueuedConnection);
    });
}

void AtspiWorkspace::withProcessOf(const QString& sender, std::function<void(qint64)> then)
{
    if (const auto known = m_processes.constFind(sender); known != m_processes.cend()) {
        then(*known);
        return;
    }
    auto bus = atspi::accessibilityBus();
    if (!bus)
        return;
    QDBusMessage ask = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionUnixProcessID"));
    ask << sender;
    auto* watcher = new QDBusPendingCallWatcher(bus->asyncCall(ask, atspi::requestTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, sender, then] {
        watcher->deleteLater();
        const QDBusPendingReply<uint> reply = *watcher;
        if (reply.isError() || reply.value() == 0)
            return;
        m_processes.insert(sender, qint64(reply.value()));
        then(qint64(reply.value()));
    });
}

void AtspiWorkspace::activated(const QDBusMessage& signal)
{
    if (m_followsCompanion)
        return;
    const quint64 activation = ++m_activations;
    withProcessOf(signal.service(), [this, activation, name = signal.service()](qint64 pid) {
        if (activation != m_activations)
            return; // a later activation has come meanwhile
        if (!m_front || m_front->pid != pid)
            setFront(AppIdentity::forProcess(pid));
    });
}

void AtspiWorkspace::companionFocused(qint64 pid, const QString& appId)
{
    ++m_activations;
    if (pid <= 0) {
        m_front.reset();
        return;
    }
    if (m_front && m_front->pid == pid)
        return;
    // The Shell knows the window's application, where the process alone may only name its
    // executable (an interpreter, a browser's launcher).
    RunningApp app = appId.isEmpty() ? AppIdentity::forProcess(pid) : AppIdentity::describe(appId);
    app.pid = pid;
    setFront(app);
}

void AtspiWorkspace::setFront(const RunningApp& app)
{
    qCDebug(lcWorkspace, "workspace: %s in front", qUtf8Printable(app.appId.value_or(app.name)));
    m_front = app;
    m_seen.removeIf([&app](const RunningApp& seen) { return seen.appId == app.appId; });
    if (app.pid != thisProcessId() && app.appId)
        m_seen.append(app);
    Q_EMIT applicationActivated(app);
}

QList<RunningApp> AtspiWorkspace::seenApplications() const
{
    QList<RunningApp> apps;
    for (const RunningApp& app : m_seen)
        if (QFileInfo::exists(QStringLiteral("/proc/%1").arg(app.pid)))
            apps.append(app);
    std::sort(apps.begin(), apps.end(), [](const RunningApp& a, const RunningApp& b) {
        return QString::localeAwareCompare(a.name, b.name) < 0;
    });
    return apps;
}

void AtspiWorkspace::deactivated(const QDBusMessage& signal)
{
    if (m_followsCompanion)
        return;
    const quint64 activation = m_activations;
    withProcessOf(signal.service(), [this, activation](qint64 pid) {
        if (activation == m_activations && m_front && m_front->pid == pid)
            m_front.reset();
    });
}

} // namespace corvane
