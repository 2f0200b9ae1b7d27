#include "FavoritesStore.h"

#include "MenuCatalog.h"
#include "platform/UserDefaults.h"

namespace corvane {

FavoritesStore::FavoritesStore(UserDefaults& defaults) : m_defaults(defaults) {}

QString FavoritesStore::key(const QString& bundleID)
{
    return QStringLiteral("favorites.") + bundleID;
}

QStringList FavoritesStore::ids(const QString& bundleID) const
{
    return m_defaults.stringList(key(bundleID)).value_or(QStringList{});
}

bool FavoritesStore::toggle(const QString& id, const QString& bundleID)
{
    QStringList list = ids(bundleID);
    for (qsizetype i = 0; i < list.size(); ++i) {
        if (canonicallyEqual(list[i], id)) {
            list.removeAt(i); // only the first copy; a later duplicate stays
            write(list, bundleID);
            return false;
        }
    }
    list.append(id);
    write(list, bundleID);
    return true;
}

bool FavoritesStore::write(const QStringList& ids, const QString& bundleID)
{
    if (ids.isEmpty())
        return m_defaults.remove(key(bundleID));
    return m_defaults.setStringList(key(bundleID), ids);
}

} // namespace corvane
