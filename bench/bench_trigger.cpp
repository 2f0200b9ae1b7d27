// The hold trigger's latencies on a real X server (inside tools/test-session.sh): from an XTEST
// key-down of Ctrl to triggerDown in the detector, and from the hold timer's due time to
// timerFired, 200 samples each, against the event loop's own precise timer (100 samples); then
// the process's wake-ups per second over 10 idle seconds with the monitors installed. Prints `bench
// <name> <value> <unit>` lines.

#include "Percentiles.h"
#include "platform/linux/XInputMonitors.h"
#include "trigger/HoldDetector.h"

#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QTimer>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <algorithm>
#include <cstdio>

using namespace corvane;
using corvane::test::p50p99;
using Effect = HoldStateMachine::Effect;

namespace {

// Context switches of every thread of this process: each is a wake-up.
long long contextSwitches()
{
    long long total = 0;
    for (const QString& task :
         QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile status(QStringLiteral("/proc/self/task/%1/status").arg(task));
        if (!status.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray& line : status.readAll().split('\n'))
            if (line.startsWith("voluntary_ctxt_switches:") ||
                line.startsWith("nonvoluntary_ctxt_switches:"))
                total += line.mid(line.indexOf(':') + 1).trimmed().toLongLong();
    }
    return total;
}

// Runs the event loop until `done` holds (checked whenever the detector reports effects) or
// the time-out passes. Unlike QTest::qWaitFor, it does not poll, so it neither adds latency
// nor wakes the process up.
std::function<void()>* wakeCheck = nullptr;

bool waitUntil(const std::function<bool()>& done, int timeoutMs)
{
    if (done())
        return true;
    QEventLoop loop;
    QTimer timeout;
    timeout.setSingleShot(true);
    QObject::connect(&timeout, &QTimer::timeout, &loop, &QEventLoop::quit);
    std::function<void()> check = [&] {
        if (done())
            loop.quit();
    };
    wakeCheck = &check;
    timeout.start(timeoutMs);
    loop.exec();
    wakeCheck = nullptr;
    return done();
}

void idleFor(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

int main(int argc, char* argv[])
{
    QGuiApplication app(argc, argv);
    if (!qEnvironmentVariableIsSet("CORVANE_SESSION")) {
        std::fprintf(stderr, "bench_trigger: run under tools/test-session.sh\n");
        return 2;
    }
    XInputMonitors monitors;
    HoldDetector detector(monitors);
    detector.triggerModifier = ModifierFlags::command;
    detector.holdDelay = 0.3; // the shortest delay the settings allow
    QElapsedTimer clock;
    clock.start();
    qint64 startTimerAt = -1, showAt = -1, hideAt = -1;
    detector.onEffect = [&](const HoldStateMachine::Effects& effects) {
        const qint64 now = clock.nsecsElapsed();
        if (effects.contains(Effect::startTimer))
            startTimerAt = now;
        if (effects.contains(Effect::show))
            showAt = now;
        if (effects.contains(Effect::hide) || effects.contains(Effect::cancelTimer))
            hideAt = now;
        if (wakeCheck)
            (*wakeCheck)();
    };
    detector.start();

    Display* xtest = XOpenDisplay(nullptr);
    const KeyCode ctrl = XKeysymToKeycode(xtest, XK_Control_L);
    std::vector<double> keyToTrigger, timerLateness;
    for (int sample = 0; sample < 200; ++sample) {
        startTimerAt = showAt = hideAt = -1;
        const qint64 sent = clock.nsecsElapsed();
        XTestFakeKeyEvent(xtest, ctrl, True, CurrentTime);
        XFlush(xtest);
        if (!waitUntil([&] { return startTimerAt >= 0; }, 2000))
            return 1;
        keyToTrigger.push_back(double(startTimerAt - sent) / 1e6);
        if (!waitUntil([&] { return showAt >= 0; }, 3000))
            return 1;
        timerLateness.push_back(double(showAt - startTimerAt) / 1e6 - detector.holdDelay * 1000.0);
        XTestFakeKeyEvent(xtest, ctrl, False, CurrentTime);
        XFlush(xtest);
        if (!waitUntil([&] { return hideAt >= 0; }, 2000))
            return 1;
    }
    const auto [k50, k99] = p50p99(keyToTrigger);
    const auto [t50, t99] = p50p99(timerLateness);
    std::printf("bench keydown_to_triggerdown_p50 %.3f ms\n", k50);
    std::printf("bench keydown_to_triggerdown_p99 %.3f ms\n", k99);
    std::printf("bench timer_due_to_timerfired_p50 %.3f ms\n", t50);
    std::printf("bench timer_due_to_timerfired_p99 %.3f ms\n", t99);
    // The baseline: the same delay timed by the event loop's own precise timer.
    std::vector<double> loopLateness;
    for (int sample = 0; sample < 100; ++sample) {
        const qint64 armedAt = clock.nsecsElapsed();
        qint64 firedAt = -1;
        QTimer::singleShot(int(detector.holdDelay * 1000.0), Qt::PreciseTimer,
                           [&] { firedAt = clock.nsecsElapsed(); });
        if (!waitUntil([&] { return firedAt >= 0; }, 3000))
            return 1;
        loopLateness.push_back(double(firedAt - armedAt) / 1e6 - detector.holdDelay * 1000.0);
    }
    const auto [l50, l99] = p50p99(loopLateness);
    std::printf("bench event_loop_timer_lateness_p50 %.3f ms\n", l50);
    std::printf("bench event_loop_timer_lateness_p99 %.3f ms\n", l99);
    std::printf("bench timer_lateness_p50_ratio %.2f x\n", t50 / l50);
    std::printf("bench timer_lateness_p99_ratio %.2f x\n", t99 / l99);
    std::fflush(stdout);

    // Idle: monitors installed, nothing happening.
    idleFor(500);
    const long long before = contextSwitches();
    QElapsedTimer idle;
    idle.start();
    idleFor(10000); // the quit timer itself costs one wake-up
    const long long after = contextSwitches();
    std::printf("bench idle_wakeups_per_second %.2f 1/s\n",
                double(after - before) / (double(idle.elapsed()) / 1000.0));
    XCloseDisplay(xtest);
    return 0;
}
