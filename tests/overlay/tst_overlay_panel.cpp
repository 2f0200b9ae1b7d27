// The overlay panel on X11 (session tier): the real panel under Xvfb and openbox, placed on the
// real screen, faded, pinned by taking the keyboard while a real application (mousepad) stays the
// active window, and driven by real keys typed through XTEST.

#include "OverlayHarness.h"
#include "SessionTools.h"
#include "overlay/OverlayPanelController.h"

#include <QColor>
#include <QGuiApplication>
#include <QImage>
#include <QPointer>
#include <QProcess>
#include <QQuickItem>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <algorithm>

using namespace corvane;
using namespace corvane::test;

namespace {

MenuCommand command(const QString& menu, const QString& title)
{
    return MenuCommand{{{menu, 0}, {title, 0}}, {}, true, false};
}

MenuCatalog sample()
{
    return MenuCatalog{QStringLiteral("org.example.Editor"),
                       QStringLiteral("Editor"),
                       {{"File",
                         {command("File", "Save"), command("File", "Save As…"),
                          command("File", "Save All"), command("File", "Close")}},
                        {"Edit", {command("Edit", "Undo"), command("Edit", "Select All")}}}};
}

// Records the keys that reach an item, without taking them.
class KeyProbe : public QObject {
public:
    QList<int> keys;
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress)
            keys << static_cast<QKeyEvent*>(event)->key();
        return false;
    }
};

QString windowName(qint64 pid)
{
    const QString window = xdotool({"search", "--all", "--onlyvisible", "--pid",
                                    QString::number(pid), "--name", "Mousepad"},
                                   false)
                               .section(u'\n', 0, 0);
    return window.isEmpty() ? QString() : xdotool({"getwindowname", window}, false);
}

} // namespace

class TestOverlayPanel : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void placedByTheSizeRule();
    void panelIsAToolWindowAboveOthers();
    void cornersShowTheWindowBehindWithoutACompositor();
    void opaqueWithoutACompositorFadesFromTheEmptyCard();
    void translucentWindowWhereACompositorDrawsIt();
    void compositorChangeMakesTheHiddenPanelAgain();
    void createdOnceAndReused();
    void fadesInAndOut();
    void fadeInStartsWithTheFirstFrameOnScreen();
    void dismissThenPresentWithinTheFadeStaysVisible();
    void dismissWhenHiddenRunsNoAnimation();
    void unpinnedKeysGoToTheApplication();
    void pinnedKeysReachThePanelWhileTheApplicationStaysActive();
    void pinnedBeforeItIsMappedLeavesTheApplicationActive();
    void stageLaysOutTheHiddenPanelAhead();
    void returnWithoutSearchIsPassedOn();
    void escapeIsConsumedWithoutCloseCallback();
    void arrowsWithEmptyQueryStayBounded();
    void secondPinInstallsNoSecondMonitor();
    void updateKeepsOrResetsSelection();

private:
    void present(const std::optional<MenuCatalog>& catalog = sample());
    void pinAndWaitForKeyboard();
    void type(const QString& text);
    void key(const QString& name);

    Programs* m_programs = nullptr;
    qint64 m_mousepad = 0;
    std::unique_ptr<OverlayPanelController> m_controller;
    QList<MenuCommand> m_executed;
    int m_closeRequests = 0;
    KeyProbe m_probe;
};

void TestOverlayPanel::initTestCase()
{
    QVERIFY2(qEnvironmentVariableIsSet("CORVANE_SESSION"), "run under tools/test-session.sh");
    m_programs = new Programs(this);
    m_mousepad = m_programs->startWithWindow(QStringLiteral("mousepad"), {"--disable-server"},
                                             QStringLiteral("Mousepad"));
}

void TestOverlayPanel::init()
{
    m_controller = std::make_unique<OverlayPanelController>();
    m_executed.clear();
    m_closeRequests = 0;
    m_probe.keys.clear();
    OverlayViewModel& model = m_controller->viewModel();
    model.onExecute = [this](const MenuCommand& c) { m_executed << c; };
    model.onCloseRequest = [this] { ++m_closeRequests; };
    // The application in front, as the user would have it.
    QVERIFY(activateWindowOf(m_mousepad, QStringLiteral("Mousepad")));
}

void TestOverlayPanel::cleanup()
{
    m_controller.reset();
    QTRY_COMPARE(activeWindowPid(), m_mousepad);
}

