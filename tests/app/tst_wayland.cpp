// The whole loop on a Wayland session (session tier, under a headless sway with no XWayland): the
// real corvane program with geany (GTK 3) and featherpad (Qt 5) running natively on Wayland,
// driven by real key input (wtype, the virtual keyboard protocol) and observed from outside: the
// compositor's window tree and Corvane's log. Hold Ctrl: the panel shows, floating, with the
// application's menus; release: gone; corvane --peek: shown and stays; a typed query and Return:
// the command ran in the application (its About window opens).

#include "CorvaneProcess.h"
#include "SessionTools.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

using namespace corvane::test;

namespace {

// sway's windows (nodes with an app_id), each with whether it floats.
struct Shown {
    QString appId, name;
    qint64 pid = 0;
    bool floating = false;
};

void collect(const QJsonObject& node, bool floating, QList<Shown>& into)
{
    if (node.contains("app_id") && !node.value("app_id").isNull() &&
        node.value("visible").toBool(true))
        into.append({node.value("app_id").toString(), node.value("name").toString(),
                     qint64(node.value("pid").toDouble()), floating});
    for (const QJsonValue child : node.value("nodes").toArray())
        collect(child.toObject(), floating, into);
    for (const QJsonValue child : node.value("floating_nodes").toArray())
        collect(child.toObject(), true, into);
}

// The first window of `appId` whose name contains `name`.
std::optional<Shown> window(const QString& appId, const QString& name)
{
    QProcess tree;
    tree.start("swaymsg", {"-t", "get_tree", "-r"});
    tree.waitForFinished(5000);
    QList<Shown> shown;
    collect(QJsonDocument::fromJson(tree.readAllStandardOutput()).object(), false, shown);
    for (const Shown& w : std::as_const(shown))
        if (w.appId == appId && w.name.contains(name))
            return w;
    return std::nullopt;
}

bool panelShown()
{
    const auto panel = window("com.vantorel.Corvane", "Corvane");
    return panel && panel->floating;
}

// One wtype process per gesture: each new one moves the keyboard focus for a moment.
QProcess* type(const QStringList& arguments)
{
    auto* process = new QProcess;
    process->start("wtype", arguments);
    return process;
}

} // namespace

class TestWayland : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(qEnvironmentVariableIsSet("SWAYSOCK"),
                 "run under tools/test-session.sh --wayland");
        QVERIFY(qgetenv("DISPLAY").isEmpty());
        m_corvane = std::make_unique<CorvaneProcess>(QStringLiteral(CORVANE));
        m_corvane->start();
        QVERIFY(m_corvane->waitForLine("windows: sway floats them", 1, 0, 5000));
    }

    void cleanupTestCase()
    {
        m_corvane.reset();
        m_apps.stopAll();
    }

    void wholeLoop_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("appId");
        QTest::addColumn<QString>("about"); // the window Help ▸ About opens
        QTest::newRow("GTK 3") << "geany" << QStringList{"--new-instance", "--no-session"}
                               << "geany"
                               << "About Geany";
        QTest::newRow("Qt 5") << "featherpad" << QStringList{"--standalone"} << "featherpad"
                              << "About FeatherPad";
    }

    void wholeLoop()
    {
        QFETCH(QString, program);
        QFETCH(QStringList, arguments);
        QFETCH(QString, appId);
        QFETCH(QString, about);
        const qint64 pid = m_apps.start(program, arguments);
        QTRY_VERIFY_WITH_TIMEOUT(window(appId, ""), 20000);
        QCOMPARE(window(appId, "")->pid, pid); // a native Wayland window
        QTest::qWait(1500);                    // on the accessibility bus, and activated

        // Hold Ctrl for 1.5 s: the panel floats over the application, with its menus read.
        const qsizetype from = m_corvane->lines().size();
        std::unique_ptr<QProcess> hold(
            type({"-s", "300", "-P", "Control_L", "-s", "1500", "-p", "Control_L"}));
        QTRY_VERIFY_WITH_TIMEOUT(panelShown(), 3000);
        QVERIFY(m_corvane->waitForLine(QStringLiteral("crawl: %1 \u2192 ").arg(appId), 1, from));
        QVERIFY(hold->waitForFinished(5000));
        QTRY_VERIFY_WITH_TIMEOUT(!panelShown(), 2000);

        // corvane --peek: shown, and it stays.
        QCOMPARE(QProcess::execute(QStringLiteral(CORVANE), {"--peek"}), 0);
        QTRY_VERIFY_WITH_TIMEOUT(panelShown(), 3000);
        QTest::qWait(1000);
        QVERIFY(panelShown());

        // A query and Return: Help ▸ About runs in the application.
        std::unique_ptr<QProcess> typing(type({"-s", "300", "about", "-s", "300", "-k", "Return"}));
        QVERIFY(typing->waitForFinished(5000));
        QTRY_VERIFY_WITH_TIMEOUT(window(appId, about), 5000);
        QTRY_VERIFY(!panelShown()); // the application may answer before the fade-out ends
    }

private:
    std::unique_ptr<CorvaneProcess> m_corvane;
    Programs m_apps;
};

QTEST_GUILESS_MAIN(TestWayland)
#include "tst_wayland.moc"
