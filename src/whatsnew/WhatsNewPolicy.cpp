#include "WhatsNewPolicy.h"

#include <algorithm>

namespace corvane::WhatsNewPolicy {

QList<WhatsNewRelease> releasesToShow(const VersionTracker::Outcome& outcome,
                                      const QList<WhatsNewRelease>& catalog,
                                      const AppVersion& floor)
{
    using Kind = VersionTracker::Outcome::Kind;
    if (outcome.kind != Kind::update)
        return {};

    QList<WhatsNewRelease> kept;
    for (const WhatsNewRelease& release : catalog) {
        // No upper bound: notes of releases newer than the running version are kept too.
        const bool qualifies =
            outcome.from ? release.version > *outcome.from : release.version >= floor;
        if (qualifies && !release.features.isEmpty())
            kept.append(release);
    }
    std::stable_sort(
        kept.begin(), kept.end(),
        [](const WhatsNewRelease& a, const WhatsNewRelease& b) { return a.version > b.version; });
    return kept;
}

} // namespace corvane::WhatsNewPolicy
