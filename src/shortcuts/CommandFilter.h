#pragma once

// Scores and ranks menu commands for a search query. `Index` folds every title once per catalog so
// that a keystroke only folds the query; its results are identical to `rank`.

#include "TextFolding.h"
#include "menus/MenuCatalog.h"

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

QList<MenuCommand> rank(const QList<MenuCommand>& commands, const QString& query,
                        const QSet<QString>& favorites);

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
    QList<qsizetype> rankPositions(const QString& query, const QSet<QString>& favorites) const;
    QList<MenuCommand> rank(const QString& query, const QSet<QString>& favorites) const;

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
