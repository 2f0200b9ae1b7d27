// The menu model: the crawl's and the press's walk rules on trees built in memory (the real
// applications are in the session tests), command identity, the JSON form's errors (its round
// trip is the fuzzer's), the catalog cache, the favourites store and the history.

#include "FakeMenuTree.h"
#include "menus/CommandHistory.h"
#include "menus/FavoritesStore.h"
#include "menus/MenuCatalogCache.h"
#include "menus/MenuCatalogJson.h"
#include "menus/MenuCrawler.h"
#include "menus/MenuWalk.h"
#include "platform/UserDefaults.h"

#include <QTemporaryDir>
#include <QTest>

using namespace corvane;
using namespace corvane::test;

namespace {

const RunningApp app{42, "org.example.App", "Example", {}};

MenuCommand command(const QStringList& titles)
{
    return MenuCommand{pathFromTitles(titles), ShortcutKeys::none, true, false};
}

} // namespace

class TestMenus : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void crawl_data()
    {
        QTest::addColumn<QString>("bar");
        QTest::addColumn<int>("budgetMs"); // 0: none
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("log"); // the last line logged
        QTest::newRow("menus with nothing yield no catalog")
            << "Empty{}" << 0 << "none"
            << "crawl: org.example.App yielded 0 sections (menu bar children: 1)";
        QTest::newRow("separators and empty submenus are skipped")
            << "File{-,Recent{},-},Edit{Copy}" << 0 << "Edit/Copy"
            << "crawl: org.example.App → 1 sections, 1 items";
        QTest::newRow("occurrences count every titled sibling")
            << "File{Open,-,Open,Open{},Open,Close},View{A},View{B}" << 0
            << "File/Open File/Open#1 File/Open#3 File/Close View/A View#1/B"
            << "crawl: org.example.App → 3 sections, 6 items";
        QTest::newRow("a Services submenu is walked like any other")
            << "App{Services{Mail}}" << 0 << "App/Services/Mail"
            << "crawl: org.example.App → 1 sections, 1 items";
        QTest::newRow("attributes pass through")
            << "M{Save!=Ctrl+S,Wrap*,Find=<Primary><Shift>f}" << 0
            << "M/Save!=Ctrl+S M/Wrap* M/Find=Ctrl+Shift+F"
            << "crawl: org.example.App → 1 sections, 3 items";
        QTest::newRow("depth limit: leaves down to depth 5, no submenu entered below")
            << "T{L1{a,L2{b,L3{c,L4{d,L5{e,L6{f}}}}}}},U{a{b{c{d{e}}}}}" << 0
            << "T/L1/a T/L1/L2/b T/L1/L2/L3/c T/L1/L2/L3/L4/d U/a/b/c/d/e"
            << "crawl: org.example.App → 2 sections, 5 items";
        QTest::newRow("the deadline keeps the sections built so far")
            << "One^{a,b},Two^{c},Three^{d}" << 100 << "One/a One/b"
            << "crawl: org.example.App → 1 sections, 2 items";
        QTest::newRow("a request that timed out ends the crawl")
            << "File{New},Frozen~{x},Later{y}" << 0 << "File/New"
            << "crawl: org.example.App → 1 sections, 1 items";
    }

    void crawl()
    {
        QFETCH(QString, bar);
        QFETCH(int, budgetMs);
        QFETCH(QString, expected);
        QFETCH(QString, log);
        WalkBudget budget =
            budgetMs ? WalkBudget(std::chrono::milliseconds(budgetMs)) : WalkBudget();
        if (budgetMs || bar.contains(u'~'))
            QTest::ignoreMessage(QtCriticalMsg, "crawl: org.example.App stopped at the deadline");
        QTest::ignoreMessage(expected == u"none" ? QtCriticalMsg : QtInfoMsg, qPrintable(log));
        QCOMPARE(describe(MenuWalk::crawl(app, menuBar(bar, {}, &budget), 0, budget)), expected);
    }

    void itemCapKeepsPartialSections()
    {
        QStringList one, sub;
        for (int i = 0; i < 2000; ++i)
            one << QStringLiteral("a%1").arg(i);
        for (int i = 0; i < 800; ++i)
            sub << QStringLiteral("b%1").arg(i);
        WalkBudget budget;
        const auto catalog =
            MenuWalk::crawl(app,
                            menuBar(QStringLiteral("One{%1},Two{Sub{%2},after},Three{never}")
                                        .arg(one.join(u','), sub.join(u','))),
                            0, budget);
        QVERIFY(catalog);
        QCOMPARE(catalog->sections.size(), 2); // the partly read "Two" is kept, "Three" never read
        QCOMPARE(catalog->sections[1].commands.size(), 500);
        QCOMPARE(catalog->sections[1].commands.last().path.last().title, "b499");

        // Without an application id or a menu bar there is no catalog, and the log says why.
        QTest::ignoreMessage(QtCriticalMsg, "crawl: target app has no bundle identifier");
        QVERIFY(!MenuWalk::crawl(RunningApp{1, {}, "X", {}}, menuBar("M{a}"), 0, budget));
        QTest::ignoreMessage(QtCriticalMsg,
                             "crawl: menu bar read failed for org.example.App: AXError 7");
        QVERIFY(!MenuWalk::crawl(app, nullptr, 7, budget));
    }

    void press_data()
    {
        QTest::addColumn<QString>("bar");
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<bool>("reached"); // the item at the end of the path was pressed
        QTest::addColumn<QString>("log");  // logged, or empty
        const int pressed = int(PressOutcome::pressed), failed = int(PressOutcome::failed),
                  assumed = int(PressOutcome::assumedFired);
        const QList<std::tuple<const char*, const char*, const char*, int, bool, const char*>> rows{
            {"first of two equal titles", "File{Save,-,Save}", "File/Save", pressed, true, ""},
            {"second of two equal titles", "File{Save,-,Save}", "File/Save#1", pressed, true, ""},
            {"third of two", "File{Save,-,Save}", "File/Save#2", failed, false,
             "press: path component not found: Save"},
            {"equal top-level titles, as the crawl counts them", "View{A},View{B}", "View#1/B",
             pressed, true, ""},
            {"a renamed item", "File{Save a Copy…}", "File/Save As…", failed, false,
             "press: path component not found: Save As…"},
            {"a submenu that became a command", "File{Open Recent}", "File/Open Recent/notes.txt",
             failed, false, "press: no submenu under notes.txt"},
            {"a vanished top-level menu", "File{X}", "Tools/X", failed, false,
             "press: could not resolve top-level menu Tools"},
            {"a top-level item itself", "File{New}", "File", pressed, true, ""},
            {"no timely answer is assumed to have fired", "File{Export?t}", "File/Export", assumed,
             true, "press: no timely reply for File ▸ Export — treating as fired"},
            {"an error fails", "File{Print?e}", "File/Print", failed, true,
             "press: AXPress failed (3) for File ▸ Print"},
        };
        for (const auto& [name, bar, path, outcome, reached, log] : rows)
            QTest::newRow(name) << bar << path << outcome << reached << log;
    }

    void press()
    {
        QFETCH(QString, bar);
        QFETCH(QString, path);
        QFETCH(int, outcome);
        QFETCH(bool, reached);
        QFETCH(QString, log);
        auto pressed = std::make_shared<QStringList>();
        if (!log.isEmpty())
            QTest::ignoreMessage(outcome == int(PressOutcome::assumedFired) ? QtInfoMsg
                                                                            : QtCriticalMsg,
                                 qPrintable(log));
        QCOMPARE(int(MenuWalk::press(pathFromTitles(path.split(u'/')), menuBar(bar, pressed))),
                 outcome);
        QCOMPARE(*pressed, reached ? QStringList{path} : QStringList());
        QTest::ignoreMessage(QtCriticalMsg, "press: could not read menu bar");
        QCOMPARE(MenuWalk::press(pathFromTitles({"File"}), nullptr), PressOutcome::failed);
    }

    void identity()
    {
        const QString sep(idSeparator);
        QCOMPARE(command({"File", "Share", "Export…#1"}).id(),
                 "File" + sep + "Share" + sep + "Export…#1");
        QCOMPARE(command({"Edit#2", "Item#12"}).id(), "Edit#2" + sep + "Item#12");
        QCOMPARE(command({"View", "Sort By", "Kind", "Ascending"}).breadcrumb(), "Sort By ▸ Kind");
        QCOMPARE(command({"File", "Save"}).breadcrumb(), QString());
        // Canonically equivalent titles are the same title; the other fields count.
        QVERIFY(command({"File", "Café"}) == command({"File", "Cafe\u0301"}));
        MenuCommand disabled = command({"File", "Café"});
        disabled.enabled = false;
        QVERIFY(!(command({"File", "Café"}) == disabled));
        QVERIFY(!(command({"File", "Café"}) == command({"File", "Café#1"})));
    }

    void jsonErrorsAreClear_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("error");
        const auto command = [](const char* fields) {
            return QByteArray(
                       R"({"bundleID":"a","appName":"A","sections":[{"title":"F","commands":[{)") +
                   fields + "}]}]}";
        };
        QTest::newRow("not json") << QByteArray("{nope") << "not valid JSON";
        QTest::newRow("array") << QByteArray("[]") << "the top level: expected an object";
        QTest::newRow("no bundle")
            << QByteArray(R"({"appName":"A","sections":[]})") << "bundleID: expected a string";
        QTest::newRow("empty path") << command(R"("path":[])")
                                    << "sections[0].commands[0].path: expected a non-empty array";
        QTest::newRow("occurrence") << command(R"("path":[{"title":"F","occurrence":-1}])")
                                    << "sections[0].commands[0].path[0].occurrence";
        QTest::newRow("enabled") << command(R"("path":[{"title":"F"}],"enabled":"yes")")
                                 << "sections[0].commands[0].enabled: expected true or false";
        QTest::newRow("modifiers")
            << command(R"("path":[{"title":"F"}],"shortcut":{"key":"S","modifiers":[1]})")
            << "sections[0].commands[0].shortcut.modifiers: expected an array of strings";
    }

    void jsonErrorsAreClear()
    {
        QFETCH(QByteArray, json);
        QFETCH(QString, error);
        const auto read = MenuCatalogJson::read(json);
        QVERIFY(!read.catalog);
        QVERIFY2(read.error.contains(error) && !read.error.contains(u'\n'), qPrintable(read.error));
    }

    void cacheReplacesWholeCatalogsAcrossThreads()
    {
        const auto catalog = [](const QString& bundle, const QString& section) {
            return MenuCatalog{bundle, bundle, {{section, {command({section, "Item"})}}}};
        };
        MenuCatalogCache cache;
        QVERIFY(!cache.catalog("app0"));
        std::unique_ptr<QThread> writer(QThread::create([&] {
            for (int i = 0; i < 2000; ++i)
                cache.store(
                    catalog(QStringLiteral("app%1").arg(i % 7), QStringLiteral("M%1").arg(i)));
        }));
        writer->start();
        // Every read sees a whole catalog, never a torn one.
        while (!writer->isFinished())
            for (int k = 0; k < 7; ++k)
                if (const auto c = cache.catalog(QStringLiteral("app%1").arg(k)))
                    QCOMPARE(c->sections[0].commands[0].path[0].title, c->sections[0].title);
        writer->wait();
        QVERIFY(*cache.catalog("app0") == catalog("app0", "M1995")); // the last one stored
    }

    void favorites()
    {
        UserDefaults defaults(m_dir.filePath("corvane.conf"));
        FavoritesStore store(defaults);
        for (const char* id : {"a", "b", "c"})
            QVERIFY(store.toggle(id, "app"));
        QVERIFY(!store.toggle("b", "app"));
        QVERIFY(store.toggle("b", "app"));
        QCOMPARE(store.ids("app"), (QStringList{"a", "c", "b"})); // the order they were starred in
        QVERIFY(store.ids("other").isEmpty());
        // Read again from the file: nothing is kept in memory only.
        UserDefaults reread(defaults.filePath());
        QCOMPARE(FavoritesStore(reread).ids("app"), (QStringList{"a", "c", "b"}));
        // A duplicate stored by someone else loses its first copy only.
        QVERIFY(defaults.setStringList("favorites.app", {"x", "a", "y", "a"}));
        QVERIFY(!store.toggle("a", "app"));
        QCOMPARE(store.ids("app"), (QStringList{"x", "y", "a"}));
        // The last one gone, the entry goes too (not an empty list).
        for (const char* id : {"x", "y", "a"})
            store.toggle(id, "app");
        QVERIFY(!defaults.contains("favorites.app"));
        // A value of the wrong type reads as no favourites, and is replaced by the next star.
        QVERIFY(defaults.setString("favorites.app", "not a list"));
        QVERIFY(store.ids("app").isEmpty());
        QVERIFY(store.toggle("a", "app"));
        QCOMPARE(store.ids("app"), QStringList{"a"});
    }

    void history()
    {
        UserDefaults defaults(m_dir.filePath("history.conf"));
        CommandHistory history(defaults);
        const QDateTime monday = QDateTime::fromSecsSinceEpoch(1'790'000'000, Qt::UTC);
        QVERIFY(history.record("copy", "app", monday));
        QVERIFY(history.record("paste", "app", monday.addSecs(60)));
        QVERIFY(history.record("copy", "app", monday.addSecs(120)));
        const QList<CommandHistory::Entry> entries = history.entries("app");
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries[0].id, "copy"); // most recent first, counted
        QCOMPARE(entries[0].count, 2);
        QCOMPARE(entries[0].lastRun, monday.addSecs(120));
        // A run a week ago weighs half a run today.
        QCOMPARE(CommandHistory::weight({"x", 1, monday}, monday.addDays(7)), 0.5);
        QCOMPARE(history.recent("app", monday.addDays(1)), (QStringList{"copy", "paste"}));

        // At most 200 per application, the oldest dropped; a text nobody can read is left out.
        for (int i = 0; i < 205; ++i)
            history.record(QString::number(i), "busy", monday.addSecs(i));
        QCOMPARE(history.entries("busy").size(), CommandHistory::maxEntries);
        QCOMPARE(history.entries("busy").last().id, "5");
        QVERIFY(defaults.setStringList("history.odd", {"2 x copy", "paste", "1 1790000000 cut"}));
        QCOMPARE(history.entries("odd").size(), 1);

        // Forgetting clears every application's history and nothing else.
        QVERIFY(defaults.setStringList("favorites.app", {"copy"}));
        QVERIFY(history.forgetAll());
        UserDefaults reread(defaults.filePath());
        QVERIFY(reread.keys("history.").isEmpty());
        QCOMPARE(reread.stringList("favorites.app"), QStringList{"copy"});
    }

    void sourcesAskedInOrderAndKeptPerProcess()
    {
        // A source whose menu bar (its one menu named after it) can come and go.
        struct Source : MenuSource {
            QString name;
            bool has = true;
            MenuBar menuBar(qint64, WalkBudget&) override
            {
                return {has ? test::menuBar(name + "{Item}") : nullptr, has ? 0 : int(noMenuBar)};
            }
        };
        auto first = std::make_shared<Source>(), second = std::make_shared<Source>();
        first->name = "First";
        second->name = "Second";
        first->has = false;
        FirstMenuSource sources({first, second});
        const auto read = [&sources](qint64 pid) {
            WalkBudget budget(std::chrono::seconds(1));
            const auto bar = sources.menuBar(pid, budget);
            return bar.node ? *bar.node->children().value(0)->title() : QString::number(bar.error);
        };
        QCOMPARE(read(1), "Second");
        first->has = true;
        QCOMPARE(read(1), "Second"); // where it was found before
        QCOMPARE(read(2), "First");  // another process: in order
        first->has = second->has = false;
        QCOMPARE(read(1), QString::number(noMenuBar)); // the first source's answer
    }

private:
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestMenus)
#include "tst_menus.moc"
