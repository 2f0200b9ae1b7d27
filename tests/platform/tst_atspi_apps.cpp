// Crawl and press over AT-SPI (session tier): the fixture applications (GTK 3 and Qt 6 Widgets),
// whose crawl must give exactly the catalog their declared menus imply, and real applications
// from Debian (geany and mousepad on GTK 3, featherpad on Qt 5). Also corvane-menus' messages,
// and no accessibility request on the main thread.

#include "CrawlThread.h"
#include "FakeMenuTree.h"
#include "FixtureModel.h"
#include "SessionTools.h"
#include "TestRegistrar.h"
#include "menus/MenuCatalogJson.h"
#include "menus/MenuCrawler.h"
#include "menus/MenuWalk.h"
#include "platform/linux/AccessibilitySwitch.h"
#include "platform/linux/AppIdentity.h"
#include "platform/linux/AtspiClient.h"
#include "platform/linux/DBusMenu.h"

#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

using namespace corvane;
using test::onCrawlThread;
using test::windowTitles;

namespace {

// The declared menus as a tree in memory, which the walk reads as it reads the application's.
std::shared_ptr<test::FakeNode> tree(const QList<fixture::Item>& items)
{
    auto node = std::make_shared<test::FakeNode>();
    for (const fixture::Item& item : items) {
        auto kid = item.items ? tree(*item.items) : std::make_shared<test::FakeNode>();
        kid->name = item.separator ? QString() : item.title;
        kid->isMenu = item.items.has_value();
        kid->isEnabled = item.enabled;
        kid->isChecked = (item.check || item.radio) && item.checked;
        kid->keys = ShortcutDisplay::fromAccelerator(item.accel);
        node->kids.append(kid);
    }
    return node;
}

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

// How many commands a catalog has, and how many of them have a shortcut.
std::pair<int, int> sizeOf(const MenuCatalog& catalog)
{
    int commands = 0, withKeys = 0;
    for (const MenuSection& section : catalog.sections)
        for (const MenuCommand& c : section.commands) {
            ++commands;
            withKeys += !c.shortcut.key.isEmpty();
        }
    return {commands, withKeys};
}

QStringList lines(const QString& file)
{
    QFile f(file);
    return f.open(QIODevice::ReadOnly)
               ? QString::fromUtf8(f.readAll()).split(u'\n', Qt::SkipEmptyParts)
               : QStringList();
}

} // namespace

