#include "TextFolding.h"

#include <QTextBoundaryFinder>

namespace corvane::TextFolding {

namespace {

bool isTrimmable(char32_t c)
{
    return c == U'\t' || QChar::category(c) == QChar::Separator_Space;
}

} // namespace

QString trimmed(const QString& text)
{
    const QList<uint> ucs4 = text.toUcs4();
    qsizetype begin = 0;
    qsizetype end = ucs4.size();
    while (begin < end && isTrimmable(ucs4[begin]))
        ++begin;
    while (end > begin && isTrimmable(ucs4[end - 1]))
        --end;
    if (begin == 0 && end == ucs4.size())
        return text;
    return QString::fromUcs4(reinterpret_cast<const char32_t*>(ucs4.constData()) + begin,
                             end - begin);
}

QString fold(const QString& text)
{
    // Decompose, fold case fully (upper-casing first expands ß to SS and ligatures to their
    // letters, which Qt's simple toCaseFolded() does not), decompose again, drop the nonspacing
    // marks, and recompose: canonically equivalent inputs give equal outputs.
    const QString decomposed = text.normalized(QString::NormalizationForm_D)
                                   .toUpper()
                                   .toCaseFolded()
                                   .normalized(QString::NormalizationForm_D);
    QString stripped;
    stripped.reserve(decomposed.size());
    for (qsizetype i = 0; i < decomposed.size(); ++i) {
        char32_t c = decomposed[i].unicode();
        qsizetype width = 1;
        if (decomposed[i].isHighSurrogate() && i + 1 < decomposed.size() &&
            decomposed[i + 1].isLowSurrogate()) {
            c = QChar::surrogateToUcs4(decomposed[i], decomposed[i + 1]);
            width = 2;
        }
        if (QChar::category(c) != QChar::Mark_NonSpacing)
            stripped.append(QStringView(decomposed).mid(i, width));
        i += width - 1;
    }
    return trimmed(stripped.normalized(QString::NormalizationForm_C));
}

bool isSearchActive(const QString& query)
{
    return !fold(query).isEmpty();
}

QStringList graphemes(const QString& text)
{
    QStringList result;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype start = 0;
    for (qsizetype next = finder.toNextBoundary(); next != -1; next = finder.toNextBoundary()) {
        if (next > start)
            result.append(text.mid(start, next - start));
        start = next;
    }
    return result;
}

qsizetype graphemeCount(const QString& text)
{
    if (text.isEmpty())
        return 0;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    qsizetype start = 0;
    for (qsizetype next = finder.toNextBoundary(); next != -1; next = finder.toNextBoundary()) {
        if (next > start)
            ++count;
        start = next;
    }
    return count;
}

QString firstGrapheme(const QString& text)
{
    if (text.isEmpty())
        return {};
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    const qsizetype next = finder.toNextBoundary();
    return text.left(next <= 0 ? text.size() : next);
}

FoldedText::FoldedText(QString folded) : m_text(std::move(folded))
{
    // Below U+0300 there are no extending or joining characters, so every code unit is a
    // cluster of its own, except CR LF.
    bool simple = true;
    for (qsizetype i = 0; i < m_text.size() && simple; ++i) {
        const char16_t u = m_text[i].unicode();
        if (u >= 0x300 || (u == u'\r' && i + 1 < m_text.size() && m_text[i + 1] == u'\n'))
            simple = false;
    }
    if (simple) {
        m_length = m_text.size();
        return;
    }
    m_boundary.assign(m_text.size() + 1, false);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, m_text);
    m_boundary[0] = true;
    m_starts.push_back(0);
    for (qsizetype next = finder.toNextBoundary(); next != -1; next = finder.toNextBoundary()) {
        m_boundary[next] = true;
        if (next < m_text.size())
            m_starts.push_back(next);
    }
    m_boundary[m_text.size()] = true;
    m_length = m_text.isEmpty() ? 0 : qsizetype(m_starts.size());
}

QStringView FoldedText::cluster(qsizetype index) const
{
    if (m_boundary.empty())
        return QStringView(m_text).mid(index, 1);
    const qsizetype start = m_starts[index];
    const qsizetype end =
        index + 1 < qsizetype(m_starts.size()) ? m_starts[index + 1] : m_text.size();
    return QStringView(m_text).mid(start, end - start);
}

} // namespace corvane::TextFolding
