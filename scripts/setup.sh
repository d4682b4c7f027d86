#!/bin/bash
# Prepares a fresh Debian 12 machine: installs the packages that are missing, then makes Wine's 32-bit tree
# and the two Wine prefixes inside build/wine. Safe to run again at any time; does only what is not done yet.
# setup.sh [PACKAGES...]: further packages that the caller needs.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

packages=(
    g++-mingw-w64-i686 g++-mingw-w64-x86-64 cmake ninja-build googletest
    # For the programs around the library; header-only.
    nlohmann-json3-dev libcli11-dev
    # For the analysis of locks.
    clang
    wine wine64 libc6-i386 xvfb libgl1 libgl1-mesa-dri fonts-dejavu-core
    ffmpeg imagemagick python3 doxygen doxygen-awesome-css
    # Keys and mouse for the tests of the window.
    xdotool
    # The second compiler: marvo.h must suit it, too. llvm makes the library for Microsoft's linker, and lld
    # stands for that one.
    clang llvm lld
    # For the checks of form.
    git clang-format-16 shellcheck
    # Other software that reads and writes AVI files, for the tests.
    mediainfo gstreamer1.0-tools gstreamer1.0-plugins-good dvgrab
)

missing_packages() {
    local installed
    installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${packages[@]}" 2>/dev/null || true)
    local package
    for package in "${packages[@]}"; do
        [[ $'\n'$installed$'\n' == *$'\n'"installed $package"$'\n'* ]] || printf '%s\n' "$package"
    done
}

install_packages() {
    local missing sudo=()
    mapfile -t missing < <(missing_packages)
    ((${#missing[@]} > 0)) || return 0
    say "setup: installing ${missing[*]}"
    if ((EUID != 0)); then
        command -v sudo >/dev/null ||
            die "packages are missing and there is no sudo. As root, run: apt-get install" \
                "--no-install-recommends ${missing[*]}"
        sudo=(sudo)
    fi
    local log=$wine_dir/packages.log
    # A fresh machine often updates itself at first; its lock is waited for.
    # One source of several may be out of order without harm; what counts is whether the packages install.
    "${sudo[@]}" apt-get update -qq -o DPkg::Lock::Timeout=300 >"$log" 2>&1 || true
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq -o DPkg::Lock::Timeout=300 --no-install-recommends "${missing[@]}" \
        >>"$log" 2>&1 || {
        tail -n 40 "$log" >&2
        die "the packages could not be installed (apt's messages are above). Run this again when that is" \
            "mended, or as root: apt-get install --no-install-recommends ${missing[*]}"
    }
}

check_machine() {
    command -v dpkg-query >/dev/null || die "this needs Debian 12 (there is no dpkg here)."
    [[ $(dpkg --print-architecture) == amd64 ]] || die "this needs a 64-bit PC (Debian's architecture amd64)."
    mkdir -p "$wine_dir/home" || die "$root must be writable for you."
    [[ -O $wine_dir ]] ||
        die "$root/build belongs to another user. Run as that user, or remove the folder build/ and run" \
            "this again."
    # Below 1.08 GB the library asks the user for room in a message box, which nobody would see here.
    local least_gb=4 free_kb
    free_kb=$(df --output=avail -k "$wine_dir" | tail -n 1)
    ((free_kb >= least_gb * 1000 * 1000)) ||
        die "only $((free_kb / 1000)) MB are free on the disk of $root; this needs $least_gb GB. Make room" \
            "and run it again."
}

packages+=("$@")
check_machine
install_packages
with_lock setup "$root/scripts/wine_tree.sh"
for target in win32 win64; do
    with_lock setup "$root/scripts/wine_prefix.sh" "$target"
done
