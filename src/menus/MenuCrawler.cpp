#include "MenuCrawler.h"

#include <QCoreApplication>

namespace corvane {

CrawlQueue::CrawlQueue(QObject* parent)
    : QObject(parent), m_thread(new QThread), m_worker(new QObject)
{
    m_thread->setObjectName(threadName);
    m_worker->moveToThread(m_thread);
    m_thread->start();
}

CrawlQueue::~CrawlQueue()
{
    m_thread->quit();
    m_thread->wait();
    delete m_worker; // its thread has finished: nothing can run on it any more
    delete m_thread;
}

void CrawlQueue::post(std::function<void()> job)
{
    QMetaObject::invokeMethod(m_worker, std::move(job), Qt::QueuedConnection);
}

CrawlQueue& MenuCrawler::queue()
{
    static CrawlQueue* instance = new CrawlQueue(QCoreApplication::instance());
    return *instance;
}

std::optional<MenuCatalog> MenuCrawler::crawl(const RunningApp& app) const
{
    WalkBudget budget(crawlDeadline);
    if (!app.appId || app.appId->isEmpty())
        return MenuWalk::crawl(app, nullptr, 0, budget); // logs the missing identifier
    const MenuSource::MenuBar bar = m_source->menuBar(app.pid, budget);
    return MenuWalk::crawl(app, bar.node, bar.error, budget);
}

PressOutcome MenuCrawler::press(const QList<PathStep>& path, qint64 pid) const
{
    if (path.isEmpty())
        return PressOutcome::failed;
    WalkBudget budget;
    return MenuWalk::press(path, m_source->menuBar(pid, budget).node);
}

} // namespace corvane
