#!/bin/bash
# Sets up what is missing and makes the documentation's site in build/docs/html: the written pages, and the
# reference of every public class and function. Fails when a link leads nowhere.
#
# docs.sh --check   also looks at every page as a phone shows it (with Chromium, 100 MB to be fetched at
#                   first), and leaves pictures of the start page and its doors in build/docs/pictures
set -euo pipefail
cd -P "${BASH_SOURCE[0]%/*}"
. scripts/common.sh

[[ $# -eq 0 || $* == --check ]] || die "unknown arguments '$*'; there is --check."
scripts/setup.sh ${1:+chromium}
scripts/make_docs.sh build/docs
if (($# > 0)); then
    python3 -B scripts/check_phone.py build/docs/html build/docs/pictures
fi
say "docs.sh: see build/docs/html/index.html"
