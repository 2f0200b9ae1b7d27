#include "AppDelegate.h"

#include "AppLog.h"
#include "SettingsWindow.h"
#include "StatusMenuController.h"
#include "TriggerSettings.h"
#include "menus/MenuCrawler.h"
#include "menus/MenuWalk.h"
#include "platform/AccessibilityTrust.h"
#include "platform/InputMonitors.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "shortcuts/ShortcutSheet.h"
#include "whatsnew/VersionTracker.h"
#include "whatsnew/WelcomeWindowController.h"
#include "whatsnew/WhatsNewPolicy.h"
#include "whatsnew/WhatsNewWindowController.h"

#include <QDir>
#include <QSaveFile>

namespace corvane {

namespace {
// A broadcast may come before the bus has settled; the permission is read half a second later.
constexpr int trustRefreshDelayMs = 500;
constexpr int trustPollIntervalMs = 2000;
// How long a command waits for its application to be active again after the panel had the
// keyboard.
constexpr int activationWaitMs = 500;
} // namespace

AppDelegate::AppDelegate(UserDefaults& defaults, Platform platform, QObject* parent)
    : QObject(parent), favorites(defaults), history(defaults),
      cache(std::make_shared<MenuCatalogCache>()), detector(platform.monitors),
      m_defaults(defaults), m_platform(std::move(platform))
{
    qRegisterMetaType<RunningApp>();
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    registerDefaults();
    statusMenuController = std::make_unique<StatusMenuController>(m_platform.showStatusItem);
    wireDetector();
    wireOverlay();
    reloadTriggerSettings();
    detector.start();
    observeAppSwitches();
    observeTrustChanges();
    // The panel and its view are made now rather than in the middle of the first peek, with
    // the visual the screen's compositing calls for.
    connect(&overlay, &OverlayPanelController::panelCreated, this, &AppDelegate::adoptPanel);
    connect(&overlay, &OverlayPanelController::hidden, this,
            [] { qCDebug(lcApp, "overlay: hidden"); });
    overlay.setTranslucent(isCompositing());
    overlay.prepare();
    // The launch announcements, once the permission has been read: the Welcome window depends on
    // it. Never waited for: the answer arrives later on this thread.
    m_platform.trust.refresh([self = QPointer<AppDelegate>(this)](bool trusted) {
        qCDebug(lcApp, "launch: accessibility %s", trusted ? "on" : "off");
        if (self)
            self->announceLaunch();
    });
    qCInfo(lcApp, "Corvane %s started: trigger %s, hold delay %.2f s, %lld event monitors",
           qUtf8Printable(QCoreApplication::applicationVersion()),
           qUtf8Printable(triggerSymbol().isEmpty() ? QStringLiteral("off") : triggerSymbol()),
           detector.holdDelay, qint64(detector.installedMonitorCount()));
}

void AppDelegate::announceLaunch()
{
    // 1. Whether Corvane ran on this account before.
    const bool launchedBefore = m_defaults.boolValue(launchedBeforeKey).value_or(false);
    // 2. The version record, committed before any window is chosen.
    VersionTracker::Outcome outcome = VersionTracker::Outcome::sameVersion();
    if (const auto version = AppVersion::current()) {
        VersionTracker tracker(*version, launchedBefore, m_defaults);
        outcome = tracker.outcome();
        tracker.commit();
    }
    // 3. The releases to announce.
    const QList<WhatsNewRelease> releases = WhatsNewPolicy::releasesToShow(
        outcome, ReleaseNotes::all(whatsNewActions(), triggerSymbol()), ReleaseNotes::floor());
    // 4. The window: the permission first, then the announcement; never What's New on a first
    // launch.
    if (!launchedBefore) {
        m_defaults.setBool(launchedBeforeKey, true);
        qCInfo(lcApp, "launch: first launch, the Welcome window opens");
        WelcomeWindowController::shared().show();
    } else if (!isTrusted()) {
        qCInfo(lcApp, "launch: accessibility is off, the Welcome window opens");
        WelcomeWindowController::shared().show();
    } else if (!releases.isEmpty()) {
        qCInfo(lcApp, "launch: What's New opens with %lld releases", qint64(releases.size()));
        WhatsNewWindowController::shared().show(releases);
    }
    Q_EMIT launchAnnounced();
}

void AppDelegate::registerDefaults()
{
    TriggerSettings::registerDefaults(m_defaults);
}

void AppDelegate::reloadTriggerSettings()
{
    detector.holdDelay = TriggerSettings::holdDelay(m_defaults);
    detector.triggerModifier =
        TriggerSettings::triggerModifier(TriggerSettings::triggerSetting(m_defaults));
    overlay.viewModel().setTriggerSymbol(triggerSymbol());
}

QString AppDelegate::triggerSymbol() const
{
    return TriggerSettings::triggerSymbol(TriggerSettings::triggerSetting(m_defaults));
}

WhatsNewActions AppDelegate::whatsNewActions() const
{
    return {.openSettings = [] { SettingsWindowPresenter::shared().show(); }};
}

bool AppDelegate::isTrusted() const
{
    return m_platform.trust.isTrusted();
}

bool AppDelegate::isExcluded(const std::optional<RunningApp>& app) const
{
    if (!app || !app->appId)
        return false;
    const QStringList excluded =
        m_defaults.stringList(TriggerSettings::excludedApplicationsKey).value_or(QStringList{});
    return std::any_of(excluded.cbegin(), excluded.cend(),
                       [&app](const QString& id) { return canonicallyEqual(id, *app->appId); });
}

std::optional<RunningApp> AppDelegate::frontmostOtherApplication() const
{
    auto front = m_platform.workspace.frontmostApplication();
    if (front && front->pid == Workspace::thisProcessId())
        return std::nullopt;
    return front;
}

bool AppDelegate::panelIsVisible() const
{
    return overlay.panel() && overlay.panel()->isVisible();
}

std::optional<QRectF> AppDelegate::visiblePanelFrame() const
{
    if (!panelIsVisible())
        return std::nullopt;
    return QRectF(overlay.panel()->geometry());
}

void AppDelegate::wireDetector()
{
    QPointer<AppDelegate> self(this);
    detector.onEffect = [self](const HoldStateMachine::Effects& effects) {
        for (const auto effect : effects) {
            if (!self)
                return;
            switch (effect) {
            case HoldStateMachine::Effect::startTimer:
                // Prefetch while the user is still holding.
                if (const auto front = self->frontmostOtherApplication())
                    self->crawlAndUpdate(*front);
                else if (self->lastExternalApp)
                    self->crawlAndUpdate(*self->lastExternalApp);
                self->m_prefetchCrawl = self->m_crawlSequence;
                self->m_prefetchFinished = false;
                break;
            case HoldStateMachine::Effect::cancelTimer:
                break;
            case HoldStateMachine::Effect::show:
                self->showOverlay();
                break;
            case HoldStateMachine::Effect::pin:
                // On a later turn of the main loop; OverlayPanelController::pin() acts only on
                // a visible panel.
                QMetaObject::invokeMethod(
                    self.data(),
                    [self] {
                        if (self)
                            self->overlay.pin();
                    },
                    Qt::QueuedConnection);
                break;
            case HoldStateMachine::Effect::hide:
                self->targetApp.reset();
                self->overlay.dismiss();
                break;
            }
        }
    };
    detector.panelFrameProvider = [self] {
        return self ? self->visiblePanelFrame() : std::nullopt;
    };
    detector.dialogOpen = [self] { return self && self->m_exportDialogOpen; };
    detector.canArmProvider = [self] {
        if (!self)
            return false;
        // Holding the trigger while one of Corvane's own windows is in front never arms.
        const auto front = self->m_platform.workspace.frontmostApplication();
        return self->isTrusted() && self->detector.triggerModifier.has_value() &&
               (!front || front->pid != Workspace::thisProcessId()) && !self->isExcluded(front);
    };
}

void AppDelegate::wireOverlay()
{
    QPointer<AppDelegate> self(this);
    auto& model = overlay.viewModel();
    model.onExecute = [self](const MenuCommand& command) {
        if (self)
            self->execute(command);
    };
    model.onToggleFavorite = [self](const MenuCommand& command) {
        if (!self || !self->targetApp || !self->targetApp->appId)
            return;
        const QString bundleID = *self->targetApp->appId;
        self->favorites.toggle(command.id(), bundleID);
        // Read back rather than trusting the toggle: a store that cannot be written keeps the
        // old list, and the star must show the real state.
        self->overlay.viewModel().setFavoriteOrder(self->favorites.ids(bundleID));
        const QStringList ids = self->favorites.ids(bundleID);
        self->overlay.viewModel().setFavoriteIDs(QSet<QString>(ids.cbegin(), ids.cend()));
    };
    model.onExport = [self] {
        if (self)
            self->exportShortcuts();
    };
    model.onPinRequest = [self] {
        if (self)
            self->detector.send(HoldStateMachine::Event::pinRequest());
    };
    model.onCloseRequest = [self] {
        if (self)
            self->detector.send(HoldStateMachine::Event::closeRequest());
    };
}

void AppDelegate::showOverlay()
{
    auto app = frontmostOtherApplication();
    if (!app)
        app = lastExternalApp;
    if (!app || !app->appId) {
        detector.send(HoldStateMachine::Event::closeRequest());
        return;
    }
    targetApp = app;
    // A compositor may have started or stopped since the last peek.
    overlay.setTranslucent(isCompositing());
    fillOverlay(&OverlayPanelController::present, *app);
    m_awaitingFirstFrame = true;
    // The menus are read again on every show; the overlay is refreshed when they arrive. The
    // crawl is queued once the first frame is on screen (or 100 ms later at most): on a small
    // machine its requests and the application's answers would otherwise delay that frame.
    m_crawlAfterFirstFrame = app;
    QTimer::singleShot(100, this, &AppDelegate::startCrawlAfterFirstFrame);
}

void AppDelegate::fillOverlay(OverlayFill fill, const RunningApp& app)
{
    const QString bundleID = *app.appId;
    const QStringList favoriteIDs = favorites.ids(bundleID);
    if (TriggerSettings::displayOption(m_defaults, TriggerSettings::rememberCommandsKey)) {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        overlay.viewModel().setHistory(history.weights(bundleID, now),
                                       history.recent(bundleID, now));
    } else {
        overlay.viewModel().setHistory({}, {});
    }
    const auto flag = [this](const QString& key) {
        return TriggerSettings::displayOption(m_defaults, key);
    };
    (overlay.*fill)(app, cache->catalog(bundleID), favoriteIDs,
                    flag(TriggerSettings::showDisabledItemsKey),
                    flag(TriggerSettings::showItemsWithoutShortcutKey),
                    flag(TriggerSettings::glassyBackgroundKey), triggerSymbol());
}

bool AppDelegate::isCompositing() const
{
    return m_platform.isCompositing && m_platform.isCompositing();
}

void AppDelegate::adoptPanel(PeekPanel* panel)
{
    // Only a compositor reads the blur hint, and only a translucent panel shows it.
    if (panel->isTranslucent() && m_platform.requestBlurBehind)
        m_platform.requestBlurBehind(*panel);
    connect(panel, &QQuickWindow::frameSwapped, this, &AppDelegate::firstFrameSwapped);
}

void AppDelegate::firstFrameSwapped()
{
    if (std::exchange(m_awaitingFirstFrame, false))
        qCDebug(lcApp, "overlay: first frame for %s, prefetch %s",
                qUtf8Printable(targetApp ? targetApp->appId.value_or(QString()) : QString()),
                m_prefetchFinished ? "finished" : "pending");
    startCrawlAfterFirstFrame();
}

void AppDelegate::startCrawlAfterFirstFrame()
{
    if (const auto app = std::exchange(m_crawlAfterFirstFrame, std::nullopt))
        crawlAndUpdate(*app);
}

void AppDelegate::observeAppSwitches()
{
    connect(&m_platform.workspace, &Workspace::applicationActivated, this,
            &AppDelegate::applicationActivated);
}

void AppDelegate::applicationActivated(const RunningApp& app)
{
    // Activating Corvane itself (its settings or Welcome window) changes nothing.
    if (app.pid == Workspace::thisProcessId())
        return;
    lastExternalApp = app;
    if (panelIsVisible() && (!targetApp || targetApp->pid != app.pid))
        detector.send(HoldStateMachine::Event::closeRequest());
}

void AppDelegate::crawlAndUpdate(const RunningApp& app)
{
    if (!isTrusted()) {
        qCCritical(lcCrawl, "crawl skipped: process not trusted");
        return;
    }
    std::weak_ptr<MenuCatalogCache> weakCache = cache;
    QPointer<AppDelegate> self(this);
    const quint64 sequence = ++m_crawlSequence;
    MenuCrawler::queue().post([weakCache, self, app, sequence, source = m_platform.menuSource] {
        // The job holds the delegate weakly (through its cache) and the application strongly.
        const auto cache = weakCache.lock();
        if (!cache)
            return;
        MenuBarError why = menuBarFound;
        const auto catalog = MenuCrawler(source).crawl(app, &why);
        if (!catalog) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [self, app, why] {
                    if (self)
                        self->crawlFailedOnMainThread(app, why);
                },
                Qt::QueuedConnection);
            return;
        }
        cache->store(*catalog);
        // Back on the main thread; the application object outlives every delegate.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, sequence, app, catalog] {
                if (self)
                    self->crawlFinishedOnMainThread(sequence, app, *catalog);
            },
            Qt::QueuedConnection);
    });
}

