#pragma once

// A desktop's companion to Corvane, where only the desktop itself can let Corvane see the trigger
// over every application, place its panel and show an icon (on GNOME Shell: the Shell extension
// installed with Corvane, ShellCompanion): its state as the settings and Welcome windows show it,
// and the way to switch it on.

#include <QObject>

namespace corvane {

class DesktopCompanion : public QObject {
    Q_OBJECT

public:
    enum class State {
        notNeeded,    // the desktop is not one that needs it
        notInstalled, // the desktop knows none, and none is installed
        needsRestart, // installed after the desktop's shell started: log out and back in
        off,          // installed and switched off: turnOn() switches it on
        failed,       // the desktop could not run it (an error, or its version is not supported)
        on,           // answering Corvane
    };
    Q_ENUM(State)

    using QObject::QObject;

    virtual State state() const = 0;
    // Asks the desktop to switch it on; stateChanged() follows when it does.
    virtual void turnOn() = 0;

Q_SIGNALS:
    void stateChanged();
};

} // namespace corvane
