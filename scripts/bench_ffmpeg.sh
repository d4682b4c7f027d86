#!/bin/bash
# bench_ffmpeg.sh ROUNDS FILE: copies a DV stream of 80 seconds into an AVI file with marvo-bench --copy and
# with ffmpeg -c copy in turn, after one round that does not count. FILE gets a line "SECONDS OF MARVO,
# SECONDS OF FFMPEG" per round. ffmpeg's times begin when the files are open and end when all is written;
# marvo's have opening and closing them in it.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

[[ $# -eq 2 && $1 -gt 0 ]] || die "usage: bench_ffmpeg.sh ROUNDS FILE"
rounds=$1 result=$2
folder=$root/build/win32/scratch/bench_ffmpeg
frame_bytes=144000 frames=2000
trap 'rm -rf "$folder"' EXIT

make_stream() {
    local copies
    mkdir -p "$folder"
    for ((copies = 0; copies < 10; copies++)); do cat "$root/build/streams/pal.dv"; done >"$folder/long.dv"
    [[ $(stat -c %s "$folder/long.dv") -eq $((frames * frame_bytes)) ]] ||
        die "build/streams/pal.dv is not whole; remove it, scripts/make_streams.sh makes it again."
}

copy_with_marvo() {
    rm -f "$folder"/*.avi
    MARVO_CWD=$folder "$root/scripts/run.sh" win32 marvo-bench --copy long.dv marvo.avi | tr -d '\r'
}

copy_with_ffmpeg() {
    local log
    rm -f "$folder"/*.avi
    log=$(ffmpeg -nostdin -hide_banner -nostats -benchmark -f dv -i "$folder/long.dv" \
        -map 0:v -c copy "$folder/ffmpeg.avi" 2>&1) || die "ffmpeg could not copy the stream: $log"
    [[ $log =~ rtime=([0-9.]+)s ]] || die "ffmpeg told no time."
    printf '%s\n' "${BASH_REMATCH[1]}"
}

# A copy that lost frames would be a quick one.
check_copy() {
    local counted
    counted=$(ffprobe -v error -select_streams v -count_packets -show_entries stream=nb_read_packets \
        -of default=nokey=1:noprint_wrappers=1 "$1")
    [[ $counted -eq $frames ]] || die "$1 holds $counted frames instead of $frames."
}

say "comparing with ffmpeg"
make_stream
mkdir -p "$(dirname "$result")"
copy_with_marvo >/dev/null
check_copy "$folder/marvo.avi"
copy_with_ffmpeg >/dev/null
check_copy "$folder/ffmpeg.avi"
# Who comes second may have to wait for what the first has left to be written, so the order changes.
for ((round = 0; round < rounds; round++)); do
    if ((round % 2 == 0)); then
        marvo_s=$(copy_with_marvo)
        ffmpeg_s=$(copy_with_ffmpeg)
    else
        ffmpeg_s=$(copy_with_ffmpeg)
        marvo_s=$(copy_with_marvo)
    fi
    printf '%s %s\n' "$marvo_s" "$ffmpeg_s"
done >"$result"
