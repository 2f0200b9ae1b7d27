#include "MenuCrawler.h"

#include <QCoreApplication>

namespace corvane {

QString describe(MenuBarError error)
{
    switch (error) {
    case menuBarFound:
        return QStringLiteral("found");
    case busUnavailable:
        return QStringLiteral("the accessibility bus is not reachable");
    case applicationNotFound:
        return QStringLiteral("the application is not on the accessibility bus");
    case noMenuBar:
        return QStringLiteral("the application shows no menu bar");
    case requestTimedOut:
        return QStringLiteral("the application did not answer in time");
    case applicationUnpublished:
        return QStringLiteral("the application is on the accessibility bus but publishes nothing");
    case applicationStarting:
        return QStringLiteral("the application is still starting");
    }
    return QStringLiteral("unknown");
}

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

MenuSource::MenuBar FirstMenuSource::menuBar(qint64 pid, WalkBudget& budget)
{
    QList<qsizetype> order;
    if (const auto last = m_lastFound.constFind(pid); last != m_lastFound.constEnd())
        order << *last;
    for (qsizetype i = 0; i < m_sources.size(); ++i)
        if (!order.contains(i))
            order << i;
    MenuBar first;
    for (const qsizetype i : std::as_const(order)) {
        if (budget.exhausted())
            break;
        MenuBar bar = m_sources[i]->menuBar(pid, budget);
        if (bar.node) {
            m_lastFound.insert(pid, i);
            return bar;
        }
        if (i == 0)
            first = bar;
    }
    return first;
}

std::optional<MenuCatalog> MenuCrawler::crawl(const RunningApp& app, MenuBarError* why) const
{
    WalkBudget budget(crawlDeadline);
    if (!app.appId || app.appId->isEmpty())
        return MenuWalk::crawl(app, nullptr, 0, budget); // logs the missing identifier
    const MenuSource::MenuBar bar = m_source->menuBar(app.pid, budget);
    if (why)
        *why = MenuBarError(bar.error);
    if (bar.node && qstrcmp(bar.source, "accessibility") != 0)
        qCInfo(lcCrawl, "crawl: %s read through %s", qUtf8Printable(*app.appId), bar.source);
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
