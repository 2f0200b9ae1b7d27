#pragma once

// The walk rules on the tree interface: the crawl of a menu bar into a MenuCatalog, and the press
// of one command along its path. Pure rules, no platform calls of their own; the log lines go to
// "com.vantorel.corvane.crawl".

#include "MenuCatalog.h"
#include "MenuTree.h"
#include "platform/RunningApp.h"

#include <QLoggingCategory>
#include <QSet>
#include <optional>

Q_DECLARE_LOGGING_CATEGORY(lcCrawl)

namespace corvane {

enum class PressOutcome { pressed, assumedFired, failed };

namespace MenuWalk {

inline constexpr int itemCap = 2500;
inline constexpr int depthLimit = 5;

// The localized titles of a system "Services" submenu, skipped in an application menu. Linux menu
// bars have no application menu (isAppMenu is always false), so this never applies here.
const QSet<QString>& servicesTitles();

// `menuBar` is null when it could not be read; `readError` is then the code to log.
// Top-level menus are walked from the first child: Linux menu bars have no system menu.
std::optional<MenuCatalog> crawl(const RunningApp& app, const std::shared_ptr<MenuNode>& menuBar,
                                 int readError, WalkBudget& budget);

PressOutcome press(const QList<PathStep>& path, const std::shared_ptr<MenuNode>& menuBar);

// The text of the last menu-bar read failure (a diagnostic record nothing reads).
QString lastFailure();

} // namespace MenuWalk
} // namespace corvane
