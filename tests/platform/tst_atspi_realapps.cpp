// Crawl and press real applications from Debian over AT-SPI (session tier): geany and mousepad
// (GTK 3) and featherpad (Qt). Also: a stopped application, the corvane-menus messages, and no
// accessibility request on the main thread.

#include "CrawlThread.h"
#include "menus/MenuCrawler.h"
#include "platform/linux/AccessibilitySwitch.h"
#include "platform/linux/AppIdentity.h"
#include "platform/linux/AtspiClient.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>
#include <csignal>

using namespace corvane;
using test::onCrawlThread;

namespace {

std::optional<MenuCommand> find(const MenuCatalog& catalog, const QString& section,
                                const QString& leaf)
{
    for (const MenuSection& s : catalog.sections)
        if (s.title.trimmed() == section)
            for (const MenuCommand& c : s.commands)
                if (c.path.last().title.trimmed() == leaf)
                    return c;
    return std::nullopt;
}

int countRole(qint64 pid, uint role)
{
    return onCrawlThread([pid, role] {
        WalkBudget budget(std::chrono::seconds(5));
        auto session = std::make_shared<atspi::Session>(*atspi::accessibilityBus(), budget);
        for (const auto& entry : atspi::applications(session)) {
            if (entry.pid != pid)
                continue;
            int count = 0;
            QList<std::shared_ptr<atspi::Node>> level{
                std::make_shared<atspi::Node>(session, entry.root)};
            for (int depth = 0; depth < 16 && !level.isEmpty(); ++depth) {
                QList<std::shared_ptr<atspi::Node>> next;
                for (const auto& node : level)
                    for (const auto& child : node->childNodes()) {
                        count += child->role() == role;
                        next.append(child);
                    }
                level = next;
            }
            return count;
        }
        return -1;
    });
}

QString windowNames(qint64 pid)
{
    QProcess xdotool;
    xdotool.start("xdotool", {"search", "--all", "--pid", QString::number(pid), "--name", ".",
                              "getwindowname", "%@"});
    xdotool.waitForFinished(5000);
    return QString::fromUtf8(xdotool.readAllStandardOutput());
}

constexpr uint rolePageTab = 37;

} // namespace

class TestAtspiRealApps : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void identities();
    void geanyMenus();
    void mousepadMenus();
    void featherpadMenus();
    void pressMousepadFileNew();
    void pressFeatherpadFileNew();
    void pressGeanyNewFromTemplate();
    void pressVanishedAndRenamedPaths();
    void stoppedApplication();
    void commandLineMessages();
    void refreshDuringAReadHearsALaterChange();
    void noRequestOnTheMainThread();

private:
    RunningApp startApp(const QString& program, const QStringList& arguments);
    MenuCatalog crawl(const RunningApp& app);

    QList<QProcess*> m_processes;
    RunningApp m_geany, m_mousepad, m_featherpad;
    MenuCrawler m_crawler{std::make_shared<atspi::MenuBarFinder>()};
};

RunningApp TestAtspiRealApps::startApp(const QString& program, const QStringList& arguments)
{
    auto* process = new QProcess(this);
    process->setProgram(program);
    process->setArguments(arguments);
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->start();
    if (!process->waitForStarted(10000))
        qFatal("%s did not start", qPrintable(program));
    m_processes.append(process);
    const qint64 pid = process->processId();
    // An application can be missing from the registry for a moment after its window shows:
    // wait for its menu bar, with a bound.
    if (test::waitForMenuBar(pid))
        return onCrawlThread([pid] { return AppIdentity::forProcess(pid); });
    qFatal("%s never showed a menu bar on the accessibility bus", qPrintable(program));
}

MenuCatalog TestAtspiRealApps::crawl(const RunningApp& app)
{
    const auto catalog = onCrawlThread([&] { return m_crawler.crawl(app); });
    if (!catalog)
        qFatal("crawl of %s gave no catalog", qPrintable(app.name));
    return *catalog;
}

void TestAtspiRealApps::initTestCase()
{
    QVERIFY2(qEnvironmentVariableIsSet("CORVANE_SESSION"), "run under tools/test-session.sh");
    m_geany = startApp("geany", {"--new-instance", "--no-session"});
    m_mousepad = startApp("mousepad", {});
    m_featherpad = startApp("featherpad", {});
}

