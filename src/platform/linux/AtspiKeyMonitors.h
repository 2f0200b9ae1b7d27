#pragma once

// InputMonitors on a Wayland session, where no client sees another's input: the key presses and
// releases the application in front reports to the accessibility bus (GTK 3 and Qt 5 do while
// some client listens; GTK 4 does not), heard by a keystroke listener registered with the
// registry's device event controller, and Corvane's own modifier keys once one of its windows has
// the keyboard (the panel shown over the application takes it, and the trigger's release comes
// there). Both fold into one set of held keys (KeyFolding), so that repeats and the same key
// heard twice change nothing.
//
// The listener is neither synchronous nor preemptive: it answers each event at once, on a thread
// of its own, and never consumes one, so that an application's key waits as little as possible.
// There is no global pointer on Wayland: the pointer is "over the panel" while the panel says it
// is hovered. Buttons and scrolling elsewhere are never heard.

#include "KeyFolding.h"
#include "platform/InputMonitors.h"

#include <QObject>
#include <QRectF>
#include <QThread>
#include <QTimer>

class QDBusConnection;

namespace corvane {

namespace atspi {
// Registers the object at `path` on `bus` with the registry's device event controller as a
// listener for every key's presses and releases in every modifier state, neither synchronous nor
// preemptive.
void registerKeystrokeListener(QDBusConnection& bus, const QString& path);
} // namespace atspi

class AtspiKeyMonitors : public QObject, public InputMonitors {
    Q_OBJECT

public:
    explicit AtspiKeyMonitors(QObject* parent = nullptr);
    ~AtspiKeyMonitors() override;

    // False, with a reason, when the accessibility bus cannot be reached.
    bool isAvailable(QString* whyNot = nullptr) const;

    std::optional<Token> add(Kind kind, Handler handler) override;
    void remove(Token token) override;
    QPointF pointerPosition() const override;

    // Like XInputMonitors': key events are dropped while the panel holds the keyboard.
    std::function<bool()> keyboardHeldByUs = [] { return false; };
    // The visible panel's frame while the pointer is over it.
    std::function<std::optional<QRectF>()> hoveredPanelFrame = [] {
        return std::optional<QRectF>();
    };

    std::uint64_t currentModifierFlags() const { return m_folding.flags(); }

    // While GNOME Shell's companion tells every key (`heard` false), the bus's reports, which
    // only some applications send, are left aside.
    void setBusHeard(bool heard) { m_busHeard = heard; }

public Q_SLOTS:
    // One key event as the bus, the companion or Corvane's own window reports it (keysym as X
    // names keys).
    void keyEvent(bool press, unsigned long keysym);
    // Another key was pressed; which one, the companion does not tell.
    void otherKeyPressed();

Q_SIGNALS:
    // For the benchmark: a key event reached the hold logic (after folding).
    void keyEventHandled(bool press, unsigned long keysym);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void busKeyEvent(bool press, unsigned long keysym);

private:
    void apply(const QList<KeyFolding::Change>& changes);
    void scheduleRelease();

    QString m_whyNot;
    QThread m_thread;
    QObject* m_listener = nullptr; // lives on m_thread
    KeyFolding m_folding;
    QTimer m_releaseTimer;
    MonitorHandlers m_handlers;
    bool m_busHeard = true;
};

} // namespace corvane
