// The hold trigger: the detector and its state machine driven through fake monitors by short
// scripts of input (the same loop with real X input is tst_x11).

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
    // A script is a list of steps: a modifier set ("cmd", "cmd+shift", "shift", "caps", "none"),
    // "key", "click", "scroll", "wait" (the hold delay passes), "pin" / "close" (requests from
    // the tray or the overlay), "over" / "away" (the pointer over the visible panel or away from
    // it), "refuse" / "allow" (arming).
    void detector_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("effects"); // each effect list of onEffect, joined by " | "
        QTest::addColumn<State>("state");
        const QList<std::tuple<const char*, const char*, const char*, State>> rows{
            {"hold past the delay shows, release away hides", "cmd wait none",
             "startTimer | show | hide", State::idle},
            {"release over the panel pins; pinned ignores the trigger",
             "over cmd wait none cmd none", "startTimer | show | pin", State::pinned},
            {"release while arming, over the panel, cancels", "over cmd none",
             "startTimer | cancelTimer", State::idle},
            {"caps lock during the hold changes nothing", "cmd caps+cmd cmd wait",
             "startTimer | show", State::peeking},
            {"another modifier interrupts; the trigger alone again arms afresh",
             "cmd cmd+shift cmd", "startTimer | cancelTimer | startTimer", State::arming},
            {"shift, then the trigger, then shift up arms", "shift cmd+shift cmd", "startTimer",
             State::arming},
            {"a key press interrupts", "cmd key", "startTimer | cancelTimer", State::idle},
            {"a click interrupts arming", "cmd click", "startTimer | cancelTimer", State::idle},
            {"a click closes the pinned overlay", "pin click", "show,pin | hide", State::idle},
            {"a second pin request closes it", "pin cmd none pin", "show,pin | hide", State::idle},
            {"a pin request while arming shows pinned", "cmd pin",
             "startTimer | cancelTimer,show,pin", State::pinned},
            {"a pin request while peeking pins", "cmd wait pin none", "startTimer | show | pin",
             State::pinned},
            {"a close request while peeking hides", "cmd wait close none",
             "startTimer | show | hide", State::idle},
            {"scrolling over the peeking panel keeps it", "cmd wait over scroll",
             "startTimer | show", State::peeking},
            {"scrolling elsewhere interrupts the peek", "cmd wait scroll",
             "startTimer | show | hide", State::idle},
            {"idle ignores keys, clicks, scrolls, other modifiers and close requests",
             "key click scroll shift none close", "", State::idle},
            {"refused arming needs a fresh press of the trigger",
             "refuse cmd allow caps+cmd cmd none cmd", "startTimer", State::arming},
        };
        for (const auto& [name, script, effects, state] : rows)
            QTest::newRow(name) << script << effects << state;
    }

    void detector()
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
        detector.panelFrameProvider = [] {
            return std::optional<QRectF>(QRectF(50, 50, 200, 200));
        };
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
        const QHash<QString, Kind> input{
            {"key", Kind::keyPress}, {"click", Kind::mousePress}, {"scroll", Kind::scroll}};
        for (const QString& step : script.split(u' ')) {
            monitors.pointer = overPanel ? QPointF(60, 60) : QPointF(500, 500);
            if (modifiers.contains(step))
                monitors.modifiers(modifiers[step]);
            else if (input.contains(step))
                monitors.emit(input[step]);
            else if (step == u"wait")
                QTRY_COMPARE(detector.machine.state, State::peeking);
            else if (step == u"pin" || step == u"close")
                detector.send(step == u"pin" ? Event::pinRequest() : Event::closeRequest());
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

    void refusedMonitorIsNotRecordedAndStopKeepsTheState()
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

    void restartedTimerFiresOnce()
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

    void reentrantSendFromOnEffect()
    {
        // The delegate cannot show and sends closeRequest from inside onEffect: the nested [hide]
        // is delivered before the outer list goes on with pin.
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
};

QTEST_GUILESS_MAIN(TestTrigger)
#include "tst_trigger.moc"
