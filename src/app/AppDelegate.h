#pragma once

// The spine of Corvane: owns every long-lived object, turns the trigger settings into detector
// parameters, wires the hold detector's effects to the overlay and the overlay's callbacks back to
// the detector and the command runner, watches the accessibility permission, tracks the application
// in front, crawls its menus and runs its commands.

#include "menus/CommandHistory.h"
#include "menus/FavoritesStore.h"
#include "menus/MenuCatalogCache.h"
#include "menus/MenuTree.h"
#include "overlay/OverlayPanelController.h"
#include "platform/RunningApp.h"
#include "trigger/HoldDetector.h"
#include "whatsnew/ReleaseNotes.h"

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

namespace corvane {

class AccessibilityTrust;
class InputMonitors;
class StatusMenuController;
class UserDefaults;
class Workspace;

class AppDelegate : public QObject {
    Q_OBJECT

public:
    // What the delegate needs from the operating system; main() passes the Linux implementations,
    // tests may pass their own.
    struct Platform {
        InputMonitors& monitors;
        Workspace& workspace;
        AccessibilityTrust& trust;
        std::shared_ptr<MenuSource> menuSource;
        std::function<void()> beep;
        // Whether a compositor draws the panel's transparency now (the glass is then
        // translucent), and the blur-behind request for the panel. Absent: solid glass.
        std::function<bool()> isCompositing;
        std::function<void(QWindow&)> requestBlurBehind;
        // Whether the status menu puts an icon in the system tray (tests build it without one).
        bool showStatusItem = true;
        // Asks where to save a file, suggesting `suggested`; "" when the user cancels.
        std::function<QString(const QString& suggested)> askSavePath;
    };

    AppDelegate(UserDefaults& defaults, Platform platform, QObject* parent = nullptr);
    ~AppDelegate() override;

    // Set once by main() and never cleared.
    static inline AppDelegate* shared = nullptr;

    // Written true at the end of the first launch on this account: the Welcome window opens on the
    // first launch (and later only while accessibility is off).
    static inline const QString launchedBeforeKey = QStringLiteral("launchedBefore");

    // The launch sequence: defaults, tray, wiring, monitors, observers, and the announcement once
    // the permission has been read.
    void applicationDidFinishLaunching();
    // The Welcome window, What's New, or nothing.
    void announceLaunch();
    void reloadTriggerSettings();
    QString triggerSymbol() const;
    // What the release notes' buttons do (open the settings window).
    WhatsNewActions whatsNewActions() const;
    // Whether accessibility is on: the last answer of the platform, never waited for.
    bool isTrusted() const;
    // Whether the user listed `app` among those where holding the trigger does nothing.
    bool isExcluded(const std::optional<RunningApp>& app) const;

    // Built in this order and destroyed in the reverse one: the overlay and the detector go before
    // the cache and the favourites.
    FavoritesStore favorites;
    CommandHistory history;
    std::shared_ptr<MenuCatalogCache> cache; // shared with the crawl jobs, which hold it weakly
    HoldDetector detector;
    OverlayPanelController overlay;
    std::unique_ptr<StatusMenuController> statusMenuController;
    std::optional<RunningApp> targetApp;
    std::optional<RunningApp> lastExternalApp;
    bool wasTrusted = false;
    QPointer<QTimer> trustPollTimer;

    // The visible panel's frame, for the detector and the platform's input filter.
    std::optional<QRectF> visiblePanelFrame() const;

    // Reachable for tests.
    void crawlAndUpdate(const RunningApp& app);
    void execute(const MenuCommand& command);
    // "Export…": the shown application's shortcut sheet, saved where the user says.
    void exportShortcuts();
    void refreshTrust();
    void startTrustPolling();

Q_SIGNALS:
    // The launch announcement has run: the Welcome window, What's New or nothing is showing.
    void launchAnnounced();
    // For tests and benchmarks: a crawl's catalog was stored (on the main thread, after the
    // overlay was refreshed or left alone).
    void crawlFinished(const corvane::RunningApp& app, bool refreshedOverlay);
    // The detector's monitors were installed anew after a change of permission.
    void monitorsRestarted(bool trusted);

private:
    void registerDefaults();
    void wireDetector();
    void wireOverlay();
    void showOverlay();
    using OverlayFill = void (OverlayPanelController::*)(const RunningApp&,
                                                         const std::optional<MenuCatalog>&,
                                                         const QStringList&, bool, bool, bool,
                                                         const QString&);
    // Calls present() or stage() with the application's cached catalog, its favourites and the
    // display settings.
    void fillOverlay(OverlayFill fill, const RunningApp& app);
    void observeAppSwitches();
    void observeTrustChanges();
    void applicationActivated(const RunningApp& app);
    std::optional<RunningApp> frontmostOtherApplication() const;
    bool panelIsVisible() const;

    bool isCompositing() const;
    // A new overlay window: the blur hint where it shows, the first-frame signal.
    void adoptPanel(PeekPanel* panel);
    void firstFrameSwapped();
    void startCrawlAfterFirstFrame();
    void crawlFailedOnMainThread(const RunningApp& app, MenuBarError why);
    void crawlFinishedOnMainThread(quint64 sequence, const RunningApp& app,
                                   const MenuCatalog& catalog);

    UserDefaults& m_defaults;
    Platform m_platform;
    // Which crawl was this hold's prefetch, and whether it ended before the overlay showed
    // (reported with the first frame, for the shell benchmark).
    quint64 m_crawlSequence = 0;
    quint64 m_prefetchCrawl = 0;
    bool m_prefetchFinished = false;
    bool m_awaitingFirstFrame = false;
    bool m_exportDialogOpen = false;
    std::optional<RunningApp> m_crawlAfterFirstFrame;
};

} // namespace corvane
