#include "StatusMenuController.h"

#include "AppDelegate.h"
#include "AppLog.h"
#include "SettingsWindow.h"
#include "overlay/SymbolImageProvider.h"
#include "update/UpdateChecker.h"
#include "whatsnew/ReleaseNotes.h"
#include "whatsnew/WelcomeWindowController.h"
#include "whatsnew/WhatsNewWindowController.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QSystemTrayIcon>

namespace corvane {

namespace {

// The symbol "command.square.fill" in the palette's text colour, at the tray's usual sizes.
QIcon statusIcon()
{
    SymbolImageProvider symbols;
    const QString id = QStringLiteral("command.square.fill?") +
                       QApplication::palette().color(QPalette::WindowText).name();
    QIcon icon;
    for (const int side : {16, 22, 24, 32, 48, 64})
        icon.addPixmap(QPixmap::fromImage(symbols.requestImage(id, nullptr, QSize(side, side))));
    return icon;
}

} // namespace

StatusMenuController::StatusMenuController(bool showStatusItem, QObject* parent)
    : QObject(parent), statusItem(new QSystemTrayIcon(this)), menu(new QMenu),
      headerItem(new QAction(menu)), permissionItem(new QAction(menu)), peekItem(new QAction(menu))
{
    statusItem->setIcon(statusIcon());
    statusItem->setToolTip(QStringLiteral("Corvane"));

    headerItem->setEnabled(false);
    permissionItem->setText(tr("Accessibility access needed — click to fix"));
    connect(permissionItem, &QAction::triggered, this, &StatusMenuController::openWelcome);
    peekItem->setText(tr("Peek Current App"));
    connect(peekItem, &QAction::triggered, this, &StatusMenuController::peekNow);

    const auto item = [this](const QString& title, void (StatusMenuController::*action)(),
                             const QKeySequence& key = {}) {
        auto* created = new QAction(title, menu);
        created->setShortcut(key);
        connect(created, &QAction::triggered, this, action);
        return created;
    };
    QAction* settings = item(tr("Settings…"), &StatusMenuController::openSettings,
                             QKeySequence(Qt::CTRL | Qt::Key_Comma));
    QAction* welcome = item(tr("Welcome to Corvane…"), &StatusMenuController::openWelcome);
    QAction* whatsNew = item(tr("What's New in Corvane…"), &StatusMenuController::openWhatsNew);
    QAction* updates = item(tr("Check for Updates…"), &StatusMenuController::checkForUpdates);
    auto* quit = new QAction(tr("Quit Corvane"), menu);
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(quit, &QAction::triggered, qApp, &QCoreApplication::quit, Qt::QueuedConnection);

    menu->addAction(headerItem);
    menu->addAction(permissionItem);
    menu->addSeparator();
    menu->addAction(peekItem);
    menu->addSeparator();
    menu->addActions({settings, welcome, whatsNew, updates});
    menu->addSeparator();
    menu->addAction(quit);

    connect(menu, &QMenu::aboutToShow, this, &StatusMenuController::menuNeedsUpdate);
    statusItem->setContextMenu(menu);
    // Texts are right even before the first opening (a tray host may read them ahead).
    menuNeedsUpdate();
    if (!showStatusItem)
        return;
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        qCWarning(lcApp, "no system tray in this session: the status menu waits for one");
        // Qt's stand-in there is an X11 tray, which a Wayland session never has.
        if (QGuiApplication::platformName() == u"wayland")
            return;
    }
    statusItem->show();
}

void StatusMenuController::trayMayHaveAppeared()
{
    if (!statusItem->isVisible() && QSystemTrayIcon::isSystemTrayAvailable())
        statusItem->show();
}

StatusMenuController::~StatusMenuController()
{
    delete menu;
}

void StatusMenuController::menuNeedsUpdate()
{
    const QString symbol = AppDelegate::shared ? AppDelegate::shared->triggerSymbol() : QString();
    headerItem->setText(symbol.isEmpty()
                            ? tr("Hold-to-peek is off")
                            : tr("Hold %1 to peek at any app's shortcuts").arg(symbol));
    permissionItem->setVisible(!(AppDelegate::shared && AppDelegate::shared->isTrusted()));
}

void StatusMenuController::peekNow()
{
    if (!AppDelegate::shared)
        return;
    if (AppDelegate::shared->isTrusted())
        AppDelegate::shared->detector.send(HoldStateMachine::Event::pinRequest());
    else
        WelcomeWindowController::shared().show();
}

void StatusMenuController::openSettings()
{
    SettingsWindowPresenter::shared().show();
}

void StatusMenuController::openWelcome()
{
    WelcomeWindowController::shared().show();
}

void StatusMenuController::openWhatsNew()
{
    if (!AppDelegate::shared)
        return;
    WhatsNewWindowController::shared().show(ReleaseNotes::all(
        AppDelegate::shared->whatsNewActions(), AppDelegate::shared->triggerSymbol()));
}

void StatusMenuController::checkForUpdates()
{
    UpdateChecker::checkAndPresent();
}

} // namespace corvane
