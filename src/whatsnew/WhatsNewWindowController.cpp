#include "WhatsNewWindowController.h"

namespace corvane {

WhatsNewModel::WhatsNewModel(QList<WhatsNewRelease> releases, QString trigger,
                             std::function<void()> close)
    : m_releases(std::move(releases)), m_trigger(std::move(trigger)), m_close(std::move(close))
{}

QVariantList WhatsNewModel::releases() const
{
    QVariantList list;
    for (const WhatsNewRelease& release : m_releases) {
        QVariantList features;
        for (const WhatsNewFeature& feature : release.features) {
            QString mediaKind;
            if (feature.media)
                mediaKind = feature.media->kind == WhatsNewFeature::Media::Kind::video
                                ? QStringLiteral("video")
                                : QStringLiteral("image");
            features.append(QVariantMap{
                {QStringLiteral("symbol"), feature.symbol},
                {QStringLiteral("title"), feature.title},
                {QStringLiteral("detail"), feature.detail},
                {QStringLiteral("actionTitle"), feature.action ? feature.action->title : QString()},
                {QStringLiteral("mediaKind"), mediaKind},
                {QStringLiteral("mediaUrl"), feature.media ? feature.media->url : QUrl()},
            });
        }
        list.append(QVariantMap{{QStringLiteral("version"), release.version.description()},
                                {QStringLiteral("features"), features}});
    }
    return list;
}

void WhatsNewModel::performAction(int release, int feature)
{
    if (release < 0 || release >= m_releases.size())
        return;
    const auto& features = m_releases.at(release).features;
    if (feature < 0 || feature >= features.size() || !features.at(feature).action)
        return;
    // Copied first: closing the window deletes this model.
    const auto perform = features.at(feature).action->perform;
    close();
    if (perform)
        perform();
}

void WhatsNewModel::close()
{
    if (m_close)
        m_close();
}

WhatsNewWindowController& WhatsNewWindowController::shared()
{
    static WhatsNewWindowController controller;
    return controller;
}

void WhatsNewWindowController::show(const QList<WhatsNewRelease>& releases)
{
    if (releases.isEmpty())
        return;
    close(); // an open window is replaced; its view and model go at once
    auto* model = new WhatsNewModel(releases, WindowServices::shared().triggerNameForTexts(),
                                    [] { shared().close(); });
    create(QStringLiteral("Corvane.Windows"), QStringLiteral("WhatsNewView"),
           tr("What's New in Corvane"), Buttons::closeOnly, {}, model);
    bringForward();
}

} // namespace corvane
