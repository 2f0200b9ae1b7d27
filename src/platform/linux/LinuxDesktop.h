#pragma once

// DesktopIntegration on a freedesktop.org desktop (PLATFORM.md): XDG Autostart for the login
// item, the first accessibility settings program the desktop has, and the file manager's
// org.freedesktop.FileManager1 to reveal Corvane.

#include "platform/DesktopIntegration.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace corvane {

class LinuxDesktop : public DesktopIntegration {
public:
    LinuxDesktop();

    bool launchesAtLogin() const override;
    bool setLaunchAtLogin(bool enabled) override;
    bool openAccessibilitySettings() override;
    void revealApplication() override;

    // $XDG_CONFIG_HOME/autostart/corvane.desktop (XDG_CONFIG_HOME defaults to ~/.config).
    static QString autostartFilePath();
    // The autostart entry that starts `executable`.
    static QByteArray autostartEntry(const QString& executable);
    // The spec's main bundle URL: the installed desktop entry, else the running executable.
    static QString applicationPath();
    // The accessibility settings programs tried in order, each with its arguments.
    static QList<QStringList> accessibilitySettingsCommands();

private:
    QString m_autostartFile;
};

} // namespace corvane