class TestAtspiApps : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(qEnvironmentVariableIsSet("CORVANE_SESSION"), "run under tools/test-session.sh");
        m_apps["gtk"] = start(QStringLiteral(FIXTURE_GTK), {"--record", m_dir.filePath("gtk")});
        m_apps["qt"] = start(QStringLiteral(FIXTURE_QT), {"--record", m_dir.filePath("qt")});
        m_apps["geany"] = start("geany", {"--new-instance", "--no-session"});
        m_apps["mousepad"] = start("mousepad", {});
        m_apps["featherpad"] = start("featherpad", {});
    }

    void cleanupTestCase()
    {
        m_programs.stopAll();
        QCOMPARE(atspi::mainThreadRequestCount(), 0);
    }

    void fixturesCrawlAsDeclared_data()
    {
        QTest::addColumn<QString>("toolkit");
        QTest::addColumn<int>("directConnections"); // GTK hands out its own bus; Qt has none
        QTest::newRow("GTK 3") << "gtk" << 1;
        QTest::newRow("Qt 6 Widgets") << "qt" << 0;
    }

    void fixturesCrawlAsDeclared()
    {
        QFETCH(QString, toolkit);
        QFETCH(int, directConnections);
        QString error;
        const auto model = fixture::load(QStringLiteral(FIXTURE_MODEL), &error);
        QVERIFY2(model, qPrintable(error));
        const int before = atspi::directConnectionCount();
        const MenuCatalog catalog = crawl(m_apps[toolkit]);
        QCOMPARE(atspi::directConnectionCount() - before, directConnections);
        // What the walk rules give for the declared menus (their 3000-item menu meets the cap).
        WalkBudget budget;
        QTest::ignoreMessage(QtInfoMsg, QRegularExpression("crawl: .* items"));
        const auto expected = MenuWalk::crawl(m_apps[toolkit], tree(*model), 0, budget);
        QVERIFY(expected);
        QCOMPARE(sizeOf(*expected).first, MenuWalk::itemCap);
        QCOMPARE(catalog.sections.size(), expected->sections.size());
        for (qsizetype s = 0; s < expected->sections.size(); ++s) // section by section, readably
            QCOMPARE(test::describe({catalog.sections[s]}, 5000),
                     test::describe({expected->sections[s]}, 5000));
    }

    void fixturePresses_data()
    {
        QTest::addColumn<QString>("toolkit");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("record"); // what the fixture ran; "" nothing
        for (const char* toolkit : {"gtk", "qt"}) {
            QTest::addRow("%s plain", toolkit) << toolkit << "File/New"
                                               << "File / New";
            QTest::addRow("%s second of equal titles", toolkit) << toolkit << "File/Open…#1"
                                                                << "File / Open…#1";
            QTest::addRow("%s five levels down", toolkit)
                << toolkit << "Deep/Level 1/Level 2/Level 3/Level 4/Leaf 5"
                << "Deep / Level 1 / Level 2 / Level 3 / Level 4 / Leaf 5";
            QTest::addRow("%s non-ASCII", toolkit) << toolkit << "Édition/日本語の項目"
                                                   << "Édition / 日本語の項目";
            // The press does not look at the enabled state: the application decides (GTK answers
            // success on an insensitive item, Qt keeps its action) and runs nothing.
            QTest::addRow("%s disabled", toolkit) << toolkit << "File/Save"
                                                  << "";
        }
    }

    void fixturePresses()
    {
        QFETCH(QString, toolkit);
        QFETCH(QString, path);
        QFETCH(QString, record);
        const QString file = m_dir.filePath(toolkit);
        const qsizetype before = lines(file).size();
        press(path, m_apps[toolkit].pid);
        if (record.isEmpty()) {
            QTest::qWait(500);
            QCOMPARE(lines(file).size(), before);
            return;
        }
        QTRY_COMPARE_WITH_TIMEOUT(lines(file).size(), before + 1, 10000);
        QCOMPARE(lines(file).last(), record);
    }

    void realApplications()
    {
        // Identities: _GTK_APPLICATION_ID (mousepad), WM_CLASS matched to a desktop entry (the
        // rest).
        QCOMPARE(m_apps["geany"].appId, "geany");
        QCOMPARE(m_apps["geany"].name, "Geany");
        QCOMPARE(m_apps["mousepad"].appId, "org.xfce.mousepad");
        QCOMPARE(m_apps["featherpad"].appId, "featherpad");
        QCOMPARE(m_apps["featherpad"].name, "FeatherPad");

        const QList<std::tuple<QString, QString, QString, ShortcutKeys>> expected{
            {"geany", "File", "Open...", {{"Ctrl"}, "O"}},
            {"geany", "File", "Open Selected File", {{"Ctrl", "Shift"}, "O"}},
            {"geany", "File", "Save As...", {}},
            {"mousepad", "File", "New Window", {{"Ctrl", "Shift"}, "N"}},
            {"mousepad", "Edit", "Copy", {{"Ctrl"}, "C"}},
            {"featherpad", "File", "Side-Pane", {{"Ctrl", "Alt"}, "P"}},
            {"featherpad", "Edit", "Copy", {{"Ctrl"}, "C"}},
            {"featherpad", "File", "Clear", {}}, // its mnemonic is not a shortcut
        };
        QHash<QString, MenuCatalog> catalogs;
        for (const char* app : {"geany", "mousepad", "featherpad"})
            catalogs[app] = crawl(m_apps[app]);
        for (const auto& [app, section, leaf, keys] : expected) {
            const auto command = find(catalogs[app], section, leaf);
            QVERIFY2(command, qPrintable(app + u' ' + leaf));
            QCOMPARE(command->shortcut, keys);
        }
        QCOMPARE(catalogs["geany"].sections.first().title, "File");
        QCOMPARE(find(catalogs["geany"], "File", "main.c")->titles(),
                 (QStringList{"File", "New (with Template)", "main.c"}));
        QVERIFY(!find(catalogs["geany"], "File", "Recent Files")); // an empty submenu
        QCOMPARE(find(catalogs["featherpad"], "File", "Clear")->titles().mid(0, 2),
                 (QStringList{"File", "Recently Modified"}));
        QCOMPARE(find(catalogs["featherpad"], "File", "Detach Tab")->enabled, false);
    }

    void realPresses()
    {
        // The paths as the crawl gives them: mousepad pads its titles with spaces.
        const auto path = [this](const QString& app, const QString& leaf) {
            return find(crawl(m_apps[app]), "File", leaf)->titles().join(u'/');
        };
        QCOMPARE(press(path("mousepad", "New"), m_apps["mousepad"].pid), PressOutcome::pressed);
        QTRY_VERIFY_WITH_TIMEOUT(windowTitles(m_apps["mousepad"].pid).contains("Untitled 2"),
                                 10000);
        // geany's plain New adds a second "untitled" nobody can tell apart; a template retitles.
        QCOMPARE(press(path("geany", "main.c"), m_apps["geany"].pid), PressOutcome::pressed);
        QTRY_VERIFY_WITH_TIMEOUT(windowTitles(m_apps["geany"].pid).contains("untitled.c"), 10000);
        // Qt answers after the action has run: a new document is a second tab, which can be
        // detached.
        const RunningApp featherpad = m_apps["featherpad"];
        QVERIFY(press(path("featherpad", "New"), featherpad.pid) != PressOutcome::failed);
        // A read that does not list the item (its menus in mid-change) counts as not yet.
        const auto detachable = [&] {
            const auto detach = find(crawl(featherpad), "File", "Detach Tab");
            return detach && detach->enabled;
        };
        QTRY_VERIFY_WITH_TIMEOUT(detachable(), 10000);
        QTest::ignoreMessage(QtCriticalMsg, "press: path component not found: Open...");
        QCOMPARE(press("File/Open...#1", m_apps["geany"].pid), PressOutcome::failed);
    }

    void commandLineMessages()
    {
        const auto run = [](const QStringList& arguments,
                            const QProcessEnvironment& env =
                                QProcessEnvironment::systemEnvironment()) {
            QProcess process;
            process.setProcessEnvironment(env);
            process.start(QStringLiteral(CORVANE_MENUS), arguments);
            process.waitForFinished(30000);
            return std::make_tuple(process.exitCode(),
                                   QString::fromUtf8(process.readAllStandardOutput()),
                                   QString::fromUtf8(process.readAllStandardError()));
        };
        const auto [listed, list, listErr] = run({"list"});
        QCOMPARE(listed, 0);
        QVERIFY2(list.contains(QRegularExpression(
                     QStringLiteral("%1\\s+geany\\s+Geany\\s+yes").arg(m_apps["geany"].pid))),
                 qPrintable(list));
        const auto [dumped, dump, dumpErr] = run({"dump", "geany", "--json"});
        QCOMPARE(dumped, 0);
        QVERIFY(dump.contains("\"bundleID\": \"geany\""));
        // The shortcut sheet: every command with a shortcut, once, in menu order, as HTML that is
        // well-formed and loads nothing, and as Markdown.
        const auto catalog = MenuCatalogJson::read(dump.toUtf8()).catalog;
        QVERIFY(catalog);
        QStringList expected;
        QSet<QString> seen;
        for (const MenuSection& section : catalog->sections) {
            for (const MenuCommand& command : section.commands) {
                if (command.shortcut.key.isEmpty() || seen.contains(command.id()))
                    continue;
                seen.insert(command.id());
                const QStringList keys =
                    command.shortcut.modifiers + QStringList{command.shortcut.key};
                expected << command.titles().mid(1).join(" \u25b8 ") + " = " + keys.join(u'+');
            }
        }
        QVERIFY(expected.size() >= 40);
        const auto [sheeted, sheet, sheetErr] = run({"dump", "geany", "--html"});
        QCOMPARE(sheeted, 0);
        QXmlStreamReader xml(sheet);
        QStringList rows;
        QString cell, keys;
        while (!xml.atEnd()) {
            xml.readNext();
            if (xml.isStartElement() && xml.name() == u"tr")
                cell.clear(), keys.clear();
            else if (xml.isStartElement() && xml.name() == u"td" && cell.isEmpty())
                cell = xml.readElementText(QXmlStreamReader::IncludeChildElements);
            else if (xml.isStartElement() && xml.name() == u"kbd")
                keys += (keys.isEmpty() ? "" : "+") + xml.readElementText();
            else if (xml.isEndElement() && xml.name() == u"tr")
                rows << cell + " = " + keys;
        }
        QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
        QCOMPARE(rows, expected);
        static const QRegularExpression external(R"(\b(src|href)\s*=|url\(|@import|<link|<script)",
                                                 QRegularExpression::CaseInsensitiveOption);
        QVERIFY(!sheet.contains(external));
        const auto [marked, markdown, markdownErr] = run({"dump", "geany", "--markdown"});
        QCOMPARE(marked, 0);
        QCOMPARE(markdown.count("\n| "), expected.size() + markdown.count("\n## "));
        const auto [missing, _1, missingErr] = run({"dump", "org.example.Missing"});
        QCOMPARE(missing, 5);
        QVERIFY2(
            missingErr.startsWith("corvane-menus: no application with id org.example.Missing") &&
                missingErr.count(u'\n') == 1,
            qPrintable(missingErr));
        QProcessEnvironment noBus = QProcessEnvironment::systemEnvironment();
        noBus.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
        const auto [busless, _3, buslessErr] = run({"list"}, noBus);
        QCOMPARE(busless, 3);
        QVERIFY2(buslessErr.startsWith("corvane-menus: no accessibility bus"),
                 qPrintable(buslessErr));
        QVERIFY(onCrawlThread([] { return AccessibilitySwitch::setEnabled(false); }));
        const auto [off, _5, offErr] = run({"list"});
        QVERIFY(onCrawlThread([] { return AccessibilitySwitch::setEnabled(true); }));
        QCOMPARE(off, 4);
        QVERIFY2(offErr.contains("accessibility is switched off"), qPrintable(offErr));
    }

    // A caller that asks while a read is in flight may have heard of a change that read was sent
    // before: it is answered by a read sent after it asked, never by the older one.
    void refreshDuringAReadHearsALaterChange()
    {
        AccessibilitySwitch trust;
        std::optional<bool> first, second, third;
        trust.refresh([&](bool trusted) { first = trusted; });
        QVERIFY(onCrawlThread([] { return AccessibilitySwitch::setEnabled(false); }));
        trust.refresh([&](bool trusted) { second = trusted; });
        QTRY_VERIFY(first && second);
        QCOMPARE(*second, false);
        QCOMPARE(trust.isTrusted(), false);
        QVERIFY(onCrawlThread([] { return AccessibilitySwitch::setEnabled(true); }));
        trust.refresh([&](bool trusted) { third = trusted; });
        QTRY_COMPARE(third, std::optional(true));
    }

    // Last: a registrar on the bus changes how every Qt application started afterwards shows its
    // menus. A featherpad that could not join the accessibility bus (the root window's address
    // points nowhere) is read through its window's DBusMenu as the one on the bus reads through
    // AT-SPI, and pressed there.
    void qtApplicationOffTheBusThroughTheGlobalMenu()
    {
        test::TestRegistrar registrar;
        QVERIFY(registrar.start());
        const qint64 pid = startOffTheBus("featherpad", {"--standalone"}, [&registrar](qint64) {
            return registrar.registrations() >= 1;
        });
        QTest::qWait(1000); // its menus filled in
        const RunningApp app = onCrawlThread([pid] { return AppIdentity::forProcess(pid); });

        MenuCrawler sources(desktopMenuSources([] { return false; }));
        const auto read = onCrawlThread([&] { return sources.crawl(app); });
        QVERIFY(read);
        // Its hidden actions are in its accessibility tree, not in its DBusMenu.
        MenuCatalog onBus = crawl(m_apps["featherpad"]);
        for (MenuSection& section : onBus.sections)
            section.commands.removeIf([](const MenuCommand& c) {
                const QString path = c.titles().join(u'/');
                return path == u"File/Run" || path == u"File/Document Properties" ||
                       path == u"Edit/Edit";
            });
        // (Whether a command is enabled depends on each window's tabs.)
        QCOMPARE(test::describe(read, 5000).remove(u'!'), test::describe(onBus, 5000).remove(u'!'));

        const PressOutcome pressed = onCrawlThread([&] {
            return sources.press(pathFromTitles({"Help", "About"}), pid);
        });
        QCOMPARE(pressed, PressOutcome::pressed);
        QTRY_VERIFY_WITH_TIMEOUT(windowTitles(pid).contains("About FeatherPad"), 5000);
    }

    // Chromium has no menu bar in its window: its menus are in its DBusMenu, one per browser
    // window, exported while a registrar is on the bus. Without one they are read only when the
    // user allows Corvane to stand in for a registrar for a moment. "New Window" from there opens a
    // second window.
    void chromiumThroughTheGlobalMenu()
    {
        const qint64 pid =
            m_programs.start("chromium", {"--no-sandbox", "--user-data-dir=" + m_dir.filePath("c"),
                                          "--no-first-run", "--disable-gpu", "about:blank"});
        QTRY_VERIFY_WITH_TIMEOUT(windowTitles(pid).contains("Chromium"), 30000);
        const RunningApp app = onCrawlThread([pid] { return AppIdentity::forProcess(pid); });
        QDBusServiceWatcher watcher("com.canonical.AppMenu.Registrar",
                                    QDBusConnection::sessionBus(),
                                    QDBusServiceWatcher::WatchForOwnerChange);
        QSignalSpy owners(&watcher, &QDBusServiceWatcher::serviceOwnerChanged);
        const auto crawlWith = [&](bool mayBorrow) {
            return onCrawlThread([&] {
                return MenuCrawler(desktopMenuSources([=] { return mayBorrow; })).crawl(app);
            });
        };
        // Not allowed: nothing to read, and the name never taken.
        QVERIFY(!crawlWith(false));
        QTest::qWait(200);
        QCOMPARE(owners.size(), 0);
        // Allowed: read, the name taken and let go again.
        const auto borrowed = crawlWith(true);
        QVERIFY(borrowed && borrowed->sections.size() >= 6);
        QTRY_COMPARE(owners.size(), 2);
        QVERIFY(!QDBusConnection::sessionBus().interface()->isServiceRegistered(
            "com.canonical.AppMenu.Registrar"));

        test::TestRegistrar registrar;
        QVERIFY(registrar.start());
        QTRY_VERIFY_WITH_TIMEOUT(registrar.registrations() >= 1, 10000);
        MenuCrawler sources(desktopMenuSources([] { return false; }));
        const auto read = onCrawlThread([&] { return sources.crawl(app); });
        QVERIFY(read);
        const auto [commands, withKeys] = sizeOf(*read);
        QVERIFY2(read->sections.size() >= 6 && commands >= 40 && withKeys >= 20,
                 qPrintable(test::describe(read)));
        const auto newWindow = find(*read, "File", "New window");
        QVERIFY(newWindow);
        QCOMPARE(newWindow->shortcut, (ShortcutKeys{{"Ctrl"}, "N"}));
        const auto windows = [pid] { return windowTitles(pid).count("Chromium"); };
        const qsizetype before = windows();
        QVERIFY(before >= 1);
        QCOMPARE(onCrawlThread([&] { return sources.press(newWindow->path, pid); }),
                 PressOutcome::pressed);
        QTRY_COMPARE_WITH_TIMEOUT(windows(), before + 1, 10000);
    }

    // No registrar, off the accessibility bus: a KDE application's main-window actions, grouped by
    // their names into menus, and "New Window" from there opens a second window.
    void kdeApplicationOffTheBusThroughItsActions()
    {
        const qint64 pid = startOffTheBus("kwrite", {}, [](qint64 pid) {
            return QDBusConnection::sessionBus().interface()->isServiceRegistered(
                       QStringLiteral("org.kde.kwrite-%1").arg(pid)) &&
                   !AppIdentity::topLevelWindows(pid).isEmpty();
        });
        const RunningApp app = onCrawlThread([pid] { return AppIdentity::forProcess(pid); });
        MenuCrawler sources(desktopMenuSources([] { return false; }));
        const auto read = onCrawlThread([&] { return sources.crawl(app); });
        QVERIFY(read);
        const auto [commands, withKeys] = sizeOf(*read);
        QVERIFY2(commands >= 40 && withKeys >= 15, qPrintable(test::describe(read)));
        QCOMPARE(read->sections.first().title, "File");
        QCOMPARE(read->sections.last().title, "Other");
        const auto newDocument = find(*read, "File", "New");
        const auto statusbar = find(*read, "Settings", "Show Statusbar");
        QVERIFY(newDocument && statusbar && statusbar->isChecked);
        QCOMPARE(newDocument->shortcut, (ShortcutKeys{{"Ctrl"}, "N"}));
        const auto newWindow = find(*read, "View", "New Window");
        QVERIFY(newWindow);
        const auto windows = [pid] { return AppIdentity::topLevelWindows(pid).size(); };
        const qsizetype before = windows();
        QCOMPARE(onCrawlThread([&] { return sources.press(newWindow->path, pid); }),
                 PressOutcome::pressed);
        QTRY_COMPARE_WITH_TIMEOUT(windows(), before + 1, 10000);
    }

