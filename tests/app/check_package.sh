#!/usr/bin/env bash
# The Debian package (`make package`) passes lintian without a warning, installs into a clean
# bookworm root with only what it declares, its installed desktop entry and metainfo validate, its
# manual pages say what --help says, and its programs run from that root under the test session:
# `corvane-menus list` finds geany with its menu bar, completing `corvane-menus dump ` in an
# interactive bash offers geany's id, and `corvane` starts.
#
#   check_package.sh SOURCE_DIR BUILD_DIR
#
# Needs root (debootstrap, chroot, mounts) and Debian's package mirror. The minimal root is made
# once per machine (debootstrap --variant=minbase) and kept as a tarball in the cache folder, with
# the downloaded packages; every run unpacks a fresh copy.
set -euo pipefail
source "$(dirname "$0")/../../tools/shell-helpers.sh" # wait_for

if [ "${1:-}" = "--inside-session" ]; then
    # Under tools/test-session.sh, with the session's /tmp (X socket, buses, XDG folders) bound
    # into the root: geany on the host, Corvane's programs from the root.
    root=$2
    geany --new-instance --no-session >/dev/null 2>&1 &
    geany_pid=$!
    corvane_pid=
    trap 'kill $geany_pid $corvane_pid 2>/dev/null || true' EXIT
    listed_geany() { chroot "$root" corvane-menus list 2>&1 | grep -qi "^ *$geany_pid .*geany.*yes"; }
    wait_for 20 listed_geany || true
    chroot "$root" corvane-menus list 2>&1 || true
    listed_geany ||
        { echo "check_package: the installed corvane-menus did not list geany ($geany_pid) with its menu bar" >&2; exit 1; }
    log=$(mktemp)
    trap 'kill $geany_pid $corvane_pid 2>/dev/null || true; rm -f "$log"' EXIT
    chroot "$root" corvane > "$log" 2>&1 &
    corvane_pid=$!
    started_or_ended() { grep -q "Corvane .* started" "$log" || ! kill -0 $corvane_pid; }
    wait_for 10 started_or_ended || true
    cat "$log"
    grep -q "Corvane .* started" "$log" ||
        { echo "check_package: the installed corvane did not start" >&2; exit 1; }
    kill $corvane_pid
    wait $corvane_pid 2>/dev/null || true
    corvane_pid=
    # Tab twice after "corvane-menus dump " at a bash prompt on a terminal.
    completed=$(python3 - "$root" <<'PYTHON'
import os, pty, select, sys, time
pid, fd = pty.fork()
if pid == 0:
    os.execvp("chroot", ["chroot", sys.argv[1], "bash", "--norc", "-i"])
os.write(fd, b"source /usr/share/bash-completion/completions/corvane-menus\n")
os.write(fd, b"corvane-menus dump \t\t")
seen, deadline = b"", time.time() + 10
while time.time() < deadline and b"geany" not in seen.lower().split(b"dump", 1)[-1]:
    if select.select([fd], [], [], 0.2)[0]:
        seen += os.read(fd, 4096)
os.kill(pid, 9)
print(seen.decode(errors="replace"))
PYTHON
)
    grep -qi "dump .*geany" <<<"$completed" ||
        { echo "$completed" >&2; echo "check_package: completing corvane-menus dump offered no geany" >&2; exit 1; }
    echo "the installed programs run: corvane-menus listed geany and completes its id, corvane started"
    exit 0
fi

