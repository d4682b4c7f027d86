#!/bin/bash
# make_docs.sh DIR: makes the reference of everything that marvo.h offers, and the written documentation, as
# web pages
# in DIR. Fails with Doxygen's words when a public class or member has no comment.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

# Prints a header and every one of ours that it includes, each once.
declare -A seen=()
list_headers() {
    [[ -z ${seen[$1]:-} && -f $1 ]] || return 0
    seen[$1]=1
    printf '%s\n' "$1"
    local header
    while IFS= read -r header; do
        list_headers "$header"
    done < <(sed -nE 's/^#include "([^"]+)".*/\1/p' "$1")
}

[[ -n ${1:-} ]] || die "say where the pages shall go."
mkdir -p "$1"
MARVO_DOCS=$(cd -P "$1" && pwd -P)
cd "$root"
list_headers marvo.h >"$MARVO_DOCS/headers.txt"
MARVO_DOC_HEADERS=$(tr '\n' ' ' <"$MARVO_DOCS/headers.txt")
export MARVO_DOCS MARVO_DOC_HEADERS
# Links to a page that is gone would still seem to work.
rm -rf "$MARVO_DOCS/html"
doxygen docs/Doxyfile >&2
