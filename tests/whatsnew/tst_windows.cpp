// The secondary windows under the test session: Welcome, What's New and the settings, real
// windows driven through the real pointer and keyboard (xdotool). The permission is the session's
// real IsEnabled; start at login writes a real autostart file; the accessibility settings program
// is a stand-in that records what it was asked.

#include "CrawlThread.h"
#include "OverlayHarness.h"
#include "ReadOnlyFolder.h"
#include "SessionTools.h"
#include "app/AppDelegate.h"
#include "app/SettingsWindow.h"
#include "app/StatusMenuController.h"
#include "platform/UserDefaults.h"
#include "platform/linux/AccessibilitySwitch.h"
#include "platform/linux/AtspiClient.h"
#include "platform/linux/LinuxDesktop.h"
#include "platform/linux/X11Workspace.h"
#include "platform/linux/XInputMonitors.h"
#include "whatsnew/WelcomeWindowController.h"
#include "whatsnew/WhatsNewWindowController.h"

#include <QAction>
#include <QElapsedTimer>
#include <QFile>
#include <QMenu>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace corvane;
using namespace corvane::test;

namespace {

// What the settings window offers to leave out.
QList<RunningApp> runningApps;

bool shownIn(QQuickItem* item)
{
    return item && item->isVisible() && item->window() && item->window()->isVisible();
}

} // namespace

