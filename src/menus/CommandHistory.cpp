#include "CommandHistory.h"

#include "MenuCatalog.h"
#include "platform/UserDefaults.h"

#include <QStringList>
#include <algorithm>
#include <cmath>

namespace corvane {

namespace {

const QString prefix = QStringLiteral("history.");

std::optional<CommandHistory::Entry> parse(const QString& text)
{
    const qsizetype first = text.indexOf(u' ');
    const qsizetype second = first < 0 ? -1 : text.indexOf(u' ', first + 1);
    if (second < 0 || second + 1 >= text.size())
        return std::nullopt;
    bool countOk = false, timeOk = false;
    const int count = text.left(first).toInt(&countOk);
    const qint64 seconds = text.mid(first + 1, second - first - 1).toLongLong(&timeOk);
    if (!countOk || !timeOk || count <= 0)
        return std::nullopt;
    return CommandHistory::Entry{text.mid(second + 1), count,
                                 QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC)};
}

QString format(const CommandHistory::Entry& entry)
{
    return QStringLiteral("%1 %2 %3")
        .arg(entry.count)
        .arg(entry.lastRun.toSecsSinceEpoch())
        .arg(entry.id);
}

} // namespace

CommandHistory::CommandHistory(UserDefaults& defaults) : m_defaults(defaults) {}

QString CommandHistory::key(const QString& bundleID)
{
    return prefix + bundleID;
}

QList<CommandHistory::Entry> CommandHistory::entries(const QString& bundleID) const
{
    QList<Entry> result;
    for (const QString& text : m_defaults.stringList(key(bundleID)).value_or(QStringList{}))
        if (const auto entry = parse(text))
            result.append(*entry);
    return result;
}

bool CommandHistory::record(const QString& id, const QString& bundleID, const QDateTime& when)
{
    QList<Entry> list = entries(bundleID);
    Entry entry{id, 0, when};
    const auto same = std::find_if(list.begin(), list.end(),
                                   [&id](const Entry& e) { return canonicallyEqual(e.id, id); });
    if (same != list.end()) {
        entry.count = same->count;
        list.erase(same);
    }
    entry.count = entry.count < INT_MAX ? entry.count + 1 : entry.count;
    list.prepend(entry);
    if (list.size() > maxEntries)
        list.resize(maxEntries);
    QStringList texts;
    for (const Entry& e : std::as_const(list))
        texts << format(e);
    return m_defaults.setStringList(key(bundleID), texts);
}

bool CommandHistory::forgetAll()
{
    bool stored = true;
    for (const QString& k : m_defaults.keys(prefix))
        stored = m_defaults.remove(k) && stored;
    return stored;
}

double CommandHistory::weight(const Entry& entry, const QDateTime& now)
{
    const double days = std::max<qint64>(0, entry.lastRun.secsTo(now)) / 86400.0;
    return entry.count * std::exp2(-days / halfLifeDays);
}

QHash<QString, double> CommandHistory::weights(const QString& bundleID, const QDateTime& now) const
{
    QHash<QString, double> result;
    for (const Entry& entry : entries(bundleID))
        result.insert(entry.id, weight(entry, now));
    return result;
}

QStringList CommandHistory::recent(const QString& bundleID, const QDateTime& now, int count) const
{
    QList<Entry> list = entries(bundleID);
    // Stable: of equal weights the more recent stays first.
    std::stable_sort(list.begin(), list.end(), [&now](const Entry& a, const Entry& b) {
        return weight(a, now) > weight(b, now);
    });
    QStringList ids;
    for (qsizetype i = 0; i < list.size() && i < count; ++i)
        ids << list[i].id;
    return ids;
}

} // namespace corvane
