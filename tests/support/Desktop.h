#pragma once

// The desktop a session test runs on (tools/test-session.sh --desktop NAME), seen and driven from
// outside as a user would: its shown windows as its window manager or compositor knows them, and
// real key and pointer input through the channel it offers (XTEST on X11, the virtual keyboard on
// sway, the Shell's virtual devices on GNOME, KWin's fake input on KWin).

#include <QJsonDocument>
#include <QList>
#include <QPoint>
#include <QProcess>
#include <QRect>
#include <QString>
#include <memory>
#include <optional>

namespace corvane::test {

class Desktop {
public:
    struct Window {
        qint64 pid = 0;
        QString title;
        QRect frame;
        bool focused = false;
    };

    // The session's desktop (CORVANE_DESKTOP); fatal outside a test session.
    static std::unique_ptr<Desktop> current();
    virtual ~Desktop() = default;

    QString name() const { return m_name; }
    bool isWayland() const { return m_name == u"sway" || m_name.endsWith(u"-wayland"); }

    // The shown windows, bottom to top.
    virtual QList<Window> windows() = 0;
    // The first shown window of `pid` whose title contains `title`.
    std::optional<Window> window(qint64 pid, const QString& title = {});
    // Where windows go on the screen: the screen less the desktop's own bars.
    virtual QRect workArea() = 0;
    // Corvane's panel (the window titled "Corvane") of process `pid`, when it shows.
    std::optional<Window> panel(qint64 pid);
    // Whether that panel shows centred on `area`, within two pixels.
    bool panelCentred(qint64 pid, const QRect& area);
    // Gives a window of `pid` the focus, and waits until it has it.
    bool activate(qint64 pid);

    // Presses `key` (an X keysym name: Control_L, Return, a) now and releases it `ms` later, in
    // finishHold(), which waits for that moment. The test looks and moves the pointer meanwhile.
    virtual void hold(const QString& key, int ms);
    virtual void finishHold();
    virtual void tap(const QString& key);
    // Lower-case letters and spaces.
    virtual void type(const QString& text);
    virtual void movePointer(QPoint to) = 0;

    // GNOME Shell: runs JavaScript in the Shell (org.gnome.Shell.Eval, which the session's
    // extension opens) and returns its value; fatal when the Shell refuses.
    static QJsonDocument shellEval(const QString& script);

protected:
    explicit Desktop(const QString& name) : m_name(name) {}
    virtual void focus(qint64 pid) = 0;
    virtual void key(const QString& key, bool down) = 0;

private:
    QString m_name;
    QString m_held;
    qint64 m_releaseAt = 0; // msecs since the epoch
};

} // namespace corvane::test
