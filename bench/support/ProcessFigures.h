#pragma once

// What a benchmark reports about a process from /proc: resident memory, CPU time (of the process
// and of its threads by name) and how often its threads were woken.

#include <QDir>
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

// User plus system CPU time of the process (or of one of its threads), in seconds; 0 when
// unreadable.
inline double cpuSeconds(qint64 pid, qint64 thread = 0)
{
    QFile stat(thread ? QStringLiteral("/proc/%1/task/%2/stat").arg(pid).arg(thread)
                      : QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    // After the command name (in parentheses, and it may hold some): utime and stime are the
    // 12th and 13th fields.
    const QByteArray text = stat.readAll();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 1).simplified().split(' ');
    return (fields.value(11).toDouble() + fields.value(12).toDouble()) /
           double(sysconf(_SC_CLK_TCK));
}

// Time one thread has spent on a CPU, in seconds, to the nanosecond (the scheduler's own count,
// where /proc/PID/stat counts clock ticks); 0 when unreadable.
inline double onCpuSeconds(qint64 pid, qint64 thread)
{
    QFile schedstat(QStringLiteral("/proc/%1/task/%2/schedstat").arg(pid).arg(thread));
    if (!schedstat.open(QIODevice::ReadOnly))
        return 0;
    return schedstat.readAll().split(' ').value(0).toDouble() / 1e9;
}

// A field of /proc/PID/smaps_rollup ("Rss", "Pss") in megabytes; 0 when unreadable.
inline double rollupMegabytes(qint64 pid, const QByteArray& field)
{
    QFile rollup(QStringLiteral("/proc/%1/smaps_rollup").arg(pid));
    if (!rollup.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : rollup.readAll().split('\n'))
        if (line.startsWith(field + ':'))
            return line.mid(field.size() + 1).trimmed().split(' ').first().toDouble() / 1024.0;
    return 0;
}

// CPU seconds of the process's threads whose name starts with `name` (a thread's name is cut
// to 15 characters).
inline double threadCpuSeconds(qint64 pid, const QString& name)
{
    double total = 0;
    const QString tasks = QStringLiteral("/proc/%1/task").arg(pid);
    for (const QString& task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile comm(tasks + u'/' + task + QStringLiteral("/comm"));
        if (comm.open(QIODevice::ReadOnly) &&
            name.startsWith(QString::fromUtf8(comm.readAll()).trimmed()))
            total += cpuSeconds(pid, task.toLongLong());
    }
    return total;
}

// Context switches of all the process's threads so far: each is a wake-up or a preemption.
inline qint64 contextSwitches(qint64 pid)
{
    qint64 total = 0;
    const QString tasks = QStringLiteral("/proc/%1/task").arg(pid);
    for (const QString& task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile status(tasks + u'/' + task + QStringLiteral("/status"));
        if (!status.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray& line : status.readAll().split('\n'))
            if (line.contains("ctxt_switches:"))
                total += line.mid(line.indexOf(':') + 1).trimmed().toLongLong();
    }
    return total;
}

} // namespace corvane::test
