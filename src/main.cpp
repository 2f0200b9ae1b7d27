// Corvane's entry point: one instance per session, the Linux platform services, the delegate, the
// event loop. Everything else lives in the subsystem libraries.

#include "app/AppDelegate.h"
#include "app/SettingsWindow.h"
#include "app/StatusMenuController.h"
#include "app/Translations.h"
#include "app/TriggerSettings.h"
#include "platform/UserDefaults.h"
#include "platform/linux/AccessibilitySwitch.h"
#include "platform/linux/AppIdentity.h"
#include "platform/linux/AtspiClient.h"
#include "platform/linux/AtspiKeyMonitors.h"
#include "platform/linux/AtspiWorkspace.h"
#include "platform/linux/DBusMenu.h"
#include "platform/linux/DisplaySession.h"
#include "platform/linux/JournalLog.h"
#include "platform/linux/LinuxDesktop.h"
#include "platform/linux/QuitOnSignals.h"
#include "platform/linux/ShellCompanion.h"
#include "platform/linux/SingleInstance.h"
#include "platform/linux/TrayWatch.h"
#include "platform/linux/WaylandWindows.h"
#include "platform/linux/X11BusAddress.h"
#include "platform/linux/X11Compositing.h"
#include "platform/linux/X11Workspace.h"
#include "platform/linux/XInputMonitors.h"

#include <QApplication>
#include <QFileDialog>
#include <QLoggingCategory>
#include <QQuickWindow>
#include <QSystemTrayIcon>
#include <QTextStream>

