#!/usr/bin/env bash
# The MIB check must fail on a broken MIB: it runs check_mib.sh on a copy of
# the repository's MIB with one OBJECT-TYPE keyword misspelt, and expects
# net-snmp's parser complaint in its report.
#
# Usage: tests/mib/check_mib_catches_breakage.sh BASE_MIB_DIR REPO_ROOT
set -euo pipefail
[ $# -eq 2 ] || { echo "usage: $0 BASE_MIB_DIR REPO_ROOT" >&2; exit 2; }
base_dir=$1
root=$(cd "$2" && pwd)
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

mkdir -p "$tmp/mibs" "$tmp/tests"
cp -r "$root/tests/mib" "$tmp/tests/"
sed 's/^fanNumber OBJECT-TYPE/fanNumber OBJECT-TYP/' "$root/mibs/ORV3-MONITORS-MIB.txt" \
    >"$tmp/mibs/ORV3-MONITORS-MIB.txt"
cmp -s "$root/mibs/ORV3-MONITORS-MIB.txt" "$tmp/mibs/ORV3-MONITORS-MIB.txt" &&
    { echo "FAIL: could not break the copy (no 'fanNumber OBJECT-TYPE' line)"; exit 1; }

rc=0
"$root/tests/mib/check_mib.sh" "$base_dir" "$tmp" >"$tmp/report" 2>&1 || rc=$?
if [ "$rc" -ne 1 ]; then
    echo "FAIL: check_mib.sh exited $rc on a broken MIB (want 1):"
    sed 's/^/    /' "$tmp/report"
    exit 1
fi
if ! grep -q "cannot load ORV3-MONITORS-MIB cleanly" "$tmp/report" ||
    ! grep -q "Bad operator (OBJECT-TYP)" "$tmp/report"; then
    echo "FAIL: the report does not name the parser's complaint:"
    sed 's/^/    /' "$tmp/report"
    exit 1
fi
echo "OK: the broken MIB was reported"
