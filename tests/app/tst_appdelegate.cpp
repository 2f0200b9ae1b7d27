// The application shell in process: the delegate with fake input monitors, workspace, permission
// and menus (built in memory), and the real overlay, detector, crawl thread, tray menu and
// settings store. What the real program with real applications shows is tst_shell; this covers
// the settings, the timing races and the launch decisions that are hard to stage from outside.

#include "CrawlThread.h"
#include "FakeMenuTree.h"
#include "FakeMonitors.h"
#include "ReadOnlyFolder.h"
#include "app/AppDelegate.h"
#include "app/SettingsWindow.h"
#include "app/StatusMenuController.h"
#include "platform/AccessibilityTrust.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "whatsnew/VersionTracker.h"
#include "whatsnew/WelcomeWindowController.h"
#include "whatsnew/WhatsNewWindowController.h"

#include <QAction>
#include <QMenu>
#include <QMutex>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace corvane;
using namespace corvane::test;
using State = HoldStateMachine::State;

namespace {

class FakeWorkspace : public Workspace {
public:
    std::optional<RunningApp> front;
    std::optional<RunningApp> frontmostApplication() const override { return front; }
    void activate(const RunningApp& app)
    {
        front = app;
        Q_EMIT applicationActivated(app);
    }
};

// The permission as the test sets it; reads answer on a later turn of the loop, like D-Bus.
class FakeTrust : public AccessibilityTrust {
public:
    bool granted = true;
    bool last = false;
    bool isTrusted() const override { return last; }
    void refresh(std::function<void(bool)> completion) override
    {
        QTimer::singleShot(0, this, [this, completion] { completion(last = granted); });
    }
    bool watch() override { return true; }
    void requestTrust() override {}
};

// Menu bars by process id, read on the crawl thread (it is checked); a gate holds a crawl.
class FakeSource : public MenuSource {
public:
    MenuBar menuBar(qint64 pid, WalkBudget&) override
    {
        QMutexLocker locker(&lock);
        if (QThread::currentThread() == qApp->thread())
            ++readsOnTheMainThread;
        if (QSemaphore* gate = gates.value(pid)) {
            locker.unlock();
            gate->acquire();
            locker.relock();
        }
        ++reads[pid];
        // Scripted answers, the last one repeated: an error, or the bar (menuBarFound).
        QList<int>& script = answers[pid];
        const int answer = script.size() > 1 ? script.takeFirst() : script.value(0, menuBarFound);
        const auto bar = answer == menuBarFound ? bars.value(pid) : nullptr;
        return {bar, bar ? menuBarFound : answer == menuBarFound ? noMenuBar : answer};
    }
    void set(qint64 pid, const QString& description)
    {
        const QMutexLocker locker(&lock);
        bars.insert(pid, test::menuBar(description, pressed));
    }
    QMutex lock;
    QHash<qint64, std::shared_ptr<FakeNode>> bars;
    QHash<qint64, QSemaphore*> gates;
    QHash<qint64, QList<int>> answers;
    QHash<qint64, int> reads;
    std::shared_ptr<QStringList> pressed = std::make_shared<QStringList>();
    int readsOnTheMainThread = 0;
};

const RunningApp editor{1001, "org.example.Editor", "Editor", {}};
const QString editorMenus = "File{New=Ctrl+N,Open…,Quit=Ctrl+Q},Edit{Undo,Redo}";
const QString editorCommands = "File/New=Ctrl+N File/Open… File/Quit=Ctrl+Q Edit/Undo Edit/Redo";
const RunningApp viewer{1002, "org.example.Viewer", "Viewer", {}};
const RunningApp noId{1003, std::nullopt, "Anonymous", {}};
const RunningApp ourselves{Workspace::thisProcessId(), "com.vantorel.Corvane", "Corvane", {}};

} // namespace

