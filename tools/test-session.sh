#!/usr/bin/env bash
# Runs a command inside a private desktop session: a virtual X server (Xvfb), a real window
# manager (openbox), a session bus, the accessibility bus (at-spi-bus-launcher) with
# accessibility switched on. Everything it starts is stopped at the end, by process id.
#
#   tools/test-session.sh [--size WxH] COMMAND [ARGS...]
#
# The command sees DISPLAY, DBUS_SESSION_BUS_ADDRESS, a private HOME-like set of XDG folders
# and CORVANE_SESSION=1. Used by the session tests, the benchmarks and the demo.
set -euo pipefail

size=1440x900
if [ "${1:-}" = "--size" ]; then size=$2; shift 2; fi
[ $# -ge 1 ] || { echo "usage: $0 [--size WxH] COMMAND [ARGS...]" >&2; exit 2; }

pids=()
workdir=$(mktemp -d "${TMPDIR:-/tmp}/corvane-session.XXXXXX")
cleanup() {
    local status=$?
    for ((i = ${#pids[@]} - 1; i >= 0; i--)); do kill "${pids[i]}" 2>/dev/null || true; done
    for pid in "${pids[@]}"; do
        for _ in $(seq 50); do kill -0 "$pid" 2>/dev/null || break; sleep 0.05; done
        kill -9 "$pid" 2>/dev/null || true
    done
    rm -rf "$workdir"
    exit $status
}
trap cleanup EXIT
trap 'exit 130' INT TERM

fail() { echo "test-session: $*" >&2; exit 1; }
source "$(dirname "$0")/shell-helpers.sh" # wait_for

# Private folders, so that nothing touches the user's own settings.
export HOME="$workdir/home" XDG_CONFIG_HOME="$workdir/config" XDG_DATA_HOME="$workdir/data"
export XDG_CACHE_HOME="$workdir/cache" XDG_RUNTIME_DIR="$workdir/runtime"
mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
export GSETTINGS_BACKEND=memory NO_AT_BRIDGE=0 QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
unset WAYLAND_DISPLAY SESSION_MANAGER
# English texts whatever the machine's locale; a test that wants another language sets LANG.
export LANG=C.UTF-8
unset LC_ALL LC_MESSAGES LANGUAGE

# X server; it picks a free display number itself and reports it (no race between sessions).
exec {displayfd}<> <(:)
Xvfb -displayfd "$displayfd" -screen 0 "${size}x24" -nolisten tcp -noreset >"$workdir/xvfb.log" 2>&1 &
pids+=($!)
display=
read -r -t 10 -u "$displayfd" display || fail "Xvfb did not start: $(cat "$workdir/xvfb.log")"
exec {displayfd}<&-
export DISPLAY=":$display"
wait_for 10 xdpyinfo || fail "Xvfb did not answer on $DISPLAY: $(cat "$workdir/xvfb.log")"

# Session bus.
dbus-daemon --session --fork --nopidfile --print-address=3 --print-pid=4 \
    3>"$workdir/bus.address" 4>"$workdir/bus.pid"
pids+=($(cat "$workdir/bus.pid"))
DBUS_SESSION_BUS_ADDRESS=$(head -n1 "$workdir/bus.address")
export DBUS_SESSION_BUS_ADDRESS

# Window manager.
openbox --sm-disable >"$workdir/openbox.log" 2>&1 &
pids+=($!)
wait_for 10 sh -c 'xprop -root _NET_SUPPORTING_WM_CHECK | grep -q "window id"' ||
    fail "openbox did not start: $(cat "$workdir/openbox.log")"

# Accessibility bus; it also publishes AT_SPI_BUS on the root window for Qt applications.
/usr/libexec/at-spi-bus-launcher --launch-immediately >"$workdir/a11y.log" 2>&1 &
pids+=($!)
wait_for 10 sh -c 'xprop -root AT_SPI_BUS | grep -q unix' ||
    fail "the accessibility bus did not start: $(cat "$workdir/a11y.log")"
dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus \
    org.freedesktop.DBus.Properties.Set string:org.a11y.Status string:IsEnabled variant:boolean:true >/dev/null ||
    fail "could not switch accessibility on"

export CORVANE_SESSION=1
"$@" &
child=$!
pids+=("$child")
set +e
wait "$child"
status=$?
set -e
exit $status
