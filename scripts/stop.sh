#!/bin/bash
# Ends this repository's Wine processes and its invisible display, so that nothing of it keeps running.
set -euo pipefail
. "${BASH_SOURCE[0]%/*}/common.sh"

for target in win32 win64; do
    rm -f "$wine_dir/server-$target.used"
    for prefix in "$wine_dir/prefix-$target" "$wine_dir/prefix-$target.new"; do
        end_prefix_processes "$target" "$prefix"
    done
done
end_display
rm -f "$wine_dir/display"
