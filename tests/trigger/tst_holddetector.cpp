// The hold detector driven through a fake set of input monitors: every edge case worth
// testing, the worked sequences, the timer, and re-entrant send from inside onEffect.

#include "FakeMonitors.h"
#include "trigger/HoldDetector.h"

#include <QTest>

using namespace corvane;
using corvane::test::FakeMonitors;
using Effect = HoldStateMachine::Effect;
using Effects = HoldStateMachine::Effects;
using State = HoldStateMachine::State;
using Kind = InputMonitors::Kind;
namespace MF = ModifierFlags;

namespace {

constexpr std::uint64_t capsLock = 0x10000;

} // namespace

class TestHoldDetector : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void holdPastDelayShows();
    void noTriggerNoModifierEvents();
    void refusedArmingNeedsAFreshPress();
    void capsLockDoesNotInterrupt();
    void releaseWithoutVisiblePanelIsNotOverPanel();
    void releaseOverVisiblePanelPins();
    void scrollOverPeekingPanelKeepsIt();
    void clicks();
    void startTwiceInstallsFour();
    void refusedMonitorIsNotRecorded();
    void restartedTimerFiresOnce();
    void ignoredEventsDoNotCallOnEffect();
    void shiftThenTriggerThenShiftUpArms();
    void otherModifierInterruptsAndReleaseArmsAfresh();
    void keyPressInterrupts();
    void reentrantSendFromOnEffect();
    void stopKeepsStateAndCancelsTimer();
    void frameEdges();

private:
    std::unique_ptr<FakeMonitors> m_monitors;
    std::unique_ptr<HoldDetector> m_detector;
    QList<Effects> m_effects;
};

void TestHoldDetector::init()
{
    m_monitors = std::make_unique<FakeMonitors>();
    m_detector = std::make_unique<HoldDetector>(*m_monitors);
    m_detector->triggerModifier = MF::command;
    m_detector->holdDelay = 0.05;
    m_effects.clear();
    m_detector->onEffect = [this](const Effects& e) { m_effects.append(e); };
    m_detector->start();
}

void TestHoldDetector::cleanup()
{
    m_detector.reset();
    m_monitors.reset();
}

void TestHoldDetector::holdPastDelayShows()
{
    m_monitors->modifiers(MF::command);
    QCOMPARE(m_effects, QList<Effects>{Effects{Effect::startTimer}});
    QTRY_COMPARE(m_detector->machine.state, State::peeking);
    QCOMPARE(m_effects.last(), Effects{Effect::show});
}

void TestHoldDetector::noTriggerNoModifierEvents()
{
    m_detector->triggerModifier.reset();
    m_monitors->modifiers(MF::command);
    m_monitors->modifiers(0);
    m_monitors->emit(Kind::keyPress);
    m_monitors->emit(Kind::mousePress);
    m_monitors->emit(Kind::scroll);
    QVERIFY(m_effects.isEmpty()); // idle ignores what the other monitors send
    QCOMPARE(m_detector->machine.state, State::idle);
    m_detector->send(HoldStateMachine::Event::pinRequest()); // the status menu's Peek still works
    QCOMPARE(m_effects.last(), (Effects{Effect::show, Effect::pin}));
}

void TestHoldDetector::refusedArmingNeedsAFreshPress()
{
    bool canArm = false;
    m_detector->canArmProvider = [&canArm] { return canArm; };
    m_monitors->modifiers(MF::command);
    QVERIFY(m_effects.isEmpty());
    canArm = true; // the permission or the frontmost application changes…
    m_monitors->modifiers(MF::command | capsLock);
    m_monitors->modifiers(MF::command);
    QVERIFY(m_effects.isEmpty()); // …but the hold in progress still does not arm
    m_monitors->modifiers(0);
    m_effects.clear();
    m_monitors->modifiers(MF::command);
    QCOMPARE(m_effects, QList<Effects>{Effects{Effect::startTimer}});
}

