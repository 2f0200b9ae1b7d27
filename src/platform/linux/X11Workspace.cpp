#include "X11Workspace.h"

#include "AppIdentity.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <thread>

namespace corvane {

X11Workspace::X11Workspace(QObject* parent) : Workspace(parent)
{
    qRegisterMetaType<RunningApp>();
    m_display = XOpenDisplay(nullptr);
    if (!m_display)
        return;
    m_activeAtom = XInternAtom(m_display, "_NET_ACTIVE_WINDOW", False);
    XSelectInput(m_display, DefaultRootWindow(m_display), PropertyChangeMask);
    XFlush(m_display);
    m_notifier = new QSocketNotifier(ConnectionNumber(m_display), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &X11Workspace::readEvents);
    m_lastOwner = activeWindowOwner().value_or(0);
    // The installed desktop entries are read once per process; read them now, off the main
    // thread, rather than in the middle of the first peek.
    std::thread([] { DesktopEntries::installed(); }).detach();
    QMetaObject::invokeMethod(this, &X11Workspace::readEvents, Qt::QueuedConnection);
}

X11Workspace::~X11Workspace()
{
    delete m_notifier;
    if (m_display)
        XCloseDisplay(m_display);
}

std::optional<qint64> X11Workspace::activeWindowOwner() const
{
    if (!m_display)
        return std::nullopt;
    const auto windowProperty = [this](Window window, Atom name,
                                       Atom type) -> std::optional<unsigned long> {
        Atom actualType = None;
        int format = 0;
        unsigned long count = 0, after = 0;
        unsigned char* data = nullptr;
        std::optional<unsigned long> value;
        if (XGetWindowProperty(m_display, window, name, 0, 1, False, type, &actualType, &format,
                               &count, &after, &data) == Success &&
            data) {
            if (count == 1 && format == 32)
                value = *reinterpret_cast<unsigned long*>(data);
            XFree(data);
        }
        return value;
    };
    const auto active = windowProperty(DefaultRootWindow(m_display), Atom(m_activeAtom), XA_WINDOW);
    m_activeWindow = active.value_or(0);
    if (!active || *active == 0)
        return std::nullopt;
    const auto pid =
        windowProperty(Window(*active), XInternAtom(m_display, "_NET_WM_PID", False), XA_CARDINAL);
    if (!pid)
        return std::nullopt;
    return qint64(*pid);
}

std::optional<RunningApp> X11Workspace::frontmostApplication() const
{
    const auto owner = activeWindowOwner();
    // Events the read queued in Xlib are handled on the next turn of the loop.
    QMetaObject::invokeMethod(const_cast<X11Workspace*>(this), &X11Workspace::readEvents,
                              Qt::QueuedConnection);
    if (!owner)
        return std::nullopt;
    return identity(*owner);
}

RunningApp X11Workspace::identity(qint64 pid) const
{
    if (!m_identity || m_identity->first != m_activeWindow || m_identity->second.pid != pid)
        m_identity = {m_activeWindow, AppIdentity::forProcess(pid)};
    return m_identity->second;
}

void X11Workspace::readEvents()
{
    // Reading a property can move events from the socket into Xlib's own queue, where the
    // socket notifier never sees them: loop until that queue is empty too.
    while (m_display && XPending(m_display)) {
        bool activeChanged = false;
        while (XPending(m_display)) {
            XEvent event;
            XNextEvent(m_display, &event);
            if (event.type == PropertyNotify && event.xproperty.atom == Atom(m_activeAtom))
                activeChanged = true;
        }
        if (!activeChanged)
            continue;
        const auto owner = activeWindowOwner();
        if (!owner || *owner == m_lastOwner)
            continue;
        m_lastOwner = *owner;
        const RunningApp app = identity(*owner);
        Q_EMIT applicationActivated(app);
        if (*owner != thisProcessId())
            Q_EMIT otherApplicationActivated(app);
    }
}

} // namespace corvane
