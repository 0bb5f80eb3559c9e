#!/usr/bin/env bash
# The subagent's systemd unit, as configured for the build tree (where every
# file it names exists), passes systemd-analyze verify without a word; and
# the check does see a broken unit.
set -euo pipefail
unit=$1

verify() {
    # systemd-analyze warns about unknown keys and missing files on standard
    # error but may still exit 0: any output is a failure.
    local output
    output=$(systemd-analyze verify "$1" 2>&1) || { echo "$output"; return 1; }
    [ -z "$output" ] || { echo "$output"; return 1; }
}

verify "$unit"
echo "$(basename "$unit") verifies"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
sed 's/^ExecStart=/ExecStrat=/' "$unit" >"$scratch/$(basename "$unit")"
if verify "$scratch/$(basename "$unit")" >/dev/null; then
    echo "a unit with a misspelt key verified: the check sees nothing"
    exit 1
fi
echo "a broken unit is caught"
