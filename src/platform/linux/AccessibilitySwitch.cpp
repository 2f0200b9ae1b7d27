#include "AccessibilitySwitch.h"

#include "AtspiClient.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace corvane {

namespace {
const QString service = QStringLiteral("org.a11y.Bus");
const QString path = QStringLiteral("/org/a11y/bus");
const QString statusInterface = QStringLiteral("org.a11y.Status");

QDBusMessage isEnabledRequest()
{
    QDBusMessage get = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get.setArguments({statusInterface, QStringLiteral("IsEnabled")});
    return get;
}

// The value of IsEnabled in `reply`; absent, with a reason, on an error or a wrong type.
std::optional<bool> isEnabledAnswer(const QDBusMessage& reply, QString* whyNot)
{
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

} // namespace

AccessibilitySwitch::AccessibilitySwitch(QObject* parent) : AccessibilityTrust(parent) {}

std::optional<bool> AccessibilitySwitch::isEnabled(QString* whyNot)
{
    QDBusConnection session = QDBusConnection::sessionBus();
    if (!session.isConnected()) {
        if (whyNot)
            *whyNot = QStringLiteral("no D-Bus session bus");
        return std::nullopt;
    }
    return isEnabledAnswer(
        session.call(isEnabledRequest(), QDBus::Block, atspi::requestTimeoutMs * 2), whyNot);
}

// Properties.Set of IsEnabled, for the blocking and the asynchronous change alike.
QDBusMessage AccessibilitySwitch::setEnabledMessage(bool enabled)
{
    QDBusMessage set = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Set"));
    set.setArguments(
        {statusInterface, QStringLiteral("IsEnabled"), QVariant::fromValue(QDBusVariant(enabled))});
    return set;
}

bool AccessibilitySwitch::setEnabled(bool enabled)
{
    const QDBusMessage reply = QDBusConnection::sessionBus().call(
        setEnabledMessage(enabled), QDBus::Block, atspi::requestTimeoutMs * 2);
    return reply.type() == QDBusMessage::ReplyMessage;
}

void AccessibilitySwitch::requestTrust()
{
    QDBusConnection::sessionBus().asyncCall(setEnabledMessage(true), atspi::requestTimeoutMs * 2);
}

bool AccessibilitySwitch::watch()
{
    // The bus launcher coming or going changes the answer as much as IsEnabled does.
    auto* launcher = new QDBusServiceWatcher(service, QDBusConnection::sessionBus(),
                                             QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(launcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& newOwner) {
                if (newOwner.isEmpty()) {
                    m_trusted = false;
                    if (!std::exchange(m_busAddress, QString()).isEmpty())
                        Q_EMIT busAddressChanged({});
                }
                Q_EMIT broadcast();
            });
    return QDBusConnection::sessionBus().connect(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("PropertiesChanged"), this,
        SLOT(onPropertiesChanged(QString, QVariantMap, QStringList)));
}

void AccessibilitySwitch::refresh(std::function<void(bool trusted)> completion)
{
    if (m_reading) {
        // The read in flight may have been sent before the change this caller has heard of:
        // the next read, sent once that one answers, answers every caller that came meanwhile.
        if (completion)
            m_later.append(std::move(completion));
        return;
    }
    if (completion)
        m_waiting.append(std::move(completion));
    QDBusConnection session = QDBusConnection::sessionBus();
    if (!session.isConnected()) {
        answer(false);
        return;
    }
    m_reading = true;
    // First IsEnabled, then, when it is on, whether the a11y bus has an address.
    const auto ask = [this, session](const QDBusMessage& message,
                                     std::function<void(const QDBusMessage&)> then) {
        auto* watcher =
            new QDBusPendingCallWatcher(session.asyncCall(message, atspi::requestTimeoutMs * 2));
        connect(watcher, &QDBusPendingCallWatcher::finished, this,
                [watcher, then = std::move(then)] {
                    watcher->deleteLater();
                    then(watcher->reply());
                });
    };
    ask(isEnabledRequest(), [this, ask](const QDBusMessage& reply) {
        if (!isEnabledAnswer(reply, nullptr).value_or(false)) {
            m_reading = false;
            answer(false);
            return;
        }
        ask(QDBusMessage::createMethodCall(service, path, service, QStringLiteral("GetAddress")),
            [this](const QDBusMessage& addressReply) {
                m_reading = false;
                const QString address = addressReply.type() == QDBusMessage::ReplyMessage &&
                                                !addressReply.arguments().isEmpty()
                                            ? addressReply.arguments().constFirst().toString()
                                            : QString();
                answer(!address.isEmpty(), address);
            });
    });
}

void AccessibilitySwitch::answer(bool trusted, const QString& address)
{
    m_trusted = trusted;
    if (std::exchange(m_busAddress, address) != address)
        Q_EMIT busAddressChanged(address);
    const auto waiting = std::exchange(m_waiting, {});
    for (const auto& completion : waiting)
        completion(trusted);
    if (!m_reading && !m_later.isEmpty()) {
        m_waiting = std::exchange(m_later, {});
        refresh(nullptr);
    }
}

void AccessibilitySwitch::onPropertiesChanged(const QString& interface, const QVariantMap& changed,
                                              const QStringList&)
{
    if (interface != statusInterface)
        return;
    // The broadcast carries the new value: keep it at once, so that nobody reads a stale answer
    // while the shell's re-read (half a second later) is pending.
    const auto value = changed.constFind(QStringLiteral("IsEnabled"));
    if (value != changed.cend() && value->typeId() == QMetaType::Bool)
        m_trusted = m_trusted && value->toBool();
    Q_EMIT broadcast();
}

} // namespace corvane