void TestOverlayPanel::present(const std::optional<MenuCatalog>& catalog)
{
    m_controller->present(RunningApp{m_mousepad, {}, QStringLiteral("Editor"), {}}, catalog, {},
                          true, true, true, QStringLiteral("Ctrl"));
    QVERIFY(QTest::qWaitForWindowExposed(m_controller->panel()));
    QVERIFY(nextFrame(m_controller->panel()));
    item(m_controller->rootView(), "searchText")->installEventFilter(&m_probe);
}

void TestOverlayPanel::pinAndWaitForKeyboard()
{
    m_controller->pin();
    QTRY_VERIFY(m_controller->panel()->hasKeyboard());
    QTRY_VERIFY(item(m_controller->rootView(), "searchText")->hasActiveFocus());
}

void TestOverlayPanel::type(const QString& text)
{
    xdotool({"type", "--delay", "20", text});
    QTest::qWait(50); // the X events reach us through the event loop
}

void TestOverlayPanel::key(const QString& name)
{
    xdotool({"key", name});
    QTest::qWait(50);
}

void TestOverlayPanel::placedByTheSizeRule()
{
    // Run on a 1440 × 900 screen and on a 1000 × 700 one (two CTest entries); openbox has no
    // panels, so the visible frame is the whole screen.
    const QRect visible = QGuiApplication::primaryScreen()->availableGeometry();
    const QHash<QSize, QRect> expected{{QSize(1440, 900), QRect(250, 130, 940, 640)},
                                       {QSize(1000, 700), QRect(130, 77, 740, 546)}};
    QVERIFY2(expected.contains(visible.size()),
             qPrintable(QStringLiteral("no expectation for a screen of %1 × %2")
                            .arg(visible.width())
                            .arg(visible.height())));
    present();
    QCOMPARE(m_controller->panel()->geometry(), expected[visible.size()]);
    // And where the X server has it.
    const QString window = QString::number(m_controller->panel()->winId());
    const QString geometry = xdotool({"getwindowgeometry", window});
    const QRect want = expected[visible.size()];
    QVERIFY2(geometry.contains(QStringLiteral("Position: %1,%2").arg(want.x()).arg(want.y())) &&
                 geometry.contains(
                     QStringLiteral("Geometry: %1x%2").arg(want.width()).arg(want.height())),
             qPrintable(geometry));
}

void TestOverlayPanel::panelIsAToolWindowAboveOthers()
{
    present();
    QProcess xprop;
    xprop.start(QStringLiteral("xprop"),
                {"-id", QString::number(m_controller->panel()->winId()), "_NET_WM_STATE",
                 "_NET_WM_WINDOW_TYPE", "WM_HINTS", "_NET_WM_USER_TIME"});
    QVERIFY(xprop.waitForFinished(5000));
    const QString props = QString::fromUtf8(xprop.readAllStandardOutput());
    QVERIFY2(props.contains(QStringLiteral("_NET_WM_STATE_ABOVE")), qPrintable(props));
    QVERIFY2(props.contains(QStringLiteral("_NET_WM_WINDOW_TYPE_UTILITY")), qPrintable(props));
    QVERIFY2(props.contains(QStringLiteral("Client accepts input or input focus: False")),
             qPrintable(props));
    // Mapped with "do not activate" (a user time of 0), whatever our last X event was.
    QVERIFY2(props.contains(QStringLiteral("_NET_WM_USER_TIME(CARDINAL) = 0")), qPrintable(props));
    // Shown without taking activation.
    QTest::qWait(200);
    QCOMPARE(activeWindowPid(), m_mousepad);
}

void TestOverlayPanel::cornersShowTheWindowBehindWithoutACompositor()
{
    // Xvfb has no compositor, so the panel is not translucent: the window behind (mousepad,
    // filling the screen) shows through the card's rounded corners, not black.
    QCOMPARE(
        QProcess::execute(QStringLiteral("xdotool"),
                          {"search", "--onlyvisible", "--pid", QString::number(m_mousepad), ".",
                           "windowmove", "%@", "0", "0", "windowsize", "%@", "100%", "100%"}),
        0);
    QTest::qWait(300);
    const QImage behind = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    present();
    QTest::qWait(300); // the fade-in
    const QImage shown = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    const QRect frame = m_controller->panel()->geometry();
    const QList<QPoint> corners{frame.topLeft() + QPoint(1, 1), frame.topRight() + QPoint(-1, 1),
                                frame.bottomLeft() + QPoint(1, -1),
                                frame.bottomRight() + QPoint(-1, -1)};
    for (const QPoint& corner : corners) {
        QVERIFY2(behind.pixelColor(corner) != QColor(Qt::black), "mousepad does not cover it");
        QCOMPARE(shown.pixelColor(corner), behind.pixelColor(corner));
    }
    // The card itself is drawn: its middle is not what was behind.
    QVERIFY(shown.pixelColor(frame.center()) != behind.pixelColor(frame.center()) ||
            shown.pixelColor(frame.center() + QPoint(0, 40)) !=
                behind.pixelColor(frame.center() + QPoint(0, 40)));
}

