#!/usr/bin/env bash
# Runs every benchmark program built under BUILD_DIR/bench. Each prints its figures as
# `bench <name> <value> <unit>` lines. Benchmarks that need a desktop run in their own
# test session (tools/test-session.sh).
set -euo pipefail
build_dir=${1:-build}
here=$(cd "$(dirname "$0")" && pwd)
session_benchmarks=" bench_crawl bench_footprint bench_overlay bench_shell bench_trigger "
status=0
for program in "$build_dir"/bench/bench_*; do
    [ -f "$program" ] && [ -x "$program" ] || continue
    name=$(basename "$program")
    echo "# $name"
    if [ "$name" = bench_wayland ]; then
        # GNOME Shell with the companion as built here, installed and on.
        for desktop in sway gnome-wayland kwin-wayland; do
            CORVANE_GNOME_EXTENSIONS="$(cd "$build_dir" && pwd)/share/gnome-shell/extensions" \
                "$here/test-session.sh" --desktop "$desktop" "$program" 2>/dev/null || status=1
        done
    elif [[ $session_benchmarks == *" $name "* ]]; then
        "$here/test-session.sh" "$program" 2>/dev/null || status=1
    else
        "$program" || status=1
    fi
done
exit $status
