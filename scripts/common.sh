# Shared by all scripts (sourced, not run): where things lie, how to speak, and the environment of each Wine.
# shellcheck shell=bash

root=$(cd -P "${BASH_SOURCE[0]%/*}/.." && pwd -P)
wine_dir=$root/build/wine

say() { printf '%s\n' "$*" >&2; }

die() {
    say "${0##*/}: $*"
    exit 1
}

check_target() {
    [[ ${1:-} == win32 || ${1:-} == win64 ]] || die "the target must be win32 or win64, not '${1:-}'."
}

# Sets $build, the name of a preset and of its folder in build/ (win32, win64-debug), and $target, the Windows
# that it is for.
# choose_build PRESET
choose_build() {
    # shellcheck disable=SC2034 # for the caller
    build=$1
    target=${1%%-*}
    check_target "$target"
}

# Background servers must not keep a caller's pipe or lock open, so every descriptor but the standard three is
# closed and those lead nowhere. Runs the command in a session of its own with descriptor 3 writing to a file;
# its process id is in $!.
# start_detached LOG FILE COMMAND...
start_detached() {
    local log=$1 file=$2
    shift 2
    (
        close_inherited_descriptors
        exec setsid "$@" 3>"$file"
    ) </dev/null >>"$log" 2>&1 &
}

close_inherited_descriptors() {
    local path fd
    for path in /proc/self/fd/*; do
        fd=${path##*/}
        # 255 is the shell's own copy of the script.
        ((fd <= 2 || fd == 255)) || eval "exec $fd>&-"
    done
}

# with_lock NAME COMMAND...: runs a function while no other script of this repository holds the lock.
with_lock() {
    local name=$1 lock status=0
    shift
    mkdir -p "$wine_dir"
    exec {lock}>"$wine_dir/$name.lock"
    flock "$lock"
    "$@" || status=$?
    exec {lock}>&-
    return "$status"
}

# Sets $wine and exports what that target's Wine needs. Nothing of ours or of a program under test may land in
# the user's home, so HOME lies in the repository as well.
# wine_environment TARGET [PREFIX]
wine_environment() {
    local target=$1 tree=$wine_dir/tree32
    export WINEPREFIX=${2:-$wine_dir/prefix-$target}
    export WINEARCH=$target
    export WINEDEBUG=${WINEDEBUG:--all}
    # Without a UTF-8 locale Wine cannot create files with all letters, and a user's own would choose the code
    # page.
    export LC_ALL=C.UTF-8
    # winedbg would hang on a crash instead of ending the program; .NET and HTML are never wanted.
    export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree=;mshtml=;winedbg.exe=}
    # Programs outside of a window session have none to ask; a window session needs the user's own.
    export XAUTHORITY=${XAUTHORITY:-${HOME:-/}/.Xauthority}
    export HOME=$wine_dir/home
    export XDG_CACHE_HOME=$HOME/.cache XDG_CONFIG_HOME=$HOME/.config XDG_DATA_HOME=$HOME/.local/share
    if [[ $target == win32 ]]; then
        wine=$tree/usr/lib/wine/wine
        export WINESERVER=$tree/usr/lib/wine/wineserver32
        export LD_LIBRARY_PATH=$tree/usr/lib/i386-linux-gnu:$tree/lib/i386-linux-gnu
        # Without it the software GL driver is not found, and the first use of Direct3D crashes.
        export LIBGL_DRIVERS_PATH=$tree/usr/lib/i386-linux-gnu/dri
    else
        wine=/usr/lib/wine/wine64
        export WINESERVER=/usr/lib/wine/wineserver64
        unset LD_LIBRARY_PATH LIBGL_DRIVERS_PATH
    fi
    export WINELOADER=$wine
}

# Ids of the processes of ours that run in a prefix, its wineserver included.
# prefix_processes PREFIX
prefix_processes() {
    local id
    grep -lszxF "WINEPREFIX=$1" /proc/[0-9]*/environ | while IFS=/ read -r _ _ id _; do
        [[ $id == "$$" ]] || printf '%s\n' "$id"
    done || true
}

# Ends every process of a prefix: first as Wine would, then what is left by its id.
# end_prefix_processes TARGET PREFIX
end_prefix_processes() (
    [[ -d $2 ]] || return 0
    wine_environment "$1" "$2"
    if [[ -x $WINESERVER ]]; then
        timeout 10 "$WINESERVER" -k 2>/dev/null || true
        timeout 10 "$WINESERVER" -w 2>/dev/null || true
    fi
    # grep would find itself by what it inherits.
    unset WINEPREFIX
    local pids tries
    for ((tries = 0; tries < 40; tries++)); do
        mapfile -t pids < <(prefix_processes "$2")
        ((${#pids[@]} > 0)) || return 0
        kill -9 "${pids[@]}" 2>/dev/null || true
        sleep 0.05
    done
)

# When a process started (in clock ticks since boot), which with its id names it for good; empty when there is
# none of that name, or it is dead and only waits to be cleared away. Sets $started.
# find_start ID NAME
find_start() {
    local fields
    started=''
    [[ -r /proc/$1/stat ]] && read -ra fields <"/proc/$1/stat" 2>/dev/null || return 0
    [[ ${fields[1]} != "($2)" || ${fields[2]} == Z ]] || started=${fields[21]}
}

# Ends the display and waits until it is gone.
end_display() {
    local tries
    display_runs || return 0
    kill "$display_pid"
    for ((tries = 0; tries < 100; tries++)); do
        display_runs || return 0
        sleep 0.05
    done
    kill -9 "$display_pid" 2>/dev/null || true
}

# Whether the display named in build/wine/display still runs. Sets $display_number and $display_pid. Starts no
# program, since every run asks this.
# shellcheck disable=SC2034 # the number is for the caller
display_runs() {
    local display_start='' started
    [[ -r $wine_dir/display ]] || return 1
    read -r display_number display_pid display_start <"$wine_dir/display" || return 1
    find_start "$display_pid" Xvfb
    [[ -n $started && $started == "$display_start" ]]
}

# Configures a preset and builds it, or only the named programs and what they need; silent unless something is
# wrong.
# build_preset PRESET [PROGRAM...]
build_preset() {
    local preset=$1 log=$root/build/$1/configure.log
    shift
    mkdir -p "$root/build/$preset"
    if ! (cd "$root" && cmake --preset "$preset") >"$log" 2>&1; then
        cat "$log" >&2
        die "$preset could not be configured (cmake's message is above)."
    fi
    (cd "$root" && cmake --build --preset "$preset" -- --quiet "$@") >&2 ||
        die "$preset does not build (the compiler's messages are above)."
}

# A line of progress with the seconds since the script began.
step() { printf '[%3d s] %s\n' "$SECONDS" "$*"; }
