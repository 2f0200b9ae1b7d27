#include "TrayWatch.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>

namespace corvane {

namespace {
const QString watcher = QStringLiteral("org.kde.StatusNotifierWatcher");
} // namespace

TrayWatch::TrayWatch(QObject* parent) : QObject(parent)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    auto* started =
        new QDBusServiceWatcher(watcher, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(started, &QDBusServiceWatcher::serviceRegistered, this, &TrayWatch::mayHaveAppeared);
    bus.connect(watcher, QStringLiteral("/StatusNotifierWatcher"), watcher,
                QStringLiteral("StatusNotifierHostRegistered"), this, SIGNAL(mayHaveAppeared()));
}

} // namespace corvane
