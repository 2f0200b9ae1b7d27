#!/usr/bin/env bash
# `make demo` works, and keeps to itself: tools/demo.sh runs its steps against geany (failing at
# the first step whose effect it does not see) with Corvane under strace, and leaves five
# full-screen PNGs, the steps and Corvane's log. The peek and the search change the screen.
# Corvane opened no socket but the X server's, the buses', geany's accessibility socket and the
# journal's; the search text reached neither its log nor a file it wrote, and the title of the
# command it ran not its log (check_privacy.py).
#
#   check_demo.sh SOURCE_DIR BUILD_DIR   (under tools/test-session.sh)
set -euo pipefail
source=$1 build=$2
out=$build/demo-output
trace=$out/strace.log
mkdir -p "$out"
rm -f "$trace"
source "$source/tools/shell-helpers.sh" # png_size
status=0
CORVANE_DEMO_WRAPPER="strace -I 1 -f -qq -s 256 -o $trace -e trace=%network,openat,creat,rename,renameat,renameat2,link,symlink" \
    bash "$source/tools/demo.sh" "$build" "$out" || status=$?
# strace passes the demo's SIGTERM on to Corvane (-I 1); in case it did not, Corvane is the
# first process in the trace.
kill "$(head -n 1 "$trace" | cut -d ' ' -f 1)" 2>/dev/null || true
[ "$status" = 0 ] || { echo "check_demo: the demo failed" >&2; exit 1; }
for shot in 01-geany 02-peek 03-pinned 04-search 05-ran; do
    [ "$(png_size "$out/$shot.png")" = 1440x900 ] || { echo "check_demo: $shot.png is wrong" >&2; exit 1; }
done
! cmp -s "$out/01-geany.png" "$out/02-peek.png" || { echo "check_demo: the peek shows nothing" >&2; exit 1; }
! cmp -s "$out/03-pinned.png" "$out/04-search.png" || { echo "check_demo: the search changed nothing" >&2; exit 1; }
grep -q "^demo: done" "$out/steps.txt"
a11y=$(dbus-send --session --print-reply=literal --dest=org.a11y.Bus /org/a11y/bus \
    org.a11y.Bus.GetAddress | tr -d ' ')
python3 "$source/tests/app/check_privacy.py" --trace "$trace" --log "$out/corvane.log" \
    --allow-bus "$DBUS_SESSION_BUS_ADDRESS" --allow-bus "$a11y" \
    --allow-app-sockets "$XDG_RUNTIME_DIR" --secret prefer --log-secret Preferences
