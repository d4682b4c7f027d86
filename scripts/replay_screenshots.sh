#!/bin/bash
# Makes the pictures of the documents, docs/screenshots/replay-*.png, of what the last ./demo.sh saw: the
# window at two thirds of its size and with few colours.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

pictures=$root/docs/screenshots
mkdir -p "$pictures"
for shot in evening/{live,scrub,clips,slow-motion,full-screen,no-signal} full/disk-full; do
    [[ -f $root/out/demo/$shot.png ]] || die "there is no out/demo/$shot.png; ./demo.sh makes it."
    convert "$root/out/demo/$shot.png" -trim +repage -resize 66% -colors 128 -strip \
        "PNG8:$pictures/replay-${shot##*/}.png"
    say "made docs/screenshots/replay-${shot##*/}.png"
done