void TestAtspiRealApps::cleanupTestCase()
{
    // Stop what we started, by process id.
    for (QProcess* process : m_processes) {
        ::kill(pid_t(process->processId()), SIGCONT);
        process->kill();
        process->waitForFinished(5000);
    }
}

void TestAtspiRealApps::identities()
{
    QCOMPARE(m_geany.appId, QStringLiteral("geany"));
    QCOMPARE(m_geany.name, QStringLiteral("Geany"));
    QCOMPARE(m_mousepad.appId, QStringLiteral("org.xfce.mousepad")); // _GTK_APPLICATION_ID
    QCOMPARE(m_featherpad.appId, QStringLiteral("featherpad"));      // WM_CLASS → desktop entry
    QCOMPARE(m_featherpad.name, QStringLiteral("FeatherPad"));
}

void TestAtspiRealApps::geanyMenus()
{
    const MenuCatalog catalog = crawl(m_geany);
    QCOMPARE(catalog.bundleID, QStringLiteral("geany"));
    QCOMPARE(catalog.sections.first().title, QStringLiteral("File"));
    QCOMPARE(catalog.sections[1].title, QStringLiteral("Edit"));
    QCOMPARE(find(catalog, "File", "Open...")->shortcut, (ShortcutKeys{{"Ctrl"}, "O"}));
    QCOMPARE(find(catalog, "File", "New")->shortcut, (ShortcutKeys{{"Ctrl"}, "N"}));
    QCOMPARE(find(catalog, "File", "Open Selected File")->shortcut,
             (ShortcutKeys{{"Ctrl", "Shift"}, "O"}));
    QCOMPARE(find(catalog, "Edit", "Undo")->shortcut, (ShortcutKeys{{"Ctrl"}, "Z"}));
    QCOMPARE(find(catalog, "File", "Save As...")->shortcut, ShortcutKeys::none);
    // A submenu's commands carry the submenu in their path.
    const auto templ = find(catalog, "File", "main.c");
    QVERIFY(templ);
    QCOMPARE(templ->titles(), (QStringList{"File", "New (with Template)", "main.c"}));
    // Empty submenus (Recent Files) are skipped; nothing is untitled.
    for (const MenuSection& s : catalog.sections)
        for (const MenuCommand& c : s.commands)
            for (const PathStep& step : c.path)
                QVERIFY(!step.title.isEmpty());
    QVERIFY(!find(catalog, "File", "Recent Files"));
}

void TestAtspiRealApps::mousepadMenus()
{
    const MenuCatalog catalog = crawl(m_mousepad);
    QCOMPARE(catalog.appName, QStringLiteral("Mousepad"));
    QVERIFY(catalog.sections.first().title.trimmed() == QStringLiteral("File"));
    QCOMPARE(find(catalog, "File", "New")->shortcut, (ShortcutKeys{{"Ctrl"}, "N"}));
    QCOMPARE(find(catalog, "File", "New Window")->shortcut, (ShortcutKeys{{"Ctrl", "Shift"}, "N"}));
    QCOMPARE(find(catalog, "Edit", "Copy")->shortcut, (ShortcutKeys{{"Ctrl"}, "C"}));
}

void TestAtspiRealApps::featherpadMenus()
{
    const MenuCatalog catalog = crawl(m_featherpad);
    QCOMPARE(catalog.sections.first().title, QStringLiteral("File"));
    QCOMPARE(find(catalog, "File", "New")->shortcut, (ShortcutKeys{{"Ctrl"}, "N"}));
    QCOMPARE(find(catalog, "File", "Open")->shortcut, (ShortcutKeys{{"Ctrl"}, "O"}));
    QCOMPARE(find(catalog, "File", "Side-Pane")->shortcut, (ShortcutKeys{{"Ctrl", "Alt"}, "P"}));
    QCOMPARE(find(catalog, "Edit", "Copy")->shortcut, (ShortcutKeys{{"Ctrl"}, "C"}));
    // Qt reports mnemonics as key bindings; they are not shortcuts.
    const auto clear = find(catalog, "File", "Clear");
    QVERIFY(clear);
    QCOMPARE(clear->titles().mid(0, 2), (QStringList{"File", "Recently Modified"}));
    // Disabled items keep their shortcut and read as disabled.
    QCOMPARE(find(catalog, "File", "Detach Tab")->enabled, false);
}

