// Every cell of the transition table, and each edge case worth testing.

#include "trigger/HoldStateMachine.h"

#include <QTest>

using namespace corvane;
using State = HoldStateMachine::State;
using Effect = HoldStateMachine::Effect;
using Event = HoldStateMachine::Event;
using Effects = HoldStateMachine::Effects;

Q_DECLARE_METATYPE(corvane::HoldStateMachine::State)

namespace {

QString describe(const Effects& effects)
{
    QStringList names;
    for (Effect e : effects)
        names << QString::fromLatin1(nameOf(e));
    return u'[' + names.join(QStringLiteral(", ")) + u']';
}

HoldStateMachine machineIn(State state)
{
    HoldStateMachine machine;
    machine.state = state;
    return machine;
}

} // namespace

class TestHoldStateMachine : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void transitionTable_data();
    void transitionTable();
    void freshMachineIgnoresTimer();
    void releaseWhileArmingNeverPins();
    void showPinAndIgnoreTrigger();
    void interruptions();
    void pinRequestToggles();
    void armingPinRequestOrder();
    void closeRequests();
    void equality();
};

void TestHoldStateMachine::transitionTable_data()
{
    QTest::addColumn<State>("from");
    QTest::addColumn<int>("event"); // index into the events below
    QTest::addColumn<State>("to");
    QTest::addColumn<QString>("effects");

    // The table's columns, in order.
    const char* eventNames[] = {"triggerDown", "triggerUp(false)", "triggerUp(true)", "interrupted",
                                "timerFired",  "pinRequest",       "closeRequest"};
    struct Cell {
        State to;
        Effects effects;
    };
    const auto ignored = [](State s) { return Cell{s, {}}; };
    const QList<std::pair<State, QList<Cell>>> table{
        {State::idle,
         {{State::arming, {Effect::startTimer}},
          ignored(State::idle),
          ignored(State::idle),
          ignored(State::idle),
          ignored(State::idle),
          {State::pinned, {Effect::show, Effect::pin}},
          ignored(State::idle)}},
        {State::arming,
         {ignored(State::arming),
          {State::idle, {Effect::cancelTimer}},
          {State::idle, {Effect::cancelTimer}},
          {State::idle, {Effect::cancelTimer}},
          {State::peeking, {Effect::show}},
          {State::pinned, {Effect::cancelTimer, Effect::show, Effect::pin}},
          {State::idle, {Effect::cancelTimer}}}},
        {State::peeking,
         {ignored(State::peeking),
          {State::idle, {Effect::hide}},
          {State::pinned, {Effect::pin}},
          {State::idle, {Effect::hide}},
          ignored(State::peeking),
          {State::pinned, {Effect::pin}},
          {State::idle, {Effect::hide}}}},
        {State::pinned,
         {ignored(State::pinned),
          ignored(State::pinned),
          ignored(State::pinned),
          ignored(State::pinned),
          ignored(State::pinned),
          {State::idle, {Effect::hide}},
          {State::idle, {Effect::hide}}}},
    };
    int cells = 0;
    for (const auto& [from, row] : table) {
        for (int e = 0; e < row.size(); ++e) {
            QTest::addRow("%s + %s", nameOf(from), eventNames[e])
                << from << e << row[e].to << describe(row[e].effects);
            ++cells;
        }
    }
    QCOMPARE(cells, 28);
}

void TestHoldStateMachine::transitionTable()
{
    QFETCH(State, from);
    QFETCH(int, event);
    QFETCH(State, to);
    QFETCH(QString, effects);

    const Event events[] = {Event::triggerDown(), Event::triggerUp(false), Event::triggerUp(true),
                            Event::interrupted(), Event::timerFired(),     Event::pinRequest(),
                            Event::closeRequest()};
    HoldStateMachine machine = machineIn(from);
    const Effects result = machine.handle(events[event]);
    QCOMPARE(describe(result), effects);
    QCOMPARE(machine.state, to);
}

void TestHoldStateMachine::freshMachineIgnoresTimer()
{
    HoldStateMachine machine;
    QCOMPARE(machine.state, State::idle);
    QVERIFY(machine.handle(Event::timerFired()).isEmpty());
    QCOMPARE(machine.state, State::idle);
}

void TestHoldStateMachine::releaseWhileArmingNeverPins()
{
    HoldStateMachine machine;
    QCOMPARE(machine.handle(Event::triggerDown()), Effects{Effect::startTimer});
    QCOMPARE(machine.handle(Event::triggerUp(true)), Effects{Effect::cancelTimer});
    QCOMPARE(machine.state, State::idle);
}

void TestHoldStateMachine::showPinAndIgnoreTrigger()
{
    HoldStateMachine machine;
    machine.handle(Event::triggerDown());
    QCOMPARE(machine.handle(Event::timerFired()), Effects{Effect::show});
    QCOMPARE(machine.state, State::peeking);
    QCOMPARE(machine.handle(Event::triggerUp(true)), Effects{Effect::pin});
    QCOMPARE(machine.state, State::pinned);
    QVERIFY(machine.handle(Event::triggerDown()).isEmpty());
    QCOMPARE(machine.state, State::pinned);
}

void TestHoldStateMachine::interruptions()
{
    HoldStateMachine peeking = machineIn(State::peeking);
    QCOMPARE(peeking.handle(Event::interrupted()), Effects{Effect::hide});
    QCOMPARE(peeking.state, State::idle);
    HoldStateMachine pinned = machineIn(State::pinned);
    QVERIFY(pinned.handle(Event::interrupted()).isEmpty());
    QCOMPARE(pinned.state, State::pinned);
}

void TestHoldStateMachine::pinRequestToggles()
{
    HoldStateMachine machine;
    QCOMPARE(machine.handle(Event::pinRequest()), (Effects{Effect::show, Effect::pin}));
    QCOMPARE(machine.handle(Event::pinRequest()), Effects{Effect::hide});
    QCOMPARE(machine.state, State::idle);
}

void TestHoldStateMachine::armingPinRequestOrder()
{
    HoldStateMachine machine = machineIn(State::arming);
    QCOMPARE(machine.handle(Event::pinRequest()),
             (Effects{Effect::cancelTimer, Effect::show, Effect::pin}));
    QCOMPARE(machine.state, State::pinned);
}

void TestHoldStateMachine::closeRequests()
{
    HoldStateMachine arming = machineIn(State::arming);
    QCOMPARE(arming.handle(Event::closeRequest()), Effects{Effect::cancelTimer});
    QCOMPARE(arming.state, State::idle);
    HoldStateMachine idle;
    QVERIFY(idle.handle(Event::closeRequest()).isEmpty());
    QCOMPARE(idle.state, State::idle);
}

void TestHoldStateMachine::equality()
{
    QVERIFY(machineIn(State::peeking) == machineIn(State::peeking));
    QVERIFY(!(machineIn(State::peeking) == machineIn(State::pinned)));
}

QTEST_GUILESS_MAIN(TestHoldStateMachine)
#include "tst_holdstatemachine.moc"
