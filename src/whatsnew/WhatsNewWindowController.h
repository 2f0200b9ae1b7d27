#pragma once

// The What's New window: the given releases' features, each with its symbol, title, detail and
// optionally a button and a picture or a looping muted clip; "Continue" closes it.

#include "ReleaseNotes.h"
#include "SecondaryWindow.h"

#include <QObject>
#include <QVariantList>

namespace corvane {

// The view's content, as QML reads it, and the feature buttons.
class WhatsNewModel : public QObject {
    Q_OBJECT
    // [{version, features: [{symbol, title, detail, actionTitle, mediaKind, mediaUrl}]}];
    // actionTitle is empty without an action, mediaKind is "", "image" or "video".
    Q_PROPERTY(QVariantList releases READ releases CONSTANT)
    Q_PROPERTY(QString trigger READ trigger CONSTANT)

public:
    WhatsNewModel(QList<WhatsNewRelease> releases, QString trigger, std::function<void()> close);

    QVariantList releases() const;
    QString trigger() const { return m_trigger; }

    // Closes the window, then runs the feature's action (its button).
    Q_INVOKABLE void performAction(int release, int feature);
    Q_INVOKABLE void close();

private:
    QList<WhatsNewRelease> m_releases;
    QString m_trigger;
    std::function<void()> m_close;
};

class WhatsNewWindowController : public SecondaryWindow {
    Q_DECLARE_TR_FUNCTIONS(WhatsNewWindowController)

public:
    static WhatsNewWindowController& shared();

    // Shows `releases` in a new window, replacing an open one; an empty list changes nothing.
    void show(const QList<WhatsNewRelease>& releases);
};

} // namespace corvane