source=$(cd "$1" && pwd) build=$(cd "$2" && pwd)
[ "$(id -u)" -eq 0 ] || { echo "check_package: needs root for debootstrap, chroot and mounts" >&2; exit 1; }
cache=${CORVANE_TEST_CACHE:-/var/tmp/corvane-test-cache}
mkdir -p "$cache/archives"
# Not under /tmp: the session's /tmp is bound into the root.
work=$(mktemp -d /var/tmp/corvane-package.XXXXXX)
root=$work/root
mounts=()
cleanup() {
    local status=$?
    for ((i = ${#mounts[@]} - 1; i >= 0; i--)); do umount "${mounts[i]}" 2>/dev/null || umount -l "${mounts[i]}" || true; done
    # Never remove through a mount that is still there (it would reach the host's files).
    if grep -q " $work/" /proc/self/mounts; then
        echo "check_package: $work is still mounted; left in place" >&2
    else
        rm -rf "$work"
    fi
    exit $status
}
trap cleanup EXIT
bind() { mount --bind "$1" "$2"; mounts+=("$2"); }

echo "== the package"
(cd "$build" && cpack -G DEB -B "$work/package" > "$work/cpack.log") || { cat "$work/cpack.log" >&2; exit 1; }
deb=$(ls "$work"/package/corvane_*.deb)
dpkg-deb --field "$deb" Package Version Depends Recommends
lintian --allow-root --fail-on error,warning "$deb"

echo "== a clean bookworm root"
base=$cache/bookworm-minbase.tar
if [ ! -s "$base" ]; then
    debootstrap --variant=minbase bookworm "$work/base" http://deb.debian.org/debian > "$work/debootstrap.log" 2>&1 ||
        { tail -20 "$work/debootstrap.log" >&2; exit 1; }
    tar -C "$work/base" -cf "$base.part" . && mv "$base.part" "$base"
    rm -rf "$work/base"
fi
mkdir "$root"
tar -C "$root" -xf "$base"
if chroot "$root" dpkg-query -W libqt6core6 > /dev/null 2>&1; then
    echo "check_package: the clean root already has Qt" >&2; exit 1
fi
cp /etc/resolv.conf "$root/etc/resolv.conf"
bind "$cache/archives" "$root/var/cache/apt/archives"
mount -t proc proc "$root/proc"; mounts+=("$root/proc")
bind /dev "$root/dev"
cp "$deb" "$root/root/corvane.deb"

echo "== apt-get install ./corvane.deb (its dependencies from the Debian mirror)"
export DEBIAN_FRONTEND=noninteractive
chroot "$root" apt-get update -qq
chroot "$root" apt-get install -y -qq --no-install-recommends /root/corvane.deb > "$work/apt.log" 2>&1 ||
    { tail -30 "$work/apt.log" >&2; exit 1; }
chroot "$root" dpkg-query -W corvane

echo "== the installed desktop entry and metainfo"
desktop-file-validate "$root/usr/share/applications/com.vantorel.Corvane.desktop"
appstreamcli validate --no-net "$root/usr/share/metainfo/com.vantorel.Corvane.metainfo.xml"

echo "== the manual pages say what --help says"
for program in corvane corvane-menus; do
    page=$(MANWIDTH=200 man -l "$root/usr/share/man/man1/$program.1.gz" 2>/dev/null)
    help=$(chroot "$root" "$program" --help)
    # Every option and command, and every exit status with the page's number of them.
    for word in $(grep -oE -- '--[a-z-]+|^ +(list|dump|press)\b' <<<"$help" | tr -d ' ' | sort -u); do
        grep -qw -- "$word" <<<"$page" || { echo "man $program does not say $word" >&2; exit 1; }
    done
    statuses=$(sed -n '/^EXIT STATUS/,/^[A-Z]/p' <<<"$page" | grep -cE '^ +[0-9]+$')
    said=$(sed -n '/^Exit status/,$p' <<<"$help" | { grep -oE '(^|, |: )[0-9] ' || true; } | wc -l)
    [ "$said" -eq 0 ] || [ "$said" -eq "$statuses" ] ||
        { echo "man $program lists $statuses exit statuses, --help $said" >&2; exit 1; }
done

echo "== the installed programs under the test session"
bind /tmp "$root/tmp"
"$source/tools/test-session.sh" "$source/tests/app/check_package.sh" --inside-session "$root"
