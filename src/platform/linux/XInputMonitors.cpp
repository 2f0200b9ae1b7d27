#include "XInputMonitors.h"

#include "KeyFolding.h"
#include "trigger/ModifierFlags.h"

#include <QCursor>
#include <QRectF>
#include <QSocketNotifier>
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/keysym.h>

namespace corvane {

XInputMonitors::XInputMonitors(QObject* parent) : QObject(parent)
{
    open();
}

XInputMonitors::~XInputMonitors()
{
    delete m_notifier;
    if (m_display)
        XCloseDisplay(m_display);
}

void XInputMonitors::open()
{
    m_display = XOpenDisplay(nullptr);
    if (!m_display) {
        m_whyNot = QStringLiteral("no X server (DISPLAY is not set or not reachable)");
        return;
    }
    int event = 0, error = 0;
    if (!XQueryExtension(m_display, "XInputExtension", &m_opcode, &event, &error)) {
        m_whyNot = QStringLiteral("the X server has no XInput extension");
        XCloseDisplay(m_display);
        m_display = nullptr;
        return;
    }
    // 2.2, so that raw events keep arriving while Corvane itself holds the keyboard.
    int major = 2, minor = 2;
    if (XIQueryVersion(m_display, &major, &minor) != Success || major < 2 ||
        (major == 2 && minor < 2)) {
        m_whyNot = QStringLiteral("the X server does not offer XInput 2.2");
        XCloseDisplay(m_display);
        m_display = nullptr;
        return;
    }
    m_notifier = new QSocketNotifier(ConnectionNumber(m_display), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &XInputMonitors::readEvents);
    seedModifiers();
    select();
    // Replies read so far may have queued events inside Xlib, unseen by the socket notifier.
    QMetaObject::invokeMethod(this, &XInputMonitors::readEvents, Qt::QueuedConnection);
}

bool XInputMonitors::isAvailable(QString* whyNot) const
{
    if (whyNot)
        *whyNot = m_whyNot;
    return m_display != nullptr;
}

void XInputMonitors::select()
{
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XIEventMask mask{XIAllMasterDevices, sizeof bits, bits};
    XISetMask(bits, XI_RawKeyPress);
    XISetMask(bits, XI_RawKeyRelease);
    XISetMask(bits, XI_RawButtonPress);
    XISelectEvents(m_display, DefaultRootWindow(m_display), &mask, 1);
    XFlush(m_display);
}

void XInputMonitors::seedModifiers()
{
    char keys[32] = {};
    XQueryKeymap(m_display, keys);
    for (int code = 8; code < 256; ++code)
        if (keys[code / 8] & (1 << (code % 8)))
            if (const auto flag =
                    modifierFlagForKeysym(XkbKeycodeToKeysym(m_display, KeyCode(code), 0, 0)))
                m_modifierKeysDown.insert(code, flag);
}

std::uint64_t XInputMonitors::currentModifierFlags() const
{
    std::uint64_t flags = 0;
    for (std::uint64_t flag : m_modifierKeysDown)
        flags |= flag;
    return flags;
}

std::optional<InputMonitors::Token> XInputMonitors::add(Kind kind, Handler handler)
{
    if (!m_display)
        return std::nullopt;
    return m_handlers.add(kind, std::move(handler));
}

void XInputMonitors::remove(Token token)
{
    m_handlers.remove(token);
}

QPointF XInputMonitors::pointerPosition() const
{
    return QCursor::pos();
}

void XInputMonitors::deliver(Kind kind)
{
    m_handlers.deliver(Event{kind, currentModifierFlags()});
}

void XInputMonitors::readEvents()
{
    while (m_display && XPending(m_display)) {
        XEvent event;
        XNextEvent(m_display, &event);
        XGenericEventCookie* cookie = &event.xcookie;
        if (cookie->type != GenericEvent || cookie->extension != m_opcode ||
            !XGetEventData(m_display, cookie))
            continue;
        const auto* raw = static_cast<const XIRawEvent*>(cookie->data);
        switch (cookie->evtype) {
        case XI_RawKeyPress:
        case XI_RawKeyRelease: {
            const bool press = cookie->evtype == XI_RawKeyPress;
            const KeySym keysym = XkbKeycodeToKeysym(m_display, KeyCode(raw->detail), 0, 0);
            if (isIgnoredKeysym(keysym))
                break;
            const std::uint64_t flag = modifierFlagForKeysym(keysym);
            if (flag) {
                // Keep the set of keys down: one physical release can arrive twice.
                const std::uint64_t before = currentModifierFlags();
                if (press)
                    m_modifierKeysDown.insert(raw->detail, flag);
                else
                    m_modifierKeysDown.remove(raw->detail);
                if (currentModifierFlags() != before && !keyboardHeldByUs())
                    deliver(Kind::modifierChange);
            } else if (press && !keyboardHeldByUs()) {
                deliver(Kind::keyPress);
            }
            break;
        }
        case XI_RawButtonPress: {
            const auto frame = ownPanelFrame();
            if (frame && containsPoint(*frame, pointerPosition()))
                break; // a click or scroll inside Corvane's own visible panel
            deliver(raw->detail >= 4 && raw->detail <= 7 ? Kind::scroll : Kind::mousePress);
            break;
        }
        default:
            break;
        }
        XFreeEventData(m_display, cookie);
    }
}

} // namespace corvane