class TestWindows : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software); // as main() does
        qputenv("XDG_CONFIG_HOME", m_home.filePath("config").toUtf8());
        m_settingsProgram = m_home.filePath("settings-program.txt");
        QDir(m_home.path()).mkpath("bin");
        QFile script(m_home.filePath("bin/gnome-control-center"));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write(
            QStringLiteral("#!/bin/sh\necho \"$@\" >> '%1'\n").arg(m_settingsProgram).toUtf8());
        script.close();
        QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        qputenv("PATH", m_home.filePath("bin").toUtf8() + ":" BIN_DIR ":" + qgetenv("PATH"));

        m_defaults = std::make_unique<UserDefaults>(UserDefaults::standardFilePath());
        QVERIFY(m_defaults->setBool(AppDelegate::launchedBeforeKey, true));
        m_trust = std::make_unique<AccessibilitySwitch>();
        m_desktop = std::make_unique<LinuxDesktop>();
        m_monitors = std::make_unique<XInputMonitors>();
        m_workspace = std::make_unique<X11Workspace>();
        setPermission(true);
        // The real delegate, as main() makes it (without a tray icon: the session has no tray).
        m_delegate = std::make_unique<AppDelegate>(
            *m_defaults,
            AppDelegate::Platform{.monitors = *m_monitors,
                                  .workspace = *m_workspace,
                                  .trust = *m_trust,
                                  .menuSource = std::make_shared<atspi::MenuBarFinder>(),
                                  .beep = [] {},
                                  .isCompositing = {},
                                  .requestBlurBehind = {},
                                  .showStatusItem = false,
                                  .askSavePath = {}});
        AppDelegate::shared = m_delegate.get();
        WindowServices::shared() = {.trust = m_trust.get(),
                                    .desktop = m_desktop.get(),
                                    .triggerName = [this] { return m_delegate->triggerSymbol(); },
                                    .globalInputWatched = true,
                                    .defaults = m_defaults.get(),
                                    .runningApplications = [] { return runningApps; },
                                    .describeApplication =
                                        [](const QString& id) {
                                            return RunningApp{0, id, "Described " + id, {}};
                                        },
                                    .companion = nullptr,
                                    .trayAvailable = {}};
        QSignalSpy announced(m_delegate.get(), &AppDelegate::launchAnnounced);
        m_delegate->applicationDidFinishLaunching();
        QTRY_COMPARE(announced.size(), 1);
        QVERIFY(
            !WelcomeWindowController::shared().window()); // a returning user with the permission
    }

    void cleanupTestCase()
    {
        cleanup();
        setPermission(true);
        AppDelegate::shared = nullptr;
        m_delegate.reset();
    }

    void cleanup()
    {
        SettingsWindowPresenter::shared().close();
        WelcomeWindowController::shared().close();
        WhatsNewWindowController::shared().close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        WindowServices::shared().globalInputWatched = true;
    }

    void welcomeFollowsThePermission()
    {
        setPermission(false);
        WelcomeWindowController::shared().show();
        QQuickWindow* window = WelcomeWindowController::shared().window();
        waitUntilShown(window);
        const auto missing = [this] {
            return shownIn(welcome("grantButton")) && shownIn(welcome("hint")) &&
                   shownIn(welcome("smallButtons")) &&
                   welcome("closeButton")->property("text").toString() == u"I'll grant it later";
        };
        const auto granted = [this] {
            return !shownIn(welcome("grantButton")) && !shownIn(welcome("hint")) &&
                   !shownIn(welcome("smallButtons")) &&
                   welcome("closeButton")->property("text").toString() == u"Start Peeking";
        };
        QVERIFY(missing());
        QCOMPARE(welcome("keycap")->property("label").toString(), "Ctrl");
        // Return presses the default button while the permission is missing: it asks for it.
        QVERIFY(activateWindowOf(QCoreApplication::applicationPid(), "Welcome"));
        xdotool({"key", "Return"});
        QTRY_COMPARE_WITH_TIMEOUT(AccessibilitySwitch::isEnabled(), std::optional(true), 3000);
        QTRY_VERIFY_WITH_TIMEOUT(granted(), 2500);
        // Granted, there is no default button: Return closes nothing.
        xdotool({"key", "Return"});
        QTest::qWait(300);
        QCOMPARE(WelcomeWindowController::shared().window(), window);
        // Switched off elsewhere (as the desktop's settings do): shown within about a second.
        QElapsedTimer clock;
        clock.start();
        QVERIFY(AccessibilitySwitch::setEnabled(false));
        QTRY_VERIFY_WITH_TIMEOUT(missing(), 2500);
        QVERIFY2(clock.elapsed() <= 1600, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(welcome("statusText")->property("text").toString(),
                 "Corvane needs Accessibility access to read menus.");
        setPermission(true);
        QTRY_VERIFY_WITH_TIMEOUT(granted(), 2500);
    }

    void whatsNewClipLoopsMutedAndPausesOnClose()
    {
        WhatsNewWindowController::shared().show(
            ReleaseNotes::all(m_delegate->whatsNewActions(), "Ctrl"));
        waitUntilShown(WhatsNewWindowController::shared().window());
        QQuickItem* clip = nullptr; // made after the window's first frame
        QTRY_VERIFY((clip = item(WhatsNewWindowController::shared().view(), "mediaPlayer")));
        QVERIFY(clip->property("muted").toBool());
        QCOMPARE(clip->size(), QSizeF(400, 250));
        QTRY_VERIFY_WITH_TIMEOUT(clip->property("restarts").toInt() >= 1, 8000); // over and over
        const int frames = clip->property("framesShown").toInt();
        QTRY_VERIFY(clip->property("framesShown").toInt() > frames + 3);
        // Closing the window pauses the clip before it goes.
        QVERIFY(clip->property("playing").toBool());
        QSignalSpy changed(clip, SIGNAL(playingChanged()));
        QPointer<QQuickItem> gone = clip;
        WhatsNewWindowController::shared().close();
        QVERIFY(changed.count() >= 1);
        QTRY_VERIFY(!gone); // with its window, and its decoders with it
    }

    void settingsFollowWhatChangedElsewhere()
    {
        // Out of range in the file: clamped where it is applied and where it is shown.
        QVERIFY(m_defaults->setDouble("holdDelay", 0.01));
        m_delegate->reloadTriggerSettings();
        QCOMPARE(m_delegate->detector.holdDelay, 0.3);
        QVERIFY(m_desktop->setLaunchAtLogin(true));
        setPermission(false);
        SettingsWindowPresenter::shared().show();
        waitUntilShown(SettingsWindowPresenter::shared().window());
        QCOMPARE(settings("delaySlider")->property("value").toDouble(), 0.3);
        QVERIFY(settings("launchAtLoginToggle")->property("checked").toBool());
        // "Open Accessibility Settings…" asks for the permission and opens the settings; the row
        // goes once it is granted.
        QVERIFY(shownIn(settings("accessibilityRow")));
        QFile::remove(m_settingsProgram);
        click(settings("openSystemSettingsButton"));
        QTRY_COMPARE_WITH_TIMEOUT(AccessibilitySwitch::isEnabled(), std::optional(true), 3000);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_settingsProgram), 3000);
        QTRY_VERIFY_WITH_TIMEOUT(!shownIn(settings("accessibilityRow")), 2500);
        // Its own windows put this process on the accessibility bus, but never among the
        // applications to read.
        const auto onBusAndListed = [] {
            return onCrawlThread([] {
                WalkBudget budget(std::chrono::seconds(3));
                const auto session =
                    std::make_shared<atspi::Session>(*atspi::accessibilityBus(), budget);
                const qint64 self = QCoreApplication::applicationPid();
                bool listed = false;
                for (const atspi::ApplicationEntry& entry : atspi::applications(session))
                    listed = listed || entry.pid == self;
                return std::pair(atspi::application(session, self).has_value(), listed);
            });
        };
        QTRY_COMPARE(onBusAndListed(), std::pair(true, false));
        QVERIFY(m_defaults->setDouble("holdDelay", 0.85));
        m_delegate->reloadTriggerSettings();
        QVERIFY(m_desktop->setLaunchAtLogin(false));
    }

    void settingsApplyAtOnce()
    {
        const RunningApp terminal{7, "org.example.Terminal", "Terminal", {}};
        runningApps = {terminal, {8, "org.example.Game", "Game", {}}};
        QVERIFY(m_delegate->history.record("File\x1fQuit", "org.example.Editor"));
        SettingsWindowPresenter::shared().show();
        QQuickWindow* window = SettingsWindowPresenter::shared().window();
        waitUntilShown(window);
        QCOMPARE(window->title(), "Corvane Settings");
        // A button of a list or menu that has opened.
        const auto shownButton = [window](const QString& text, QQuickItem* besides = nullptr) {
            QQuickItem* found = nullptr;
            const bool opened = QTest::qWaitFor([&] {
                found = itemsWhere(window->contentItem(), [&](QQuickItem* candidate) {
                            return candidate->inherits("QQuickAbstractButton") &&
                                   candidate != besides &&
                                   candidate->property("text").toString() == text &&
                                   candidate->isVisible() && candidate->height() > 0;
                        }).value(0);
                return found != nullptr;
            });
            QTest::qWait(250); // it has finished opening
            return opened ? found : nullptr;
        };

        // The trigger picker's "Off": stored, and the trigger is silent at once.
        QQuickItem* picker = settings("triggerPicker");
        click(picker);
        click(shownButton("Off", picker));
        QTRY_COMPARE(m_defaults->string("triggerModifier"), "off");
        QCOMPARE(m_delegate->detector.triggerModifier, std::nullopt);
        Q_EMIT m_delegate->statusMenuController->menu->aboutToShow();
        QCOMPARE(m_delegate->statusMenuController->headerItem->text(), "Hold-to-peek is off");
        SettingsWindowPresenter::shared().pane()->setTriggerModifier("command");

        // + offers the applications with a window; the one chosen is listed, and holding the
        // trigger in it no longer arms; − takes it off again.
        click(settings("addExcludedButton"));
        click(shownButton("Terminal"));
        QTRY_COMPARE(m_defaults->stringList("excludedApplications"), QStringList{*terminal.appId});
        QVERIFY(m_delegate->isExcluded(terminal));
        QTRY_VERIFY(shownIn(settings("removeExcludedButton")));
        QTest::qWait(250); // the menu has finished closing
        click(settings("removeExcludedButton"));
        QTRY_COMPARE(m_defaults->stringList("excludedApplications"), std::nullopt);
        QVERIFY(!m_delegate->isExcluded(terminal));

        // Forget… asks first; confirmed, the history is gone.
        click(settings("forgetHistoryButton"));
        QQuickItem* forget = shownButton("Forget");
        QCOMPARE(m_delegate->history.entries("org.example.Editor").size(), 1);
        click(forget);
        QTRY_VERIFY(m_delegate->history.entries("org.example.Editor").isEmpty());
    }

    void launchAtLogin()
    {
        const QString entry = LinuxDesktop::autostartFilePath();
        QVERIFY(entry.startsWith(m_home.path()));
        QDir().mkpath(QFileInfo(entry).absolutePath());
        SettingsWindowPresenter::shared().show();
        waitUntilShown(SettingsWindowPresenter::shared().window());
        QQuickItem* toggle = settings("launchAtLoginToggle");
        {
            // The folder cannot be written: the switch goes back to the real state, silently.
            ReadOnlyFolder readOnly(QFileInfo(entry).absolutePath());
            QVERIFY2(readOnly.isReadOnly(), qPrintable(readOnly.reason()));
            QSignalSpy changed(SettingsWindowPresenter::shared().pane(),
                               &GeneralPaneModel::launchAtLoginChanged);
            click(toggle);
            QTRY_VERIFY(changed.size() >= 1);
            QTest::qWait(100);
            QVERIFY(!QFile::exists(entry));
            QVERIFY(!toggle->property("checked").toBool());
        }
        click(toggle);
        QTRY_VERIFY(QFile::exists(entry));
        QVERIFY(toggle->property("checked").toBool() && m_desktop->launchesAtLogin());
        const ProgramOutput validated = output("desktop-file-validate", {entry});
        QVERIFY2(validated.succeeded, qPrintable(validated.text));
        QFile file(entry);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(
            file.readAll().contains(("Exec=" + QCoreApplication::applicationFilePath()).toUtf8()));
        click(toggle);
        QTRY_VERIFY(!QFile::exists(entry));
        QVERIFY(!m_desktop->launchesAtLogin());
    }