class TestAppDelegate : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_defaults = std::make_unique<UserDefaults>(m_dir->filePath("corvane.conf"));
        // Not the first launch, and no version compiled in: nothing opens at launch unless the
        // permission is missing.
        QVERIFY(m_defaults->setBool(AppDelegate::launchedBeforeKey, true));
        QCoreApplication::setApplicationVersion(QString());
        m_source = std::make_shared<FakeSource>();
        m_source->set(editor.pid, editorMenus);
        m_source->set(viewer.pid, "View{Zoom In,Zoom Out}");
        m_workspace.front = editor;
        m_beeps = 0;
        m_monitors.handlers.clear();
        m_monitors.pointer = {-50, -50}; // away from the panel
    }

    void cleanup()
    {
        m_crawls.reset();
        onCrawlThread([] { return true; }); // queued crawls end before their delegate goes
        QCoreApplication::processEvents();
        QCOMPARE(m_source->readsOnTheMainThread, 0);
        AppDelegate::shared = nullptr;
        m_delegate.reset();
        SettingsWindowPresenter::shared().close();
        WelcomeWindowController::shared().close();
        WhatsNewWindowController::shared().close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void triggerSettings_data()
    {
        QTest::addColumn<QString>("trigger");     // as stored; "" nothing stored
        QTest::addColumn<QString>("delay");       // as stored; "" nothing stored
        QTest::addColumn<qulonglong>("modifier"); // 0: none
        QTest::addColumn<double>("holdDelay");
        QTest::addColumn<QString>("header");
        const QString peek = "Hold %1 to peek at any app's shortcuts";
        const auto command = qulonglong(ModifierFlags::command);
        const QList<std::tuple<const char*, const char*, const char*, qulonglong, double, QString>>
            rows{
                {"defaults", "", "", command, 0.85, peek.arg("Ctrl")},
                {"Alt", "option", "1.25", ModifierFlags::option, 1.25, peek.arg("Alt")},
                {"Super", "control", "2.0", ModifierFlags::control, 2.0, peek.arg("Super")},
                {"off", "off", "0.3", 0, 0.3, "Hold-to-peek is off"},
                {"unknown texts are Ctrl; short delays 0.3", "Option", "0.1", command, 0.3,
                 peek.arg("Ctrl")},
                {"long delays 2.0", "fn", "5", command, 2.0, peek.arg("Ctrl")},
                {"a delay that is no number", "OFF", "soon", command, 0.85, peek.arg("Ctrl")},
            };
        for (const auto& [name, trigger, delay, modifier, holdDelay, header] : rows)
            QTest::newRow(name) << trigger << delay << modifier << holdDelay << header;
    }

    void triggerSettings()
    {
        QFETCH(QString, trigger);
        QFETCH(QString, delay);
        QFETCH(qulonglong, modifier);
        QFETCH(double, holdDelay);
        QFETCH(QString, header);
        if (!trigger.isEmpty())
            QVERIFY(m_defaults->setString("triggerModifier", trigger));
        if (!delay.isEmpty())
            QVERIFY(m_defaults->setString("holdDelay", delay));
        launch();
        QCOMPARE(m_delegate->detector.triggerModifier.value_or(0), modifier);
        QCOMPARE(m_delegate->detector.holdDelay, holdDelay);
        QCOMPARE(m_delegate->detector.installedMonitorCount(), 4);
        Q_EMIT m_delegate->statusMenuController->menu->aboutToShow(); // read when the menu opens
        QCOMPARE(m_delegate->statusMenuController->headerItem->text(), header);
        QCOMPARE(model().triggerSymbol(), m_delegate->triggerSymbol());
        // The registered defaults are fallbacks, never written.
        for (const char* key :
             {"showDisabledItems", "showItemsWithoutShortcut", "glassyBackground"})
            QVERIFY2(!m_defaults->contains(QString::fromLatin1(key)), key);
    }

    // The tray menu as it opens: its entries, "Peek Current App" pinning over the application
    // in front and closing again, also with the trigger off, and without the permission a
    // warning entry and the Welcome window in place of a peek.
    void trayMenu()
    {
        QVERIFY(m_defaults->setString("triggerModifier", "off"));
        launch();
        StatusMenuController& tray = *m_delegate->statusMenuController;
        const auto shown = [&tray] {
            Q_EMIT tray.menu->aboutToShow();
            QStringList labels;
            for (const QAction* action : tray.menu->actions())
                if (action->isVisible())
                    labels << (action->isSeparator()
                                   ? "—"
                                   : action->text() + (action->isEnabled() ? "" : " (disabled)"));
            return labels;
        };
        QCOMPARE(shown(),
                 (QStringList{"Hold-to-peek is off (disabled)", "—", "Peek Current App", "—",
                              "Settings…", "Welcome to Corvane…", "What's New in Corvane…",
                              "Check for Updates…", "—", "Quit Corvane"}));
        for (const auto flag :
             {ModifierFlags::command, ModifierFlags::option, ModifierFlags::control})
            m_monitors.modifiers(flag);
        QCOMPARE(m_delegate->detector.machine.state, State::idle); // holding does nothing
        tray.peekItem->trigger();
        QTRY_VERIFY(model().pinned());
        QCOMPARE(m_delegate->targetApp->pid, editor.pid);
        tray.peekItem->trigger();
        QCOMPARE(m_delegate->detector.machine.state, State::idle);
        QTRY_VERIFY(!panelVisible());

        // With Ctrl back, holding it while Corvane's own window is in front never arms.
        QVERIFY(m_defaults->setString("triggerModifier", "command"));
        m_delegate->reloadTriggerSettings();
        QCOMPARE(shown().first(), "Hold Ctrl to peek at any app's shortcuts (disabled)");
        m_monitors.modifiers(0);
        m_workspace.activate(ourselves);
        m_monitors.modifiers(ModifierFlags::command);
        QCOMPARE(m_delegate->detector.machine.state, State::idle);
        m_monitors.modifiers(0);
        m_workspace.activate(editor);
        m_monitors.modifiers(ModifierFlags::command);
        QCOMPARE(m_delegate->detector.machine.state, State::arming);
        m_monitors.modifiers(0);

        // Without the permission.
        const qsizetype crawls = m_crawls->size();
        m_trust.granted = m_trust.last = false;
        QCOMPARE(shown().at(1), "Accessibility access needed — click to fix");
        tray.peekItem->trigger();
        QTRY_VERIFY(WelcomeWindowController::shared().window());
        QVERIFY(!panelVisible());
        QCOMPARE(m_crawls->size(), crawls);
    }

    void prefetchStagesOnlyWhileTheHoldWaits()
    {
        QVERIFY(m_defaults->setDouble("holdDelay", 2.0));
        launch();
        m_monitors.modifiers(ModifierFlags::command);
        waitForCrawls(1);
        QVERIFY(!panelVisible()); // still holding: nothing shows, but the hidden overlay is filled
        QCOMPARE(describe(model().sections()), editorCommands);
        m_monitors.modifiers(0);

        // A hold that ended before its prefetch did (a chord such as Ctrl+C) stages nothing.
        QSemaphore gate;
        m_source->gates.insert(viewer.pid, &gate);
        m_workspace.front = viewer;
        m_monitors.modifiers(ModifierFlags::command);
        m_monitors.modifiers(0);
        gate.release();
        waitForCrawls(2);
        m_source->gates.clear();
        QVERIFY(m_delegate->cache->catalog(*viewer.appId)); // stored all the same
        QCOMPARE(model().appName(), editor.name);
        QVERIFY(!panelVisible());
    }

    void crawlsOfAnotherApplicationAndWithoutPermission()
    {
        launch();
        QSemaphore gate;
        m_source->gates.insert(viewer.pid, &gate);
        m_delegate->crawlAndUpdate(viewer); // held at the gate
        pin(editor);
        gate.release(); // the viewer's crawl ends while the editor is shown
        waitForCrawls(2);
        m_source->gates.clear();
        QCOMPARE(m_crawls->at(0).at(0).value<RunningApp>().pid, viewer.pid);
        QCOMPARE(m_crawls->at(0).at(1).toBool(), false); // the shown overlay was left alone
        QCOMPARE(model().appName(), editor.name);
        QCOMPARE(describe(model().sections()), editorCommands);
        QVERIFY(m_delegate->cache->catalog(*viewer.appId));

        m_trust.last = false; // withdrawn: the next crawl is skipped
        QTest::ignoreMessage(QtCriticalMsg, "crawl skipped: process not trusted");
        m_delegate->crawlAndUpdate(viewer);
        onCrawlThread([] { return true; });
        QCoreApplication::processEvents();
        QCOMPARE(m_crawls->size(), 2);
    }

    void showWithoutAUsableApplicationCloses()
    {
        launch();
        for (const RunningApp& front : {ourselves, noId}) { // nothing seen before; no id
            m_workspace.front = front;
            m_delegate->detector.send(HoldStateMachine::Event::pinRequest());
            QCoreApplication::processEvents();
            QCOMPARE(m_delegate->detector.machine.state, State::idle);
            QVERIFY(!panelVisible());
        }
    }

    void unreadableApplicationSaysWhy_data()
    {
        using Unreadable = OverlayViewModel::Unreadable;
        QTest::addColumn<QList<int>>("answers"); // the editor's reads, the last one repeated
        QTest::addColumn<Unreadable>("unreadable");
        QTest::newRow("not on the bus") << QList<int>{applicationNotFound} << Unreadable::notOnBus;
        QTest::newRow("on the bus, publishing nothing")
            << QList<int>{applicationUnpublished} << Unreadable::restartNeeded;
        QTest::newRow("still starting, then read")
            << QList<int>{applicationStarting, applicationStarting, menuBarFound} << Unreadable::no;
        QTest::newRow("too slow this time") << QList<int>{requestTimedOut} << Unreadable::no;
    }

    void unreadableApplicationSaysWhy()
    {
        QFETCH(QList<int>, answers);
        QFETCH(OverlayViewModel::Unreadable, unreadable);
        m_source->answers.insert(editor.pid, answers);
        launch();
        pin(editor);
        // A starting application is asked again a second later, as long as the panel shows it.
        QTRY_VERIFY_WITH_TIMEOUT(m_source->reads.value(editor.pid) >= answers.size(), 5000);
        onCrawlThread([] { return true; });
        QCoreApplication::processEvents();
        QCOMPARE(model().unreadable(), unreadable);
        QCOMPARE(model().unreadableText().startsWith(editor.name),
                 unreadable != OverlayViewModel::Unreadable::no);
        QCOMPARE(model().sections().isEmpty(), answers.last() != menuBarFound);
    }

    void favoritesShowWhatTheStoreHolds()
    {
        launch();
        const MenuCommand orphan{{{"File", 0}, {"New", 0}}, ShortcutKeys::none, true, false};
        model().onToggleFavorite(orphan); // no target: nothing stored
        QVERIFY(!m_defaults->contains("favorites." + *editor.appId));
        pin(editor);
        waitForCrawls(1);
        const MenuCommand kept = model().sections().at(0).commands.at(0);
        const MenuCommand refused = model().sections().at(0).commands.at(1);
        model().onToggleFavorite(kept);
        QCOMPARE(model().favoriteOrder(), QStringList{kept.id()});
        QVERIFY(model().favoriteIDs().contains(kept.id()));
        {
            ReadOnlyFolder readOnly(m_dir->path());
            QVERIFY2(readOnly.isReadOnly(), qPrintable(readOnly.reason()));
            // Neither adding nor removing can be stored: the stars stay as the store has them.
            model().onToggleFavorite(refused);
            model().onToggleFavorite(kept);
            QCOMPARE(model().favoriteOrder(), QStringList{kept.id()});
            QCOMPARE(model().favoriteIDs(), QSet<QString>{kept.id()});
        }
        UserDefaults reread(m_dir->filePath("corvane.conf"));
        QCOMPARE(FavoritesStore(reread).ids(*editor.appId), QStringList{kept.id()});
        model().onToggleFavorite(kept);
        QVERIFY(model().favoriteOrder().isEmpty() && model().favoriteIDs().isEmpty());
    }

    void runCommandsAreRememberedAndExported()
    {
        launch();
        pin(editor);
        waitForCrawls(1);
        const QList<MenuCommand> file = model().sections().at(0).commands;
        m_delegate->execute(file.at(2)); // Quit
        QTRY_COMPARE(*m_source->pressed, QStringList{"File/Quit"});
        QTRY_COMPARE(m_delegate->history.entries(*editor.appId).size(), 1);
        pin(editor);
        m_delegate->execute(
            MenuCommand{{{"File", 0}, {"Gone", 0}}, ShortcutKeys::none, true, false});
        QTRY_COMPARE(m_beeps, 1); // a failed press is not remembered
        // The next peek shows it in the Recent card and lifts it in search.
        pin(editor);
        QCOMPARE(model().recentOrder(), QStringList{file.at(2).id()});
        QCOMPARE(model().historyWeights().keys(), QStringList{file.at(2).id()});

        // Switched off: nothing more is remembered, and nothing is shown.
        QVERIFY(m_defaults->setBool("rememberCommands", false));
        m_delegate->execute(file.at(0));
        QTRY_COMPARE(m_source->pressed->size(), 2);
        onCrawlThread([] { return true; });
        QCoreApplication::processEvents();
        QCOMPARE(m_delegate->history.entries(*editor.appId).size(), 1);
        pin(editor);
        QVERIFY(model().recentOrder().isEmpty());

        // Ctrl+E asks where to save the sheet, saves it there and says so; cancelled, nothing.
        m_savePath = m_dir->filePath("sheet.md");
        QTest::keyClick(m_delegate->overlay.panel(), Qt::Key_E, Qt::ControlModifier);
        QVERIFY(m_suggestedPath.endsWith("/Editor shortcuts.html"));
        QFile sheet(m_savePath);
        QVERIFY(sheet.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(sheet.readAll()).count("<kbd>Ctrl</kbd>"), 2); // New and Quit
        QCOMPARE(model().notice(), "Saved to " + m_savePath);
        QVERIFY(panelVisible() && model().pinned());
        m_savePath = m_dir->filePath("missing/folder/sheet.html");
        model().requestExport();
        QVERIFY(model().notice().startsWith("Could not save"));
    }

    void launchAnnouncements_data()
    {
        QTest::addColumn<bool>("launchedBefore");
        QTest::addColumn<QString>("lastSeen"); // "" no record
        QTest::addColumn<QString>("running");  // "" a build without a version
        QTest::addColumn<bool>("trusted");
        QTest::addColumn<QString>("opens"); // "welcome", "whatsnew" or ""
        const QList<std::tuple<const char*, bool, const char*, const char*, bool, const char*>>
            rows{
                {"first launch: Welcome, even after an update", false, "0.9", "1.0", true,
                 "welcome"},
                {"update with the permission: What's New", true, "0.9", "1.0", true, "whatsnew"},
                {"update without new notes: nothing", true, "1.0", "1.0.1", true, ""},
                {"update without the permission: Welcome", true, "0.9", "1.0", false, "welcome"},
                {"the same version: nothing", true, "1.0", "1.0", true, ""},
                {"a downgrade: nothing", true, "2.0", "1.0", true, ""},
                {"a build without a version: nothing", true, "0.9", "", true, ""},
            };
        for (const auto& [name, before, lastSeen, running, trusted, opens] : rows)
            QTest::newRow(name) << before << lastSeen << running << trusted << opens;
    }

    void launchAnnouncements()
    {
        QFETCH(bool, launchedBefore);
        QFETCH(QString, lastSeen);
        QFETCH(QString, running);
        QFETCH(bool, trusted);
        QFETCH(QString, opens);
        QVERIFY(m_defaults->remove(AppDelegate::launchedBeforeKey));
        if (launchedBefore)
            QVERIFY(m_defaults->setBool(AppDelegate::launchedBeforeKey, true));
        QVERIFY(m_defaults->setString(VersionTracker::lastSeenKey, lastSeen));
        QCoreApplication::setApplicationVersion(running);
        launch(trusted);
        const auto open = [](QQuickWindow* window) { return window && window->isVisible(); };
        QCOMPARE(open(WelcomeWindowController::shared().window()), opens == u"welcome");
        QCOMPARE(open(WhatsNewWindowController::shared().window()), opens == u"whatsnew");
        QCOMPARE(m_defaults->boolValue(AppDelegate::launchedBeforeKey), std::optional(true));
        // The record is committed at once (a build without a version writes none): the notes of
        // an update shown without the permission are not offered again.
        QCOMPARE(m_defaults->string(VersionTracker::lastSeenKey),
                 running.isEmpty() ? lastSeen : running);
    }

private:
    void launch(bool trusted = true)
    {
        m_trust.granted = m_trust.last = trusted;
        m_delegate = std::make_unique<AppDelegate>(
            *m_defaults, AppDelegate::Platform{.monitors = m_monitors,
                                               .workspace = m_workspace,
                                               .trust = m_trust,
                                               .menuSource = m_source,
                                               .beep = [this] { ++m_beeps; },
                                               .isCompositing = {},
                                               .requestBlurBehind = {},
                                               .showStatusItem = false,
                                               .askSavePath =
                                                   [this](const QString& suggested) {
                                                       m_suggestedPath = suggested;
                                                       return m_savePath;
                                                   }});
        AppDelegate::shared = m_delegate.get();
        m_crawls = std::make_unique<QSignalSpy>(m_delegate.get(), &AppDelegate::crawlFinished);
        QSignalSpy announced(m_delegate.get(), &AppDelegate::launchAnnounced);
        m_delegate->applicationDidFinishLaunching();
        QTRY_COMPARE(announced.size(), 1);
    }

    void pin(const RunningApp& app)
    {
        m_workspace.front = app;
        m_delegate->detector.send(HoldStateMachine::Event::pinRequest());
        QTRY_VERIFY(model().pinned());
        QVERIFY(panelVisible());
        QCOMPARE(m_delegate->targetApp->pid, app.pid);
    }

    bool panelVisible() const
    {
        return m_delegate->overlay.panel() && m_delegate->overlay.panel()->isVisible();
    }

    void waitForCrawls(int count) { QTRY_COMPARE_WITH_TIMEOUT(m_crawls->size(), count, 5000); }
    OverlayViewModel& model() { return m_delegate->overlay.viewModel(); }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<UserDefaults> m_defaults;
    FakeMonitors m_monitors;
    FakeWorkspace m_workspace;
    FakeTrust m_trust;
    std::shared_ptr<FakeSource> m_source;
    int m_beeps = 0;
    QString m_suggestedPath, m_savePath; // the export's dialog: what it suggested, what it answers
    std::unique_ptr<AppDelegate> m_delegate;
    std::unique_ptr<QSignalSpy> m_crawls;
};

QTEST_MAIN(TestAppDelegate)
#include "tst_appdelegate.moc"