void TestOverlayPanel::opaqueWithoutACompositorFadesFromTheEmptyCard()
{
    present();
    PeekPanel* panel = m_controller->panel();
    QVERIFY(!panel->isTranslucent());
    QVERIFY(!panel->format().hasAlpha());
    QCOMPARE(windowDepth(QString::number(panel->winId())), 24);
    QTRY_COMPARE(m_controller->rootView()->opacity(), 1.0);
    // A frame at alpha 0, as the fade's first and last are: the card's empty colour shows,
    // not black (an ARGB window that nothing composites shows black there).
    const QColor card =
        item(m_controller->rootView(), "background")->property("color").value<QColor>();
    QCOMPARE(card.alpha(), 255);
    m_controller->rootView()->setOpacity(0);
    QVERIFY(nextFrame(panel));
    QTest::qWait(50); // the X server has the frame's image
    const QRect frame = panel->geometry();
    const QImage screen = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    for (const QPoint& point :
         {frame.center(), frame.topLeft() + QPoint(40, 40), frame.bottomRight() - QPoint(40, 40)})
        QCOMPARE(screen.pixelColor(point), card);
}

void TestOverlayPanel::translucentWindowWhereACompositorDrawsIt()
{
    QSignalSpy created(m_controller.get(), &OverlayPanelController::panelCreated);
    m_controller->setTranslucent(true);
    QCOMPARE(created.size(), 0); // nothing made yet
    present();
    PeekPanel* panel = m_controller->panel();
    QCOMPARE(created.size(), 1);
    QCOMPARE(created.at(0).at(0).value<PeekPanel*>(), panel);
    QVERIFY(panel->isTranslucent());
    QVERIFY(panel->format().hasAlpha());
    QCOMPARE(windowDepth(QString::number(panel->winId())), 32);
    QVERIFY(m_controller->rootView()->property("translucent").toBool());
    QVERIFY(panel->mask().isEmpty()); // its corners are transparent: no shape cut
}

void TestOverlayPanel::compositorChangeMakesTheHiddenPanelAgain()
{
    QSignalSpy created(m_controller.get(), &OverlayPanelController::panelCreated);
    present();
    QPointer<PeekPanel> opaque = m_controller->panel();
    QVERIFY(!opaque->mask().isEmpty()); // cut to the card
    // While it shows, the panel stays what it is.
    m_controller->setTranslucent(true);
    QCOMPARE(m_controller->panel(), opaque.data());
    QVERIFY(!m_controller->rootView()->property("translucent").toBool());
    QSignalSpy hidden(m_controller.get(), &OverlayPanelController::hidden);
    m_controller->dismiss();
    QVERIFY(hidden.wait(2000));
    // Hidden: made again, with an alpha channel, its view and lists working as before.
    m_controller->setTranslucent(true);
    QVERIFY(!opaque); // the old window is gone
    QCOMPARE(created.size(), 2);
    MenuCatalog catalog = sample();
    present(catalog);
    PeekPanel* glass = m_controller->panel();
    QCOMPARE(windowDepth(QString::number(glass->winId())), 32);
    QVERIFY(m_controller->rootView()->property("translucent").toBool());
    pinAndWaitForKeyboard();
    type(QStringLiteral("save"));
    QTRY_VERIFY(m_controller->viewModel().query() == QStringLiteral("save"));
    // And back: opaque again once hidden.
    m_controller->dismiss();
    QVERIFY(hidden.wait(2000));
    m_controller->setTranslucent(false);
    QCOMPARE(created.size(), 3);
    present(catalog);
    QCOMPARE(windowDepth(QString::number(m_controller->panel()->winId())), 24);
    QVERIFY(!m_controller->panel()->mask().isEmpty());
}

