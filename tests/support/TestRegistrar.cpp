#include "TestRegistrar.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace corvane::test {

namespace {
const QString service = QStringLiteral("com.canonical.AppMenu.Registrar");
const QString path = QStringLiteral("/com/canonical/AppMenu/Registrar");
} // namespace

TestRegistrar::~TestRegistrar()
{
    if (!m_started)
        return;
    QDBusConnection::sessionBus().unregisterService(service);
    QDBusConnection::sessionBus().unregisterObject(path);
}

bool TestRegistrar::start()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    m_started =
        bus.registerObject(path, this,
                           QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals) &&
        bus.registerService(service);
    return m_started;
}

void TestRegistrar::RegisterWindow(uint windowId, const QDBusObjectPath& menuObjectPath)
{
    m_windows.insert(windowId, {message().service(), menuObjectPath});
    Q_EMIT WindowRegistered(windowId, message().service(), menuObjectPath);
}

void TestRegistrar::UnregisterWindow(uint windowId)
{
    if (m_windows.remove(windowId))
        Q_EMIT WindowUnregistered(windowId);
}

QString TestRegistrar::GetMenuForWindow(uint windowId, QDBusObjectPath& menuObjectPath)
{
    const auto found = m_windows.value(windowId);
    menuObjectPath = found.second.path().isEmpty() ? QDBusObjectPath("/") : found.second;
    return found.first;
}

} // namespace corvane::test