int main(int argc, char* argv[])
{
    using namespace corvane;

    // Options are read before anything needs a display: --help and --version work anywhere, and
    // --peek needs only the session bus.
    bool peek = false;
    for (int i = 1; i < argc; ++i) {
        const QByteArray option = argv[i];
        if (option == "--help" || option == "-h") {
            QTextStream(stdout)
                << "usage: corvane [--peek | --help | --version]\n\n"
                   "Corvane lives in the tray. Hold Ctrl for a moment over any application to see "
                   "its menu\ncommands and their shortcuts; release over the panel to search and "
                   "run them.\nThe tray menu has its settings.\n\n"
                   "  --peek     show the running Corvane's panel for the application in front\n"
                   "             (bind it to a key in your desktop's keyboard shortcuts)\n";
            return 0;
        }
        if (option == "--version" || option == "-v") {
            QTextStream(stdout) << "corvane " CORVANE_VERSION "\n";
            return 0;
        }
        if (option == "--peek") {
            peek = true;
            continue;
        }
        QTextStream(stderr) << "corvane: unknown option " << option << " (see corvane --help)\n";
        return 2;
    }
    if (peek) {
        QCoreApplication asking(argc, argv);
        if (SingleInstance::askFirstToPeek())
            return 0;
        QTextStream(stderr) << "corvane: Corvane is not running in this session; start it first "
                               "(corvane &)\n";
        return 1;
    }
    // The session's own display: Wayland where there is one (not XWayland), else X11. Without a
    // display, one line says so (Qt would abort).
    if (!DisplaySession::prepare("corvane", argc, argv))
        return 1;
    const bool wayland = DisplaySession::chosen() == DisplaySession::Kind::wayland;
    // Asked before there is anything on screen to keep waiting: one round trip to the compositor.
    const bool ownTitleBar = wayland && !WaylandWindows::compositorDrawsFrames();
    // A tray utility that lives all day: the software scene graph, which needs no GPU driver, and
    // no OpenGL integration in the platform plugin either, or it may load Mesa's driver and LLVM
    // (some hundred MB resident) for nothing. A value the user set is kept.
    const char* glSwitch =
        wayland ? "QT_WAYLAND_CLIENT_BUFFER_INTEGRATION" : "QT_XCB_GL_INTEGRATION";
    if (!qEnvironmentVariableIsSet(glSwitch))
        qputenv(glSwitch, "none");
    // Qt's Wayland client asks for its buffer integration (and warns that there is "none") only
    // to learn whether it may draw window decorations, which it draws only with one: saying no
    // at once changes nothing on screen.
    if (wayland && !qEnvironmentVariableIsSet("QT_WAYLAND_DISABLE_WINDOWDECORATION"))
        qputenv("QT_WAYLAND_DISABLE_WINDOWDECORATION", "1");
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    // Debug lines (the permission poll) only when asked for with QT_LOGGING_RULES.
    QLoggingCategory::setFilterRules(QStringLiteral("com.vantorel.corvane.*.debug=false"));

    // The journal in a user session (`journalctl --user -t corvane`), stderr otherwise.
    JournalLog::install();
    JournalLog::rewordToolkitNotices();

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Corvane"));
    QApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.vantorel.Corvane"));
    // The secondary windows come and go; Corvane lives in the tray until "Quit Corvane".
    QApplication::setQuitOnLastWindowClosed(false);
    // German and French from the system locale (LC_ALL, LC_MESSAGES, LANG, LANGUAGE).
    Translations::install();

    SingleInstance instance;
    if (instance.claim() == SingleInstance::Claim::second) {
        const bool answered = SingleInstance::askFirstToShowSettings();
        QTextStream(stderr) << (answered ? "Corvane is already running; its settings are shown.\n"
                                         : "Corvane is already running but does not answer.\n");
        return 0;
    }

    // Logout's SIGTERM, or ^C in a terminal, quits like "Quit Corvane".
    QuitOnSignals quitOnSignals;

    // The platform services of the session: X11, or Wayland through the accessibility bus.
    std::unique_ptr<XInputMonitors> xInput;
    std::unique_ptr<AtspiKeyMonitors> busKeys;
    std::unique_ptr<Workspace> workspace;
    InputMonitors* monitors = nullptr;
    bool inputWatched = false;
    QString whyNot;
    if (wayland) {
        busKeys = std::make_unique<AtspiKeyMonitors>();
        inputWatched = busKeys->isAvailable(&whyNot);
        monitors = busKeys.get();
        workspace = std::make_unique<AtspiWorkspace>();
        WaylandWindows::arrange(Workspace::thisProcessId());
    } else {
        xInput = std::make_unique<XInputMonitors>();
        inputWatched = xInput->isAvailable(&whyNot);
        monitors = xInput.get();
        workspace = std::make_unique<X11Workspace>();
    }
    if (!inputWatched)
        QTextStream(stderr) << "corvane: holding the trigger cannot be watched here (" << whyNot
                            << "); \"Peek Current App\" in the tray menu still works.\n";
    // GNOME Shell's companion, where the Shell runs it: on Wayland every key and focus change and
    // the panel's place; a top-bar icon where the session has no tray.
    const bool trayAvailable = QSystemTrayIcon::isSystemTrayAvailable();
    ShellCompanion companion(
        {.keys = wayland, .focus = wayland, .placement = wayland, .topBarIcon = !trayAvailable});
    if (auto* busWorkspace = qobject_cast<AtspiWorkspace*>(workspace.get())) {
        QObject::connect(
            &companion, &ShellCompanion::modifierKey, busKeys.get(),
            [&busKeys](unsigned long keysym, bool pressed) { busKeys->keyEvent(pressed, keysym); });
        QObject::connect(&companion, &ShellCompanion::keyPressed, busKeys.get(),
                         &AtspiKeyMonitors::otherKeyPressed);
        QObject::connect(&companion, &ShellCompanion::focusChanged, busWorkspace,
                         &AtspiWorkspace::companionFocused);
        QObject::connect(&companion, &DesktopCompanion::stateChanged, busWorkspace,
                         [&companion, &busKeys, busWorkspace] {
                             const bool on = companion.state() == DesktopCompanion::State::on;
                             busKeys->setBusHeard(!on);
                             busWorkspace->followCompanion(on);
                         });
    }
    AccessibilitySwitch trust;
    // Qt applications started from now on find the bus even where its launcher did not say.
    X11BusAddress busAddress;
    if (!wayland)
        QObject::connect(&trust, &AccessibilitySwitch::busAddressChanged, &busAddress,
                         &X11BusAddress::follow);

    AppDelegate delegate(
        UserDefaults::standard(),
        {.monitors = *monitors,
         .workspace = *workspace,
         .trust = trust,
         // Read on the crawl thread through a settings object of its own.
         .menuSource = desktopMenuSources([] {
             return UserDefaults(UserDefaults::standardFilePath())
                 .boolValue(TriggerSettings::readBrowserMenusKey)
                 .value_or(false);
         }),
         .beep = [] { QApplication::beep(); },
         // A Wayland compositor blends every window; none reads X11's blur hint.
         .isCompositing =
             wayland ? std::function<bool()>([] { return true; }) : &X11Compositing::isActive,
         .requestBlurBehind =
             wayland ? std::function<void(QWindow&)>() : &X11Compositing::requestBlurBehind,
         .showStatusItem = true,
         .askSavePath =
             [](const QString& suggested) {
                 return QFileDialog::getSaveFileName(
                     nullptr, QCoreApplication::translate("Export", "Export Shortcuts"), suggested,
                     QCoreApplication::translate("Export", "Web page (*.html);;Markdown (*.md)"));
             }});
    AppDelegate::shared = &delegate;
    LinuxDesktop desktop;
    auto* busWorkspace = qobject_cast<AtspiWorkspace*>(workspace.get());
    WindowServices::shared() = {.trust = &trust,
                                .desktop = &desktop,
                                .triggerName = [&delegate] { return delegate.triggerSymbol(); },
                                .globalInputWatched = inputWatched,
                                .defaults = nullptr,
                                .runningApplications =
                                    [busWorkspace] {
                                        // Wayland names no other client's windows: the applications
                                        // seen in front.
                                        return busWorkspace ? busWorkspace->seenApplications()
                                                            : AppIdentity::runningApplications(
                                                                  Workspace::thisProcessId());
                                    },
                                .describeApplication = &AppIdentity::describe,
                                .companion = wayland ? &companion : nullptr,
                                // The companion's top-bar icon holds the tray menu where
                                // there is no tray.
                                .trayAvailable =
                                    [&companion] {
                                        return QSystemTrayIcon::isSystemTrayAvailable() ||
                                               companion.state() == DesktopCompanion::State::on;
                                    },
                                .ownTitleBar = ownTitleBar};
    // Input meant for the panel is Corvane's own, not a hold or an interruption.
    const auto panelHasKeyboard = [&delegate] { return delegate.overlay.keyMonitorInstalled(); };
    if (xInput) {
        xInput->keyboardHeldByUs = panelHasKeyboard;
        xInput->ownPanelFrame = [&delegate] { return delegate.visiblePanelFrame(); };
    } else {
        busKeys->keyboardHeldByUs = panelHasKeyboard;
        busKeys->hoveredPanelFrame = [&delegate]() -> std::optional<QRectF> {
            const auto* panel = delegate.overlay.panel();
            return panel && panel->isHovered() ? delegate.visiblePanelFrame() : std::nullopt;
        };
    }
    QObject::connect(&instance, &SingleInstance::showSettingsRequested,
                     [] { SettingsWindowPresenter::shared().show(); });
    QObject::connect(&instance, &SingleInstance::peekRequested,
                     [&delegate] { delegate.statusMenuController->peekNow(); });

    delegate.applicationDidFinishLaunching();
    companion.exportMenu(delegate.statusMenuController->menu);
    TrayWatch trayWatch;
    QObject::connect(&trayWatch, &TrayWatch::mayHaveAppeared, [&delegate, &companion] {
        delegate.statusMenuController->trayMayHaveAppeared();
        companion.showTopBarIcon(!QSystemTrayIcon::isSystemTrayAvailable());
    });
    return QApplication::exec();
}
