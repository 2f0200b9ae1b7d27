#include "AtspiKeyMonitors.h"

#include "AtspiClient.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QDBusVirtualObject>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QPointer>

namespace corvane {

namespace {

Q_LOGGING_CATEGORY(lcKeys, "com.vantorel.corvane.keys")

const QString listenerPath = QStringLiteral("/com/vantorel/Corvane/keys");

struct KeyListenerMode {
    bool synchronous = false, preemptive = false, global = false;
};

QDBusArgument& operator<<(QDBusArgument& argument, const KeyListenerMode& mode)
{
    argument.beginStructure();
    argument << mode.synchronous << mode.preemptive << mode.global;
    argument.endStructure();
    return argument;
}

// The keys a listener asks for: (keycode, keysym, keystring, type); none means every key.
struct KeyDefinition {
    int keycode = 0, keysym = 0;
    QString keystring;
    int unused = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, const KeyDefinition& key)
{
    argument.beginStructure();
    argument << key.keycode << key.keysym << key.keystring << key.unused;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, KeyDefinition& key)
{
    argument.beginStructure();
    argument >> key.keycode >> key.keysym >> key.keystring >> key.unused;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, KeyListenerMode& mode)
{
    argument.beginStructure();
    argument >> mode.synchronous >> mode.preemptive >> mode.global;
    argument.endStructure();
    return argument;
}

} // namespace
} // namespace corvane

Q_DECLARE_METATYPE(corvane::KeyListenerMode)
Q_DECLARE_METATYPE(corvane::KeyDefinition)

namespace corvane {

namespace {

// Answers the device event controller's NotifyEvent((uiuuisb)) with "not consumed" at once and
// passes press or release and keysym to the monitors' thread.
class KeystrokeListener : public QDBusVirtualObject {
public:
    explicit KeystrokeListener(AtspiKeyMonitors* monitors) : m_monitors(monitors) {}

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        if (message.member() != u"NotifyEvent")
            return false;
        connection.send(message.createReply(false));
        if (message.signature() != u"(uiuuisb)" || message.arguments().isEmpty())
            return true; // not a key event: nothing to learn from it
        const QDBusArgument event = message.arguments().constFirst().value<QDBusArgument>();
        uint type = 0, hardwareCode = 0, modifiers = 0;
        int keysym = 0, timestamp = 0;
        QString text;
        bool isText = false;
        event.beginStructure();
        event >> type >> keysym >> hardwareCode >> modifiers >> timestamp >> text >> isText;
        event.endStructure();
        // 0 is a press, 1 a release (AT-SPI's KEY_PRESSED_EVENT and KEY_RELEASED_EVENT).
        if (type > 1 || keysym <= 0)
            return true;
        QMetaObject::invokeMethod(m_monitors, "busKeyEvent", Qt::QueuedConnection,
                                  Q_ARG(bool, type == 0), Q_ARG(unsigned long, ulong(keysym)));
        return true;
    }

    QString introspect(const QString&) const override
    {
        return QStringLiteral(
            "<interface name=\"org.a11y.atspi.DeviceEventListener\">"
            "<method name=\"NotifyEvent\"><arg direction=\"in\" type=\"(uiuuisb)\"/>"
            "<arg direction=\"out\" type=\"b\"/></method></interface>");
    }

private:
    QPointer<AtspiKeyMonitors> m_monitors;
};

// The modifier states a key event may carry (Shift, Lock, Control, Mod1 = Alt, Mod2 = Num Lock,
// Mod4 = Super): the controller hands an event only to listeners registered for exactly its
// state, so every combination is asked for.
QList<uint> listenedStates()
{
    static constexpr uint bits[] = {1, 2, 4, 8, 16, 64};
    QList<uint> states;
    for (uint combination = 0; combination < (1u << std::size(bits)); ++combination) {
        uint state = 0;
        for (size_t i = 0; i < std::size(bits); ++i)
            if (combination & (1u << i))
                state |= bits[i];
        states.append(state);
    }
    return states;
}

} // namespace

void atspi::registerKeystrokeListener(QDBusConnection& bus, const QString& path)
{
    qDBusRegisterMetaType<KeyListenerMode>();
    qDBusRegisterMetaType<KeyDefinition>();
    qDBusRegisterMetaType<QList<KeyDefinition>>();
    // The event types asked for, as bits: 1 << KEY_PRESSED_EVENT (0) | 1 << KEY_RELEASED_EVENT.
    constexpr uint pressesAndReleases = 0b11;
    for (const uint state : listenedStates()) {
        QDBusMessage message = QDBusMessage::createMethodCall(
            QStringLiteral("org.a11y.atspi.Registry"),
            QStringLiteral("/org/a11y/atspi/registry/deviceeventcontroller"),
            QStringLiteral("org.a11y.atspi.DeviceEventController"),
            QStringLiteral("RegisterKeystrokeListener"));
        message.setArguments({QVariant::fromValue(QDBusObjectPath(path)),
                              QVariant::fromValue(QList<KeyDefinition>()), state,
                              pressesAndReleases, QVariant::fromValue(KeyListenerMode{})});
        bus.asyncCall(message, atspi::requestTimeoutMs * 5);
    }
}

