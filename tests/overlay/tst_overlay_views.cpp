// The overlay views on the real QML items of the overlay's real window (session tier):
// each "Edge cases worth testing" bullet about what the views draw and how they react.

#include "OverlayHarness.h"
#include "SessionTools.h"
#include "overlay/OverlayPanelController.h"

#include <QGuiApplication>
#include <QPalette>
#include <QQuickItem>
#include <QSignalSpy>
#include <QTest>
#include <QTranslator>

using namespace corvane;
using namespace corvane::test;

namespace {

MenuCommand command(const QStringList& titles, ShortcutKeys keys = ShortcutKeys::none,
                    bool enabled = true, bool checked = false)
{
    return MenuCommand{pathFromTitles(titles), keys, enabled, checked};
}

const QString longTitle = QStringLiteral(
    "Begin of an extraordinarily long command title that cannot fit in any card of the "
    "overlay at all, however wide the panel is made, and so it ends here");

// A catalog with one of each kind of row the edge cases name.
MenuCatalog sample()
{
    MenuCatalog catalog{QStringLiteral("org.example.Editor"), QStringLiteral("Editor"), {}};
    catalog.sections = {
        {QStringLiteral("File"),
         {command({"File", "New"}, {{"Ctrl"}, "N"}), command({"File", "Save"}, {{"Ctrl"}, "S"}),
          command({"File", "Open Recent", "notes.txt"}),
          command({"File", "Save Special"}, {{QStringLiteral("⇧"), QStringLiteral("⌘")}, "S"}),
          command({"File", longTitle})}},
        {QStringLiteral("Edit"),
         {command({"Edit", "Undo"}, {{"Ctrl"}, "Z"}, false),
          command({"Edit", "Word Wrap"}, {}, true, true), command({"Edit", "Reload"}, {{}, "F5"})}},
        {QStringLiteral("View"), {command({"View", "Zoom In"}, {{"Ctrl"}, "+"})}},
        {QStringLiteral("Window"), {command({"Window", "Minimize"}, {{"Ctrl"}, "M"})}},
    };
    return catalog;
}

// The caps a KeycapView draws, in order: its visible children with a label (hidden ones are
// kept for a reused row's next shortcut).
QList<QQuickItem*> drawnCaps(QQuickItem* view)
{
    QList<QQuickItem*> drawn;
    for (QQuickItem* cap : view->childItems())
        if (cap->property("label").isValid() && cap->isVisible())
            drawn << cap;
    return drawn;
}

QColor colorOf(QQuickItem* item)
{
    return item->property("color").value<QColor>();
}

bool sameRgba(const QColor& a, const QColor& b)
{
    return qAbs(a.redF() - b.redF()) < 0.01 && qAbs(a.greenF() - b.greenF()) < 0.01 &&
           qAbs(a.blueF() - b.blueF()) < 0.01 && qAbs(a.alphaF() - b.alphaF()) < 0.01;
}

const QColor accent = QColor::fromRgbF(1.0f, 0.69f, 0.29f);
const QColor accentDeep = QColor::fromRgbF(0.82f, 0.51f, 0.1f);
QColor withAlpha(QColor color, float alpha)
{
    color.setAlphaF(alpha);
    return color;
}
QColor primary()
{
    return QGuiApplication::palette().color(QPalette::Active, QPalette::WindowText);
}

} // namespace

class TestOverlayViews : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    // The root view
    void loadingWithoutCatalogAlsoWhileTyping();
    void allFilteredOutShowsEmptyGrid();
    void oneCommandCountLine();
    void spacesKeepGridOneLetterShowsResults();
    void favoritesCardFirstAndFullWidth();
    void gridColumnsAdaptToWidth();
    void selectionBelowViewScrollsJustEnough();
    void newQueryShowsResultsFromTheTop();
    void newQueryRebindsTheRowsInPlace();
    void hugeMenuMakesOnlyTheRowsInView();
    void unpinnedSearchFieldAsksForPin();
    void pinnedHeaderShowsBadgeLeftOfNothing();
    void pinnedBeforeTheFirstFrame();
    void footerNamesTheTrigger();
    void applicationIconAt30Points();
    // Section cards and rows
    void disabledCardRow();
    void disabledSelectedSearchRow();
    void checkMarkInCardOnly();
    void twoStepCommandHasNoBreadcrumb();
    void threeStepCommandBreadcrumbAndLocation();
    void emptyPathShowsEmptyTexts();
    void favoritesCardLooksDifferent();
    void longTitleTruncatedInTheMiddle();
    // Key caps and theme
    void singleCharacterCapsAreSquare();
    void longLabelCapIsPadded();
    void noShortcutTakesNoSpace();
    void backgroundStaysWhenNotKey();

