// The whole peek loop on the desktops people run (session tier, once on each desktop of
// tools/test-session.sh: openbox and sway, GNOME Shell and KWin on Wayland and on X11), with real
// applications (geany, GTK 3; featherpad, Qt 5) running natively. The real corvane program
// starts while the application is already in front, is driven by real input only and is
// observed from outside, through the window manager or compositor: the first hold shows the
// panel above the application and centred on its screen; a release away hides it; a release
// over it pins it, with the keyboard; a typed query and Return run the command in the
// application (its About window opens); corvane --peek pins it; Escape closes it. And Corvane
// printed nothing but its own lines.

#include "CorvaneProcess.h"
#include "Desktop.h"
#include "SessionTools.h"

#include <QTest>

using namespace corvane::test;

namespace {

QString describe(const std::optional<Desktop::Window>& panel, const QRect& area)
{
    const auto text = [](const QRect& r) {
        return QStringLiteral("%1,%2 %3×%4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
    };
    return panel ? QStringLiteral("the panel %1 is off the centre of %2")
                       .arg(text(panel->frame), text(area))
                 : QStringLiteral("the panel went");
}

} // namespace

class TestDesktops : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_desktop = Desktop::current(); }

    void cleanup()
    {
        m_desktop->finishHold();
        if (QTest::currentTestFailed() && m_corvane)
            qWarning("Corvane's log:\n%s", qPrintable(m_corvane->log()));
        m_corvane.reset();
        m_apps.stopAll();
    }

    void wholeLoop_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("about"); // the window Help ▸ About opens
        QTest::newRow("geany") << "geany" << QStringList{"--new-instance", "--no-session"}
                               << "About Geany";
        QTest::newRow("featherpad")
            << "featherpad" << QStringList{"--standalone"} << "About FeatherPad";
    }

    void wholeLoop()
    {
        QFETCH(QString, program);
        QFETCH(QStringList, arguments);
        QFETCH(QString, about);
        const qint64 app = m_apps.start(program, arguments);
        QTRY_VERIFY_WITH_TIMEOUT(m_desktop->window(app), 20000);
        QVERIFY(m_desktop->activate(app));
        QTest::qWait(1000); // on the accessibility bus
        m_corvane = std::make_unique<CorvaneProcess>(QStringLiteral(CORVANE),
                                                     QVariantMap{{"holdDelay", 0.3}});
        m_corvane->start();
        // Holding arms once Corvane knows accessibility is on, and the GNOME Shell companion
        // places the panel once it answers.
        QVERIFY(m_corvane->waitForLine("launch: accessibility on"));
        if (m_desktop->name().startsWith(u"gnome"))
            QVERIFY(m_corvane->waitForLine("GNOME Shell's companion"));
        const auto panel = [this] { return m_desktop->panel(m_corvane->pid()); };
        const QRect area = m_desktop->workArea();
        const QPoint away = area.bottomRight() - QPoint(5, 5);

        // The first hold since Corvane started: above the application, centred on its screen (the
        // compositor may show it before it is placed).
        m_desktop->hold("Control_L", 2500);
        QTRY_VERIFY_WITH_TIMEOUT(panel(), 5000);
        const auto centred = [&] { return m_desktop->panelCentred(m_corvane->pid(), area); };
        QTRY_VERIFY2_WITH_TIMEOUT(centred(), qPrintable(describe(panel(), area)), 1000);
        const QList<Desktop::Window> shown = m_desktop->windows();
        const auto index = [&shown](qint64 pid) {
            return std::find_if(shown.cbegin(), shown.cend(),
                                [pid](const Desktop::Window& w) { return w.pid == pid; }) -
                   shown.cbegin();
        };
        QVERIFY2(index(m_corvane->pid()) > index(app), "the panel is below the application");
        // On X11 it never takes the activation from the application.
        QVERIFY(m_desktop->isWayland() || m_desktop->window(app)->focused);
        m_desktop->movePointer(away);
        m_desktop->finishHold();
        QTRY_VERIFY(!panel());

        // Released over the panel: it stays, and typing reaches its search field.
        m_desktop->hold("Control_L", 2500);
        QTRY_VERIFY_WITH_TIMEOUT(centred(), 5000);
        // The pointer moves on over the panel, as a hand does: a compositor that is still fading
        // the panel in may not count it as under the pointer yet.
        m_desktop->movePointer(area.center() + QPoint(20, 20));
        QTest::qWait(500);
        m_desktop->movePointer(area.center());
        m_desktop->finishHold();
        QTest::qWait(500);
        QVERIFY2(panel(), "released over the panel, it closed");
        m_desktop->type("about");
        QVERIFY(m_desktop->isWayland() || m_desktop->window(app)->focused); // typed into the grab
        m_desktop->tap("Return");
        QTRY_VERIFY_WITH_TIMEOUT(m_desktop->window(app, about), 5000);
        QTRY_VERIFY(!panel()); // the application may answer before the fade-out ends

        // corvane --peek: shown, and it stays until Escape.
        m_desktop->movePointer(away);
        QCOMPARE(QProcess::execute(QStringLiteral(CORVANE), {"--peek"}), 0);
        QTRY_VERIFY_WITH_TIMEOUT(panel(), 3000);
        QTest::qWait(1000);
        QVERIFY(panel());
        m_desktop->tap("Escape");
        QTRY_VERIFY(!panel());
        // Nothing on the terminal but Corvane's own lines: no toolkit warning.
        for (const CorvaneProcess::Line& line : m_corvane->lines())
            QVERIFY2(line.text.startsWith(u"com.vantorel.corvane."), qPrintable(line.text));
    }

private:
    std::unique_ptr<Desktop> m_desktop;
    std::unique_ptr<CorvaneProcess> m_corvane;
    Programs m_apps;
};

QTEST_GUILESS_MAIN(TestDesktops)
#include "tst_desktops.moc"
