// The overlay's state without a window: the view model's derived lists, selection and execution,
// the list models the views bind to, and the panel's placement rule.

#include "overlay/OverlayLists.h"
#include "overlay/OverlayViewModel.h"
#include "overlay/PanelPlacement.h"

#include <QSignalSpy>
#include <QTest>

using namespace corvane;

using Screens = QList<ScreenFrames>;
Q_DECLARE_METATYPE(Screens)

namespace {

const ShortcutKeys ctrlS{{"Ctrl"}, "S"};

MenuCommand cmd(const QString& menu, const QString& title, bool enabled = true,
                ShortcutKeys keys = ShortcutKeys::none)
{
    return MenuCommand{{{menu, 0}, {title, 0}}, keys, enabled, false};
}

QStringList titles(const QList<MenuCommand>& commands)
{
    QStringList out;
    for (const MenuCommand& c : commands)
        out << c.path.last().title;
    return out;
}

} // namespace

class TestOverlayModel : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void displayOptionsFilterSectionsAndFavorites()
    {
        OverlayViewModel m;
        const MenuCommand off = cmd("Disabled", "A", false, ctrlS);
        m.setSections({{"Disabled", {off, cmd("Disabled", "B", false, ctrlS)}},
                       {"NoKeys", {cmd("NoKeys", "C"), cmd("NoKeys", "D", true, {{"Ctrl"}, ""})}},
                       {"Mixed", {cmd("Mixed", "E", true, ctrlS), cmd("Mixed", "F", false)}}});
        QCOMPARE(m.visibleSections().size(), 3);
        m.setFavoriteOrder({cmd("Mixed", "E").id(), off.id(), "gone", cmd("Mixed", "E").id()});
        // Stored order; an id listed twice shows twice; an unknown one not at all.
        QCOMPARE(titles(m.favoriteCommands()), (QStringList{"E", "A", "E"}));

        m.setShowDisabled(false);
        m.setShowNoShortcut(false); // modifiers without a key count as no shortcut
        QCOMPARE(m.visibleSections().size(), 1);
        QCOMPARE(m.visibleSections()[0].title, "Mixed");
        QCOMPARE(titles(m.allCommands()), QStringList{"E"});
        QCOMPARE(titles(m.favoriteCommands()), (QStringList{"E", "E"})); // the hidden one goes
    }

    void selectionAndExecution()
    {
        OverlayViewModel m;
        m.setSections({{"M", {cmd("M", "Copy"), cmd("M", "Cut"), cmd("M", "Clear", false)}}});
        QList<MenuCommand> ran;
        m.executeSelection(); // no callback, no search: nothing, no crash
        m.onExecute = [&ran](const MenuCommand& c) { ran.append(c); };

        m.setQuery("c");
        QCOMPARE(m.searchResults().size(), 3);
        for (const auto& [from, delta, to] :
             {std::tuple{2, 1, 2}, {0, -1, 0}, {2, -5, 0}, {0, 10, 2}}) {
            m.setSelection(from);
            m.moveSelection(delta);
            QCOMPARE(m.selection(), qint64(to));
        }
        // The keyboard runs the selection, a disabled command too.
        m.executeSelection();
        QCOMPARE(titles(ran), QStringList{"Clear"});
        m.setSelection(3); // past the results, or before them: nothing
        m.executeSelection();
        m.setSelection(-1);
        m.executeSelection();
        m.setQuery("   "); // no search active: Return runs nothing
        m.setSelection(0);
        m.executeSelection();
        QCOMPARE(ran.size(), 1);
        m.setQuery("zzz");
        m.setSelection(3);
        m.moveSelection(1); // no results: back to 0
        QCOMPARE(m.selection(), 0);
    }

    void everyAssignmentNotifiesAndNothingGoesStale()
    {
        OverlayViewModel m;
        QSignalSpy query(&m, &OverlayViewModel::queryChanged);
        QSignalSpy selection(&m, &OverlayViewModel::selectionChanged);
        QSignalSpy sections(&m, &OverlayViewModel::sectionsChanged);
        m.setQuery({});
        m.setQuery({});
        m.moveSelection(0);
        m.setSections({});
        QCOMPARE(query.size(), 2); // also an equal value: a view that reset itself hears it
        QCOMPARE(selection.size(), 1);
        QCOMPARE(sections.size(), 1);

        // The search index is rebuilt whenever what it depends on changes.
        m.setSections({{"M", {cmd("M", "Copy", false), cmd("M", "Cope", true, ctrlS)}}});
        m.setQuery("cop");
        QCOMPARE(titles(m.searchResults()), (QStringList{"Cope", "Copy"}));
        m.setShowDisabled(false);
        QCOMPARE(titles(m.searchResults()), QStringList{"Cope"});
        m.setSections({{"N", {cmd("N", "Copy")}}});
        QCOMPARE(titles(m.searchResults()), QStringList{"Copy"});
        m.setFavoriteIDs({cmd("N", "Copy").id()});
        m.setSections({{"N", {cmd("N", "Cope"), cmd("N", "Copy")}}});
        QCOMPARE(titles(m.searchResults()), (QStringList{"Copy", "Cope"}));
    }

    void listModelsFollowTheViewModel()
    {
        OverlayViewModel m;
        OverlayLists lists(&m);
        const QList<MenuSection> sections{{"File", {cmd("File", "Save", true, ctrlS)}},
                                          {"Edit", {cmd("Edit", "Undo", false)}}};
        m.setSections(sections);
        const QList<QObject*> first = lists.sections();
        QCOMPARE(first.size(), 2);
        QCOMPARE(lists.commandCount(), 2);
        // The same catalog again keeps the lists, and the cards showing them.
        QSignalSpy changed(&lists, &OverlayLists::sectionsChanged);
        m.setSections(sections);
        QCOMPARE(changed.size(), 0);
        QCOMPARE(lists.sections(), first);
        m.setShowDisabled(false);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(lists.commandCount(), 1);
        m.setShowDisabled(true);

        m.setQuery("un");
        QVERIFY(lists.searchActive());
        QCOMPARE(lists.results()->commands(), m.searchResults());
        m.setQuery({}); // the hidden list keeps its rows for the next search to rebind
        QVERIFY(!lists.searchActive());
        QCOMPARE(lists.results()->count(), 1);
        m.setFavoriteOrder({cmd("Edit", "Undo").id(), cmd("File", "Save").id()});
        QCOMPARE(lists.favorites()->count(), 2);
        QCOMPARE(lists.favorites()->data(lists.favorites()->index(0), CommandListModel::TitleRole),
                 QVariant("Undo"));
        // The history fills the Recent list and leaves the sections' rows alone.
        const auto* file = static_cast<CommandListModel*>(lists.sections().first());
        const int revision = file->revision();
        QSignalSpy history(&m, &OverlayViewModel::historyChanged);
        m.setHistory({{cmd("File", "Save").id(), 1.0}}, {cmd("File", "Save").id()});
        m.setHistory({{cmd("File", "Save").id(), 1.0}}, {cmd("File", "Save").id()}); // unchanged
        QCOMPARE(history.size(), 1);
        QCOMPARE(lists.recent()->count(), 1);
        QCOMPARE(file->revision(), revision);
        // A command without a path gives empty texts, not a crash.
        CommandListModel odd(&m, {});
        odd.setCommands({MenuCommand{}});
        for (int role : {CommandListModel::TitleRole, CommandListModel::LocationRole,
                         CommandListModel::BreadcrumbRole})
            QCOMPARE(odd.data(odd.index(0), role).toString(), QString());
    }

    void placement_data()
    {
        QTest::addColumn<Screens>("screens");
        QTest::addColumn<int>("mainScreen");
        QTest::addColumn<QPointF>("pointer");
        QTest::addColumn<QRectF>("frame"); // empty: none
        // 1440 × 900 with a 25-point panel on top; a 1000 × 700 screen to its right.
        const ScreenFrames laptop{QRectF(0, 0, 1440, 900), QRectF(0, 25, 1440, 875)};
        const ScreenFrames small{QRectF(1440, 0, 1000, 700), QRectF(1440, 0, 1000, 700)};
        const QRectF onLaptop(250, 142.5, 940, 640), onSmall(1570, 77, 740, 546);
        QTest::newRow("at most 940 × 640, centred in the visible frame")
            << Screens{laptop} << 0 << QPointF(10, 10) << onLaptop;
        QTest::newRow("74 % × 78 % of a smaller screen")
            << Screens{laptop, small} << 0 << QPointF(2000, 300) << onSmall;
        QTest::newRow("the right edge of the left screen belongs to the right one")
            << Screens{laptop, small} << 0 << QPointF(1440, 300) << onSmall;
        QTest::newRow("the last column of the left screen is the left one")
            << Screens{laptop, small} << 1 << QPointF(1439.5, 300) << onLaptop;
        QTest::newRow("pointer on no screen: the main screen")
            << Screens{laptop, small} << 1 << QPointF(5000, 5000) << onSmall;
        QTest::newRow("no main screen either: the first")
            << Screens{laptop, small} << -1 << QPointF(-10, -10) << onLaptop;
        QTest::newRow("no lower bound") << Screens{{QRectF(0, 0, 400, 300), QRectF(0, 0, 400, 300)}}
                                        << 0 << QPointF(1, 1) << QRectF(52, 33, 296, 234);
        QTest::newRow("no screens") << Screens{} << -1 << QPointF(0, 0) << QRectF();
    }

    void placement()
    {
        QFETCH(Screens, screens);
        QFETCH(int, mainScreen);
        QFETCH(QPointF, pointer);
        QFETCH(QRectF, frame);
        QCOMPARE(panelFrame(screens, mainScreen, pointer).value_or(QRectF()), frame);
    }
};

QTEST_GUILESS_MAIN(TestOverlayModel)
#include "tst_overlay_model.moc"
