#pragma once

// A global-menu registrar on the session bus, as a desktop with a global menu runs one: Qt
// applications started while it is there export their menu bars as DBusMenus and register each
// window's menu with it. Releases the name when destroyed.

#include <QDBusContext>
#include <QDBusObjectPath>
#include <QHash>
#include <QObject>

namespace corvane::test {

class TestRegistrar : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.AppMenu.Registrar")

public:
    ~TestRegistrar() override;
    // Takes the registrar's name; false when it could not.
    bool start();
    int registrations() const { return int(m_windows.size()); }

public Q_SLOTS:
    void RegisterWindow(uint windowId, const QDBusObjectPath& menuObjectPath);
    void UnregisterWindow(uint windowId);
    QString GetMenuForWindow(uint windowId, QDBusObjectPath& menuObjectPath);

Q_SIGNALS:
    void WindowRegistered(uint windowId, const QString& service,
                          const QDBusObjectPath& menuObjectPath);
    void WindowUnregistered(uint windowId);

private:
    bool m_started = false;
    QHash<uint, std::pair<QString, QDBusObjectPath>> m_windows;
};

} // namespace corvane::test
