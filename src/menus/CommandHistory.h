#pragma once

// How often and how recently each command was run through Corvane, per application id, in the
// user defaults under "history." followed by the application id: one "COUNT LASTRUN ID" text per
// command (LASTRUN in seconds since the epoch), most recent first, at most `maxEntries` (the
// oldest go). A command is named by its id, its path of titles, as favourites are; no search
// text is ever kept.

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>

namespace corvane {

class UserDefaults;

class CommandHistory {
public:
    static constexpr qsizetype maxEntries = 200;
    static constexpr double halfLifeDays = 7;

    struct Entry {
        QString id;
        int count = 0;
        QDateTime lastRun;
    };

    explicit CommandHistory(UserDefaults& defaults);

    // Most recent first; a text that cannot be read is left out.
    QList<Entry> entries(const QString& bundleID) const;
    // One more run of `id`. False when the store refused it (the history is as it was).
    bool record(const QString& id, const QString& bundleID,
                const QDateTime& when = QDateTime::currentDateTimeUtc());
    // Every application's history; false when the store refused (part of it may remain).
    bool forgetAll();

    // The command's uses, as if all were made at its last run, halved every `halfLifeDays`
    // since: often and lately both count, and an old habit fades.
    static double weight(const Entry& entry, const QDateTime& now);
    // The ids of the `count` heaviest commands, heaviest first.
    QStringList recent(const QString& bundleID, const QDateTime& now, int count = 5) const;
    // Every command's weight by id.
    QHash<QString, double> weights(const QString& bundleID, const QDateTime& now) const;

    static QString key(const QString& bundleID);

private:
    UserDefaults& m_defaults;
};

} // namespace corvane
