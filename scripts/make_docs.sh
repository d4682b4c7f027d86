#!/bin/bash
# make_docs.sh DIR: makes the documentation's site in DIR/html: the written pages, and the reference of
# everything that marvo.h, marvo.hpp and marvo_c.h offer. Fails with Doxygen's words when something public has
# no comment, and when a link leads nowhere (scripts/check_site.py).
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

[[ -n ${1:-} ]] || die "say where the pages shall go."
mkdir -p "$1"
MARVO_DOCS=$(cd -P "$1" && pwd -P)
cd "$root"
# Links to a page that is gone would still seem to work.
rm -rf "$MARVO_DOCS/html" "$MARVO_DOCS/input"
python3 -B scripts/prepare_docs.py "$MARVO_DOCS/input"
MARVO_VERSION=$(sed -nE 's/^.*version(Major|Minor|Patch) = ([0-9]+);.*/\2/p' marvo/version.h | paste -sd.)
export MARVO_DOCS MARVO_VERSION
doxygen docs/Doxyfile >&2
# Shown by the pages, or linked.
cp "$MARVO_DOCS"/input/pictures/* "$MARVO_DOCS/html/"
python3 -B scripts/finish_docs.py "$MARVO_DOCS/html"
python3 -B scripts/check_site.py "$MARVO_DOCS/html"
