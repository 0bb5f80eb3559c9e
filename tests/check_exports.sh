#!/usr/bin/env bash
# The module exports exactly the names of its export list, and needs no
# platform library: the platform services resolve from the agent process.
set -euo pipefail
module=$1
export_list=$2

expected=$(sed -n '/global:/,/local:/p' "$export_list" | grep -oE '^\s*[A-Za-z_][A-Za-z0-9_]*;' | tr -d ' ;' | sort)
actual=$(nm -D --defined-only "$module" | awk '{print $3}' | sort)
if [ "$expected" != "$actual" ]; then
    echo "exported names differ from $export_list (< list, > library):"
    diff <(echo "$expected") <(echo "$actual") || true
    exit 1
fi
echo "$(echo "$actual" | wc -l) names exported, as listed"

if readelf -d "$module" | grep NEEDED | grep -iE 'orv3|platform_sim'; then
    echo "the module must not depend on a platform library"
    exit 1
fi
undefined=$(nm -D --undefined-only "$module" | awk '{print $2}' | grep -c '^quel_dm_' || true)
echo "no platform library needed; $undefined data-manager calls resolve from the agent process"
