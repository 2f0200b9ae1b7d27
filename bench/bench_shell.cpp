// The whole peek loop as a user meets it (issue: application shell): 50 real peeks at geany
// and at the GTK fixture (3000 items), the trigger held through XTEST with the default hold
// delay. For each peek, the time from the key-down to the overlay's first frame minus the hold
// delay, and whether the crawl started by the hold had finished before the overlay showed;
// the first peek at each application apart as well (its catalog's first layout).
// Then Corvane's resident memory and CPU time. Run inside tools/test-session.sh.

#include "CorvaneProcess.h"
#include "Percentiles.h"
#include "ProcessFigures.h"
#include "SessionTools.h"

#include <QCoreApplication>
#include <QTest>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <ctime>

using namespace corvane::test;

namespace {

constexpr int peeks = 50;
constexpr double holdDelayMs = 850; // the default "holdDelay"

double monotonicMs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return double(now.tv_sec) * 1000.0 + double(now.tv_nsec) / 1e6;
}

// "%{time boot}" prints seconds since the monotonic clock's start with millisecond precision.
double loggedMs(const QString& line)
{
    return line.section(u' ', 0, 0, QString::SectionSkipEmpty).toDouble() * 1000.0;
}

struct Figures {
    std::vector<double> latencies;
    int prefetched = 0;
};

Figures peekRepeatedly(CorvaneProcess& corvane, Display* x, qint64 pid)
{
    const KeyCode ctrl = XKeysymToKeycode(x, XK_Control_L);
    if (!activateWindowOf(pid))
        qFatal("no window of %lld became active", pid);
    Figures figures;
    for (int i = 0; i < peeks; ++i) {
        xdotool({"mousemove", "3", "3"});
        const qsizetype from = corvane.lines().size();
        const double down = monotonicMs();
        XTestFakeKeyEvent(x, ctrl, True, CurrentTime);
        XFlush(x);
        if (!corvane.waitForLine(QStringLiteral("overlay: first frame"), 1, from, 5000))
            qFatal("no overlay for peek %d:\n%s", i, qPrintable(corvane.log()));
        const auto line =
            corvane.linesContaining(QStringLiteral("overlay: first frame"), from).first().text;
        figures.latencies.push_back(loggedMs(line) - down - holdDelayMs);
        if (line.endsWith(QStringLiteral("prefetch finished")))
            ++figures.prefetched;
        XTestFakeKeyEvent(x, ctrl, False, CurrentTime);
        XFlush(x);
        if (!QTest::qWaitFor([&] { return !corvane.panelVisible(); }, 5000))
            qFatal("the overlay did not hide after peek %d", i);
        QTest::qWait(150); // the fade-out and a pause, as between two real peeks
    }
    return figures;
}

void print(const char* name, const Figures& figures)
{
    const auto [p50, p99] = p50p99(figures.latencies);
    std::printf("bench shell_peek_%s_p50 %.1f ms\n", name, p50);
    std::printf("bench shell_peek_%s_p99 %.1f ms\n", name, p99);
    // The first peek at an application is the first time its catalog is laid out (and, for the
    // first application, the first frame the overlay ever draws); the others show it again.
    const std::vector<double> warm(figures.latencies.begin() + 1, figures.latencies.end());
    const auto [warmP50, warmP99] = p50p99(warm);
    std::printf("bench shell_peek_%s_first %.1f ms\n", name, figures.latencies.front());
    std::printf("bench shell_peek_%s_warm_p50 %.1f ms\n", name, warmP50);
    std::printf("bench shell_peek_%s_warm_p99 %.1f ms\n", name, warmP99);
    std::printf("bench shell_prefetch_finished_%s %.0f %%\n", name,
                100.0 * figures.prefetched / double(figures.latencies.size()));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char* argv[])
{
    // The log's time stamps are on the monotonic clock the benchmark reads too.
    qputenv("QT_MESSAGE_PATTERN", "%{time boot} %{category}: %{message}");
    QCoreApplication application(argc, argv);
    Display* x = XOpenDisplay(nullptr);
    if (!x)
        qFatal("bench_shell needs a display (run it in tools/test-session.sh)");

    Programs programs;
    const qint64 fixture =
        programs.startWithWindow(QStringLiteral(FIXTURE_GTK), {}, QStringLiteral("fixture"));
    const qint64 geany = programs.startWithWindow(
        QStringLiteral("geany"), {"--new-instance", "--no-session"}, QStringLiteral("Geany"));
    CorvaneProcess corvane(QStringLiteral(CORVANE));
    corvane.start();

    print("geany", peekRepeatedly(corvane, x, geany));
    print("fixture3000", peekRepeatedly(corvane, x, fixture));

    std::printf("bench shell_rss_after_%d_peeks %.1f MB\n", 2 * peeks,
                residentMegabytes(corvane.pid()));
    std::printf("bench shell_cpu_time_after_%d_peeks %.2f s\n", 2 * peeks,
                cpuSeconds(corvane.pid()));
    corvane.stop();
    programs.stopAll();
    XCloseDisplay(x);
    return 0;
}
