#pragma once

// The display and trigger settings: the five registered defaults, the hold-delay clamp, the trigger
// mapping and the trigger's name, as pure functions over the settings store.

#include "trigger/ModifierFlags.h"

#include <QString>
#include <optional>

namespace corvane {

class UserDefaults;

namespace TriggerSettings {

inline const QString holdDelayKey = QStringLiteral("holdDelay");
inline const QString triggerModifierKey = QStringLiteral("triggerModifier");
inline const QString showDisabledItemsKey = QStringLiteral("showDisabledItems");
inline const QString showItemsWithoutShortcutKey = QStringLiteral("showItemsWithoutShortcut");
inline const QString glassyBackgroundKey = QStringLiteral("glassyBackground");
inline const QString rememberCommandsKey = QStringLiteral("rememberCommands");
// Off unless the user switches it on: Chromium-family browsers are read by borrowing the global
// menu registrar's name for a moment where the desktop runs none.
inline const QString readBrowserMenusKey = QStringLiteral("readBrowserMenus");
// The application ids where holding the trigger never arms.
inline const QString excludedApplicationsKey = QStringLiteral("excludedApplications");

inline constexpr double defaultHoldDelay = 0.85;
inline constexpr double minimumHoldDelay = 0.3;
inline constexpr double maximumHoldDelay = 2.0;

// Registers the six defaults (in memory; never written).
void registerDefaults(UserDefaults& defaults);

// 0.3 or less gives 0.3; then more than 2.0 gives 2.0.
double clampHoldDelay(double seconds);
double holdDelay(const UserDefaults& defaults);

// A switch ("showDisabledItems", "showItemsWithoutShortcut", "glassyBackground",
// "rememberCommands"), true when absent.
bool displayOption(const UserDefaults& defaults, const QString& key);

// The stored "triggerModifier", "command" when absent.
QString triggerSetting(const UserDefaults& defaults);
// "option" → option, "control" → control, "off" → none, anything else → command.
std::optional<ModifierFlags::Flags> triggerModifier(const QString& setting);
// The trigger as the keyboard labels it: "Ctrl", "Alt", "Super", or "" for "off". The stored values
// keep their historical names ("command" is Ctrl, "option" Alt, "control" Super).
QString triggerSymbol(const QString& setting);

} // namespace TriggerSettings
} // namespace corvane
