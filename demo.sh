#!/bin/bash
# Sets up what is missing, builds the 32-bit product, and plays one instant-replay session on a simulated DV
# camera: live, record, pause, replay, slow motion, backwards, seek, live, stop. Leaves everything in
# out/demo/ and checks it against the camera's stream.
set -euo pipefail
cd -P "${BASH_SOURCE[0]%/*}"
. scripts/common.sh

out=out/demo

usage() {
    cat <<'END'
demo.sh [--window]

  --window  plays in a window on your display instead of an invisible one

Leaves in out/demo/: source.dv (the camera's stream), recording.raw and recording.avi (two recordings as the
engine wrote them; any video player opens the second), PNG screenshots, report.json (every step with time,
result and frame numbers), session.log and marvo.log.
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

prepare_output() {
    rm -rf "$out"
    mkdir -p "$out"
    cp build/streams/pal.dv "$out/source.dv"
    printf 'stream = source.dv\nlog = camera.log\n' >"$out/camera.txt"
}

play() {
    local status=0
    MARVO_WINDOW=$window MARVO_CAMERA='R:\out\demo\camera.txt' MARVO_CWD=$out MARVO_TIMEOUT=180 \
        scripts/run.sh win32 marvo-host --script 'R:\host\demo.script' --report report.json --size 720x576 \
        >"$out/session.log" 2>&1 || status=$?
    if [[ ! -s $out/report.json ]]; then
        tail -n 20 "$out/session.log" >&2
        die "the replay application left no report (exit status $status); its last words are above."
    fi
    grep FAIL "$out/session.log" >&2 || true
}

make_pictures() {
    local shot
    for shot in "$out"/*.bmp; do
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
build_preset win32 marvo-host marvo-devices
prepare_output
step "play a session (about 30 s)"
play
make_pictures
step "check what it left in $out/"
status=0
python3 scripts/check_demo.py "$out" || status=$?
if ((status == 0)); then
    step "all held; look at $out/*.png"
else
    step "something did not hold; $out/session.log and $out/marvo.log tell more"
fi
exit "$status"