void TestOverlayPanel::createdOnceAndReused()
{
    QVERIFY(!m_controller->panel());
    MenuCatalog tall = sample();
    for (int i = 0; i < 200; ++i)
        tall.sections[0].commands << command("File", QStringLiteral("Recent %1").arg(i));
    present(tall);
    PeekPanel* first = m_controller->panel();
    pinAndWaitForKeyboard();
    QQuickItem* grid = item(m_controller->rootView(), "sectionGrid");
    const qreal top = grid->property("contentY").toReal();
    grid->setProperty("contentY", top + 2000);
    m_controller->dismiss();
    present(tall);
    QCOMPARE(m_controller->panel(), first);
    // Every presentation starts with fresh view state: no search focus, scrolled to the top.
    QVERIFY(!item(m_controller->rootView(), "searchText")->hasActiveFocus());
    QCOMPARE(m_controller->rootView()->property("searchFocused").toBool(), false);
    QCOMPARE(grid->property("contentY").toReal(), top);
}

void TestOverlayPanel::fadesInAndOut()
{
    present();
    QQuickItem* root = m_controller->rootView();
    QVERIFY(root->opacity() < 1.0); // still fading in
    QTRY_COMPARE(root->opacity(), 1.0);
    QSignalSpy hidden(m_controller.get(), &OverlayPanelController::hidden);
    m_controller->dismiss();
    QVERIFY(m_controller->panel()->isVisible()); // fading out
    QVERIFY(hidden.wait(2000));
    QCOMPARE(root->opacity(), 0.0);
    QVERIFY(!m_controller->panel()->isVisible());
}

void TestOverlayPanel::fadeInStartsWithTheFirstFrameOnScreen()
{
    m_controller->prepare();
    QList<qreal> opacityAtFrames;
    QObject context; // disconnects when the test ends
    connect(m_controller->panel(), &QQuickWindow::frameSwapped, &context,
            [&] { opacityAtFrames << m_controller->rootView()->opacity(); });
    m_controller->present(RunningApp{m_mousepad, {}, QStringLiteral("Editor"), {}}, sample(), {},
                          true, true, true, QStringLiteral("Ctrl"));
    // Not mapped yet: the fade waits (it would otherwise run partly before anything shows).
    QCOMPARE(m_controller->rootView()->opacity(), 0.0);
    QTRY_COMPARE(m_controller->rootView()->opacity(), 1.0);
    // The first frame on screen is drawn at alpha 0, then the fade's frames, none less opaque
    // than the one before.
    QVERIFY2(opacityAtFrames.size() >= 3, qPrintable(QDebug::toString(opacityAtFrames)));
    QCOMPARE(opacityAtFrames.first(), 0.0);
    QVERIFY(std::any_of(opacityAtFrames.cbegin(), opacityAtFrames.cend(),
                        [](qreal opacity) { return opacity > 0.0 && opacity < 1.0; }));
    QVERIFY(std::is_sorted(opacityAtFrames.cbegin(), opacityAtFrames.cend()));
}

void TestOverlayPanel::dismissThenPresentWithinTheFadeStaysVisible()
{
    present();
    m_controller->dismiss();
    const qint64 afterDismiss = m_controller->fadeGeneration();
    present(); // within the 0.12 s fade
    QVERIFY(m_controller->fadeGeneration() > afterDismiss);
    QTest::qWait(400);
    QVERIFY(m_controller->panel()->isVisible());
    QCOMPARE(m_controller->rootView()->opacity(), 1.0);
}

void TestOverlayPanel::dismissWhenHiddenRunsNoAnimation()
{
    present();
    QSignalSpy hidden(m_controller.get(), &OverlayPanelController::hidden);
    m_controller->dismiss();
    QVERIFY(hidden.wait(2000));
    OverlayViewModel& model = m_controller->viewModel();
    model.setPinned(true);
    model.setQuery(QStringLiteral("save"));
    const qint64 generation = m_controller->fadeGeneration();
    m_controller->dismiss();
    QCOMPARE(model.pinned(), false);
    QCOMPARE(model.query(), QString());
    QVERIFY(!m_controller->keyMonitorInstalled());
    QCOMPARE(m_controller->fadeGeneration(), generation); // no fade
    QTest::qWait(200);
    QCOMPARE(hidden.size(), 1);
    QVERIFY(!m_controller->panel()->isVisible());
}

