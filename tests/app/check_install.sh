#!/usr/bin/env bash
# `cmake --install` puts the programs and the desktop integration in place, and the installed
# desktop entry and metainfo pass desktop-file-validate and appstreamcli validate. Without a
# display the programs answer --help and --version, and a start says in one line what is missing
# (status 1) instead of aborting.
#
#   check_install.sh BUILD_DIR
set -euo pipefail
build=$1
source "$(dirname "$0")/../../tools/shell-helpers.sh" # png_size
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
cmake --install "$build" --prefix "$root/usr" > /dev/null
cd "$root/usr"
expected=(
    bin/corvane bin/corvane-menus libexec/corvane/corvane-clip
    share/applications/com.vantorel.Corvane.desktop
    share/metainfo/com.vantorel.Corvane.metainfo.xml
    share/icons/hicolor/scalable/apps/com.vantorel.Corvane.svg
    share/corvane/translations/corvane_de.qm share/corvane/translations/corvane_fr.qm
    share/doc/corvane/README.md share/doc/corvane/copyright share/doc/corvane/changelog.gz
    share/man/man1/corvane.1.gz share/man/man1/corvane-menus.1.gz
    share/bash-completion/completions/corvane-menus
    share/gnome-shell/extensions/corvane@vantorel.com/extension.js
    share/gnome-shell/extensions/corvane@vantorel.com/metadata.json
)
for size in 16 22 24 32 48 64 128 256; do
    expected+=("share/icons/hicolor/${size}x${size}/apps/com.vantorel.Corvane.png")
done
for file in "${expected[@]}"; do
    [ -s "$file" ] || { echo "not installed: $file" >&2; exit 1; }
done
[ -x bin/corvane ] && [ -x bin/corvane-menus ]
# Development tools stay in the build folder.
for tool in corvane-overlay-preview corvane-window-preview render-icon; do
    [ ! -e "bin/$tool" ] || { echo "installed a development tool: $tool" >&2; exit 1; }
done
desktop-file-validate share/applications/com.vantorel.Corvane.desktop
appstreamcli validate --no-net share/metainfo/com.vantorel.Corvane.metainfo.xml
# Each PNG is the size its folder says (the PNG header's width and height).
for size in 16 22 24 32 48 64 128 256; do
    shown=$(png_size "share/icons/hicolor/${size}x${size}/apps/com.vantorel.Corvane.png")
    [ "$shown" = "${size}x${size}" ] || { echo "${size}x${size} icon is $shown" >&2; exit 1; }
done
for program in bin/corvane bin/corvane-menus "$build/bin/corvane-overlay-preview" \
    "$build/bin/corvane-window-preview"; do
    for option in --help --version; do
        env -u DISPLAY -u WAYLAND_DISPLAY "$program" $option > /dev/null ||
            { echo "$program $option failed without a display" >&2; exit 1; }
    done
done
for program in bin/corvane "$build/bin/corvane-overlay-preview" "$build/bin/corvane-window-preview"; do
    status=0
    said=$(env -u DISPLAY -u WAYLAND_DISPLAY -u XDG_SESSION_TYPE -u QT_QPA_PLATFORM "$program" \
        2>&1 >/dev/null) || status=$?
    [ "$status" = 1 ] && [ "$(wc -l <<<"$said")" = 1 ] && [[ $said == *"no display"* ]] ||
        { echo "$program without a display: status $status, said: $said" >&2; exit 1; }
done
# corvane --peek with no Corvane running says so in one line, with status 1.
status=0
said=$(env DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent bin/corvane --peek 2>&1) || status=$?
[ "$status" = 1 ] && [ "$(wc -l <<<"$said")" = 1 ] && [[ $said == *"not running"* ]] ||
    { echo "corvane --peek with nothing to ask: status $status, said: $said" >&2; exit 1; }
echo "installed: ${#expected[@]} files, desktop entry and metainfo valid; no display handled"
