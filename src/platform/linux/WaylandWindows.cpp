#include "WaylandWindows.h"

#include <QByteArray>
#include <cstring>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace corvane::WaylandWindows {

namespace {

bool writeAll(int fd, const QByteArray& bytes)
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + sent, size_t(bytes.size() - sent));
        if (n <= 0)
            return false;
        sent += n;
    }
    return true;
}

QByteArray readExactly(int fd, qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    qsizetype got = 0;
    while (got < size) {
        const ssize_t n = ::read(fd, bytes.data() + got, size_t(size - got));
        if (n <= 0)
            return {};
        got += n;
    }
    return bytes;
}

} // namespace

QByteArray swayCommand(const QByteArray& socketPath, const QByteArray& command)
{
    sockaddr_un address{};
    if (socketPath.isEmpty() || size_t(socketPath.size()) >= sizeof address.sun_path)
        return {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, socketPath.constData(), size_t(socketPath.size()));
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return {};
    // The compositor answers at once; a wedged one must not hold Corvane's start for long.
    const timeval limit{0, 500'000};
    ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    QByteArray reply;
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
        // "i3-ipc", the payload's length and the message type (0: RUN_COMMAND), native order.
        QByteArray message("i3-ipc");
        const quint32 header[2] = {quint32(command.size()), 0};
        message.append(reinterpret_cast<const char*>(header), sizeof header);
        message.append(command);
        const QByteArray head = writeAll(fd, message) ? readExactly(fd, 14) : QByteArray();
        if (head.startsWith("i3-ipc")) {
            quint32 length = 0;
            std::memcpy(&length, head.constData() + 6, sizeof length);
            if (length < 1024 * 1024)
                reply = readExactly(fd, qsizetype(length));
        }
    }
    ::close(fd);
    return reply;
}

QString keepFloating(qint64 pid)
{
    const QByteArray sway = qgetenv("SWAYSOCK");
    if (sway.isEmpty())
        return QStringLiteral("windows: placed by the compositor");
    const QByteArray reply =
        swayCommand(sway, QByteArrayLiteral("for_window [pid=") + QByteArray::number(pid) +
                              "] floating enable, border none, move position center");
    return reply.contains("\"success\": true") || reply.contains("\"success\":true")
               ? QStringLiteral("windows: sway floats them")
               : QStringLiteral("windows: sway did not take the rule (%1)")
                     .arg(QString::fromUtf8(reply.left(200)));
}

} // namespace corvane::WaylandWindows
