#include "MenuWalk.h"

#include <QMutex>

Q_LOGGING_CATEGORY(lcCrawl, "com.vantorel.corvane.crawl", QtInfoMsg)

namespace corvane::MenuWalk {

namespace {

QMutex failureLock;
QString failureText;

struct Collector {
    WalkBudget& budget;
    int itemCount = 0;
    bool stoppedAtDeadline = false;

    bool mustStop()
    {
        if (itemCount >= itemCap)
            return true;
        if (budget.exhausted()) {
            stoppedAtDeadline = true;
            return true;
        }
        return false;
    }

    // Appends the commands under `element` (a submenu element) to `into`, depth first, in menu
    // order; the item cap and the deadline end the whole walk.
    void collect(const std::shared_ptr<MenuNode>& element, const QList<PathStep>& path, int depth,
                 bool isAppMenu, QList<MenuCommand>& into)
    {
        const QList<std::shared_ptr<MenuNode>> children = element->children();
        if (children.isEmpty())
            return;
        QHash<QString, int> counts;
        const bool servicesLevel = isAppMenu && depth == 1;
        for (const std::shared_ptr<MenuNode>& child : children) {
            if (mustStop())
                return;
            const std::optional<QString> title = child->title();
            if (!title || title->isEmpty())
                continue; // separators and other untitled items
            // From here on the child counts as a sibling for later equal titles.
            const int occurrence = counts.value(*title, 0);
            counts.insert(*title, occurrence + 1);
            const QList<PathStep> childPath = path + QList<PathStep>{PathStep{*title, occurrence}};

            const std::shared_ptr<MenuNode> submenu = child->submenu();
            if (!submenu) {
                if (qAddOverflow(itemCount, 1, &itemCount))
                    qFatal("crawl item count overflowed");
                into.append(
                    MenuCommand{childPath, child->shortcut(), child->enabled(), child->checked()});
                continue;
            }
            if (servicesLevel) {
                if (servicesTitles().contains(*title))
                    continue;
            } else if (depth >= depthLimit) {
                continue;
            }
            if (submenu->children().isEmpty())
                continue;
            collect(submenu, childPath, depth + 1, isAppMenu, into);
        }
    }
};

void setLastFailure(const QString& text)
{
    const QMutexLocker locker(&failureLock);
    failureText = text;
}

// The candidates among `nodes` whose title equals `title` exactly, in order.
std::shared_ptr<MenuNode> candidate(const QList<std::shared_ptr<MenuNode>>& nodes,
                                    const PathStep& step)
{
    int seen = 0;
    for (const std::shared_ptr<MenuNode>& node : nodes) {
        const std::optional<QString> title = node->title();
        if (!title || *title != step.title)
            continue;
        if (seen == step.occurrence)
            return node;
        ++seen;
    }
    return nullptr;
}

} // namespace

const QSet<QString>& servicesTitles()
{
    static const QSet<QString> titles{
        QStringLiteral("Services"),  QStringLiteral("Dienste"),  QStringLiteral("Servicios"),
        QStringLiteral("Servizi"),   QStringLiteral("Diensten"), QStringLiteral("Tjänster"),
        QStringLiteral("Tjenester"), QStringLiteral("Palvelut"), QStringLiteral("Usługi"),
        QStringLiteral("Služby"),    QStringLiteral("Serviços"), QStringLiteral("Услуги"),
        QStringLiteral("サービス"),  QStringLiteral("服务"),     QStringLiteral("服務"),
        QStringLiteral("서비스"),
    };
    return titles;
}

QString lastFailure()
{
    const QMutexLocker locker(&failureLock);
    return failureText;
}

std::optional<MenuCatalog> crawl(const RunningApp& app, const std::shared_ptr<MenuNode>& menuBar,
                                 int readError, WalkBudget& budget)
{
    if (!app.appId || app.appId->isEmpty()) {
        qCCritical(lcCrawl, "crawl: target app has no bundle identifier");
        return std::nullopt;
    }
    const QString bundleID = *app.appId;
    if (!menuBar) {
        setLastFailure(
            QStringLiteral("menu bar read failed for %1: AXError %2").arg(bundleID).arg(readError));
        qCCritical(lcCrawl, "crawl: menu bar read failed for %s: AXError %d",
                   qUtf8Printable(bundleID), readError);
        return std::nullopt;
    }

    Collector collector{budget};
    QList<MenuSection> sections;
    QHash<QString, int> counts;
    const QList<std::shared_ptr<MenuNode>> topLevel = menuBar->children();
    for (const std::shared_ptr<MenuNode>& child : topLevel) {
        if (collector.mustStop())
            break;
        const std::optional<QString> title = child->title();
        if (!title || title->isEmpty())
            continue;
        const int occurrence = counts.value(*title, 0);
        counts.insert(*title, occurrence + 1);
        // A top-level item is collected once, through its submenu element (GTK: the item itself;
        // Qt: its menu child).
        QList<MenuCommand> commands;
        if (const std::shared_ptr<MenuNode> submenu = child->submenu())
            collector.collect(submenu, {PathStep{*title, occurrence}}, 1, false, commands);
        if (!commands.isEmpty())
            sections.append(MenuSection{*title, commands});
        if (collector.itemCount >= itemCap)
            break;
    }
    if (collector.stoppedAtDeadline)
        qCCritical(lcCrawl, "crawl: %s stopped at the deadline", qUtf8Printable(bundleID));

    if (sections.isEmpty()) {
        qCCritical(
            lcCrawl, "crawl: %s yielded 0 sections (menu bar children: %ld)",
            qUtf8Printable(bundleID),
            long(collector.stoppedAtDeadline ? topLevel.size() : menuBar->children().size()));
        return std::nullopt;
    }
    qCInfo(lcCrawl, "crawl: %s \u2192 %ld sections, %ld items", qUtf8Printable(bundleID),
           long(sections.size()), long(collector.itemCount));
    return MenuCatalog{bundleID, app.name.isEmpty() ? bundleID : app.name, sections};
}

PressOutcome press(const QList<PathStep>& path, const std::shared_ptr<MenuNode>& menuBar)
{
    if (path.isEmpty())
        return PressOutcome::failed;
    if (!menuBar) {
        qCCritical(lcCrawl, "press: could not read menu bar");
        return PressOutcome::failed;
    }
    std::shared_ptr<MenuNode> current = candidate(menuBar->children(), path[0]);
    if (!current) {
        qCCritical(lcCrawl, "press: could not resolve top-level menu %s",
                   qUtf8Printable(path[0].title));
        return PressOutcome::failed;
    }
    for (qsizetype i = 1; i < path.size(); ++i) {
        const std::shared_ptr<MenuNode> submenu = current->submenu();
        if (!submenu) {
            qCCritical(lcCrawl, "press: no submenu under %s", qUtf8Printable(path[i].title));
            return PressOutcome::failed;
        }
        current = candidate(submenu->children(), path[i]);
        if (!current) {
            qCCritical(lcCrawl, "press: path component not found: %s",
                       qUtf8Printable(path[i].title));
            return PressOutcome::failed;
        }
    }
    QStringList titles;
    for (const PathStep& step : path)
        titles << step.title;
    const QString joined = titles.join(QStringView(breadcrumbSeparator));

    const MenuNode::PressResult result = current->press();
    switch (result.status) {
    case MenuNode::PressResult::Status::pressed:
        return PressOutcome::pressed;
    case MenuNode::PressResult::Status::timedOut:
        qCInfo(lcCrawl, "press: no timely reply for %s \u2014 treating as fired",
               qUtf8Printable(joined));
        return PressOutcome::assumedFired;
    case MenuNode::PressResult::Status::error:
        break;
    }
    qCCritical(lcCrawl, "press: AXPress failed (%d) for %s", result.code, qUtf8Printable(joined));
    return PressOutcome::failed;
}

} // namespace corvane::MenuWalk