namespace {

// Holds the listener object; registers it with the registry, on its own thread.
class ListenerHost : public QObject {
public:
    explicit ListenerHost(AtspiKeyMonitors* monitors) : m_object(monitors) {}

    void start()
    {
        auto bus = atspi::accessibilityBus();
        if (!bus)
            return;
        m_bus = *bus;
        if (!m_bus->registerVirtualObject(listenerPath, &m_object)) {
            qCWarning(lcKeys, "keys: the listener object could not be registered");
            return;
        }
        atspi::registerKeystrokeListener(*m_bus, listenerPath);
    }

    ~ListenerHost() override
    {
        if (m_bus)
            m_bus->unregisterObject(listenerPath);
    }

private:
    KeystrokeListener m_object;
    std::optional<QDBusConnection> m_bus;
};

} // namespace

AtspiKeyMonitors::AtspiKeyMonitors(QObject* parent) : QObject(parent)
{
    if (!atspi::accessibilityBus(&m_whyNot))
        return;
    m_thread.setObjectName(QStringLiteral("com.vantorel.corvane.keys"));
    auto* host = new ListenerHost(this);
    host->moveToThread(&m_thread);
    m_listener = host;
    connect(&m_thread, &QThread::finished, host, &QObject::deleteLater);
    m_thread.start();
    QMetaObject::invokeMethod(
        host, [host] { host->start(); }, Qt::QueuedConnection);
    m_releaseTimer.setSingleShot(true);
    connect(&m_releaseTimer, &QTimer::timeout, this, [this] {
        apply(m_folding.advance(KeyFolding::Clock::now()));
        scheduleRelease();
    });
    // Corvane's own windows' keys: the trigger's release once the panel has the keyboard.
    QCoreApplication::instance()->installEventFilter(this);
}

AtspiKeyMonitors::~AtspiKeyMonitors()
{
    if (QCoreApplication::instance())
        QCoreApplication::instance()->removeEventFilter(this);
    m_thread.quit();
    m_thread.wait();
}

bool AtspiKeyMonitors::isAvailable(QString* whyNot) const
{
    if (whyNot)
        *whyNot = m_whyNot;
    return m_listener != nullptr;
}

std::optional<InputMonitors::Token> AtspiKeyMonitors::add(Kind kind, Handler handler)
{
    if (!m_listener)
        return std::nullopt;
    return m_handlers.add(kind, std::move(handler));
}

void AtspiKeyMonitors::remove(Token token)
{
    m_handlers.remove(token);
}

QPointF AtspiKeyMonitors::pointerPosition() const
{
    if (const auto frame = hoveredPanelFrame())
        return frame->center();
    return {-1e9, -1e9}; // nowhere Corvane knows of
}

void AtspiKeyMonitors::keyEvent(bool press, unsigned long keysym)
{
    qCDebug(lcKeys, "keys: %s %#lx", press ? "press" : "release", keysym);
    const auto now = KeyFolding::Clock::now();
    apply(press ? m_folding.press(keysym, now) : m_folding.release(keysym, now));
    scheduleRelease();
    Q_EMIT keyEventHandled(press, keysym);
}

void AtspiKeyMonitors::busKeyEvent(bool press, unsigned long keysym)
{
    if (m_busHeard)
        keyEvent(press, keysym);
}

void AtspiKeyMonitors::otherKeyPressed()
{
    qCDebug(lcKeys, "keys: another key");
    apply({{KeyFolding::Change::Kind::keyPress, m_folding.flags()}});
}

void AtspiKeyMonitors::apply(const QList<KeyFolding::Change>& changes)
{
    for (const KeyFolding::Change& change : changes) {
        if (keyboardHeldByUs())
            continue;
        const Kind kind = change.kind == KeyFolding::Change::Kind::modifiers ? Kind::modifierChange
                                                                             : Kind::keyPress;
        m_handlers.deliver(Event{kind, change.flags});
    }
}

void AtspiKeyMonitors::scheduleRelease()
{
    if (const auto deadline = m_folding.nextDeadline()) {
        const auto wait =
            std::chrono::ceil<std::chrono::milliseconds>(*deadline - KeyFolding::Clock::now());
        m_releaseTimer.start(std::max<int>(0, int(wait.count())));
    }
}

bool AtspiKeyMonitors::eventFilter(QObject* watched, QEvent* event)
{
    // Every window's event passes here; only the top-level window's copy counts.
    if ((event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) &&
        watched->isWindowType()) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (!key->isAutoRepeat() && modifierFlagForKeysym(key->nativeVirtualKey()))
            keyEvent(event->type() == QEvent::KeyPress, key->nativeVirtualKey());
    }
    return QObject::eventFilter(watched, event);
}

} // namespace corvane
