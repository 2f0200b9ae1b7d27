#include "HoldDetector.h"

#include <QLoggingCategory>
#include <QPointer>
#include <QSocketNotifier>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/timerfd.h>
#include <unistd.h>

namespace corvane {

namespace {
// Every transition, when debugging: a peek that did not show or hide says here which event it saw.
Q_LOGGING_CATEGORY(lcHold, "com.vantorel.corvane.hold", QtInfoMsg)
} // namespace

using Event = HoldStateMachine::Event;
using Effect = HoldStateMachine::Effect;
using State = HoldStateMachine::State;
using Kind = InputMonitors::Kind;

HoldDetector::HoldDetector(InputMonitors& monitors, QObject* parent)
    : QObject(parent), m_platform(monitors)
{
    m_fallbackTimer.setSingleShot(true);
    m_fallbackTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_fallbackTimer, &QTimer::timeout, this, &HoldDetector::delayElapsed);
}

HoldDetector::~HoldDetector()
{
    delete m_timerNotifier; // before its descriptor closes
    if (m_timerFd >= 0)
        ::close(m_timerFd);
}

bool HoldDetector::frameContains(const QRectF& frame, const QPointF& point)
{
    return containsPoint(frame, point);
}

void HoldDetector::add(Kind kind, InputMonitors::Handler handler)
{
    // A refused monitor is simply not recorded.
    if (const auto token = m_platform.add(kind, std::move(handler)))
        m_monitors.append(*token);
}

void HoldDetector::start()
{
    if (!m_monitors.isEmpty())
        return;
    // Every handler holds the detector weakly and does nothing once it is gone.
    const QPointer<HoldDetector> self(this);
    add(Kind::modifierChange, [self](const InputMonitors::Event& e) {
        if (self)
            self->handleModifierChange(e);
    });
    add(Kind::keyPress, [self](const InputMonitors::Event&) {
        if (self)
            self->handleKeyPress();
    });
    add(Kind::mousePress, [self](const InputMonitors::Event&) {
        if (self)
            self->handleClick();
    });
    add(Kind::scroll, [self](const InputMonitors::Event&) {
        if (self)
            self->handleScroll();
    });
}

void HoldDetector::stop()
{
    for (InputMonitors::Token token : std::as_const(m_monitors))
        m_platform.remove(token);
    m_monitors.clear();
    cancelTimer();
}

void HoldDetector::send(const Event& event)
{
    const HoldStateMachine::Effects effects = machine.handle(event);
    if (effects.isEmpty())
        return;
    if (lcHold().isDebugEnabled()) {
        QByteArrayList names;
        for (Effect effect : effects)
            names.append(nameOf(effect));
        qCDebug(lcHold, "hold: %s%s -> %s [%s]", nameOf(event.kind),
                event.kind == Event::Kind::triggerUp && event.overPanel ? " over the panel" : "",
                nameOf(machine.state), names.join(", ").constData());
    }
    for (Effect effect : effects) {
        switch (effect) {
        case Effect::startTimer:
            armTimer(); // a pending timer is replaced: only one timerFired arrives
            break;
        case Effect::cancelTimer:
            cancelTimer();
            break;
        case Effect::pin:
            m_triggerIsAloneDown = false; // the next time the trigger is alone it is a fresh press
            break;
        case Effect::show:
        case Effect::hide:
            break;
        }
    }
    if (onEffect)
        onEffect(effects);
}

void HoldDetector::armTimer()
{
    cancelTimer();
    m_timerPending = true;
    const qint64 delayNs = std::max<qint64>(1, qint64(holdDelay * 1e9 + 0.5)); // 0 would disarm
    itimerspec due{};
    due.it_value.tv_sec = time_t(delayNs / 1'000'000'000);
    due.it_value.tv_nsec = long(delayNs % 1'000'000'000);
    if (openTimerFd() && timerfd_settime(m_timerFd, 0, &due, nullptr) == 0)
        return;
    m_fallbackTimer.start(int(holdDelay * 1000.0 + 0.5));
}

void HoldDetector::cancelTimer()
{
    m_timerPending = false;
    m_fallbackTimer.stop();
    // Setting a timerfd also clears an expiry not yet read: a timeout that came in before the
    // cancel is never reported.
    if (m_timerFd >= 0) {
        const itimerspec off{};
        timerfd_settime(m_timerFd, 0, &off, nullptr);
    }
}

bool HoldDetector::openTimerFd()
{
    if (m_timerFd != -1)
        return m_timerFd >= 0;
    m_timerFd = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    if (m_timerFd < 0) {
        qCWarning(lcHold, "hold: no timerfd (%s); the event loop times the hold delay",
                  std::strerror(errno));
        m_timerFd = -2;
        return false;
    }
    m_timerNotifier = new QSocketNotifier(m_timerFd, QSocketNotifier::Read, this);
    connect(m_timerNotifier, &QSocketNotifier::activated, this, [this] {
        quint64 expiries = 0;
        if (::read(m_timerFd, &expiries, sizeof expiries) == sizeof expiries)
            delayElapsed();
    });
    return true;
}

void HoldDetector::delayElapsed()
{
    m_timerPending = false;
    send(Event::timerFired());
}

bool HoldDetector::pointerOverPanel() const
{
    const std::optional<QRectF> frame = panelFrameProvider ? panelFrameProvider() : std::nullopt;
    return frame && frameContains(*frame, m_platform.pointerPosition());
}

void HoldDetector::handleModifierChange(const InputMonitors::Event& event)
{
    if (!triggerModifier)
        return;
    const ModifierFlags::Flags held = event.modifierFlags & ModifierFlags::watchedMask;
    const bool wasAlone = m_triggerIsAloneDown;
    if (held == *triggerModifier) {
        if (wasAlone)
            return; // a repeat, or a change of an unwatched flag such as Caps Lock
        m_triggerIsAloneDown = true;
        // Refused: the flag stays set, so holding on does not ask again.
        if (canArmProvider && canArmProvider())
            send(Event::triggerDown());
        return;
    }
    m_triggerIsAloneDown = false;
    if ((held & *triggerModifier) != *triggerModifier)
        send(Event::triggerUp(pointerOverPanel()));
    else if (wasAlone)
        send(Event::interrupted());
}

void HoldDetector::handleKeyPress()
{
    send(Event::interrupted());
}

void HoldDetector::handleClick()
{
    switch (machine.state) {
    case State::arming:
    case State::peeking:
        send(Event::interrupted());
        break;
    case State::pinned:
        if (!dialogOpen())
            send(Event::closeRequest()); // a click outside the pinned overlay closes it
        break;
    case State::idle:
        break;
    }
}

void HoldDetector::handleScroll()
{
    switch (machine.state) {
    case State::arming:
        send(Event::interrupted());
        break;
    case State::peeking:
        if (!pointerOverPanel())
            send(Event::interrupted());
        break;
    case State::idle:
    case State::pinned:
        break;
    }
}

} // namespace corvane
