#!/bin/bash
# Starts this repository's invisible X display unless it runs already. Its number and process id are then in
# build/wine/display.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

start_display() {
    local answer=$wine_dir/display.new number='' started tries pid
    ! display_runs || return 0
    rm -f "$answer"
    # Xvfb looks for a free number itself and writes it when it accepts programs.
    start_detached "$wine_dir/display.log" "$answer" \
        Xvfb -displayfd 3 -screen 0 1280x1024x24 -noreset -nolisten tcp
    pid=$!
    for ((tries = 0; tries < 200; tries++)); do
        if [[ -s $answer ]]; then
            read -r number <"$answer"
            break
        fi
        sleep 0.05
    done
    if [[ -z $number ]]; then
        kill "$pid" 2>/dev/null || true
        die "the invisible display (Xvfb) did not start; $wine_dir/display.log tells why."
    fi
    # setsid became Xvfb, so the id is Xvfb's own.
    find_start "$pid" Xvfb
    printf '%s %s %s\n' "$number" "$pid" "$started" >"$answer"
    mv "$answer" "$wine_dir/display"
}

display_runs || with_lock display start_display
