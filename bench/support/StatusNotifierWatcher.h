#pragma once

// A stand-in for the desktop's tray host: the StatusNotifierWatcher service on the session bus,
// registered by a benchmark, so that the real program shows its tray icon as a StatusNotifierItem.
// The item's menu is then read and clicked over com.canonical.dbusmenu, as a panel would.

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QStringList>

namespace corvane::test {

class StatusNotifierWatcher : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)

public:
    explicit StatusNotifierWatcher(QObject* parent = nullptr);
    // False when the session bus or the name is not available.
    bool registerOnSessionBus();

    bool isHostRegistered() const { return true; }
    int protocolVersion() const { return 0; }
    QStringList items() const { return m_items; }

    // Clicks the entry of the first registered item's menu whose label is `label`.
    bool click(const QString& label);

public Q_SLOTS:
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString& service);
    Q_SCRIPTABLE void RegisterStatusNotifierHost(const QString& service);

Q_SIGNALS:
    Q_SCRIPTABLE void StatusNotifierItemRegistered(const QString& service);

private:
    QStringList m_items;
    std::pair<QString, QString> menuAddress() const; // service, object path
};

} // namespace corvane::test
