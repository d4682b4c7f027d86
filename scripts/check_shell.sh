#!/bin/bash
# Checks all shell scripts with shellcheck. What it finds and shall stay gets "# shellcheck disable=..." with
# the reason.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

cd "$root"
command -v shellcheck >/dev/null ||
    die "shellcheck is missing: run scripts/setup.sh, or install the package shellcheck."
mapfile -t files < <(git ls-files | xargs -d '\n' grep -lE '^#!/bin/(ba)?sh|^# shellcheck shell=')
((${#files[@]} > 0)) || die "git names no shell scripts here."
shellcheck --external-sources --source-path=SCRIPTDIR "${files[@]}" ||
    die "what shellcheck says is above; its pages (SC...) tell how to mend it."
