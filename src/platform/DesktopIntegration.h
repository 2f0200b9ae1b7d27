#pragma once

// What the settings and Welcome windows ask of the desktop: start at login, open the accessibility
// settings, explain why Corvane needs accessibility. The Linux implementation is LinuxDesktop.

namespace corvane {

class DesktopIntegration {
public:
    virtual ~DesktopIntegration() = default;

    // Whether Corvane starts at login, and the change. A failed change returns false and leaves the
    // previous state in place.
    virtual bool launchesAtLogin() const = 0;
    virtual bool setLaunchAtLogin(bool enabled) = 0;

    // Opens the desktop's accessibility settings. False (and an error logged) when the desktop has
    // none.
    virtual bool openAccessibilitySettings() = 0;

    // Opens the README's section on switching accessibility on: the installed copy, else the
    // project page.
    virtual void openAccessibilityHelp() = 0;
};

} // namespace corvane