void TestOverlayPanel::unpinnedKeysGoToTheApplication()
{
    const QString before = windowName(m_mousepad);
    QVERIFY(!before.startsWith(u'*'));
    present();
    type(QStringLiteral("ab"));
    key(QStringLiteral("Return"));
    key(QStringLiteral("Down"));
    key(QStringLiteral("Escape"));
    // Mousepad got them: its document is now modified.
    QTRY_VERIFY2(windowName(m_mousepad).startsWith(u'*'), qPrintable(windowName(m_mousepad)));
    QCOMPARE(m_controller->viewModel().query(), QString());
    QCOMPARE(m_controller->viewModel().selection(), 0);
    QCOMPARE(m_closeRequests, 0);
    QVERIFY(m_probe.keys.isEmpty());
    QVERIFY(m_controller->panel()->isVisible());
    QCOMPARE(activeWindowPid(), m_mousepad);
    key(QStringLiteral("ctrl+z"));
    key(QStringLiteral("ctrl+z"));
    key(QStringLiteral("ctrl+z"));
}

void TestOverlayPanel::pinnedKeysReachThePanelWhileTheApplicationStaysActive()
{
    const QString before = windowName(m_mousepad);
    present();
    pinAndWaitForKeyboard();
    type(QStringLiteral("save"));
    QTRY_COMPARE(m_controller->viewModel().query(), QStringLiteral("save"));
    QCOMPARE(activeWindowPid(), m_mousepad);  // the application keeps _NET_ACTIVE_WINDOW
    QCOMPARE(windowName(m_mousepad), before); // and got none of the typing

    key(QStringLiteral("Down"));
    QCOMPARE(m_controller->viewModel().selection(), 1);
    key(QStringLiteral("Up"));
    QCOMPARE(m_controller->viewModel().selection(), 0);
    key(QStringLiteral("Down"));
    const MenuCommand expected = m_controller->viewModel().searchResults().at(1);
    key(QStringLiteral("Return"));
    QTRY_COMPARE(m_executed.size(), 1);
    QCOMPARE(m_executed[0], expected);
    key(QStringLiteral("KP_Enter"));
    QTRY_COMPARE(m_executed.size(), 2);
    // Return, Enter and the arrows were consumed; the letters went to the search field.
    QVERIFY(!m_probe.keys.contains(Qt::Key_Return) && !m_probe.keys.contains(Qt::Key_Enter));
    QVERIFY(!m_probe.keys.contains(Qt::Key_Down) && !m_probe.keys.contains(Qt::Key_Up));
    QVERIFY(m_probe.keys.contains(Qt::Key_S));

    // Dismissed, the keyboard goes back to the application.
    m_controller->dismiss();
    QVERIFY(!m_controller->panel()->hasKeyboard());
    type(QStringLiteral("x"));
    QTRY_VERIFY(windowName(m_mousepad).startsWith(u'*'));
    key(QStringLiteral("ctrl+z"));
}

void TestOverlayPanel::pinnedBeforeItIsMappedLeavesTheApplicationActive()
{
    // As the tray's "Peek Current App" does: present and pin in one go, before the window
    // manager has mapped the panel. Twice: a new panel, then the same one shown again.
    for (int round = 0; round < 2; ++round) {
        m_controller->present(RunningApp{m_mousepad, {}, QStringLiteral("Editor"), {}}, sample(),
                              {}, true, true, true, QStringLiteral("Ctrl"));
        m_controller->pin();
        QTRY_VERIFY(m_controller->panel()->hasKeyboard());
        QTest::qWait(300); // time for a window manager to activate a window mapped for input
        QCOMPARE(activeWindowPid(), m_mousepad);
        type(QStringLiteral("save"));
        QTRY_COMPARE(m_controller->viewModel().query(), QStringLiteral("save"));
        m_controller->dismiss();
        QTRY_VERIFY(!m_controller->panel()->isVisible());
    }
}

