#pragma once

// Whether Corvane may read other applications (accessibility is on) and the broadcast of every
// change, read without ever waiting on another process: the last answer is kept, and a read is
// asked for and answered later on the calling thread. The Linux implementation is
// AccessibilitySwitch.

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
    // Asks for the permission without waiting for the answer (on Linux the user's click is the
    // consent: IsEnabled is set).
    virtual void requestTrust() = 0;

Q_SIGNALS:
    // The platform says the permission may have changed; read it again to know.
    void broadcast();
};

} // namespace corvane