private:
    void present(const std::optional<MenuCatalog>& catalog, const QStringList& favorites = {},
                 bool showDisabled = true, bool showNoShortcut = true);
    QQuickItem* root() { return m_controller->rootView(); }
    void resizePanel(int width, int height);
    QQuickItem* find(const QString& name);
    QQuickItem* row(const QString& kind, const QString& title); // a CommandRow or SearchRow
    QQuickItem* searchManyItems(); // "item" among Item 00 … Item 59, pinned: the results list
    void hover(QQuickItem* item);
    void click(QQuickItem* item);

    std::unique_ptr<OverlayPanelController> m_controller;
    QList<MenuCommand> m_executed, m_toggled;
    int m_pinRequests = 0;
};

void TestOverlayViews::initTestCase()
{
    QVERIFY2(qEnvironmentVariableIsSet("CORVANE_SESSION"), "run under tools/test-session.sh");
    // The English plural forms the program carries ("1 command", "0 commands").
    auto* english = new QTranslator(qApp);
    QVERIFY(english->load(QStringLiteral(":/corvane/translations/corvane_en.qm")));
    QCoreApplication::installTranslator(english);
}

void TestOverlayViews::init()
{
    m_controller = std::make_unique<OverlayPanelController>();
    m_executed.clear();
    m_toggled.clear();
    m_pinRequests = 0;
    OverlayViewModel& model = m_controller->viewModel();
    model.onExecute = [this](const MenuCommand& c) { m_executed.append(c); };
    model.onToggleFavorite = [this](const MenuCommand& c) { m_toggled.append(c); };
    model.onPinRequest = [this] { ++m_pinRequests; };
    xdotool({"mousemove", "0", "0"}); // away from the panel
}

void TestOverlayViews::cleanup()
{
    m_controller.reset();
}

void TestOverlayViews::present(const std::optional<MenuCatalog>& catalog,
                               const QStringList& favorites, bool showDisabled, bool showNoShortcut)
{
    m_controller->present(
        RunningApp{1, QStringLiteral("org.example.Editor"), QStringLiteral("Editor"), {}}, catalog,
        favorites, showDisabled, showNoShortcut, true, QStringLiteral("Ctrl"));
    QVERIFY(QTest::qWaitForWindowExposed(m_controller->panel()));
    QVERIFY(nextFrame(m_controller->panel()));
}

void TestOverlayViews::resizePanel(int width, int height)
{
    m_controller->panel()->resize(width, height);
    QTRY_COMPARE(root()->size(), QSizeF(width, height));
    QVERIFY(nextFrame(m_controller->panel()));
}

QQuickItem* TestOverlayViews::find(const QString& name)
{
    QQuickItem* found = item(root(), name);
    if (!found)
        qWarning("no item named %s", qPrintable(name));
    return found;
}

QQuickItem* TestOverlayViews::row(const QString& kind, const QString& title)
{
    for (QQuickItem* text : visibleItems(root(), QStringLiteral("title"))) {
        QQuickItem* candidate = text;
        while (candidate &&
               !QString::fromLatin1(candidate->metaObject()->className()).startsWith(kind))
            candidate = candidate->parentItem();
        if (candidate && text->property("text").toString() == title)
            return candidate;
    }
    QStringList shown;
    for (QQuickItem* text : visibleItems(root(), QStringLiteral("title")))
        shown << text->property("text").toString();
    qWarning("no %s titled \"%s\" among %s", qPrintable(kind), qPrintable(title),
             qPrintable(shown.join(u'|')));
    return nullptr;
}

