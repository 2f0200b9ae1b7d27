#include "ShortcutSheet.h"

#include <QCoreApplication>
#include <QDir>
#include <QLocale>
#include <QSet>
#include <QStandardPaths>

namespace corvane::ShortcutSheet {

namespace {

// The command's title as the sheet shows it: the item, after its submenus (Recent ▸ Clear).
QString commandTitle(const MenuCommand& command)
{
    const QString breadcrumb = command.breadcrumb();
    const QString leaf = command.path.isEmpty() ? QString() : command.path.last().title;
    return breadcrumb.isEmpty() ? leaf : breadcrumb + QString::fromUtf8(" \u25b8 ") + leaf;
}

QStringList keys(const ShortcutKeys& shortcut)
{
    return QStringList(shortcut.modifiers) << shortcut.key;
}

QString markdownCell(QString text)
{
    // A cell ends at "|"; a backslash or backtick would start markup.
    text.replace(u'\\', QStringLiteral("\\\\"));
    text.replace(u'|', QStringLiteral("\\|"));
    text.replace(u'`', QStringLiteral("\\`"));
    return text.simplified();
}

QString title(const MenuCatalog& catalog)
{
    return QCoreApplication::translate("ShortcutSheet", "%1 keyboard shortcuts")
        .arg(catalog.appName);
}

const char* const style = R"css(
:root { color-scheme: light dark; --ink: #1d1d1f; --muted: #6e6e73; --paper: #ffffff;
        --cap: #f5f5f7; --edge: #c7c7cc; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #f5f5f7; --muted: #a1a1a6; --paper: #1c1c1e; --cap: #3a3a3c; --edge: #5a5a5e; }
}
@page { size: A4; margin: 14mm; }
body { margin: 0 auto; padding: 24px; max-width: 180mm; background: var(--paper);
       color: var(--ink); font: 10.5pt/1.35 system-ui, sans-serif; }
h1 { font-size: 17pt; margin: 0 0 14px; }
.menus { column-width: 52mm; column-gap: 8mm; }
section { break-inside: avoid; margin: 0 0 12px; }
h2 { font-size: 9pt; letter-spacing: .06em; text-transform: uppercase; color: var(--muted);
     margin: 0 0 4px; }
table { border-collapse: collapse; width: 100%; }
td { padding: 2px 0; vertical-align: baseline; }
td.keys { text-align: right; white-space: nowrap; padding-left: 8px; }
kbd { display: inline-block; min-width: 1.1em; padding: 0 .35em; margin-left: 2px;
      border: 1px solid var(--edge); border-bottom-width: 2px; border-radius: 4px;
      background: var(--cap); font: 8.5pt system-ui, sans-serif; text-align: center; }
@media print { body { padding: 0; } }
)css";

} // namespace

QList<MenuSection> withShortcuts(const MenuCatalog& catalog)
{
    QList<MenuSection> sections;
    QSet<QString> seen;
    for (const MenuSection& section : catalog.sections) {
        MenuSection kept{section.title, {}};
        for (const MenuCommand& command : section.commands) {
            const QString id = command.id().normalized(QString::NormalizationForm_C);
            if (command.shortcut.key.isEmpty() || seen.contains(id))
                continue;
            seen.insert(id);
            kept.commands.append(command);
        }
        if (!kept.commands.isEmpty())
            sections.append(kept);
    }
    return sections;
}

QString markdown(const MenuCatalog& catalog)
{
    QString text = QStringLiteral("# %1\n").arg(markdownCell(title(catalog)));
    for (const MenuSection& section : withShortcuts(catalog)) {
        text += QStringLiteral("\n## %1\n\n| %2 | %3 |\n|---|---|\n")
                    .arg(markdownCell(section.title),
                         QCoreApplication::translate("ShortcutSheet", "Command"),
                         QCoreApplication::translate("ShortcutSheet", "Shortcut"));
        for (const MenuCommand& command : section.commands) {
            QStringList caps;
            for (const QString& key : keys(command.shortcut))
                caps << QStringLiteral("<kbd>%1</kbd>").arg(markdownCell(key).toHtmlEscaped());
            text += QStringLiteral("| %1 | %2 |\n")
                        .arg(markdownCell(commandTitle(command)), caps.join(u'+'));
        }
    }
    return text;
}

QString html(const MenuCatalog& catalog)
{
    const QString heading = title(catalog).toHtmlEscaped();
    QString body;
    for (const MenuSection& section : withShortcuts(catalog)) {
        body +=
            QStringLiteral("<section>\n<h2>%1</h2>\n<table>\n").arg(section.title.toHtmlEscaped());
        for (const MenuCommand& command : section.commands) {
            QString caps;
            for (const QString& key : keys(command.shortcut))
                caps += QStringLiteral("<kbd>%1</kbd>").arg(key.toHtmlEscaped());
            body += QStringLiteral("<tr><td>%1</td><td class=\"keys\">%2</td></tr>\n")
                        .arg(commandTitle(command).toHtmlEscaped(), caps);
        }
        body += QStringLiteral("</table>\n</section>\n");
    }
    return QStringLiteral("<!DOCTYPE html>\n<html lang=\"%1\">\n<head>\n<meta charset=\"utf-8\"/>\n"
                          "<title>%2</title>\n<style>%3</style>\n</head>\n<body>\n<h1>%2</h1>\n"
                          "<div class=\"menus\">\n%4</div>\n</body>\n</html>\n")
        .arg(QLocale().name().section(u'_', 0, 0), heading, QString::fromUtf8(style), body);
}

QString suggestedPath(const QString& appName)
{
    QString name = appName;
    name.replace(u'/', u'-'); // a name is no path
    return QDir(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation))
        .filePath(QCoreApplication::translate("ShortcutSheet", "%1 shortcuts.html").arg(name));
}

QString forPath(const MenuCatalog& catalog, const QString& path)
{
    const QString lower = path.toLower();
    return lower.endsWith(QLatin1String(".md")) || lower.endsWith(QLatin1String(".markdown"))
               ? markdown(catalog)
               : html(catalog);
}

} // namespace corvane::ShortcutSheet
