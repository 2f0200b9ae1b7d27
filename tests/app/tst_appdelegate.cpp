// The application shell in process: the delegate with fake input monitors, workspace, permission
// and menus (built in memory), and the real overlay, detector, crawl thread, status menu and
// settings store. Every "Edge cases worth testing" bullet of those Parts; the same loop with
// real applications and real input is tst_shell.

#include "CrawlThread.h"
#include "FakeMenuTree.h"
#include "FakeMonitors.h"
#include "OverlayHarness.h"
#include "ReadOnlyFolder.h"
#include "app/AppDelegate.h"
#include "app/SettingsWindow.h"
#include "app/StatusMenuController.h"
#include "menus/FavoritesStore.h"
#include "menus/MenuCrawler.h"
#include "platform/AccessibilityTrust.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "whatsnew/VersionTracker.h"
#include "whatsnew/WelcomeWindowController.h"
#include "whatsnew/WhatsNewWindowController.h"

#include <QAction>
#include <QLoggingCategory>
#include <QMenu>
#include <QMessageBox>
#include <QMutex>
#include <QRegularExpression>
#include <QScopeGuard>
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
    int reads = 0;
    int answers = 0;
    int requests = 0;
    bool isTrusted() const override { return m_last; }
    void refresh(std::function<void(bool)> completion) override
    {
        ++reads;
        QTimer::singleShot(0, this, [this, completion] {
            m_last = granted;
            ++answers;
            completion(granted);
        });
    }
    bool watch() override { return true; }
    void requestTrust() override { ++requests; }
    void announce() { Q_EMIT broadcast(); }
    void setNow(bool value) { granted = m_last = value; }

private:
    bool m_last = false;
};

// Menu bars by process id, read on the crawl thread. A gate holds a crawl until released.
class FakeSource : public MenuSource {
public:
    MenuBar menuBar(qint64 pid, WalkBudget&) override
    {
        QSemaphore* gate = nullptr;
        std::shared_ptr<FakeNode> bar;
        {
            const QMutexLocker locker(&lock);
            gate = gates.value(pid);
            bar = bars.value(pid);
        }
        if (gate)
            gate->acquire();
        if (!bar)
            return {nullptr, 3};
        return {bar, 0};
    }
    void set(qint64 pid, std::shared_ptr<FakeNode> bar)
    {
        const QMutexLocker locker(&lock);
        bars.insert(pid, std::move(bar));
    }
    QMutex lock;
    QHash<qint64, std::shared_ptr<FakeNode>> bars;
    QHash<qint64, QSemaphore*> gates;
};

const RunningApp editor{1001, QStringLiteral("org.example.Editor"), QStringLiteral("Editor"), {}};
const RunningApp viewer{1002, QStringLiteral("org.example.Viewer"), QStringLiteral("Viewer"), {}};
const RunningApp noId{1003, std::nullopt, QStringLiteral("Anonymous"), {}};
const RunningApp ourselves{Workspace::thisProcessId(),
                           QStringLiteral("com.vantorel.Corvane"),
                           QStringLiteral("Corvane"),
                           {}};

std::shared_ptr<FakeNode> editorMenus()
{
    return bar({menu("File", {item("New"), item("Open…"), item("Quit")}),
                menu("Edit", {item("Undo"), item("Redo")})});
}
std::shared_ptr<FakeNode> viewerMenus()
{
    return bar({menu("View", {item("Zoom In"), item("Zoom Out")})});
}

// Waits until every job queued on the crawl thread so far has run, and their results arrived.
void drainCrawlQueue()
{
    onCrawlThread([] { return true; });
    QCoreApplication::processEvents();
}

int commandCount(const QList<MenuSection>& sections)
{
    int count = 0;
    for (const auto& section : sections)
        count += int(section.commands.size());
    return count;
}

} // namespace

class TestAppDelegate : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    // Launch and wiring
    void launchInstallsEverything();
    void holdDelayIsClamped_data();
    void holdDelayIsClamped();
    void unknownTriggerTextsBehaveAsCommand_data();
    void unknownTriggerTextsBehaveAsCommand();
    void triggerOffNeverArmsButPeekItemWorks();
    void ownWindowInFrontDoesNotArm();
    void favoriteToggleWithoutTargetChangesNothing();
    void favoriteToggleReadsTheStoreBack();
    void favoriteToggleOnAnUnwritableFileKeepsTheRealState();
    void showWithoutUsableApplicationCloses();
    void holdShowsReleaseHides();
    void prefetchDuringTheHoldStagesTheHiddenOverlay();
    void prefetchAfterTheHoldEndedStagesNothing();
    void glassFollowsTheCompositorAtEachShow();

    // The accessibility permission
    void grantWithoutBroadcastIsNoticedByThePoll();
    void broadcastWithoutChangeChangesNothing();
    void withdrawalRestartsMonitorsAndStartsPolling();
    void startTrustPollingTwiceKeepsOneTimer();
    void holdInProgressKeepsItsStateAcrossRestart();

    // The target application and running commands
    void activatingOwnWindowKeepsPinnedOverlay();
    void switchingAwayClosesSwitchingToTargetDoesNot();
    void peekItemWithOwnWindowInFrontPeeksLastExternalApp();
    void finishedCrawlWithOverlayHiddenOnlyUpdatesCache();
    void crawlOfAnotherAppLeavesOverlayUntouched();
    void executeWithoutTargetOnlyCloses();
    void executeClosesThenPresses();
    void pressOfVanishedPathBeepsOnce();
    void crawlWithoutPermissionIsSkippedAndLogged();

    // The tray menu
    void menuHoldsTheSpecEntriesInOrder();
    void headerNamesTheTrigger_data();
    void headerNamesTheTrigger();
    void grantingHidesTheWarningAtNextOpening();
    void peekWithoutPermissionOpensWelcome();
    void peekItemToggles();
    void whatsNewShowsEveryRelease();
    // Launch announcements
    void firstLaunchOpensWelcomeEvenAfterAnUpdate();
    void updateWithPermissionOpensWhatsNew();
    void updateWithoutNewNotesOpensNothing();
    void updateWithoutPermissionOpensWelcomeAndGivesUpTheNotes();
    void sameVersionOpensNothing();
    void downgradeOpensNothing();
    void buildWithoutVersionOpensNothingAndWritesNoRecord();

