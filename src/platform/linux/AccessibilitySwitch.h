#pragma once

// The accessibility switch (PLATFORM.md): the Linux AXIsProcessTrusted() is "the a11y bus is
// reachable and org.a11y.Status IsEnabled is true"; setting IsEnabled is the prompt; every change
// is broadcast as PropertiesChanged on /org/a11y/bus. Reads are blocking session-bus calls.

#include <QObject>
#include <optional>

namespace corvane {

class AccessibilitySwitch : public QObject {
    Q_OBJECT

public:
    explicit AccessibilitySwitch(QObject* parent = nullptr);

    // Absent, with a reason, when the session bus or org.a11y.Bus does not answer.
    static std::optional<bool> isEnabled(QString* whyNot = nullptr);
    static bool isTrusted();
    static bool setEnabled(bool enabled);

    // Starts listening for the broadcast; false when the session bus is not reachable.
    bool watch();

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void onPropertiesChanged(const QString& interface, const QVariantMap& changed,
                             const QStringList& invalidated);
};

} // namespace corvane
