#pragma once

// Per-application favourite command ids in the user defaults, under "favorites." followed by the
// application id, oldest first. An application without favourites has no entry.

#include <QString>
#include <QStringList>

namespace corvane {

class UserDefaults;

class FavoritesStore {
public:
    explicit FavoritesStore(UserDefaults& defaults);

    QStringList ids(const QString& bundleID) const;
    // True when `id` is now a favourite, false when it was just removed. When the store cannot
    // be written, the stored list stays as it was (read it again to know the real state).
    bool toggle(const QString& id, const QString& bundleID);

    static QString key(const QString& bundleID);

private:
    bool write(const QStringList& ids, const QString& bundleID);

    UserDefaults& m_defaults;
};

} // namespace corvane
