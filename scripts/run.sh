#!/bin/bash
# run.sh PRESET PROGRAM [ARGUMENTS...]
#
# Runs a Windows program of a preset (win32, win64, win32-debug, ...) under its target's Wine; the exit status
# is the program's (its low 8 bits). PROGRAM is a file inside the repository, or the name of one in
# build/<preset>/bin. The repository is drive R:, and the current directory stays what it is when it lies
# inside the repository.
#
# Environment:
#   MARVO_CWD=DIR           runs in this directory of the repository, made when missing
#   MARVO_TEST_RESULT=FILE  a GoogleTest program writes its results there (JSON); removed first
#   MARVO_TIMEOUT=SECONDS   ends the program after that time; the exit status is then 124
#   MARVO_WINDOW=1          windows open on $DISPLAY instead of the invisible display
#   MARVO_STREAMS=DIR       where the test streams lie, as a Windows path (R:\build\streams)
#   MARVO_CAMERA=FILE       what the simulated camera plays, as a Windows path (R:\build\streams\camera.txt)
#   WINEDEBUG, WINEDLLOVERRIDES  as Wine takes them
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

# Sets $inside to an existing directory's true path, which must lie in the repository.
# need_inside WHAT DIR
need_inside() {
    inside=$(cd -P "$2" 2>/dev/null && pwd -P) || die "$1: there is no directory $2."
    [[ $inside/ == "$root"/* ]] ||
        die "$1 lies outside of the repository ($inside). Windows programs see only $root, as drive R:."
}

# Sets $dos to the Windows path of a file whose directory exists in the repository.
# dos_path WHAT FILE
dos_path() {
    local folder=.
    [[ $2 != */* ]] || folder=${2%/*}/
    need_inside "$1" "$folder"
    local inner=${inside#"$root"}/${2##*/}
    dos="R:${inner//\//\\}"
}

find_program() {
    local candidate
    for candidate in "$1" "$root/build/$build/bin/$1" "$root/build/$build/bin/$1.exe"; do
        if [[ -f $candidate ]]; then
            dos_path "the program" "$candidate"
            program=$dos
            return
        fi
    done
    die "there is no program $1, neither here nor in build/$build/bin. Has it been built" \
        "(cmake --build --preset $build)?"
}

prepare_result() {
    [[ -n ${MARVO_TEST_RESULT:-} ]] || return 0
    mkdir -p "${MARVO_TEST_RESULT%/*}"
    rm -f "$MARVO_TEST_RESULT"
    dos_path MARVO_TEST_RESULT "$MARVO_TEST_RESULT"
    export GTEST_OUTPUT=json:$dos
}

enter_directory() {
    local wanted=${MARVO_CWD:-$PWD}
    if [[ -n ${MARVO_CWD:-} ]]; then
        mkdir -p "$wanted"
    elif [[ $(pwd -P)/ != "$root"/* ]]; then
        wanted=$root/build/$build/scratch
        mkdir -p "$wanted"
    fi
    need_inside "the directory to run in" "$wanted"
    cd "$inside"
}

prepare_display() {
    if [[ -n ${MARVO_WINDOW:-} ]]; then
        [[ -n ${DISPLAY:-} ]] || die "MARVO_WINDOW is set, but there is no display (DISPLAY is empty)."
        return
    fi
    display_runs || "$root/scripts/display.sh"
    display_runs || die "the invisible display ended at once; $wine_dir/display.log tells why."
    export DISPLAY=:$display_number
    unset WAYLAND_DISPLAY
}

# A wineserver that has no program for 60 s ends. Whether it still runs is not asked, only when it was last
# used.
server_is_warm() {
    local used=0
    [[ -r $used_file ]] && read -r used <"$used_file" || return 1
    ((EPOCHSECONDS - used >= 0 && EPOCHSECONDS - used < 30))
}

# The first program of a session starts Wine's services, which live on with its standard output. So that first
# program must not be the caller's, whose pipe would stay open. It makes later starts fast, too.
warm_server() {
    ! server_is_warm || return 0
    (
        close_inherited_descriptors
        "$WINESERVER" -p60
        exec timeout -k 5 180 "$wine" cmd /c exit
    ) </dev/null >>"$wine_dir/server-$target.log" 2>&1 || true
    note_use
}

note_use() { printf '%s\n' "$EPOCHSECONDS" >"$used_file"; }

devices_are_registered() {
    [[ ! -f $devices || ($registered -ef $devices && ! $devices -nt $registered.time) ]]
}

# The stand-ins for capture device, splitter and decoder, once after each build of them, and when another
# preset's are those that COM knows.
register_devices() {
    ! devices_are_registered || return 0
    timeout -k 5 60 "$wine" regsvr32 /s "R:\\build\\$build\\bin\\marvo-devices.dll" </dev/null >&2 ||
        die "the simulated devices (build/$build/bin/marvo-devices.dll) could not be registered. Build" \
            "them again."
    ln -sfn "$devices" "$registered"
    touch -r "$devices" "$registered.time"
}

prefix_is_complete() {
    local prefix=$wine_dir/prefix-$target
    [[ -r $prefix/marvo-recipe && $prefix/dosdevices/r: -ef $root ]]
}

[[ $# -ge 2 ]] || die "usage: run.sh PRESET PROGRAM [ARGUMENTS...]"
choose_build "$1"
find_program "$2"
shift 2

prefix_is_complete || "$root/scripts/setup.sh"
used_file=$wine_dir/server-$target.used
devices=$root/build/$build/bin/marvo-devices.dll
registered=$wine_dir/prefix-$target/marvo-devices

prepare_result
prepare_display
enter_directory
wine_environment "$target"
export MARVO_STREAMS=${MARVO_STREAMS:-R:\\build\\streams}
export MARVO_CAMERA=${MARVO_CAMERA:-'R:\build\streams\camera.txt'}
server_is_warm || with_lock "server-$target" warm_server
devices_are_registered || with_lock "devices-$target" register_devices
note_use

if [[ -n ${MARVO_TIMEOUT:-} ]]; then
    exec timeout -k 5 "$MARVO_TIMEOUT" "$wine" "$program" "$@"
fi
exec "$wine" "$program" "$@"
