#!/usr/bin/env bash
# Runs a command inside a private desktop session: a display, a real window manager or compositor,
# a session bus, the accessibility bus (at-spi-bus-launcher) with accessibility switched on.
# Everything it starts is stopped at the end, by process id.
#
#   tools/test-session.sh [--wayland | --desktop NAME] [--size WxH] COMMAND [ARGS...]
#
# The command sees DISPLAY or WAYLAND_DISPLAY, DBUS_SESSION_BUS_ADDRESS, a private HOME-like set of
# XDG folders, CORVANE_SESSION=1 and CORVANE_DESKTOP=NAME. Used by the session tests, the
# benchmarks and the demo. The desktops (NAME):
#
#   openbox        (the default) a virtual X server (Xvfb) and openbox.
#   sway           (also --wayland) a headless sway with no X server at all (software rendering, no
#                  input devices, no XWayland), run as an unprivileged user because it refuses to
#                  run as root. The command also sees SWAYSOCK.
#   gnome-wayland  GNOME Shell as a headless Wayland compositor with one virtual monitor.
#   gnome-x11      GNOME Shell as the window manager and compositor of Xvfb.
#   kwin-wayland   KWin as a virtual Wayland compositor.
#   kwin-x11       KWin as the window manager of Xvfb.
#
# On every Wayland desktop the command sees XDG_SESSION_TYPE=wayland, and GDK_BACKEND and
# QT_QPA_PLATFORM set to wayland so that the applications it starts run natively.
#
# GNOME Shell needs a system bus and gives up where the machine has logind's seat folder but no
# logind: its session runs in a mount and process namespace of its own (as root, or through a user
# namespace otherwise), with empty /run/systemd and /run/dbus and a system bus of its own, so that
# nothing it or its helpers start outlives the session. A small extension of the session's own
# lets the command inspect and drive the Shell through org.gnome.Shell.Eval, closes the overview
# the Shell starts in and gives the session a keyboard and a pointer from the start, as a user's
# session has (a GTK 3 window without keyboard focus is never active). The extensions in the folder
# CORVANE_GNOME_EXTENSIONS, when it is set, are installed for the Shell as if system-wide, and on. KWin's binary carries file capabilities that a container may
# refuse, so a plain copy of it runs; it grants its input-injection interface to any client
# (KWIN_WAYLAND_NO_PERMISSION_CHECKS) and the command sees CORVANE_KWIN_LOG, KWin's log, where
# the output of the scripts it loads appears.
set -euo pipefail

size=1440x900
desktop=openbox
while (($#)); do
    case $1 in
    --wayland) desktop=sway; shift ;;
    --desktop) desktop=$2; shift 2 ;;
    --size) size=$2; shift 2 ;;
    *) break ;;
    esac
done
[ $# -ge 1 ] || { echo "usage: $0 [--wayland | --desktop NAME] [--size WxH] COMMAND [ARGS...]" >&2; exit 2; }
case $desktop in
openbox | sway | gnome-wayland | gnome-x11 | kwin-wayland | kwin-x11) ;;
*) echo "test-session: unknown desktop $desktop" >&2; exit 2 ;;
esac

if [[ $desktop == gnome-* && -z ${CORVANE_SESSION_NAMESPACE:-} ]]; then
    userns=()
    [ "$(id -u)" -eq 0 ] || userns=(--map-root-user)
    exec unshare "${userns[@]}" --mount --pid --fork --mount-proc --kill-child \
        env CORVANE_SESSION_NAMESPACE=1 "$0" --desktop "$desktop" --size "$size" "$@"
fi