void AppDelegate::crawlFailedOnMainThread(const RunningApp& app, MenuBarError why)
{
    const auto showsApp = [this, pid = app.pid] {
        return panelIsVisible() && targetApp && targetApp->pid == pid;
    };
    if (!showsApp())
        return;
    switch (why) {
    case applicationStarting:
        // It may still be joining the bus: asked again a second later, while the panel shows it.
        QTimer::singleShot(1000, this, [this, app, showsApp] {
            if (showsApp())
                crawlAndUpdate(app);
        });
        break;
    case applicationNotFound:
        overlay.viewModel().setUnreadable(OverlayViewModel::Unreadable::notOnBus);
        break;
    case applicationUnpublished:
        overlay.viewModel().setUnreadable(OverlayViewModel::Unreadable::restartNeeded);
        break;
    default:
        break; // a slow or menu-less application: the panel keeps waiting for the next crawl
    }
}

void AppDelegate::crawlFinishedOnMainThread(quint64 sequence, const RunningApp& app,
                                            const MenuCatalog& catalog)
{
    const bool refresh = panelIsVisible() && targetApp && targetApp->pid == app.pid;
    if (refresh) {
        overlay.update(catalog);
        qCDebug(lcApp, "overlay: menus of %s shown", qUtf8Printable(app.appId.value_or(QString())));
    }
    if (sequence == m_prefetchCrawl) {
        m_prefetchFinished = true;
        // The hold's prefetch, while the hold still waits for its delay: the overlay's views
        // are made now rather than when it is asked to show. A hold that ended (released, or a
        // chord such as Ctrl+C) shows nothing, and nothing is made for it.
        if (detector.machine.state == HoldStateMachine::State::arming && app.appId)
            fillOverlay(&OverlayPanelController::stage, app);
    }
    Q_EMIT crawlFinished(app, refresh);
}

