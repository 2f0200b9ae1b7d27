#include "AppVersion.h"

#include <QCoreApplication>
#include <QHashFunctions>

namespace corvane {

namespace {

// Unicode white space and newlines, trimmed from both ends before parsing.
bool isWhite(QChar c)
{
    return c.isSpace() || c == QChar(0x85) || c == QChar(0x2028) || c == QChar(0x2029);
}

} // namespace

std::optional<AppVersion> AppVersion::parse(const QString& text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isWhite(text[begin]))
        ++begin;
    while (end > begin && isWhite(text[end - 1]))
        --end;
    if (begin == end)
        return std::nullopt;

    QList<qint64> components;
    for (const QStringView piece : QStringView(text).mid(begin, end - begin).split(u'.')) {
        if (piece.isEmpty())
            return std::nullopt;
        bool ok = false;
        const qint64 value = piece.toLongLong(&ok, 10);
        if (!ok || value < 0)
            return std::nullopt;
        // Printing the value back must give the piece: no leading zeros, no sign, no "-0".
        if (QString::number(value) != piece)
            return std::nullopt;
        components.append(value);
    }
    while (components.size() > 2 && components.constLast() == 0)
        components.removeLast();
    while (components.size() < 2)
        components.append(0);
    return AppVersion(components);
}

std::optional<AppVersion> AppVersion::current()
{
    return parse(QCoreApplication::applicationVersion());
}

QString AppVersion::description() const
{
    QStringList parts;
    for (qint64 c : components)
        parts.append(QString::number(c));
    return parts.join(u'.');
}

bool operator<(const AppVersion& a, const AppVersion& b)
{
    const qsizetype n = std::max(a.components.size(), b.components.size());
    for (qsizetype i = 0; i < n; ++i) {
        const qint64 x = i < a.components.size() ? a.components[i] : 0;
        const qint64 y = i < b.components.size() ? b.components[i] : 0;
        if (x != y)
            return x < y;
    }
    return false;
}

size_t qHash(const AppVersion& version, size_t seed)
{
    QtPrivate::QHashCombine combine;
    seed = combine(seed, version.components.size());
    for (qint64 c : version.components)
        seed = combine(seed, c);
    return seed;
}

} // namespace corvane