void TestAtspiRealApps::pressMousepadFileNew()
{
    const MenuCatalog catalog = crawl(m_mousepad);
    const MenuCommand command = *find(catalog, "File", "New");
    const qint64 pid = m_mousepad.pid;
    QCOMPARE(onCrawlThread([&] { return m_crawler.press(command.path, pid); }),
             PressOutcome::pressed);
    QTRY_VERIFY_WITH_TIMEOUT(windowNames(pid).contains("Untitled 2"), 10000);
}

void TestAtspiRealApps::pressFeatherpadFileNew()
{
    const qint64 pid = m_featherpad.pid;
    const int tabs = countRole(pid, rolePageTab);
    const MenuCommand command = *find(crawl(m_featherpad), "File", "New");
    const PressOutcome outcome = onCrawlThread([&] { return m_crawler.press(command.path, pid); });
    QVERIFY(outcome == PressOutcome::pressed || outcome == PressOutcome::assumedFired);
    QTRY_COMPARE_WITH_TIMEOUT(countRole(pid, rolePageTab), tabs + 1, 10000);
}

void TestAtspiRealApps::pressGeanyNewFromTemplate()
{
    // geany's plain File ▸ New adds a second "untitled" document, which nothing outside the
    // application can tell apart; File ▸ New (with Template) ▸ main.c retitles the window.
    const MenuCommand command = *find(crawl(m_geany), "File", "main.c");
    const qint64 pid = m_geany.pid;
    QCOMPARE(onCrawlThread([&] { return m_crawler.press(command.path, pid); }),
             PressOutcome::pressed);
    QTRY_VERIFY_WITH_TIMEOUT(windowNames(pid).contains("untitled.c"), 10000);
}

void TestAtspiRealApps::pressVanishedAndRenamedPaths()
{
    const qint64 pid = m_geany.pid;
    QTest::ignoreMessage(QtCriticalMsg, "press: path component not found: Nonexistent");
    QCOMPARE(onCrawlThread([&] {
                 return m_crawler.press({{"File", 0}, {"Nonexistent", 0}}, pid);
             }),
             PressOutcome::failed);
    QTest::ignoreMessage(QtCriticalMsg, "press: path component not found: Open...");
    QCOMPARE(onCrawlThread([&] {
                 return m_crawler.press({{"File", 0}, {"Open...", 1}}, pid);
             }),
             PressOutcome::failed);
    QTest::ignoreMessage(QtCriticalMsg, "press: could not resolve top-level menu Nope");
    QCOMPARE(onCrawlThread([&] {
                 return m_crawler.press({{"Nope", 0}, {"X", 0}}, pid);
             }),
             PressOutcome::failed);
}

void TestAtspiRealApps::stoppedApplication()
{
    const qint64 pid = m_mousepad.pid;
    const RunningApp app = m_mousepad;
    QVERIFY(::kill(pid_t(pid), SIGSTOP) == 0);
    QElapsedTimer timer;
    timer.start();
    QTest::ignoreMessage(QtCriticalMsg,
                         "crawl: menu bar read failed for org.xfce.mousepad: AXError 4");
    const auto catalog = onCrawlThread([&] { return m_crawler.crawl(app); });
    const qint64 crawlMs = timer.elapsed();
    QVERIFY(!catalog);
    QVERIFY2(crawlMs < 3500, qPrintable(QString::number(crawlMs))); // ends by the 3 s deadline

    timer.restart();
    QTest::ignoreMessage(QtCriticalMsg, "press: could not read menu bar");
    const PressOutcome outcome = onCrawlThread([&] {
        return m_crawler.press({{"File", 0}, {"New      ", 0}}, pid);
    });
    const qint64 pressMs = timer.elapsed();
    QVERIFY(outcome == PressOutcome::failed || outcome == PressOutcome::assumedFired);
    QVERIFY2(pressMs < 2500, qPrintable(QString::number(pressMs))); // about a second per request
    QVERIFY(::kill(pid_t(pid), SIGCONT) == 0);

    // Other applications are not held up by the frozen one's answers.
    QVERIFY(::kill(pid_t(pid), SIGSTOP) == 0);
    timer.restart();
    const auto other = onCrawlThread([&] { return m_crawler.crawl(m_featherpad); });
    QVERIFY(other.has_value());
    QVERIFY(::kill(pid_t(pid), SIGCONT) == 0);
}

