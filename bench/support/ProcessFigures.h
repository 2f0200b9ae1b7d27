#pragma once

// What a benchmark reports about a process from /proc: resident memory and CPU time.

#include <QFile>
#include <QString>
#include <unistd.h>

namespace corvane::test {

// VmRSS of the process (`pid` 0: this one), in megabytes; 0 when unreadable.
inline double residentMegabytes(qint64 pid = 0)
{
    QFile status(pid ? QStringLiteral("/proc/%1/status").arg(pid)
                     : QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024.0;
    return 0;
}

// User plus system CPU time of the process, in seconds; 0 when unreadable.
inline double cpuSeconds(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    // After the command name (in parentheses, and it may hold some): utime and stime are the
    // 12th and 13th fields.
    const QByteArray text = stat.readAll();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 1).simplified().split(' ');
    return (fields.value(11).toDouble() + fields.value(12).toDouble()) /
           double(sysconf(_SC_CLK_TCK));
}

} // namespace corvane::test
