#include "AccessibilitySwitch.h"

#include "AtspiClient.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>

namespace corvane {

namespace {
const QString service = QStringLiteral("org.a11y.Bus");
const QString path = QStringLiteral("/org/a11y/bus");
const QString statusInterface = QStringLiteral("org.a11y.Status");
} // namespace

AccessibilitySwitch::AccessibilitySwitch(QObject* parent) : QObject(parent) {}

std::optional<bool> AccessibilitySwitch::isEnabled(QString* whyNot)
{
    QDBusConnection session = QDBusConnection::sessionBus();
    if (!session.isConnected()) {
        if (whyNot)
            *whyNot = QStringLiteral("no D-Bus session bus");
        return std::nullopt;
    }
    QDBusMessage get = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get.setArguments({statusInterface, QStringLiteral("IsEnabled")});
    const QDBusMessage reply = session.call(get, QDBus::Block, atspi::requestTimeoutMs * 2);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        if (whyNot)
            *whyNot = QStringLiteral("org.a11y.Bus does not answer: ") + reply.errorMessage();
        return std::nullopt;
    }
    const QVariant value = reply.arguments().constFirst().value<QDBusVariant>().variant();
    if (value.typeId() != QMetaType::Bool) {
        if (whyNot)
            *whyNot = QStringLiteral("IsEnabled is not a boolean");
        return std::nullopt;
    }
    return value.toBool();
}

bool AccessibilitySwitch::isTrusted()
{
    return isEnabled().value_or(false) && atspi::accessibilityBus().has_value();
}

bool AccessibilitySwitch::setEnabled(bool enabled)
{
    QDBusMessage set = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Set"));
    set.setArguments(
        {statusInterface, QStringLiteral("IsEnabled"), QVariant::fromValue(QDBusVariant(enabled))});
    const QDBusMessage reply =
        QDBusConnection::sessionBus().call(set, QDBus::Block, atspi::requestTimeoutMs * 2);
    return reply.type() == QDBusMessage::ReplyMessage;
}

bool AccessibilitySwitch::watch()
{
    return QDBusConnection::sessionBus().connect(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("PropertiesChanged"), this,
        SLOT(onPropertiesChanged(QString, QVariantMap, QStringList)));
}

void AccessibilitySwitch::onPropertiesChanged(const QString& interface, const QVariantMap&,
                                              const QStringList&)
{
    if (interface == statusInterface)
        Q_EMIT changed();
}

} // namespace corvane
