#include "CommandFilter.h"

#include <algorithm>
#include <cmath>

namespace corvane::CommandFilter {

using TextFolding::FoldedText;

namespace {

// Finds `needle` in `text` from `from` on, at an offset where whole clusters of the text match.
qsizetype indexOfClusters(const FoldedText& text, const QString& needle, qsizetype from = 0)
{
    const QString& haystack = text.text();
    for (qsizetype at = haystack.indexOf(needle, from); at != -1;
         at = haystack.indexOf(needle, at + 1))
        if (text.isBoundary(at) && text.isBoundary(at + needle.size()))
            return at;
    return -1;
}

std::optional<qsizetype> subsequenceSpan(const FoldedText& text, const FoldedText& query)
{
    const qsizetype queryLength = query.length();
    if (queryLength == 0 || text.length() < queryLength)
        return std::nullopt;
    qsizetype matched = 0;
    qsizetype first = -1;
    qsizetype last = -1;
    if (text.isSimple() && query.isSimple()) {
        const QChar* t = text.text().constData();
        const QChar* q = query.text().constData();
        for (qsizetype i = 0, n = text.length(); i < n && matched < queryLength; ++i) {
            if (t[i] == q[matched]) {
                if (matched == 0)
                    first = i;
                last = i;
                ++matched;
            }
        }
    } else {
        for (qsizetype i = 0, n = text.length(); i < n && matched < queryLength; ++i) {
            if (text.cluster(i) == query.cluster(matched)) {
                if (matched == 0)
                    first = i;
                last = i;
                ++matched;
            }
        }
    }
    if (matched < queryLength)
        return std::nullopt;
    return last - first + 1;
}

// The query with the word-start needle built once per keystroke rather than once per title.
struct PreparedQuery {
    FoldedText folded;
    QString spaced; // " " + query
    explicit PreparedQuery(const FoldedText& q) : folded(q), spaced(u' ' + q.text()) {}
};

std::optional<int> matchPrepared(const FoldedText& text, const PreparedQuery& query)
{
    if (text.isEmpty())
        return std::nullopt;
    // Every rule below implies that the query is a subsequence of the text, so one cheap scan
    // rejects most texts before any substring search (the result is the same either way).
    const auto span = subsequenceSpan(text, query.folded);
    if (!span)
        return std::nullopt;
    const QString& q = query.folded.text();
    if (text.text().startsWith(q) && text.isBoundary(q.size()))
        return prefixScore;
    // "a single space followed by the query": the space must be a cluster of its own.
    const QString& spaced = query.spaced;
    for (qsizetype at = indexOfClusters(text, spaced); at != -1;
         at = indexOfClusters(text, spaced, at + 1))
        if (text.isBoundary(at + 1))
            return wordStartScore;
    if (indexOfClusters(text, q) != -1)
        return substringScore;
    const qsizetype gap = *span - query.folded.length();
    return int(std::max<qsizetype>(subsequenceBase - subsequenceStep * gap, subsequenceFloor));
}

std::optional<int> scoreEntry(const FoldedText& leaf, int brevity, const FoldedText& path,
                              const PreparedQuery& query)
{
    if (const auto match = matchPrepared(leaf, query))
        return *match + brevity;
    if (const auto match = matchPrepared(path, query))
        return *match / pathMatchDivisor;
    return std::nullopt;
}

FoldedText foldedPath(const MenuCommand& command)
{
    return FoldedText(TextFolding::fold(command.titles().join(u' ')));
}

QString leafTitle(const MenuCommand& command)
{
    return command.path.isEmpty() ? QString() : command.path.constLast().title;
}

int brevityFor(const QString& leaf)
{
    return std::max<qsizetype>(0, brevityAllowance - TextFolding::graphemeCount(leaf));
}

} // namespace

std::optional<int> matchScore(const FoldedText& text, const FoldedText& query)
{
    return matchPrepared(text, PreparedQuery(query));
}

std::optional<int> score(const MenuCommand& command, const QString& foldedQuery)
{
    const QString leaf = leafTitle(command);
    return scoreEntry(FoldedText(TextFolding::fold(leaf)), brevityFor(leaf), foldedPath(command),
                      PreparedQuery(FoldedText(foldedQuery)));
}

int historyBonus(double weight)
{
    if (!(weight > 0))
        return 0;
    return int(std::lround(historyBonusCap * weight / (weight + 2)));
}

QList<MenuCommand> rank(const QList<MenuCommand>& commands, const QString& query,
                        const QSet<QString>& favorites, const HistoryWeights& history)
{
    if (!TextFolding::isSearchActive(query))
        return commands;
    return Index(commands).rank(query, favorites, history);
}

Index::Index(QList<MenuCommand> commands) : m_commands(std::move(commands))
{
    m_entries.reserve(m_commands.size());
    for (const MenuCommand& command : std::as_const(m_commands)) {
        const QString leaf = leafTitle(command);
        m_entries.append(Entry{FoldedText(TextFolding::fold(leaf)), foldedPath(command),
                               brevityFor(leaf),
                               command.id().normalized(QString::NormalizationForm_C)});
    }
}

QList<qsizetype> Index::rankPositions(const QString& query, const QSet<QString>& favorites,
                                      const HistoryWeights& history) const
{
    const PreparedQuery prepared{FoldedText(TextFolding::fold(query))};
    QList<qsizetype> positions;
    if (prepared.folded.isEmpty()) {
        positions.reserve(m_commands.size());
        for (qsizetype i = 0; i < m_commands.size(); ++i)
            positions.append(i);
        return positions;
    }

    QSet<QString> normalizedFavorites;
    for (const QString& id : favorites)
        normalizedFavorites.insert(id.normalized(QString::NormalizationForm_C));
    QHash<QString, int> bonuses;
    for (auto it = history.cbegin(); it != history.cend(); ++it)
        if (const int bonus = historyBonus(it.value()))
            bonuses.insert(it.key().normalized(QString::NormalizationForm_C), bonus);

    struct Scored {
        int score;
        qsizetype index;
    };
    std::vector<Scored> scored;
    scored.reserve(size_t(m_entries.size()));
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        const Entry& entry = m_entries[i];
        auto value = scoreEntry(entry.leaf, entry.brevity, entry.path, prepared);
        if (!value)
            continue;
        int total = *value;
        if (!normalizedFavorites.isEmpty() && normalizedFavorites.contains(entry.normalizedId))
            total += favoriteBonus;
        if (!bonuses.isEmpty())
            total += bonuses.value(entry.normalizedId);
        if (!m_commands[i].enabled)
            total -= disabledPenalty;
        scored.push_back({total, i});
    }
    // Highest score first; equal scores keep their input order, which makes the order total.
    std::sort(scored.begin(), scored.end(), [](const Scored& a, const Scored& b) {
        return a.score != b.score ? a.score > b.score : a.index < b.index;
    });
    positions.reserve(qsizetype(scored.size()));
    for (const Scored& s : scored)
        positions.append(s.index);
    return positions;
}

QList<MenuCommand> Index::rank(const QString& query, const QSet<QString>& favorites,
                               const HistoryWeights& history) const
{
    if (!TextFolding::isSearchActive(query))
        return m_commands;
    QList<MenuCommand> result;
    const QList<qsizetype> positions = rankPositions(query, favorites, history);
    result.reserve(positions.size());
    for (qsizetype i : positions)
        result.append(m_commands[i]);
    return result;
}

} // namespace corvane::CommandFilter
