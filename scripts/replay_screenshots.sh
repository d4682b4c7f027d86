#!/bin/bash
# Takes the pictures of docs/replay.md, docs/screenshots/replay-*.png: runs marvo-replay on the simulated
# camera and the invisible display, and works with it by keys and mouse.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

folder=$root/build/replay-screenshots
pictures=$root/docs/screenshots

hand() { DISPLAY=:$display_number xdotool "$@"; }

# take NAME: the window as it is now, at two thirds of its size and with few colours.
take() {
    DISPLAY=:$display_number import -window root png:- |
        convert - -trim +repage -resize 66% -colors 128 -strip "PNG8:$pictures/replay-$1.png"
    say "made docs/screenshots/replay-$1.png"
}

start() {
    rm -rf "$folder"
    mkdir -p "$folder" "$pictures"
    printf '[marvo-replay]\ndeinterlace = no\nring = 250\n' >"$folder/marvo-replay.ini"
    MARVO_CWD=$folder MARVO_TIMEOUT=120 "$root/scripts/run.sh" win32 marvo-replay >/dev/null 2>&1 &
    program=$!
    local tries
    for ((tries = 0; tries < 120; tries++)); do
        # The first rolling file is there when the camera is live.
        if compgen -G "$folder/recordings/rolling/*.avi" >/dev/null; then
            break
        fi
        sleep 0.5
    done
    display_runs || die "the invisible display does not run."
    sleep 4
}

finish() {
    hand key ctrl+q key y
    wait "$program" || true
    rm -rf "$folder"
}

start
trap 'kill "$program" 2>/dev/null || true' EXIT
hand mousemove 400 300 click 1 key r
sleep 6
take live
hand key i
sleep 3
hand key o
sleep 1
hand key i
sleep 2
hand key o
sleep 1
hand key F5
sleep 1
hand key 3 mousemove 620 740
sleep 2
take clips
finish
