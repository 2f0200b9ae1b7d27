#!/usr/bin/env bash
# Runs every benchmark program built under BUILD_DIR/bench. Each prints its figures as
# `bench <name> <value> <unit>` lines.
set -euo pipefail
build_dir=${1:-build}
status=0
for program in "$build_dir"/bench/bench_*; do
    [ -f "$program" ] && [ -x "$program" ] || continue
    echo "# $(basename "$program")"
    "$program" || status=1
done
exit $status
