#!/usr/bin/env bash
# Proves that the tests do not depend on what net-snmp has or has not done on
# this machine before: the MIB check and end-to-end tests run as on a machine
# where no net-snmp tool has run yet (an empty /var/lib/snmp) and for a user
# with an empty home, and afterwards both are still as empty as they were.
#
# Usage: tests/first_run_check.sh BASE_MIB_DIR REPO_ROOT E2E_TESTS_BINARY
#
# It runs itself again in a private mount namespace (unshare; as a user other
# than root, in a user namespace too) and mounts an empty tmpfs over
# /var/lib/snmp there, so that the machine's real directory is neither seen
# nor touched. The empty home holds a ~/.snmp/snmp.conf with a token net-snmp
# does not know: a tool that read it would warn, and the MIB check fails on
# any such warning.
set -euo pipefail
[ $# -eq 3 ] || { echo "usage: $0 BASE_MIB_DIR REPO_ROOT E2E_TESTS_BINARY" >&2; exit 2; }
base_dir=$1
root=$(cd "$2" && pwd)
e2e=$3
# One end-to-end test of the module's answers, the MIB cross-check, which
# also loads the MIB through the client library, and one scrape through the
# Prometheus SNMP exporter, whose configuration generator loads the MIB too.
e2e_filter='FanNumber.IsAnIntegerEqualToTheStoresFanCount:MibCrossCheck.*'
e2e_filter+=':PrometheusExporter.LabelsEveryRowWithItsNameAndServesTheMachinesValues'
state=/var/lib/snmp

if [ -z "${ORV3_FIRST_RUN_NAMESPACE:-}" ]; then
    command -v unshare >/dev/null || { echo "FAIL: unshare (util-linux) not found"; exit 1; }
    if [ "$(id -u)" -eq 0 ]; then
        ns=(unshare --mount --propagation private)
    else
        ns=(unshare --map-root-user --mount --propagation private)
    fi
    ORV3_FIRST_RUN_NAMESPACE=1 exec "${ns[@]}" "$0" "$@"
fi

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
if [ -d "$state" ]; then
    mount -t tmpfs -o mode=0755 orv3-first-run "$state" ||
        { echo "FAIL: cannot mount an empty tmpfs over $state"; exit 1; }
    state_before=$(find "$state" -mindepth 1 | sort)
else
    state_before="(no $state)"
fi
home="$tmp/home"
mkdir -p "$home/.snmp"
printf 'orv3FirstRunNeverRead yes\n' >"$home/.snmp/snmp.conf"
home_before=$(find "$home" -mindepth 1 | sort)

describe() {
    if [ -d "$1" ]; then find "$1" -mindepth 1 | sort; else echo "(no $1)"; fi
}

failures=0
echo "== MIB check with an empty $state and home"
if ! HOME="$home" "$root/tests/mib/check_mib.sh" "$base_dir" "$root"; then
    echo "FAIL: the MIB check failed on a machine where net-snmp never ran"
    failures=$((failures + 1))
fi
echo "== end-to-end tests ($e2e_filter) with an empty $state and home"
if ! HOME="$home" "$e2e" --gtest_filter="$e2e_filter" --gtest_brief=1; then
    echo "FAIL: end-to-end tests failed on a machine where net-snmp never ran"
    failures=$((failures + 1))
fi

state_after=$(describe "$state")
if [ "$state_after" != "$state_before" ]; then
    echo "FAIL: the tests wrote to $state:"
    diff <(printf '%s\n' "$state_before") <(printf '%s\n' "$state_after") | sed 's/^/    /'
    failures=$((failures + 1))
fi
home_after=$(describe "$home")
if [ "$home_after" != "$home_before" ]; then
    echo "FAIL: the tests wrote to the home directory:"
    diff <(printf '%s\n' "$home_before") <(printf '%s\n' "$home_after") | sed 's/^/    /'
    failures=$((failures + 1))
fi
if [ "$failures" -ne 0 ]; then
    echo "$failures problem(s) found"
    exit 1
fi
echo "OK: nothing depended on or wrote to $state or the home directory"
