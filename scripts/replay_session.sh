# For scripts that play the operator of marvo-replay (sourced behind common.sh, not run).
# shellcheck shell=bash disable=SC2154 # $root and $wine_dir are common.sh's

# Sets $display to the invisible display, which is started when it does not run.
choose_invisible_display() {
    display_runs || "$root/scripts/display.sh"
    display_runs || die "the invisible display ended at once; $wine_dir/display.log tells why."
    # shellcheck disable=SC2034 # for the caller; display_runs sets the number
    display=:$display_number
}

# prepare_camera FOLDER LINES: makes the folder anew, with a camera that plays FOLDER/source.dv and does what
# the lines say.
prepare_camera() {
    rm -rf "${1:?}"
    mkdir -p "$1"
    cp "$root/build/streams/pal.dv" "$1/source.dv"
    printf 'stream = source.dv\nlog = camera.log\n%s' "$2" >"$1/camera.txt"
}

# start_replay FOLDER SECONDS [COMMAND...]: starts marvo-replay with the folder's camera, in it, for so long
# at the most, with COMMAND in front; demo_session.py finds its remote port in the settings. Its process is in
# $replay.
start_replay() {
    local folder=$1 seconds=$2 inner
    shift 2
    inner=$(cd -P "$folder" && pwd -P)
    inner=${inner#"$root"}
    printf '[marvo-replay]\ndeinterlace = no\nring = 250\nrolling = 1\nport = %s\ntoken = demo\n' \
        $((47000 + RANDOM % 1000)) >"$folder/marvo-replay.ini"
    MARVO_CAMERA="R:${inner//\//\\}\\camera.txt" MARVO_CWD=$folder MARVO_TIMEOUT=$seconds \
        "$@" "$root/scripts/run.sh" win32 marvo-replay >"$folder/output.txt" 2>&1 &
    # shellcheck disable=SC2034 # for the caller
    replay=$!
}

# play FOLDER EVENING SECONDS [COMMAND...]: an evening of demo_session.py at marvo-replay, started as above on
# $display. False when something did not hold.
play() {
    local folder=$1 evening=$2 held=0
    shift 2
    start_replay "$folder" "$@"
    python3 "$root/scripts/demo_session.py" "$evening" "$folder" "$display" || held=1
    wait "$replay" || {
        say "marvo-replay ended with status $?:"
        tail -n 20 "$folder/output.txt" >&2
        held=1
    }
    return "$held"
}
