// GNOME Shell's companion at work (session tier, on GNOME Shell under Wayland with the companion
// installed and on), driven by real input through the Shell: holding the trigger over
// applications that tell the accessibility bus no keys (Chromium, a GTK 4 program) shows the
// panel for the window in front, centred and above it, and for the other one once the focus has
// moved; a chord (Ctrl+Z) during the delay shows nothing; the top-bar icon's menu, Corvane's tray
// menu, opens Settings, whose own title bar moves and closes it (the Shell frames no window);
// switched off, the accessibility bus takes over (geany). A bus monitor
// watches throughout: every key transition goes to Corvane's own bus name, and none names a key
// other than a modifier.

#include "CorvaneProcess.h"
#include "Desktop.h"
#include "SessionTools.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QJsonArray>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace corvane::test;

namespace {

const QString gtk4Id = QStringLiteral("com.vantorel.CorvaneTestGtk4");

QDBusMessage extensions(const QString& method)
{
    QDBusMessage call = QDBusMessage::createMethodCall("org.gnome.Shell", "/org/gnome/Shell",
                                                       "org.gnome.Shell.Extensions", method);
    call << QStringLiteral("corvane@vantorel.com");
    return QDBusConnection::sessionBus().call(call);
}

} // namespace

class TestCompanion : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_desktop = Desktop::current();
        QCOMPARE(m_desktop->name(), QStringLiteral("gnome-wayland"));
        m_monitor.start("dbus-monitor",
                        {"--session", "interface='com.vantorel.Corvane.Companion1'"});
        QVERIFY(m_monitor.waitForStarted());
        // A GTK 4 program, known to the Shell by its desktop entry.
        const QString entries = qEnvironmentVariable("XDG_DATA_HOME") + "/applications";
        QDir().mkpath(entries);
        QFile entry(entries + "/" + gtk4Id + ".desktop");
        QVERIFY(entry.open(QIODevice::WriteOnly));
        entry.write(
            "[Desktop Entry]\nType=Application\nName=GTK 4 window\nExec=/usr/bin/python3\n");
        entry.close();
        m_apps.insert("gtk4", m_programs.start("/usr/bin/python3", {"-c", QStringLiteral(R"(
import gi
gi.require_version('Gtk', '4.0')
from gi.repository import Gtk
app = Gtk.Application(application_id='%1')
app.connect('activate', lambda a: Gtk.ApplicationWindow(application=a, title='GTK 4 window').present())
app.run([]))")
                                                                              .arg(gtk4Id)}));
        m_apps.insert("chromium",
                      m_programs.start("chromium",
                                       {"--ozone-platform=wayland", "--no-sandbox",
                                        "--user-data-dir=" + m_dir.filePath("c"), "--no-first-run",
                                        "--disable-gpu", "--disable-background-networking",
                                        "--disable-component-update", "about:blank"}));
        m_apps.insert("geany", m_programs.start("geany", {"--new-instance", "--no-session"}));
        for (const qint64 pid : std::as_const(m_apps))
            QTRY_VERIFY_WITH_TIMEOUT(m_desktop->window(pid), 30000);
        m_corvane = std::make_unique<CorvaneProcess>(QStringLiteral(CORVANE),
                                                     QVariantMap{{"holdDelay", 0.3}});
        m_corvane->start();
        QVERIFY(m_corvane->waitForLine("launch: accessibility on"));
        QVERIFY(m_corvane->waitForLine("GNOME Shell's companion"));
        m_corvaneName =
            QDBusConnection::sessionBus().interface()->serviceOwner("com.vantorel.Corvane");
    }

    void cleanupTestCase()
    {
        m_corvane.reset();
        m_programs.stopAll();
        m_monitor.kill();
        m_monitor.waitForFinished();
    }

    void cleanup()
    {
        m_desktop->finishHold();
        if (QTest::currentTestFailed())
            qWarning("Corvane's log:\n%s", qPrintable(m_corvane->log()));
    }

    void holdOverApplicationsThatReportNoKeys_data()
    {
        QTest::addColumn<QString>("app");
        QTest::addColumn<QString>("appId");
        QTest::newRow("Chromium") << "chromium"
                                  << "chromium";
        QTest::newRow("GTK 4, after the focus moved") << "gtk4" << gtk4Id;
    }

    void holdOverApplicationsThatReportNoKeys()
    {
        QFETCH(QString, app);
        QFETCH(QString, appId);
        QVERIFY(m_desktop->activate(m_apps.value(app)));
        // With animations on, as where the Shell renders in hardware, the Shell zooms a new window
        // in from a hundredth of its width: a probe sees each mapped window's scale.
        Desktop::shellEval("imports.gi.St.Settings.get().uninhibit_animations(); "
                           "global.corvaneScales = []; global.corvaneProbe = "
                           "global.window_manager.connect('map', (wm, a) => "
                           "global.corvaneScales.push(a.scale_x)); true");
        const qsizetype from = m_corvane->lines().size();
        m_desktop->hold("Control_L", 1500);
        QVERIFY(m_corvane->waitForLine("overlay: first frame for " + appId, 1, from, 5000));
        const QRect area = m_desktop->workArea();
        QTRY_VERIFY_WITH_TIMEOUT(m_desktop->panelCentred(m_corvane->pid(), area), 2000);
        QCOMPARE(m_desktop->windows().last().pid, m_corvane->pid()); // above everything
        m_desktop->finishHold();
        QTRY_VERIFY(!m_desktop->panel(m_corvane->pid()));
        QCOMPARE(Desktop::shellEval("global.window_manager.disconnect(global.corvaneProbe); "
                                    "imports.gi.St.Settings.get().inhibit_animations(); "
                                    "global.corvaneScales")
                     .array(),
                 QJsonArray{1}); // the panel, at its full size
    }

    void aChordShowsNothing()
    {
        QVERIFY(m_desktop->activate(m_apps.value("gtk4")));
        const qsizetype from = m_corvane->lines().size();
        m_desktop->hold("Control_L", 1200);
        QTest::qWait(100);
        m_desktop->tap("z");
        m_desktop->finishHold();
        QVERIFY(m_corvane->waitForLine("hold: interrupted", 1, from, 1000));
        QVERIFY(m_corvane->linesContaining("[show]", from).isEmpty());
    }

    void theTopBarIconsMenuOpensSettings()
    {
        const QString menu = "Main.panel.statusArea['corvane-companion'].menu";
        QTRY_VERIFY(Desktop::shellEval(menu + "._getMenuItems().some(i => i.label?.text === "
                                              "'Settings…')")
                        .array()
                        .first()
                        .toBool());
        Desktop::shellEval(menu + ".open(); " + menu +
                           "._getMenuItems().find(i => i.label?.text === 'Settings…').activate("
                           "imports.gi.Clutter.get_current_event()); true");
        QTRY_VERIFY_WITH_TIMEOUT(m_desktop->window(m_corvane->pid(), "Settings"), 5000);

        // The Shell frames no window: Settings draws its own title bar, which moves the window
        // when dragged and closes it with its button.
        const auto settings = [this] { return m_desktop->window(m_corvane->pid(), "Settings"); };
        const auto button = [](bool down) {
            Desktop::shellEval(QStringLiteral("global.corvanePointer.notify_button("
                                              "imports.gi.GLib.get_monotonic_time(), 1, %1); true")
                                   .arg(down ? 1 : 0));
        };
        QTest::qWait(500); // placed
        const QRect before = settings()->frame;
        m_desktop->movePointer(before.topLeft() + QPoint(60, 18));
        button(true);
        for (int step = 1; step <= 8; ++step) {
            QTest::qWait(30);
            m_desktop->movePointer(before.topLeft() + QPoint(60 + step * 10, 18 + step * 5));
        }
        button(false);
        QTRY_COMPARE(settings()->frame.topLeft(), before.topLeft() + QPoint(80, 40));
        m_desktop->movePointer(settings()->frame.topRight() + QPoint(-20, 18));
        QTest::qWait(300);
        button(true);
        QTest::qWait(50);
        button(false);
        QTRY_VERIFY(!settings());
    }

    void switchedOffTheBusTakesOver()
    {
        QVERIFY(extensions("DisableExtension").arguments().value(0).toBool());
        QVERIFY(m_corvane->waitForLine("companion: switched off"));
        const qsizetype from = m_corvane->lines().size();
        QVERIFY(m_desktop->activate(m_apps.value("geany")));
        // geany's activation reaches Corvane over the accessibility bus.
        QVERIFY(m_corvane->waitForLine("workspace: geany in front", 1, from));
        m_desktop->hold("Control_L", 1500);
        QVERIFY(m_corvane->waitForLine("overlay: first frame for geany", 1, from, 5000));
        m_desktop->finishHold();
    }

    // Last: what the bus monitor saw of all the above.
    void keysWentToCorvaneAlone()
    {
        m_monitor.terminate();
        QVERIFY(m_monitor.waitForFinished());
        const QString seen = QString::fromUtf8(m_monitor.readAllStandardOutput());
        static const QRegularExpression message(
            "^signal .*-> destination=(\\S+) .*member=(ModifierKey|KeyPressed)\\n((?:   .*\\n)*)",
            QRegularExpression::MultilineOption);
        QSet<QString> members;
        for (auto it = message.globalMatch(seen); it.hasNext();) {
            const auto match = it.next();
            members << match.captured(2);
            QCOMPARE(match.captured(1), m_corvaneName);
            if (match.captured(2) == u"KeyPressed") {
                QCOMPARE(match.captured(3), QString()); // no argument at all
                continue;
            }
            // A modifier's keysym (0xffe1 to 0xffee), a state and a time: nothing else.
            static const QRegularExpression arguments(
                "^   uint32 (\\d+)\\n   boolean (true|false)\\n   int64 \\d+\\n$");
            const auto parts = arguments.match(match.captured(3));
            QVERIFY2(parts.hasMatch(), qPrintable(match.captured(3)));
            QVERIFY(parts.captured(1).toUInt() >= 0xffe1 && parts.captured(1).toUInt() <= 0xffee);
        }
        QCOMPARE(members, (QSet<QString>{"ModifierKey", "KeyPressed"}));
    }

private:
    std::unique_ptr<Desktop> m_desktop;
    std::unique_ptr<CorvaneProcess> m_corvane;
    QString m_corvaneName;
    QHash<QString, qint64> m_apps;
    Programs m_programs;
    QProcess m_monitor;
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestCompanion)
#include "tst_companion.moc"