void TestHoldDetector::capsLockDoesNotInterrupt()
{
    m_monitors->modifiers(MF::command);
    m_monitors->modifiers(MF::command | capsLock);
    m_monitors->modifiers(MF::command);
    QCOMPARE(m_detector->machine.state, State::arming);
    QTRY_COMPARE(m_detector->machine.state, State::peeking);
}

void TestHoldDetector::releaseWithoutVisiblePanelIsNotOverPanel()
{
    m_monitors->pointer = QPointF(100, 100); // where the panel would be
    m_detector->panelFrameProvider = [] { return std::optional<QRectF>(); };
    m_monitors->modifiers(MF::command);
    QTRY_COMPARE(m_detector->machine.state, State::peeking);
    m_monitors->modifiers(0);
    QCOMPARE(m_effects.last(), Effects{Effect::hide});
    QCOMPARE(m_detector->machine.state, State::idle);
}

void TestHoldDetector::releaseOverVisiblePanelPins()
{
    m_monitors->pointer = QPointF(100, 100);
    m_detector->panelFrameProvider = [] { return std::optional<QRectF>(QRectF(50, 50, 200, 200)); };
    m_monitors->modifiers(MF::command);
    QTRY_COMPARE(m_detector->machine.state, State::peeking);
    m_monitors->modifiers(0);
    QCOMPARE(m_effects.last(), Effects{Effect::pin});
    QCOMPARE(m_detector->machine.state, State::pinned);
    // Pinned ignores the trigger; after the pin a fresh press is needed for "alone".
    m_monitors->modifiers(MF::command);
    m_monitors->modifiers(0);
    QCOMPARE(m_detector->machine.state, State::pinned);
}

void TestHoldDetector::scrollOverPeekingPanelKeepsIt()
{
    m_detector->panelFrameProvider = [] { return std::optional<QRectF>(QRectF(50, 50, 200, 200)); };
    m_monitors->modifiers(MF::command);
    QTRY_COMPARE(m_detector->machine.state, State::peeking);
    m_monitors->pointer = QPointF(60, 60);
    m_monitors->emit(Kind::scroll);
    QCOMPARE(m_detector->machine.state, State::peeking);
    m_monitors->pointer = QPointF(500, 500);
    m_monitors->emit(Kind::scroll);
    QCOMPARE(m_detector->machine.state, State::idle);
    QCOMPARE(m_effects.last(), Effects{Effect::hide});
}

void TestHoldDetector::clicks()
{
    m_monitors->emit(Kind::mousePress); // idle: nothing
    QVERIFY(m_effects.isEmpty());
    m_detector->send(HoldStateMachine::Event::pinRequest());
    QCOMPARE(m_detector->machine.state, State::pinned);
    m_monitors->emit(Kind::mousePress); // pinned: closes
    QCOMPARE(m_effects.last(), Effects{Effect::hide});
    QCOMPARE(m_detector->machine.state, State::idle);
    m_monitors->modifiers(MF::command);
    m_monitors->emit(Kind::mousePress); // arming: interrupted
    QCOMPARE(m_effects.last(), Effects{Effect::cancelTimer});
}

void TestHoldDetector::startTwiceInstallsFour()
{
    m_detector->start();
    QCOMPARE(m_detector->installedMonitorCount(), 4);
    QCOMPARE(m_monitors->handlers.size(), 4);
    m_detector->stop();
    QCOMPARE(m_monitors->handlers.size(), 0);
    m_detector->start();
    QCOMPARE(m_monitors->handlers.size(), 4);
    QCOMPARE(m_monitors->added, 8);
}

void TestHoldDetector::refusedMonitorIsNotRecorded()
{
    FakeMonitors monitors;
    monitors.refuse = {Kind::keyPress};
    HoldDetector detector(monitors);
    detector.start();
    QCOMPARE(detector.installedMonitorCount(), 3);
}

