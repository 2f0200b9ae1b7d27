#pragma once

// The last crawled catalog of every application, keyed by its application id. Written from the
// crawl thread and read from the main thread, so every access takes the lock.

#include "MenuCatalog.h"

#include <QHash>
#include <QMutex>
#include <optional>

namespace corvane {

class MenuCatalogCache {
public:
    void store(const MenuCatalog& catalog);
    std::optional<MenuCatalog> catalog(const QString& bundleID) const;

private:
    QHash<QString, MenuCatalog> m_storage;
    mutable QMutex m_lock;
};

} // namespace corvane