QQuickItem* TestOverlayViews::searchManyItems()
{
    MenuCatalog catalog{{}, {}, {{"Many", {}}}};
    for (int i = 0; i < 60; ++i)
        catalog.sections[0].commands
            << command({"Many", QStringLiteral("Item %1").arg(i, 2, 10, QChar('0'))});
    present(catalog);
    m_controller->pin();
    m_controller->viewModel().setQuery(QStringLiteral("item"));
    return nextFrame(m_controller->panel()) ? find("searchList") : nullptr;
}

void TestOverlayViews::hover(QQuickItem* target)
{
    const QPointF centre = target->mapToGlobal(QPointF(target->width() / 2, target->height() / 2));
    xdotool(
        {"mousemove", QString::number(qRound(centre.x())), QString::number(qRound(centre.y()))});
}

void TestOverlayViews::click(QQuickItem* target)
{
    hover(target);
    xdotool({"click", "1"});
}

// --- The root view

void TestOverlayViews::loadingWithoutCatalogAlsoWhileTyping()
{
    present(std::nullopt);
    QVERIFY(shown(find("loading")));
    QVERIFY(!shown(find("searchList")));
    QVERIFY(!shown(find("sectionGrid")));

    m_controller->pin();
    m_controller->viewModel().setQuery(QStringLiteral("sa"));
    QVERIFY(nextFrame(m_controller->panel()));
    QVERIFY(shown(find("loading")));
    QVERIFY(!shown(find("searchList")));
}

void TestOverlayViews::allFilteredOutShowsEmptyGrid()
{
    MenuCatalog catalog = sample();
    for (MenuSection& section : catalog.sections)
        for (MenuCommand& c : section.commands)
            c.enabled = false;
    present(catalog, {}, /*showDisabled*/ false);
    QVERIFY(shown(find("sectionGrid")));
    QVERIFY(!shown(find("loading")));
    QVERIFY(visibleItems(root(), "sectionCard").isEmpty());
    QCOMPARE(find("countLine")->property("text").toString(), QStringLiteral("0 commands"));
}

void TestOverlayViews::oneCommandCountLine()
{
    present(MenuCatalog{{}, {}, {{"File", {command({"File", "New"})}}}});
    QCOMPARE(find("countLine")->property("text").toString(), QStringLiteral("1 command"));
    present(sample());
    QCOMPARE(find("countLine")->property("text").toString(), QStringLiteral("10 commands"));
}

void TestOverlayViews::spacesKeepGridOneLetterShowsResults()
{
    present(sample());
    m_controller->pin();
    m_controller->viewModel().setQuery(QStringLiteral("   "));
    QVERIFY(nextFrame(m_controller->panel()));
    QVERIFY(shown(find("sectionGrid")));
    QVERIFY(!shown(find("searchList")));

    m_controller->viewModel().setSelection(3);
    m_controller->viewModel().setQuery(QStringLiteral("s"));
    QVERIFY(nextFrame(m_controller->panel()));
    QVERIFY(shown(find("searchList")));
    QVERIFY(!shown(find("sectionGrid")));
    QCOMPARE(m_controller->viewModel().selection(), 0); // the root view resets it
    const QList<QQuickItem*> highlights = visibleItems(find("searchList"), "highlight");
    QVERIFY(highlights.size() > 1);
    QVERIFY(sameRgba(colorOf(highlights[0]), withAlpha(accent, 0.22f)));
    QVERIFY(sameRgba(colorOf(highlights[1]), Qt::transparent));
}

void TestOverlayViews::favoritesCardFirstAndFullWidth()
{
    const QString undo = command({"Edit", "Undo"}).id();
    const QString zoom = command({"View", "Zoom In"}).id();
    // The only favourite is disabled and hidden: no card.
    present(sample(), {undo}, /*showDisabled*/ false);
    QVERIFY(!find("favoritesCard")->isVisible());

    present(sample(), {zoom, undo});
    QQuickItem* favorites = find("favoritesCard");
    QVERIFY(favorites->isVisible());
    const QList<QQuickItem*> cards = visibleItems(root(), "sectionCard");
    QVERIFY(!cards.isEmpty());
    const QRectF fav = windowRect(favorites);
    QCOMPARE(fav.left(), 14.0);
    QCOMPARE(fav.width(), m_controller->panel()->width() - 28.0);
    for (QQuickItem* card : cards)
        QVERIFY(windowRect(card).top() >= fav.bottom() + 12 - 0.5);
}

