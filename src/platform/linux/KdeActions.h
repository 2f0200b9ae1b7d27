#pragma once

// The actions a KDE application's main window publishes on the session bus, whatever its
// accessibility: its bus name is org.kde.<app>-<pid>, its windows /<app>/MainWindow_<n>
// (org.kde.KMainWindow, whose winId() is the X window) and their actions
// /<app>/MainWindow_<n>/actions/<name> (org.qtproject.Qt.QAction: text, shortcut as Qt key codes,
// enabled, visible, checkable, checked; trigger()). The list is flat: the actions are grouped into
// menus by the standard action-name prefixes (file_, edit_, view_, …), the rest under "Other".

#include "menus/MenuTree.h"

#include <QString>

namespace corvane::kdeactions {

// The menu an action belongs in, by its name's prefix ("file_new" → "File"), translated; "Other"
// for a name without a known prefix.
QString menuFor(const QString& actionName);

// The first of a QAction's key sequences (Qt key codes: modifiers | key) as keys.
ShortcutKeys shortcutFrom(const QList<int>& keyCodes);

class Source : public MenuSource {
public:
    MenuBar menuBar(qint64 pid, WalkBudget& budget) override;
};

} // namespace corvane::kdeactions
