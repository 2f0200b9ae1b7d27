// The secondary windows under the test session (Xvfb, openbox, the buses): the settings
// window, the What's New window and centerOnActiveScreen(), the Welcome window.
// Real windows, driven through the real X pointer and keyboard (xdotool); the permission is the
// session's real IsEnabled; start at login writes a real autostart file; the accessibility
// settings program and xdg-open are stand-ins that record what they were asked.

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
#include "whatsnew/LoopingPlayer.h"
#include "whatsnew/WelcomeWindowController.h"
#include "whatsnew/WhatsNewWindowController.h"
#include "whatsnew/WindowPlacement.h"

#include <QAction>
#include <QElapsedTimer>
#include <QFile>
#include <QMediaPlayer>
#include <QMenu>
#include <QProcess>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace corvane;
using namespace corvane::test;

class TestWindows : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();

    // centerOnActiveScreen()
    void centredOnTheScreenUnderThePointer();
    void pointerInAGapOrNoScreen();

    // Welcome
    void welcomeShowTwiceKeepsOneWindowAndRecentres();
    void welcomeFollowsThePermissionWithinASecond();
    void welcomeWithPermissionShowsOnlyTheEssentials();
    void welcomeReturnGrantsOnlyWhileMissing();
    void welcomeButtonsReachTheDesktop();
    void welcomeSaysWhyHoldingFailsWithoutGlobalInput();
    void noAccessibilitySettingsProgramIsLogged();

    // What's New
    void whatsNewEmptyListLeavesTheOpenWindow();
    void whatsNewVersionLinesOnlyForSeveralReleases();
    void whatsNewPlainFeatureShowsOnlyItsTexts();
    void whatsNewActionClosesTheWindowFirst();
    void whatsNewOpenSettingsOpensAfterClosing();
    void whatsNewReturnAndCloseBoxBothClose();
    void whatsNewClipLoopsMutedAndPausesOnClose();

    // Settings
    void settingsPickerOffSilencesTheTrigger();
    void settingsSliderStepsApplyAtOnce();
    void settingsOutOfRangeDelayIsClamped();
    void settingsShowTwiceKeepsOneWindowAndRecentres();
    void settingsReopenShowsLoginItemAndPermission();
    void settingsWithPermissionShowsOnlyTheLoginToggle();
    void settingsLaunchAtLoginWritesAValidEntry();
    void settingsLaunchAtLoginRevertsOnAReadOnlyFolder();

private:
    void setPermission(bool enabled);
    void click(QQuickItem* item);
    void waitUntilShown(QQuickWindow* window);
    QQuickItem* welcomeItem(const char* name) const;
    QQuickItem* settingsItem(const char* name) const;
    static bool shownIn(QQuickItem* item);

    QTemporaryDir m_home;
    QString m_recordFile;
    QString m_openedFile;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<AccessibilitySwitch> m_trust;
    std::unique_ptr<LinuxDesktop> m_desktop;
    std::unique_ptr<XInputMonitors> m_monitors;
    std::unique_ptr<X11Workspace> m_workspace;
    std::unique_ptr<AppDelegate> m_delegate;
};

void TestWindows::initTestCase()
{
    QVERIFY(m_home.isValid());
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software); // as main() does
    // Corvane's own settings and autostart folder live in this test's home.
    qputenv("XDG_CONFIG_HOME", m_home.filePath(QStringLiteral("config")).toUtf8());
    // Stand-ins for the accessibility settings program and xdg-open that record their
    // arguments, each in a file of its own.
    m_recordFile = m_home.filePath(QStringLiteral("settings-program.txt"));
    m_openedFile = m_home.filePath(QStringLiteral("xdg-open.txt"));
    QDir(m_home.path()).mkpath(QStringLiteral("bin"));
    for (const auto& [name, record] :
         {std::pair{"gnome-control-center", m_recordFile}, std::pair{"xdg-open", m_openedFile}}) {
        QFile script(m_home.filePath(QStringLiteral("bin/") + QLatin1String(name)));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write(QStringLiteral("#!/bin/sh\necho \"$@\" >> '%1'\n").arg(record).toUtf8());
        script.close();
        QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
    qputenv("PATH", m_home.filePath(QStringLiteral("bin")).toUtf8() + ':' + qgetenv("PATH"));

    m_defaults = std::make_unique<UserDefaults>(UserDefaults::standardFilePath());
    QVERIFY(m_defaults->setBool(AppDelegate::launchedBeforeKey, true));
    m_trust = std::make_unique<AccessibilitySwitch>();
    m_desktop = std::make_unique<LinuxDesktop>();
    m_monitors = std::make_unique<XInputMonitors>();
    m_workspace = std::make_unique<X11Workspace>();
    setPermission(true);

    // The real delegate, as main() makes it (without a tray icon: the session has no tray).
    m_delegate = std::make_unique<AppDelegate>(
        *m_defaults, AppDelegate::Platform{.monitors = *m_monitors,
                                           .workspace = *m_workspace,
                                           .trust = *m_trust,
                                           .menuSource = std::make_shared<atspi::MenuBarFinder>(),
                                           .beep = [] {},
                                           .isCompositing = {},
                                           .requestBlurBehind = {},
                                           .showStatusItem = false});
    AppDelegate::shared = m_delegate.get();
    WindowServices::shared() = {.trust = m_trust.get(),
                                .desktop = m_desktop.get(),
                                .triggerName = [this] { return m_delegate->triggerSymbol(); },
                                .globalInputWatched = true,
                                .defaults = m_defaults.get()};
    QSignalSpy announced(m_delegate.get(), &AppDelegate::launchAnnounced);
    m_delegate->applicationDidFinishLaunching();
    QTRY_COMPARE(announced.size(), 1);
    QVERIFY(!WelcomeWindowController::shared().window()); // returning user with the permission
}

