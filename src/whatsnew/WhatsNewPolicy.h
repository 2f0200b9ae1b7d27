#pragma once

// Picks the releases to announce after a launch from its version outcome.

#include "ReleaseNotes.h"
#include "VersionTracker.h"

namespace corvane::WhatsNewPolicy {

// Newest first; an empty list means that no window is shown.
QList<WhatsNewRelease> releasesToShow(const VersionTracker::Outcome& outcome,
                                      const QList<WhatsNewRelease>& catalog,
                                      const AppVersion& floor);

} // namespace corvane::WhatsNewPolicy