private:
    // Switches IsEnabled and waits until this process has read the new value.
    void setPermission(bool enabled)
    {
        QVERIFY(AccessibilitySwitch::setEnabled(enabled));
        std::optional<bool> read;
        m_trust->refresh([&](bool trusted) { read = trusted; });
        QTRY_COMPARE(read, std::optional(enabled));
    }

    void click(QQuickItem* item)
    {
        QVERIFY(item);
        // In a scrolling form, scrolled into view first, as a user would.
        for (QQuickItem* parent = item->parentItem(); parent; parent = parent->parentItem()) {
            if (!parent->inherits("QQuickFlickable"))
                continue;
            const double y = item->mapToItem(parent, QPointF(0, 0)).y();
            if (y < 0 || y + item->height() > parent->height()) {
                const double most = parent->property("contentHeight").toDouble() - parent->height();
                const double contentY = parent->property("contentY").toDouble() + y - 40;
                parent->setProperty("contentY", std::clamp(contentY, 0.0, std::max(0.0, most)));
                QTest::qWait(100);
            }
        }
        const QPoint centre =
            item->mapToGlobal(QPointF(item->width() / 2, item->height() / 2)).toPoint();
        xdotool(
            {"mousemove", QString::number(centre.x()), QString::number(centre.y()), "click", "1"});
    }

    void waitUntilShown(QQuickWindow* window)
    {
        QVERIFY(window);
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QTest::qWait(200); // placed by the window manager
    }

    QQuickItem* welcome(const char* name) const
    {
        return item(WelcomeWindowController::shared().view(), QString::fromLatin1(name));
    }

    QQuickItem* settings(const char* name) const
    {
        return item(SettingsWindowPresenter::shared().view(), QString::fromLatin1(name));
    }

    QTemporaryDir m_home;
    QString m_settingsProgram; // what the stand-in was asked
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<AccessibilitySwitch> m_trust;
    std::unique_ptr<LinuxDesktop> m_desktop;
    std::unique_ptr<XInputMonitors> m_monitors;
    std::unique_ptr<X11Workspace> m_workspace;
    std::unique_ptr<AppDelegate> m_delegate;
};

QTEST_MAIN(TestWindows)
#include "tst_windows.moc"
