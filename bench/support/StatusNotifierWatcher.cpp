#include "StatusNotifierWatcher.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

namespace corvane::test {

namespace {

StatusNotifierWatcher::MenuEntry parseLayout(const QDBusArgument& argument)
{
    StatusNotifierWatcher::MenuEntry entry;
    argument.beginStructure();
    argument >> entry.id >> entry.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        entry.children.append(parseLayout(child.variant().value<QDBusArgument>()));
    }
    argument.endArray();
    argument.endStructure();
    return entry;
}

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

std::optional<StatusNotifierWatcher::MenuEntry> StatusNotifierWatcher::openMenu()
{
    const auto [service, path] = menuAddress();
    if (path.isEmpty())
        return std::nullopt;
    const QString menuInterface = "com.canonical.dbusmenu";
    call(service, path, menuInterface, "AboutToShow", {0});
    const QDBusMessage reply =
        call(service, path, menuInterface, "GetLayout", {0, -1, QStringList()});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() < 2)
        return std::nullopt;
    return parseLayout(reply.arguments().at(1).value<QDBusArgument>());
}

bool StatusNotifierWatcher::click(const QString& label)
{
    const auto menu = openMenu();
    if (!menu)
        return false;
    for (const MenuEntry& entry : menu->children) {
        if (entry.label() != label)
            continue;
        const auto [service, path] = menuAddress();
        const QDBusMessage reply =
            call(service, path, "com.canonical.dbusmenu", "Event",
                 {entry.id, "clicked", QVariant::fromValue(QDBusVariant(QVariant(0))), 0u});
        return reply.type() == QDBusMessage::ReplyMessage;
    }
    return false;
}

} // namespace corvane::test
