#!/usr/bin/env bash
# Saves the overlay's screenshots with corvane-overlay-preview, for docs/screenshots/ and for
# the tests (which save them under the build folder). Runs inside a test session of its own
# unless one is running already.
#
#   tools/screenshots.sh BUILD_DIR OUTPUT_DIR
set -euo pipefail
[ $# -eq 2 ] || { echo "usage: $0 BUILD_DIR OUTPUT_DIR" >&2; exit 2; }
here=$(cd "$(dirname "$0")" && pwd)
if [ -z "${CORVANE_SESSION:-}" ]; then
    exec "$here/test-session.sh" "$0" "$@"
fi
build=$(cd "$1" && pwd)
mkdir -p "$2"
out=$(cd "$2" && pwd)
preview="$build/bin/corvane-overlay-preview"
catalog="$here/../docs/examples/geany.json"
favorites=(--favorite "File>Save" --favorite "Build>Compile" --favorite "Edit>Preferences"
           --favorite "Search>Find in Files...")

for palette in light dark; do
    xdotool mousemove 700 340 # over the Edit card's Cut: a hovered row with its star
    "$preview" "$catalog" --app-icon geany --palette $palette --png "$out/peeking-$palette.png"
    xdotool mousemove 0 0
    "$preview" "$catalog" --app-icon geany --palette $palette --query "save" --selection 1 \
        --png "$out/pinned-search-$palette.png"
    "$preview" "$catalog" --app-icon geany --palette $palette "${favorites[@]}" \
        --png "$out/favorites-$palette.png"
    # Pinned: the Recent card under the favourites, and where the last export went.
    "$preview" "$catalog" --app-icon geany --palette $palette --pinned "${favorites[@]:0:4}" \
        --recent "Build>Make" --recent "Edit>Commands>Cut Current Line(s)" --recent "Document>Line Wrapping" \
        --notice "Saved to ~/Documents/Geany shortcuts.html" --png "$out/recent-$palette.png"
    "$preview" --app-name Geany --app-icon geany --palette $palette --png "$out/loading-$palette.png"
done
# The secondary windows: settings, Welcome (without and with the permission), What's New.
windows="$build/bin/corvane-window-preview"
for palette in light dark; do
    xdotool mousemove 0 0
    "$windows" settings --palette $palette --excluded org.example.Terminal \
        --excluded org.example.Game --png "$out/settings-$palette.png"
    "$windows" welcome --palette $palette --png "$out/welcome-$palette.png"
    "$windows" welcome --trusted --palette $palette --png "$out/welcome-granted-$palette.png"
    "$windows" whatsnew --palette $palette --png "$out/whatsnew-$palette.png"
done
echo "screenshots: $(ls "$out" | wc -l) images in $out"
