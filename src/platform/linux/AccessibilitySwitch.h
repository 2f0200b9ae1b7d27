#pragma once

// The accessibility switch: Corvane may read other applications when the a11y bus is reachable and
// org.a11y.Status IsEnabled is true; setting IsEnabled is the prompt; every change is broadcast as
// PropertiesChanged on /org/a11y/bus. The static reads block (call them off the main thread); the
// AccessibilityTrust side reads asynchronously and never waits.

#include "platform/AccessibilityTrust.h"

#include <QDBusMessage>
#include <QList>
#include <optional>

namespace corvane {

class AccessibilitySwitch : public AccessibilityTrust {
    Q_OBJECT

public:
    explicit AccessibilitySwitch(QObject* parent = nullptr);

    // Absent, with a reason, when the session bus or org.a11y.Bus does not answer.
    static std::optional<bool> isEnabled(QString* whyNot = nullptr);
    static bool setEnabled(bool enabled);

    // AccessibilityTrust: trusted when IsEnabled is true and the a11y bus has an address.
    bool isTrusted() const override { return m_trusted; }
    void refresh(std::function<void(bool trusted)> completion) override;
    bool watch() override;
    // Sets IsEnabled to true asynchronously; the broadcast then reports the change.
    void requestTrust() override;

Q_SIGNALS:
    // The a11y bus's address after a read: empty while accessibility is off or the bus is gone.
    void busAddressChanged(const QString& address);

private Q_SLOTS:
    void onPropertiesChanged(const QString& interface, const QVariantMap& changed,
                             const QStringList& invalidated);

private:
    static QDBusMessage setEnabledMessage(bool enabled);
    void answer(bool trusted, const QString& address = {});

    bool m_trusted = false;
    QString m_busAddress;
    bool m_reading = false;
    QList<std::function<void(bool)>> m_waiting; // completions of the read in flight
    QList<std::function<void(bool)>> m_later;   // callers that came while it was in flight
};

} // namespace corvane