private:
    void launch(bool trusted = true);
    void launchAndAnnounce(bool trusted = true);
    void recordPreviousLaunch(bool launchedBefore, const QString& lastSeen);
    bool welcomeOpen() const;
    bool whatsNewOpen() const;
    void makeDelegate();
    void pinOverlayFor(const RunningApp& app);
    bool panelVisible() const;
    void waitForCrawls(int count);

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<UserDefaults> m_defaults;
    FakeMonitors m_monitors;
    FakeWorkspace m_workspace;
    FakeTrust m_trust;
    std::shared_ptr<FakeSource> m_source;
    int m_beeps = 0;
    bool m_compositing = false;
    QList<QWindow*> m_blurredWindows;
    std::unique_ptr<AppDelegate> m_delegate;
    std::unique_ptr<QSignalSpy> m_crawls;
};

void TestAppDelegate::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_defaults = std::make_unique<UserDefaults>(m_dir->filePath(QStringLiteral("corvane.conf")));
    // Not the first launch, and no version compiled in: no window opens at launch unless the
    // permission is missing. The launch tests below set their own.
    QVERIFY(m_defaults->setBool(AppDelegate::launchedBeforeKey, true));
    QCoreApplication::setApplicationVersion(QString());
    m_source = std::make_shared<FakeSource>();
    m_source->set(editor.pid, editorMenus());
    m_source->set(viewer.pid, viewerMenus());
    m_workspace.front = editor;
    m_trust.setNow(true);
    m_trust.reads = m_trust.answers = 0;
    m_beeps = 0;
    m_compositing = false;
    m_blurredWindows.clear();
    m_monitors.handlers.clear();
    m_monitors.pointer = {0, 0};
}

