#include "SingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

namespace corvane {

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {}

SingleInstance::Claim SingleInstance::claim()
{
    QDBusConnection session = QDBusConnection::sessionBus();
    if (!session.isConnected())
        return Claim::noBus;
    // The object first, so that a second start that wins the race to call finds it.
    session.registerObject(objectPath, this, QDBusConnection::ExportScriptableSlots);
    const auto reply = session.interface()->registerService(
        serviceName, QDBusConnectionInterface::DontQueueService,
        QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered)
        return Claim::first;
    session.unregisterObject(objectPath);
    return Claim::second;
}

bool SingleInstance::askFirstToShowSettings()
{
    const QDBusMessage reply = QDBusConnection::sessionBus().call(
        QDBusMessage::createMethodCall(serviceName, objectPath, serviceName,
                                       QStringLiteral("ShowSettings")),
        QDBus::Block, 5000);
    return reply.type() == QDBusMessage::ReplyMessage;
}

void SingleInstance::ShowSettings()
{
    Q_EMIT showSettingsRequested();
}

} // namespace corvane