void AppDelegate::execute(const MenuCommand& command)
{
    if (!targetApp) {
        detector.send(HoldStateMachine::Event::closeRequest());
        return;
    }
    // Taken before closing: the hide effect clears targetApp.
    const qint64 pid = targetApp->pid;
    const std::optional<QString> bundleID = targetApp->appId;
    detector.send(HoldStateMachine::Event::closeRequest());
    QPointer<AppDelegate> self(this);
    const auto press = [self, pid, bundleID, command, source = m_platform.menuSource] {
        MenuCrawler::queue().post([self, pid, bundleID, command, source] {
            const bool failed =
                MenuCrawler(source).press(command.path, pid) == PressOutcome::failed;
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [self, failed, bundleID, id = command.id()] {
                    if (!self)
                        return;
                    if (failed) {
                        if (self->m_platform.beep)
                            self->m_platform.beep();
                    } else if (bundleID &&
                               TriggerSettings::displayOption(
                                   self->m_defaults, TriggerSettings::rememberCommandsKey)) {
                        self->history.record(id, *bundleID);
                    }
                },
                Qt::QueuedConnection);
        });
    };
    const auto front = m_platform.workspace.frontmostApplication();
    if (!front || front->pid == pid) {
        press();
        return;
    }
    // The panel had the keyboard (on Wayland it takes it): a command that acts on the focused
    // widget (Paste, Select All) must find the application active again, so the press waits for
    // its activation, at most activationWaitMs.
    auto* wait = new QTimer(this);
    wait->setSingleShot(true);
    const auto go = [wait, press] {
        if (!wait->isActive())
            return; // pressed already
        wait->stop();
        wait->deleteLater();
        press();
    };
    connect(&m_platform.workspace, &Workspace::applicationActivated, wait,
            [go, pid](const RunningApp& app) {
                if (app.pid == pid)
                    go();
            });
    connect(wait, &QTimer::timeout, wait, [wait, press] {
        wait->deleteLater();
        press();
    });
    wait->start(activationWaitMs);
}

