#include "TriggerSettings.h"

#include "platform/UserDefaults.h"

#include <QVariantMap>

namespace corvane::TriggerSettings {

void registerDefaults(UserDefaults& defaults)
{
    defaults.registerDefaults({
        {holdDelayKey, defaultHoldDelay},
        {triggerModifierKey, QStringLiteral("command")},
        {showDisabledItemsKey, true},
        {showItemsWithoutShortcutKey, true},
        {glassyBackgroundKey, true},
        {rememberCommandsKey, true},
        {readBrowserMenusKey, false},
    });
}

double clampHoldDelay(double seconds)
{
    double result = seconds;
    if (result <= minimumHoldDelay)
        result = minimumHoldDelay;
    if (result > maximumHoldDelay)
        result = maximumHoldDelay;
    return result;
}

double holdDelay(const UserDefaults& defaults)
{
    return clampHoldDelay(defaults.doubleValue(holdDelayKey).value_or(defaultHoldDelay));
}

bool displayOption(const UserDefaults& defaults, const QString& key)
{
    return defaults.boolValue(key).value_or(true);
}

QString triggerSetting(const UserDefaults& defaults)
{
    return defaults.string(triggerModifierKey).value_or(QStringLiteral("command"));
}

std::optional<ModifierFlags::Flags> triggerModifier(const QString& setting)
{
    if (setting == u"option")
        return ModifierFlags::option;
    if (setting == u"control")
        return ModifierFlags::control;
    if (setting == u"off")
        return std::nullopt;
    return ModifierFlags::command;
}

QString triggerSymbol(const QString& setting)
{
    if (setting == u"option")
        return QStringLiteral("Alt");
    if (setting == u"control")
        return QStringLiteral("Super");
    if (setting == u"off")
        return QString();
    return QStringLiteral("Ctrl");
}

} // namespace corvane::TriggerSettings
