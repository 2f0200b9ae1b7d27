#pragma once

// Scores and ranks menu commands for a search query. `Index` folds every title once per catalog so
// that a keystroke only folds the query; its results are identical to `rank`.

#include "TextFolding.h"
#include "menus/MenuCatalog.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <optional>

namespace corvane::CommandFilter {

inline constexpr int prefixScore = 1000;
inline constexpr int wordStartScore = 800;
inline constexpr int substringScore = 600;
inline constexpr int subsequenceBase = 300;
inline constexpr int subsequenceStep = 10;
inline constexpr int subsequenceFloor = 100;
inline constexpr int brevityAllowance = 40;
inline constexpr int pathMatchDivisor = 2;
inline constexpr int favoriteBonus = 150;
inline constexpr int disabledPenalty = 200;
// Use lifts a command by at most this much: with the brevity allowance still less than the 200
// between two kinds of text match, so a weak match never passes a strong one on use alone.
inline constexpr int historyBonusCap = 100;

// The bonus of a command of history weight `weight` (CommandHistory::weight): a third of the cap
// for one run today, rising towards the cap with use.
int historyBonus(double weight);

// Commands by id: the favourites, and the history weights of commands run before.
using HistoryWeights = QHash<QString, double>;

QList<MenuCommand> rank(const QList<MenuCommand>& commands, const QString& query,
                        const QSet<QString>& favorites, const HistoryWeights& history = {});

// `foldedQuery` is TextFolding::fold of the raw query.
std::optional<int> score(const MenuCommand& command, const QString& foldedQuery);

// Rule-by-rule match of a folded query in a folded text (exposed for tests).
std::optional<int> matchScore(const TextFolding::FoldedText& text,
                              const TextFolding::FoldedText& query);

class Index {
public:
    Index() = default;
    explicit Index(QList<MenuCommand> commands);

    const QList<MenuCommand>& commands() const { return m_commands; }
    // Positions into commands(), best first; all positions in order for an inactive query.
    QList<qsizetype> rankPositions(const QString& query, const QSet<QString>& favorites,
                                   const HistoryWeights& history = {}) const;
    QList<MenuCommand> rank(const QString& query, const QSet<QString>& favorites,
                            const HistoryWeights& history = {}) const;

private:
    struct Entry {
        TextFolding::FoldedText leaf;
        TextFolding::FoldedText path;
        int brevity = 0;
        QString normalizedId; // NFC, for favourite membership under canonical equivalence
    };
    QList<MenuCommand> m_commands;
    QList<Entry> m_entries;
};

} // namespace corvane::CommandFilter
