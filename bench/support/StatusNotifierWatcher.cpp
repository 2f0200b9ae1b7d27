#include "StatusNotifierWatcher.h"

#include "platform/linux/DBusMenu.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

namespace corvane::test {

namespace {

QDBusMessage call(const QString& service, const QString& path, const QString& interface,
                  const QString& method, const QVariantList& arguments = {})
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return QDBusConnection::sessionBus().call(message, QDBus::Block, 5000);
}

} // namespace

StatusNotifierWatcher::StatusNotifierWatcher(QObject* parent) : QObject(parent) {}

bool StatusNotifierWatcher::registerOnSessionBus()
{
    QDBusConnection session = QDBusConnection::sessionBus();
    return session.isConnected() &&
           session.registerObject("/StatusNotifierWatcher", this,
                                  QDBusConnection::ExportScriptableContents |
                                      QDBusConnection::ExportAllProperties) &&
           session.registerService("org.kde.StatusNotifierWatcher");
}

void StatusNotifierWatcher::RegisterStatusNotifierItem(const QString& service)
{
    // Items register either a bus name or an object path on their own connection.
    const QString sender = message().service();
    m_items.append(service.startsWith(u'/') ? sender + service : service);
    Q_EMIT StatusNotifierItemRegistered(m_items.constLast());
}

void StatusNotifierWatcher::RegisterStatusNotifierHost(const QString&) {}

std::pair<QString, QString> StatusNotifierWatcher::menuAddress() const
{
    if (m_items.isEmpty())
        return {};
    QString service = m_items.constFirst();
    QString itemPath = "/StatusNotifierItem";
    if (const qsizetype slash = service.indexOf(u'/'); slash > 0) {
        itemPath = service.mid(slash);
        service = service.left(slash);
    }
    const QDBusMessage reply = call(service, itemPath, "org.freedesktop.DBus.Properties", "Get",
                                    {"org.kde.StatusNotifierItem", "Menu"});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    const QVariant menu = reply.arguments().constFirst().value<QDBusVariant>().variant();
    return {service, menu.value<QDBusObjectPath>().path()};
}

bool StatusNotifierWatcher::click(const QString& label)
{
    // The menu as a tray host reads it when it opens.
    const auto [service, path] = menuAddress();
    if (path.isEmpty())
        return false;
    const QString menuInterface = "com.canonical.dbusmenu";
    call(service, path, menuInterface, "AboutToShow", {0});
    const QDBusMessage reply =
        call(service, path, menuInterface, "GetLayout", {0, -1, QStringList()});
    int itemsLeft = 100;
    const auto menu =
        reply.arguments().size() < 2
            ? std::nullopt
            : dbusmenu::readLayout(reply.arguments().at(1).value<QDBusArgument>(), itemsLeft, 1);
    for (const dbusmenu::Item& entry : menu ? menu->children : QList<dbusmenu::Item>()) {
        if (entry.properties.value("label").toString() != label)
            continue;
        return call(service, path, menuInterface, "Event",
                    {entry.id, "clicked", QVariant::fromValue(QDBusVariant(QVariant(0))), 0u})
                   .type() == QDBusMessage::ReplyMessage;
    }
    return false;
}

} // namespace corvane::test
