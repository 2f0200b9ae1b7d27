// What Corvane costs as it lives all day in the tray: the real program, started with the
// environment a desktop session gives it, its memory (RSS and PSS) idle after start, after one
// peek at geany, after 100 peeks and after the What's New window was opened and closed; the CPU
// time of a peek with the crawl thread's share beside it; and how often it wakes while idle.
// Run inside tools/test-session.sh.

#include "CorvaneProcess.h"
#include "ProcessFigures.h"
#include "SessionTools.h"
#include "StatusNotifierWatcher.h"

#include <QCoreApplication>
#include <QTest>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

using namespace corvane::test;

namespace {

void memory(const char* when, qint64 pid)
{
    std::printf("bench footprint_rss_%s %.1f MB\n", when, rollupMegabytes(pid, "Rss"));
    std::printf("bench footprint_pss_%s %.1f MB\n", when, rollupMegabytes(pid, "Pss"));
    std::fflush(stdout);
}

// Holds Ctrl over the application in front until the overlay shows, and lets go away from it.
void peek(Display* x, CorvaneProcess& corvane)
{
    const KeyCode ctrl = XKeysymToKeycode(x, XK_Control_L);
    XTestFakeKeyEvent(x, ctrl, True, CurrentTime);
    XFlush(x);
    if (!QTest::qWaitFor([&] { return corvane.panelVisible(); }, 5000))
        qFatal("no overlay:\n%s", qPrintable(corvane.log()));
    XTestFakeKeyEvent(x, ctrl, False, CurrentTime);
    XFlush(x);
    if (!QTest::qWaitFor([&] { return !corvane.panelVisible(); }, 5000))
        qFatal("the overlay did not hide");
    QTest::qWait(300); // the crawl of the show ends, as between two real peeks
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    Display* x = XOpenDisplay(nullptr);
    if (!x)
        qFatal("bench_footprint needs a display (run it in tools/test-session.sh)");
    StatusNotifierWatcher tray; // the desktop's tray, there before Corvane starts
    if (!tray.registerOnSessionBus())
        qFatal("no session bus for the tray");
    Programs programs;
    const qint64 geany =
        programs.startWithWindow("geany", {"--new-instance", "--no-session"}, "Geany");
    CorvaneProcess corvane(CORVANE, {}, /*verbose*/ false);
    corvane.start();
    const qint64 pid = corvane.pid();
    QTest::qWait(3000);
    memory("idle", pid);
    const qint64 switches = contextSwitches(pid);
    QTest::qWait(5000);
    std::printf("bench footprint_idle_wakeups_per_s %.1f /s\n",
                double(contextSwitches(pid) - switches) / 5.0);

    xdotool({"mousemove", "3", "3"});
    if (!activateWindowOf(geany))
        qFatal("geany did not become active");
    peek(x, corvane);
    memory("after_1_peek", pid);
    const double cpu = cpuSeconds(pid), crawl = threadCpuSeconds(pid, "com.vantorel.corvane.crawl"),
                 bus = threadCpuSeconds(pid, "QDBusConnection"),
                 mainThread = threadCpuSeconds(pid, "corvane");
    constexpr int peeks = 99;
    for (int i = 0; i < peeks; ++i)
        peek(x, corvane);
    memory("after_100_peeks", pid);
    std::printf("bench footprint_cpu_per_peek %.1f ms\n", (cpuSeconds(pid) - cpu) * 1000 / peeks);
    std::printf("bench footprint_crawl_cpu_per_peek %.1f ms\n",
                (threadCpuSeconds(pid, "com.vantorel.corvane.crawl") - crawl) * 1000 / peeks);
    std::printf("bench footprint_main_cpu_per_peek %.1f ms\n",
                (threadCpuSeconds(pid, "corvane") - mainThread) * 1000 / peeks);
    std::printf("bench footprint_bus_cpu_per_peek %.1f ms\n",
                (threadCpuSeconds(pid, "QDBusConnection") - bus) * 1000 / peeks);

    const double before = rollupMegabytes(pid, "Rss");
    if (!tray.click("What's New in Corvane…") ||
        !QTest::qWaitFor([&] { return !corvane.windows("What's New").isEmpty(); }, 15000))
        qFatal("What's New did not open");
    QTest::qWait(3000); // its clip plays
    memory("whats_new_open", pid);
    xdotool({"windowactivate", "--sync", corvane.windows("What's New").first(), "key", "alt+F4"});
    QTest::qWait(3000);
    memory("whats_new_closed", pid);
    std::printf("bench footprint_rss_whats_new_kept %.1f MB\n",
                rollupMegabytes(pid, "Rss") - before);
    corvane.stop();
    programs.stopAll();
    XCloseDisplay(x);
    return 0;
}
