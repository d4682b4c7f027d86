#!/bin/bash
# bench_scrub.sh MOVES FILE: drags over the timeline of marvo-replay while it records, by real moves of the
# mouse on the invisible display. FILE is written as bench_scrub.py says.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

[[ $# -eq 2 && $1 -gt 0 ]] || die "usage: bench_scrub.sh MOVES FILE"
moves=$1 result=$2
folder=$root/build/win32/scratch/bench_scrub
port=$((48000 + RANDOM % 1000))

say "dragging over the timeline"
rm -rf "$folder"
mkdir -p "$folder" "$(dirname "$result")"
cp "$root/build/streams/pal.dv" "$folder/source.dv"
printf 'stream = source.dv\n' >"$folder/camera.txt"
printf '[marvo-replay]\ndeinterlace = no\nring = 250\nport = %s\ntoken = bench\n' "$port" \
    >"$folder/marvo-replay.ini"
display_runs || "$root/scripts/display.sh"
display_runs || die "the invisible display ended at once; $wine_dir/display.log tells why."
MARVO_CAMERA='R:\build\win32\scratch\bench_scrub\camera.txt' MARVO_CWD=$folder MARVO_TIMEOUT=600 \
    "$root/scripts/run.sh" win32 marvo-replay >"$folder/output.txt" 2>&1 &
program=$!
trap 'kill "$program" 2>/dev/null || true; rm -rf "$folder"' EXIT
/usr/bin/python3 "$root/scripts/bench_scrub.py" "$moves" "$folder" ":$display_number" "$result" >&2
wait "$program"
