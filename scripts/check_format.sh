#!/bin/bash
# Checks that all C++ sources are laid out as .clang-format says. "check_format.sh --mend" lays them out so.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

formatter=clang-format-16
cd "$root"
command -v "$formatter" >/dev/null ||
    die "$formatter is missing: run scripts/setup.sh, or install the package $formatter."
mapfile -t files < <(git ls-files '*.h' '*.hpp' '*.cpp')
((${#files[@]} > 0)) || die "git names no C++ sources here."
if [[ ${1:-} == --mend ]]; then
    "$formatter" -i "${files[@]}"
elif ! "$formatter" --dry-run --Werror "${files[@]}"; then
    die "these lines are not laid out as .clang-format says. To mend them: scripts/check_format.sh --mend"
fi