void TestOverlayViews::gridColumnsAdaptToWidth()
{
    present(sample());
    resizePanel(940, 640);
    QList<QQuickItem*> cards = visibleItems(root(), "sectionCard");
    QCOMPARE(cards.size(), 4);
    // 940 − 2 × 14 = 912 holds three columns of 296, 12 apart.
    QList<qreal> lefts;
    for (QQuickItem* card : cards) {
        QCOMPARE(card->width(), 296.0);
        lefts << windowRect(card).left();
    }
    QCOMPARE(lefts, (QList<qreal>{14, 322, 630, 14}));
    QCOMPARE(windowRect(cards[3]).top() > windowRect(cards[0]).bottom(), true);

    // An area narrower than 592 (here 591) holds one column.
    resizePanel(591 + 28, 640);
    cards = visibleItems(root(), "sectionCard");
    QVERIFY(!cards.isEmpty());
    for (QQuickItem* card : cards) {
        QCOMPARE(windowRect(card).left(), 14.0);
        QCOMPARE(card->width(), 460.0); // at most 460
    }
    resizePanel(592 + 28, 640);
    cards = visibleItems(root(), "sectionCard");
    QCOMPARE(windowRect(cards[1]).left(), 14.0 + 290 + 12);
}

void TestOverlayViews::selectionBelowViewScrollsJustEnough()
{
    QQuickItem* list = searchManyItems();
    QVERIFY(list);
    const qreal startY = list->property("contentY").toReal();

    // The last row that shows whole, then the one below it.
    int lastVisible = 0;
    for (QQuickItem* r : visibleItems(find("searchList"), "highlight")) {
        const QRectF rect = windowRect(r);
        if (rect.bottom() <= windowRect(list).bottom())
            ++lastVisible;
    }
    QVERIFY(lastVisible > 3 && lastVisible < 60);
    m_controller->viewModel().setSelection(lastVisible); // the first row not fully shown
    QVERIFY(nextFrame(m_controller->panel()));
    QVERIFY(list->property("contentY").toReal() > startY);
    QQuickItem* selected =
        row("SearchRow", QStringLiteral("Item %1").arg(lastVisible, 2, 10, QChar('0')));
    QVERIFY(selected);
    const QRectF shown = windowRect(selected);
    const QRectF view = windowRect(list);
    QVERIFY(shown.top() >= view.top());
    // Just enough: the row sits at the bottom edge, not scrolled to the top.
    QVERIFY2(qAbs(shown.bottom() - view.bottom()) <= 1.0,
             qPrintable(QStringLiteral("row bottom %1, view bottom %2")
                            .arg(shown.bottom())
                            .arg(view.bottom())));
}

void TestOverlayViews::newQueryShowsResultsFromTheTop()
{
    QQuickItem* list = searchManyItems();
    QVERIFY(list);
    const qreal top = list->property("contentY").toReal();
    m_controller->viewModel().setSelection(59);
    QVERIFY(nextFrame(m_controller->panel()));
    QVERIFY(list->property("contentY").toReal() > top);

    // The rows change in place; the list still starts again at its top, margin included.
    m_controller->viewModel().setQuery(QStringLiteral("item 1"));
    QVERIFY(nextFrame(m_controller->panel()));
    QCOMPARE(m_controller->viewModel().selection(), 0);
    QCOMPARE(list->property("contentY").toReal(), top);
    QQuickItem* first = row("SearchRow", QStringLiteral("Item 10"));
    QVERIFY(first);
    QCOMPARE(windowRect(first).top(), windowRect(list).top() + 12);
}

