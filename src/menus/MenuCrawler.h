#pragma once

// MenuCrawler: a crawl or a press of one process, read through a MenuSource within the crawl
// deadline, on the one crawl thread "com.vantorel.corvane.crawl".

#include "MenuTree.h"
#include "MenuWalk.h"

#include <QObject>
#include <QThread>
#include <functional>

namespace corvane {

// One worker thread; jobs run one at a time, in the order they were posted.
class CrawlQueue : public QObject {
    Q_OBJECT

public:
    static inline const QString threadName = QStringLiteral("com.vantorel.corvane.crawl");

    explicit CrawlQueue(QObject* parent = nullptr);
    ~CrawlQueue() override;

    void post(std::function<void()> job);
    QThread* thread() const { return m_thread; }

private:
    QThread* m_thread;
    QObject* m_worker;
};

class MenuCrawler {
public:
    static constexpr std::chrono::milliseconds crawlDeadline{3000};

    explicit MenuCrawler(std::shared_ptr<MenuSource> source) : m_source(std::move(source)) {}

    // Blocking; call on queue(). `why`, when given, gets why no menu bar was read (menuBarFound
    // when one was, whatever the walk then found in it).
    std::optional<MenuCatalog> crawl(const RunningApp& app, MenuBarError* why = nullptr) const;
    PressOutcome press(const QList<PathStep>& path, qint64 pid) const;

    // The process-wide crawl queue, created on first use (owned by the application object).
    static CrawlQueue& queue();

private:
    std::shared_ptr<MenuSource> m_source;
};

} // namespace corvane
