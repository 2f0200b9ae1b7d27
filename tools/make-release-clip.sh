#!/usr/bin/env bash
# Makes the What's New clip src/whatsnew/media/peek-and-pin.webm from the overlay's screenshots
# (docs/screenshots, made by tools/screenshots.sh): the peeking panel fades into the pinned one
# with a search, 3.2 s, 800 × 500, VP9. A maintainer's tool: needs ffmpeg (apt install ffmpeg),
# which neither the build nor the tests need.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
shots="$here/docs/screenshots"
ffmpeg -loglevel error -y \
    -loop 1 -t 1.8 -i "$shots/peeking-light.png" \
    -loop 1 -t 1.8 -i "$shots/pinned-search-light.png" \
    -filter_complex "[0:v]crop=640:400:0:0,scale=800:500,setsar=1,fps=10[a];[1:v]crop=640:400:0:0,scale=800:500,setsar=1,fps=10[b];[a][b]xfade=transition=fade:duration=0.4:offset=1.4,format=yuv420p" \
    -c:v libvpx-vp9 -b:v 150k -an "$here/src/whatsnew/media/peek-and-pin.webm"
echo "made src/whatsnew/media/peek-and-pin.webm"
