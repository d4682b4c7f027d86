#!/bin/bash
# bench_scrub.sh MOVES FILE: drags over the timeline of marvo-replay while it records, by real moves of the
# mouse on the invisible display. FILE is written as bench_scrub.py says.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"
. "${BASH_SOURCE[0]%/*}/replay_session.sh"

[[ $# -eq 2 && $1 -gt 0 ]] || die "usage: bench_scrub.sh MOVES FILE"
moves=$1 result=$2
folder=$root/build/win32/scratch/bench_scrub

say "dragging over the timeline"
mkdir -p "$(dirname "$result")"
choose_invisible_display
prepare_camera "$folder" ''
start_replay "$folder" 600
trap 'kill "$replay" 2>/dev/null || true; rm -rf "$folder"' EXIT
/usr/bin/python3 "$root/scripts/bench_scrub.py" "$moves" "$folder" "$display" "$result" >&2
wait "$replay"
