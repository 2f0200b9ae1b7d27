// The crawl's and the press's walk rules on built in-memory trees (the real applications are in the
// session tests): occurrences, depth limit, item cap, empty submenus, the deadline, timeouts,
// and every failure with its log text.

#include "FakeMenuTree.h"
#include "menus/MenuWalk.h"

#include <QTest>

using namespace corvane;
using namespace corvane::test;

namespace {

RunningApp app(const QString& id = QStringLiteral("org.example.App"))
{
    return RunningApp{42, id, "Example", {}};
}

std::optional<MenuCatalog> crawl(const Node& menuBar)
{
    WalkBudget budget;
    return MenuWalk::crawl(app(), menuBar, 0, budget);
}

QStringList ids(const MenuCatalog& c)
{
    QStringList out;
    for (const auto& s : c.sections)
        for (const auto& cmd : s.commands)
            out << cmd.id().replace(QChar(0x1F), u'/');
    return out;
}

// A chain of submenus `levels` deep under "Top", each level holding a leaf and the next submenu.
Node chain(int levels)
{
    Node deepest =
        menu(QStringLiteral("L%1").arg(levels), {item(QStringLiteral("leaf%1").arg(levels))});
    for (int level = levels - 1; level >= 1; --level)
        deepest = menu(QStringLiteral("L%1").arg(level),
                       {item(QStringLiteral("leaf%1").arg(level)), deepest});
    return deepest;
}

} // namespace

class TestMenuWalk : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void menuBarWithNothingYieldsNoCatalog();
    void menusOfSeparatorsAndEmptySubmenusYieldNoSection();
    void occurrences();
    void servicesSubmenuIsWalkedOnLinux();
    void depthLimit();
    void itemCapKeepsPartialSections();
    void attributesPassThrough();
    void noApplicationId();
    void unreadableMenuBar();
    void deadlineKeepsSectionsBuiltSoFar();
    void timedOutRequestEndsTheCrawl();
    void successLogLine();
    void pressTwoStepPaths();
    void pressRenamedTitle();
    void pressVanishedSubmenu();
    void pressTimeoutIsAssumedFired();
    void pressErrorFails();
    void pressEmptyPathAndUnreadableMenuBar();
    void pressSingleStepPressesTopLevelItem();
    void pressCountsTopLevelLikeTheCrawl();
};

void TestMenuWalk::menuBarWithNothingYieldsNoCatalog()
{
    QTest::ignoreMessage(QtCriticalMsg,
                         "crawl: org.example.App yielded 0 sections (menu bar children: 1)");
    QVERIFY(!crawl(bar({menu("Empty", {})})).has_value());
}

void TestMenuWalk::menusOfSeparatorsAndEmptySubmenusYieldNoSection()
{
    const auto catalog = crawl(bar({menu("File", {separator(), menu("Recent", {}), separator()}),
                                    menu("Edit", {item("Copy")})}));
    QVERIFY(catalog);
    QCOMPARE(catalog->sections.size(), 1);
    QCOMPARE(catalog->sections[0].title, QStringLiteral("Edit"));
}

void TestMenuWalk::occurrences()
{
    const auto catalog =
        crawl(bar({menu("File", {item("Open"), separator(), item("Open"), menu("Open", {}),
                                 item("Open"), item("Close")})}));
    QVERIFY(catalog);
    // The skipped empty submenu "Open" still consumes occurrence 2.
    QCOMPARE(ids(*catalog), (QStringList{"File/Open", "File/Open#1", "File/Open#3", "File/Close"}));
    // Equal top-level titles are numbered too.
    const auto two = crawl(bar({menu("View", {item("A")}), menu("View", {item("B")})}));
    QCOMPARE(ids(*two), (QStringList{"View/A", "View#1/B"}));
}

void TestMenuWalk::servicesSubmenuIsWalkedOnLinux()
{
    // No menu is the application menu on Linux, so a "Services" submenu is walked everywhere.
    const auto catalog = crawl(bar({menu("App", {menu("Services", {item("Mail")})}),
                                    menu("Edit", {menu("Services", {item("Speak")})})}));
    QCOMPARE(ids(*catalog), (QStringList{"App/Services/Mail", "Edit/Services/Speak"}));
}

void TestMenuWalk::depthLimit()
{
    const auto catalog = crawl(bar({menu("Top", {chain(6)})}));
    QVERIFY(catalog);
    const QStringList got = ids(*catalog);
    // Items at depths 1..5 are listed; L5 sits at depth 5 and has a submenu: neither entered nor
    // listed.
    QCOMPARE(got, (QStringList{"Top/L1/leaf1", "Top/L1/L2/leaf2", "Top/L1/L2/L3/leaf3",
                               "Top/L1/L2/L3/L4/leaf4"}));
    const auto five = crawl(bar({menu("Top", {chain(4)})}));
    QVERIFY(ids(*five).contains("Top/L1/L2/L3/L4/leaf4"));
    // A leaf at depth 5 has a path of six steps.
    const auto deep =
        crawl(bar({menu("T", {menu("a", {menu("b", {menu("c", {menu("d", {item("e")})})})})})}));
    QCOMPARE(ids(*deep), QStringList{"T/a/b/c/d/e"});
    QCOMPARE(deep->sections[0].commands[0].path.size(), 6);
}

