#pragma once

// Turns global input into HoldStateMachine events and carries out the timer effects. It knows
// nothing of the overlay: the panel frame and whether arming is allowed come through two providers
// that the application delegate installs.

#include "HoldStateMachine.h"
#include "ModifierFlags.h"
#include "platform/InputMonitors.h"

#include <QObject>
#include <QRectF>
#include <QSocketNotifier>
#include <QTimer>
#include <functional>
#include <optional>

namespace corvane {

class HoldDetector : public QObject {
    Q_OBJECT

public:
    explicit HoldDetector(InputMonitors& monitors, QObject* parent = nullptr);
    ~HoldDetector() override;

    std::function<void(const HoldStateMachine::Effects&)> onEffect;
    std::function<std::optional<QRectF>()> panelFrameProvider = [] {
        return std::optional<QRectF>();
    };
    std::function<bool()> canArmProvider = [] { return true; };
    // While true, a click elsewhere leaves the pinned panel open (a dialog of Corvane's own is
    // open over it).
    std::function<bool()> dialogOpen = [] { return false; };
    std::optional<ModifierFlags::Flags> triggerModifier;
    double holdDelay = 0.85;
    HoldStateMachine machine;

    // Installs the four monitors in order; does nothing while any is installed.
    void start();
    // Removes the monitors and the pending timer; the state machine keeps its state.
    void stop();
    // The single entry for events; safe to call again from inside onEffect.
    void send(const HoldStateMachine::Event& event);

    qsizetype installedMonitorCount() const { return m_monitors.size(); }
    bool timerPending() const { return m_timerPending; }

    // A rectangle contains a point on its left and top edges, not on its right and bottom ones.
    static bool frameContains(const QRectF& frame, const QPointF& point);

private:
    void add(InputMonitors::Kind kind, InputMonitors::Handler handler);
    void handleModifierChange(const InputMonitors::Event& event);
    void handleKeyPress();
    void handleClick();
    void handleScroll();
    bool pointerOverPanel() const;
    void armTimer();
    void cancelTimer();
    bool openTimerFd();
    void delayElapsed();

    InputMonitors& m_platform;
    QList<InputMonitors::Token> m_monitors;
    // The hold delay is timed by a timerfd, which wakes the process when it is due; the event
    // loop's own timers wake it at the next whole millisecond after, half a millisecond late on
    // average. One of them is the fallback where no timerfd can be had.
    int m_timerFd = -1; // -2: none could be had
    QSocketNotifier* m_timerNotifier = nullptr;
    QTimer m_fallbackTimer;
    bool m_timerPending = false;
    bool m_triggerIsAloneDown = false;
};

} // namespace corvane
