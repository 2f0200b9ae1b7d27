#include "JournalLog.h"

#include <QLoggingCategory>
#include <QtEndian>
#include <cstdio>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace corvane::JournalLog {

namespace {

Q_LOGGING_CATEGORY(lcKeys, "com.vantorel.corvane.keys")

QtMessageHandler beforeRewording = nullptr;

void reworded(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    // QSpiApplication::keyEventError  "org.freedesktop.DBus.Error.NoReply" "Did not receive…"
    if (type != QtWarningMsg || !message.startsWith(u"QSpiApplication::keyEventError")) {
        beforeRewording(type, context, message);
        return;
    }
    if (!lcKeys().isInfoEnabled())
        return;
    const QMessageLogContext own(context.file, context.line, context.function,
                                 lcKeys().categoryName());
    beforeRewording(QtInfoMsg, own,
                    QStringLiteral("keys: the accessibility registry was slow to pass on a key "
                                   "typed into Corvane's window (%1); it went on all the same")
                        .arg(message.section(u'"', 1, 1)));
}

int journalSocket = -1;
sockaddr_un journalAddress{};
bool alsoToTerminal = false;

int priority(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return 7;
    case QtInfoMsg:
        return 6;
    case QtWarningMsg:
        return 4;
    case QtCriticalMsg:
        return 3;
    case QtFatalMsg:
        return 2;
    }
    return 6;
}

void appendField(QByteArray& out, const QByteArray& key, const QByteArray& value)
{
    if (!value.contains('\n')) {
        out += key + '=' + value + '\n';
        return;
    }
    // The binary form: the key, a line break, the value's length (64 bits, little endian).
    out += key + '\n';
    char length[8];
    qToLittleEndian<quint64>(quint64(value.size()), length);
    out.append(length, 8);
    out += value + '\n';
}

void handler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const QByteArray datagram = entry(type, context, message);
    ::sendto(journalSocket, datagram.constData(), size_t(datagram.size()), MSG_NOSIGNAL,
             reinterpret_cast<const sockaddr*>(&journalAddress), sizeof journalAddress);
    if (alsoToTerminal) {
        const QByteArray line = qFormatLogMessage(type, context, message).toLocal8Bit() + '\n';
        std::fwrite(line.constData(), 1, size_t(line.size()), stderr);
    }
    if (type == QtFatalMsg)
        std::abort();
}

} // namespace

QByteArray entry(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    QByteArray out;
    appendField(out, "MESSAGE", message.toUtf8());
    appendField(out, "PRIORITY", QByteArray::number(priority(type)));
    appendField(out, "SYSLOG_IDENTIFIER", "corvane");
    if (context.category)
        appendField(out, "QT_CATEGORY", context.category);
    if (context.file)
        appendField(out, "CODE_FILE", context.file);
    if (context.line > 0)
        appendField(out, "CODE_LINE", QByteArray::number(context.line));
    if (context.function)
        appendField(out, "CODE_FUNC", context.function);
    return out;
}

bool install(const QString& socketPath)
{
    const QByteArray path = socketPath.toLocal8Bit();
    if (path.isEmpty() || size_t(path.size()) >= sizeof journalAddress.sun_path)
        return false;
    const int fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(path.cbegin(), path.cend(), address.sun_path);
    // Nobody listening (no journald in this session): keep stderr.
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(fd);
        return false;
    }
    journalSocket = fd;
    journalAddress = address;
    alsoToTerminal = ::isatty(STDERR_FILENO);
    qInstallMessageHandler(handler);
    return true;
}

void rewordToolkitNotices()
{
    beforeRewording = qInstallMessageHandler(reworded);
}

} // namespace corvane::JournalLog
