// Corvane's entry point: one instance per session, the Linux platform services, the delegate, the
// event loop. Everything else lives in the subsystem libraries.

#include "app/AppDelegate.h"
#include "app/SettingsWindow.h"
#include "app/Translations.h"
#include "platform/UserDefaults.h"
#include "platform/linux/AccessibilitySwitch.h"
#include "platform/linux/AtspiClient.h"
#include "platform/linux/DisplaySession.h"
#include "platform/linux/JournalLog.h"
#include "platform/linux/LinuxDesktop.h"
#include "platform/linux/QuitOnSignals.h"
#include "platform/linux/SingleInstance.h"
#include "platform/linux/AppIdentity.h"
#include "platform/linux/X11BusAddress.h"
#include "platform/linux/X11Compositing.h"
#include "platform/linux/X11Workspace.h"
#include "platform/linux/XInputMonitors.h"

#include <QApplication>
#include <QFileDialog>
#include <QLoggingCategory>
#include <QQuickWindow>
#include <QTextStream>

int main(int argc, char* argv[])
{
    using namespace corvane;

    // Options are read before anything needs a display: --help and --version work anywhere.
    for (int i = 1; i < argc; ++i) {
        const QByteArray option = argv[i];
        if (option == "--help" || option == "-h") {
            QTextStream(stdout)
                << "usage: corvane [--help | --version]\n\n"
                   "Corvane lives in the tray. Hold Ctrl for a moment over any application to see "
                   "its menu\ncommands and their shortcuts; release over the panel to search and "
                   "run them.\nThe tray menu has its settings.\n";
            return 0;
        }
        if (option == "--version" || option == "-v") {
            QTextStream(stdout) << "corvane " CORVANE_VERSION "\n";
            return 0;
        }
        QTextStream(stderr) << "corvane: unknown option " << option << " (see corvane --help)\n";
        return 2;
    }
    // X11 first; under Wayland Corvane runs through XWayland. Without a display, one line
    // says so (Qt would abort).
    if (!DisplaySession::prepare("corvane", argc, argv))
        return 1;
    qputenv("QT_QPA_PLATFORM", "xcb");
    // A tray utility that lives all day: the software scene graph, which needs no GPU driver, and
    // no OpenGL integration either, or Qt's xcb plugin may load Mesa's driver and LLVM (some
    // hundred MB resident) for nothing. A value the user set is kept.
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none");
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    // Debug lines (the permission poll) only when asked for with QT_LOGGING_RULES.
    QLoggingCategory::setFilterRules(QStringLiteral("com.vantorel.corvane.*.debug=false"));

    // The journal in a user session (`journalctl --user -t corvane`), stderr otherwise.
    JournalLog::install();

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

    XInputMonitors monitors;
    QString whyNot;
    if (!monitors.isAvailable(&whyNot))
        QTextStream(stderr) << "corvane: holding the trigger cannot be watched here (" << whyNot
                            << "); \"Peek Current App\" in the tray menu still works.\n";
    X11Workspace workspace;
    AccessibilitySwitch trust;
    // Qt applications started from now on find the bus even where its launcher did not say.
    X11BusAddress busAddress;
    QObject::connect(&trust, &AccessibilitySwitch::busAddressChanged, &busAddress,
                     &X11BusAddress::follow);

    AppDelegate delegate(UserDefaults::standard(),
                         {.monitors = monitors,
                          .workspace = workspace,
                          .trust = trust,
                          .menuSource = std::make_shared<atspi::MenuBarFinder>(),
                          .beep = [] { QApplication::beep(); },
                          .isCompositing = &X11Compositing::isActive,
                          .requestBlurBehind = &X11Compositing::requestBlurBehind,
                          .showStatusItem = true,
                          .askSavePath = [](const QString& suggested) {
                              return QFileDialog::getSaveFileName(
                                  nullptr, QCoreApplication::translate("Export", "Export Shortcuts"),
                                  suggested,
                                  QCoreApplication::translate(
                                      "Export", "Web page (*.html);;Markdown (*.md)"));
                          }});
    AppDelegate::shared = &delegate;
    LinuxDesktop desktop;
    WindowServices::shared() = {.trust = &trust,
                                .desktop = &desktop,
                                .triggerName = [&delegate] { return delegate.triggerSymbol(); },
                                .globalInputWatched = monitors.isAvailable(),
                                .defaults = nullptr,
                                .runningApplications =
                                    [] {
                                        return AppIdentity::runningApplications(
                                            Workspace::thisProcessId());
                                    },
                                .describeApplication = &AppIdentity::describe};
    // Input meant for the panel is Corvane's own, not a hold or an interruption.
    monitors.keyboardHeldByUs = [&delegate] { return delegate.overlay.keyMonitorInstalled(); };
    monitors.ownPanelFrame = [&delegate] { return delegate.visiblePanelFrame(); };
    QObject::connect(&instance, &SingleInstance::showSettingsRequested,
                     [] { SettingsWindowPresenter::shared().show(); });

    delegate.applicationDidFinishLaunching();
    return QApplication::exec();
}
