#pragma once

// What the secondary windows ask of the desktop (Parts 1.5 and 6.4, PLATFORM.md): start at
// login, open the accessibility settings, show Corvane in the file manager. The Linux
// implementation is LinuxDesktop.

namespace corvane {

class DesktopIntegration {
public:
    virtual ~DesktopIntegration() = default;

    // The spec's login item: whether Corvane starts at login, and the change. A failed change
    // returns false and leaves the previous state in place.
    virtual bool launchesAtLogin() const = 0;
    virtual bool setLaunchAtLogin(bool enabled) = 0;

    // The spec's privacy-settings URL: opens the desktop's accessibility settings. False (and an
    // error logged) when the desktop has none.
    virtual bool openAccessibilitySettings() = 0;

    // The spec's "Reveal Corvane in Finder": a file-manager window with Corvane selected.
    virtual void revealApplication() = 0;
};

} // namespace corvane
