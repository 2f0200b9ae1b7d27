#!/usr/bin/env bash
# `make lint` fails, naming file and line, on a planted reference to an outside document, and
# passes once it is gone.
set -euo pipefail
lint=$1/tools/lint.sh
repo=$(mktemp -d)
trap 'rm -rf "$repo"' EXIT
git -C "$repo" init -q
# The planted words are put together at run time, so that this file does not match itself.
printf 'int answer = 42;\n// see %s 3.2 for why\n' "Par""t" >"$repo/planted.cpp"
git -C "$repo" add planted.cpp
out=$("$lint" "$repo" 2>&1) && { echo "lint passed a planted reference"; exit 1; }
grep -q '^planted.cpp:2:' <<<"$out" || { echo "lint did not name the line: $out"; exit 1; }
sed -i '2d' "$repo/planted.cpp"
"$lint" "$repo" || { echo "lint failed a clean tree"; exit 1; }