void TestWindows::cleanupTestCase()
{
    cleanup();
    setPermission(true); // the session keeps accessibility on for whatever runs next
    AppDelegate::shared = nullptr;
    m_delegate.reset();
}

void TestWindows::cleanup()
{
    SettingsWindowPresenter::shared().close();
    WelcomeWindowController::shared().close();
    WhatsNewWindowController::shared().close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    WindowServices::shared().globalInputWatched = true;
}

// Switches IsEnabled and waits until this process has read the new value.
void TestWindows::setPermission(bool enabled)
{
    QVERIFY(AccessibilitySwitch::setEnabled(enabled));
    bool answered = false;
    bool value = !enabled;
    m_trust->refresh([&](bool trusted) {
        answered = true;
        value = trusted;
    });
    QTRY_VERIFY(answered);
    QCOMPARE(value, enabled);
}

// A real click (XTEST) in the middle of `item`.
void TestWindows::click(QQuickItem* item)
{
    QVERIFY(item);
    const QPoint centre =
        item->mapToGlobal(QPointF(item->width() / 2, item->height() / 2)).toPoint();
    xdotool({QStringLiteral("mousemove"), QString::number(centre.x()), QString::number(centre.y()),
             QStringLiteral("click"), QStringLiteral("1")});
}

void TestWindows::waitUntilShown(QQuickWindow* window)
{
    QVERIFY(window);
    QVERIFY(QTest::qWaitForWindowExposed(window));
    // The window manager has placed it when X reports the position Qt asked for.
    QTest::qWait(200);
}

QQuickItem* TestWindows::welcomeItem(const char* name) const
{
    return item(WelcomeWindowController::shared().view(), QString::fromLatin1(name));
}

QQuickItem* TestWindows::settingsItem(const char* name) const
{
    return item(SettingsWindowPresenter::shared().view(), QString::fromLatin1(name));
}

// Visible on screen: the item and every ancestor visible.
bool TestWindows::shownIn(QQuickItem* item)
{
    return item && item->isVisible() && item->window() && item->window()->isVisible();
}

// ---- centerOnActiveScreen() -----------------------------------------------------------------

void TestWindows::centredOnTheScreenUnderThePointer()
{
    // Two displays side by side, each with a panel at the top; the pointer on the second.
    const QList<ScreenFrames> screens{{{0, 0, 1440, 900}, {0, 30, 1440, 870}},
                                      {{1440, 0, 1920, 1080}, {1440, 40, 1920, 1040}}};
    QCOMPARE(centeredOrigin({520, 400}, {2000, 500}, screens, 0),
             std::optional(QPoint(1440 + 960 - 260, 40 + 520 - 200)));
    QCOMPARE(centeredOrigin({520, 400}, {100, 100}, screens, 0),
             std::optional(QPoint(720 - 260, 30 + 435 - 200)));
    // The left edge of the second display belongs to it; its right edge does not.
    QCOMPARE(centeredOrigin({520, 400}, {1440, 10}, screens, 0)->x(), 1440 + 960 - 260);
    QCOMPARE(centeredOrigin({520, 400}, {1439, 10}, screens, 1)->x(), 720 - 260);
}

