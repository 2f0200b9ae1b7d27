// The overlay view model's derived lists, selection and execution, each edge case
// worth testing, and that every assignment notifies and the cached index never goes stale.

#include "overlay/OverlayLists.h"
#include "overlay/OverlayViewModel.h"
#include "shortcuts/CommandFilter.h"

#include <QSignalSpy>
#include <QTest>

using namespace corvane;

namespace {
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
const ShortcutKeys ctrlS{{"Ctrl"}, "S"};
} // namespace

class TestOverlayViewModel : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initialValues();
    void filteredSectionsDisappear();
    void modifiersWithoutKeyCountAsNoShortcut();
    void favoritesFollowStoredOrder();
    void favoriteListedTwiceAppearsTwice();
    void hiddenDisabledFavoriteDisappears();
    void moveSelectionWithoutResults();
    void moveSelectionClamps();
    void executeWithSpacesOnlyDoesNothing();
    void executeWithSelectionPastResultsDoesNothing();
    void executeWithoutCallbackDoesNothing();
    void executeDisabledCommandByKeyboard();
    void everyAssignmentNotifies();
    void derivedListsNeverStale();
    void listModelsFollowTheViewModel();
};

void TestOverlayViewModel::initialValues()
{
    OverlayViewModel m;
    QCOMPARE(m.appName(), QString());
    QCOMPARE(m.query(), QString());
    QCOMPARE(m.pinned(), false);
    QCOMPARE(m.selection(), 0);
    QCOMPARE(m.showDisabled(), true);
    QCOMPARE(m.showNoShortcut(), true);
    QCOMPARE(m.glassy(), true);
    QCOMPARE(m.triggerSymbol(), QStringLiteral("Ctrl"));
    QVERIFY(m.visibleSections().isEmpty() && m.searchResults().isEmpty() &&
            m.favoriteCommands().isEmpty());
}

void TestOverlayViewModel::filteredSectionsDisappear()
{
    OverlayViewModel m;
    m.setSections(
        {{"Disabled", {cmd("Disabled", "A", false, ctrlS), cmd("Disabled", "B", false, ctrlS)}},
         {"NoKeys", {cmd("NoKeys", "C"), cmd("NoKeys", "D")}},
         {"Mixed", {cmd("Mixed", "E", true, ctrlS), cmd("Mixed", "F", false), cmd("Mixed", "G")}}});
    m.setShowDisabled(false);
    m.setShowNoShortcut(false);
    const QList<MenuSection> visible = m.visibleSections();
    QCOMPARE(visible.size(), 1);
    QCOMPARE(visible[0].title, QStringLiteral("Mixed"));
    QCOMPARE(titles(visible[0].commands), QStringList{"E"});
    QCOMPARE(titles(m.allCommands()), QStringList{"E"});
}

void TestOverlayViewModel::modifiersWithoutKeyCountAsNoShortcut()
{
    OverlayViewModel m;
    m.setSections(
        {{"M",
          {cmd("M", "Odd", true, ShortcutKeys{{"Ctrl"}, ""}), cmd("M", "Save", true, ctrlS)}}});
    m.setShowNoShortcut(false);
    QCOMPARE(titles(m.allCommands()), QStringList{"Save"});
}

void TestOverlayViewModel::favoritesFollowStoredOrder()
{
    OverlayViewModel m;
    const MenuCommand a = cmd("M", "a"), b = cmd("M", "b");
    m.setSections({{"M", {a, b}}});
    m.setFavoriteOrder({b.id(), a.id(), "x"});
    QCOMPARE(titles(m.favoriteCommands()), (QStringList{"b", "a"}));
}

void TestOverlayViewModel::favoriteListedTwiceAppearsTwice()
{
    OverlayViewModel m;
    const MenuCommand a = cmd("M", "a");
    m.setSections({{"M", {a}}});
    m.setFavoriteOrder({a.id(), a.id()});
    QCOMPARE(titles(m.favoriteCommands()), (QStringList{"a", "a"}));
}

void TestOverlayViewModel::hiddenDisabledFavoriteDisappears()
{
    OverlayViewModel m;
    const MenuCommand off = cmd("M", "off", false);
    m.setSections({{"M", {off, cmd("M", "on")}}});
    m.setFavoriteOrder({off.id()});
    m.setFavoriteIDs({off.id()});
    QCOMPARE(titles(m.favoriteCommands()), QStringList{"off"});
    m.setShowDisabled(false);
    QVERIFY(m.favoriteCommands().isEmpty());
    QVERIFY(m.favoriteIDs().contains(off.id()));
}

void TestOverlayViewModel::moveSelectionWithoutResults()
{
    OverlayViewModel m;
    m.setSections({{"M", {cmd("M", "Copy")}}});
    m.setQuery("zzz");
    m.setSelection(3);
    m.moveSelection(1);
    QCOMPARE(m.selection(), 0);
}

void TestOverlayViewModel::moveSelectionClamps()
{
    OverlayViewModel m;
    m.setSections({{"M", {cmd("M", "Copy"), cmd("M", "Cut"), cmd("M", "Clear")}}});
    m.setQuery("c");
    QCOMPARE(m.searchResults().size(), 3);
    m.setSelection(2);
    m.moveSelection(1);
    QCOMPARE(m.selection(), 2);
    m.setSelection(0);
    m.moveSelection(-1);
    QCOMPARE(m.selection(), 0);
    m.setSelection(2);
    m.moveSelection(-5);
    QCOMPARE(m.selection(), 0);
    m.moveSelection(10);
    QCOMPARE(m.selection(), 2);
}

