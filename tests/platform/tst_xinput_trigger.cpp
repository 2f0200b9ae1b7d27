// The hold trigger from real input (session tier): xdotool sends XTEST key and button events to
// a real X server; XInputMonitors turns its raw events into the detector's input.

#include "SessionTools.h"
#include "platform/linux/XInputMonitors.h"
#include "trigger/HoldDetector.h"

#include <QGuiApplication>
#include <QProcess>
#include <QScopeGuard>
#include <QTest>
#include <QWindow>

using namespace corvane;
using corvane::test::xdotool;
using Effect = HoldStateMachine::Effect;
using Effects = HoldStateMachine::Effects;
using State = HoldStateMachine::State;
namespace MF = ModifierFlags;

namespace {

QString names(const QList<Effects>& lists)
{
    QStringList out;
    for (const Effects& effects : lists) {
        QStringList one;
        for (Effect e : effects)
            one << QString::fromLatin1(nameOf(e));
        out << u'[' + one.join(u',') + u']';
    }
    return out.join(u' ');
}

} // namespace

class TestXInputTrigger : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void holdCtrlAlonePastDelayShows();
    void ctrlThenShiftInterrupts();
    void shiftCtrlShiftUpArms();
    void capsLockDuringHoldDoesNotInterrupt();
    void keyClickAndWheelInterrupt_data();
    void keyClickAndWheelInterrupt();
    void altAndSuperAsTriggers_data();
    void altAndSuperAsTriggers();
    void offProducesNothing();
    void ownKeyboardGrabHidesKeys();
    void clicksInsideOwnPanelAreIgnored();

private:
    std::unique_ptr<XInputMonitors> m_monitors;
    std::unique_ptr<HoldDetector> m_detector;
    QList<Effects> m_effects;
};

void TestXInputTrigger::initTestCase()
{
    QVERIFY2(qEnvironmentVariableIsSet("CORVANE_SESSION"), "run under tools/test-session.sh");
    m_monitors = std::make_unique<XInputMonitors>();
    QString why;
    QVERIFY2(m_monitors->isAvailable(&why), qPrintable(why));
}

void TestXInputTrigger::init()
{
    m_detector = std::make_unique<HoldDetector>(*m_monitors);
    m_detector->triggerModifier = MF::command;
    m_detector->holdDelay = 0.3;
    m_effects.clear();
    m_detector->onEffect = [this](const Effects& e) { m_effects.append(e); };
    m_detector->start();
    QCOMPARE(m_detector->installedMonitorCount(), 4);
}

void TestXInputTrigger::cleanup()
{
    xdotool({"keyup", "ctrl", "shift", "alt", "super"});
    QTest::qWait(100);
    m_detector.reset();
    m_monitors->keyboardHeldByUs = [] { return false; };
    m_monitors->ownPanelFrame = [] { return std::optional<QRectF>(); };
}

void TestXInputTrigger::holdCtrlAlonePastDelayShows()
{
    xdotool({"keydown", "ctrl"});
    QTRY_COMPARE(names(m_effects), QStringLiteral("[startTimer]"));
    QTRY_COMPARE(names(m_effects), QStringLiteral("[startTimer] [show]"));
    xdotool({"keyup", "ctrl"});
    QTRY_COMPARE(names(m_effects), QStringLiteral("[startTimer] [show] [hide]"));
}

void TestXInputTrigger::ctrlThenShiftInterrupts()
{
    xdotool({"keydown", "ctrl"});
    xdotool({"keydown", "shift"});
    QTRY_COMPARE(names(m_effects), QStringLiteral("[startTimer] [cancelTimer]"));
    QCOMPARE(m_detector->machine.state, State::idle);
}

void TestXInputTrigger::shiftCtrlShiftUpArms()
{
    xdotool({"keydown", "shift"});
    xdotool({"keydown", "ctrl"});
    QTest::qWait(100);
    QVERIFY(m_effects.isEmpty());
    xdotool({"keyup", "shift"});
    QTRY_COMPARE(names(m_effects), QStringLiteral("[startTimer]"));
}

void TestXInputTrigger::capsLockDuringHoldDoesNotInterrupt()
{
    xdotool({"keydown", "ctrl"});
    xdotool({"key", "Caps_Lock"});
    QTRY_COMPARE(names(m_effects), QStringLiteral("[startTimer] [show]"));
    xdotool({"key", "Caps_Lock"}); // toggle it back for the other tests
}

