#include "SettingsWindow.h"

#include "AppDelegate.h"
#include "StatusMenuController.h"
#include "TriggerSettings.h"
#include "menus/CommandHistory.h"
#include "platform/AccessibilityTrust.h"
#include "platform/DesktopCompanion.h"
#include "platform/DesktopIntegration.h"
#include "platform/UserDefaults.h"

#include <QCoreApplication>
#include <QLocale>
#include <cmath>

namespace corvane {

GeneralPaneModel::GeneralPaneModel(UserDefaults& defaults, const WindowServices& services,
                                   QObject* parent)
    : QObject(parent), m_defaults(defaults), m_services(services),
      m_launchAtLogin(services.desktop && services.desktop->launchesAtLogin()),
      m_permission(services.trust)
{
    // The permission as shown, refreshed every second while the pane exists.
    connect(&m_permission, &PermissionWatch::changed, this, &GeneralPaneModel::trustedChanged);
    if (services.companion)
        connect(services.companion, &DesktopCompanion::stateChanged, this,
                &GeneralPaneModel::companionStateChanged);
}

void GeneralPaneModel::turnOnCompanion()
{
    if (m_services.companion)
        m_services.companion->turnOn();
}

void GeneralPaneModel::peekNow()
{
    if (AppDelegate::shared && AppDelegate::shared->statusMenuController)
        AppDelegate::shared->statusMenuController->peekNow();
}

void GeneralPaneModel::quit()
{
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
}

double GeneralPaneModel::holdDelay() const
{
    return m_defaults.doubleValue(TriggerSettings::holdDelayKey)
        .value_or(TriggerSettings::defaultHoldDelay);
}

QString GeneralPaneModel::holdDelayText() const
{
    // The localised format "%.2f s": 0.85 shows as "0.85 s", and with the locale's decimal
    // sign ("0,85 s" in German).
    QString text = tr("%.2f s");
    return text.replace(QStringLiteral("%.2f"), QLocale().toString(holdDelay(), 'f', 2));
}

QString GeneralPaneModel::triggerModifier() const
{
    return TriggerSettings::triggerSetting(m_defaults);
}

bool GeneralPaneModel::showDisabledItems() const
{
    return TriggerSettings::displayOption(m_defaults, TriggerSettings::showDisabledItemsKey);
}

bool GeneralPaneModel::showItemsWithoutShortcut() const
{
    return TriggerSettings::displayOption(m_defaults, TriggerSettings::showItemsWithoutShortcutKey);
}

bool GeneralPaneModel::glassyBackground() const
{
    return TriggerSettings::displayOption(m_defaults, TriggerSettings::glassyBackgroundKey);
}

void GeneralPaneModel::setHoldDelay(double seconds)
{
    // The slider's steps of 0.05 between 0.3 and 2.0, stored without binary noise.
    const double clamped = TriggerSettings::clampHoldDelay(seconds);
    const double stepped = std::round(clamped / delayStep) * delayStep;
    const double value = std::round(stepped * 100.0) / 100.0;
    if (m_defaults.setDouble(TriggerSettings::holdDelayKey, value) && AppDelegate::shared)
        AppDelegate::shared->reloadTriggerSettings();
    Q_EMIT holdDelayChanged();
}

void GeneralPaneModel::setTriggerModifier(const QString& value)
{
    static const QStringList choices{QStringLiteral("command"), QStringLiteral("option"),
                                     QStringLiteral("control"), QStringLiteral("off")};
    if (choices.contains(value) &&
        m_defaults.setString(TriggerSettings::triggerModifierKey, value) && AppDelegate::shared)
        AppDelegate::shared->reloadTriggerSettings();
    Q_EMIT triggerModifierChanged();
}

void GeneralPaneModel::storeBool(const QString& key, bool value,
                                 void (GeneralPaneModel::*changed)())
{
    m_defaults.setBool(key, value); // refused: the stored value shows again
    Q_EMIT(this->*changed)();
}

void GeneralPaneModel::setShowDisabledItems(bool show)
{
    storeBool(TriggerSettings::showDisabledItemsKey, show,
              &GeneralPaneModel::showDisabledItemsChanged);
}

void GeneralPaneModel::setShowItemsWithoutShortcut(bool show)
{
    storeBool(TriggerSettings::showItemsWithoutShortcutKey, show,
              &GeneralPaneModel::showItemsWithoutShortcutChanged);
}

void GeneralPaneModel::setGlassyBackground(bool glassy)
{
    storeBool(TriggerSettings::glassyBackgroundKey, glassy,
              &GeneralPaneModel::glassyBackgroundChanged);
}

void GeneralPaneModel::setLaunchAtLogin(bool enabled)
{
    DesktopIntegration* desktop = m_services.desktop;
    if (desktop && desktop->setLaunchAtLogin(enabled))
        m_launchAtLogin = enabled;
    else
        m_launchAtLogin = desktop && desktop->launchesAtLogin(); // silently the real state
    Q_EMIT launchAtLoginChanged();
}

bool GeneralPaneModel::rememberCommands() const
{
    return TriggerSettings::displayOption(m_defaults, TriggerSettings::rememberCommandsKey);
}

void GeneralPaneModel::setRememberCommands(bool remember)
{
    storeBool(TriggerSettings::rememberCommandsKey, remember,
              &GeneralPaneModel::rememberCommandsChanged);
}

bool GeneralPaneModel::readBrowserMenus() const
{
    return m_defaults.boolValue(TriggerSettings::readBrowserMenusKey).value_or(false);
}

void GeneralPaneModel::setReadBrowserMenus(bool read)
{
    storeBool(TriggerSettings::readBrowserMenusKey, read,
              &GeneralPaneModel::readBrowserMenusChanged);
}

void GeneralPaneModel::forgetHistory()
{
    CommandHistory(m_defaults).forgetAll();
}

QStringList GeneralPaneModel::excludedIds() const
{
    return m_defaults.stringList(TriggerSettings::excludedApplicationsKey).value_or(QStringList{});
}

QVariantMap GeneralPaneModel::describe(const RunningApp& app) const
{
    return {{QStringLiteral("appId"), app.appId.value_or(QString())},
            {QStringLiteral("name"), app.name.isEmpty() ? app.appId.value_or(QString()) : app.name},
            {QStringLiteral("icon"), app.iconName}};
}

QVariantList GeneralPaneModel::excludedApplications() const
{
    QVariantList list;
    for (const QString& id : excludedIds())
        list << describe(m_services.describeApplication ? m_services.describeApplication(id)
                                                        : RunningApp{0, id, id, {}});
    return list;
}

QVariantList GeneralPaneModel::applicationsToExclude() const
{
    const QStringList listed = excludedIds();
    QVariantList list;
    if (m_services.runningApplications)
        for (const RunningApp& app : m_services.runningApplications())
            if (app.appId && !listed.contains(*app.appId))
                list << describe(app);
    return list;
}

void GeneralPaneModel::exclude(const QString& appId)
{
    QStringList ids = excludedIds();
    if (!appId.isEmpty() && !ids.contains(appId))
        m_defaults.setStringList(TriggerSettings::excludedApplicationsKey, ids << appId);
    Q_EMIT excludedApplicationsChanged();
}

void GeneralPaneModel::include(const QString& appId)
{
    QStringList ids = excludedIds();
    if (ids.removeAll(appId) > 0 && ids.isEmpty())
        m_defaults.remove(TriggerSettings::excludedApplicationsKey);
    else if (!ids.isEmpty())
        m_defaults.setStringList(TriggerSettings::excludedApplicationsKey, ids);
    Q_EMIT excludedApplicationsChanged();
}

void GeneralPaneModel::openSystemSettings()
{
    if (m_services.trust)
        m_services.trust->requestTrust();
    if (m_services.desktop)
        m_services.desktop->openAccessibilitySettings();
}

void GeneralPaneModel::reload()
{
    m_launchAtLogin = m_services.desktop && m_services.desktop->launchesAtLogin();
    Q_EMIT holdDelayChanged();
    Q_EMIT triggerModifierChanged();
    Q_EMIT showDisabledItemsChanged();
    Q_EMIT showItemsWithoutShortcutChanged();
    Q_EMIT glassyBackgroundChanged();
    Q_EMIT launchAtLoginChanged();
    Q_EMIT rememberCommandsChanged();
    Q_EMIT readBrowserMenusChanged();
    Q_EMIT excludedApplicationsChanged();
}

SettingsWindowPresenter& SettingsWindowPresenter::shared()
{
    static SettingsWindowPresenter presenter;
    return presenter;
}

void SettingsWindowPresenter::show()
{
    if (!window()) {
        const WindowServices& services = WindowServices::shared();
        auto* pane = new GeneralPaneModel(
            services.defaults ? *services.defaults : UserDefaults::standard(), services);
        create(QStringLiteral("Corvane.Settings"), QStringLiteral("GeneralPane"),
               tr("Corvane Settings"), Buttons::closeAndMinimize, {}, pane);
    } else if (GeneralPaneModel* open = pane()) {
        open->reload();
    }
    bringForward();
}

GeneralPaneModel* SettingsWindowPresenter::pane() const
{
    return qobject_cast<GeneralPaneModel*>(model());
}

} // namespace corvane
