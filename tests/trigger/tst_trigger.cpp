// The hold trigger: every cell of the state machine's table, and the detector driven through fake
// monitors by short scripts of input (the same loop with real X input is tst_x11).

#include "FakeMonitors.h"
#include "trigger/HoldDetector.h"

#include <QTest>

using namespace corvane;
using corvane::test::FakeMonitors;
using State = HoldStateMachine::State;
using Effect = HoldStateMachine::Effect;
using Event = HoldStateMachine::Event;
namespace MF = ModifierFlags;

Q_DECLARE_METATYPE(corvane::HoldStateMachine::State)

namespace {

QString describe(const HoldStateMachine::Effects& effects)
{
    QStringList names;
    for (Effect e : effects)
        names << QString::fromLatin1(nameOf(e));
    return names.join(u',');
}

} // namespace

class TestTrigger : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void transitionTable_data();
    void transitionTable();
    void detector_data();
    void detector();
    void refusedMonitorIsNotRecordedAndStopKeepsTheState();
    void restartedTimerFiresOnce();
    void reentrantSendFromOnEffect();
};

void TestTrigger::transitionTable_data()
{
    QTest::addColumn<State>("from");
    QTest::addColumn<int>("event");
    QTest::addColumn<State>("to");
    QTest::addColumn<QString>("effects");
    const char* events[] = {"triggerDown", "triggerUp(false)", "triggerUp(true)", "interrupted",
                            "timerFired",  "pinRequest",       "closeRequest"};
    using S = State;
    // One row per state, one cell per event above: the state after it and the effects.
    const QList<std::pair<S, QList<std::pair<S, QString>>>> table{
        {S::idle,
         {{S::arming, "startTimer"},
          {S::idle, ""},
          {S::idle, ""},
          {S::idle, ""},
          {S::idle, ""},
          {S::pinned, "show,pin"},
          {S::idle, ""}}},
        {S::arming,
         {{S::arming, ""},
          {S::idle, "cancelTimer"},
          {S::idle, "cancelTimer"},
          {S::idle, "cancelTimer"},
          {S::peeking, "show"},
          {S::pinned, "cancelTimer,show,pin"},
          {S::idle, "cancelTimer"}}},
        {S::peeking,
         {{S::peeking, ""},
          {S::idle, "hide"},
          {S::pinned, "pin"},
          {S::idle, "hide"},
          {S::peeking, ""},
          {S::pinned, "pin"},
          {S::idle, "hide"}}},
        {S::pinned,
         {{S::pinned, ""},
          {S::pinned, ""},
          {S::pinned, ""},
          {S::pinned, ""},
          {S::pinned, ""},
          {S::idle, "hide"},
          {S::idle, "hide"}}},
    };
    for (const auto& [from, row] : table)
        for (int e = 0; e < row.size(); ++e)
            QTest::addRow("%s + %s", nameOf(from), events[e])
                << from << e << row[e].first << row[e].second;
}

void TestTrigger::transitionTable()
{
    QFETCH(State, from);
    QFETCH(int, event);
    QFETCH(State, to);
    QFETCH(QString, effects);
    const Event events[] = {Event::triggerDown(), Event::triggerUp(false), Event::triggerUp(true),
                            Event::interrupted(), Event::timerFired(),     Event::pinRequest(),
                            Event::closeRequest()};
    HoldStateMachine machine;
    machine.state = from;
    QCOMPARE(describe(machine.handle(events[event])), effects);
    QCOMPARE(machine.state, to);
}

// A script is a list of steps: a modifier set ("cmd", "cmd+shift", "shift", "caps", "none"),
// "key", "click", "scroll", "wait" (the hold delay passes), "pin" (a pin request), "over" /
// "away" (the pointer over the visible panel or away from it), "refuse" / "allow" (arming).
void TestTrigger::detector_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("effects"); // each effect list of onEffect, joined by " | "
    QTest::addColumn<State>("state");
    QTest::newRow("hold past the delay shows, release away hides")
        << "cmd wait none"
        << "startTimer | show | hide" << State::idle;
    QTest::newRow("release over the panel pins; pinned ignores the trigger")
        << "over cmd wait none cmd none"
        << "startTimer | show | pin" << State::pinned;
    QTest::newRow("release while arming, over the panel, cancels")
        << "over cmd none"
        << "startTimer | cancelTimer" << State::idle;
    QTest::newRow("caps lock during the hold changes nothing")
        << "cmd caps+cmd cmd wait"
        << "startTimer | show" << State::peeking;
    QTest::newRow("another modifier interrupts; back to the trigger alone arms afresh")
        << "cmd cmd+shift cmd"
        << "startTimer | cancelTimer | startTimer" << State::arming;
    QTest::newRow("shift, then the trigger, then shift up arms") << "shift cmd+shift cmd"
                                                                 << "startTimer" << State::arming;
    QTest::newRow("a key press interrupts") << "cmd key"
                                            << "startTimer | cancelTimer" << State::idle;
    QTest::newRow("a click interrupts arming") << "cmd click"
                                               << "startTimer | cancelTimer" << State::idle;
    QTest::newRow("a click closes the pinned overlay") << "pin click"
                                                       << "show,pin | hide" << State::idle;
    QTest::newRow("scrolling over the peeking panel keeps it, elsewhere interrupts")
        << "cmd wait over scroll away scroll"
        << "startTimer | show | hide" << State::idle;
    QTest::newRow("idle ignores keys, clicks, scrolls and other modifiers")
        << "key click scroll shift none"
        << "" << State::idle;
    QTest::newRow("refused arming needs a fresh press of the trigger")
        << "refuse cmd allow caps+cmd cmd none cmd"
        << "startTimer" << State::arming;
}

