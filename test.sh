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

The results of each part are left in build/<target>/results/*.json. Exit status 0 when every test passed.
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

# Runs one target's tests; the counts are added to $total_passed and $total_failed and kept for the end.
run_tests() {
    local target=$1 status=0 counts passed failed skipped
    step "test $target"
    rm -rf "build/$target/results" "build/$target/scratch"
    rm -f "build/$target/Testing/Temporary/LastTestsFailed.log"
    ctest --preset "$target" ${filter:+-R "$filter"} --no-tests=ignore -j "$jobs" </dev/null || status=$?
    counts=$(scripts/count_results.sh "$target" "$status" "$filter") || die "the results of $target could not be counted."
    read -r passed failed skipped <<<"$counts"
    ((skipped == 0)) || step "$target: $skipped skipped"
    summary+=("$target: $passed passed, $failed failed")
    total_passed=$((total_passed + passed))
    total_failed=$((total_failed + failed))
}

read_options "$@"
jobs=${MARVO_JOBS:-$((2 * $(nproc)))}
total_passed=0 total_failed=0 summary=()

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
printf '%s\n' "${summary[@]}" "$total_passed passed, $total_failed failed"
((total_failed == 0 && total_passed > 0))
