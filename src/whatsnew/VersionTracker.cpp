#include "VersionTracker.h"

#include "platform/UserDefaults.h"

#include <QtGlobal>

namespace corvane {

VersionTracker::VersionTracker(AppVersion current, bool hadPriorInstall, UserDefaults& defaults,
                               std::function<QDateTime()> now)
    : m_current(std::move(current)), m_defaults(defaults), m_now(std::move(now))
{
    const auto text = m_defaults.string(lastSeenKey);
    const auto recorded = text ? AppVersion::parse(*text) : std::nullopt;
    if (recorded) {
        if (*recorded == m_current)
            m_outcome = Outcome::sameVersion();
        else if (*recorded < m_current)
            m_outcome = Outcome::update(recorded);
        else
            m_outcome = Outcome::downgrade();
    } else {
        // No record, or a corrupt one: treated alike.
        m_outcome = hadPriorInstall ? Outcome::update(std::nullopt) : Outcome::freshInstall();
    }
}

void VersionTracker::incrementUpdateCount()
{
    const qint64 count = m_defaults.integer(updateCountKey).value_or(0);
    qint64 next = 0;
    if (qAddOverflow(count, qint64(1), &next))
        qFatal("whatsNew.updateCount overflowed"); // a counter that overflows is a bug, not a case
    m_defaults.setInteger(updateCountKey, next);
}

void VersionTracker::commit()
{
    if (m_committed)
        return;
    m_committed = true;
    switch (m_outcome.kind) {
    case Outcome::Kind::freshInstall:
        m_defaults.setString(installedKey, m_current.description());
        m_defaults.setDate(installDateKey, m_now());
        break;
    case Outcome::Kind::update:
        if (m_outcome.from)
            m_defaults.setString(previousKey, m_outcome.from->description());
        incrementUpdateCount();
        break;
    case Outcome::Kind::sameVersion:
    case Outcome::Kind::downgrade:
        break;
    }
    m_defaults.setString(lastSeenKey, m_current.description());
}

} // namespace corvane
