#include "MenuCatalog.h"

#include <QRegularExpression>

namespace corvane {

bool canonicallyEqual(const QString& a, const QString& b)
{
    if (a == b)
        return true;
    return a.normalized(QString::NormalizationForm_C) == b.normalized(QString::NormalizationForm_C);
}

const ShortcutKeys ShortcutKeys::none{};

bool operator==(const ShortcutKeys& a, const ShortcutKeys& b)
{
    if (a.modifiers.size() != b.modifiers.size() || !canonicallyEqual(a.key, b.key))
        return false;
    for (qsizetype i = 0; i < a.modifiers.size(); ++i)
        if (!canonicallyEqual(a.modifiers[i], b.modifiers[i]))
            return false;
    return true;
}

QString MenuCommand::id() const
{
    QString result;
    for (qsizetype i = 0; i < path.size(); ++i) {
        if (i > 0)
            result += idSeparator;
        result += path[i].title;
        if (path[i].occurrence >= 1)
            result += u'#' + QString::number(path[i].occurrence);
    }
    return result;
}

QStringList MenuCommand::titles() const
{
    QStringList result;
    result.reserve(path.size());
    for (const PathStep& step : path)
        result.append(step.title);
    return result;
}

QString MenuCommand::breadcrumb() const
{
    if (path.size() < 3)
        return {};
    QStringList middle;
    for (qsizetype i = 1; i + 1 < path.size(); ++i)
        middle.append(path[i].title);
    return middle.join(QStringView(breadcrumbSeparator));
}

QList<PathStep> pathFromTitles(const QStringList& titles)
{
    static const QRegularExpression occurrence(QStringLiteral("^(.*)#(\\d+)$"));
    QList<PathStep> path;
    for (const QString& title : titles) {
        const auto match = occurrence.match(title);
        path.append(match.hasMatch() ? PathStep{match.captured(1), match.captured(2).toInt()}
                                     : PathStep{title, 0});
    }
    return path;
}

} // namespace corvane
