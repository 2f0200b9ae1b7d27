// Crawl time of geany, mousepad, featherpad and the 3000-item GTK fixture: median of 10 crawls,
// beside the pyatspi reference walker (reference_walker.py) reading the same trees in the same
// run. Then, with a global-menu registrar on the bus, one featherpad read both ways: its window's
// DBusMenu beside its (hidden) menu bar on the accessibility bus, Chromium's DBusMenu, and kwrite's
// published actions beside its menu bar. Runs inside
// tools/test-session.sh. Prints `bench <name> <value> <unit>` lines.

#include "ProcessFigures.h"
#include "TestRegistrar.h"
#include "menus/MenuCrawler.h"
#include "platform/linux/AppIdentity.h"
#include "platform/linux/AtspiClient.h"
#include "platform/linux/DBusMenu.h"
#include "platform/linux/KdeActions.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <algorithm>
#include <cstdio>

using namespace corvane;

namespace {

// Runs `job` on the crawl thread while the main thread blocks in an event loop (no spinning that
// would compete with the crawl for the machine's two cores); the result comes back with a
// queued call.
template <typename F> auto onCrawlThread(F job) -> decltype(job())
{
    std::optional<decltype(job())> result;
    QEventLoop loop;
    MenuCrawler::queue().post([&] {
        auto value = job();
        QMetaObject::invokeMethod(
            &loop,
            [&, value] {
                result = value;
                loop.quit();
            },
            Qt::QueuedConnection);
    });
    loop.exec();
    return *result;
}

// The accessibility bus's daemon (started by at-spi-bus-launcher), or 0.
qint64 accessibilityBusDaemon()
{
    for (const QString& entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(entry));
        if (entry.toLongLong() > 0 && cmdline.open(QIODevice::ReadOnly) &&
            cmdline.readAll().contains("at-spi2/accessibility.conf"))
            return entry.toLongLong();
    }
    return 0;
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : v[v.size() / 2];
}

// Waits (at most 30 s) until the process's menu bar is on the accessibility bus.
void waitForMenuBar(qint64 pid)
{
    QElapsedTimer wait;
    wait.start();
    while (wait.elapsed() < 30000 && !onCrawlThread([pid] {
               WalkBudget budget(std::chrono::seconds(3));
               return atspi::MenuBarFinder().menuBar(pid, budget).node != nullptr;
           }))
        QThread::msleep(200);
}

struct Read {
    double medianMs = 0;
    int items = 0; // commands in the last catalog
};

// 10 crawls of `app` through `source`, each timed on the crawl thread.
Read medianRead(const std::shared_ptr<MenuSource>& source, const RunningApp& app)
{
    Read read;
    std::vector<double> times;
    for (int run = 0; run < 10; ++run)
        times.push_back(onCrawlThread([&] {
            QElapsedTimer timer;
            timer.start();
            const auto catalog = MenuCrawler(source).crawl(app);
            read.items = 0;
            if (catalog)
                for (const MenuSection& s : catalog->sections)
                    read.items += int(s.commands.size());
            return double(timer.nsecsElapsed()) / 1e6;
        }));
    read.medianMs = median(times);
    return read;
}

