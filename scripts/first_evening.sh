#!/bin/bash
# first_evening.sh: what a new user tries first and must not go wrong, played on marvo-replay by keys and
# mouse: Record while it records, a step long after the hold, an older file, full screen, a lost camera, a
# full disk. Needs a build (marvo-replay, marvo-devices). Leaves a screenshot of each, and session.json, in
# out/first-evening/ and out/first-evening-full/.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"
. "${BASH_SOURCE[0]%/*}/replay_session.sh"

out=$root/out/first-evening
failed=0
choose_invisible_display
prepare_camera "$out" $'lose = 1000:5000\n'
cp "$root/build/streams/pal.dv" "$out/cup final 1998.dv"
play "$out" first 240 || failed=1
prepare_camera "$out-full" ''
# Files of at most 40 MB; what is beyond fails as on a full disk. The signal for it is ignored.
trap '' XFSZ
play "$out-full" full 240 prlimit --fsize=40000000 || failed=1
exit "$failed"