void TestWindows::pointerInAGapOrNoScreen()
{
    // Displays of different heights leave a gap under the shorter one: the main screen wins.
    const QList<ScreenFrames> screens{{{0, 0, 1920, 1080}, {0, 0, 1920, 1080}},
                                      {{1920, 0, 1280, 720}, {1920, 0, 1280, 720}}};
    QCOMPARE(centeredOrigin({400, 300}, {2500, 900}, screens, 1),
             std::optional(QPoint(1920 + 640 - 200, 360 - 150)));
    QCOMPARE(centeredOrigin({400, 300}, {2500, 900}, screens, 0),
             std::optional(QPoint(960 - 200, 540 - 150)));
    QCOMPARE(centeredOrigin({400, 300}, {10, 10}, {}, 0), std::nullopt);
}

// ---- Welcome -------------------------------------------------------------------------------

static void verifyCentred(QQuickWindow* window)
{
    const QRect available = window->screen()->availableGeometry();
    const QRect frame = window->frameGeometry();
    QVERIFY2(qAbs(frame.center().x() - available.center().x()) <= 2 &&
                 qAbs(frame.center().y() - available.center().y()) <= 2,
             qPrintable(QStringLiteral("frame %1,%2 %3x%4 in %5,%6 %7x%8")
                            .arg(frame.x())
                            .arg(frame.y())
                            .arg(frame.width())
                            .arg(frame.height())
                            .arg(available.x())
                            .arg(available.y())
                            .arg(available.width())
                            .arg(available.height())));
}

void TestWindows::welcomeShowTwiceKeepsOneWindowAndRecentres()
{
    WelcomeWindowController::shared().show();
    QPointer<QQuickWindow> first = WelcomeWindowController::shared().window();
    waitUntilShown(first);
    QCOMPARE(first->width(), 440);
    verifyCentred(first);
    QCOMPARE(first->title(), QStringLiteral("Welcome to Corvane"));
    // Moved away by the user, then shown again: the same window, centred again.
    first->setFramePosition({10, 10});
    QTRY_VERIFY(first->frameGeometry().x() < 100);
    WelcomeWindowController::shared().show();
    QCOMPARE(WelcomeWindowController::shared().window(), first.data());
    QTRY_VERIFY(first->frameGeometry().x() > 100);
    verifyCentred(first);
}