// A featherpad started while a registrar is on the bus exports its menus as a DBusMenu and keeps
// its menu bar, hidden, on the accessibility bus: the same menus read both ways, 10 times each.
int globalMenu()
{
    test::TestRegistrar registrar;
    if (!registrar.start()) {
        std::fprintf(stderr, "bench_crawl: the registrar's name is taken\n");
        return 1;
    }
    QProcess featherpad;
    featherpad.setStandardOutputFile(QProcess::nullDevice());
    featherpad.setStandardErrorFile(QProcess::nullDevice());
    featherpad.start("featherpad", {"--standalone"});
    QElapsedTimer wait;
    wait.start();
    while (wait.elapsed() < 30000 && registrar.registrations() == 0)
        QTest::qWait(100);
    QTest::qWait(2000); // past its start, and on the accessibility bus
    const qint64 pid = featherpad.processId();
    const RunningApp app = onCrawlThread([pid] { return AppIdentity::forProcess(pid); });
    const Read dbus = medianRead(std::make_shared<dbusmenu::Source>(), app);
    const Read atspi = medianRead(std::make_shared<atspi::MenuBarFinder>(), app);
    std::printf("bench crawl_featherpad_globalmenu_ms %.2f ms\n", dbus.medianMs);
    std::printf("bench crawl_featherpad_globalmenu_items %d items\n", dbus.items);
    std::printf("bench crawl_featherpad_hidden_menubar_ms %.2f ms\n", atspi.medianMs);
    std::printf("bench crawl_featherpad_hidden_menubar_items %d items\n", atspi.items);
    std::printf("bench crawl_featherpad_globalmenu_speedup %.1f x\n",
                dbus.medianMs > 0 ? atspi.medianMs / dbus.medianMs : 0.0);
    featherpad.kill();
    featherpad.waitForFinished(5000);

    // Chromium has menus only there.
    QTemporaryDir profile;
    QProcess chromium;
    chromium.setStandardOutputFile(QProcess::nullDevice());
    chromium.setStandardErrorFile(QProcess::nullDevice());
    const int registered = registrar.registrations();
    chromium.start("chromium", {"--no-sandbox", "--user-data-dir=" + profile.path(),
                                "--no-first-run", "--disable-gpu", "about:blank"});
    wait.restart();
    while (wait.elapsed() < 30000 && registrar.registrations() == registered)
        QTest::qWait(100);
    const qint64 browser = chromium.processId();
    const RunningApp chromiumApp =
        onCrawlThread([browser] { return AppIdentity::forProcess(browser); });
    const Read browserRead = medianRead(std::make_shared<dbusmenu::Source>(), chromiumApp);
    std::printf("bench crawl_chromium_globalmenu_ms %.2f ms\n", browserRead.medianMs);
    std::printf("bench crawl_chromium_globalmenu_items %d items\n", browserRead.items);
    std::fflush(stdout);
    chromium.kill();
    chromium.waitForFinished(5000);
    return dbus.items > 0 && atspi.items > 0 && browserRead.items > 0 ? 0 : 1;
}

