#!/bin/bash
# Builds what is released, in build/release/, and makes its packages in out/packages/.
set -euo pipefail
cd -P "${BASH_SOURCE[0]%/*}"
. scripts/common.sh

out=out/packages
products=(marvo marvo_c_library marvo_msvc_library dvrec marvo-host marvo-replay)

usage() {
    cat <<'END'
package.sh [--target PRESET] [--check]

  --target PRESET only this one: win32, win64 (default: both, and one installer for both)
  --check         then builds and packages everything once more, from a copy of the sources in another
                  folder, and compares: takes as long as the first time

Leaves in out/packages/:
  marvo-<version>-<target>.zip          programs, DLL, headers, import libraries, files for CMake and
                                        pkg-config, documentation, licences
  marvo-<version>-<target>-symbols.zip  debug information; unpack it over the other, and debuggers find it
  marvo-<version>-setup.exe             installs the application, dvrec and the DLLs (with --target:
                                        marvo-<version>-<target>-setup.exe)
  marvo-<version>.cdx.json              what is inside, foreign code as well, as CycloneDX
  SHA256SUMS                            of all these; `sha256sum -c SHA256SUMS` checks them

The same commit, on a machine with the same packages of Debian, gives the same bytes. Every file has the time
of the last commit; where there is no repository, set SOURCE_DATE_EPOCH (seconds since 1970).
END
}

read_options() {
    targets=(win32 win64) check=''
    while (($# > 0)); do
        case $1 in
            --target)
                choose_build "${2:-}"
                targets=("$build")
                shift
                ;;
            --check) check=1 ;;
            --help | -h)
                usage
                exit 0
                ;;
            *) die "unknown option '$1'; ./package.sh --help lists them." ;;
        esac
        shift
    done
}

choose_time() {
    if [[ -z ${SOURCE_DATE_EPOCH:-} ]]; then
        SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null) ||
            die "this folder is no git repository. Set SOURCE_DATE_EPOCH to the time that the files shall" \
                "have."
        [[ -z $(git status --porcelain 2>/dev/null) ]] ||
            say "package.sh: there are changes that are not committed; they go into the packages."
    fi
    [[ $SOURCE_DATE_EPOCH =~ ^[0-9]+$ ]] ||
        die "SOURCE_DATE_EPOCH must be seconds since 1970, not '$SOURCE_DATE_EPOCH'."
    export SOURCE_DATE_EPOCH
}

# Makes the packages of the builds in a folder of sources.
# make_packages SOURCES
make_packages() {
    "$1/scripts/make_docs.sh" "$1/build/docs" >"$1/build/docs.log" 2>&1 || {
        tail -n 20 "$1/build/docs.log" >&2
        die "the documentation could not be made (doxygen's words are above)."
    }
    python3 -B "$1/packaging/make_packages.py" --site "$1/build/docs/html" "$1/$out" \
        "${targets[@]/#/$1/build/release/}"
}

# Builds what is released from a folder of sources, in a place of its own: ccache would write the folders that
# it knows into the debug information.
# build_release SOURCES
build_release() {
    local preset log
    for preset in "${targets[@]}"; do
        step "build $preset in $1"
        mkdir -p "$1/build/release/$preset"
        log=$1/build/release/$preset/build.log
        (
            cd "$1"
            export CCACHE_DISABLE=1
            cmake --preset "$preset" -B "build/release/$preset" -DMARVO_TESTS=OFF
            cmake --build "build/release/$preset" -- --quiet "${products[@]}"
        ) >"$log" 2>&1 || {
            tail -n 20 "$log" >&2
            die "$preset does not build (the last messages are above, all in $log)."
        }
    done
}

copy_sources() {
    rm -rf "$copy"
    mkdir -p "$copy"
    git ls-files -z --cached --others --exclude-standard | xargs -0 cp -P --parents -t "$copy" ||
        die "the sources could not be copied."
}

compare() {
    local differing
    # Both lists are in the order of the names.
    differing=$({ diff "$out/SHA256SUMS" "$copy/$out/SHA256SUMS" || true; } | sed -n 's/^< .* //p')
    [[ -z $differing ]] || die "these differ between $out and $copy/$out:"$'\n'"$differing"
    rm -rf "$copy"
}

read_options "$@"
copy=$root/build/package-check/of-another-length
step "set up"
scripts/setup.sh nsis llvm
choose_time
build_release "$root"
step "package"
make_packages "$root"
if [[ -n $check ]]; then
    copy_sources
    build_release "$copy"
    step "package once more"
    make_packages "$copy"
    compare
    step "both builds gave the same bytes"
fi
step "done; $out/ has"
(cd "$out" && stat --printf '%12s  %n\n' -- *)
