#pragma once

// Helpers for session tests that talk to AT-SPI: every request runs on the crawl thread, as in
// Corvane, while the test's main thread waits.

#include "menus/MenuCrawler.h"
#include "platform/linux/AtspiClient.h"

#include <QElapsedTimer>
#include <QTest>

namespace corvane::test {

// Runs `job` on the crawl thread and waits for its result (fatal after 30 s).
template <typename F> auto onCrawlThread(F job) -> decltype(job())
{
    std::optional<decltype(job())> result;
    MenuCrawler::queue().post([&] { result = job(); });
    if (!QTest::qWaitFor([&] { return result.has_value(); }, 30000))
        qFatal("a crawl-thread job did not finish in 30 s");
    return *result;
}

// An application can be missing from the registry for a moment after its window shows: wait
// for its menu bar, with a bound.
inline bool waitForMenuBar(qint64 pid, int timeoutMs = 30000)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < timeoutMs) {
        if (onCrawlThread([pid] {
                WalkBudget budget(std::chrono::seconds(3));
                return atspi::MenuBarFinder().menuBar(pid, budget).node != nullptr;
            }))
            return true;
        QTest::qWait(200);
    }
    return false;
}

} // namespace corvane::test