void TestWindows::welcomeFollowsThePermissionWithinASecond()
{
    setPermission(false);
    WelcomeWindowController::shared().show();
    waitUntilShown(WelcomeWindowController::shared().window());
    QQuickItem* dot = welcomeItem("statusDot");
    QCOMPARE(dot->property("color").value<QColor>(), QColor(0xff, 0x95, 0x00));
    QCOMPARE(welcomeItem("closeButton")->property("text").toString(),
             QStringLiteral("I'll grant it later"));
    QVERIFY(shownIn(welcomeItem("grantButton")));

    // Granted elsewhere (as the desktop's settings do): green within about a second.
    QElapsedTimer clock;
    clock.start();
    QVERIFY(AccessibilitySwitch::setEnabled(true));
    QTRY_COMPARE_WITH_TIMEOUT(dot->property("color").value<QColor>(), QColor(0x34, 0xc7, 0x59),
                              2500);
    QVERIFY2(clock.elapsed() <= 1600, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(welcomeItem("statusText")->property("text").toString(),
             QStringLiteral("Accessibility access granted — you're all set."));
    QVERIFY(!shownIn(welcomeItem("grantButton")));
    QVERIFY(!shownIn(welcomeItem("hint")));
    QVERIFY(!shownIn(welcomeItem("smallButtons")));
    QCOMPARE(welcomeItem("closeButton")->property("text").toString(),
             QStringLiteral("Start Peeking"));

    // Revoked: everything comes back.
    clock.restart();
    QVERIFY(AccessibilitySwitch::setEnabled(false));
    QTRY_COMPARE_WITH_TIMEOUT(dot->property("color").value<QColor>(), QColor(0xff, 0x95, 0x00),
                              2500);
    QVERIFY2(clock.elapsed() <= 1600, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(welcomeItem("statusText")->property("text").toString(),
             QStringLiteral("Corvane needs Accessibility access to read menus."));
    QVERIFY(shownIn(welcomeItem("grantButton")));
    QVERIFY(shownIn(welcomeItem("hint")));
    QVERIFY(shownIn(welcomeItem("smallButtons")));
    QCOMPARE(welcomeItem("closeButton")->property("text").toString(),
             QStringLiteral("I'll grant it later"));
    setPermission(true);
}

void TestWindows::welcomeWithPermissionShowsOnlyTheEssentials()
{
    WelcomeWindowController::shared().show();
    waitUntilShown(WelcomeWindowController::shared().window());
    for (const char* shown :
         {"keycap", "heading", "pitch", "howTo", "statusText", "privacy", "closeButton"})
        QVERIFY2(shownIn(welcomeItem(shown)), shown);
    for (const char* hidden : {"grantButton", "hint", "smallButtons", "inputNote"})
        QVERIFY2(!shownIn(welcomeItem(hidden)), hidden);
    QCOMPARE(items(WelcomeWindowController::shared().view(), QStringLiteral("howToRow")).size(), 3);
    // The trigger's name stands in the texts.
    QCOMPARE(welcomeItem("keycap")->property("label").toString(), QStringLiteral("Ctrl"));
    QVERIFY(items(WelcomeWindowController::shared().view(), QStringLiteral("howToText"))
                .first()
                ->property("text")
                .toString()
                .startsWith(QStringLiteral("Hold Ctrl for a moment")));
}

void TestWindows::welcomeReturnGrantsOnlyWhileMissing()
{
    setPermission(false);
    WelcomeWindowController::shared().show();
    QQuickWindow* window = WelcomeWindowController::shared().window();
    waitUntilShown(window);
    QVERIFY(activateWindowOf(QCoreApplication::applicationPid(), QStringLiteral("Welcome")));
    xdotool({QStringLiteral("key"), QStringLiteral("Return")});
    // The default button asked for the permission: IsEnabled is on, and the window shows it.
    QTRY_COMPARE_WITH_TIMEOUT(AccessibilitySwitch::isEnabled(), std::optional(true), 3000);
    QTRY_VERIFY_WITH_TIMEOUT(!shownIn(welcomeItem("grantButton")), 2500);
    // Granted, there is no default button: Return changes nothing and closes nothing.
    QVERIFY(activateWindowOf(QCoreApplication::applicationPid(), QStringLiteral("Welcome")));
    xdotool({QStringLiteral("key"), QStringLiteral("Return")});
    QTest::qWait(300);
    QCOMPARE(WelcomeWindowController::shared().window(), window);
    QVERIFY(window->isVisible());
    QCOMPARE(welcomeItem("closeButton")->property("text").toString(),
             QStringLiteral("Start Peeking"));
}

void TestWindows::welcomeButtonsReachTheDesktop()
{
    setPermission(false);
    QFile::remove(m_recordFile);
    QFile::remove(m_openedFile);
    WelcomeWindowController::shared().show();
    waitUntilShown(WelcomeWindowController::shared().window());

    click(welcomeItem("openSettingsButton"));
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_recordFile), 3000);
    QFile record(m_recordFile);
    QVERIFY(record.open(QIODevice::ReadOnly));
    QCOMPARE(record.readAll().trimmed(), QByteArray("universal-access"));

    // Not installed, the help link opens the project page's accessibility section.
    click(welcomeItem("helpLink"));
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_openedFile), 3000);
    QFile opened(m_openedFile);
    QVERIFY(opened.open(QIODevice::ReadOnly));
    QCOMPARE(opened.readAll().trimmed(),
             QByteArray("https://corvane.vantorel.com/#switching-accessibility-on"));

    // The closing button closes it; the will-close handling forgets it.
    QPointer<QObject> model = WelcomeWindowController::shared().model();
    click(welcomeItem("closeButton"));
    QTRY_VERIFY(!WelcomeWindowController::shared().window());
    QTRY_VERIFY(!model);
    setPermission(true);
}

void TestWindows::welcomeSaysWhyHoldingFailsWithoutGlobalInput()
{
    WindowServices::shared().globalInputWatched = false;
    WelcomeWindowController::shared().show();
    waitUntilShown(WelcomeWindowController::shared().window());
    QQuickItem* note = welcomeItem("inputNote");
    QVERIFY(shownIn(note));
    const QString text = note->property("text").toString();
    QVERIFY2(text.contains(QStringLiteral("Peek Current App")) &&
                 text.contains(QStringLiteral("Ctrl")),
             qPrintable(text));
}

void TestWindows::noAccessibilitySettingsProgramIsLogged()
{
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", m_home.filePath(QStringLiteral("nothing-here")).toUtf8());
    QTest::ignoreMessage(QtCriticalMsg,
                         "accessibility settings: none found (tried gnome-control-center, "
                         "systemsettings, xfce4-accessibility-settings)");
    const bool opened = m_desktop->openAccessibilitySettings();
    qputenv("PATH", path);
    QVERIFY(!opened);
}

// ---- What's New -------------------------------------------------------------------------------

