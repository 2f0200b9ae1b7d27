// corvane-window-preview: one of Corvane's secondary windows (settings, Welcome, What's New)
// with a chosen permission state and palette, for designers, the README and the screenshots.
// Nothing it shows is stored: the settings window works on a throw-away settings file, and the
// permission and desktop actions only print what they would do.
//
//   corvane-window-preview settings|welcome|whatsnew [options]

#include "app/SettingsWindow.h"
#include "app/Translations.h"
#include "overlay/Palettes.h"
#include "overlay/ViewFactory.h"
#include "platform/AccessibilityTrust.h"
#include "platform/DesktopCompanion.h"
#include "platform/DesktopIntegration.h"
#include "platform/UserDefaults.h"
#include "platform/linux/DisplaySession.h"
#include "whatsnew/WelcomeWindowController.h"
#include "whatsnew/WhatsNewWindowController.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

using namespace corvane;

namespace {

// A permission that is what the command line says; asking for it grants it.
class PreviewTrust : public AccessibilityTrust {
public:
    bool trusted = false;
    bool isTrusted() const override { return trusted; }
    void refresh(std::function<void(bool)> completion) override
    {
        QTimer::singleShot(0, this, [this, completion] { completion(trusted); });
    }
    bool watch() override { return false; }
    void requestTrust() override
    {
        QTextStream(stdout) << "preview: accessibility switched on\n";
        trusted = true;
    }
};

class PreviewDesktop : public DesktopIntegration {
public:
    bool atLogin = false;
    bool launchesAtLogin() const override { return atLogin; }
    bool setLaunchAtLogin(bool enabled) override
    {
        QTextStream(stdout) << "preview: start at login " << (enabled ? "on" : "off") << "\n";
        atLogin = enabled;
        return true;
    }
    bool openAccessibilitySettings() override
    {
        QTextStream(stdout) << "preview: the accessibility settings would open\n";
        return true;
    }
    void openAccessibilityHelp() override
    {
        QTextStream(stdout) << "preview: the accessibility help would open\n";
    }
};

// GNOME Shell's companion in a given state; switching it on turns it on at once.
class PreviewCompanion : public DesktopCompanion {
public:
    State current = State::off;
    State state() const override { return current; }
    void turnOn() override
    {
        QTextStream(stdout) << "preview: GNOME Shell would switch the companion on\n";
        current = State::on;
        Q_EMIT stateChanged();
    }
};

int fail(const QString& message, int status = 1)
{
    QTextStream(stderr) << "corvane-window-preview: " << message << "\n";
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    if (!DisplaySession::prepare("corvane-window-preview", argc, argv))
        return 1;
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("corvane-window-preview"));
    QApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Shows one of Corvane's windows: settings, welcome or whatsnew."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("window"),
                                 QStringLiteral("settings, welcome or whatsnew"));
    const QCommandLineOption trusted(QStringLiteral("trusted"),
                                     QStringLiteral("Show the permission as granted."));
    const QCommandLineOption palette(QStringLiteral("palette"),
                                     QStringLiteral("light or dark (default: the desktop's)."),
                                     QStringLiteral("name"));
    const QCommandLineOption trigger(QStringLiteral("trigger"),
                                     QStringLiteral("The trigger's name (default Ctrl)."),
                                     QStringLiteral("name"), QStringLiteral("Ctrl"));
    const QCommandLineOption noInput(QStringLiteral("no-global-input"),
                                     QStringLiteral("As in a session where held keys cannot be "
                                                    "watched (Wayland)."));
    const QCommandLineOption png(QStringLiteral("png"),
                                 QStringLiteral("Save a PNG of the window and quit."),
                                 QStringLiteral("file"));
    const QCommandLineOption translation(
        QStringLiteral("translation"),
        QStringLiteral("Load this compiled translation (.qm) instead of the "
                       "system locale's."),
        QStringLiteral("file"));
    const QCommandLineOption texts(QStringLiteral("texts"),
                                   QStringLiteral("Print every text the window shows, one per "
                                                  "line, and quit."));
    const QCommandLineOption excluded(QStringLiteral("excluded"),
                                      QStringLiteral("List this application id where holding "
                                                     "does nothing (settings; repeatable)."),
                                      QStringLiteral("ID"));
    const QCommandLineOption noTray(QStringLiteral("no-tray"),
                                    QStringLiteral("As in a session without a tray."));
    const QCommandLineOption companion(
        QStringLiteral("companion"),
        QStringLiteral("The GNOME Shell companion's state: not-installed, needs-restart, off, "
                       "failed or on."),
        QStringLiteral("state"));
    parser.addOptions(
        {trusted, palette, trigger, noInput, noTray, companion, excluded, png, translation, texts});
    parser.process(app);

    const QStringList arguments = parser.positionalArguments();
    const QString which = arguments.value(0);
    if (arguments.size() != 1 || !QStringList{QStringLiteral("settings"), QStringLiteral("welcome"),
                                              QStringLiteral("whatsnew")}
                                      .contains(which))
        return fail(QStringLiteral("say which window: settings, welcome or whatsnew"), 2);
    if (parser.isSet(palette)) {
        const QString name = parser.value(palette);
        if (name != QStringLiteral("light") && name != QStringLiteral("dark"))
            return fail(QStringLiteral("unknown palette \"%1\" (light or dark)").arg(name), 2);
        QApplication::setPalette(previewPalette(name == QStringLiteral("dark")));
    }

    // The given catalog, or the system locale's as Corvane loads it.
    if (!Translations::installFileOrLocale(parser.value(translation)))
        return fail(
            QStringLiteral("cannot load the translation %1").arg(parser.value(translation)));

    QTemporaryDir scratch;
    UserDefaults defaults(scratch.filePath(QStringLiteral("corvane.conf")));
    PreviewTrust trust;
    trust.trusted = parser.isSet(trusted);
    PreviewDesktop desktop;
    PreviewCompanion shellCompanion;
    if (parser.isSet(companion)) {
        const QHash<QString, DesktopCompanion::State> states{
            {QStringLiteral("not-installed"), DesktopCompanion::State::notInstalled},
            {QStringLiteral("needs-restart"), DesktopCompanion::State::needsRestart},
            {QStringLiteral("off"), DesktopCompanion::State::off},
            {QStringLiteral("failed"), DesktopCompanion::State::failed},
            {QStringLiteral("on"), DesktopCompanion::State::on}};
        if (!states.contains(parser.value(companion)))
            return fail(
                QStringLiteral("unknown companion state \"%1\"").arg(parser.value(companion)), 2);
        shellCompanion.current = states.value(parser.value(companion));
    }
    const QString triggerName = parser.value(trigger);
    WindowServices::shared() = {.trust = &trust,
                                .desktop = &desktop,
                                .triggerName = [triggerName] { return triggerName; },
                                .globalInputWatched = !parser.isSet(noInput),
                                .defaults = &defaults,
                                .runningApplications = {},
                                .describeApplication =
                                    [](const QString& id) {
                                        // A readable name for a reverse-domain id.
                                        QString name = id.section(u'.', -1);
                                        if (!name.isEmpty())
                                            name[0] = name[0].toUpper();
                                        return RunningApp{0, id, name, {}};
                                    },
                                .companion = parser.isSet(companion) ? &shellCompanion : nullptr,
                                .trayAvailable = [&] { return !parser.isSet(noTray); }};
    if (parser.isSet(excluded))
        defaults.setStringList(QStringLiteral("excludedApplications"), parser.values(excluded));

    QQuickWindow* window = nullptr;
    if (which == QStringLiteral("settings")) {
        SettingsWindowPresenter::shared().show();
        window = SettingsWindowPresenter::shared().window();
    } else if (which == QStringLiteral("welcome")) {
        WelcomeWindowController::shared().show();
        window = WelcomeWindowController::shared().window();
    } else {
        WhatsNewWindowController::shared().show(ReleaseNotes::all(
            {.openSettings = [] { SettingsWindowPresenter::shared().show(); }}, triggerName));
        window = WhatsNewWindowController::shared().window();
    }
    if (!window)
        return fail(QStringLiteral("the window did not open"));

    if (parser.isSet(texts)) {
        QTimer::singleShot(300, &app, [&app, window] {
            QTextStream out(stdout);
            out << window->title() << "\n";
            for (const QString& text : shownTexts(window->contentItem()))
                out << text << "\n";
            app.quit();
        });
    } else if (parser.isSet(png)) {
        const QString file = parser.value(png);
        QTimer::singleShot(500, &app, [&app, window, file] {
            const QImage image = window->grabWindow();
            if (image.isNull() || !image.save(file)) {
                fail(QStringLiteral("cannot save %1").arg(file));
                app.exit(1);
                return;
            }
            app.quit();
        });
    } else {
        QObject::connect(window, &QObject::destroyed, &app, &QApplication::quit);
    }
    return app.exec();
}
