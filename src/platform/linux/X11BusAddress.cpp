#include "X11BusAddress.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace corvane {

namespace {

Q_LOGGING_CATEGORY(lcBusAddress, "com.vantorel.corvane.a11y")

Display* display()
{
    const auto* x11 =
        qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->display() : nullptr;
}

Atom busAtom(Display* x)
{
    return XInternAtom(x, "AT_SPI_BUS", False);
}

} // namespace

X11BusAddress::X11BusAddress(QObject* parent) : QObject(parent) {}

X11BusAddress::~X11BusAddress()
{
    withdraw();
}

std::optional<QString> X11BusAddress::published()
{
    Display* x = display();
    if (!x)
        return std::nullopt;
    Atom type = None;
    int format = 0;
    unsigned long count = 0, remaining = 0;
    unsigned char* data = nullptr;
    // An address is a few hundred bytes; 4 KB bounds what a stranger's property costs.
    const int status = XGetWindowProperty(x, DefaultRootWindow(x), busAtom(x), 0, 1024, False,
                                          XA_STRING, &type, &format, &count, &remaining, &data);
    std::optional<QString> address;
    if (status == Success && type == XA_STRING && format == 8 && data && count > 0)
        address = QString::fromLatin1(reinterpret_cast<const char*>(data), qsizetype(count));
    if (data)
        XFree(data);
    return address;
}

void X11BusAddress::follow(const QString& address)
{
    if (address.isEmpty()) {
        withdraw();
        return;
    }
    Display* x = display();
    if (!x || address == m_own)
        return;
    const std::optional<QString> current = published();
    if (current && *current != m_own)
        return; // the launcher's own, or another program's: theirs to keep
    const QByteArray bytes = address.toLatin1();
    XChangeProperty(x, DefaultRootWindow(x), busAtom(x), XA_STRING, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(bytes.constData()), int(bytes.size()));
    XFlush(x);
    m_own = address;
    qCInfo(lcBusAddress, "accessibility bus address published on the root window");
}

void X11BusAddress::withdraw()
{
    if (m_own.isEmpty())
        return;
    Display* x = display();
    if (x && published() == m_own) {
        XDeleteProperty(x, DefaultRootWindow(x), busAtom(x));
        XFlush(x);
    }
    m_own.clear();
}

} // namespace corvane