static WhatsNewFeature plainFeature(const QString& title)
{
    return {QStringLiteral("star"), title, QStringLiteral("Some detail."), std::nullopt,
            std::nullopt};
}

static WhatsNewRelease release(const char* version, QList<WhatsNewFeature> features)
{
    return {*AppVersion::parse(QString::fromLatin1(version)), std::move(features)};
}

void TestWindows::whatsNewEmptyListLeavesTheOpenWindow()
{
    WhatsNewWindowController::shared().show({release("1.0", {plainFeature("One")})});
    QPointer<QQuickWindow> window = WhatsNewWindowController::shared().window();
    waitUntilShown(window);
    QPointer<QObject> model = WhatsNewWindowController::shared().model();
    WhatsNewWindowController::shared().show({});
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(window && window->isVisible());
    QCOMPARE(WhatsNewWindowController::shared().model(), model.data());
    // A list that is not empty replaces the window.
    WhatsNewWindowController::shared().show({release("1.0", {plainFeature("Two")})});
    QTRY_VERIFY(!window);
    QVERIFY(WhatsNewWindowController::shared().window());
}

void TestWindows::whatsNewVersionLinesOnlyForSeveralReleases()
{
    WhatsNewWindowController::shared().show({release("1.0", {plainFeature("One")})});
    waitUntilShown(WhatsNewWindowController::shared().window());
    QCOMPARE(WhatsNewWindowController::shared().window()->width(), 520);
    QCOMPARE(WhatsNewWindowController::shared().window()->title(),
             QStringLiteral("What's New in Corvane"));
    QCOMPARE(visibleItems(WhatsNewWindowController::shared().view(), QStringLiteral("versionLine"))
                 .size(),
             0);

    WhatsNewWindowController::shared().show(
        {release("1.1", {plainFeature("New")}), release("1.0", {plainFeature("Old")})});
    waitUntilShown(WhatsNewWindowController::shared().window());
    const QList<QQuickItem*> lines =
        visibleItems(WhatsNewWindowController::shared().view(), QStringLiteral("versionLine"));
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines[0]->property("text").toString(), QStringLiteral("Version 1.1"));
    QCOMPARE(lines[1]->property("text").toString(), QStringLiteral("Version 1.0"));
}

void TestWindows::whatsNewPlainFeatureShowsOnlyItsTexts()
{
    WhatsNewWindowController::shared().show({release("1.0", {plainFeature("Plain")})});
    waitUntilShown(WhatsNewWindowController::shared().window());
    QQuickItem* view = WhatsNewWindowController::shared().view();
    QVERIFY(shownIn(item(view, QStringLiteral("featureSymbol"))));
    QCOMPARE(item(view, QStringLiteral("featureTitle"))->property("text").toString(),
             QStringLiteral("Plain"));
    QVERIFY(shownIn(item(view, QStringLiteral("featureDetail"))));
    QVERIFY(!shownIn(item(view, QStringLiteral("featureAction"))));
    QVERIFY(!shownIn(item(view, QStringLiteral("featureMedia"))));
    QVERIFY(!item(view, QStringLiteral("mediaPlayer")));
}

void TestWindows::whatsNewActionClosesTheWindowFirst()
{
    bool ran = false;
    bool windowGoneWhenRun = false;
    WhatsNewFeature feature = plainFeature("With a button");
    feature.action = WhatsNewFeature::Action{QStringLiteral("Do It"), [&] {
                                                 ran = true;
                                                 windowGoneWhenRun =
                                                     !WhatsNewWindowController::shared().window();
                                             }};
    WhatsNewWindowController::shared().show({release("1.0", {feature})});
    waitUntilShown(WhatsNewWindowController::shared().window());
    QQuickItem* button =
        item(WhatsNewWindowController::shared().view(), QStringLiteral("featureAction"));
    QCOMPARE(button->property("text").toString(), QStringLiteral("Do It"));
    click(button);
    QTRY_VERIFY(ran);
    QVERIFY(windowGoneWhenRun);
}

