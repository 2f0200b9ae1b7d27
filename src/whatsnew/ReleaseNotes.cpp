#include "ReleaseNotes.h"

namespace corvane {

const AppVersion& ReleaseNotes::floor()
{
    static const AppVersion value = [] {
        const auto parsed = AppVersion::parse(QStringLiteral("1.0"));
        if (!parsed)
            qFatal("ReleaseNotes::floor does not parse");
        return *parsed;
    }();
    return value;
}

QString ReleaseNotes::triggerNameInTexts(const QString& configured)
{
    return configured.isEmpty() ? QStringLiteral("Ctrl") : configured;
}

QList<WhatsNewRelease> ReleaseNotes::all(const WhatsNewActions& actions, const QString& triggerName)
{
    const QString trigger = triggerNameInTexts(triggerName);
    const auto openSettings = actions.openSettings;
    return {
        WhatsNewRelease{
            *AppVersion::parse(QStringLiteral("1.0")),
            {
                WhatsNewFeature{QStringLiteral("keyboard"),
                                tr("Hold %1 and see everything").arg(trigger),
                                tr("Every menu command and shortcut of the app in front of you, "
                                   "grouped by menu."),
                                std::nullopt, std::nullopt},
                WhatsNewFeature{QStringLiteral("pin"), tr("Pin it and search"),
                                tr("Release %1 over the panel to keep it open, then type. Return "
                                   "runs the command.")
                                    .arg(trigger),
                                WhatsNewFeature::Media{
                                    WhatsNewFeature::Media::Kind::video,
                                    QUrl(QStringLiteral("qrc:/corvane/media/peek-and-pin.webm"))},
                                std::nullopt},
                WhatsNewFeature{QStringLiteral("star"), tr("Star your favorites"),
                                tr("Star the commands you keep forgetting and they float to the "
                                   "top for that app."),
                                std::nullopt, std::nullopt},
                WhatsNewFeature{QStringLiteral("square.on.square"), tr("Glassy or solid"),
                                tr("Prefer a solid panel? Switch the material in Settings."),
                                std::nullopt,
                                WhatsNewFeature::Action{tr("Open Settings"),
                                                        [openSettings] {
                                                            if (openSettings)
                                                                openSettings();
                                                        }}},
            },
        },
    };
}

} // namespace corvane
