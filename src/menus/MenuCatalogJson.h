#pragma once

// The JSON form of a MenuCatalog, written by `corvane-menus dump --json` and read by
// `corvane-overlay-preview`. Field names are the records' own; a command's "id" is written for
// readers' convenience and recomputed from its path on reading.

#include "MenuCatalog.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace corvane::MenuCatalogJson {

QByteArray write(const MenuCatalog& catalog, bool indented = true);

struct ReadResult {
    std::optional<MenuCatalog> catalog;
    QString error; // one line naming what is wrong and where, when `catalog` is absent
};

// Never throws and never crashes, whatever the bytes.
ReadResult read(const QByteArray& json);

} // namespace corvane::MenuCatalogJson