void TestWindows::whatsNewOpenSettingsOpensAfterClosing()
{
    WhatsNewWindowController::shared().show(
        ReleaseNotes::all(m_delegate->whatsNewActions(), QStringLiteral("Ctrl")));
    waitUntilShown(WhatsNewWindowController::shared().window());
    QQuickItem* button = nullptr;
    for (QQuickItem* candidate :
         items(WhatsNewWindowController::shared().view(), QStringLiteral("featureAction")))
        if (candidate->isVisible())
            button = candidate;
    QVERIFY(button);
    QCOMPARE(button->property("text").toString(), QStringLiteral("Open Settings"));
    // The catalogue's window is long: scroll the button into view first.
    auto* scroll = item(WhatsNewWindowController::shared().view(), QStringLiteral("scroll"));
    QMetaObject::invokeMethod(scroll, "positionViewAtEnd");
    scroll->setProperty(
        "contentY", std::max(0.0, scroll->property("contentHeight").toDouble() - scroll->height()));
    QTest::qWait(100);
    click(button);
    QTRY_VERIFY(SettingsWindowPresenter::shared().window());
    QVERIFY(!WhatsNewWindowController::shared().window());
    waitUntilShown(SettingsWindowPresenter::shared().window());
}

void TestWindows::whatsNewReturnAndCloseBoxBothClose()
{
    for (const char* key : {"Return", "alt+F4"}) {
        WhatsNewWindowController::shared().show({release("1.0", {plainFeature("One")})});
        waitUntilShown(WhatsNewWindowController::shared().window());
        QPointer<QObject> model = WhatsNewWindowController::shared().model();
        QVERIFY(activateWindowOf(QCoreApplication::applicationPid(), QStringLiteral("What's New")));
        xdotool({QStringLiteral("key"), QString::fromLatin1(key)});
        // The same will-close handling: the window, its view and its model go.
        QTRY_VERIFY2(!WhatsNewWindowController::shared().window(), key);
        QTRY_VERIFY2(!model, key);
        QVERIFY(!WhatsNewWindowController::shared().view());
    }
}

void TestWindows::whatsNewClipLoopsMutedAndPausesOnClose()
{
    WhatsNewWindowController::shared().show(
        ReleaseNotes::all(m_delegate->whatsNewActions(), QStringLiteral("Ctrl")));
    waitUntilShown(WhatsNewWindowController::shared().window());
    auto* clip = qobject_cast<LoopingPlayer*>(
        item(WhatsNewWindowController::shared().view(), QStringLiteral("mediaPlayer")));
    QVERIFY(clip);
    QVERIFY(clip->muted());
    QCOMPARE(clip->loops(), int(QMediaPlayer::Infinite));
    QCOMPARE(clip->width(), 400.0);
    QCOMPARE(clip->height(), 250.0);
    QTRY_VERIFY_WITH_TIMEOUT(clip->framesShown() > 3, 5000);
    // Over and over: the position goes back to the start while it keeps playing.
    QPointer<QMediaPlayer> player = clip->player();
    qint64 last = -1;
    bool wrapped = false;
    connect(player, &QMediaPlayer::positionChanged, this, [&](qint64 position) {
        if (position + 500 < last)
            wrapped = true;
        last = position;
    });
    QTRY_VERIFY_WITH_TIMEOUT(wrapped, 8000);
    QTRY_VERIFY(clip->playing());
    const int frames = clip->framesShown();
    QTRY_VERIFY(clip->framesShown() > frames + 3); // and frames keep coming after the start
    // Closing the window pauses the clip before it goes.
    QList<QMediaPlayer::PlaybackState> states;
    connect(player, &QMediaPlayer::playbackStateChanged, this,
            [&](QMediaPlayer::PlaybackState state) { states << state; });
    WhatsNewWindowController::shared().close();
    QVERIFY(states.contains(QMediaPlayer::PausedState));
    if (player)
        disconnect(player, nullptr, this, nullptr);
}

// ---- Settings -------------------------------------------------------------------------------

void TestWindows::settingsPickerOffSilencesTheTrigger()
{
    SettingsWindowPresenter::shared().show();
    QQuickWindow* window = SettingsWindowPresenter::shared().window();
    waitUntilShown(window);
    QCOMPARE(window->title(), QStringLiteral("Corvane Settings"));
    QCOMPARE(window->size(), QSize(470, 470));
    QQuickItem* picker = settingsItem("triggerPicker");
    QCOMPARE(picker->property("currentText").toString(), QStringLiteral("Ctrl"));
    click(picker);
    // The open list's "Off" entry.
    QQuickItem* off = nullptr;
    QTRY_VERIFY([&] {
        const QList<QQuickItem*> entries =
            itemsWhere(window->contentItem(), [picker](QQuickItem* candidate) {
                return candidate->inherits("QQuickAbstractButton") && candidate != picker &&
                       candidate->property("text").toString() == QStringLiteral("Off") &&
                       candidate->isVisible() && candidate->height() > 0;
            });
        off = entries.isEmpty() ? nullptr : entries.last();
        return off != nullptr;
    }());
    QTest::qWait(250); // the list has finished opening
    click(off);
    QTRY_COMPARE(m_defaults->string(QStringLiteral("triggerModifier")), QStringLiteral("off"));
    QCOMPARE(m_delegate->detector.triggerModifier, std::nullopt);
    Q_EMIT m_delegate->statusMenuController->menu->aboutToShow();
    QCOMPARE(m_delegate->statusMenuController->headerItem->text(),
             QStringLiteral("Hold-to-peek is off"));
    QCOMPARE(picker->property("currentText").toString(), QStringLiteral("Off"));
    // Back to Ctrl for the other cases, through the store and the pane.
    SettingsWindowPresenter::shared().pane()->setTriggerModifier(QStringLiteral("command"));
    QCOMPARE(m_delegate->detector.triggerModifier, std::optional(ModifierFlags::command));
}

