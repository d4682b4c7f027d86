#!/bin/bash
# Sets up what is missing, builds both targets and runs every test on both. The last lines are the counts.
set -euo pipefail
cd -P "${BASH_SOURCE[0]%/*}"
. scripts/common.sh

usage() {
    cat <<'END'
test.sh [--target PRESET] [--filter REGEX] [--long]

  --target PRESET only this one: win32, win64, win32-debug, ... (default: win32, then win64)
  --filter REGEX  only the parts whose name matches, as for ctest -R (core, video.0, ...)
  --long          the slow variants of the tests as well
  MARVO_JOBS=N    in the environment: parts at the same time (default: two per processor)
  MARVO_ORDER=N   in the environment: the seed of the order of win64's tests (default: the day's)

The 64-bit targets run the tests of each program in an order drawn anew every day; it is told, and stays the
same when a part is run again.

A part that fails is run once more, alone, and its second results count: a machine that is busy with other
things does not spoil a run. What failed at first and passed then is named at the end ("passed when run again
alone"), so that it is seen. A part that fails twice has failed, and so has one that ran no test.

build/<preset>/results/ keeps ctest's report (ctest.xml) and the results of each part (*.json); when parts had
to be run again, these are the second run's, and those of the first are in results/first/. Exit status 0 when
every test passed.
END
}

read_options() {
    targets=(win32 win64) filter=''
    while (($# > 0)); do
        case $1 in
            --target)
                choose_build "${2:-}"
                targets=("$build")
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

# Runs parts of a preset's tests and keeps ctest's report beside their results.
# run_parts PRESET CTEST_OPTIONS...
run_parts() {
    local preset=$1 report=$root/build/$1/results/ctest.xml status=0
    shift
    ctest --preset "$preset" --output-junit "$report" "$@" </dev/null || status=$?
    # 8 only says that a test failed; after anything else nothing may look whole.
    if ((status != 0 && status != 8)); then
        say "$preset: ctest itself ended with status $status"
        total_failed=$((total_failed + 1))
    fi
    return "$status"
}

# Gives the parts that have failed their second chance, one after the other; ctest's own repetition would come
# at once, beside the other parts that may have been the reason. The first run's results are kept.
run_failed_parts_again() {
    local preset=$1 results=build/$1/results
    mv "$results" "$results.first"
    mkdir "$results"
    mv "$results.first" "$results/first"
    step "test $preset again, what has failed, one part after the other"
    # Ends what a part that hung has left, too.
    scripts/stop.sh
    run_parts "$preset" --rerun-failed -j 1 || true
}

# Runs one preset's tests; the counts are added to $total_passed and $total_failed and kept for the end.
run_tests() {
    local preset=$1 results=build/$1/results counts passed failed skipped
    # Every test makes what it needs, so the order must not matter; the other target keeps the files' own.
    unset GTEST_SHUFFLE
    [[ $preset != win64* ]] || export GTEST_SHUFFLE=1 GTEST_RANDOM_SEED=$order
    step "test $preset${GTEST_SHUFFLE:+ in the order that MARVO_ORDER=$order draws}"
    rm -rf "$results" "build/$preset/scratch"
    mkdir -p "$results"
    run_parts "$preset" ${filter:+-R "$filter"} --no-tests=ignore -j "$jobs" || {
        [[ $? -ne 8 ]] || run_failed_parts_again "$preset"
    }
    mapfile -t counts < <(scripts/test_results.py "$results")
    ((${#counts[@]} > 0)) || die "the results of $preset could not be counted."
    read -r passed failed skipped <<<"${counts[0]}"
    second_chance+=("${counts[@]:1}")
    ((skipped == 0)) || step "$preset: $skipped skipped"
    summary+=("$preset: $passed passed, $failed failed")
    total_passed=$((total_passed + passed))
    total_failed=$((total_failed + failed))
}

read_options "$@"
jobs=${MARVO_JOBS:-$((2 * $(nproc)))}
order=${MARVO_ORDER:-$((EPOCHSECONDS / 86400 % 99999 + 1))}
total_passed=0 total_failed=0 summary=() second_chance=()

step "set up"
trap '"$root/scripts/stop.sh"' EXIT
# The languages of bindings/; without them, their tests are skipped.
scripts/setup.sh mono-mcs mono-runtime fp-compiler-3.2.2 fpc-source-3.2.2
if [[ -x scripts/make_streams.sh ]]; then
    step "test streams"
    scripts/make_streams.sh build/streams
fi
for target in "${targets[@]}"; do
    step "build $target"
    build_preset "$target"
done
for target in "${targets[@]}"; do
    run_tests "$target"
done

step "done"
if ((total_passed + total_failed == 0)); then
    say "test.sh: no test ran${filter:+: nothing matches $filter}. That counts as a failure."
fi
# Which compilers, standards, orders and flags the public header has been compiled with; what became of the
# documentation's samples.
for target in "${targets[@]}"; do
    find "build/$target/results" \( -name consumer.txt -o -name samples.txt \) -exec cat '{}' +
done
((${#second_chance[@]} == 0)) || printf 'passed when run again alone: %s\n' "${second_chance[@]}"
printf '%s\n' "${summary[@]}" "$total_passed passed, $total_failed failed"
((total_failed == 0 && total_passed > 0))
