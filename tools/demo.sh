#!/usr/bin/env bash
# make demo: Corvane's main job, on a machine without a desktop. Starts the test session (Xvfb,
# openbox, the session and accessibility buses), geany and Corvane, then, through real input
# (xdotool, XTEST): holds Ctrl to peek at geany's menus, releases over the panel to pin it, types
# a search, and presses Return to run Edit ▸ Preferences in geany. Saves a PNG of the screen at
# each step, the steps and Corvane's log in the output folder.
#
#   tools/demo.sh BUILD_DIR OUTPUT_DIR
set -euo pipefail
[ $# -eq 2 ] || { echo "usage: $0 BUILD_DIR OUTPUT_DIR" >&2; exit 2; }
here=$(cd "$(dirname "$0")" && pwd)
source "$here/shell-helpers.sh" # wait_for
if [ -z "${CORVANE_SESSION:-}" ]; then
    exec "$here/test-session.sh" "$0" "$@"
fi
build=$(cd "$1" && pwd)
mkdir -p "$2"
out=$(cd "$2" && pwd)
rm -f "$out"/*.png "$out/corvane.log" "$out/steps.txt"
corvane=$build/bin/corvane
grab=$build/tools/grab-screen/grab-screen
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")

pids=()
cleanup() {
    local status=$?
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    for pid in "${pids[@]}"; do wait "$pid" 2>/dev/null || true; done
    ((status == 0)) || echo "demo: FAILED; what happened so far is in $out" >&2
    exit $status
}
trap cleanup EXIT

say() { echo "demo: $*" | tee -a "$out/steps.txt"; }
fail() { say "FAILED: $*"; exit 1; }
shot() { # shot NAME CAPTION
    "$grab" "$out/$1.png"
    say "  → $1.png: $2"
}
panel_shown() { xdotool search --onlyvisible --name '^Corvane$'; }
logged() { grep -q -- "$1" "$out/corvane.log"; }

say "1. geany, a real GTK 3 editor, in front"
geany --new-instance --no-session > /dev/null 2>&1 &
geany_pid=$!
pids+=("$geany_pid")
wait_for 20 xdotool search --onlyvisible --pid "$geany_pid" || fail "geany's window did not appear"
geany_window=$(xdotool search --onlyvisible --pid "$geany_pid" | head -n1)
xdotool windowactivate --sync "$geany_window"
# Filling the screen, as an editor usually does.
xdotool windowmove --sync "$geany_window" 0 0 windowsize --sync "$geany_window" 100% 100%
wait_for 20 sh -c "'$build/bin/corvane-menus' list | grep -q '^$geany_pid .*yes'" ||
    fail "geany's menu bar did not appear on the accessibility bus"

say "2. Corvane starts (its log: corvane.log)"
# An account that has run this version before, so no Welcome window comes up in front.
mkdir -p "$XDG_CONFIG_HOME/corvane"
printf '[General]\nlaunchedBefore=true\nwhatsNew.lastSeenVersion=%s\n' "$version" \
    > "$XDG_CONFIG_HOME/corvane/corvane.conf"
# CORVANE_DEMO_WRAPPER runs Corvane under another program (the privacy check: strace).
QT_LOGGING_RULES="com.vantorel.corvane.*=true" ${CORVANE_DEMO_WRAPPER:-} "$corvane" \
    > "$out/corvane.log" 2>&1 &
pids+=($!)
wait_for 20 logged "Corvane .* started" || fail "Corvane did not start"
xdotool windowactivate --sync "$geany_window"
sleep 0.5
shot 01-geany "geany in front; Corvane waits in the background"

say "3. Hold Ctrl alone for a moment: the overlay shows geany's menus"
xdotool mousemove 720 450
xdotool keydown ctrl
wait_for 5 panel_shown || { xdotool keyup ctrl; fail "the overlay did not appear"; }
sleep 0.4 # the fade-in
shot 02-peek "peeking: every menu command of geany with its shortcut"
logged "crawl: geany" || { xdotool keyup ctrl; fail "geany's menus were not read"; }

say "4. Release Ctrl over the panel: it stays, pinned"
xdotool keyup ctrl
sleep 0.5
panel_shown > /dev/null || fail "the overlay closed instead of pinning"
shot 03-pinned "pinned: the search field takes the keyboard, geany stays the active window"

say "5. Type a search: \"prefer\""
xdotool type --delay 80 prefer
sleep 0.4
shot 04-search "the results for \"prefer\", the first one selected"

say "6. Return: Corvane presses Edit ▸ Preferences in geany through the accessibility bus"
xdotool key Return
wait_for 5 sh -c '! xdotool search --onlyvisible --name "^Corvane$"' || fail "the overlay stayed open"
wait_for 10 xdotool search --onlyvisible --pid "$geany_pid" --name "Preferences" ||
    fail "geany's Preferences dialog did not open"
sleep 0.5
shot 05-ran "the overlay is gone and geany shows its Preferences dialog"

say "done: $(ls "$out"/*.png | wc -l) screenshots, the steps and Corvane's log in $out"
