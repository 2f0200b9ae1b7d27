// corvane-changelog: the Debian changelog of the package, written from the release notes compiled
// into Corvane (the catalogue What's New shows), so that what changed is written down once.
//
//   corvane-changelog VERSION DATE MAINTAINER FILE
//
// Newest first, one entry per release with notes, each feature a bullet ("title: detail") wrapped
// to 80 columns. The newest entry carries the package's VERSION when it is that release, and DATE
// (RFC 2822, as dpkg-parsechangelog wants it); older entries carry their own version and the same
// date, since the notes record none.

#include "whatsnew/ReleaseNotes.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringList>
#include <QTextStream>

using namespace corvane;

namespace {

// `text` as one bullet: "  * " and continuation lines indented to match, at most 80 columns.
QString bullet(const QString& text)
{
    QStringList lines{QStringLiteral("  *")};
    for (const QString& word : text.split(u' ', Qt::SkipEmptyParts)) {
        if (lines.last().size() + 1 + word.size() > 80)
            lines.append(QStringLiteral("   "));
        lines.last() += u' ' + word;
    }
    return lines.join(u'\n') + u'\n';
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    const auto packaged = args.size() == 4 ? AppVersion::parse(args[0]) : std::nullopt;
    QFile file(args.value(3));
    if (!packaged || !file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        QTextStream(stderr) << "usage: corvane-changelog VERSION DATE MAINTAINER FILE\n";
        return 2;
    }
    QList<WhatsNewRelease> releases = ReleaseNotes::all({});
    std::stable_sort(releases.begin(), releases.end(),
                     [](const auto& a, const auto& b) { return a.version > b.version; });
    QTextStream out(&file);
    bool newest = true;
    for (const WhatsNewRelease& release : std::as_const(releases)) {
        if (release.features.isEmpty())
            continue;
        // 1.0 is 1.0.0: missing components count as 0.
        const bool isPackaged = !(release.version < *packaged) && !(*packaged < release.version);
        const QString version = newest && isPackaged ? args[0] : release.version.description();
        newest = false;
        out << "corvane (" << version << ") unstable; urgency=medium\n\n";
        for (const WhatsNewFeature& feature : release.features)
            out << bullet(feature.title + QStringLiteral(": ") + feature.detail);
        out << "\n -- " << args[2] << "  " << args[1] << "\n\n";
    }
    out.flush();
    return file.error() == QFile::NoError ? 0 : 1;
}
