#!/bin/bash
# Sets up what is missing, builds the 32-bit product, and plays an evening of instant replay on a simulated DV
# camera: first the engine by a script, every frame of it checked; then the application by keys and mouse.
# Leaves everything in out/demo/ and checks it against the camera's stream.
set -euo pipefail
cd -P "${BASH_SOURCE[0]%/*}"
. scripts/common.sh
. scripts/replay_session.sh

out=out/demo

usage() {
    cat <<'END'
demo.sh [--window]

  --window  plays in a window on your display instead of an invisible one; the application is then driven by
            its own keys and your mouse pointer, so let go of them for two minutes

Leaves in out/demo/:
  engine/   a scripted session of marvo-host: source.dv (the camera's stream), recording.raw and recording.avi
            (two recordings as the engine wrote them; any video player opens the second), PNG screenshots,
            report.json (every step with time, result and frame numbers), session.log and marvo.log
  evening/  an evening at marvo-replay: its recordings and clips, export.avi (a clip with its sound, for any
            video player), PNG screenshots, session.json (every step and what was seen)
  full/     the same on a disk that takes no more after a while
END
}

read_options() {
    window=''
    case ${1:-} in
        '') ;;
        --window)
            [[ -n ${DISPLAY:-} ]] ||
                die "--window needs a display, but DISPLAY is empty. Without --window none is needed."
            window=1
            ;;
        --help | -h)
            usage
            exit 0
            ;;
        *) die "unknown option '$1'; ./demo.sh --help lists them." ;;
    esac
}

play_engine() {
    local status=0
    prepare_camera "$out/engine" ''
    MARVO_CAMERA='R:\out\demo\engine\camera.txt' MARVO_CWD=$out/engine \
        MARVO_TIMEOUT=180 scripts/run.sh win32 marvo-host \
        --script 'R:\host\demo.script' --report report.json --size 720x576 \
        >"$out/engine/session.log" 2>&1 || status=$?
    if [[ ! -s $out/engine/report.json ]]; then
        tail -n 20 "$out/engine/session.log" >&2
        die "the engine's session left no report (exit status $status); its last words are above."
    fi
    grep FAIL "$out/engine/session.log" >&2 || true
    local shot
    for shot in "$out"/engine/*.bmp; do
        convert "$shot" "${shot%.bmp}.png"
        rm "$shot"
    done
}

read_options "$@"
trap '"$root/scripts/stop.sh"' EXIT
step "set up"
scripts/setup.sh
scripts/make_streams.sh build/streams
step "build"
build_preset win32 marvo-host marvo-replay marvo-devices
display=${DISPLAY:-}
[[ -n $window ]] || choose_invisible_display
export MARVO_WINDOW=$window
failed=0
step "the engine: a scripted session (about 30 s)"
play_engine
python3 scripts/check_demo.py engine "$out/engine" || failed=1
step "the application: an evening by keys and mouse (about 2 minutes)"
prepare_camera "$out/evening" $'lose = 1750:4000\n'
play "$out/evening" evening 240 || failed=1
python3 scripts/check_demo.py evening "$out/evening" || failed=1
step "the application: a disk that becomes full"
# Files of at most 40 MB; what is beyond fails as on a full disk. The signal for it is ignored.
trap '' XFSZ
prepare_camera "$out/full" ''
play "$out/full" full 240 prlimit --fsize=40000000 || failed=1
if ((failed == 0)); then
    step "all held; look at $out/*/*.png"
else
    step "something did not hold; the folders in $out/ have logs"
fi
exit "$failed"
