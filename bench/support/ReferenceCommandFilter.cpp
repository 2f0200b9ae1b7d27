#include "ReferenceCommandFilter.h"

#include "shortcuts/TextFolding.h"

#include <algorithm>

namespace corvane::ReferenceCommandFilter {

namespace {

using Chars = QStringList; // one element per grapheme cluster

bool startsWith(const Chars& text, const Chars& query, qsizetype at = 0)
{
    if (at + query.size() > text.size())
        return false;
    for (qsizetype i = 0; i < query.size(); ++i)
        if (text[at + i] != query[i])
            return false;
    return true;
}

std::optional<qsizetype> subsequenceSpan(const Chars& text, const Chars& query)
{
    if (query.isEmpty() || text.size() < query.size())
        return std::nullopt;
    qsizetype q = 0, first = -1, last = -1;
    for (qsizetype t = 0; t < text.size() && q < query.size(); ++t) {
        if (text[t] == query[q]) {
            if (q == 0)
                first = t;
            last = t;
            ++q;
        }
    }
    if (q < query.size())
        return std::nullopt;
    return last - first + 1;
}

std::optional<int> matchScore(const Chars& text, const Chars& query)
{
    if (text.isEmpty())
        return std::nullopt;
    if (startsWith(text, query))
        return 1000;
    for (qsizetype i = 0; i + 1 <= text.size(); ++i)
        if (text[i] == QStringLiteral(" ") && startsWith(text, query, i + 1))
            return 800;
    for (qsizetype i = 0; i < text.size(); ++i)
        if (startsWith(text, query, i))
            return 600;
    if (const auto span = subsequenceSpan(text, query))
        return int(std::max<qsizetype>(300 - 10 * (*span - query.size()), 100));
    return std::nullopt;
}

} // namespace

std::optional<int> score(const MenuCommand& command, const QString& foldedQuery)
{
    const Chars query = TextFolding::graphemes(foldedQuery);
    const QString leaf = command.path.isEmpty() ? QString() : command.path.last().title;
    if (const auto m = matchScore(TextFolding::graphemes(TextFolding::fold(leaf)), query))
        return *m + int(std::max<qsizetype>(0, 40 - TextFolding::graphemes(leaf).size()));
    if (const auto m = matchScore(
            TextFolding::graphemes(TextFolding::fold(command.titles().join(u' '))), query))
        return *m / 2;
    return std::nullopt;
}

QList<MenuCommand> rank(const QList<MenuCommand>& commands, const QString& query,
                        const QSet<QString>& favorites)
{
    const QString folded = TextFolding::fold(query);
    if (folded.isEmpty())
        return commands;
    struct Triple {
        MenuCommand command;
        int score;
        qsizetype index;
    };
    QList<Triple> triples;
    for (qsizetype index = 0; index < commands.size(); ++index) {
        auto s = score(commands[index], folded);
        if (!s)
            continue;
        int total = *s;
        const QString id = commands[index].id();
        if (std::any_of(favorites.begin(), favorites.end(),
                        [&](const QString& f) { return canonicallyEqual(f, id); }))
            total += 150;
        if (!commands[index].enabled)
            total -= 200;
        triples.append({commands[index], total, index});
    }
    std::stable_sort(triples.begin(), triples.end(),
                     [](const Triple& a, const Triple& b) { return a.score > b.score; });
    QList<MenuCommand> result;
    for (const Triple& t : triples)
        result.append(t.command);
    return result;
}

} // namespace corvane::ReferenceCommandFilter
