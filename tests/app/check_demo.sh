#!/usr/bin/env bash
# `make demo` works: tools/demo.sh runs its six steps against geany in a session of its own (it
# fails at the first step whose effect it does not see), and leaves five full-screen PNGs, the
# steps and Corvane's log. The peek and the search differ from the screen before them.
#
#   check_demo.sh SOURCE_DIR BUILD_DIR
set -euo pipefail
source=$1 build=$2
out=$build/demo-output
env -u CORVANE_SESSION bash "$source/tools/demo.sh" "$build" "$out"
source "$source/tools/shell-helpers.sh" # png_size
for shot in 01-geany 02-peek 03-pinned 04-search 05-ran; do
    [ -s "$out/$shot.png" ] || { echo "check_demo: no $shot.png" >&2; exit 1; }
    [ "$(png_size "$out/$shot.png")" = 1440x900 ] || { echo "check_demo: $shot.png is $(png_size "$out/$shot.png")" >&2; exit 1; }
done
! cmp -s "$out/01-geany.png" "$out/02-peek.png" || { echo "check_demo: the peek shows nothing new" >&2; exit 1; }
! cmp -s "$out/03-pinned.png" "$out/04-search.png" || { echo "check_demo: the search changed nothing" >&2; exit 1; }
grep -q "crawl: geany" "$out/corvane.log"
grep -q "^demo: done" "$out/steps.txt"
echo "demo: 5 screenshots, steps and log in $out"
