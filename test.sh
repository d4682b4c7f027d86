#!/bin/bash
# Sets up what is missing, builds both targets and runs every test on both. The last lines are the counts.
set -euo pipefail
cd -P "${BASH_SOURCE[0]%/*}"
. scripts/common.sh

usage() {
    cat <<'END'
test.sh [--target win32|win64] [--filter REGEX] [--long]

  --target T      only this target (default: win32, then win64)
  --filter REGEX  only the parts whose name matches, as for ctest -R (core, video.0, ...)
  --long          the slow variants of the tests as well
  MARVO_JOBS=N    in the environment: parts at the same time (default: two per processor)

A part that fails is run once more, alone, and its second results count: a machine that is busy with other things does
not spoil a run. What failed at first and passed then is named at the end ("passed when run again alone"), so that it is
seen. A part that fails twice has failed.

The results of each part are left in build/<target>/results/*.json, those of a failed first run in results/first/. Exit
status 0 when every test passed.
END
}

read_options() {
    targets=(win32 win64) filter=''
    while (($# > 0)); do
        case $1 in
            --target)
                check_target "${2:-}"
                targets=("$2")
                shift
                ;;
            --filter)
                filter=${2:-}
                [[ -n $filter ]] || die "--filter needs a regular expression, for instance --filter core."
                shift
                ;;
            --long) export MARVO_LONG=1 ;;
            --help | -h)
                usage
                exit 0
                ;;
            *) die "unknown option '$1'; ./test.sh --help lists them." ;;
        esac
        shift
    done
}

# Runs the parts of a target that match a regular expression (empty: all), so many at the same time, and counts the
# results of all that are wanted. Sets $status, $passed, $failed and $skipped.
# run_parts TARGET REGEX JOBS
run_parts() {
    local target=$1 counts
    status=0
    rm -f "build/$target/Testing/Temporary/LastTestsFailed.log"
    ctest --preset "$target" ${2:+-R "$2"} --no-tests=ignore -j "$3" </dev/null || status=$?
    counts=$(scripts/count_results.sh "$target" "$status" "$filter") || die "the results of $target could not be counted."
    read -r passed failed skipped <<<"$counts"
}

# Gives the parts of a target that have failed their second chance, and notes in $second_chance what took it.
run_failed_parts_again() {
    local target=$1 failures=build/$1/failed.tsv first=build/$1/results/first part parts name
    mkdir -p "$first"
    mv "$failures" "$first/failed.tsv"
    mapfile -t parts < <(cut -f 1 "$first/failed.tsv" | sort -u)
    for part in "${parts[@]}"; do
        mv "build/$target/results/$part.json" "$first/" 2>/dev/null || true
    done
    step "test $target again, alone: ${parts[*]}"
    # Ends what a part that hung has left, too.
    scripts/stop.sh
    run_parts "$target" "^($(IFS='|' && printf '%s' "${parts[*]//./\\.}"))\$" 1
    while IFS=$'\t' read -r part name; do
        cut -f 1 "$failures" | grep -qxF "$part" || second_chance+=("$target: passed when run again alone: $name")
    done <"$first/failed.tsv"
}

# Runs one target's tests; the counts are added to $total_passed and $total_failed and kept for the end.
run_tests() {
    local target=$1 status passed failed skipped
    step "test $target"
    rm -rf "build/$target/results" "build/$target/scratch"
    run_parts "$target" "$filter" "$jobs"
    if [[ -s build/$target/failed.tsv ]] && ((status == 0 || status == 8)); then
        run_failed_parts_again "$target"
    fi
    ((skipped == 0)) || step "$target: $skipped skipped"
    summary+=("$target: $passed passed, $failed failed")
    total_passed=$((total_passed + passed))
    total_failed=$((total_failed + failed))
}

read_options "$@"
jobs=${MARVO_JOBS:-$((2 * $(nproc)))}
total_passed=0 total_failed=0 summary=() second_chance=()

step "set up"
trap '"$root/scripts/stop.sh"' EXIT
scripts/setup.sh
if [[ -x scripts/make_streams.sh ]]; then
    step "test streams"
    scripts/make_streams.sh build/streams
fi
for target in "${targets[@]}"; do
    step "build $target"
    build_target "$target"
done
for target in "${targets[@]}"; do
    run_tests "$target"
done

step "done"
if ((total_passed + total_failed == 0)); then
    say "test.sh: no test ran${filter:+: nothing matches $filter}. That counts as a failure."
fi
((${#second_chance[@]} == 0)) || printf '%s\n' "${second_chance[@]}"
printf '%s\n' "${summary[@]}" "$total_passed passed, $total_failed failed"
((total_failed == 0 && total_passed > 0))
