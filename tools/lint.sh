#!/usr/bin/env bash
# Fails, with file and line, where a tracked file points a reader at a document the repository
# does not hold: a design document's sections, its file names, a folder outside the repository,
# or an issue number. Comments say why in the code's own terms instead.
#
#   tools/lint.sh [REPOSITORY]
#
# Each pattern has one character in brackets so that this file does not match itself.
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"

patterns=(
    'Part[ ][0-9]' 'Parts[ ][0-9]'
    'spe[c]\.md' 'specificatio[n]' 'the spe[c]\b' "spe[c]'s"
    'PLATFOR[M]\.md' 'STYL[E]\.md' '\.\./share[d]' 'issue[ ]#[0-9]'
)
args=()
for p in "${patterns[@]}"; do args+=(-e "$p"); done

if git grep -nIiE "${args[@]}" -- .; then
    echo "lint: the lines above refer to documents outside the repository; say why in the code's own terms" >&2
    exit 1
fi