void TestOverlayPanel::stageLaysOutTheHiddenPanelAhead()
{
    const RunningApp editor{m_mousepad, {}, QStringLiteral("Editor"), {}};
    m_controller->stage(editor, sample(), {}, true, true, true, QStringLiteral("Ctrl"));
    // Nothing is shown: the panel is not mapped and the application keeps its activation.
    QTest::qWait(200);
    QVERIFY(!m_controller->panel()->isVisible());
    QVERIFY(!m_controller->panel()->isExposed());
    QCOMPARE(activeWindowPid(), m_mousepad);
    // Its views are made and laid out all the same: a card per menu, each row with its title.
    QQuickItem* root = m_controller->rootView();
    const QList<QQuickItem*> cards = items(root, QStringLiteral("sectionCard"));
    QCOMPARE(cards.size(), 2);
    QStringList titles;
    for (QQuickItem* title : visibleItems(root, QStringLiteral("title")))
        titles << title->property("text").toString();
    QCOMPARE(titles, (QStringList{"Save", "Save As…", "Save All", "Close", "Undo", "Select All"}));
    QVERIFY(cards.at(1)->x() > cards.at(0)->x() + cards.at(0)->width()); // two columns

    // Presenting the same content shows the cards made ahead.
    present();
    QCOMPARE(items(root, QStringLiteral("sectionCard")), cards);
    QVERIFY(m_controller->panel()->isVisible());

    // Staging while the overlay shows changes nothing: what is shown is the user's.
    m_controller->stage(editor, MenuCatalog{QStringLiteral("org.example.Other"), {}, {}}, {}, true,
                        true, true, QStringLiteral("Ctrl"));
    QCOMPARE(m_controller->viewModel().sections(), sample().sections);
    QCOMPARE(items(root, QStringLiteral("sectionCard")), cards);
}

void TestOverlayPanel::returnWithoutSearchIsPassedOn()
{
    present();
    pinAndWaitForKeyboard();
    key(QStringLiteral("Return"));
    type(QStringLiteral("   "));
    key(QStringLiteral("Return"));
    QCOMPARE(m_probe.keys.count(Qt::Key_Return), 2);
    QVERIFY(m_executed.isEmpty());
    type(QStringLiteral("a"));
    key(QStringLiteral("Return"));
    QCOMPARE(m_probe.keys.count(Qt::Key_Return), 2); // consumed once a search is active
    QCOMPARE(m_executed.size(), 1);
}

void TestOverlayPanel::escapeIsConsumedWithoutCloseCallback()
{
    m_controller->viewModel().onCloseRequest = nullptr;
    present();
    pinAndWaitForKeyboard();
    type(QStringLiteral("sa"));
    key(QStringLiteral("Escape"));
    QVERIFY(!m_probe.keys.contains(Qt::Key_Escape));
    QCOMPARE(m_controller->viewModel().query(), QStringLiteral("sa"));
    QVERIFY(m_controller->panel()->isVisible());

    m_controller->viewModel().onCloseRequest = [this] { ++m_closeRequests; };
    key(QStringLiteral("Escape"));
    QCOMPARE(m_closeRequests, 1);
}

void TestOverlayPanel::arrowsWithEmptyQueryStayBounded()
{
    present();
    pinAndWaitForKeyboard();
    // With no search the results are all six visible commands: the arrows move the
    // selection within them although nothing shows it; they are consumed, Return is passed on.
    key(QStringLiteral("Down"));
    key(QStringLiteral("Down"));
    QCOMPARE(m_controller->viewModel().selection(), 2);
    for (int i = 0; i < 6; ++i)
        key(QStringLiteral("Down"));
    QCOMPARE(m_controller->viewModel().selection(), 5);
    QVERIFY(!m_probe.keys.contains(Qt::Key_Down));
    key(QStringLiteral("Return"));
    QVERIFY(m_probe.keys.contains(Qt::Key_Return));
    QVERIFY(m_executed.isEmpty());
}

void TestOverlayPanel::secondPinInstallsNoSecondMonitor()
{
    present();
    pinAndWaitForKeyboard();
    m_controller->pin();
    QVERIFY(m_controller->keyMonitorInstalled());
    type(QStringLiteral("s"));
    key(QStringLiteral("Down"));
    QCOMPARE(m_controller->viewModel().selection(), 1); // one step, not two
}

void TestOverlayPanel::updateKeepsOrResetsSelection()
{
    present();
    pinAndWaitForKeyboard();
    OverlayViewModel& model = m_controller->viewModel();
    model.setQuery(QStringLiteral("save"));
    QCOMPARE(model.searchResults().size(), 3); // Save, Save As…, Save All
    model.setSelection(2);
    MenuCatalog smaller = sample();
    smaller.sections[0].commands.removeLast(); // Close: not a result
    m_controller->update(smaller);
    QCOMPARE(model.selection(), 2);
    smaller.sections[0].commands.removeLast(); // Save All
    m_controller->update(smaller);
    QCOMPARE(model.selection(), 0);
    QCOMPARE(model.appName(), QStringLiteral("Editor"));
}

QTEST_MAIN(TestOverlayPanel)
#include "tst_overlay_panel.moc"
