#include "XBellCounter.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>

namespace corvane::test {

XBellCounter::XBellCounter()
{
    int opcode = 0, error = 0, major = XkbMajorVersion, minor = XkbMinorVersion;
    m_display = XkbOpenDisplay(nullptr, &m_eventBase, &error, &major, &minor, &opcode);
    if (!m_display)
        return;
    XkbSelectEvents(m_display, XkbUseCoreKbd, XkbBellNotifyMask, XkbBellNotifyMask);
    XSync(m_display, False);
}

XBellCounter::~XBellCounter()
{
    if (m_display)
        XCloseDisplay(m_display);
}

int XBellCounter::count()
{
    if (!m_display)
        return 0;
    XSync(m_display, False);
    while (XPending(m_display)) {
        XEvent event;
        XNextEvent(m_display, &event);
        if (event.type == m_eventBase &&
            reinterpret_cast<XkbEvent*>(&event)->any.xkb_type == XkbBellNotify)
            ++m_count;
    }
    return m_count;
}

} // namespace corvane::test
