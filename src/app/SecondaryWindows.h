#pragma once

// The shared presenters of the secondary windows (Parts 1.5, 6.3, 6.4). Each creates its window
// on demand, brings an existing one forward instead of opening a second, and forgets it when it
// closes. Until the windows themselves land (issue: settings, Welcome, What's New), each shows a
// small placeholder that says what it will hold and where the settings are kept.

#include "whatsnew/ReleaseNotes.h"

#include <QMessageBox>
#include <QPointer>
#include <QString>

namespace corvane {

class SecondaryWindow {
public:
    // The window on screen, or null.
    QMessageBox* window() const { return m_window; }

protected:
    void show(const QString& title, const QString& text, const QString& detail);

private:
    QPointer<QMessageBox> m_window;
};

class SettingsWindowPresenter : public SecondaryWindow {
    Q_DECLARE_TR_FUNCTIONS(SettingsWindowPresenter)

public:
    static SettingsWindowPresenter& shared();
    void show();
};

class WelcomeWindowController : public SecondaryWindow {
    Q_DECLARE_TR_FUNCTIONS(WelcomeWindowController)

public:
    static WelcomeWindowController& shared();
    void show();
};

class WhatsNewWindowController : public SecondaryWindow {
    Q_DECLARE_TR_FUNCTIONS(WhatsNewWindowController)

public:
    static WhatsNewWindowController& shared();
    void show(const QList<WhatsNewRelease>& releases);
};

} // namespace corvane
