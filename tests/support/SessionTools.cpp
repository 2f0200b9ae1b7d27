#include "SessionTools.h"

#include <QHash>
#include <QRegularExpression>
#include <QTest>
#include <X11/Xlib.h>

namespace corvane::test {

ProgramOutput output(const QString& program, const QStringList& arguments, int timeoutMs)
{
    QProcess process;
    process.start(program, arguments);
    const bool finished = process.waitForFinished(timeoutMs);
    return {QString::fromUtf8(process.readAllStandardOutput()),
            finished && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0};
}

QString xdotool(const QStringList& arguments, bool mustSucceed)
{
    const ProgramOutput printed = output("xdotool", arguments);
    if (mustSucceed && !printed.succeeded)
        qFatal("xdotool %s failed", qPrintable(arguments.join(u' ')));
    return printed.text.trimmed();
}

QRect shellGeometry(const QStringList& lines)
{
    QHash<QString, int> values;
    for (const QString& line : lines)
        values.insert(line.section(u'=', 0, 0), line.section(u'=', 1).toInt());
    return {values.value("X"), values.value("Y"), values.value("WIDTH"), values.value("HEIGHT")};
}

QString windowTitles(qint64 pid)
{
    return xdotool(
        {"search", "--all", "--pid", QString::number(pid), "--name", ".", "getwindowname", "%@"},
        false);
}

qint64 activeWindowPid()
{
    const QString window = xdotool({"getactivewindow"}, false);
    if (window.isEmpty())
        return 0;
    return xdotool({"getwindowpid", window}, false).toLongLong();
}

int windowDepth(const QString& window)
{
    const ProgramOutput info = output("xwininfo", {"-id", window});
    static const QRegularExpression depth("Depth: (\\d+)");
    const QRegularExpressionMatch match = depth.match(info.text);
    return info.succeeded && match.hasMatch() ? match.captured(1).toInt() : -1;
}

bool compositorRunning()
{
    Display* x = XOpenDisplay(nullptr);
    if (!x)
        return false;
    const bool owned = XGetSelectionOwner(x, XInternAtom(x, "_NET_WM_CM_S0", False)) != None;
    XCloseDisplay(x);
    return owned;
}

bool activateWindowOf(qint64 pid, const QString& windowName)
{
    QStringList search{"search", "--all", "--onlyvisible", "--pid", QString::number(pid)};
    if (!windowName.isEmpty())
        search << "--name" << windowName;
    const QString window = xdotool(search, false).section(u'\n', 0, 0);
    if (window.isEmpty())
        return false;
    xdotool({"windowactivate", "--sync", window}, false);
    return QTest::qWaitFor([pid] { return activeWindowPid() == pid; }, 5000);
}

Programs::~Programs()
{
    stopAll();
}

qint64 Programs::start(const QString& program, const QStringList& arguments)
{
    auto* process = new QProcess(this);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(program, arguments);
    if (!process->waitForStarted(10000))
        qFatal("%s did not start", qPrintable(program));
    m_processes.append(process);
    return process->processId();
}

qint64 Programs::startWithWindow(const QString& program, const QStringList& arguments,
                                 const QString& windowName)
{
    const QString pid = QString::number(start(program, arguments));
    if (!QTest::qWaitFor(
            [&] {
                return !xdotool({"search", "--all", "--onlyvisible", "--pid", pid, "--name",
                                 windowName},
                                false)
                            .isEmpty();
            },
            20000))
        qFatal("%s showed no window", qPrintable(program));
    return pid.toLongLong();
}

QProcess* Programs::startUntilReady(const QString& program, const QStringList& arguments,
                                    const QByteArray& ready, QByteArray* rest)
{
    auto* process = new QProcess(this);
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->start(program, arguments);
    if (!process->waitForStarted(10000))
        qFatal("%s did not start", qPrintable(program));
    m_processes.append(process);
    const QByteArray line = QTest::qWaitFor([process] { return process->canReadLine(); }, 10000)
                                ? process->readLine().trimmed()
                                : QByteArray();
    if (!line.startsWith(ready))
        qFatal("%s %s did not say \"%s\"", qPrintable(program), qPrintable(arguments.join(u' ')),
               ready.constData());
    if (rest)
        *rest = line.mid(ready.size());
    return process;
}

void Programs::stopAll()
{
    for (QProcess* process : std::as_const(m_processes)) {
        process->kill();
        process->waitForFinished(5000);
        delete process;
    }
    m_processes.clear();
}

} // namespace corvane::test
