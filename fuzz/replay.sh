#!/usr/bin/env bash
# replay.sh TARGET_BINARY TARGET_DIR: runs the target once over every file of
# TARGET_DIR/corpus and TARGET_DIR/regressions, without fuzzing; fails when
# any input crashes it. libFuzzer is given the files, not the directories,
# so that it only reads them.
set -euo pipefail
binary=$1
dir=$2
inputs=()
for sub in corpus regressions; do
    [ -d "$dir/$sub" ] || continue
    while IFS= read -r -d '' file; do
        inputs+=("$file")
    done < <(find "$dir/$sub" -type f ! -name '.*' -print0 | sort -z)
done
if [ ${#inputs[@]} -eq 0 ]; then
    echo "no inputs under $dir" >&2
    exit 1
fi
exec "$binary" -runs=1 "${inputs[@]}"
