#!/bin/bash
# wine_prefix.sh win32|win64: makes build/wine/prefix-<target>, the Windows that target's programs run in.
# Drive R: is the repository; there is no drive Z:, so no program can reach the rest of the machine.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

# Raise it when the making changes: prefixes made before are then made again.
recipe=1

check_target "${1:-}"
target=$1
prefix=$wine_dir/prefix-$target
work=$prefix.new

# What is left over when the set-up is killed here must not hold its lock.
run_quietly() (
    close_inherited_descriptors
    exec timeout -k 5 180 setsid "$wine" "$@" </dev/null >>"$wine_dir/prefix-$target.log" 2>&1
)

give_up() {
    end_prefix_processes "$target" "$work"
    tail -n 20 "$wine_dir/prefix-$target.log" >&2
    die "Wine's $target prefix could not be made (its messages are above). Is the disk full? Free 2 GB in" \
        "$root and run this again."
}

link_drives() {
    rm -f "$1/dosdevices/z:"
    ln -sfn "$root" "$1/dosdevices/r:"
}

build_prefix() (
    say "setup: making the Wine prefix for $target"
    end_prefix_processes "$target" "$work"
    end_prefix_processes "$target" "$prefix"
    rm -rf "$work" "$prefix" "$wine_dir/prefix-$target.log"
    mkdir -p "$work"
    wine_environment "$target" "$work"
    # No menu entries on the user's desktop, and no display needed.
    export WINEDLLOVERRIDES="$WINEDLLOVERRIDES;winemenubuilder.exe=" DISPLAY=
    run_quietly wineboot -i || give_up
    # As a network drive the repository is never chosen where the engine looks for the fixed drive with most
    # space.
    run_quietly reg add 'HKLM\Software\Wine\Drives' /v r: /t REG_SZ /d network /f || give_up
    end_prefix_processes "$target" "$work"
    link_drives "$work"
    printf '%s\n' "$recipe" >"$work/marvo-recipe"
    mv "$work" "$prefix"
)

if [[ ! -r $prefix/marvo-recipe || $(<"$prefix/marvo-recipe") != "$recipe" ]]; then
    build_prefix
fi
# A repository that was moved or copied takes its prefixes along.
if [[ ! $prefix/dosdevices/r: -ef $root ]]; then
    end_prefix_processes "$target" "$prefix"
    link_drives "$prefix"
fi
