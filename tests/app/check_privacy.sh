#!/usr/bin/env bash
# Network and privacy: runs the demo's whole peek loop (hold Ctrl over geany, pin,
# type "prefer", Return runs Edit ▸ Preferences) with Corvane under strace, inside this test
# session, then checks with check_privacy.py that Corvane opened no socket other than the X
# server's, the D-Bus buses', the application's own accessibility socket and the journal's, and
# that neither the search text nor the title of the command it ran is in its log or in any file
# it wrote.
#
#   check_privacy.sh SOURCE_DIR BUILD_DIR   (under tools/test-session.sh)
set -euo pipefail
source=$1 build=$2
out=$build/privacy-output
trace=$out/strace.log
mkdir -p "$out"
rm -f "$trace"
a11y=$(dbus-send --session --print-reply=literal --dest=org.a11y.Bus /org/a11y/bus \
    org.a11y.Bus.GetAddress | tr -d ' ')
status=0
CORVANE_DEMO_WRAPPER="strace -I 1 -f -qq -s 256 -o $trace -e trace=%network,openat,creat,rename,renameat,renameat2,link,symlink" \
    bash "$source/tools/demo.sh" "$build" "$out" || status=$?
# With -I 1, strace passes the demo's SIGTERM on to Corvane; in case it did not, Corvane is the
# first process in the trace.
corvane_pid=$(head -n 1 "$trace" | cut -d ' ' -f 1)
kill "$corvane_pid" 2>/dev/null || true
[ "$status" = 0 ] || { echo "check_privacy: the demo failed" >&2; exit 1; }
python3 "$source/tests/app/check_privacy.py" --trace "$trace" --log "$out/corvane.log" \
    --allow-bus "$DBUS_SESSION_BUS_ADDRESS" --allow-bus "$a11y" \
    --allow-app-sockets "$XDG_RUNTIME_DIR" --secret prefer --secret Preferences
