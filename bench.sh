#!/bin/bash
# bench.sh [ARGUMENTS...]: sets up what is missing, builds the 32-bit release and runs the measurements, which
# get the arguments (--help tells which). They print a table and leave it in out/bench.json; the exit status
# is 1 when a target is missed. The figures are this machine's, under Wine.
set -euo pipefail
cd -P "${BASH_SOURCE[0]%/*}"
. scripts/common.sh

trap '"$root/scripts/stop.sh"' EXIT
scripts/setup.sh python3-xlib
if [[ -x scripts/make_streams.sh ]]; then
    scripts/make_streams.sh build/streams >&2
fi
build_preset win32 marvo-bench marvo-replay marvo-devices
[[ -f build/win32/bin/marvo-bench.exe ]] ||
    die "there is no build/win32/bin/marvo-bench.exe after the build. The folder bench/ must hold its" \
        "CMakeLists.txt."
compared=()
rounds=11 moves=300
[[ " $* " != *" --quick "* ]] || { rounds=5; moves=60; }

# wanted GROUP: whether the arguments ask for a group.
wanted() {
    [[ " $arguments " != *" --help "* &&
        (" $arguments " != *" --only "* || " $arguments " == *" --only $1 "*) ]]
}
arguments=$*
if wanted avi; then
    scripts/bench_ffmpeg.sh "$rounds" build/win32/scratch/bench/ffmpeg.txt
    compared=(--ffmpeg 'R:\build\win32\scratch\bench\ffmpeg.txt')
fi
if wanted decoder; then
    scripts/bench_decoder.sh "$rounds" build/win32/scratch/bench/ffmpeg_decoding.txt
    compared+=(--ffmpeg-decoding 'R:\build\win32\scratch\bench\ffmpeg_decoding.txt')
fi
if wanted scrub; then
    scripts/bench_scrub.sh "$moves" build/win32/scratch/bench/scrub.txt
    compared+=(--scrub 'R:\build\win32\scratch\bench\scrub.txt')
fi
export MARVO_CWD=build/win32/scratch/bench
scripts/run.sh win32 marvo-bench --out 'R:\out\bench.json' "${compared[@]}" "$@"
