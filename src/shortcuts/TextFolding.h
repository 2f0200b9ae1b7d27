#pragma once

// The one query-normalisation helper of the filter, the view model and the key handling, so that
// they agree on when a search is active: case- and diacritic-folding without locale rules, trimming
// of spaces and tabs, canonical equivalence, and lengths in user-perceived characters (grapheme
// clusters).

#include <QList>
#include <QString>
#include <QStringList>
#include <vector>

namespace corvane::TextFolding {

// Trims the Unicode space separators (category Zs) and the tab at both ends; line breaks stay.
QString trimmed(const QString& text);

// Folds case and diacritics (nonspacing marks of the canonical decomposition), returns the
// result in NFC so that canonically equivalent inputs fold to identical strings, then trims.
QString fold(const QString& text);

// A search is active when the folded query is not empty.
bool isSearchActive(const QString& query);

qsizetype graphemeCount(const QString& text);
QStringList graphemes(const QString& text);
QString firstGrapheme(const QString& text);

// A folded string with its grapheme-cluster boundaries, so that matching can work on whole
// user-perceived characters while still using fast UTF-16 searches.
class FoldedText {
public:
    FoldedText() = default;
    // `folded` must already be the result of fold().
    explicit FoldedText(QString folded);

    const QString& text() const { return m_text; }
    qsizetype length() const { return m_length; } // in grapheme clusters
    bool isEmpty() const { return m_text.isEmpty(); }
    // Whether a cluster starts (or the text ends) at this UTF-16 offset.
    bool isBoundary(qsizetype offset) const
    {
        return m_boundary.empty() ? (offset >= 0 && offset <= m_text.size()) : m_boundary[offset];
    }
    // True when every UTF-16 code unit is a cluster of its own (the common, fast case).
    bool isSimple() const { return m_boundary.empty(); }
    QStringView cluster(qsizetype index) const;

private:
    QString m_text;
    qsizetype m_length = 0;
    std::vector<bool> m_boundary;    // empty when isSimple()
    std::vector<qsizetype> m_starts; // cluster start offsets, when not simple
};

} // namespace corvane::TextFolding
