#!/bin/bash
# Free Pascal for Windows, in build/pascal: Debian has the compiler and the run-time units for Linux alone,
# and the sources of all. Makes what is not made yet (the 32-bit compiler takes a quarter of a minute).
# pascal_for_windows.sh TARGET ARGUMENTS...: compiles with it; the arguments are the compiler's.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

version=3.2.2
sources=/usr/share/fpcsrc/$version
installed=/usr/lib/x86_64-linux-gnu/fpc/$version
native=$(command -v ppcx64-$version || command -v ppcx64 || true)
folder=$root/build/pascal

check_target "${1:-}"
target=$1
shift
[[ -n $native && -d $sources/rtl && -d $installed/units ]] ||
    die "Free Pascal or its sources are missing: run scripts/setup.sh fp-compiler-$version" \
        "fpc-source-$version"

# The compiler for the other processor; it wants its messages as a part of its source.
make_cross_compiler() {
    local made=$folder/compiler from=$sources/compiler
    mkdir -p "$made"
    "$native" -n -v0 -Fu"$installed/units/x86_64-linux/rtl" -FU"$made" -FE"$made" "$from/utils/msg2inc.pp"
    (cd "$made" && ./msg2inc "$installed/msg/errore.msg" msg msg)
    "$native" -n -v0 -Sg -dI386 -dCPU32 -Fu"$installed/units/x86_64-linux/rtl" -FU"$made" -FE"$made" \
        -Fi"$from/i386" -Fi"$from/x86" -Fi"$from" -Fi"$made" \
        -Fu"$from/i386" -Fu"$from/x86" -Fu"$from/systems" -Fu"$from" -oppc.new "$from/pp.pas"
    mv "$made/ppc.new" "$folder/ppcross386"
    rm -rf "$made"
}

# The units that programs of the tests need: a program that uses them makes the compiler compile them.
make_units() {
    local rtl=$sources/rtl made=$units.new options=() part
    rm -rf "$made"
    mkdir -p "$made"
    for part in "$target" inc "$processor" win win/wininc objpas objpas/sysutils common; do
        options+=(-Fi"$rtl/$part" -Fu"$rtl/$part")
    done
    "${compiler[@]}" -FU"$made" "${options[@]}" -Us -Sg "$rtl/$target/system.pp"
    "${compiler[@]}" -FU"$made" "${options[@]}" "$rtl/objpas/objpas.pp"
    printf 'program first; uses sysutils; begin end.\n' >"$made/first.pas"
    "${compiler[@]}" -FU"$made" "${options[@]}" -FE"$made" "$made/first.pas"
    mv "$made" "$units"
}

prepare() {
    [[ $target == win64 || -x $folder/ppcross386 ]] || make_cross_compiler
    [[ -d $units ]] || make_units
}

if [[ $target == win32 ]]; then
    processor=i386 compiler=("$folder/ppcross386" -n -Twin32 -v0)
else
    processor=x86_64 compiler=("$native" -n -Twin64 -v0)
fi
units=$folder/units-$target
mkdir -p "$folder"
with_lock pascal prepare >"$folder/$target.log" 2>&1 || {
    cat "$folder/$target.log" >&2
    die "Free Pascal for $target could not be made."
}
(($# == 0)) || exec "${compiler[@]}" -vew -Fu"$units" "$@"
