#pragma once

// Helpers for session tests and benchmarks: real input through xdotool (XTEST) and programs the
// test starts and stops by process id.

#include <QObject>
#include <QProcess>
#include <QRect>
#include <QStringList>

namespace corvane::test {

// What a program printed on standard output, and whether it ended within its time with status 0.
struct ProgramOutput {
    QString text;
    bool succeeded = false;
};

// Runs `program` to its end, waiting up to `timeoutMs`.
ProgramOutput output(const QString& program, const QStringList& arguments, int timeoutMs = 10000);

// Runs xdotool and returns its output; fatal when it fails and `mustSucceed`.
QString xdotool(const QStringList& arguments, bool mustSucceed = true);

// A window's geometry in root coordinates from the lines of xdotool's `getwindowgeometry --shell`
// (X=, Y=, WIDTH=, HEIGHT=); other lines are skipped.
QRect shellGeometry(const QStringList& lines);

// The titles of the windows of `pid`, mapped or not, one a line.
QString windowTitles(qint64 pid);

// The process id owning the active window (_NET_ACTIVE_WINDOW), or 0.
qint64 activeWindowPid();

// The X visual depth of a window (an id in decimal or 0x hex), as xwininfo reports it: 24 for
// an opaque window, 32 for one with an alpha channel; -1 when it cannot be read.
int windowDepth(const QString& window);

// Whether a compositing manager owns _NET_WM_CM_S0 on the display.
bool compositorRunning();

// Activates the first visible window of `pid` (whose name matches `windowName`, when given) and
// waits until it is the active window; false when it did not become active in 5 s.
bool activateWindowOf(qint64 pid, const QString& windowName = {});

// Programs started for one test case; every one is killed, by process id, when it is destroyed.
class Programs : public QObject {
public:
    using QObject::QObject;
    ~Programs() override;
    // Starts `program` without waiting for anything; returns the process id (fatal on failure).
    qint64 start(const QString& program, const QStringList& arguments);
    // Starts `program` and waits up to 20 s for a visible window of it whose name contains
    // `windowName`; returns the process id (fatal on failure).
    qint64 startWithWindow(const QString& program, const QStringList& arguments,
                           const QString& windowName);
    // Starts `program` and waits up to 10 s for its first line of output, which must begin with
    // `ready`; returns its process (fatal otherwise), which stays owned here, and the rest of that
    // line in `rest`.
    QProcess* startUntilReady(const QString& program, const QStringList& arguments,
                              const QByteArray& ready, QByteArray* rest = nullptr);
    void stopAll();

private:
    QList<QProcess*> m_processes;
};

} // namespace corvane::test
