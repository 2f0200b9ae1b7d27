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

namespace {

bool askFirst(const QString& method)
{
    const QDBusMessage reply = QDBusConnection::sessionBus().call(
        QDBusMessage::createMethodCall(SingleInstance::serviceName, SingleInstance::objectPath,
                                       SingleInstance::serviceName, method),
        QDBus::Block, 5000);
    return reply.type() == QDBusMessage::ReplyMessage;
}

} // namespace

bool SingleInstance::askFirstToShowSettings()
{
    return askFirst(QStringLiteral("ShowSettings"));
}

bool SingleInstance::askFirstToPeek()
{
    return askFirst(QStringLiteral("Peek"));
}

void SingleInstance::ShowSettings()
{
    Q_EMIT showSettingsRequested();
}

void SingleInstance::Peek()
{
    Q_EMIT peekRequested();
}

} // namespace corvane