void TestAppDelegate::cleanup()
{
    m_crawls.reset();
    // Let queued crawls end before their delegate goes (they hold it weakly; this keeps the
    // next test's counts clean).
    drainCrawlQueue();
    AppDelegate::shared = nullptr;
    m_delegate.reset();
    SettingsWindowPresenter::shared().close();
    WelcomeWindowController::shared().close();
    WhatsNewWindowController::shared().close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void TestAppDelegate::makeDelegate()
{
    m_delegate = std::make_unique<AppDelegate>(
        *m_defaults,
        AppDelegate::Platform{
            .monitors = m_monitors,
            .workspace = m_workspace,
            .trust = m_trust,
            .menuSource = m_source,
            .beep = [this] { ++m_beeps; },
            .isCompositing = [this] { return m_compositing; },
            .requestBlurBehind = [this](QWindow& window) { m_blurredWindows.append(&window); },
            .showStatusItem = false});
    AppDelegate::shared = m_delegate.get();
    m_crawls = std::make_unique<QSignalSpy>(m_delegate.get(), &AppDelegate::crawlFinished);
}

void TestAppDelegate::launch(bool trusted)
{
    m_trust.setNow(trusted);
    makeDelegate();
    m_delegate->applicationDidFinishLaunching();
    QTRY_VERIFY(m_trust.answers >= 1);
    QCOMPARE(m_delegate->wasTrusted, trusted);
}

bool TestAppDelegate::panelVisible() const
{
    return m_delegate->overlay.panel() && m_delegate->overlay.panel()->isVisible();
}

void TestAppDelegate::waitForCrawls(int count)
{
    QTRY_COMPARE_WITH_TIMEOUT(m_crawls->size(), count, 5000);
}

void TestAppDelegate::pinOverlayFor(const RunningApp& app)
{
    m_workspace.front = app;
    m_delegate->detector.send(HoldStateMachine::Event::pinRequest());
    QTRY_VERIFY(m_delegate->overlay.viewModel().pinned());
    QVERIFY(panelVisible());
    QCOMPARE(m_delegate->targetApp->pid, app.pid);
}

// ---- Launch and wiring

void TestAppDelegate::launchInstallsEverything()
{
    launch();
    QVERIFY(m_delegate->statusMenuController);
    QCOMPARE(m_delegate->detector.installedMonitorCount(), 4);
    QCOMPARE(m_delegate->detector.holdDelay, 0.85);
    QCOMPARE(m_delegate->detector.triggerModifier, std::optional(ModifierFlags::command));
    QCOMPARE(m_delegate->overlay.viewModel().triggerSymbol(), QStringLiteral("Ctrl"));
    QVERIFY(!m_delegate->trustPollTimer);
    // Registered defaults are fallbacks, never written.
    for (const char* key : {"holdDelay", "triggerModifier", "showDisabledItems",
                            "showItemsWithoutShortcut", "glassyBackground"})
        QVERIFY2(!m_defaults->contains(QString::fromLatin1(key)), key);
}

void TestAppDelegate::holdDelayIsClamped_data()
{
    QTest::addColumn<double>("stored");
    QTest::addColumn<double>("applied");
    QTest::newRow("0.1") << 0.1 << 0.3;
    QTest::newRow("5") << 5.0 << 2.0;
    QTest::newRow("0.3") << 0.3 << 0.3;
    QTest::newRow("1.25") << 1.25 << 1.25;
}

void TestAppDelegate::holdDelayIsClamped()
{
    QFETCH(double, stored);
    QFETCH(double, applied);
    launch();
    QVERIFY(m_defaults->setDouble(QStringLiteral("holdDelay"), stored));
    m_delegate->reloadTriggerSettings();
    QCOMPARE(m_delegate->detector.holdDelay, applied);
}

void TestAppDelegate::unknownTriggerTextsBehaveAsCommand_data()
{
    QTest::addColumn<QString>("setting");
    QTest::newRow("Option") << QStringLiteral("Option");
    QTest::newRow("fn") << QStringLiteral("fn");
    QTest::newRow("command") << QStringLiteral("command");
}

void TestAppDelegate::unknownTriggerTextsBehaveAsCommand()
{
    QFETCH(QString, setting);
    QVERIFY(m_defaults->setString(QStringLiteral("triggerModifier"), setting));
    launch();
    QCOMPARE(m_delegate->detector.triggerModifier, std::optional(ModifierFlags::command));
    QCOMPARE(m_delegate->triggerSymbol(), QStringLiteral("Ctrl"));
    QCOMPARE(m_delegate->overlay.viewModel().triggerSymbol(), QStringLiteral("Ctrl"));
}

void TestAppDelegate::triggerOffNeverArmsButPeekItemWorks()
{
    QVERIFY(m_defaults->setString(QStringLiteral("triggerModifier"), QStringLiteral("off")));
    launch();
    QCOMPARE(m_delegate->triggerSymbol(), QString());
    QVERIFY(!m_delegate->detector.triggerModifier);
    QVERIFY(!m_delegate->detector.canArmProvider());
    for (const auto flag : {ModifierFlags::command, ModifierFlags::option, ModifierFlags::control})
        m_monitors.modifiers(flag);
    QCOMPARE(m_delegate->detector.machine.state, State::idle);
    QVERIFY(!m_delegate->detector.timerPending());

    m_delegate->statusMenuController->peekItem->trigger();
    QTRY_VERIFY(m_delegate->overlay.viewModel().pinned());
    QVERIFY(panelVisible());
    QCOMPARE(m_delegate->overlay.viewModel().triggerSymbol(), QString());
}

void TestAppDelegate::ownWindowInFrontDoesNotArm()
{
    launch();
    m_workspace.activate(ourselves); // the settings window, say
    QVERIFY(!m_delegate->detector.canArmProvider());
    m_monitors.modifiers(ModifierFlags::command);
    QCOMPARE(m_delegate->detector.machine.state, State::idle);
    m_monitors.modifiers(0);
    m_workspace.activate(editor);
    m_monitors.modifiers(ModifierFlags::command);
    QCOMPARE(m_delegate->detector.machine.state, State::arming);
}

void TestAppDelegate::favoriteToggleWithoutTargetChangesNothing()
{
    launch();
    QVERIFY(!m_delegate->targetApp);
    const MenuCommand command{{{"File", 0}, {"New", 0}}, ShortcutKeys::none, true, false};
    m_delegate->overlay.viewModel().onToggleFavorite(command);
    QVERIFY(m_delegate->favorites.ids(*editor.appId).isEmpty());
    QVERIFY(m_delegate->overlay.viewModel().favoriteOrder().isEmpty());
    QVERIFY(!m_defaults->contains(QStringLiteral("favorites.") + *editor.appId));
}

void TestAppDelegate::favoriteToggleReadsTheStoreBack()
{
    launch();
    pinOverlayFor(editor);
    waitForCrawls(1);
    const MenuCommand command = m_delegate->overlay.viewModel().sections().at(0).commands.at(1);
    m_delegate->overlay.viewModel().onToggleFavorite(command);
    QCOMPARE(m_delegate->favorites.ids(*editor.appId), QStringList{command.id()});
    QCOMPARE(m_delegate->overlay.viewModel().favoriteOrder(), QStringList{command.id()});
    QVERIFY(m_delegate->overlay.viewModel().favoriteIDs().contains(command.id()));
    m_delegate->overlay.viewModel().onToggleFavorite(command);
    QVERIFY(m_delegate->overlay.viewModel().favoriteOrder().isEmpty());
    QVERIFY(m_delegate->overlay.viewModel().favoriteIDs().isEmpty());
}

void TestAppDelegate::favoriteToggleOnAnUnwritableFileKeepsTheRealState()
{
    launch();
    pinOverlayFor(editor);
    waitForCrawls(1);
    OverlayViewModel& model = m_delegate->overlay.viewModel();
    const MenuCommand kept = model.sections().at(0).commands.at(0);
    const MenuCommand refused = model.sections().at(0).commands.at(1);
    model.onToggleFavorite(kept);
    QCOMPARE(model.favoriteOrder(), QStringList{kept.id()});
    {
        ReadOnlyFolder readOnly(m_dir->path());
        QVERIFY2(readOnly.isReadOnly(), qPrintable(readOnly.reason()));
        // Neither adding nor removing can be stored: the stars stay as the store has them.
        model.onToggleFavorite(refused);
        model.onToggleFavorite(kept);
        QCOMPARE(model.favoriteOrder(), QStringList{kept.id()});
        QCOMPARE(model.favoriteIDs(), QSet<QString>{kept.id()});
        QCOMPARE(m_delegate->favorites.ids(*editor.appId), QStringList{kept.id()});
    }
    // Nothing was lost on disk either.
    UserDefaults reread(m_dir->filePath(QStringLiteral("corvane.conf")));
    QCOMPARE(FavoritesStore(reread).ids(*editor.appId), QStringList{kept.id()});
}

void TestAppDelegate::showWithoutUsableApplicationCloses()
{
    launch();
    // Corvane itself in front and no other application seen yet: nothing to show.
    m_workspace.front = ourselves;
    m_delegate->detector.send(HoldStateMachine::Event::pinRequest());
    QCoreApplication::processEvents();
    QCOMPARE(m_delegate->detector.machine.state, State::idle);
    QVERIFY(!panelVisible());
    QVERIFY(!m_delegate->targetApp);
    // An application without an application id: the same.
    m_workspace.front = noId;
    m_delegate->detector.send(HoldStateMachine::Event::pinRequest());
    QCoreApplication::processEvents();
    QCOMPARE(m_delegate->detector.machine.state, State::idle);
    QVERIFY(!panelVisible());
}

void TestAppDelegate::holdShowsReleaseHides()
{
    QVERIFY(m_defaults->setDouble(QStringLiteral("holdDelay"), 0.3));
    launch();
    m_monitors.modifiers(ModifierFlags::command);
    QCOMPARE(m_delegate->detector.machine.state, State::arming);
    // The prefetch crawl starts with the hold and fills the cache before the overlay shows.
    waitForCrawls(1);
    QVERIFY(m_delegate->cache->catalog(*editor.appId));
    QTRY_VERIFY_WITH_TIMEOUT(panelVisible(), 3000);
    QCOMPARE(m_delegate->detector.machine.state, State::peeking);
    QCOMPARE(m_delegate->targetApp->pid, editor.pid);
    QCOMPARE(m_delegate->overlay.viewModel().appName(), editor.name);
    QCOMPARE(commandCount(m_delegate->overlay.viewModel().sections()), 5);
    waitForCrawls(2); // the crawl of the show
    QCOMPARE(m_crawls->at(1).at(1).toBool(), true);

    m_monitors.pointer = {-50, -50}; // away from the panel
    m_monitors.modifiers(0);
    QCOMPARE(m_delegate->detector.machine.state, State::idle);
    QVERIFY(!m_delegate->targetApp);
    QTRY_VERIFY(!panelVisible());
}

void TestAppDelegate::prefetchDuringTheHoldStagesTheHiddenOverlay()
{
    QVERIFY(m_defaults->setDouble(QStringLiteral("holdDelay"), 2.0));
    launch();
    m_monitors.modifiers(ModifierFlags::command);
    waitForCrawls(1);
    // Still holding: nothing shows, but the hidden overlay holds the application's menus.
    QCOMPARE(m_delegate->detector.machine.state, State::arming);
    QVERIFY(!panelVisible());
    QCOMPARE(m_delegate->overlay.viewModel().appName(), editor.name);
    QCOMPARE(commandCount(m_delegate->overlay.viewModel().sections()), 5);
    m_monitors.modifiers(0);
    QCOMPARE(m_delegate->detector.machine.state, State::idle);
    QVERIFY(!panelVisible());
}

void TestAppDelegate::prefetchAfterTheHoldEndedStagesNothing()
{
    launch();
    QSemaphore gate;
    m_source->gates.insert(editor.pid, &gate);
    m_monitors.modifiers(ModifierFlags::command); // the prefetch waits at the gate
    m_monitors.modifiers(0);                      // released before the delay
    QCOMPARE(m_delegate->detector.machine.state, State::idle);
    gate.release();
    waitForCrawls(1);
    m_source->gates.clear();
    QVERIFY(m_delegate->cache->catalog(*editor.appId)); // stored all the same
    QVERIFY(!panelVisible());
    QVERIFY(m_delegate->overlay.viewModel().appName().isEmpty());
    QVERIFY(m_delegate->overlay.viewModel().sections().isEmpty());
}

void TestAppDelegate::glassFollowsTheCompositorAtEachShow()
{
    launch();
    // No compositor: an opaque panel, made at launch, with no blur hint (nothing would read it).
    PeekPanel* opaque = m_delegate->overlay.panel();
    QVERIFY(opaque && !opaque->isTranslucent());
    QVERIFY(m_blurredWindows.isEmpty());
    auto* peek = m_delegate->statusMenuController->peekItem;
    const auto translucent = [this] {
        return m_delegate->overlay.rootView()->property("translucent").toBool();
    };
    peek->trigger();
    QTRY_VERIFY(panelVisible());
    QVERIFY(!translucent()); // the card is solid
    peek->trigger();
    QTRY_VERIFY(!panelVisible());
    m_compositing = true; // a compositor started between two peeks
    // The new window's first frame is heard (the crawl waits for it).
    QLoggingCategory::setFilterRules(QStringLiteral("com.vantorel.corvane.app.debug=true"));
    const auto logAll = qScopeGuard([] { QLoggingCategory::setFilterRules({}); });
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("^overlay: first frame")));
    peek->trigger();
    QTRY_VERIFY(panelVisible());
    QVERIFY(translucent());
    // A new, translucent window, with the blur hint asked for it once.
    PeekPanel* glass = m_delegate->overlay.panel();
    QVERIFY(glass != opaque);
    QVERIFY(glass->isTranslucent());
    QVERIFY(glass->requestedFormat().hasAlpha()); // asked of the platform
    QCOMPARE(m_blurredWindows, QList<QWindow*>{glass});
    waitForCrawls(m_crawls->size() + 1);
    peek->trigger();
    QTRY_VERIFY(!panelVisible());
    m_compositing = false; // and stopped again
    peek->trigger();
    QTRY_VERIFY(panelVisible());
    QVERIFY(!translucent());
    QVERIFY(!m_delegate->overlay.panel()->isTranslucent());
    QCOMPARE(m_blurredWindows.size(), 1);
}

