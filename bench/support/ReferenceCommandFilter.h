#pragma once

// A plain, literal ranking with nothing precomputed: every call folds every title
// and compares lists of user-perceived characters. CommandFilter must agree with it exactly; the
// benchmark measures against it.

#include "menus/MenuCatalog.h"

#include <QSet>
#include <optional>

namespace corvane::ReferenceCommandFilter {

QList<MenuCommand> rank(const QList<MenuCommand>& commands, const QString& query,
                        const QSet<QString>& favorites);
std::optional<int> score(const MenuCommand& command, const QString& foldedQuery);

} // namespace corvane::ReferenceCommandFilter
