// The X11 side of the platform on a real X server with openbox (session tier): the hold trigger
// from real input (XTEST through xdotool, raw events through XInput 2), the application in front
// and its activations.

#include "SessionTools.h"
#include "platform/linux/X11Workspace.h"
#include "platform/linux/XInputMonitors.h"
#include "trigger/HoldDetector.h"

#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

using namespace corvane;
using corvane::test::xdotool;
namespace MF = ModifierFlags;

class TestX11 : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(qEnvironmentVariableIsSet("CORVANE_SESSION"), "run under tools/test-session.sh");
        m_monitors = std::make_unique<XInputMonitors>();
        QString why;
        QVERIFY2(m_monitors->isAvailable(&why), qPrintable(why));
    }

    void cleanupTestCase() { m_programs.stopAll(); }

    void init()
    {
        m_detector = std::make_unique<HoldDetector>(*m_monitors);
        m_detector->triggerModifier = MF::command;
        m_detector->holdDelay = 0.3;
        m_effects.clear();
        m_detector->onEffect = [this](const HoldStateMachine::Effects& list) {
            QStringList names;
            for (auto e : list)
                names << QString::fromLatin1(nameOf(e));
            m_effects << names.join(u',');
        };
        m_detector->start();
        QCOMPARE(m_detector->installedMonitorCount(), 4);
    }

    void cleanup()
    {
        xdotool({"keyup", "ctrl", "shift", "alt", "super"});
        QTest::qWait(100);
        m_detector.reset();
    }

    void holdFromRealKeys_data()
    {
        QTest::addColumn<QString>("trigger");   // the setting's name, "" off
        QTest::addColumn<QStringList>("input"); // xdotool commands, ';' between them
        QTest::addColumn<QString>("effects");
        const auto input = [](const char* commands) {
            return QString::fromLatin1(commands).split(u';');
        };
        QTest::newRow("Ctrl held past the delay, released")
            << "command" << input("keydown ctrl;sleep 0.5;keyup ctrl") << "startTimer show hide";
        QTest::newRow("Ctrl, then Shift")
            << "command" << input("keydown ctrl;keydown shift") << "startTimer cancelTimer";
        QTest::newRow("Shift, Ctrl, Shift up")
            << "command" << input("keydown shift;keydown ctrl;keyup shift") << "startTimer";
        QTest::newRow("Caps Lock during the hold")
            << "command" << input("keydown ctrl;key Caps_Lock;sleep 0.5;key Caps_Lock")
            << "startTimer show";
        QTest::newRow("a key") << "command" << input("keydown ctrl;key a")
                               << "startTimer cancelTimer";
        QTest::newRow("a click") << "command" << input("keydown ctrl;click 1")
                                 << "startTimer cancelTimer";
        QTest::newRow("the wheel")
            << "command" << input("keydown ctrl;click 4") << "startTimer cancelTimer";
        QTest::newRow("Alt as the trigger")
            << "option" << input("keydown ctrl;keyup ctrl;keydown alt;sleep 0.5;keyup alt")
            << "startTimer show hide";
        QTest::newRow("Super as the trigger")
            << "control" << input("keydown super;sleep 0.5;keyup super") << "startTimer show hide";
        QTest::newRow("off") << ""
                             << input("keydown ctrl;sleep 0.4;keyup ctrl;keydown alt;keyup alt")
                             << "";
    }

    void holdFromRealKeys()
    {
        QFETCH(QString, trigger);
        QFETCH(QStringList, input);
        QFETCH(QString, effects);
        const QHash<QString, MF::Flags> triggers{
            {"command", MF::command}, {"option", MF::option}, {"control", MF::control}};
        m_detector->triggerModifier =
            triggers.contains(trigger) ? std::optional(triggers[trigger]) : std::nullopt;
        for (const QString& command : input) {
            if (command.startsWith("sleep "))
                QTest::qWait(int(command.mid(6).toDouble() * 1000));
            else
                xdotool(command.split(u' '));
        }
        QTRY_COMPARE(this->effects(), effects);
        QTest::qWait(200);
        QCOMPARE(this->effects(), effects); // and nothing more
    }

    void ownPanelsInputIsNotGlobalInput()
    {
        // A window of this process stands for the pinned panel: it holds the keyboard, and clicks
        // inside it are its own. XInput 2.2 still delivers the raw events; the monitors drop them.
        QWindow panel;
        panel.setFlags(Qt::Tool | Qt::FramelessWindowHint);
        panel.setGeometry(100, 100, 300, 200);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        QVERIFY(panel.setKeyboardGrabEnabled(true));
        bool grabbed = true;
        m_monitors->keyboardHeldByUs = [&grabbed] { return grabbed; };
        m_monitors->ownPanelFrame = [&panel] { return std::optional<QRectF>(panel.geometry()); };
        const auto restore = qScopeGuard([this] {
            m_monitors->keyboardHeldByUs = [] { return false; };
            m_monitors->ownPanelFrame = [] { return std::optional<QRectF>(); };
        });
        xdotool({"keydown", "ctrl"});
        QTest::qWait(500);
        xdotool({"keyup", "ctrl"});
        xdotool({"key", "a"});
        QTest::qWait(200);
        QCOMPARE(effects(), QString());
        panel.setKeyboardGrabEnabled(false);
        grabbed = false;

        m_detector->send(HoldStateMachine::Event::pinRequest());
        m_effects.clear();
        xdotool({"mousemove", "200", "200", "click", "1"}); // inside: the panel's own
        QTest::qWait(300);
        QCOMPARE(m_detector->machine.state, HoldStateMachine::State::pinned);
        xdotool({"mousemove", "700", "600", "click", "1"}); // elsewhere: closes
        QTRY_COMPARE(effects(), "hide");
    }

    void activationsOfRealApplications()
    {
        const qint64 gtk = m_programs.startWithWindow(QStringLiteral(FIXTURE_GTK), {}, "fixture");
        const qint64 qt = m_programs.startWithWindow(QStringLiteral(FIXTURE_QT), {}, "fixture");
        X11Workspace workspace;
        QVERIFY(workspace.isAvailable());
        QSignalSpy others(&workspace, &X11Workspace::otherApplicationActivated);
        QSignalSpy all(&workspace, &X11Workspace::applicationActivated);
        QVERIFY(test::activateWindowOf(qt, "fixture"));
        QTest::qWait(1000); // a window that maps late takes the focus once more
        others.clear();
        all.clear();
        for (qint64 pid : {gtk, qt, gtk}) {
            QVERIFY(test::activateWindowOf(pid, "fixture"));
            QTRY_VERIFY(!others.isEmpty() && others.last().at(0).value<RunningApp>().pid == pid);
        }
        QVERIFY(test::activateWindowOf(gtk, "fixture")); // the same one again: nothing new
        QTest::qWait(300);
        QCOMPARE(others.size(), 3);
        QList<qint64> pids;
        for (const auto& signal : others)
            pids << signal.at(0).value<RunningApp>().pid;
        QCOMPARE(pids, (QList<qint64>{gtk, qt, gtk}));
        QCOMPARE(others.at(1).at(0).value<RunningApp>().appId, "corvane-fixture-qt");
        QCOMPARE(workspace.frontmostApplication()->pid, gtk);

        // This process's own window is an activation, but not of another application; its
        // second window is the same application again: nothing new.
        QWindow own[2];
        for (QWindow& window : own) {
            window.setGeometry(50, 50, 200, 150);
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            xdotool({"windowactivate", "--sync", QString::number(window.winId())});
            QTRY_COMPARE(all.size(), 4);
        }
        QTest::qWait(300); // the second one's activation announces nothing late either
        QCOMPARE(all.size(), 4);
        QCOMPARE(all.last().at(0).value<RunningApp>().pid, X11Workspace::thisProcessId());
        QCOMPARE(others.size(), 3);
        QCOMPARE(workspace.frontmostApplication()->pid, QCoreApplication::applicationPid());
    }

private:
    QString effects() const { return m_effects.join(u' '); }

    test::Programs m_programs;
    std::unique_ptr<XInputMonitors> m_monitors;
    std::unique_ptr<HoldDetector> m_detector;
    QStringList m_effects;
};

QTEST_MAIN(TestX11)
#include "tst_x11.moc"
