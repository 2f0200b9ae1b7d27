#pragma once

// The spec's Accessibility permission (AXIsProcessTrusted) and its broadcast, read without ever
// waiting on another process: the last answer is kept, and a read is asked for and answered
// later on the calling thread. The Linux implementation is AccessibilitySwitch.

#include <QObject>
#include <functional>

namespace corvane {

class AccessibilityTrust : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // The last answer read; false until the first read has answered.
    virtual bool isTrusted() const = 0;
    // Reads the permission again; `completion` gets the answer later, on this thread.
    virtual void refresh(std::function<void(bool trusted)> completion) = 0;
    // Starts listening for the broadcast; false when it cannot be heard.
    virtual bool watch() = 0;
    // The spec's AXIsProcessTrustedWithOptions with the prompt: asks for the permission without
    // waiting for the answer (on Linux the user's click is the consent: IsEnabled is set).
    virtual void requestTrust() = 0;

Q_SIGNALS:
    // The platform's accessibility broadcast (the spec's "com.apple.accessibility.api").
    void broadcast();
};

} // namespace corvane
