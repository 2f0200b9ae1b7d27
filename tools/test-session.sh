#!/usr/bin/env bash
# Runs a command inside a private desktop session: a virtual X server (Xvfb), a real window
# manager (openbox), a session bus, the accessibility bus (at-spi-bus-launcher) with
# accessibility switched on. Everything it starts is stopped at the end, by process id.
#
#   tools/test-session.sh [--wayland] [--size WxH] COMMAND [ARGS...]
#
# The command sees DISPLAY, DBUS_SESSION_BUS_ADDRESS, a private HOME-like set of XDG folders
# and CORVANE_SESSION=1. Used by the session tests, the benchmarks and the demo.
#
# --wayland: a Wayland session instead, with no X server at all: a headless sway (software
# rendering, no input devices, no XWayland), run as an unprivileged user because it refuses to
# run as root. The command sees WAYLAND_DISPLAY (the socket's full path), SWAYSOCK,
# XDG_SESSION_TYPE=wayland, and GDK_BACKEND and QT_QPA_PLATFORM set to wayland so that the
# applications it starts run natively.
set -euo pipefail

size=1440x900
wayland=
if [ "${1:-}" = "--wayland" ]; then wayland=1; shift; fi
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

if [ -n "$wayland" ]; then
    # sway runs as the invoking user, or as nobody when that is root; it needs a runtime folder
    # of its own, which the other clients reach through the socket's full path.
    runtime="$workdir/wayland"
    mkdir -p "$runtime"
    as_user=()
    if [ "$(id -u)" -eq 0 ]; then
        chown nobody:nogroup "$runtime"
        chmod 755 "$workdir"
        as_user=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
    fi
    chmod 700 "$runtime"
    cat >"$workdir/sway.config" <<CONFIG
xwayland disable
output HEADLESS-1 resolution ${size} position 0 0
default_border none
CONFIG
    chmod 644 "$workdir/sway.config"
    env -i PATH="$PATH" HOME="$runtime" XDG_RUNTIME_DIR="$runtime" WLR_BACKENDS=headless \
        WLR_HEADLESS_OUTPUTS=1 WLR_LIBINPUT_NO_DEVICES=1 WLR_RENDERER=pixman \
        "${as_user[@]}" sway -c "$workdir/sway.config" >"$workdir/sway.log" 2>&1 &
    pids+=($!)
    wait_for 10 sh -c "ls '$runtime'/wayland-* 2>/dev/null | grep -qv lock" ||
        fail "sway did not start: $(tail -5 "$workdir/sway.log")"
    WAYLAND_DISPLAY=$(ls "$runtime"/wayland-* | grep -v lock | head -n1)
    wait_for 10 sh -c "ls '$runtime'/sway-ipc.*.sock >/dev/null 2>&1" ||
        fail "sway opened no IPC socket: $(tail -5 "$workdir/sway.log")"
    SWAYSOCK=$(ls "$runtime"/sway-ipc.*.sock | head -n1)
    export WAYLAND_DISPLAY SWAYSOCK XDG_SESSION_TYPE=wayland GDK_BACKEND=wayland \
        QT_QPA_PLATFORM=wayland
    unset DISPLAY
else
export XDG_SESSION_TYPE=x11
# X server; it picks a free display number itself and reports it (no race between sessions).
exec {displayfd}<> <(:)
Xvfb -displayfd "$displayfd" -screen 0 "${size}x24" -nolisten tcp -noreset >"$workdir/xvfb.log" 2>&1 &
pids+=($!)
display=
read -r -t 10 -u "$displayfd" display || fail "Xvfb did not start: $(cat "$workdir/xvfb.log")"
exec {displayfd}<&-
export DISPLAY=":$display"
wait_for 10 xdpyinfo || fail "Xvfb did not answer on $DISPLAY: $(cat "$workdir/xvfb.log")"
fi

# Session bus.
dbus-daemon --session --fork --nopidfile --print-address=3 --print-pid=4 \
    3>"$workdir/bus.address" 4>"$workdir/bus.pid"
pids+=($(cat "$workdir/bus.pid"))
DBUS_SESSION_BUS_ADDRESS=$(head -n1 "$workdir/bus.address")
export DBUS_SESSION_BUS_ADDRESS

# Window manager.
if [ -z "$wayland" ]; then
    openbox --sm-disable >"$workdir/openbox.log" 2>&1 &
    pids+=($!)
    wait_for 10 sh -c 'xprop -root _NET_SUPPORTING_WM_CHECK | grep -q "window id"' ||
        fail "openbox did not start: $(cat "$workdir/openbox.log")"
fi

# Accessibility bus; under X it also publishes AT_SPI_BUS on the root window for Qt applications.
/usr/libexec/at-spi-bus-launcher --launch-immediately >"$workdir/a11y.log" 2>&1 &
pids+=($!)
if [ -z "$wayland" ]; then
    wait_for 10 sh -c 'xprop -root AT_SPI_BUS | grep -q unix' ||
        fail "the accessibility bus did not start: $(cat "$workdir/a11y.log")"
else
    wait_for 10 dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus \
        org.a11y.Bus.GetAddress >/dev/null ||
        fail "the accessibility bus did not start: $(cat "$workdir/a11y.log")"
fi
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