private:
    RunningApp start(const QString& program, const QStringList& arguments)
    {
        const qint64 pid = m_programs.start(program, arguments);
        if (!test::waitForMenuBar(pid))
            qFatal("%s never showed a menu bar on the accessibility bus", qPrintable(program));
        return onCrawlThread([pid] { return AppIdentity::forProcess(pid); });
    }

    MenuCatalog crawl(const RunningApp& app)
    {
        const auto catalog = onCrawlThread([&] { return m_crawler.crawl(app); });
        if (!catalog)
            qFatal("the crawl of %s gave no catalog", qPrintable(app.name));
        return *catalog;
    }

    PressOutcome press(const QString& path, qint64 pid)
    {
        return onCrawlThread(
            [&] { return m_crawler.press(pathFromTitles(path.split(u'/')), pid); });
    }

    // Starts a Qt 5 application while the root window's bus address points nowhere, so that it
    // never joins the accessibility bus, until `ready`; the address is put back before it returns.
    qint64 startOffTheBus(const QString& program, const QStringList& arguments,
                          const std::function<bool(qint64)>& ready)
    {
        const QString address =
            test::output("xprop", {"-root", "-notype", "AT_SPI_BUS"}).text.section(u'"', 1, 1);
        const auto setAddress = [](const QString& value) {
            QProcess::execute("xprop",
                              {"-root", "-f", "AT_SPI_BUS", "8s", "-set", "AT_SPI_BUS", value});
        };
        setAddress("unix:path=/nonexistent/at-spi-bus");
        const qint64 pid = m_programs.start(program, arguments);
        const bool started = QTest::qWaitFor([&] { return ready(pid); }, 30000);
        setAddress(address);
        if (address.isEmpty() || !started)
            qFatal("%s did not start off the bus", qPrintable(program));
        return pid;
    }

    QTemporaryDir m_dir;
    test::Programs m_programs;
    QHash<QString, RunningApp> m_apps;
    MenuCrawler m_crawler{std::make_shared<atspi::MenuBarFinder>()};
};

QTEST_GUILESS_MAIN(TestAtspiApps)
#include "tst_atspi_apps.moc"
