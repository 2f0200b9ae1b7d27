#pragma once

// Compares the running version with the one recorded at the previous launch and, on commit(),
// writes the install/update record to the settings store.

#include "AppVersion.h"

#include <QDateTime>
#include <functional>
#include <optional>

namespace corvane {

class UserDefaults;

class VersionTracker {
public:
    struct Outcome {
        enum class Kind { update, freshInstall, sameVersion, downgrade };
        Kind kind = Kind::sameVersion;
        std::optional<AppVersion> from; // for update only

        static Outcome update(std::optional<AppVersion> from)
        {
            return {Kind::update, std::move(from)};
        }
        static Outcome freshInstall() { return {Kind::freshInstall, {}}; }
        static Outcome sameVersion() { return {Kind::sameVersion, {}}; }
        static Outcome downgrade() { return {Kind::downgrade, {}}; }

        friend bool operator==(const Outcome& a, const Outcome& b)
        {
            return a.kind == b.kind && (a.kind != Kind::update || a.from == b.from);
        }
    };

    static inline const QString lastSeenKey = QStringLiteral("whatsNew.lastSeenVersion");
    static inline const QString installedKey = QStringLiteral("whatsNew.installedVersion");
    static inline const QString installDateKey = QStringLiteral("whatsNew.installDate");
    static inline const QString previousKey = QStringLiteral("whatsNew.previousVersion");
    static inline const QString updateCountKey = QStringLiteral("whatsNew.updateCount");

    VersionTracker(
        AppVersion current, bool hadPriorInstall, UserDefaults& defaults,
        std::function<QDateTime()> now = [] { return QDateTime::currentDateTimeUtc(); });

    const Outcome& outcome() const { return m_outcome; }
    const AppVersion& current() const { return m_current; }
    // Writes the record once; later calls do nothing.
    void commit();

private:
    void incrementUpdateCount();

    Outcome m_outcome;
    AppVersion m_current;
    UserDefaults& m_defaults;
    std::function<QDateTime()> m_now;
    bool m_committed = false;
};

} // namespace corvane