void AppDelegate::exportShortcuts()
{
    if (!targetApp || !targetApp->appId || m_exportDialogOpen || !m_platform.askSavePath)
        return;
    const auto catalog = cache->catalog(*targetApp->appId);
    if (!catalog) {
        if (m_platform.beep)
            m_platform.beep();
        return;
    }
    // The dialog runs its own loop; the panel stays pinned behind it.
    m_exportDialogOpen = true;
    overlay.lendKeyboard(true);
    const QString path = m_platform.askSavePath(ShortcutSheet::suggestedPath(catalog->appName));
    m_exportDialogOpen = false;
    overlay.lendKeyboard(false);
    if (path.isEmpty())
        return;
    QSaveFile file(path);
    const bool saved = file.open(QIODevice::WriteOnly) &&
                       file.write(ShortcutSheet::forPath(*catalog, path).toUtf8()) >= 0 &&
                       file.commit();
    QString shown = QDir::toNativeSeparators(path);
    if (const QString home = QDir::homePath(); shown.startsWith(home + u'/'))
        shown = u'~' + shown.mid(home.size());
    if (saved) {
        overlay.viewModel().setNotice(tr("Saved to %1").arg(shown));
    } else {
        qCCritical(lcApp, "export: %s: %s", qUtf8Printable(path),
                   qUtf8Printable(file.errorString()));
        overlay.viewModel().setNotice(tr("Could not save %1: %2").arg(shown, file.errorString()));
    }
}