void TestTrigger::detector()
{
    QFETCH(QString, script);
    QFETCH(QString, effects);
    QFETCH(State, state);
    FakeMonitors monitors;
    HoldDetector detector(monitors);
    detector.triggerModifier = MF::command;
    detector.holdDelay = 0.05;
    bool canArm = true;
    bool overPanel = false;
    detector.canArmProvider = [&] { return canArm; };
    detector.panelFrameProvider = [] { return std::optional<QRectF>(QRectF(50, 50, 200, 200)); };
    QStringList seen;
    detector.onEffect = [&](const HoldStateMachine::Effects& e) { seen << describe(e); };
    detector.start();
    QCOMPARE(detector.installedMonitorCount(), 4);
    const QHash<QString, std::uint64_t> modifiers{{"cmd", MF::command},
                                                  {"cmd+shift", MF::command | MF::shift},
                                                  {"shift", MF::shift},
                                                  {"caps+cmd", MF::command | 0x10000},
                                                  {"none", 0}};
    using Kind = InputMonitors::Kind;
    for (const QString& step : script.split(u' ')) {
        monitors.pointer = overPanel ? QPointF(60, 60) : QPointF(500, 500);
        if (modifiers.contains(step))
            monitors.modifiers(modifiers[step]);
        else if (step == u"key")
            monitors.emit(Kind::keyPress);
        else if (step == u"click")
            monitors.emit(Kind::mousePress);
        else if (step == u"scroll")
            monitors.emit(Kind::scroll);
        else if (step == u"wait")
            QTRY_COMPARE(detector.machine.state, State::peeking);
        else if (step == u"pin")
            detector.send(Event::pinRequest());
        else if (step == u"over" || step == u"away")
            overPanel = step == u"over";
        else if (step == u"refuse" || step == u"allow")
            canArm = step == u"allow";
        else
            QFAIL(qPrintable("unknown step " + step));
    }
    QCOMPARE(seen.join(" | "), effects);
    QCOMPARE(detector.machine.state, state);
    QCOMPARE(detector.timerPending(), state == State::arming);
}

void TestTrigger::refusedMonitorIsNotRecordedAndStopKeepsTheState()
{
    FakeMonitors monitors;
    monitors.refuse = {InputMonitors::Kind::keyPress};
    HoldDetector detector(monitors);
    detector.triggerModifier = MF::command;
    detector.start();
    detector.start(); // a second start installs nothing more
    QCOMPARE(detector.installedMonitorCount(), 3);
    monitors.modifiers(MF::command);
    detector.stop();
    QCOMPARE(monitors.handlers.size(), 0);
    QCOMPARE(detector.machine.state, State::arming);
    QVERIFY(!detector.timerPending());
    detector.start();
    monitors.modifiers(0); // the new monitors carry on with the same hold
    QCOMPARE(detector.machine.state, State::idle);
}

void TestTrigger::restartedTimerFiresOnce()
{
    FakeMonitors monitors;
    HoldDetector detector(monitors);
    detector.holdDelay = 0.3;
    int shown = 0;
    detector.onEffect = [&](const HoldStateMachine::Effects& e) {
        shown += e.contains(Effect::show);
    };
    detector.send(Event::triggerDown());
    QTest::qWait(150);
    detector.machine.state = State::idle; // a fresh arming replaces the pending timer
    detector.send(Event::triggerDown());
    QTest::qWait(250); // the first timer would have fired by now
    QCOMPARE(shown, 0);
    QTRY_COMPARE_WITH_TIMEOUT(shown, 1, 1000);
    QTest::qWait(400);
    QCOMPARE(shown, 1);
}

void TestTrigger::reentrantSendFromOnEffect()
{
    // The delegate cannot show and sends closeRequest from inside onEffect: the nested [hide] is
    // delivered before the outer list goes on with pin.
    FakeMonitors monitors;
    HoldDetector detector(monitors);
    QStringList log;
    detector.onEffect = [&](const HoldStateMachine::Effects& effects) {
        for (Effect e : effects) {
            log << QString::fromLatin1(nameOf(e));
            if (e == Effect::show)
                detector.send(Event::closeRequest());
        }
    };
    detector.send(Event::pinRequest());
    QCOMPARE(log, (QStringList{"show", "hide", "pin"}));
    QCOMPARE(detector.machine.state, State::idle);
}

QTEST_GUILESS_MAIN(TestTrigger)
#include "tst_trigger.moc"
