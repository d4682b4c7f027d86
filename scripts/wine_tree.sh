#!/bin/bash
# Makes build/wine/tree32: Debian's 32-bit Wine with all it needs, unpacked into a folder of its own. Adding
# i386 as a second architecture to the machine fails as soon as one package's 32-bit version differs; this
# cannot. Needs no root. build/wine/tree32 may also be a link to another work tree's finished one.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

tree=$wine_dir/tree32
work=$wine_dir/tree32.new
wanted=(wine32 libgl1 libgl1-mesa-dri libxcomposite1)

# apt with a state of its own: the system's sources and network settings, but none of its hooks, which would
# write outside of the repository.
write_apt_configuration() {
    mkdir -p "$work/apt/lists/partial" "$work/apt/archives/partial" "$work/empty" "$work/root"
    : >"$work/apt/status"
    apt-config dump | grep '^Acquire::' >"$work/apt.conf" || true
    cat >>"$work/apt.conf" <<END
APT::Architecture "i386";
#clear APT::Architectures;
APT::Architectures { "i386"; };
APT::Install-Recommends "false";
APT::Sandbox::User "root";
#clear Acquire::Languages;
Acquire::Languages { "none"; };
Acquire::Retries "3";
Debug::NoLocking "true";
Dir::Etc::parts "$work/empty";
Dir::Etc::main "$work/empty/none";
Dir::State "$work/apt";
Dir::State::lists "$work/apt/lists";
Dir::State::status "$work/apt/status";
Dir::Cache "$work/apt";
Dir::Cache::archives "$work/apt/archives";
Dir::Log "$work/apt";
END
    export APT_CONFIG=$work/apt.conf
}

download_packages() {
    say "setup: downloading 32-bit Wine (about 190 MB)"
    # Ends with an error when one index of several does not match, although the others suffice.
    apt-get update -qq >"$work/update.log" 2>&1 || true
    if ! apt-cache show wine32 >/dev/null 2>&1; then
        cat "$work/update.log" >&2
        die "apt offers no package wine32 for i386. Check the network and that /etc/apt/sources.list*" \
            "names Debian 12 without limiting it to amd64, then run this again."
    fi
    apt-get install -y -qq --download-only "${wanted[@]}" >"$work/download.log" 2>&1 || {
        cat "$work/download.log" >&2
        die "32-bit Wine could not be downloaded (apt's message is above). Check the network and run this" \
            "again."
    }
}

unpack_packages() {
    say "setup: unpacking 32-bit Wine"
    # The C library is the machine's own (libc6-i386): it has to match the machine's loader exactly.
    rm -f "$work"/apt/archives/libc6_*.deb
    find "$work/apt/archives" -maxdepth 1 -name '*.deb' -print0 |
        xargs -0 -P "$(nproc)" -I '{}' dpkg -x '{}' "$work/root" ||
        die "32-bit Wine could not be unpacked. Is the disk full? About 3 GB are needed in $root; then run" \
            "this again."
}

# Wine takes a DLL for its own only with this mark at byte 64; Debian sets it when it configures the package,
# which never happens to a package that is only unpacked.
# mark_builtin SOURCE FOLDER
mark_builtin() {
    mkdir -p "$2"
    # The package may have a link here that would lead back to the original.
    rm -f "$2/zlib1.dll"
    {
        head -c 64 "$1"
        printf 'Wine builtin DLL'
        head -c 16 /dev/zero
        tail -c +97 "$1"
    } >"$2/zlib1.dll"
}

build_tree() {
    command -v apt-get >/dev/null || die "this needs Debian's apt-get."
    rm -rf "$work"
    write_apt_configuration
    download_packages
    unpack_packages
    local modules=$work/root/usr/lib/i386-linux-gnu/wine
    mark_builtin "$work/root/usr/i686-w64-mingw32/lib/zlib1.dll" "$modules/i386-windows"
    mark_builtin "$work/root/usr/x86_64-w64-mingw32/lib/zlib1.dll" "$modules/x86_64-windows"
    # Its name appears only when it is whole: a set-up that was interrupted starts over.
    rm -rf "$tree"
    mv "$work/root" "$tree"
    rm -rf "$work"
}

if [[ ! -x $tree/usr/lib/wine/wine ]]; then
    [[ ! -L $tree ]] ||
        die "build/wine/tree32 is a link to a folder without Wine. Remove the link and run this again."
    build_tree
fi
