#!/usr/bin/env bash
# Saves the screenshots a user sees first (tools/screenshots.sh) and checks each is a real
# picture of its view: the overlay's panel 940 x 640 on the 1440 x 900 test screen, the settings
# 470 x 470, Welcome 440 and What's New 520 wide; none so small a file that it is blank.
#
#   check_screenshots.sh SOURCE_DIR BUILD_DIR OUTPUT_DIR
set -euo pipefail
source=$1 build=$2 out=$3
"$source/tools/screenshots.sh" "$build" "$out"
source "$source/tools/shell-helpers.sh" # png_size
for palette in light dark; do
    for shot in peeking:940x640 pinned-search:940x640 favorites:940x640 loading:940x640 \
        settings:470x470 welcome:440x welcome-granted:440x whatsnew:520x; do
        file=$out/${shot%%:*}-$palette.png size=$(png_size "$out/${shot%%:*}-$palette.png")
        [[ $size == ${shot#*:}* ]] || { echo "check_screenshots: $file is $size" >&2; exit 1; }
        (($(stat -c %s "$file") > 8000)) || { echo "check_screenshots: $file looks blank" >&2; exit 1; }
    done
done
echo "check_screenshots: 16 screenshots in $out"
