#pragma once

// DesktopIntegration on a freedesktop.org desktop: XDG Autostart for the login item, the first
// accessibility settings program the desktop has, and the README for the help link.

#include "platform/DesktopIntegration.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace corvane {

class LinuxDesktop : public DesktopIntegration {
public:
    LinuxDesktop();

    bool launchesAtLogin() const override;
    bool setLaunchAtLogin(bool enabled) override;
    bool openAccessibilitySettings() override;
    void openAccessibilityHelp() override;

    // $XDG_CONFIG_HOME/autostart/corvane.desktop (XDG_CONFIG_HOME defaults to ~/.config).
    static QString autostartFilePath();
    // The autostart entry that starts `executable`.
    static QByteArray autostartEntry(const QString& executable);
    // The help link's address: the README installed beside the program, else the project page.
    static QUrl accessibilityHelpUrl();
    // The accessibility settings programs tried in order, each with its arguments.
    static QList<QStringList> accessibilitySettingsCommands();

private:
    QString m_autostartFile;
};

} // namespace corvane
