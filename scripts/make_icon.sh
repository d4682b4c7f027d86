#!/bin/bash
# Draws the icon of marvo-replay, app/window/marvo-replay.ico: a play triangle in an arrow that leads back.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

command -v convert >/dev/null || die "ImageMagick is missing: install the package imagemagick"
big=$(mktemp --suffix=.png)
trap 'rm -f "$big"' EXIT
convert -size 512x512 xc:none -fill '#15181c' -draw 'roundrectangle 8,8 503,503 96,96' \
    -fill none -stroke '#2f9e58' -strokewidth 44 -draw 'arc 98,116 414,432 280,575' \
    -stroke none -fill '#2f9e58' -draw 'polygon 290,40 290,196 176,118' \
    -fill '#f2f4f6' -draw 'polygon 208,184 208,364 362,274' -depth 8 "$big"
convert "$big" -define icon:auto-resize=256,64,48,32,24,16 "$root/app/window/marvo-replay.ico"