void TestWindows::settingsSliderStepsApplyAtOnce()
{
    SettingsWindowPresenter::shared().show();
    waitUntilShown(SettingsWindowPresenter::shared().window());
    QQuickItem* slider = settingsItem("delaySlider");
    auto* handle = slider->property("handle").value<QQuickItem*>();
    QVERIFY(handle);
    const QPoint start =
        handle->mapToGlobal(QPointF(handle->width() / 2, handle->height() / 2)).toPoint();
    const QPoint left = slider->mapToGlobal(QPointF(0, slider->height() / 2)).toPoint();
    const QPoint right =
        slider->mapToGlobal(QPointF(slider->width(), slider->height() / 2)).toPoint();
    xdotool({QStringLiteral("mousemove"), QString::number(start.x()), QString::number(start.y()),
             QStringLiteral("mousedown"), QStringLiteral("1")});
    QList<double> seen;
    for (int x : {start.x() + 13, start.x() + 41, start.x() + 77, right.x() + 40, left.x() - 40,
                  start.x() - 9}) {
        xdotool({QStringLiteral("mousemove"), QString::number(x), QString::number(start.y())});
        QTRY_VERIFY(m_defaults->doubleValue(QStringLiteral("holdDelay")).has_value());
        QTest::qWait(120);
        const double stored = *m_defaults->doubleValue(QStringLiteral("holdDelay"));
        QVERIFY2(stored >= 0.3 - 1e-9 && stored <= 2.0 + 1e-9, qPrintable(QString::number(stored)));
        const double steps = stored / 0.05;
        QVERIFY2(qAbs(steps - std::round(steps)) < 1e-6, qPrintable(QString::number(stored)));
        QCOMPARE(m_delegate->detector.holdDelay, stored); // applied at once
        QCOMPARE(settingsItem("delayText")->property("text").toString(),
                 QString::asprintf("%.2f s", stored));
        seen << stored;
    }
    xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
    QCOMPARE(seen.at(3), 2.0); // dragged past the end
    QCOMPARE(seen.at(4), 0.3); // and past the start
    QVERIFY(QSet<double>(seen.cbegin(), seen.cend()).size() >= 4);
}

void TestWindows::settingsOutOfRangeDelayIsClamped()
{
    QVERIFY(m_defaults->setDouble(QStringLiteral("holdDelay"), 7.5));
    m_delegate->reloadTriggerSettings();
    QCOMPARE(m_delegate->detector.holdDelay, 2.0);
    QVERIFY(m_defaults->setDouble(QStringLiteral("holdDelay"), 0.01));
    m_delegate->reloadTriggerSettings();
    QCOMPARE(m_delegate->detector.holdDelay, 0.3);
    // The slider shows the stored value within its range.
    SettingsWindowPresenter::shared().show();
    waitUntilShown(SettingsWindowPresenter::shared().window());
    QCOMPARE(settingsItem("delaySlider")->property("value").toDouble(), 0.3);
    QVERIFY(m_defaults->setDouble(QStringLiteral("holdDelay"), 0.85));
    m_delegate->reloadTriggerSettings();
}

void TestWindows::settingsShowTwiceKeepsOneWindowAndRecentres()
{
    SettingsWindowPresenter::shared().show();
    QPointer<QQuickWindow> first = SettingsWindowPresenter::shared().window();
    waitUntilShown(first);
    verifyCentred(first);
    first->setFramePosition({20, 20});
    QTRY_VERIFY(first->frameGeometry().x() < 100);
    SettingsWindowPresenter::shared().show();
    QCOMPARE(SettingsWindowPresenter::shared().window(), first.data());
    QTRY_VERIFY(first->frameGeometry().x() > 100);
    verifyCentred(first);
}

