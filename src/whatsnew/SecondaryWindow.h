#pragma once

// What the settings, Welcome and What's New windows share: a normal titled window of fixed size
// whose content is a QML view of the module Corvane.Windows, made on demand with a model object,
// brought forward and centred on the screen under the pointer, and forgotten when it closes (the
// view and its model go, the fields are cleared, so the next show builds a fresh view). The views
// live in the QML modules Corvane.Windows (Welcome, What's New) and Corvane.Settings.

#include "platform/RunningApp.h"

#include <QCoreApplication>
#include <QPointer>
#include <QQuickWindow>
#include <QString>
#include <QTimer>
#include <QVariantMap>
#include <functional>

class QQmlEngine;
class QQuickItem;

namespace corvane {

class AccessibilityTrust;
class DesktopCompanion;
class DesktopIntegration;
class UserDefaults;

// The platform services the windows use; main() fills them in, tests may pass their own.
struct WindowServices {
    AccessibilityTrust* trust = nullptr;   // the permission shown and asked for
    DesktopIntegration* desktop = nullptr; // start at login, settings, help
    std::function<QString()> triggerName;  // "Ctrl", "Alt", "Super" or "" (off)
    bool globalInputWatched = true;        // false: the Welcome window says why holding fails
    UserDefaults* defaults = nullptr;      // the settings store; null: UserDefaults::standard()
    // The applications with a window (to choose from), and an application id's name and icon.
    std::function<QList<RunningApp>()> runningApplications;
    std::function<RunningApp(const QString& appId)> describeApplication;
    DesktopCompanion* companion = nullptr; // where the desktop needs one (GNOME Shell on Wayland)
    std::function<bool()> trayAvailable;   // false: the windows offer what the tray menu would
    bool ownTitleBar = false; // the compositor frames no window: the windows draw a title bar

    static WindowServices& shared();
    // The configured trigger's name for texts; the default "Ctrl" when the trigger is off.
    QString triggerNameForTexts() const;
    // The companion's state as the views name it: "" (none needed), "notInstalled",
    // "needsRestart", "off", "failed" or "on".
    QString companionState() const;
    bool hasTray() const { return !trayAvailable || trayAvailable(); }
};

// The permission as a window shows it: read at once from the last answer, then asked for again
// every second (a switch flipped elsewhere shows within a second), never waited on; `changed` when
// the answer differs.
class PermissionWatch : public QObject {
    Q_OBJECT

public:
    explicit PermissionWatch(AccessibilityTrust* trust, QObject* parent = nullptr);
    bool trusted() const { return m_trusted; }

Q_SIGNALS:
    void changed();

private:
    void check();

    AccessibilityTrust* m_trust;
    bool m_trusted;
    QTimer m_timer;
};

// The window itself: reports its close before it goes, so that the owner can let it go.
class SecondaryView : public QQuickWindow {
    Q_OBJECT

public:
    using QQuickWindow::QQuickWindow;

Q_SIGNALS:
    void willClose();

protected:
    bool event(QEvent* event) override;
};

class SecondaryWindow {
public:
    virtual ~SecondaryWindow();

    // The window on screen, or null, and its view.
    QQuickWindow* window() const { return m_window; }
    QQuickItem* view() const;
    // The open view's model, or null.
    QObject* model() const { return m_model; }

    // Closes the window, if any; its view and model go at once.
    void close();

protected:
    enum class Buttons { closeOnly, closeAndMinimize };

    // Makes the window: the view `type` of the QML module `module` with `properties`, titled
    // `title`. `model` is owned by the window and goes with it.
    void create(const QString& module, const QString& type, const QString& title, Buttons buttons,
                const QVariantMap& properties, QObject* model);
    // Raises and activates the window, centred on the screen under the pointer.
    void bringForward();

private:
    void willClose();
    // Deletes the window, its view and the model now.
    void dismantle();

    QPointer<SecondaryView> m_window;
    QPointer<QQuickItem> m_view;
    QPointer<QObject> m_model;
};

// The engine that builds every secondary window's view, with the symbols.
QQmlEngine& secondaryWindowEngine();

} // namespace corvane