void TestMenuWalk::itemCapKeepsPartialSections()
{
    QList<Node> first;
    for (int i = 0; i < 2000; ++i)
        first.append(item(QStringLiteral("a%1").arg(i)));
    QList<Node> inner;
    for (int i = 0; i < 800; ++i)
        inner.append(item(QStringLiteral("b%1").arg(i)));
    const auto catalog =
        crawl(bar({menu("One", first), menu("Two", {menu("Sub", inner), item("after")}),
                   menu("Three", {item("never")})}));
    QVERIFY(catalog);
    QCOMPARE(catalog->sections.size(), 2); // the partly filled "Two" is kept, "Three" is never read
    QCOMPARE(catalog->sections[1].commands.size(), 500);
    QCOMPARE(catalog->sections[1].commands.last().path.last().title, QStringLiteral("b499"));
}

void TestMenuWalk::attributesPassThrough()
{
    Node disabled = item("Disabled", ShortcutKeys{{"Ctrl"}, "D"});
    disabled->isEnabled = false;
    Node checked = item("Checked");
    checked->isChecked = true;
    const auto catalog = crawl(bar({menu("M", {disabled, checked})}));
    const MenuCommand& a = catalog->sections[0].commands[0];
    QCOMPARE(a.enabled, false);
    QCOMPARE(a.shortcut, (ShortcutKeys{{"Ctrl"}, "D"}));
    QCOMPARE(a.isChecked, false);
    QCOMPARE(catalog->sections[0].commands[1].isChecked, true);
    QCOMPARE(catalog->sections[0].commands[1].shortcut, ShortcutKeys::none);
    QCOMPARE(catalog->appName, QStringLiteral("Example"));
    QCOMPARE(catalog->bundleID, QStringLiteral("org.example.App"));
}

void TestMenuWalk::noApplicationId()
{
    WalkBudget budget;
    QTest::ignoreMessage(QtCriticalMsg, "crawl: target app has no bundle identifier");
    QVERIFY(!MenuWalk::crawl(RunningApp{1, std::nullopt, "X", {}}, bar({menu("M", {item("a")})}), 0,
                             budget));
}

void TestMenuWalk::unreadableMenuBar()
{
    WalkBudget budget;
    QTest::ignoreMessage(QtCriticalMsg,
                         "crawl: menu bar read failed for org.example.App: AXError 7");
    QVERIFY(!MenuWalk::crawl(app(), nullptr, 7, budget));
    QCOMPARE(MenuWalk::lastFailure(),
             QStringLiteral("menu bar read failed for org.example.App: AXError 7"));
}

void TestMenuWalk::deadlineKeepsSectionsBuiltSoFar()
{
    // A node whose children take 60 ms; the budget is 100 ms.
    class SlowNode : public FakeNode {
    public:
        QList<std::shared_ptr<MenuNode>> children() override
        {
            QThread::msleep(60);
            return FakeNode::children();
        }
    };
    auto slowMenu = [](const QString& title, QList<Node> kids) {
        auto n = std::make_shared<SlowNode>();
        n->name = title;
        n->isMenu = true;
        n->kids = std::move(kids);
        return n;
    };
    WalkBudget budget(std::chrono::milliseconds(100));
    QTest::ignoreMessage(QtCriticalMsg, "crawl: org.example.App stopped at the deadline");
    QTest::ignoreMessage(QtInfoMsg,
                         QRegularExpression("crawl: org.example.App → 1 sections, 2 items"));
    const auto catalog =
        MenuWalk::crawl(app(),
                        bar({slowMenu("One", {item("a"), item("b")}), slowMenu("Two", {item("c")}),
                             slowMenu("Three", {item("d")})}),
                        0, budget);
    QVERIFY(catalog);
    QCOMPARE(ids(*catalog), (QStringList{"One/a", "One/b"}));
}

void TestMenuWalk::timedOutRequestEndsTheCrawl()
{
    WalkBudget budget;
    Node frozen = menu("Frozen", {item("x")});
    frozen->timesOut = true;
    frozen->budget = &budget;
    QTest::ignoreMessage(QtCriticalMsg, "crawl: org.example.App stopped at the deadline");
    QTest::ignoreMessage(QtInfoMsg, "crawl: org.example.App → 1 sections, 1 items");
    const auto catalog = MenuWalk::crawl(
        app(), bar({menu("File", {item("New")}), frozen, menu("Later", {item("y")})}), 0, budget);
    QCOMPARE(ids(*catalog), QStringList{"File/New"});
}

