#pragma once

// A sheet of an application's shortcuts to keep or print: the commands of a catalog that have a
// shortcut, grouped by menu in menu order, each once, as Markdown or as one self-contained HTML
// page (key caps drawn with CSS, light and dark, menus flowing in columns on an A4 page, and
// nothing loaded from anywhere). The HTML is also well-formed XML.

#include "menus/MenuCatalog.h"

#include <QString>

namespace corvane::ShortcutSheet {

// The catalog's commands with a shortcut: its sections in order, a section without any left out,
// and a command whose id came before left out.
QList<MenuSection> withShortcuts(const MenuCatalog& catalog);

QString markdown(const MenuCatalog& catalog);
QString html(const MenuCatalog& catalog);

// "Geany shortcuts.html" in the user's documents folder.
QString suggestedPath(const QString& appName);
// Markdown for a path ending in ".md" or ".markdown", HTML otherwise.
QString forPath(const MenuCatalog& catalog, const QString& path);

} // namespace corvane::ShortcutSheet
