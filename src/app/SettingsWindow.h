#pragma once

// The settings window: SettingsWindowPresenter and its single form, GeneralPane, whose state and
// actions GeneralPaneModel holds. Settings are stored at once; the trigger and the delay take
// effect at once through AppDelegate::reloadTriggerSettings().

#include "whatsnew/SecondaryWindow.h"

#include <QObject>
#include <QVariantList>

namespace corvane {

class UserDefaults;

class GeneralPaneModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(double holdDelay READ holdDelay WRITE setHoldDelay NOTIFY holdDelayChanged)
    Q_PROPERTY(QString holdDelayText READ holdDelayText NOTIFY holdDelayChanged)
    Q_PROPERTY(QString triggerModifier READ triggerModifier WRITE setTriggerModifier NOTIFY
                   triggerModifierChanged)
    Q_PROPERTY(bool showDisabledItems READ showDisabledItems WRITE setShowDisabledItems NOTIFY
                   showDisabledItemsChanged)
    Q_PROPERTY(bool showItemsWithoutShortcut READ showItemsWithoutShortcut WRITE
                   setShowItemsWithoutShortcut NOTIFY showItemsWithoutShortcutChanged)
    Q_PROPERTY(bool glassyBackground READ glassyBackground WRITE setGlassyBackground NOTIFY
                   glassyBackgroundChanged)
    Q_PROPERTY(
        bool launchAtLogin READ launchAtLogin WRITE setLaunchAtLogin NOTIFY launchAtLoginChanged)
    Q_PROPERTY(bool trusted READ trusted NOTIFY trustedChanged)
    Q_PROPERTY(bool rememberCommands READ rememberCommands WRITE setRememberCommands NOTIFY
                   rememberCommandsChanged)
    Q_PROPERTY(bool readBrowserMenus READ readBrowserMenus WRITE setReadBrowserMenus NOTIFY
                   readBrowserMenusChanged)
    // The applications where holding does nothing: {appId, name, icon} maps, in stored order.
    Q_PROPERTY(QVariantList excludedApplications READ excludedApplications NOTIFY
                   excludedApplicationsChanged)
    // Without a tray the pane offers the tray menu's Peek and Quit.
    Q_PROPERTY(bool trayAvailable READ trayAvailable CONSTANT)
    Q_PROPERTY(QString companionState READ companionState NOTIFY companionStateChanged)

public:
    // The slider's step; its range is TriggerSettings' 0.3 to 2.0.
    static constexpr double delayStep = 0.05;

    GeneralPaneModel(UserDefaults& defaults, const WindowServices& services,
                     QObject* parent = nullptr);

    double holdDelay() const;
    QString holdDelayText() const;
    QString triggerModifier() const;
    bool showDisabledItems() const;
    bool showItemsWithoutShortcut() const;
    bool glassyBackground() const;
    bool launchAtLogin() const { return m_launchAtLogin; }
    bool trusted() const { return m_permission.trusted(); }
    bool rememberCommands() const;
    bool readBrowserMenus() const;
    QVariantList excludedApplications() const;
    bool trayAvailable() const { return m_services.hasTray(); }
    QString companionState() const { return m_services.companionState(); }

    // Each stores the value at once; a value the store refuses is not kept, and the control
    // shows the stored one again.
    void setHoldDelay(double seconds);
    void setTriggerModifier(const QString& value);
    void setShowDisabledItems(bool show);
    void setShowItemsWithoutShortcut(bool show);
    void setGlassyBackground(bool glassy);
    // A failed change silently shows the real state again.
    void setLaunchAtLogin(bool enabled);
    void setRememberCommands(bool remember);
    void setReadBrowserMenus(bool read);

    // "Forget…", once confirmed: every application's history of run commands.
    Q_INVOKABLE void forgetHistory();
    // The applications with a window that are not listed yet, to choose from ({appId, name, icon}).
    Q_INVOKABLE QVariantList applicationsToExclude() const;
    Q_INVOKABLE void exclude(const QString& appId);
    Q_INVOKABLE void include(const QString& appId);

    // "Open Accessibility Settings…": asks for the permission, then opens the accessibility
    // settings (the settings window has no separate grant button).
    Q_INVOKABLE void openSystemSettings();
    Q_INVOKABLE void turnOnCompanion();
    // The tray menu's "Peek Current App" and "Quit Corvane".
    Q_INVOKABLE void peekNow();
    Q_INVOKABLE void quit();
    // Reads every stored value again (a change made elsewhere shows in the pane).
    void reload();

Q_SIGNALS:
    void holdDelayChanged();
    void triggerModifierChanged();
    void showDisabledItemsChanged();
    void showItemsWithoutShortcutChanged();
    void glassyBackgroundChanged();
    void launchAtLoginChanged();
    void trustedChanged();
    void rememberCommandsChanged();
    void readBrowserMenusChanged();
    void excludedApplicationsChanged();
    void companionStateChanged();

private:
    void storeBool(const QString& key, bool value, void (GeneralPaneModel::*changed)());
    QStringList excludedIds() const;
    QVariantMap describe(const RunningApp& app) const;

    UserDefaults& m_defaults;
    WindowServices m_services;
    bool m_launchAtLogin = false;
    PermissionWatch m_permission;
};

class SettingsWindowPresenter : public SecondaryWindow {
    Q_DECLARE_TR_FUNCTIONS(SettingsWindowPresenter)

public:
    static SettingsWindowPresenter& shared();

    // Creates the window on first use and brings it forward, centred on the screen under the
    // pointer, every time.
    void show();
    // The open window's pane, or null.
    GeneralPaneModel* pane() const;
};

} // namespace corvane
