// A DBusMenu layout as any exporter may send it, read as Corvane reads one: the input is a recipe
// for a layout (items nested up to 10 deep, as deep as a message's 64 nested containers allow, any
// number of children, labels, flags and shortcuts of the right type or of another, children that
// are no items), which an exporter on an in-process peer connection sends as its GetLayout reply.
// Never crashes; never keeps more items than it may.

#include "FuzzInput.h"
#include "platform/linux/DBusMenu.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QDBusServer>
#include <QDBusVariant>
#include <QDBusVirtualObject>

namespace {

using namespace corvane;

// Reads the recipe byte by byte; zeros once it is used up.
struct Recipe {
    const uint8_t* data;
    size_t size;
    size_t at = 0;
    uint8_t next() { return at < size ? data[at++] : 0; }
};

QDBusArgument item(Recipe& recipe, int depth, int& budget)
{
    const uint8_t shape = recipe.next();
    QVariantMap properties;
    switch (shape % 8) {
    case 0:
        properties.insert("label", QStringLiteral("_Item %1").arg(recipe.next()));
        break;
    case 1:
        properties.insert("label", int(recipe.next())); // a label that is a number
        break;
    case 2:
        properties.insert("label", "x");
        properties.insert("enabled", QStringLiteral("no"));
        properties.insert("visible", recipe.next() % 2 == 0);
        break;
    case 3:
        properties.insert("label", "k");
        properties.insert("shortcut", QVariant::fromValue(QList<QStringList>{
                                          {"Control", QString(QChar(recipe.next() | 0x20))}}));
        break;
    case 4:
        properties.insert("shortcut", QStringList{"Control", "s"}); // "as", not "aas"
        properties.insert("toggle-state", QStringLiteral("on"));
        break;
    case 5:
        properties.insert("type", "separator");
        break;
    default:
        properties.insert("label", "Menu");
        properties.insert("children-display", "submenu");
    }
    const int children = depth < 10 ? recipe.next() % 6 : 0;
    QDBusArgument argument;
    argument.beginStructure();
    argument << int(recipe.next()) << properties;
    argument.beginArray(QMetaType::fromType<QDBusVariant>());
    for (int i = 0; i < children && budget-- > 0; ++i) {
        if (recipe.next() % 7 == 0)
            argument << QDBusVariant(QStringLiteral("not an item"));
        else
            argument << QDBusVariant(QVariant::fromValue(item(recipe, depth + 1, budget)));
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

class Exporter : public QDBusVirtualObject {
public:
    const uint8_t* data = nullptr;
    size_t size = 0;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        Recipe recipe{data, size};
        int budget = 4000;
        connection.send(message.createReply({1u, QVariant::fromValue(item(recipe, 0, budget))}));
        return true;
    }
    QString introspect(const QString&) const override { return {}; }
};

struct Harness {
    Exporter exporter;
    QDBusServer* server = nullptr;
    std::optional<QDBusConnection> client;
};

Harness& harness()
{
    static Harness* h = [] {
        static int argc = 1;
        static char name[] = "fuzz_dbusmenu_layout";
        static char* argv[] = {name, nullptr};
        new QCoreApplication(argc, argv);
        qDBusRegisterMetaType<QList<QStringList>>();
        auto* made = new Harness;
        // An abstract socket: nothing is left in the file system.
        made->server = new QDBusServer(QStringLiteral("unix:abstract=corvane-fuzz-%1")
                                           .arg(QCoreApplication::applicationPid()));
        QObject::connect(
            made->server, &QDBusServer::newConnection, [made](const QDBusConnection& connection) {
                QDBusConnection(connection).registerVirtualObject("/menu", &made->exporter);
            });
        made->client = QDBusConnection::connectToPeer(made->server->address(), "fuzz");
        for (int i = 0; i < 1000 && !made->server->isConnected(); ++i)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        fuzz::require(made->client->isConnected(), "the peer connection is up");
        return made;
    }();
    return *h;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Harness& h = harness();
    h.exporter.data = data;
    h.exporter.size = size;
    QDBusPendingCall call = h.client->asyncCall(
        QDBusMessage::createMethodCall({}, "/menu", "com.canonical.dbusmenu", "GetLayout"), 5000);
    while (!call.isFinished())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    const QDBusMessage reply = call.reply();
    fuzz::require(reply.type() == QDBusMessage::ReplyMessage, "the exporter answers");
    fuzz::require(reply.signature() == u"u(ia{sv}av)", "the reply is a layout");
    int itemsLeft = 1000;
    const auto layout =
        dbusmenu::readLayout(reply.arguments().value(1).value<QDBusArgument>(), itemsLeft, 8);
    fuzz::require(layout.has_value(), "a layout is read");
    fuzz::require(itemsLeft >= 0, "no more items than allowed");
    return 0;
}
