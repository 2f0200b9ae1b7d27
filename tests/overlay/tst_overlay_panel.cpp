// The overlay's real window under Xvfb and openbox (session tier): pinned by taking the keyboard
// while a real application (mousepad) stays active, driven by real keys and clicks (XTEST), and
// its views as the user sees them.

#include "OverlayHarness.h"
#include "SessionTools.h"
#include "overlay/OverlayPanelController.h"

#include <QTest>

using namespace corvane;
using namespace corvane::test;

namespace {

MenuCommand command(const QStringList& titles, ShortcutKeys keys = {}, bool enabled = true,
                    bool checked = false)
{
    return MenuCommand{pathFromTitles(titles), keys, enabled, checked};
}

const QString longTitle = QStringLiteral("An extraordinarily long command title that cannot fit in "
                                         "any card of the overlay however wide it is made, so it "
                                         "is cut in the middle and ends here");

// One of each kind of row.
MenuCatalog sample()
{
    return {"org.example.Editor",
            "Editor",
            {{"File",
              {command({"File", "New"}, {{"Ctrl"}, "N"}),
               command({"File", "Save"}, {{"Ctrl"}, "S"}), command({"File", "Save As…"}),
               command({"File", "Open Recent", "notes.txt"}), command({"File", longTitle})}},
             {"Edit",
              {command({"Edit", "Undo"}, {{"Ctrl"}, "Z"}, false),
               command({"Edit", "Word Wrap"}, {}, true, true),
               command({"Edit", "Reload"}, {{}, "F5"})}},
             {"View", {command({"View", "Zoom In"}, {{"Ctrl", "Shift"}, "+"})}},
             {"Window", {command({"Window", "Minimize"}, {{"Ctrl"}, "M"})}}}};
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

} // namespace

class TestOverlayPanel : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(qEnvironmentVariableIsSet("CORVANE_SESSION"), "run under tools/test-session.sh");
        m_programs = new Programs(this);
        m_mousepad = m_programs->startWithWindow("mousepad", {"--disable-server"}, "Mousepad");
        // Filling the screen, so that whatever shows around the panel is mousepad.
        xdotool({"search", "--onlyvisible", "--pid", QString::number(m_mousepad), ".", "windowmove",
                 "%@", "0", "0", "windowsize", "%@", "100%", "100%"});
    }

    void init()
    {
        m_controller = std::make_unique<OverlayPanelController>();
        m_executed.clear();
        m_toggled.clear();
        m_closeRequests = m_pinRequests = 0;
        m_probe.keys.clear();
        OverlayViewModel& model = m_controller->viewModel();
        model.onExecute = [this](const MenuCommand& c) { m_executed << c; };
        model.onToggleFavorite = [this](const MenuCommand& c) { m_toggled << c; };
        model.onCloseRequest = [this] { ++m_closeRequests; };
        model.onPinRequest = [this] { ++m_pinRequests; };
        QVERIFY(activateWindowOf(m_mousepad, "Mousepad"));
        xdotool({"mousemove", "0", "0"});
    }

    void cleanup()
    {
        m_controller.reset();
        QTRY_COMPARE(activeWindowPid(), m_mousepad);
    }

    void unpinnedKeysGoToTheApplication()
    {
        QVERIFY(!mousepadTitle().startsWith(u'*'));
        present();
        type("ab");
        key("Return");
        key("Escape");
        QTRY_VERIFY2(mousepadTitle().startsWith(u'*'), qPrintable(mousepadTitle())); // modified
        QCOMPARE(m_controller->viewModel().query(), QString());
        QCOMPARE(m_closeRequests, 0);
        QVERIFY(m_probe.keys.isEmpty());
        for (int i = 0; i < 3; ++i)
            key("ctrl+z");
    }

    void pinnedKeysDriveTheOverlay()
    {
        const QString title = mousepadTitle();
        present();
        pin();
        // Return without a search is passed on to the field and runs nothing.
        key("Return");
        QCOMPARE(m_probe.keys.count(Qt::Key_Return), 1);
        type("save");
        QTRY_COMPARE(m_controller->viewModel().query(), "save");
        QCOMPARE(activeWindowPid(), m_mousepad); // the application stays active…
        QCOMPARE(mousepadTitle(), title);        // …and got none of the typing
        for (int i = 0; i < 5; ++i)
            key("Down"); // bounded by the two results
        QCOMPARE(m_controller->viewModel().selection(), 1);
        key("Up");
        key("Down");
        const MenuCommand expected = m_controller->viewModel().searchResults().at(1);
        key("Return");
        key("KP_Enter");
        QTRY_COMPARE(m_executed.size(), 2);
        QCOMPARE(m_executed[0], expected);
        QCOMPARE(m_probe.keys.count(Qt::Key_Return), 1); // consumed once a search is active
        QVERIFY(!m_probe.keys.contains(Qt::Key_Down));
        m_controller->pin(); // a second pin installs no second key monitor
        key("Up");
        QCOMPARE(m_controller->viewModel().selection(), 0);
        key("Escape");
        QCOMPARE(m_closeRequests, 1);
        QVERIFY(!m_probe.keys.contains(Qt::Key_Escape));

        // Dismissed, the keyboard goes back to the application.
        m_controller->dismiss();
        QVERIFY(!m_controller->panel()->hasKeyboard());
        QVERIFY(!m_controller->keyMonitorInstalled());
        type("x");
        QTRY_VERIFY(mousepadTitle().startsWith(u'*'));
        key("ctrl+z");
    }

    void everyPresentationStartsAfresh()
    {
        MenuCatalog tall = sample();
        for (int i = 0; i < 200; ++i)
            tall.sections[0].commands << command({"File", QStringLiteral("Recent %1").arg(i)});
        present(tall);
        PeekPanel* first = m_controller->panel();
        pin();
        type("rec");
        QTRY_COMPARE(m_controller->viewModel().query(), "rec");
        QQuickItem* grid = find("sectionGrid");
        const qreal top = grid->property("contentY").toReal();
        grid->setProperty("contentY", top + 2000);
        m_controller->viewModel().setSelection(4);
        MenuCatalog smaller = tall;
        smaller.sections[0].commands.removeLast();
        m_controller->update(smaller); // a fresh crawl keeps a selection that still exists…
        QCOMPARE(m_controller->viewModel().selection(), 4);
        smaller.sections[0].commands = smaller.sections[0].commands.mid(0, 5);
        m_controller->update(smaller); // …and resets one past the results
        QCOMPARE(m_controller->viewModel().selection(), 0);
        present(tall); // presented again while it shows, as during its fade-out
        QCOMPARE(m_controller->viewModel().query(), QString());
        m_controller->dismiss();
        present(tall);
        QCOMPARE(m_controller->panel(), first); // made once
        QVERIFY(!find("searchText")->hasActiveFocus());
        QCOMPARE(grid->property("contentY").toReal(), top);
    }

    void rowsClickStarAndDisabled()
    {
        present();
        QQuickItem* undo = row("CommandRow", "Undo"); // disabled
        QQuickItem* star = item(undo, "star");
        hover(undo);
        QTRY_VERIFY(star->isVisible()); // the star shows on hover, even on a disabled row
        xdotool({"click", "1"});
        QTest::qWait(100);
        hover(star);
        QTest::qWait(100);
        xdotool({"click", "1"});
        QTRY_COMPARE(m_toggled.size(), 1);
        QCOMPARE(m_toggled[0].id(), command({"Edit", "Undo"}).id());
        QVERIFY(m_executed.isEmpty()); // a click on a disabled row runs nothing

        hover(row("CommandRow", "Save"));
        xdotool({"click", "1"});
        QTRY_COMPARE(m_executed.size(), 1);
        QCOMPARE(m_executed[0].id(), command({"File", "Save"}).id());

        // In the results a disabled row is not clicked either, but Return runs it.
        m_controller->pin();
        m_controller->viewModel().setQuery("undo");
        QVERIFY(nextFrame(m_controller->panel()));
        hover(row("SearchRow", "Undo"));
        xdotool({"click", "1"});
        QTest::qWait(100);
        QCOMPARE(m_executed.size(), 1);
        m_controller->viewModel().executeSelection();
        QCOMPARE(m_executed.size(), 2);

        // The search field of an unpinned panel asks for the pin.
        present();
        hover(find("searchField"));
        xdotool({"click", "1"});
        QTRY_COMPARE(m_pinRequests, 1);
    }

