#include "DisplaySession.h"

#include <QTextStream>
#include <X11/Xlib.h>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace corvane::DisplaySession {

namespace {

// The compositor's socket: WAYLAND_DISPLAY as a full path, or a name in XDG_RUNTIME_DIR.
QByteArray waylandSocket()
{
    QByteArray name = qgetenv("WAYLAND_DISPLAY");
    if (name.isEmpty() && qgetenv("XDG_SESSION_TYPE") == "wayland")
        name = "wayland-0";
    if (name.isEmpty() || name.startsWith('/'))
        return name;
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    return runtime.isEmpty() ? QByteArray() : runtime + '/' + name;
}

bool accepts(const QByteArray& path)
{
    sockaddr_un address{};
    if (path.isEmpty() || size_t(path.size()) >= sizeof address.sun_path)
        return false;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    const bool connected =
        ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    ::close(fd);
    return connected;
}

} // namespace

Found find()
{
    // A Wayland session first: its own windows, not XWayland's.
    const QByteArray socket = waylandSocket();
    if (!socket.isEmpty()) {
        if (accepts(socket))
            return {Kind::wayland, {}};
        if (qgetenv("DISPLAY").isEmpty())
            return {Kind::none,
                    QStringLiteral("cannot reach the Wayland compositor at %1: start it "
                                   "in your desktop session")
                        .arg(QString::fromLocal8Bit(socket))};
    }
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty())
        return {Kind::none, QStringLiteral("no display (neither WAYLAND_DISPLAY nor DISPLAY is "
                                           "set): start it in a desktop session, or see Corvane "
                                           "at work with `make demo`")};
    Display* x = XOpenDisplay(nullptr);
    if (!x)
        return {Kind::none, QStringLiteral("cannot reach the X server at DISPLAY=%1: start it in "
                                           "your desktop session")
                                .arg(QString::fromLocal8Bit(display))};
    XCloseDisplay(x);
    return {Kind::x11, {}};
}

Kind chosen()
{
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (platform.startsWith("wayland"))
        return Kind::wayland;
    if (platform.startsWith("xcb"))
        return Kind::x11;
    return Kind::none;
}

bool prepare(const char* program, int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--help") || !std::strcmp(argv[i], "-h") ||
            !std::strcmp(argv[i], "--version") || !std::strcmp(argv[i], "-v")) {
            if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
                qputenv("QT_QPA_PLATFORM", "offscreen");
            return true;
        }
    }
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return true;
    const Found found = find();
    if (found.kind == Kind::none) {
        QTextStream(stderr) << program << ": " << found.whyNot << "\n";
        return false;
    }
    qputenv("QT_QPA_PLATFORM", found.kind == Kind::wayland ? "wayland" : "xcb");
    return true;
}

} // namespace corvane::DisplaySession
