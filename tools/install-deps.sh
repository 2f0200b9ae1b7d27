#!/usr/bin/env bash
# Installs the Debian bookworm packages Corvane needs: to build and run it, and with --tests also
# what the tests, the benchmarks and the demo use (a virtual X session, real applications, tools).
# Idempotent: only missing packages are installed. Run as root, or with sudo available.
#
#   tools/install-deps.sh [--tests]
set -euo pipefail

packages=(
  # Build
  cmake g++ make pkg-config ninja-build
  qt6-base-dev qt6-base-dev-tools qt6-declarative-dev qt6-declarative-dev-tools
  qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools qt6-svg-dev qt6-multimedia-dev
  libx11-dev libxi-dev libxtst-dev libgl-dev libwayland-dev
  # The manual pages
  scdoc
  # QML modules and plugins loaded at run time; the accessibility bus
  qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-layouts
  qml6-module-qtquick-window qml6-module-qtquick-templates qml6-module-qtqml-workerscript
  qml6-module-qtqml-models qml6-module-qtquick-shapes libqt6svg6 qt6-qpa-plugins qt6-wayland
  at-spi2-core dbus
)
if [ "${1:-}" = "--tests" ]; then
  packages+=(
    # Fuzzing and sanitizers
    clang libclang-rt-14-dev
    # The test session: X server, window manager, buses, input, real applications
    xvfb openbox xdotool x11-utils dbus-x11 libatk-adaptor libgtk-3-dev
    geany mousepad featherpad python3-pyatspi python3-gi gir1.2-atspi-2.0
    desktop-file-utils appstream python3 e2fsprogs
    # A compositing manager that tests start and stop (the panel's glass)
    xcompmgr
    # The Wayland test session: a headless compositor, key input, Qt 5 applications on Wayland
    sway wtype qtwayland5
    # The desktops people run, as test sessions: GNOME Shell and KWin (Wayland and X11), and the
    # input-injection protocol KWin offers tests
    gnome-shell kwin-wayland kwin-x11 plasma-wayland-protocols
    # The GNOME Shell companion's module format, parsed as later Shells parse it
    gjs
    # A browser whose menus exist only in its global-menu export
    chromium
    # A KDE application, read through the actions it publishes on the session bus
    kwrite
    # The network and privacy check (system calls), the HTTPS update test (a certificate)
    strace openssl
    # Packaging, the clean root the package test installs it into, and the package's checks:
    # lintian, the manual pages read with man
    dpkg-dev debootstrap lintian man-db
  )
fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
((${#missing[@]})) || exit 0

echo "install-deps: installing ${missing[*]}"
sudo=()
[ "$(id -u)" -eq 0 ] || sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