// ---- The accessibility permission

void TestAppDelegate::grantWithoutBroadcastIsNoticedByThePoll()
{
    launch(false);
    QVERIFY(m_delegate->trustPollTimer);
    QCOMPARE(m_delegate->trustPollTimer->interval(), 2000);
    QSignalSpy restarts(m_delegate.get(), &AppDelegate::monitorsRestarted);
    const int added = m_monitors.added;
    m_trust.granted = true; // no broadcast
    QVERIFY(restarts.wait(2600));
    QCOMPARE(restarts.at(0).at(0).toBool(), true);
    QCOMPARE(m_monitors.added, added + 4);
    QCOMPARE(m_delegate->detector.installedMonitorCount(), 4);
    QVERIFY(!m_delegate->trustPollTimer);
    QVERIFY(m_delegate->wasTrusted);
}

void TestAppDelegate::broadcastWithoutChangeChangesNothing()
{
    launch(true);
    QSignalSpy restarts(m_delegate.get(), &AppDelegate::monitorsRestarted);
    const int added = m_monitors.added;
    const int reads = m_trust.reads;
    m_trust.announce();
    m_trust.announce();
    QTRY_COMPARE_WITH_TIMEOUT(m_trust.reads, reads + 2, 1500); // re-read after 0.5 s each
    QTest::qWait(50);
    QCOMPARE(restarts.size(), 0);
    QCOMPARE(m_monitors.added, added);
    QVERIFY(!m_delegate->trustPollTimer);
}