void TestAtspiRealApps::commandLineMessages()
{
    const QString tool = QStringLiteral(CORVANE_MENUS);
    const auto run = [&](const QStringList& arguments,
                         const QProcessEnvironment& env =
                             QProcessEnvironment::systemEnvironment()) {
        QProcess process;
        process.setProcessEnvironment(env);
        process.start(tool, arguments);
        process.waitForFinished(30000);
        return std::make_tuple(process.exitCode(),
                               QString::fromUtf8(process.readAllStandardOutput()),
                               QString::fromUtf8(process.readAllStandardError()));
    };
    {
        const auto [code, out, err] = run({"list"});
        QCOMPARE(code, 0);
        QVERIFY2(out.contains(QRegularExpression(
                     QStringLiteral("%1\\s+geany\\s+Geany\\s+yes").arg(m_geany.pid))),
                 qPrintable(out));
        QVERIFY(out.contains("org.xfce.mousepad"));
    }
    {
        const auto [code, out, err] = run({"dump", "geany", "--json"});
        QCOMPARE(code, 0);
        QVERIFY(out.contains("\"bundleID\": \"geany\""));
    }
    {
        const auto [code, out, err] = run({"dump", "org.example.Missing"});
        QCOMPARE(code, 5);
        QVERIFY2(err.startsWith("corvane-menus: no application with id org.example.Missing"),
                 qPrintable(err));
        QCOMPARE(err.count('\n'), 1);
    }
    {
        const auto [code, out, err] =
            run({"press", QString::number(m_geany.pid), "File", "Nonexistent"});
        QCOMPARE(code, 1);
        QCOMPARE(out, QStringLiteral("failed\n"));
    }
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
        const auto [code, out, err] = run({"list"}, env);
        QCOMPARE(code, 3);
        QVERIFY2(err.startsWith("corvane-menus: no accessibility bus"), qPrintable(err));
    }
    {
        const auto [code, out, err] = run({"frobnicate"});
        QCOMPARE(code, 2);
        QVERIFY(err.startsWith("usage: corvane-menus"));
    }
    // Accessibility switched off: a clear message; then on again.
    QVERIFY(onCrawlThread([] { return AccessibilitySwitch::setEnabled(false); }));
    {
        const auto [code, out, err] = run({"list"});
        QCOMPARE(code, 4);
        QVERIFY2(err.contains("accessibility is switched off"), qPrintable(err));
    }
    QVERIFY(onCrawlThread([] { return AccessibilitySwitch::setEnabled(true); }));
    QCOMPARE(onCrawlThread([] { return AccessibilitySwitch::isEnabled(); }),
             std::optional<bool>(true));
}

// A caller that asks while a read is in flight may have heard of a change that read was sent
// before: it is answered by a read sent after it asked, never by the older one.
void TestAtspiRealApps::refreshDuringAReadHearsALaterChange()
{
    AccessibilitySwitch trust;
    std::optional<bool> first, second;
    trust.refresh([&](bool trusted) { first = trusted; }); // IsEnabled is on: reads true
    QVERIFY(onCrawlThread([] { return AccessibilitySwitch::setEnabled(false); }));
    trust.refresh([&](bool trusted) { second = trusted; });
    QTRY_VERIFY(first && second);
    QCOMPARE(*second, false);
    QCOMPARE(trust.isTrusted(), false);

    QVERIFY(onCrawlThread([] { return AccessibilitySwitch::setEnabled(true); }));
    std::optional<bool> third;
    trust.refresh([&](bool trusted) { third = trusted; });
    QTRY_VERIFY(third);
    QCOMPARE(*third, true);
}

void TestAtspiRealApps::noRequestOnTheMainThread()
{
    QCOMPARE(atspi::mainThreadRequestCount(), 0);
}

QTEST_GUILESS_MAIN(TestAtspiRealApps)
#include "tst_atspi_realapps.moc"