void AppDelegate::observeTrustChanges()
{
    QPointer<AppDelegate> self(this);
    m_platform.trust.refresh([self](bool trusted) {
        if (!self)
            return;
        self->wasTrusted = trusted;
        if (!trusted)
            self->startTrustPolling();
    });
    connect(&m_platform.trust, &AccessibilityTrust::broadcast, this,
            [this] { QTimer::singleShot(trustRefreshDelayMs, this, &AppDelegate::refreshTrust); });
    if (!m_platform.trust.watch())
        qCWarning(lcApp, "the accessibility broadcast cannot be heard; a grant is noticed by the "
                         "poll, a withdrawal at the next hold");
}

void AppDelegate::refreshTrust()
{
    QPointer<AppDelegate> self(this);
    m_platform.trust.refresh([self](bool trusted) {
        if (!self || trusted == self->wasTrusted)
            return;
        self->wasTrusted = trusted;
        // The monitors are installed anew; the hold state machine keeps its state.
        self->detector.stop();
        self->detector.start();
        qCInfo(lcApp, "accessibility %s: %lld event monitors installed anew",
               trusted ? "switched on" : "switched off",
               qint64(self->detector.installedMonitorCount()));
        if (!trusted) {
            self->startTrustPolling();
        } else if (self->trustPollTimer) {
            self->trustPollTimer->stop();
            delete self->trustPollTimer.data();
        }
        Q_EMIT self->monitorsRestarted(trusted);
    });
}

void AppDelegate::startTrustPolling()
{
    if (trustPollTimer)
        return;
    auto* timer = new QTimer(this);
    timer->setInterval(trustPollIntervalMs);
    connect(timer, &QTimer::timeout, this, [this] {
        qCDebug(lcApp, "permission poll");
        refreshTrust();
    });
    timer->start();
    trustPollTimer = timer;
}

} // namespace corvane
