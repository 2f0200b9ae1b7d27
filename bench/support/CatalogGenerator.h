#pragma once

// Deterministic catalogs with realistic menu titles, for the benchmarks.

#include "menus/MenuCatalog.h"

#include <QRandomGenerator>

namespace corvane::CatalogGenerator {

struct Options {
    int commandCount = 2500;
    bool international = false; // non-ASCII titles, combining marks, emoji, decomposed forms
};

MenuCatalog generate(quint32 seed, const Options& options);
QList<MenuCommand> allCommands(const MenuCatalog& catalog);

// A random query for `commands`: slices of titles, scattered letters, case and normalisation
// variants, padding, non-ASCII letters and emoji.
QString randomQuery(QRandomGenerator& random, const QList<MenuCommand>& commands);

} // namespace corvane::CatalogGenerator