pids=()
workdir=$(mktemp -d "${TMPDIR:-/tmp}/corvane-session.XXXXXX")
cleanup() {
    local status=$?
    disown -a # their ends are no news
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
wayland=
[[ $desktop == sway || $desktop == *-wayland ]] && wayland=1

# Private folders, so that nothing touches the user's own settings.
export HOME="$workdir/home" XDG_CONFIG_HOME="$workdir/config" XDG_DATA_HOME="$workdir/data"
export XDG_CACHE_HOME="$workdir/cache" XDG_RUNTIME_DIR="$workdir/runtime"
mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
export GSETTINGS_BACKEND=memory NO_AT_BRIDGE=0 QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
export CORVANE_DESKTOP=$desktop
unset WAYLAND_DISPLAY SESSION_MANAGER DISPLAY SWAYSOCK XDG_CURRENT_DESKTOP KDE_SESSION_VERSION KDE_FULL_SESSION
# English texts whatever the machine's locale; a test that wants another language sets LANG.
export LANG=C.UTF-8
unset LC_ALL LC_MESSAGES LANGUAGE

if [[ $desktop == gnome-* ]]; then
    mount -t tmpfs tmpfs /run/systemd
    mount -t tmpfs tmpfs /run/dbus
    dbus-daemon --system --fork --nopidfile --print-pid=4 4>"$workdir/system-bus.pid" ||
        fail "the system bus did not start"
    pids+=($(cat "$workdir/system-bus.pid"))
    # The extension that opens Eval to the session's command, enabled from the start through the
    # key-file settings (the memory backend starts empty).
    extension="$XDG_DATA_HOME/gnome-shell/extensions/corvane-session@vantorel.com"
    mkdir -p "$extension" "$XDG_CONFIG_HOME/glib-2.0/settings"
    cat >"$extension/metadata.json" <<'JSON'
{"uuid": "corvane-session@vantorel.com", "name": "Corvane test session",
 "description": "Lets a test session inspect and drive the Shell", "shell-version": ["43", "44"]}
JSON
    cat >"$extension/extension.js" <<'JS'
const {Clutter} = imports.gi;
const Main = imports.ui.main;
function init() {}
function enable() {
    global.context.unsafe_mode = true;
    // The session's keyboard and pointer, there from the start as a user's are.
    const seat = Clutter.get_default_backend().get_default_seat();
    global.corvaneKeyboard = seat.create_virtual_device(Clutter.InputDeviceType.KEYBOARD_DEVICE);
    global.corvanePointer = seat.create_virtual_device(Clutter.InputDeviceType.POINTER_DEVICE);
    if (Main.layoutManager._startingUp)
        Main.layoutManager.connect('startup-complete', () => Main.overview.hide());
    else
        Main.overview.hide();
}
function disable() {}
JS
    enabled="'corvane-session@vantorel.com'"
    shell_data=
    if [ -n "${CORVANE_GNOME_EXTENSIONS:-}" ]; then
        shell_data="${CORVANE_GNOME_EXTENSIONS%/gnome-shell/extensions}:"
        for installed in "$CORVANE_GNOME_EXTENSIONS"/*/; do
            enabled+=", '$(basename "$installed")'"
        done
    fi
    cat >"$XDG_CONFIG_HOME/glib-2.0/settings/keyfile" <<KEYS
[org/gnome/shell]
enabled-extensions=[$enabled]
disable-user-extensions=false
welcome-dialog-last-shown-version='999'
KEYS
    export GSETTINGS_BACKEND=keyfile XDG_CURRENT_DESKTOP=GNOME
fi
[[ $desktop == kwin-* ]] && export XDG_CURRENT_DESKTOP=KDE KDE_SESSION_VERSION=5 KDE_FULL_SESSION=true

# Session bus.
dbus-daemon --session --fork --nopidfile --print-address=3 --print-pid=4 \
    3>"$workdir/bus.address" 4>"$workdir/bus.pid"
pids+=($(cat "$workdir/bus.pid"))
DBUS_SESSION_BUS_ADDRESS=$(head -n1 "$workdir/bus.address")
export DBUS_SESSION_BUS_ADDRESS

# The X server; it picks a free display number itself and reports it (no race between sessions).
if [ -z "$wayland" ]; then
    export XDG_SESSION_TYPE=x11
    exec {displayfd}<> <(:)
    Xvfb -displayfd "$displayfd" -screen 0 "${size}x24" -nolisten tcp -noreset >"$workdir/xvfb.log" 2>&1 &
    pids+=($!)
    display=
    read -r -t 10 -u "$displayfd" display || fail "Xvfb did not start: $(cat "$workdir/xvfb.log")"
    exec {displayfd}<&-
    export DISPLAY=":$display"
    wait_for 10 xdpyinfo || fail "Xvfb did not answer on $DISPLAY: $(cat "$workdir/xvfb.log")"
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

# The window manager or compositor; its log is kept for the failure message.
log="$workdir/$desktop.log"
width=${size%x*} height=${size#*x}
case $desktop in
openbox)
    openbox --sm-disable >"$log" 2>&1 &
    pids+=($!) ;;
gnome-x11)
    XDG_DATA_DIRS="$shell_data${XDG_DATA_DIRS:-/usr/local/share:/usr/share}" \
        gnome-shell --x11 --replace --sm-disable >"$log" 2>&1 &
    pids+=($!) ;;
kwin-x11)
    kwin_x11 --replace >"$log" 2>&1 &
    pids+=($!) ;;
gnome-wayland)
    XDG_DATA_DIRS="$shell_data${XDG_DATA_DIRS:-/usr/local/share:/usr/share}" \
        gnome-shell --wayland --headless --no-x11 --virtual-monitor "$size" >"$log" 2>&1 &
    pids+=($!) ;;
kwin-wayland)
    cp /usr/bin/kwin_wayland "$workdir/kwin_wayland"
    KWIN_WAYLAND_NO_PERMISSION_CHECKS=1 "$workdir/kwin_wayland" --virtual --width "$width" \
        --height "$height" --no-lockscreen --no-global-shortcuts --no-kactivities \
        --socket wayland-0 >"$log" 2>&1 &
    pids+=($!)
    export CORVANE_KWIN_LOG=$log ;;
sway)
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
        "${as_user[@]}" sway -c "$workdir/sway.config" >"$log" 2>&1 &
    pids+=($!) ;;
esac
started() { fail "$desktop did not start ($1): $(tail -5 "$log")"; }
if [ -z "$wayland" ]; then
    wait_for 30 sh -c 'xprop -root _NET_SUPPORTING_WM_CHECK | grep -q "window id"' ||
        started "no window manager on the X server"
else
    runtime=${runtime:-$XDG_RUNTIME_DIR}
    wait_for 30 sh -c "ls '$runtime'/wayland-* 2>/dev/null | grep -qv lock" ||
        started "no Wayland socket"
    WAYLAND_DISPLAY=$(ls "$runtime"/wayland-* | grep -v lock | head -n1)
    export WAYLAND_DISPLAY XDG_SESSION_TYPE=wayland GDK_BACKEND=wayland QT_QPA_PLATFORM=wayland
fi
case $desktop in
gnome-*)
    wait_for 30 sh -c "gdbus call --session --dest org.gnome.Shell --object-path /org/gnome/Shell \
        --method org.gnome.Shell.Eval 'Main.layoutManager._startingUp || Main.overview.visible' |
        grep -q \"(true, 'false')\"" || started "its Eval did not answer, or the overview stayed" ;;
kwin-*)
    wait_for 30 dbus-send --session --print-reply --dest=org.kde.KWin /Scripting \
        org.freedesktop.DBus.Introspectable.Introspect || started "no scripting on the bus" ;;
sway)
    wait_for 10 sh -c "ls '$runtime'/sway-ipc.*.sock >/dev/null 2>&1" || started "no IPC socket"
    SWAYSOCK=$(ls "$runtime"/sway-ipc.*.sock | head -n1)
    export SWAYSOCK ;;
esac

export CORVANE_SESSION=1
"$@" &
child=$!
pids+=("$child")
set +e
wait "$child"
status=$?
set -e
exit $status
