#!/bin/bash
# bench_decoder.sh ROUNDS FILE: decodes the test streams with ffmpeg on one thread. FILE gets a line "STREAM
# FRAMES SECONDS" per stream and round, in seconds of processor time.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

[[ $# -eq 2 && $1 -gt 0 ]] || die "usage: bench_decoder.sh ROUNDS FILE"
rounds=$1 result=$2

# decode STREAM FRAME_BYTES
decode() {
    local log file=$root/build/streams/$1
    log=$(ffmpeg -nostdin -hide_banner -nostats -benchmark -threads 1 -f dv -i "$file" -map 0:v \
        -f null - 2>&1) || die "ffmpeg could not decode the stream: $log"
    [[ $log =~ utime=([0-9.]+)s\ stime=([0-9.]+)s ]] || die "ffmpeg told no time."
    printf '%s %s ' "$1" $(($(stat -c %s "$file") / $2))
    awk "BEGIN { print ${BASH_REMATCH[1]} + ${BASH_REMATCH[2]} }"
}

say "decoding with ffmpeg"
mkdir -p "$(dirname "$result")"
for ((round = 0; round < rounds; round++)); do
    decode pal.dv 144000
    decode ntsc.dv 120000
done >"$result"
