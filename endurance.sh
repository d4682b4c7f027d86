#!/bin/bash
# Days of video in hours: the whole engine on a simulated camera that runs many times as fast as a real one.
set -euo pipefail
cd -P "${BASH_SOURCE[0]%/*}"
. scripts/common.sh

usage() {
    cat <<'END'
endurance.sh [--target PRESET] [--plot] [ARGUMENTS...]

Sets up what is missing, builds and runs marvo-endurance, which gets the arguments (--hours 48, --speed 40,
--seed 1; --help tells more). It records, replays and stops at random, compares every recording with the
camera's stream, and notes after each session what the process holds, in out/endurance-PRESET.csv. Exit
status 0 when no frame was missing or wrong.

  --target PRESET win32 (the default) or win64
  --plot          only draws docs/endurance.svg of the notes that are there, with gnuplot
END
}

choose_build win32
plot=0 arguments=()
while (($# > 0)); do
    case $1 in
        --target)
            choose_build "${2:-}"
            shift
            ;;
        --plot) plot=1 ;;
        --help | -h)
            usage
            exit 0
            ;;
        *) arguments+=("$1") ;;
    esac
    shift
done

if ((plot)); then
    scripts/setup.sh gnuplot-nox
    gnuplot scripts/endurance.gnuplot
    say "endurance.sh: see docs/endurance.svg"
    exit 0
fi

trap '"$root/scripts/stop.sh"' EXIT
scripts/setup.sh
scripts/make_streams.sh build/streams >&2
# shellcheck disable=SC2154 # choose_build sets it
build_preset "$build" marvo-endurance marvo-devices
mkdir -p out
MARVO_CWD=build/$build/scratch/endurance scripts/run.sh "$build" marvo-endurance \
    --out "R:\\out\\endurance-$build.csv" "${arguments[@]}"
