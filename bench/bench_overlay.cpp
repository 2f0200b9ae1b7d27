// The overlay's frame times on the real panel (session tier), with a 2500-command catalog:
// present(...) to the first frame on screen, and a typed character (XTEST) to the frame that
// shows the new results, 50 samples each once warm; resident memory after 1, 20 and 100
// presentations in a row, and after the typing; the keystroke figure again while the crawl thread
// is stuck on an application that sleeps 5 s on every request; the typing goes to the pinned panel
// while another application's window stays active. Prints `bench <name> <value> <unit>`
// lines.

#include "CatalogGenerator.h"
#include "OverlayHarness.h"
#include "Percentiles.h"
#include "ProcessFigures.h"
#include "SessionTools.h"
#include "menus/MenuCrawler.h"
#include "overlay/OverlayPanelController.h"
#include "platform/linux/AtspiClient.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QTimer>
#include <atomic>
#include <cstdio>

using namespace corvane;
using corvane::test::p50p99;
using corvane::test::residentMegabytes;

namespace {

constexpr int samples = 50;
constexpr int warmUp = 5;

// Runs the event loop until `signal` of `sender` fires (or 5 s pass); the elapsed time since
// `timer` started, in milliseconds, at that moment.
template <typename Sender, typename Signal>
double waitFor(Sender* sender, Signal signal, const QElapsedTimer& timer)
{
    QEventLoop loop;
    double at = -1;
    auto connection = QObject::connect(sender, signal, &loop, [&] {
        at = double(timer.nsecsElapsed()) / 1e6;
        loop.quit();
    });
    QTimer::singleShot(5000, &loop, &QEventLoop::quit);
    loop.exec();
    QObject::disconnect(connection);
    return at;
}

// Records when a key press reaches the panel, before anything handles it, and the time to
// the first frame swapped after it.
class Arrival : public QObject {
public:
    explicit Arrival(QQuickWindow* window)
    {
        window->installEventFilter(this);
        connect(window, &QQuickWindow::frameSwapped, this, [this] {
            if (at.isValid() && frameMs < 0)
                frameMs = double(at.nsecsElapsed()) / 1e6;
        });
    }
    QElapsedTimer at;
    double frameMs = -1;
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress)
            at.start();
        return false;
    }
};

