#!/bin/bash
# screenshot.sh FILE.png: saves what the invisible display shows, for programs started by run.sh.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

[[ $# -eq 1 ]] || die "usage: screenshot.sh FILE.png"
display_runs || die "the invisible display does not run; run.sh starts it with the first program."
mkdir -p "$(dirname "$1")"
DISPLAY=:$display_number timeout 20 import -window root "$1" || die "no screenshot could be taken to $1."
