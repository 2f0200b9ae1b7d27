#pragma once

// Tells when a tray may have come to the session: a StatusNotifier watcher starts, or a host
// registers with it. Corvane's tray icon, not shown while there was none, is shown then, and the
// GNOME Shell companion's top-bar icon, which stood in for it, goes.

#include <QObject>

namespace corvane {

class TrayWatch : public QObject {
    Q_OBJECT

public:
    explicit TrayWatch(QObject* parent = nullptr);

Q_SIGNALS:
    void mayHaveAppeared();
};

} // namespace corvane