void TestOverlayViewModel::executeWithSpacesOnlyDoesNothing()
{
    OverlayViewModel m;
    m.setSections({{"M", {cmd("M", "Copy")}}});
    int calls = 0;
    m.onExecute = [&calls](const MenuCommand&) { ++calls; };
    m.setQuery("   ");
    m.executeSelection();
    QCOMPARE(calls, 0);
}

void TestOverlayViewModel::executeWithSelectionPastResultsDoesNothing()
{
    OverlayViewModel m;
    m.setSections({{"M", {cmd("M", "Copy"), cmd("M", "Cut")}}});
    int calls = 0;
    m.onExecute = [&calls](const MenuCommand&) { ++calls; };
    m.setQuery("c");
    m.setSelection(2); // the results shrank to two
    m.executeSelection();
    m.setSelection(-1);
    m.executeSelection();
    QCOMPARE(calls, 0);
}

void TestOverlayViewModel::executeWithoutCallbackDoesNothing()
{
    OverlayViewModel m;
    m.setSections({{"M", {cmd("M", "Copy")}}});
    m.setQuery("copy");
    m.executeSelection(); // no onExecute: nothing, no crash
    QCOMPARE(m.selection(), 0);
}

void TestOverlayViewModel::executeDisabledCommandByKeyboard()
{
    OverlayViewModel m;
    m.setSections({{"M", {cmd("M", "Print", false)}}});
    QList<MenuCommand> ran;
    m.onExecute = [&ran](const MenuCommand& c) { ran.append(c); };
    m.setQuery("print");
    m.executeSelection();
    QCOMPARE(titles(ran), QStringList{"Print"});
    QCOMPARE(ran[0].enabled, false);
}

void TestOverlayViewModel::everyAssignmentNotifies()
{
    OverlayViewModel m;
    QSignalSpy query(&m, &OverlayViewModel::queryChanged);
    QSignalSpy pinned(&m, &OverlayViewModel::pinnedChanged);
    QSignalSpy selection(&m, &OverlayViewModel::selectionChanged);
    QSignalSpy sections(&m, &OverlayViewModel::sectionsChanged);
    m.setQuery("");
    m.setQuery("");
    m.setPinned(false);
    m.setSelection(0);
    m.setSections({});
    QCOMPARE(query.size(), 2);
    QCOMPARE(pinned.size(), 1);
    QCOMPARE(selection.size(), 1);
    QCOMPARE(sections.size(), 1);
    m.moveSelection(0); // always assigned, even unchanged
    QCOMPARE(selection.size(), 2);
}

void TestOverlayViewModel::derivedListsNeverStale()
{
    OverlayViewModel m;
    m.setSections({{"M", {cmd("M", "Copy", false), cmd("M", "Cope", true, ctrlS)}}});
    m.setQuery("cop");
    QCOMPARE(titles(m.searchResults()), (QStringList{"Cope", "Copy"}));
    m.setShowDisabled(false);
    QCOMPARE(titles(m.searchResults()), QStringList{"Cope"});
    m.setSections({{"N", {cmd("N", "Copy")}}});
    QCOMPARE(titles(m.searchResults()), QStringList{"Copy"});
    m.setFavoriteIDs({cmd("N", "Copy").id()});
    m.setSections({{"N", {cmd("N", "Cope"), cmd("N", "Copy")}}});
    // Equal base scores; the favourite bonus puts Copy first.
    QCOMPARE(titles(m.searchResults()), (QStringList{"Copy", "Cope"}));
    QCOMPARE(titles(m.searchResults()),
             titles(CommandFilter::rank(m.allCommands(), m.query(), m.favoriteIDs())));
}

void TestOverlayViewModel::listModelsFollowTheViewModel()
{
    OverlayViewModel m;
    OverlayLists lists(&m);
    const QList<MenuSection> sections{{"File", {cmd("File", "Save", true, ctrlS)}},
                                      {"Edit", {cmd("Edit", "Undo", false)}}};
    m.setSections(sections);
    const QList<QObject*> first = lists.sections();
    QCOMPARE(first.size(), 2);
    QCOMPARE(lists.commandCount(), 2);

    // The same catalog again keeps the lists (and the cards showing them).
    QSignalSpy changed(&lists, &OverlayLists::sectionsChanged);
    m.setSections(sections);
    QCOMPARE(changed.size(), 0);
    QCOMPARE(lists.sections(), first);

    // A filter change makes new ones, from a fresh computation.
    m.setShowDisabled(false);
    QCOMPARE(changed.size(), 1);
    QCOMPARE(lists.sections().size(), 1);
    QCOMPARE(lists.commandCount(), 1);
    m.setShowDisabled(true);
    QCOMPARE(lists.sections().size(), 2);

    // Results only while a search is active; favourites in stored order.
    QCOMPARE(lists.results()->count(), 0);
    m.setQuery(QStringLiteral("un"));
    QVERIFY(lists.searchActive());
    QCOMPARE(lists.results()->count(), 1);
    // Cleared, the hidden list keeps the last search's rows for the next search to rebind.
    m.setQuery({});
    QVERIFY(!lists.searchActive());
    QCOMPARE(lists.results()->count(), 1);
    m.setQuery(QStringLiteral("save"));
    QCOMPARE(lists.results()->commands(), m.searchResults());
    QCOMPARE(lists.results()->count(), 1);
    m.setQuery(QStringLiteral("un"));
    m.setFavoriteOrder({cmd("Edit", "Undo").id(), cmd("File", "Save").id()});
    QCOMPARE(lists.favorites()->count(), 2);
    QCOMPARE(lists.favorites()->data(lists.favorites()->index(0), CommandListModel::TitleRole),
             QVariant(QStringLiteral("Undo")));
}

QTEST_GUILESS_MAIN(TestOverlayViewModel)
#include "tst_overlayviewmodel.moc"