void TestOverlayViews::newQueryRebindsTheRowsInPlace()
{
    const MenuCatalog catalog = sample();
    QHash<QString, QStringList> capsOf; // title → the caps its shortcut draws
    for (const MenuSection& section : catalog.sections)
        for (const MenuCommand& c : section.commands)
            if (!c.shortcut.key.isEmpty())
                capsOf[c.path.last().title] = c.shortcut.modifiers + QStringList{c.shortcut.key};
    present(catalog);
    m_controller->pin();
    QSet<QQuickItem*> everMade;
    // Each query re-ranks the results: rows of 3, 2, 1 and no caps trade places.
    for (const QString query : {"s", "e", "re", "sa", "o", "s"}) {
        m_controller->viewModel().setQuery(query);
        QVERIFY(nextFrame(m_controller->panel()));
        // The rows in the list; a row given back to the pool for reuse has index -1.
        QList<QQuickItem*> rows;
        for (QQuickItem* title : visibleItems(find("searchList"), "title")) {
            QQuickItem* searchRow = title;
            while (
                !QString::fromLatin1(searchRow->metaObject()->className()).startsWith("SearchRow"))
                searchRow = searchRow->parentItem();
            if (searchRow->property("index").toInt() >= 0)
                rows << searchRow;
        }
        QCOMPARE(rows.size(), m_controller->viewModel().searchResults().size());
        for (QQuickItem* searchRow : std::as_const(rows)) {
            QStringList drawn;
            for (QQuickItem* cap : drawnCaps(item(searchRow, "keycaps")))
                drawn << cap->property("label").toString();
            const QString text = item(searchRow, "title")->property("text").toString();
            QCOMPARE(drawn, capsOf.value(text));
            QCOMPARE(item(searchRow, "keycaps")->isVisible(), capsOf.contains(text));
        }
        // A row is made only when more are shown than were ever made: the others are the
        // earlier ones, rebound.
        qsizetype made = 0;
        for (QQuickItem* shown : std::as_const(rows))
            made += everMade.contains(shown) ? 0 : 1;
        QCOMPARE(made, std::max<qsizetype>(0, rows.size() - everMade.size()));
        for (QQuickItem* shown : std::as_const(rows))
            everMade.insert(shown);
    }
}

void TestOverlayViews::hugeMenuMakesOnlyTheRowsInView()
{
    MenuCatalog catalog{{}, {}, {{"Huge", {}}}};
    for (int i = 0; i < 2500; ++i)
        catalog.sections[0].commands
            << command({"Huge", QStringLiteral("Row %1").arg(i)},
                       i % 3 ? ShortcutKeys{{"Ctrl"}, "K"} : ShortcutKeys::none);
    present(catalog);
    QQuickItem* card = visibleItems(root(), "sectionCard").value(0);
    QVERIFY(card);
    const QList<QQuickItem*> made = visibleItems(card, "title");
    QVERIFY2(made.size() < 40, qPrintable(QString::number(made.size())));
    QCOMPARE(made.first()->property("text").toString(), QStringLiteral("Row 0"));
    QVERIFY(card->height() > 2500 * 26);

    // Scrolled to the end, the last rows are made, each where the layout puts it.
    QQuickItem* grid = find("sectionGrid");
    grid->setProperty("contentY", grid->property("contentHeight").toReal() - grid->height());
    QVERIFY(nextFrame(m_controller->panel()));
    QQuickItem* last = row("CommandRow", QStringLiteral("Row 2499"));
    QVERIFY(last);
    QVERIFY(windowRect(last).bottom() <= windowRect(grid).bottom());
    QVERIFY(windowRect(last).top() >= windowRect(grid).top());
    QQuickItem* before = row("CommandRow", QStringLiteral("Row 2498"));
    QVERIFY(before);
    QCOMPARE(windowRect(last).top(), windowRect(before).bottom() + 3);
    QVERIFY(visibleItems(card, "title").size() < 40);
}

void TestOverlayViews::unpinnedSearchFieldAsksForPin()
{
    present(sample());
    QQuickItem* text = find("searchText");
    QVERIFY(!text->isEnabled());
    QVERIFY(!find("statePill")->isVisible());
    click(find("searchField"));
    QTRY_COMPARE(m_pinRequests, 1);
    QCOMPARE(m_controller->viewModel().pinned(), false); // only the request; the shell pins

    m_controller->pin();
    QVERIFY(nextFrame(m_controller->panel()));
    QVERIFY(text->isEnabled());
    QTRY_VERIFY(text->hasActiveFocus());
    click(find("searchField"));
    QTest::qWait(100);
    QCOMPARE(m_pinRequests, 1); // pinned: the click does nothing more
}

