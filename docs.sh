#!/bin/bash
# Sets up what is missing and makes the reference and the written documentation as web pages in
# build/docs/html.
set -euo pipefail
cd -P "${BASH_SOURCE[0]%/*}"
. scripts/common.sh

scripts/setup.sh
scripts/make_docs.sh build/docs
say "docs.sh: see build/docs/html/index.html"