void TestHoldDetector::restartedTimerFiresOnce()
{
    // Timer A starts at 0 ms; at 150 ms a fresh arming starts timer B. The machine only emits
    // startTimer from idle, so the state is set back by hand to produce the second one.
    m_detector->holdDelay = 0.3;
    m_detector->send(HoldStateMachine::Event::triggerDown());
    QTest::qWait(150);
    m_detector->machine.state = State::idle;
    m_detector->send(HoldStateMachine::Event::triggerDown());
    int fired = 0;
    m_detector->onEffect = [&fired](const Effects& e) { fired += e.contains(Effect::show); };
    // Had A survived, it would fire at 300 ms.
    QTest::qWait(250);
    QCOMPARE(fired, 0);
    QTRY_COMPARE_WITH_TIMEOUT(fired, 1, 1000);
    QTest::qWait(400);
    QCOMPARE(fired, 1);
    QVERIFY(!m_detector->timerPending());
}

void TestHoldDetector::ignoredEventsDoNotCallOnEffect()
{
    m_detector->send(HoldStateMachine::Event::timerFired());
    m_detector->send(HoldStateMachine::Event::closeRequest());
    m_monitors->emit(Kind::keyPress);
    m_monitors->modifiers(MF::shift);
    m_monitors->modifiers(0);
    QVERIFY(m_effects.isEmpty());
}

void TestHoldDetector::shiftThenTriggerThenShiftUpArms()
{
    m_monitors->modifiers(MF::shift);
    m_monitors->modifiers(MF::shift | MF::command);
    QVERIFY(m_effects.isEmpty());
    m_monitors->modifiers(MF::command); // ⇧ released, ⌘ alone: arms
    QCOMPARE(m_effects, QList<Effects>{Effects{Effect::startTimer}});
}

void TestHoldDetector::otherModifierInterruptsAndReleaseArmsAfresh()
{
    m_monitors->modifiers(MF::command);
    m_monitors->modifiers(MF::command | MF::shift);
    QCOMPARE(m_effects.last(), Effects{Effect::cancelTimer});
    QCOMPARE(m_detector->machine.state, State::idle);
    m_monitors->modifiers(MF::command);
    QCOMPARE(m_effects.last(), Effects{Effect::startTimer});
}

void TestHoldDetector::keyPressInterrupts()
{
    m_monitors->modifiers(MF::command);
    m_monitors->emit(Kind::keyPress);
    QCOMPARE(m_detector->machine.state, State::idle);
    QVERIFY(!m_detector->timerPending());
}

void TestHoldDetector::reentrantSendFromOnEffect()
{
    // The delegate cannot show and sends closeRequest from inside onEffect.
    QList<QString> log;
    m_detector->onEffect = [this, &log](const Effects& effects) {
        for (Effect e : effects) {
            log << QString::fromLatin1(nameOf(e));
            if (e == Effect::show)
                m_detector->send(HoldStateMachine::Event::closeRequest());
        }
    };
    m_detector->send(HoldStateMachine::Event::pinRequest());
    // The nested [hide] is delivered completely before the outer list goes on with pin.
    QCOMPARE(log, (QList<QString>{"show", "hide", "pin"}));
    QCOMPARE(m_detector->machine.state, State::idle);
}

void TestHoldDetector::stopKeepsStateAndCancelsTimer()
{
    m_monitors->modifiers(MF::command);
    m_detector->stop();
    QCOMPARE(m_detector->machine.state, State::arming);
    QVERIFY(!m_detector->timerPending());
    m_detector->start();
    m_monitors->modifiers(0); // the new monitors carry on with the same hold
    QCOMPARE(m_detector->machine.state, State::idle);
}

void TestHoldDetector::frameEdges()
{
    const QRectF frame(10, 20, 100, 50);
    QVERIFY(HoldDetector::frameContains(frame, QPointF(10, 20)));   // left/top edge: inside
    QVERIFY(!HoldDetector::frameContains(frame, QPointF(110, 30))); // right edge: outside
    QVERIFY(!HoldDetector::frameContains(frame, QPointF(50, 70)));  // bottom edge: outside
    QVERIFY(HoldDetector::frameContains(frame, QPointF(109.9, 69.9)));
}

QTEST_GUILESS_MAIN(TestHoldDetector)
#include "tst_holddetector.moc"
