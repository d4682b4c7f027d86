#!/bin/bash
# tidy.sh [FILES...]: runs the checks of .clang-tidy on C++ sources, by default those of the library. Takes a
# while, needs Debian's package clang-tidy and a configured build/win32, and is no part of the tests.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

cd "$root"
command -v clang-tidy >/dev/null || die "clang-tidy is missing: install the package clang-tidy."
[[ -f build/win32/compile_commands.json ]] || die "run 'cmake --preset win32' first."
files=("$@")
((${#files[@]} > 0)) || mapfile -t files < <(git ls-files 'marvo/*.cpp')
# clang does not find the C++ headers of the MinGW compilers by itself.
triplet=i686-w64-mingw32
headers=$(i686-w64-mingw32-g++-posix -print-file-name=include/c++)
printf '%s\0' "${files[@]}" | nice xargs -0 -n 4 -P "$(nproc)" clang-tidy -p build/win32 --quiet \
    --extra-arg=--target=$triplet "--extra-arg=-isystem$headers" "--extra-arg=-isystem$headers/$triplet"