void TestAppDelegate::withdrawalRestartsMonitorsAndStartsPolling()
{
    launch(true);
    QSignalSpy restarts(m_delegate.get(), &AppDelegate::monitorsRestarted);
    QElapsedTimer clock;
    m_trust.granted = false;
    clock.start();
    m_trust.announce();
    QVERIFY(restarts.wait(2000));
    // Within 0.5 s of the broadcast (it is re-read exactly then), not before.
    QVERIFY2(clock.elapsed() >= 450 && clock.elapsed() < 1000,
             qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(restarts.at(0).at(0).toBool(), false);
    QVERIFY(m_delegate->trustPollTimer);
    QVERIFY(m_delegate->trustPollTimer->isActive());
    m_trust.granted = true;
    m_trust.announce();
    QVERIFY(restarts.wait(2000));
    QVERIFY(!m_delegate->trustPollTimer);
}

void TestAppDelegate::startTrustPollingTwiceKeepsOneTimer()
{
    launch(false);
    QPointer<QTimer> first = m_delegate->trustPollTimer;
    QVERIFY(first);
    m_delegate->startTrustPolling();
    m_delegate->startTrustPolling();
    QCOMPARE(m_delegate->trustPollTimer.data(), first.data());
    const auto timers = m_delegate->findChildren<QTimer*>();
    QCOMPARE(std::count_if(timers.cbegin(), timers.cend(),
                           [](QTimer* timer) { return timer->interval() == 2000; }),
             1);
}

void TestAppDelegate::holdInProgressKeepsItsStateAcrossRestart()
{
    launch(true);
    QSignalSpy restarts(m_delegate.get(), &AppDelegate::monitorsRestarted);
    m_delegate->detector.send(HoldStateMachine::Event::pinRequest());
    QTRY_VERIFY(panelVisible());
    QCOMPARE(m_delegate->detector.machine.state, State::pinned);
    m_trust.granted = false;
    m_trust.announce();
    QVERIFY(restarts.wait(2000));
    m_trust.granted = true;
    m_trust.announce();
    QVERIFY(restarts.wait(2000));
    QCOMPARE(restarts.size(), 2);
    QCOMPARE(m_delegate->detector.machine.state, State::pinned);
    QVERIFY(panelVisible());
    // The restarted monitors drive the same machine: a click outside the panel closes it.
    m_monitors.pointer = {-50, -50};
    m_monitors.emit(InputMonitors::Kind::mousePress);
    QCOMPARE(m_delegate->detector.machine.state, State::idle);
}

// ---- The target application and running commands

void TestAppDelegate::activatingOwnWindowKeepsPinnedOverlay()
{
    launch();
    m_workspace.activate(editor);
    pinOverlayFor(editor);
    m_workspace.activate(ourselves); // the settings window comes forward
    QCOMPARE(m_delegate->detector.machine.state, State::pinned);
    QVERIFY(panelVisible());
    QCOMPARE(m_delegate->lastExternalApp->pid, editor.pid);
}

void TestAppDelegate::switchingAwayClosesSwitchingToTargetDoesNot()
{
    launch();
    pinOverlayFor(editor);
    m_workspace.activate(editor); // re-activation of the target
    QCOMPARE(m_delegate->detector.machine.state, State::pinned);
    m_workspace.activate(viewer);
    QCOMPARE(m_delegate->detector.machine.state, State::idle);
    QCOMPARE(m_delegate->lastExternalApp->pid, viewer.pid);
    QTRY_VERIFY(!panelVisible());
}

void TestAppDelegate::peekItemWithOwnWindowInFrontPeeksLastExternalApp()
{
    launch();
    m_workspace.activate(viewer);
    m_workspace.activate(ourselves);
    m_delegate->statusMenuController->peekItem->trigger();
    QTRY_VERIFY(m_delegate->overlay.viewModel().pinned());
    QCOMPARE(m_delegate->targetApp->pid, viewer.pid);
    QCOMPARE(m_delegate->overlay.viewModel().appName(), viewer.name);
    waitForCrawls(1);
    QCOMPARE(m_crawls->at(0).at(0).value<RunningApp>().pid, viewer.pid);
    QCOMPARE(commandCount(m_delegate->overlay.viewModel().sections()), 2);
}

void TestAppDelegate::finishedCrawlWithOverlayHiddenOnlyUpdatesCache()
{
    launch();
    QVERIFY(!m_delegate->cache->catalog(*editor.appId));
    m_delegate->crawlAndUpdate(editor);
    waitForCrawls(1);
    QCOMPARE(m_crawls->at(0).at(1).toBool(), false);
    QCOMPARE(commandCount(m_delegate->cache->catalog(*editor.appId)->sections), 5);
    QVERIFY(!m_delegate->overlay.panel() || !m_delegate->overlay.panel()->isVisible());
    QVERIFY(m_delegate->overlay.viewModel().sections().isEmpty());
}

void TestAppDelegate::crawlOfAnotherAppLeavesOverlayUntouched()
{
    launch();
    QSemaphore gate;
    m_source->gates.insert(viewer.pid, &gate);
    m_delegate->crawlAndUpdate(viewer); // held at the gate
    pinOverlayFor(editor);
    gate.release(); // the viewer's crawl ends while the editor is shown; then the editor's runs
    waitForCrawls(2);
    m_source->gates.clear();
    QCOMPARE(m_crawls->at(0).at(0).value<RunningApp>().pid, viewer.pid);
    QCOMPARE(m_crawls->at(0).at(1).toBool(), false);
    QCOMPARE(m_delegate->overlay.viewModel().appName(), editor.name);
    QCOMPARE(commandCount(m_delegate->overlay.viewModel().sections()), 5);
    QVERIFY(m_delegate->cache->catalog(*viewer.appId)); // stored all the same
}

void TestAppDelegate::executeWithoutTargetOnlyCloses()
{
    launch();
    int presses = 0;
    auto quit = item("Quit");
    quit->pressedCounter = &presses;
    m_source->set(editor.pid, bar({menu("File", {quit})}));
    const MenuCommand command{{{"File", 0}, {"Quit", 0}}, ShortcutKeys::none, true, false};
    m_delegate->execute(command);
    QCOMPARE(m_delegate->detector.machine.state, State::idle);
    drainCrawlQueue();
    QCOMPARE(presses, 0);
    QCOMPARE(m_beeps, 0);
}

void TestAppDelegate::executeClosesThenPresses()
{
    launch();
    int presses = 0;
    auto quit = item("Quit");
    quit->pressedCounter = &presses;
    m_source->set(editor.pid, bar({menu("File", {item("New"), quit})}));
    pinOverlayFor(editor);
    waitForCrawls(1);
    m_delegate->overlay.viewModel().setQuery(QStringLiteral("quit"));
    m_delegate->overlay.viewModel().executeSelection();
    QCOMPARE(m_delegate->detector.machine.state, State::idle);
    QVERIFY(!m_delegate->targetApp);
    QTRY_COMPARE(presses, 1);
    QTRY_VERIFY(!panelVisible());
    QCoreApplication::processEvents();
    QCOMPARE(m_beeps, 0);
}

void TestAppDelegate::pressOfVanishedPathBeepsOnce()
{
    launch();
    pinOverlayFor(editor);
    waitForCrawls(1);
    // The editor's menus change under the open overlay: "File" is now "Fichier".
    m_source->set(editor.pid, bar({menu("Fichier", {item("New"), item("Open…"), item("Quit")})}));
    QTest::ignoreMessage(QtCriticalMsg, "press: could not resolve top-level menu File");
    m_delegate->overlay.viewModel().setQuery(QStringLiteral("quit"));
    m_delegate->overlay.viewModel().executeSelection();
    QTRY_COMPARE(m_beeps, 1);
    QTest::qWait(100);
    QCOMPARE(m_beeps, 1);
}

void TestAppDelegate::crawlWithoutPermissionIsSkippedAndLogged()
{
    launch(true);
    m_trust.setNow(false);
    QTest::ignoreMessage(QtCriticalMsg, "crawl skipped: process not trusted");
    m_delegate->crawlAndUpdate(editor);
    drainCrawlQueue();
    QCOMPARE(m_crawls->size(), 0);
    QVERIFY(!m_delegate->cache->catalog(*editor.appId));
}

// ---- The tray menu

void TestAppDelegate::menuHoldsTheSpecEntriesInOrder()
{
    launch(false);
    const auto actions = m_delegate->statusMenuController->menu->actions();
    QStringList entries;
    for (QAction* action : actions)
        entries << (action->isSeparator() ? QStringLiteral("—") : action->text());
    QCOMPARE(
        entries,
        (QStringList{QStringLiteral("Hold Ctrl to peek at any app's shortcuts"),
                     QStringLiteral("Accessibility access needed — click to fix"),
                     QStringLiteral("—"), QStringLiteral("Peek Current App"), QStringLiteral("—"),
                     QStringLiteral("Settings…"), QStringLiteral("Welcome to Corvane…"),
                     QStringLiteral("What's New in Corvane…"), QStringLiteral("Check for Updates…"),
                     QStringLiteral("—"), QStringLiteral("Quit Corvane")}));
    for (QAction* action : actions)
        if (!action->isSeparator())
            QCOMPARE(action->isEnabled(), action != m_delegate->statusMenuController->headerItem);
    QCOMPARE(actions.at(5)->shortcut(), QKeySequence(QStringLiteral("Ctrl+,")));
    QCOMPARE(actions.at(10)->shortcut(), QKeySequence(QStringLiteral("Ctrl+Q")));
}

void TestAppDelegate::headerNamesTheTrigger_data()
{
    QTest::addColumn<QString>("setting");
    QTest::addColumn<QString>("header");
    QTest::newRow("control") << "control"
                             << "Hold Super to peek at any app's shortcuts";
    QTest::newRow("option") << "option"
                            << "Hold Alt to peek at any app's shortcuts";
    QTest::newRow("command") << "command"
                             << "Hold Ctrl to peek at any app's shortcuts";
    QTest::newRow("off") << "off"
                         << "Hold-to-peek is off";
}

void TestAppDelegate::headerNamesTheTrigger()
{
    QFETCH(QString, setting);
    QFETCH(QString, header);
    launch();
    // Read when the menu opens, not at launch.
    QVERIFY(m_defaults->setString(QStringLiteral("triggerModifier"), setting));
    Q_EMIT m_delegate->statusMenuController->menu->aboutToShow();
    QCOMPARE(m_delegate->statusMenuController->headerItem->text(), header);
}

void TestAppDelegate::grantingHidesTheWarningAtNextOpening()
{
    launch(false);
    auto* item = m_delegate->statusMenuController->permissionItem;
    Q_EMIT m_delegate->statusMenuController->menu->aboutToShow();
    QVERIFY(item->isVisible());
    m_trust.granted = true;
    QTRY_VERIFY_WITH_TIMEOUT(m_delegate->wasTrusted, 3000); // the poll noticed it
    QVERIFY(item->isVisible());                             // the menu is closed: unchanged
    Q_EMIT m_delegate->statusMenuController->menu->aboutToShow();
    QVERIFY(!item->isVisible());
}

void TestAppDelegate::peekWithoutPermissionOpensWelcome()
{
    launch(false);
    QTRY_VERIFY(WelcomeWindowController::shared().window()); // the launch's announcement
    WelcomeWindowController::shared().close();
    QVERIFY(!WelcomeWindowController::shared().window());
    m_delegate->statusMenuController->peekItem->trigger();
    QVERIFY(WelcomeWindowController::shared().window());
    QVERIFY(WelcomeWindowController::shared().window()->isVisible());
    QCoreApplication::processEvents();
    QCOMPARE(m_delegate->detector.machine.state, State::idle);
    QVERIFY(!panelVisible());
    // A second choice brings the same window forward.
    QPointer<QQuickWindow> first = WelcomeWindowController::shared().window();
    m_delegate->statusMenuController->permissionItem->trigger();
    QCOMPARE(WelcomeWindowController::shared().window(), first.data());
}

void TestAppDelegate::peekItemToggles()
{
    launch();
    auto* peek = m_delegate->statusMenuController->peekItem;
    peek->trigger();
    QTRY_VERIFY(m_delegate->overlay.viewModel().pinned());
    QVERIFY(panelVisible());
    peek->trigger();
    QCOMPARE(m_delegate->detector.machine.state, State::idle);
    QTRY_VERIFY(!panelVisible());
    peek->trigger();
    QTRY_VERIFY(m_delegate->overlay.viewModel().pinned());
    QVERIFY(panelVisible());
}

void TestAppDelegate::whatsNewShowsEveryRelease()
{
    launch();
    const auto releases = ReleaseNotes::all(m_delegate->whatsNewActions(), QStringLiteral("Ctrl"));
    qsizetype features = 0;
    for (const auto& release : releases)
        features += release.features.size();
    QVERIFY(features > 0);
    const auto actions = m_delegate->statusMenuController->menu->actions();
    actions.at(7)->trigger(); // "What's New in Corvane…"
    QVERIFY(WhatsNewWindowController::shared().window());
    QQuickItem* view = WhatsNewWindowController::shared().view();
    QCOMPARE(test::items(view, QStringLiteral("featureRow")).size(), features);
    QCOMPARE(test::items(view, QStringLiteral("release")).size(), releases.size());
}

// ---- Launch announcements

// A settings file as the previous launch left it: `lastSeen` recorded (absent: none), and
// "launchedBefore" as given.
void TestAppDelegate::recordPreviousLaunch(bool launchedBefore, const QString& lastSeen)
{
    QVERIFY(m_defaults->remove(AppDelegate::launchedBeforeKey));
    if (launchedBefore)
        QVERIFY(m_defaults->setBool(AppDelegate::launchedBeforeKey, true));
    if (!lastSeen.isEmpty()) {
        QVERIFY(m_defaults->setString(VersionTracker::lastSeenKey, lastSeen));
        QVERIFY(m_defaults->setString(VersionTracker::installedKey, lastSeen));
    }
}

// Launches and lets the announcement (after the permission's first answer) happen.
void TestAppDelegate::launchAndAnnounce(bool trusted)
{
    m_trust.setNow(trusted);
    makeDelegate();
    QSignalSpy announced(m_delegate.get(), &AppDelegate::launchAnnounced);
    m_delegate->applicationDidFinishLaunching();
    QTRY_COMPARE(announced.size(), 1);
}

bool TestAppDelegate::welcomeOpen() const
{
    return WelcomeWindowController::shared().window() &&
           WelcomeWindowController::shared().window()->isVisible();
}

bool TestAppDelegate::whatsNewOpen() const
{
    return WhatsNewWindowController::shared().window() &&
           WhatsNewWindowController::shared().window()->isVisible();
}

void TestAppDelegate::firstLaunchOpensWelcomeEvenAfterAnUpdate()
{
    // A record of 0.9 (say, from an earlier account copy) but no "launchedBefore".
    recordPreviousLaunch(false, QStringLiteral("0.9"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.0"));
    launchAndAnnounce();
    QVERIFY(welcomeOpen());
    QVERIFY(!whatsNewOpen());
    QCOMPARE(m_defaults->boolValue(AppDelegate::launchedBeforeKey), std::optional(true));
    QCOMPARE(m_defaults->string(VersionTracker::lastSeenKey), QStringLiteral("1.0"));
}

void TestAppDelegate::updateWithPermissionOpensWhatsNew()
{
    recordPreviousLaunch(true, QStringLiteral("0.9"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.0"));
    launchAndAnnounce();
    QVERIFY(whatsNewOpen());
    QVERIFY(!welcomeOpen());
    // The 1.0 notes: one release, so no version line.
    QQuickItem* view = WhatsNewWindowController::shared().view();
    QCOMPARE(test::items(view, QStringLiteral("release")).size(), 1);
    QCOMPARE(m_defaults->string(VersionTracker::lastSeenKey), QStringLiteral("1.0"));
}

void TestAppDelegate::updateWithoutNewNotesOpensNothing()
{
    // 1.0 → 1.0.1: the catalogue has nothing newer than 1.0, so the policy returns nothing.
    recordPreviousLaunch(true, QStringLiteral("1.0"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.0.1"));
    launchAndAnnounce();
    QVERIFY(!whatsNewOpen());
    QVERIFY(!welcomeOpen());
    QCOMPARE(m_defaults->string(VersionTracker::lastSeenKey), QStringLiteral("1.0.1"));
}

void TestAppDelegate::updateWithoutPermissionOpensWelcomeAndGivesUpTheNotes()
{
    recordPreviousLaunch(true, QStringLiteral("0.9"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.0"));
    launchAndAnnounce(false);
    QVERIFY(welcomeOpen());
    QVERIFY(!whatsNewOpen());
    // The next launch, with the permission: the notes are not offered again.
    cleanup();
    launchAndAnnounce();
    QVERIFY(!whatsNewOpen());
    QVERIFY(!welcomeOpen());
}

void TestAppDelegate::sameVersionOpensNothing()
{
    recordPreviousLaunch(true, QStringLiteral("1.0"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.0"));
    launchAndAnnounce();
    QVERIFY(!whatsNewOpen());
    QVERIFY(!welcomeOpen());
}

void TestAppDelegate::downgradeOpensNothing()
{
    recordPreviousLaunch(true, QStringLiteral("2.0"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.0"));
    launchAndAnnounce();
    QVERIFY(!whatsNewOpen());
    QVERIFY(!welcomeOpen());
}

void TestAppDelegate::buildWithoutVersionOpensNothingAndWritesNoRecord()
{
    recordPreviousLaunch(true, QStringLiteral("0.9"));
    QCoreApplication::setApplicationVersion(QString());
    launchAndAnnounce();
    QVERIFY(!whatsNewOpen());
    QVERIFY(!welcomeOpen());
    QCOMPARE(m_defaults->string(VersionTracker::lastSeenKey), QStringLiteral("0.9"));
}

QTEST_MAIN(TestAppDelegate)
#include "tst_appdelegate.moc"