void TestMenuWalk::successLogLine()
{
    WalkBudget budget;
    QTest::ignoreMessage(QtInfoMsg, "crawl: org.example.App → 2 sections, 3 items");
    QVERIFY(MenuWalk::crawl(app(), bar({menu("A", {item("1"), item("2")}), menu("B", {item("3")})}),
                            0, budget));
}

void TestMenuWalk::pressTwoStepPaths()
{
    int first = 0, second = 0;
    Node save1 = item("Save");
    save1->pressedCounter = &first;
    Node save2 = item("Save");
    save2->pressedCounter = &second;
    const Node menuBar = bar({menu("File", {save1, separator(), save2})});
    QCOMPARE(MenuWalk::press({{"File", 0}, {"Save", 0}}, menuBar), PressOutcome::pressed);
    QCOMPARE(first, 1);
    QCOMPARE(MenuWalk::press({{"File", 0}, {"Save", 1}}, menuBar), PressOutcome::pressed);
    QCOMPARE(second, 1);
    QTest::ignoreMessage(QtCriticalMsg, "press: path component not found: Save");
    QCOMPARE(MenuWalk::press({{"File", 0}, {"Save", 2}}, menuBar), PressOutcome::failed);
}

void TestMenuWalk::pressRenamedTitle()
{
    QTest::ignoreMessage(QtCriticalMsg, "press: path component not found: Save As…");
    QCOMPARE(MenuWalk::press({{"File", 0}, {"Save As…", 0}},
                             bar({menu("File", {item("Save a Copy…")})})),
             PressOutcome::failed);
}

void TestMenuWalk::pressVanishedSubmenu()
{
    QTest::ignoreMessage(QtCriticalMsg, "press: no submenu under notes.txt");
    QCOMPARE(MenuWalk::press({{"File", 0}, {"Open Recent", 0}, {"notes.txt", 0}},
                             bar({menu("File", {item("Open Recent")})})),
             PressOutcome::failed);
}

void TestMenuWalk::pressTimeoutIsAssumedFired()
{
    Node slow = item("Export");
    slow->answer = {MenuNode::PressResult::Status::timedOut, 0};
    QTest::ignoreMessage(QtInfoMsg, "press: no timely reply for File ▸ Export — treating as fired");
    QCOMPARE(MenuWalk::press({{"File", 0}, {"Export", 0}}, bar({menu("File", {slow})})),
             PressOutcome::assumedFired);
}

void TestMenuWalk::pressErrorFails()
{
    Node broken = item("Print");
    broken->answer = {MenuNode::PressResult::Status::error, 3};
    QTest::ignoreMessage(QtCriticalMsg, "press: AXPress failed (3) for File ▸ Print");
    QCOMPARE(MenuWalk::press({{"File", 0}, {"Print", 0}}, bar({menu("File", {broken})})),
             PressOutcome::failed);
}

void TestMenuWalk::pressEmptyPathAndUnreadableMenuBar()
{
    QCOMPARE(MenuWalk::press({}, bar({})), PressOutcome::failed); // nothing logged
    QTest::ignoreMessage(QtCriticalMsg, "press: could not read menu bar");
    QCOMPARE(MenuWalk::press({{"File", 0}}, nullptr), PressOutcome::failed);
    QTest::ignoreMessage(QtCriticalMsg, "press: could not resolve top-level menu Tools");
    QCOMPARE(MenuWalk::press({{"Tools", 0}, {"X", 0}}, bar({menu("File", {item("X")})})),
             PressOutcome::failed);
}

void TestMenuWalk::pressSingleStepPressesTopLevelItem()
{
    int pressed = 0;
    Node file = menu("File", {item("New")});
    file->pressedCounter = &pressed;
    QCOMPARE(MenuWalk::press({{"File", 0}}, bar({file})), PressOutcome::pressed);
    QCOMPARE(pressed, 1);
}

void TestMenuWalk::pressCountsTopLevelLikeTheCrawl()
{
    int pressed = 0;
    Node target = item("B");
    target->pressedCounter = &pressed;
    const Node menuBar = bar({menu("View", {item("A")}), menu("View", {target})});
    const auto catalog = crawl(menuBar);
    const MenuCommand& b = catalog->sections[1].commands[0];
    QCOMPARE(MenuWalk::press(b.path, menuBar), PressOutcome::pressed);
    QCOMPARE(pressed, 1);
}

QTEST_GUILESS_MAIN(TestMenuWalk)
#include "tst_menuwalk.moc"
