#pragma once

// Corvane's only permanent presence, the tray icon and its menu. Two entries are brought up to date
// each time the menu opens (the hint with the trigger's name, the permission warning); the others
// call into the shell and the secondary windows.

#include <QObject>

class QAction;
class QMenu;
class QSystemTrayIcon;

namespace corvane {

class StatusMenuController : public QObject {
    Q_OBJECT

public:
    // Without `showStatusItem` the menu is built but no tray icon is shown (tests).
    explicit StatusMenuController(bool showStatusItem = true, QObject* parent = nullptr);
    ~StatusMenuController() override;

    QSystemTrayIcon* const statusItem;
    QMenu* const menu;
    QAction* const headerItem;
    QAction* const permissionItem;
    QAction* const peekItem;

    // Run each time the menu is about to open (QMenu::aboutToShow).
    void menuNeedsUpdate();
    // Shows the tray icon that waits for a tray, once the session has one.
    void trayMayHaveAppeared();

    void peekNow();
    void openSettings();
    void openWelcome();
    void openWhatsNew();
    void checkForUpdates();
};

} // namespace corvane