void TestOverlayViews::pinnedHeaderShowsBadgeLeftOfNothing()
{
    present(sample());
    m_controller->pin();
    QVERIFY(nextFrame(m_controller->panel()));
    QQuickItem* pill = find("statePill");
    QVERIFY(pill->isVisible());
    const QRectF field = windowRect(find("searchField"));
    const QRectF badge = windowRect(pill);
    // The badge follows the search field, 10 apart, and ends at the header's padding of 16.
    QCOMPARE(badge.left(), field.right() + 10);
    QCOMPARE(badge.right(), m_controller->panel()->width() - 16.0);
    QVERIFY(badge.left() > windowRect(find("appName")).right());
}

void TestOverlayViews::pinnedBeforeTheFirstFrame()
{
    // The pin may come before the panel has drawn anything: the header is laid out the same.
    m_controller->present(RunningApp{1, {}, QStringLiteral("Editor"), {}}, sample(), {}, true, true,
                          true, QStringLiteral("Ctrl"));
    m_controller->pin();
    QVERIFY(QTest::qWaitForWindowExposed(m_controller->panel()));
    QVERIFY(nextFrame(m_controller->panel()));
    const QRectF field = windowRect(find("searchField"));
    const QRectF badge = windowRect(find("statePill"));
    QCOMPARE(badge.left(), field.right() + 10);
    QCOMPARE(badge.right(), m_controller->panel()->width() - 16.0);
}

void TestOverlayViews::applicationIconAt30Points()
{
    present(sample());
    QVERIFY(!find("appIcon")->isVisible()); // no icon: nothing, and no space
    QCOMPARE(windowRect(find("appName")).left(), 16.0);

    // An icon from the freedesktop theme (geany is installed for the session tests).
    m_controller->present(RunningApp{1, {}, QStringLiteral("Geany"), QStringLiteral("geany")},
                          sample(), {}, true, true, true, QStringLiteral("Ctrl"));
    QVERIFY(nextFrame(m_controller->panel()));
    QQuickItem* icon = find("appIcon");
    QTRY_VERIFY(icon->isVisible());
    QCOMPARE(icon->size(), QSizeF(30, 30));
    QCOMPARE(windowRect(find("appName")).left(), 16.0 + 30 + 10);
}

void TestOverlayViews::footerNamesTheTrigger()
{
    m_controller->present(RunningApp{1, {}, QStringLiteral("Editor"), {}}, sample(), {}, true, true,
                          true, QStringLiteral("Super"));
    QVERIFY(QTest::qWaitForWindowExposed(m_controller->panel()));
    QCOMPARE(find("footerNote")->property("text").toString(),
             QStringLiteral("Release Super over this panel to keep it open"));
    QVERIFY(find("clickHint")->isVisible());
    m_controller->pin();
    QVERIFY(nextFrame(m_controller->panel()));
    QCOMPARE(find("footerNote")->property("text").toString(),
             QStringLiteral("Hover a command and click ★ to favorite it"));
    QVERIFY(!find("clickHint")->isVisible());
}

// --- Section cards and rows

void TestOverlayViews::disabledCardRow()
{
    present(sample());
    QQuickItem* undo = row("CommandRow", "Undo");
    QVERIFY(undo);
    QCOMPARE(undo->opacity(), 0.4);
    QQuickItem* star = item(undo, "star");
    QVERIFY(!star->isVisible());
    hover(undo);
    QTRY_VERIFY(star->isVisible()); // the outline star shows on hover
    QVERIFY(sameRgba(colorOf(item(undo, "highlight")), Qt::transparent)); // no highlight
    xdotool({"click", "1"});
    QTest::qWait(100);
    QVERIFY(m_executed.isEmpty()); // a click on a disabled row does nothing
    click(star);
    QTRY_COMPARE(m_toggled.size(), 1);
    QCOMPARE(m_toggled[0].id(), command({"Edit", "Undo"}).id());
    QVERIFY(m_executed.isEmpty());

    QQuickItem* save = row("CommandRow", "Save");
    QVERIFY(save);
    hover(save);
    QTRY_VERIFY(sameRgba(colorOf(item(save, "highlight")), withAlpha(accent, 0.14f)));
    QCOMPARE(save->opacity(), 1.0);
    xdotool({"click", "1"});
    QTRY_COMPARE(m_executed.size(), 1);
    QCOMPARE(m_executed[0].id(), command({"File", "Save"}).id());
}