private:
    void present(const std::optional<MenuCatalog>& catalog = sample())
    {
        m_controller->present(RunningApp{m_mousepad, {}, "Editor", {}}, catalog, {}, true, true,
                              true, "Ctrl");
        QVERIFY(QTest::qWaitForWindowExposed(m_controller->panel()));
        QVERIFY(nextFrame(m_controller->panel()));
        find("searchText")->installEventFilter(&m_probe);
    }

    void pin()
    {
        m_controller->pin();
        QTRY_VERIFY(m_controller->panel()->hasKeyboard());
        QTRY_VERIFY(find("searchText")->hasActiveFocus());
    }

    void key(const QString& name)
    {
        xdotool({"key", name});
        QTest::qWait(50); // the X events reach us through the event loop
    }

    void type(const QString& text)
    {
        xdotool({"type", "--delay", "20", text});
        QTest::qWait(50);
    }

    void hover(QQuickItem* target)
    {
        QVERIFY(target);
        const QPointF centre =
            target->mapToGlobal(QPointF(target->width() / 2, target->height() / 2));
        xdotool({"mousemove", QString::number(qRound(centre.x())),
                 QString::number(qRound(centre.y()))});
    }

    QQuickItem* find(const QString& name) { return item(m_controller->rootView(), name); }
    // The CommandRow or SearchRow shown with this title.
    QQuickItem* row(const QString& kind, const QString& title)
    {
        for (QQuickItem* text : visibleItems(m_controller->rootView(), "title")) {
            QQuickItem* candidate = text;
            while (candidate &&
                   !QString::fromLatin1(candidate->metaObject()->className()).startsWith(kind))
                candidate = candidate->parentItem();
            if (candidate && text->property("text").toString() == title)
                return candidate;
        }
        qWarning("no %s titled \"%s\"", qPrintable(kind), qPrintable(title));
        return nullptr;
    }

    QString mousepadTitle() const
    {
        const QString window = xdotool({"search", "--all", "--onlyvisible", "--pid",
                                        QString::number(m_mousepad), "--name", "Mousepad"},
                                       false)
                                   .section(u'\n', 0, 0);
        return window.isEmpty() ? QString() : xdotool({"getwindowname", window}, false);
    }

    Programs* m_programs = nullptr;
    qint64 m_mousepad = 0;
    std::unique_ptr<OverlayPanelController> m_controller;
    QList<MenuCommand> m_executed, m_toggled;
    int m_closeRequests = 0, m_pinRequests = 0;
    KeyProbe m_probe;
};

QTEST_MAIN(TestOverlayPanel)
#include "tst_overlay_panel.moc"