void settle(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

// After the Qt code: Xlib's macros (KeyPress, …) would clash with Qt's names.
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    if (!qEnvironmentVariableIsSet("CORVANE_SESSION")) {
        std::fprintf(stderr, "bench_overlay: run under tools/test-session.sh\n");
        return 2;
    }
    const MenuCatalog catalog = CatalogGenerator::generate(7, {2500, false});
    const RunningApp shown{1, QStringLiteral("org.example.Big"), QStringLiteral("Big"), {}};
    OverlayPanelController controller;
    const auto present = [&] {
        controller.present(shown, catalog, {}, true, true, true, QStringLiteral("Ctrl"));
    };

    // present(...) to the first frame.
    std::vector<double> presentToFrame;
    double rssAfter1 = 0, rssAfter20 = 0, rssAfter100 = 0;
    for (int presentations = 1; presentations <= 100; ++presentations) {
        QElapsedTimer timer;
        timer.start();
        present();
        const double ms = waitFor(controller.panel(), &QQuickWindow::frameSwapped, timer);
        if (presentations == 1)
            rssAfter1 = residentMegabytes();
        if (presentations == 20)
            rssAfter20 = residentMegabytes();
        if (presentations == 100)
            rssAfter100 = residentMegabytes();
        if (presentations > warmUp && presentations <= warmUp + samples)
            presentToFrame.push_back(ms);
        controller.dismiss();
        waitFor(&controller, &OverlayPanelController::hidden, timer);
    }

    // A typed character to the frame with the new results: type into the pinned search field,
    // with another application's window active in front, as when the user peeks at it.
    test::Programs front;
    const qint64 frontApp =
        front.startWithWindow(QStringLiteral(FIXTURE_GTK), {}, QStringLiteral("fixture"));
    if (!test::activateWindowOf(frontApp)) {
        std::fprintf(stderr, "bench_overlay: the application in front could not be activated\n");
        return 1;
    }
    present();
    waitFor(controller.panel(), &QQuickWindow::frameSwapped, QElapsedTimer());
    controller.pin();
    settle(300); // the keyboard grab and the fade-in
    Arrival arrival(controller.panel());

    Display* display = XOpenDisplay(nullptr);
    const auto typeKeys = [&](std::vector<double>& keyToFrame) {
        const char* letters[] = {"s",         "a", "v",         "BackSpace",
                                 "BackSpace", "e", "BackSpace", "BackSpace"};
        // Warm: every query of the cycle, and both switches between the grid and the
        // results, seen once before the samples.
        const int typingWarmUp = int(std::size(letters));
        controller.viewModel().setQuery({}); // each round types the same queries from the start
        settle(50);
        for (int i = 0; i < typingWarmUp + samples; ++i) {
            const KeyCode code =
                XKeysymToKeycode(display, XStringToKeysym(letters[i % std::size(letters)]));
            XTestFakeKeyEvent(display, code, True, CurrentTime);
            XTestFakeKeyEvent(display, code, False, CurrentTime);
            XFlush(display);
            QElapsedTimer since;
            since.start();
            // Wait for the key to arrive and the first frame after it (both may come in one
            // pass of the event loop).
            while (arrival.frameMs < 0 && since.elapsed() < 2000)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
            if (arrival.frameMs < 0) {
                std::fprintf(stderr, "bench_overlay: a typed key did not reach the panel\n");
                return false;
            }
            const double ms = arrival.frameMs;
            if (i >= typingWarmUp)
                keyToFrame.push_back(ms);
            arrival.at.invalidate();
            arrival.frameMs = -1;
            settle(20);
        }
        // The pinned panel took the keys, not the activation.
        if (test::activeWindowPid() != frontApp) {
            std::fprintf(stderr, "bench_overlay: the application in front lost its activation\n");
            return false;
        }
        return true;
    };
    std::vector<double> keyToFrame, keyToFrameStuck;
    if (!typeKeys(keyToFrame))
        return 1;

    // The same while the crawl thread is stuck on an application that answers every request
    // after 5 s: crawls of it run back to back, each waiting out a time-out.
    test::Programs programs; // stops the sleeper, by process id, when it goes
    const qint64 sleeper =
        programs
            .startUntilReady(QStringLiteral(FIXTURE_HOSTILE), {QStringLiteral("sleeper")}, "ready")
            ->processId();
    std::atomic<bool> stop{false};
    std::atomic<int> stuckCrawls{0};
    const RunningApp frozen{
        sleeper, QStringLiteral("org.example.Sleeper"), QStringLiteral("Sleeper"), {}};
    MenuCrawler::queue().post([&] {
        const MenuCrawler crawler(std::make_shared<atspi::MenuBarFinder>());
        while (!stop) {
            crawler.crawl(frozen);
            ++stuckCrawls;
        }
    });
    settle(100);
    const bool typed = typeKeys(keyToFrameStuck);
    stop = true;
    std::atomic<bool> drained{false};
    MenuCrawler::queue().post([&] { drained = true; });
    while (!drained)
        settle(50);
    programs.stopAll();
    if (!typed)
        return 1;
    front.stopAll();
    XCloseDisplay(display);
    controller.dismiss();
    settle(200);

    const double rssAfterTyping = residentMegabytes();

    const auto [p50, p99] = p50p99(presentToFrame);
    const auto [k50, k99] = p50p99(keyToFrame);
    std::printf("bench overlay_present_to_first_frame_p50 %.2f ms\n", p50);
    std::printf("bench overlay_present_to_first_frame_p99 %.2f ms\n", p99);
    std::printf("bench overlay_keystroke_to_frame_p50 %.2f ms\n", k50);
    std::printf("bench overlay_keystroke_to_frame_p99 %.2f ms\n", k99);
    const auto [s50, s99] = p50p99(keyToFrameStuck);
    std::printf("bench overlay_keystroke_to_frame_crawl_stuck_p50 %.2f ms\n", s50);
    std::printf("bench overlay_keystroke_to_frame_crawl_stuck_p99 %.2f ms\n", s99);
    std::printf("bench overlay_keystroke_crawl_stuck_p99_ratio %.2f x\n", k99 > 0 ? s99 / k99 : 0);
    std::printf("bench overlay_crawls_stuck_while_typing %d crawls\n", stuckCrawls.load());
    std::printf("bench overlay_rss_after_1 %.1f MB\n", rssAfter1);
    std::printf("bench overlay_rss_after_20 %.1f MB\n", rssAfter20);
    std::printf("bench overlay_rss_after_100 %.1f MB\n", rssAfter100);
    std::printf("bench overlay_rss_after_typing %.1f MB\n", rssAfterTyping);
    return 0;
}