void TestOverlayViews::disabledSelectedSearchRow()
{
    present(sample());
    m_controller->pin();
    m_controller->viewModel().setQuery(QStringLiteral("undo"));
    QVERIFY(nextFrame(m_controller->panel()));
    QQuickItem* undo = row("SearchRow", "Undo");
    QVERIFY(undo);
    QCOMPARE(undo->opacity(), 0.4);
    QVERIFY(sameRgba(colorOf(item(undo, "highlight")), withAlpha(accent, 0.22f)));
    click(undo);
    QTest::qWait(100);
    QVERIFY(m_executed.isEmpty());
    m_controller->viewModel().executeSelection(); // what Return does
    QCOMPARE(m_executed.size(), 1);
}

void TestOverlayViews::checkMarkInCardOnly()
{
    present(sample());
    QQuickItem* wrap = row("CommandRow", "Word Wrap");
    QVERIFY(item(wrap, "checkmark")->isVisible());
    QVERIFY(!item(row("CommandRow", "New"), "checkmark")->isVisible());
    m_controller->pin();
    m_controller->viewModel().setQuery(QStringLiteral("word wrap"));
    QVERIFY(nextFrame(m_controller->panel()));
    QQuickItem* result = row("SearchRow", "Word Wrap");
    QVERIFY(result);
    QVERIFY(visibleItems(result, "checkmark").isEmpty());
}

void TestOverlayViews::twoStepCommandHasNoBreadcrumb()
{
    present(sample());
    QQuickItem* save = row("CommandRow", "Save");
    QVERIFY(!item(save, "breadcrumb")->isVisible());
    // One line: the taller of the title and the caps, padded 4 above and below, at least 26.
    const qreal line = qMax(item(save, "title")->height(), item(save, "keycaps")->height());
    QCOMPARE(save->height(), qMax(26.0, line + 8));
    m_controller->pin();
    m_controller->viewModel().setQuery(QStringLiteral("save"));
    QVERIFY(nextFrame(m_controller->panel()));
    QCOMPARE(item(row("SearchRow", "Save"), "location")->property("text").toString(),
             QStringLiteral("File"));
}

void TestOverlayViews::threeStepCommandBreadcrumbAndLocation()
{
    present(sample());
    QQuickItem* notes = row("CommandRow", "notes.txt");
    QQuickItem* breadcrumb = item(notes, "breadcrumb");
    QVERIFY(breadcrumb->isVisible());
    QCOMPARE(breadcrumb->property("text").toString(), QStringLiteral("Open Recent"));
    QVERIFY(notes->height() > 26.0);
    m_controller->pin();
    m_controller->viewModel().setQuery(QStringLiteral("notes"));
    QVERIFY(nextFrame(m_controller->panel()));
    QCOMPARE(item(row("SearchRow", "notes.txt"), "location")->property("text").toString(),
             QStringLiteral("File ▸ Open Recent"));
}

void TestOverlayViews::emptyPathShowsEmptyTexts()
{
    OverlayViewModel model;
    CommandListModel list(&model, {});
    list.setCommands({MenuCommand{}});
    const QModelIndex index = list.index(0);
    QCOMPARE(list.data(index, CommandListModel::TitleRole).toString(), QString());
    QCOMPARE(list.data(index, CommandListModel::LocationRole).toString(), QString());
    QCOMPARE(list.data(index, CommandListModel::BreadcrumbRole).toString(), QString());

    // Drawn: a card row with an empty title.
    present(MenuCatalog{{}, {}, {{"Odd", {MenuCommand{}}}}});
    QQuickItem* title = item(root(), "title");
    QVERIFY(title && title->isVisible());
    QCOMPARE(title->property("text").toString(), QString());
}

