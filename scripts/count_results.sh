#!/bin/bash
# count_results.sh win32|win64 CTEST_STATUS [FILTER]
#
# Counts the tests of a target's last run and prints "PASSED FAILED SKIPPED"; names what failed on standard error and,
# in lines "part<tab>test" (the part again when no single test is to blame), in build/<target>/failed.tsv.
# The numbers come from the results that each part leaves as JSON. A part without whole results, or one that ctest
# calls failed although none of its tests is (a crash at the end, a time-out), counts as one failed test.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

# Lines "part<tab>file of results", the file empty for a test that is no GoogleTest program.
list_parts() {
    ctest --preset "$target" ${filter:+-R "$filter"} --show-only=json-v1 | jq -r '
        .tests[] | [.name, ([.properties[]? | select(.name == "ENVIRONMENT") | .value[]
            | select(startswith("MARVO_TEST_RESULT=")) | ltrimstr("MARVO_TEST_RESULT=")] | first // "")] | @tsv'
}

ctest_failed() { grep -qsE "^[0-9]+:$1\$" "$root/build/$target/Testing/Temporary/LastTestsFailed.log"; }

# Lines "passed|failed|skipped<tab>suite.test"; fails when the file is missing or broken.
read_results() {
    [[ -s $1 ]] && jq -r '
        .testsuites[] | .name as $suite | .testsuite[]
        | select(.status == "RUN")
        | [(if .failures then "failed" elif .result == "SKIPPED" then "skipped" else "passed" end),
           "\($suite).\(.name)"] | @tsv' "$1" 2>/dev/null
}

# add_failure PART NAME MESSAGE
add_failure() {
    failed=$((failed + 1))
    printf '%s\t%s\n' "$1" "$2" >>"$failures"
    say "$target: $3"
}

# count_part PART FILE
count_part() {
    local part=$1 file=$2 results state name failed_here=0
    if [[ -z $file ]]; then
        if ctest_failed "$part"; then
            add_failure "$part" "$part" "$part failed"
        else
            passed=$((passed + 1))
        fi
        return
    fi
    if ! results=$(read_results "$file"); then
        add_failure "$part" "$part" "$part left no whole results: it crashed, ran into its time-out or did not start"
        return
    fi
    while IFS=$'\t' read -r state name; do
        case $state in
            passed) passed=$((passed + 1)) ;;
            skipped) skipped=$((skipped + 1)) ;;
            failed)
                failed_here=1
                add_failure "$part" "$name" "$name failed (in $part)"
                ;;
        esac
    done <<<"$results"
    if ((failed_here == 0)) && ctest_failed "$part"; then
        add_failure "$part" "$part" "$part ended badly after its tests"
    fi
}

check_target "${1:-}"
target=$1 ctest_status=$2 filter=${3:-}
passed=0 failed=0 skipped=0
cd "$root"
failures=build/$target/failed.tsv
: >"$failures"
parts=$(list_parts) || die "ctest could not list the tests of $target."
while IFS=$'\t' read -r part file; do
    [[ -z $part ]] || count_part "$part" "$file"
done <<<"$parts"
# 8 only says that a test failed; anything else is trouble of ctest's own, after which nothing may look whole.
if ((ctest_status != 0 && ctest_status != 8)) || ((ctest_status == 8 && failed == 0)); then
    failed=$((failed + 1))
    say "$target: ctest itself ended with status $ctest_status"
fi
printf '%d %d %d\n' "$passed" "$failed" "$skipped"
