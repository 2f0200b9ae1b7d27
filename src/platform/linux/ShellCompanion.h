#pragma once

// Corvane's side of its GNOME Shell companion, the Shell extension installed with it
// ("corvane@vantorel.com"). Once the Shell runs it, Corvane subscribes to what it asked for: the
// modifier keys' presses and releases and a bare mark for any other key (the trigger over every
// application, GTK 4 and browsers included), the focused window's process, the placement of
// Corvane's windows, and an icon in the top bar whose menu is the tray menu exported here. The
// companion sends these to Corvane's own bus name only, as unicast signals from the Shell.
//
// Its state follows the Shell: the subscription's answer, the signals the companion sends when it
// starts and stops, and the Shell's extension records (org.gnome.Shell.Extensions). Nothing here
// waits for the Shell.

#include "platform/DesktopCompanion.h"

#include <QDBusMessage>
#include <QPointer>
#include <QString>

class QDBusServiceWatcher;
class QMenu;

namespace corvane {

class ShellCompanion : public DesktopCompanion {
    Q_OBJECT

public:
    static inline const QString uuid = QStringLiteral("corvane@vantorel.com");

    struct Wanted {
        bool keys = false, focus = false, placement = false, topBarIcon = false;
    };

    explicit ShellCompanion(Wanted wanted, QObject* parent = nullptr);
    ~ShellCompanion() override;

    State state() const override { return m_state; }
    void turnOn() override;

    // The menu the top-bar icon shows: its visible entries, each activated through this process.
    void exportMenu(QMenu* menu);
    // Whether the companion shows its top-bar icon (wanted where the session has no tray).
    void showTopBarIcon(bool shown);

Q_SIGNALS:
    // A modifier key (its X keysym) pressed or released anywhere in the session.
    void modifierKey(unsigned long keysym, bool pressed);
    // Another key was pressed, which one is not told.
    void keyPressed();
    // The focused window's process, and its application id where the Shell knows one.
    void focusChanged(qint64 pid, const QString& appId);

private Q_SLOTS:
    void onModifierKey(uint keysym, bool pressed, qlonglong monotonicMicroseconds);
    void onKeyPressed();
    void onFocusChanged(uint pid, const QString& appId);
    void subscribe();
    void onGone();
    void onExtensionStateChanged(const QString& uuid, const QVariantMap& info);

private:
    void readState();
    void setState(State state);

    Wanted m_wanted;
    State m_state = State::notNeeded;
    bool m_subscribing = false;
    QDBusServiceWatcher* m_shellWatcher;
    QPointer<QMenu> m_menu;
    QObject* m_menuExport = nullptr;
};

} // namespace corvane