// kwrite on the accessibility bus, read through the actions its main window publishes beside its
// menu bar on the accessibility bus (a different set: the actions of its editing part are not
// published), 10 times each.
int kdeActions()
{
    QProcess kwrite;
    kwrite.setStandardOutputFile(QProcess::nullDevice());
    kwrite.setStandardErrorFile(QProcess::nullDevice());
    kwrite.start("kwrite", {});
    kwrite.waitForStarted(10000);
    const qint64 pid = kwrite.processId();
    waitForMenuBar(pid);
    const RunningApp app = onCrawlThread([pid] { return AppIdentity::forProcess(pid); });
    const Read actions = medianRead(std::make_shared<kdeactions::Source>(), app);
    const Read atspi = medianRead(std::make_shared<atspi::MenuBarFinder>(), app);
    std::printf("bench crawl_kwrite_actions_ms %.2f ms\n", actions.medianMs);
    std::printf("bench crawl_kwrite_actions_items %d items\n", actions.items);
    std::printf("bench crawl_kwrite_menubar_ms %.2f ms\n", atspi.medianMs);
    std::printf("bench crawl_kwrite_menubar_items %d items\n", atspi.items);
    std::printf("bench crawl_kwrite_actions_speedup %.1f x\n",
                actions.medianMs > 0 ? atspi.medianMs / actions.medianMs : 0.0);
    std::fflush(stdout);
    kwrite.kill();
    kwrite.waitForFinished(5000);
    return actions.items > 0 && atspi.items > 0 ? 0 : 1;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    if (!qEnvironmentVariableIsSet("CORVANE_SESSION")) {
        std::fprintf(stderr, "bench_crawl: run under tools/test-session.sh\n");
        return 2;
    }
    struct Target {
        const char* name;
        QString program;
        QStringList arguments;
        QProcess* process = nullptr;
        RunningApp app;
    };
    QList<Target> targets{{"geany", "geany", {"--new-instance", "--no-session"}, nullptr, {}},
                          {"mousepad", "mousepad", {}, nullptr, {}},
                          {"featherpad", "featherpad", {}, nullptr, {}},
                          {"fixture3000", QStringLiteral(FIXTURE_GTK), {}, nullptr, {}}};
    // `bench_crawl NAME…` measures only the named targets.
    const QStringList only = app.arguments().mid(1);
    if (!only.isEmpty())
        targets.removeIf([&](const Target& t) { return !only.contains(QLatin1String(t.name)); });
    for (Target& t : targets) {
        t.process = new QProcess(&app);
        t.process->setStandardOutputFile(QProcess::nullDevice());
        t.process->setStandardErrorFile(QProcess::nullDevice());
        t.process->start(t.program, t.arguments);
        t.process->waitForStarted(10000);
    }
    for (Target& t : targets) {
        const qint64 pid = t.process->processId();
        waitForMenuBar(pid);
        t.app = onCrawlThread([pid] { return AppIdentity::forProcess(pid); });
    }

    const MenuCrawler crawler(std::make_shared<atspi::MenuBarFinder>());
    int status = 0;
    for (Target& t : targets) {
        std::vector<double> ours, reference;
        int items = 0;
        const qint64 daemon = accessibilityBusDaemon();
        const qint64 self = QCoreApplication::applicationPid();
        const double appBefore = test::cpuSeconds(t.app.pid), busBefore = test::cpuSeconds(daemon),
                     ownBefore = test::cpuSeconds(self);
        std::vector<double> second; // the peek's second crawl, a moment after the first
        for (int run = 0; run < 10; ++run) {
            // Timed on the crawl thread itself: the crawl, not the hand-over. A crawl that reads
            // everything, then one that finds the key bindings just read.
            const auto timed = [&] {
                return onCrawlThread([&] {
                    QElapsedTimer timer;
                    timer.start();
                    auto c = crawler.crawl(t.app);
                    return std::make_pair(c, double(timer.nsecsElapsed()) / 1e6);
                });
            };
            onCrawlThread([] {
                atspi::forgetRecentKeyBindings();
                return true;
            });
            const auto [catalog, ms] = timed();
            second.push_back(timed().second);
            ours.push_back(ms);
            items = 0;
            if (catalog)
                for (const MenuSection& s : catalog->sections)
                    items += int(s.commands.size());
        }
        // Where a crawl's time goes, per crawl (a first and a second): the application
        // answering, the bus daemon routing, Corvane asking (coarse: clock ticks).
        const double appCpu = (test::cpuSeconds(t.app.pid) - appBefore) * 1000 / 20,
                     busCpu = (test::cpuSeconds(daemon) - busBefore) * 1000 / 20,
                     ownCpu = (test::cpuSeconds(self) - ownBefore) * 1000 / 20;
        int referenceItems = -1;
        for (int run = 0; run < 10; ++run) {
            QProcess walker;
            walker.start(QStringLiteral("/usr/bin/python3"),
                         {QStringLiteral(REFERENCE_WALKER), QString::number(t.app.pid),
                          QStringLiteral("1")});
            walker.waitForFinished(120000);
            for (const QByteArray& line : walker.readAllStandardOutput().split('\n')) {
                if (line.startsWith("items "))
                    referenceItems = line.mid(6).toInt();
                else if (line.startsWith("ms "))
                    reference.push_back(line.mid(3).toDouble());
            }
        }
        const double a = median(ours), b = median(reference);
        std::printf("bench crawl_%s_ms %.2f ms\n", t.name, a);
        std::printf("bench crawl_%s_second_ms %.2f ms\n", t.name, median(second));
        std::printf("bench crawl_%s_reference_ms %.2f ms\n", t.name, b);
        std::printf("bench crawl_%s_items %d items\n", t.name, items);
        std::printf("bench crawl_%s_reference_items %d items\n", t.name, referenceItems);
        std::printf("bench crawl_%s_speedup %.1f x\n", t.name, a > 0 ? b / a : 0.0);
        std::printf("bench crawl_%s_app_cpu_ms %.1f ms\n", t.name, appCpu);
        std::printf("bench crawl_%s_bus_cpu_ms %.1f ms\n", t.name, busCpu);
        std::printf("bench crawl_%s_own_cpu_ms %.1f ms\n", t.name, ownCpu);
        std::fflush(stdout);
        if (items != referenceItems)
            status = 1; // the counts must agree
    }
    for (Target& t : targets) {
        t.process->kill();
        t.process->waitForFinished(5000);
    }
    if (only.isEmpty() || only.contains("globalmenu"))
        status |= globalMenu();
    if (only.isEmpty() || only.contains("kdeactions"))
        status |= kdeActions();
    return status;
}
