#include "DesktopEntries.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QProcess>
#include <QStandardPaths>

namespace corvane {

const DesktopEntries& DesktopEntries::installed()
{
    static const DesktopEntries entries(
        QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation));
    return entries;
}

DesktopEntries::DesktopEntries(const QStringList& folders)
{
    // Earlier folders take precedence ($XDG_DATA_HOME before $XDG_DATA_DIRS).
    for (const QString& folder : folders) {
        const QDir dir(folder);
        for (const QString& file : dir.entryList({QStringLiteral("*.desktop")}, QDir::Files)) {
            const QString id = file.chopped(8);
            if (m_byId.contains(id))
                continue;
            if (auto entry = read(dir.filePath(file)))
                m_byId.insert(id, *entry);
        }
    }
    m_ids = m_byId.keys();
    m_ids.sort();
}

std::optional<DesktopEntry> DesktopEntries::read(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text) || file.size() > 1024 * 1024)
        return std::nullopt;
    const QString locale = QLocale().name(); // ll_CC
    const QString fullKey = QStringLiteral("Name[%1]").arg(locale);
    const QString languageKey = QStringLiteral("Name[%1]").arg(locale.section(u'_', 0, 0));
    DesktopEntry entry;
    entry.id = QFileInfo(path).completeBaseName();
    QString localisedFull, localisedLanguage;
    bool inGroup = false;
    bool hidden = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(u'[')) {
            inGroup = line == u"[Desktop Entry]";
            continue;
        }
        if (!inGroup || line.startsWith(u'#'))
            continue;
        const qsizetype eq = line.indexOf(u'=');
        if (eq <= 0)
            continue;
        const QString key = line.left(eq).trimmed();
        const QString value = line.mid(eq + 1).trimmed();
        if (key == u"Name")
            entry.name = value;
        else if (key == fullKey)
            localisedFull = value;
        else if (key == languageKey)
            localisedLanguage = value;
        else if (key == u"Icon")
            entry.icon = value;
        else if (key == u"StartupWMClass")
            entry.startupWMClass = value;
        else if (key == u"Exec")
            entry.program = QProcess::splitCommand(value).value(0);
        else if (key == u"Hidden" && value == u"true")
            hidden = true;
    }
    if (hidden)
        return std::nullopt;
    if (!localisedFull.isEmpty())
        entry.name = localisedFull;
    else if (!localisedLanguage.isEmpty())
        entry.name = localisedLanguage;
    return entry;
}

std::optional<DesktopEntry> DesktopEntries::byId(const QString& id) const
{
    const auto it = m_byId.constFind(id);
    return it == m_byId.constEnd() ? std::nullopt : std::optional<DesktopEntry>(*it);
}

bool DesktopEntries::runs(const DesktopEntry& entry, const QString& executable)
{
    if (entry.program.isEmpty() || executable.isEmpty())
        return false;
    const QString program = entry.program.contains(u'/')
                                ? entry.program
                                : QStandardPaths::findExecutable(entry.program);
    return !program.isEmpty() && QFileInfo(program).canonicalFilePath() == executable;
}

std::optional<DesktopEntry> DesktopEntries::byWindowClass(const QString& wmClass,
                                                          const QString& executable) const
{
    if (wmClass.isEmpty())
        return std::nullopt;
    const auto pick = [&](auto claims) -> std::optional<DesktopEntry> {
        std::optional<DesktopEntry> first;
        for (const QString& id : m_ids) {
            const DesktopEntry& entry = m_byId[id];
            if (!claims(entry))
                continue;
            if (runs(entry, executable))
                return entry;
            if (!first)
                first = entry;
        }
        return first;
    };
    if (auto entry = pick([&](const DesktopEntry& e) {
            return !e.startupWMClass.isEmpty() &&
                   e.startupWMClass.compare(wmClass, Qt::CaseInsensitive) == 0;
        }))
        return entry;
    return pick(
        [&](const DesktopEntry& e) { return e.id.compare(wmClass, Qt::CaseInsensitive) == 0; });
}

std::optional<DesktopEntry> DesktopEntries::byExecutable(const QString& executable) const
{
    for (const QString& id : m_ids)
        if (runs(m_byId[id], executable))
            return m_byId[id];
    return std::nullopt;
}

} // namespace corvane
