#include "MenuCatalogCache.h"

namespace corvane {

void MenuCatalogCache::store(const MenuCatalog& catalog)
{
    const QMutexLocker locker(&m_lock);
    m_storage.insert(catalog.bundleID, catalog);
}

std::optional<MenuCatalog> MenuCatalogCache::catalog(const QString& bundleID) const
{
    const QMutexLocker locker(&m_lock);
    const auto it = m_storage.constFind(bundleID);
    if (it == m_storage.constEnd())
        return std::nullopt;
    return *it; // a copy: the reader holds nothing of the map after the lock is released
}

} // namespace corvane