void TestOverlayViews::favoritesCardLooksDifferent()
{
    present(sample(), {command({"File", "New"}).id()});
    QQuickItem* favorites = find("favoritesCard");
    QQuickItem* other = visibleItems(root(), "sectionCard").first();
    const auto outline = [](QQuickItem* card) {
        return card->childItems()
            .first()
            ->property("border")
            .value<QObject*>()
            ->property("color")
            .value<QColor>();
    };
    QVERIFY(sameRgba(outline(favorites), withAlpha(accent, 0.4f)));
    QVERIFY(sameRgba(outline(other), withAlpha(primary(), 0.08f)));
    QCOMPARE(item(favorites, "headingText")->property("text").toString(),
             QStringLiteral("FAVORITES"));
    QVERIFY(
        sameRgba(item(favorites, "headingText")->property("color").value<QColor>(), accentDeep));
    QVERIFY(item(favorites, "headingStar")->isVisible());
    QCOMPARE(item(other, "headingText")->property("text").toString(), QStringLiteral("FILE"));
    QVERIFY(sameRgba(item(other, "headingText")->property("color").value<QColor>(),
                     withAlpha(primary(), 0.6f)));
    QVERIFY(!item(other, "headingStar")->isVisible());
}

void TestOverlayViews::longTitleTruncatedInTheMiddle()
{
    present(sample());
    QQuickItem* title = item(row("CommandRow", longTitle), "title");
    QVERIFY(title);
    QCOMPARE(title->property("elide").toInt(), int(Qt::ElideMiddle));
    QVERIFY(title->property("truncated").toBool());
    QVERIFY(title->width() < title->implicitWidth());
}

// --- Key caps and theme

void TestOverlayViews::singleCharacterCapsAreSquare()
{
    present(sample());
    QQuickItem* caps = item(row("CommandRow", "Save Special"), "keycaps");
    const QList<QQuickItem*> drawn = drawnCaps(caps);
    QCOMPARE(drawn.size(), 3);
    QStringList labels;
    for (QQuickItem* cap : drawn) {
        labels << cap->property("label").toString();
        QCOMPARE(cap->size(), QSizeF(20, 20));
    }
    QCOMPARE(labels, (QStringList{"⇧", "⌘", "S"}));
    QCOMPARE(windowRect(drawn[1]).left(), windowRect(drawn[0]).right() + 3);
}

void TestOverlayViews::longLabelCapIsPadded()
{
    present(sample());
    QQuickItem* caps = item(row("CommandRow", "Reload"), "keycaps");
    const QList<QQuickItem*> drawn = drawnCaps(caps);
    QCOMPARE(drawn.size(), 1);
    QQuickItem* label = drawn[0]->childItems().last();
    QCOMPARE(drawn[0]->width(), label->implicitWidth() + 10);
    QVERIFY(drawn[0]->width() > 20);
}

void TestOverlayViews::noShortcutTakesNoSpace()
{
    present(sample());
    QQuickItem* notes = row("CommandRow", "notes.txt");
    QVERIFY(!item(notes, "keycaps")->isVisible());
    // The text column reaches the row's right padding: nothing stands beside it.
    const QRectF title = windowRect(item(notes, "title"));
    // Padding 10, the spacer of 4 and the stack's spacing of 8 before it.
    QCOMPARE(title.right(), windowRect(notes).right() - 10 - 4 - 8);
}

void TestOverlayViews::backgroundStaysWhenNotKey()
{
    present(sample());
    const QColor unpinned = colorOf(find("background"));
    m_controller->pin();
    QVERIFY(nextFrame(m_controller->panel()));
    QCOMPARE(colorOf(find("background")), unpinned);
    QSignalSpy hidden(m_controller.get(), &OverlayPanelController::hidden);
    m_controller->dismiss();
    QVERIFY(hidden.wait(2000));
    m_controller->setTranslucent(true); // a compositor started: a translucent panel
    present(sample());
    const QColor glass = colorOf(find("background"));
    QCOMPARE(glass.alphaF(), 0.82f);
    m_controller->pin();
    QVERIFY(nextFrame(m_controller->panel()));
    QCOMPARE(colorOf(find("background")), glass);
}

QTEST_MAIN(TestOverlayViews)
#include "tst_overlay_views.moc"
