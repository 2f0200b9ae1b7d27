// The whole peek loop end to end (session tier): the real corvane program with real
// applications in front (geany and the GTK fixture), driven only through real input (xdotool,
// XTEST) and observed only from outside: its windows in X, its log, and the application's own
// record of the commands it ran.

#include "CorvaneProcess.h"
#include "CrawlThread.h"
#include "SessionTools.h"
#include "platform/linux/AccessibilitySwitch.h"
#include "platform/linux/AppIdentity.h"
#include "platform/linux/X11BusAddress.h"

#include <QDBusConnection>
#include <QDBusReply>
#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>

using namespace corvane;
using namespace corvane::test;

class TestShell : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(qEnvironmentVariableIsSet("CORVANE_SESSION"));
        m_fixture = m_programs.startWithWindow(QStringLiteral(FIXTURE_GTK),
                                               {"--record", m_dir.filePath("record")}, "fixture");
        m_geany = m_programs.startWithWindow("geany", {"--new-instance", "--no-session"}, "Geany");
        m_corvane = std::make_unique<CorvaneProcess>(QStringLiteral(CORVANE),
                                                     QVariantMap{{"holdDelay", 0.3}});
        m_corvane->start();
        // Idle, it maps no OpenGL driver, and neither Qt Multimedia nor its decoders: those come
        // with a clip.
        QFile maps(QStringLiteral("/proc/%1/maps").arg(m_corvane->pid()));
        QVERIFY(maps.open(QIODevice::ReadOnly));
        const QByteArray mapped = maps.readAll();
        for (const char* library :
             {"_dri.so", "libLLVM", "libGLX_mesa", "libQt6Multimedia", "libavcodec"})
            QVERIFY2(!mapped.contains(library), library);
    }

    void cleanupTestCase()
    {
        m_corvane.reset();
        m_programs.stopAll();
    }

    void init()
    {
        QVERIFY(setAccessibility(true));
        xdotool({"mousemove", "3", "3"});
    }

    void cleanup()
    {
        if (m_triggerDown)
            releaseTrigger();
        if (m_corvane && m_corvane->panelVisible()) {
            xdotool({"key", "Escape"});
            QTRY_VERIFY(!m_corvane->panelVisible());
        }
        if (QTest::currentTestFailed() && m_corvane)
            qWarning("Corvane's log:\n%s", qPrintable(m_corvane->log()));
    }

    void compositorStartingAndStoppingSwitchesTheGlass()
    {
        // No compositor: an opaque panel (depth 24), cut to the card, without the blur hint. A
        // compositor starts (xcompmgr, stopped by its process id whatever happens): the next peek
        // shows a panel with an alpha channel that asks window managers that blur to blur behind
        // it. It stops: opaque again.
        QVERIFY(!compositorRunning());
        QProcess compositor;
        const auto stop = [&compositor] {
            compositor.kill();
            compositor.waitForFinished(5000);
        };
        const auto stopped = qScopeGuard(stop);
        for (const bool composited : {false, true, false}) {
            if (composited)
                compositor.start("xcompmgr", {});
            else
                stop();
            QTRY_COMPARE_WITH_TIMEOUT(compositorRunning(), composited, 5000);
            const QString panel = peekPanelWindow();
            QVERIFY(!panel.isEmpty());
            QCOMPARE(windowDepth(panel), composited ? 32 : 24);
            const auto blurHint = output("xprop", {"-id", panel, "_KDE_NET_WM_BLUR_BEHIND_REGION"});
            QCOMPARE(blurHint.text.startsWith("_KDE_NET_WM_BLUR_BEHIND_REGION(CARDINAL)"),
                     composited);
            QCOMPARE(activeWindowPid(), m_geany);
            releaseTrigger();
            QTRY_VERIFY(!m_corvane->panelVisible());
        }
    }

    void ownWindowAndTheTargetKeepTheOverlayAnotherAppCloses()
    {
        pin(m_fixture);
        // A second start asks the first to show its settings, and exits with status 0.
        QProcess second;
        second.setProcessEnvironment(m_corvane->environment());
        second.start(QStringLiteral(CORVANE), {});
        QVERIFY(second.waitForFinished(10000));
        QCOMPARE(second.exitStatus(), QProcess::NormalExit);
        QCOMPARE(second.exitCode(), 0);
        // The settings window comes forward: Corvane's own window is active, the overlay stays.
        QTRY_COMPARE_WITH_TIMEOUT(activeWindowPid(), m_corvane->pid(), 5000);
        QTest::qWait(300);
        QTRY_VERIFY(m_corvane->panelVisible());
        // Re-activating the target keeps it too.
        QVERIFY(activateWindowOf(m_fixture));
        QTest::qWait(300);
        QTRY_VERIFY(m_corvane->panelVisible());
        // Activating another application closes it.
        QVERIFY(activateWindowOf(m_geany));
        QTRY_VERIFY(!m_corvane->panelVisible());
        // The settings window is closed again.
        const QStringList settings = m_corvane->windows("Corvane Settings");
        QCOMPARE(settings.size(), 1);
        xdotool({"windowclose", settings.first()}, false);
    }

    void failedPressLogsAndRunsNothing()
    {
        const qsizetype before = recorded().size();
        const qsizetype from = m_corvane->lines().size();
        pin(m_fixture);
        // Both crawls of this peek have ended, then the fixture renames "File" under the overlay.
        QVERIFY(m_corvane->waitForLine("crawl: Corvane-fixture-gtk", 2, from));
        QCOMPARE(::kill(pid_t(m_fixture), SIGUSR1), 0);
        QTest::qWait(300);
        xdotool({"type", "--delay", "40", "quit"});
        xdotool({"key", "Return"});
        QTRY_VERIFY(!m_corvane->panelVisible());
        QVERIFY(m_corvane->waitForLine("press: could not resolve top-level menu File", 1, from));
        QTest::qWait(300);
        QCOMPARE(recorded().size(), before);
        QCOMPARE(::kill(pid_t(m_fixture), SIGUSR1), 0); // "File" again
    }

    void accessibilitySwitchedOffAndOn()
    {
        const qsizetype from = m_corvane->lines().size();
        QVERIFY(setAccessibility(false));
        // The broadcast is read again half a second later and the monitors are installed anew.
        QVERIFY(
            m_corvane->waitForLine("accessibility switched off: 4 event monitors", 1, from, 3000));
        QVERIFY(activateWindowOf(m_fixture)); // holding does nothing now
        pressTrigger();
        QTest::qWait(1000);
        QVERIFY(!m_corvane->panelVisible());
        releaseTrigger();
        QVERIFY(m_corvane->linesContaining("crawl: ", from).isEmpty());
        // The permission is polled every 2.0 s while it is off, and no longer once it is on.
        QVERIFY(m_corvane->waitForLine("permission poll", 2, from, 6000));
        const auto polls = m_corvane->linesContaining("permission poll", from);
        const qint64 gap = polls.at(1).atMs - polls.at(0).atMs;
        QVERIFY2(gap > 1700 && gap < 2300, qPrintable(QString::number(gap)));
        const qsizetype onFrom = m_corvane->lines().size();
        QVERIFY(setAccessibility(true));
        QVERIFY(
            m_corvane->waitForLine("accessibility switched on: 4 event monitors", 1, onFrom, 3000));
        const qsizetype quiet = m_corvane->lines().size();
        QTest::qWait(2500);
        QVERIFY(m_corvane->linesContaining("permission poll", quiet).isEmpty());
        QVERIFY(activateWindowOf(m_fixture)); // holding works again
        pressTrigger();
        QTRY_VERIFY_WITH_TIMEOUT(m_corvane->panelVisible(), 5000);
        releaseTrigger();
        QTRY_VERIFY(!m_corvane->panelVisible());
    }

    // From here on each test starts a Corvane of its own. This one was updated: What's New opens
    // at launch and plays its clip. The session's SIGTERM (logout) quits through the event loop
    // like "Quit Corvane": status 0, and the clip, which Qt Multimedia copies to the temporary
    // folder, is let go with its copy.
    void terminatedWithAWindowOpenItQuitsCleanly()
    {
        m_corvane = std::make_unique<CorvaneProcess>(
            QStringLiteral(CORVANE), QVariantMap{{"whatsNew.lastSeenVersion", "0.9"}});
        m_corvane->start();
        // The What's New window sets up the video decoder (FFmpeg probes VA-API, CUDA and VDPAU)
        // after its first frame: 1 s here, 2.7 s with cold caches, and once over 5 s in a fresh
        // clone's `make test` beside the package test's dpkg run.
        QTRY_VERIFY_WITH_TIMEOUT(!m_corvane->windows("What's New in Corvane").isEmpty(), 15000);
        const QDir temporary(m_corvane->temporaryFolder());
        const auto left = [&temporary] {
            return temporary.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
        };
        // The clip plays from its copy (or the check below would prove nothing).
        QTRY_VERIFY_WITH_TIMEOUT(left().filter(".webm").size() == 1, 15000);
        QVERIFY2(m_corvane->terminate(), qPrintable(m_corvane->log()));
        QVERIFY(!m_corvane->linesContaining("quitting: SIGTERM received").isEmpty());
        QCOMPARE(left(), QStringList());
    }

    // One told to stay out of geany. Holding Ctrl there shows nothing (the key stays geany's own);
    // in the fixture the panel still shows.
    void listedApplicationNeverPeeks()
    {
        m_corvane.reset(); // ended by the test before, unless this one runs alone
        const QString geany = AppIdentity::forProcess(m_geany).appId.value_or(QString());
        QVERIFY(!geany.isEmpty());
        CorvaneProcess corvane(
            QStringLiteral(CORVANE),
            {{"holdDelay", 0.3}, {"excludedApplications", QStringLiteral("[\"%1\"]").arg(geany)}});
        corvane.start();
        QVERIFY(activateWindowOf(m_geany));
        pressTrigger();
        QTest::qWait(1000); // more than three times the hold delay
        QVERIFY(!corvane.panelVisible());
        releaseTrigger();
        QVERIFY(activateWindowOf(m_fixture));
        pressTrigger();
        QTRY_VERIFY_WITH_TIMEOUT(corvane.panelVisible(), 5000);
        releaseTrigger();
        QTRY_VERIFY(!corvane.panelVisible());
    }

    // One on a desktop whose bus launcher did not put the bus's address on the root window (one
    // started before the display was known). There, Qt 5 applications find the bus through two
    // replies whose order varies, and most featherpads started together stay off it for good.
    // Corvane publishes the address; featherpads started together beside GTK editors, and asked for
    // their menus every half second as they start, are all read, and the address goes when Corvane
    // quits.
    void qtApplicationsStartedTogetherAreRead()
    {
        const QDBusReply<QString> address =
            QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
                "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"));
        QVERIFY(address.isValid());
        m_corvane.reset(); // ended by the test before, unless this one runs alone
        QVERIFY(QProcess::execute("xprop", {"-root", "-remove", "AT_SPI_BUS"}) == 0);
        QVERIFY(!X11BusAddress::published());
        CorvaneProcess corvane(QStringLiteral(CORVANE));
        corvane.start();
        QTRY_COMPARE_WITH_TIMEOUT(X11BusAddress::published().value_or(QString()), address.value(),
                                  5000);

        // As a desktop starts them: without the switch that forces Qt's accessibility on.
        qunsetenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON");
        const auto restore = qScopeGuard([] { qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"); });
        Programs programs;
        QList<qint64> featherpads;
        for (int i = 0; i < 3; ++i)
            featherpads << programs.start("featherpad", {"--standalone"});
        programs.start("mousepad", {"--disable-server"});
        programs.start("geany", {"--new-instance", "--no-session"});
        QList<qint64> unread = featherpads;
        QElapsedTimer timer;
        timer.start();
        while (!unread.isEmpty() && timer.elapsed() < 20000) {
            QTest::qWait(500);
            unread.removeIf([](qint64 pid) {
                return onCrawlThread([pid] {
                    WalkBudget budget(std::chrono::seconds(3));
                    return atspi::MenuBarFinder().menuBar(pid, budget).node != nullptr;
                });
            });
        }
        QVERIFY2(unread.isEmpty(),
                 qPrintable(QStringLiteral("%1 of 3 featherpads not read").arg(unread.size())));
        QVERIFY(corvane.terminate());
        QVERIFY(!X11BusAddress::published());
    }

private:
    void pressTrigger()
    {
        xdotool({"keydown", "Control_L"});
        m_triggerDown = true;
    }

    void releaseTrigger()
    {
        xdotool({"keyup", "Control_L"});
        m_triggerDown = false;
    }

    // Peeks at geany and returns the panel's window (its id as xdotool prints it).
    QString peekPanelWindow()
    {
        if (!activateWindowOf(m_geany))
            return {};
        pressTrigger();
        if (!QTest::qWaitFor([this] { return m_corvane->panelVisible(); }, 5000))
            return {};
        return m_corvane->windows("^Corvane$").value(0);
    }

    // Holds the trigger past the delay with `pid` in front until the panel shows the menus just
    // read (as a user would wait to see them), and releases it over the panel.
    void pin(qint64 pid)
    {
        QVERIFY(activateWindowOf(pid));
        const qsizetype from = m_corvane->lines().size();
        pressTrigger();
        QVERIFY(m_corvane->waitForLine("overlay: menus of ", 1, from));
        QTRY_VERIFY_WITH_TIMEOUT(m_corvane->panelVisible(), 5000);
        const QRect panel = m_corvane->panelGeometry();
        xdotool({"mousemove", QString::number(panel.center().x()),
                 QString::number(panel.center().y())});
        releaseTrigger();
        QTest::qWait(300);
        QTRY_VERIFY(m_corvane->panelVisible());
    }

    QStringList recorded() const
    {
        QFile file(m_dir.filePath("record"));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

    static bool setAccessibility(bool enabled) { return AccessibilitySwitch::setEnabled(enabled); }

    QTemporaryDir m_dir;
    Programs m_programs;
    qint64 m_fixture = 0;
    qint64 m_geany = 0;
    std::unique_ptr<CorvaneProcess> m_corvane;
    bool m_triggerDown = false;
};

QTEST_MAIN(TestShell)
#include "tst_shell.moc"
