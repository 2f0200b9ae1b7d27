#pragma once

// The release-note records and the catalogue compiled into the program.

#include "AppVersion.h"

#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QUrl>
#include <functional>
#include <optional>

namespace corvane {

struct WhatsNewActions {
    std::function<void()> openSettings;
};

struct WhatsNewFeature {
    struct Media {
        enum class Kind { image, video };
        Kind kind;
        QUrl url; // a still picture or a clip played muted in a loop
    };
    struct Action {
        QString title;
        std::function<void()> perform;
    };

    QString symbol; // one of the project's monochrome SVG symbols
    QString title;
    QString detail;
    std::optional<Media> media;
    std::optional<Action> action;
};

struct WhatsNewRelease {
    AppVersion version;
    QList<WhatsNewFeature> features;
};

class ReleaseNotes {
    Q_DECLARE_TR_FUNCTIONS(ReleaseNotes)

public:
    // The oldest release whose notes are shown when the previous version is unknown.
    static const AppVersion& floor();
    // The trigger as texts name it: the configured trigger's name, or the default "Ctrl" when
    // the trigger is off (empty).
    static QString triggerNameInTexts(const QString& configured);
    // The whole catalogue, its texts translated on each call. The texts name the configured trigger
    // ("Ctrl", "Alt", "Super"); with the trigger off the default "Ctrl" is named.
    static QList<WhatsNewRelease> all(const WhatsNewActions& actions,
                                      const QString& triggerName = {});
};

} // namespace corvane
