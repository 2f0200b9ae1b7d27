#pragma once

// The Welcome window: what Corvane does, the permission with the ways to grant it, re-read once a
// second while the window is open, and a closing button that depends on it.

#include "SecondaryWindow.h"

#include <QObject>

namespace corvane {

// The view's state and the actions of its buttons.
class WelcomeModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool trusted READ trusted NOTIFY trustedChanged)
    Q_PROPERTY(QString trigger READ trigger CONSTANT)
    Q_PROPERTY(bool globalInputWatched READ globalInputWatched CONSTANT)
    Q_PROPERTY(bool trayAvailable READ trayAvailable CONSTANT)
    Q_PROPERTY(QString companionState READ companionState NOTIFY companionStateChanged)

public:
    WelcomeModel(const WindowServices& services, std::function<void()> close);

    bool trusted() const { return m_permission.trusted(); }
    QString trigger() const { return m_trigger; }
    bool globalInputWatched() const { return m_globalInputWatched; }
    bool trayAvailable() const { return m_services.hasTray(); }
    QString companionState() const { return m_services.companionState(); }

    Q_INVOKABLE void grantAccess();
    Q_INVOKABLE void openAccessibilitySettings();
    Q_INVOKABLE void openAccessibilityHelp();
    Q_INVOKABLE void turnOnCompanion();
    Q_INVOKABLE void close();

Q_SIGNALS:
    void trustedChanged();
    void companionStateChanged();

private:
    WindowServices m_services;
    std::function<void()> m_close;
    QString m_trigger;
    bool m_globalInputWatched = true;
    PermissionWatch m_permission;
};

class WelcomeWindowController : public SecondaryWindow {
    Q_DECLARE_TR_FUNCTIONS(WelcomeWindowController)

public:
    static WelcomeWindowController& shared();

    // Opens the Welcome window, or brings the open one forward (its state carries on).
    void show();
};

} // namespace corvane