void TestWindows::settingsReopenShowsLoginItemAndPermission()
{
    QVERIFY(m_desktop->setLaunchAtLogin(false));
    SettingsWindowPresenter::shared().show();
    waitUntilShown(SettingsWindowPresenter::shared().window());
    QCOMPARE(settingsItem("launchAtLoginToggle")->property("checked").toBool(), false);
    QVERIFY(!shownIn(settingsItem("accessibilityRow")));
    SettingsWindowPresenter::shared().close();
    QTRY_VERIFY(!SettingsWindowPresenter::shared().window());

    // Changed while the window was closed.
    QVERIFY(m_desktop->setLaunchAtLogin(true));
    setPermission(false);
    SettingsWindowPresenter::shared().show();
    waitUntilShown(SettingsWindowPresenter::shared().window());
    QCOMPARE(settingsItem("launchAtLoginToggle")->property("checked").toBool(), true);
    QVERIFY(shownIn(settingsItem("accessibilityRow")));
    QVERIFY(shownIn(settingsItem("openSystemSettingsButton")));
    // "Open Accessibility Settings…" asks for the permission (IsEnabled on) and opens the settings.
    QFile::remove(m_recordFile);
    click(settingsItem("openSystemSettingsButton"));
    QTRY_COMPARE_WITH_TIMEOUT(AccessibilitySwitch::isEnabled(), std::optional(true), 3000);
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_recordFile), 3000);
    // The row goes within about a second once the permission is granted.
    QTRY_VERIFY_WITH_TIMEOUT(!shownIn(settingsItem("accessibilityRow")), 2500);
    setPermission(true);
    QVERIFY(m_desktop->setLaunchAtLogin(false));
}

void TestWindows::settingsWithPermissionShowsOnlyTheLoginToggle()
{
    SettingsWindowPresenter::shared().show();
    waitUntilShown(SettingsWindowPresenter::shared().window());
    QVERIFY(shownIn(settingsItem("launchAtLoginToggle")));
    QVERIFY(!shownIn(settingsItem("accessibilityRow")));
    QVERIFY(!shownIn(settingsItem("openSystemSettingsButton")));
}

void TestWindows::settingsLaunchAtLoginWritesAValidEntry()
{
    const QString entry = LinuxDesktop::autostartFilePath();
    QVERIFY(entry.startsWith(m_home.path()));
    QFile::remove(entry);
    SettingsWindowPresenter::shared().show();
    waitUntilShown(SettingsWindowPresenter::shared().window());
    QQuickItem* toggle = settingsItem("launchAtLoginToggle");
    click(toggle);
    QTRY_VERIFY(QFile::exists(entry));
    QVERIFY(toggle->property("checked").toBool());
    QVERIFY(m_desktop->launchesAtLogin());
    QProcess validate;
    validate.start(QStringLiteral("desktop-file-validate"), {entry});
    QVERIFY(validate.waitForFinished(10000));
    QVERIFY2(validate.exitCode() == 0, validate.readAllStandardOutput().constData());
    QFile file(entry);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains(("Exec=" + QCoreApplication::applicationFilePath()).toUtf8()));
    file.close();

    click(toggle);
    QTRY_VERIFY(!QFile::exists(entry));
    QVERIFY(!toggle->property("checked").toBool());
    QVERIFY(!m_desktop->launchesAtLogin());
}

void TestWindows::settingsLaunchAtLoginRevertsOnAReadOnlyFolder()
{
    const QString entry = LinuxDesktop::autostartFilePath();
    QFile::remove(entry);
    QDir().mkpath(QFileInfo(entry).absolutePath());
    SettingsWindowPresenter::shared().show();
    waitUntilShown(SettingsWindowPresenter::shared().window());
    QQuickItem* toggle = settingsItem("launchAtLoginToggle");
    {
        ReadOnlyFolder readOnly(QFileInfo(entry).absolutePath());
        QVERIFY2(readOnly.isReadOnly(), qPrintable(readOnly.reason()));
        QSignalSpy changed(SettingsWindowPresenter::shared().pane(),
                           &GeneralPaneModel::launchAtLoginChanged);
        click(toggle);
        QTRY_VERIFY(changed.size() >= 1);
        QTest::qWait(100);
        QVERIFY(!QFile::exists(entry));
        QVERIFY(!toggle->property("checked").toBool()); // silently back to the real state
    }
    // Writable again: the same click works.
    click(toggle);
    QTRY_VERIFY(QFile::exists(entry));
    QVERIFY(m_desktop->setLaunchAtLogin(false));
}

QTEST_MAIN(TestWindows)
#include "tst_windows.moc"
