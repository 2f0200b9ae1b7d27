#include "DisplaySession.h"

#include <QTextStream>
#include <X11/Xlib.h>
#include <cstring>

namespace corvane::DisplaySession {

Found find()
{
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty())
        return {Kind::none, QStringLiteral("no display (DISPLAY is not set): start it in a desktop "
                                           "session, or see Corvane at work with `make demo`")};
    Display* x = XOpenDisplay(nullptr);
    if (!x)
        return {Kind::none, QStringLiteral("cannot reach the X server at DISPLAY=%1: start it in "
                                           "your desktop session")
                                .arg(QString::fromLocal8Bit(display))};
    XCloseDisplay(x);
    return {Kind::x11, {}};
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
    qputenv("QT_QPA_PLATFORM", "xcb");
    return true;
}

} // namespace corvane::DisplaySession