void TestXInputTrigger::keyClickAndWheelInterrupt_data()
{
    QTest::addColumn<QStringList>("action");
    QTest::newRow("key press") << QStringList{"key", "a"};
    QTest::newRow("click") << QStringList{"click", "1"};
    QTest::newRow("wheel") << QStringList{"click", "4"};
}

void TestXInputTrigger::keyClickAndWheelInterrupt()
{
    QFETCH(QStringList, action);
    xdotool({"keydown", "ctrl"});
    QTRY_COMPARE(names(m_effects), QStringLiteral("[startTimer]"));
    xdotool(action);
    QTRY_COMPARE(names(m_effects), QStringLiteral("[startTimer] [cancelTimer]"));
}

void TestXInputTrigger::altAndSuperAsTriggers_data()
{
    QTest::addColumn<qulonglong>("trigger");
    QTest::addColumn<QString>("key");
    QTest::newRow("Alt") << qulonglong(MF::option) << "alt";
    QTest::newRow("Super") << qulonglong(MF::control) << "super";
}

void TestXInputTrigger::altAndSuperAsTriggers()
{
    QFETCH(qulonglong, trigger);
    QFETCH(QString, key);
    m_detector->triggerModifier = trigger;
    xdotool({"keydown", "ctrl"}); // Ctrl is not the trigger now
    xdotool({"keyup", "ctrl"});
    xdotool({"keydown", key});
    QTRY_COMPARE(names(m_effects), QStringLiteral("[startTimer] [show]"));
    xdotool({"keyup", key});
    QTRY_COMPARE(names(m_effects), QStringLiteral("[startTimer] [show] [hide]"));
}

void TestXInputTrigger::offProducesNothing()
{
    m_detector->triggerModifier.reset();
    for (const char* key : {"ctrl", "alt", "super"}) {
        xdotool({"keydown", key});
        QTest::qWait(400);
        xdotool({"keyup", key});
    }
    QTest::qWait(200);
    QVERIFY2(m_effects.isEmpty(), qPrintable(names(m_effects)));
}

void TestXInputTrigger::ownKeyboardGrabHidesKeys()
{
    // A window of this process takes the keyboard, as the pinned panel does. XInput 2.2 keeps
    // delivering raw events during the grab; the monitors drop them because they are ours.
    QWindow panel;
    panel.setFlags(Qt::Tool | Qt::FramelessWindowHint);
    panel.setGeometry(100, 100, 300, 200);
    panel.show();
    QVERIFY(QTest::qWaitForWindowExposed(&panel));
    QVERIFY(panel.setKeyboardGrabEnabled(true));
    bool grabbed = true;
    m_monitors->keyboardHeldByUs = [&grabbed] { return grabbed; };
    // The monitors outlive this test; they must not keep a reference to its local.
    const auto restore =
        qScopeGuard([this] { m_monitors->keyboardHeldByUs = [] { return false; }; });
    xdotool({"keydown", "ctrl"});
    QTest::qWait(500);
    xdotool({"keyup", "ctrl"});
    xdotool({"key", "a"});
    QTest::qWait(200);
    QVERIFY2(m_effects.isEmpty(), qPrintable(names(m_effects)));
    // Released, the same input reaches the handlers again.
    panel.setKeyboardGrabEnabled(false);
    grabbed = false;
    xdotool({"keydown", "ctrl"});
    QTRY_COMPARE(names(m_effects), QStringLiteral("[startTimer]"));
}

void TestXInputTrigger::clicksInsideOwnPanelAreIgnored()
{
    // A real window of this process stands for the pinned panel.
    QWindow panel;
    panel.setFlags(Qt::Tool | Qt::FramelessWindowHint);
    panel.setGeometry(100, 100, 300, 200);
    panel.show();
    QVERIFY(QTest::qWaitForWindowExposed(&panel));
    m_monitors->ownPanelFrame = [&panel] {
        return std::optional<QRectF>(QRectF(panel.geometry()));
    };
    m_detector->send(HoldStateMachine::Event::pinRequest());
    m_effects.clear();
    xdotool({"mousemove", "200", "200"});
    xdotool({"click", "1"});
    QTest::qWait(300);
    QCOMPARE(m_detector->machine.state, State::pinned); // the click went to our own panel
    xdotool({"mousemove", "700", "600"});
    xdotool({"click", "1"});
    QTRY_COMPARE(names(m_effects), QStringLiteral("[hide]")); // a click elsewhere closes
}

QTEST_MAIN(TestXInputTrigger)
#include "tst_xinput_trigger.moc"
