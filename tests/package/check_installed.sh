#!/usr/bin/env bash
# Installs the packages of DIR (orv3-monitors and orv3-monitors-sim) into a
# scratch root and starts Debian's snmpd from the installed files only: the
# snmpd.conf.d snippet that loads the module, the snmpd drop-in that
# preloads the simulator with its machine, the installed MIB for the names.
# Paths the files name are read inside the scratch root.
set -euo pipefail
source "$(dirname "$0")/../../scripts/lib.sh"
packages=${1:?usage: check_installed.sh PACKAGE_DIR}

root=$(mktemp -d /tmp/orv3-installed-XXXXXX)
agent=
cleanup() {
    [ -n "$agent" ] && kill "$agent" 2>/dev/null && wait "$agent" 2>/dev/null
    rm -rf "$root"
}
trap cleanup EXIT

for deb in "$packages"/orv3-monitors_*.deb "$packages"/orv3-monitors-sim_*.deb; do
    [ -f "$deb" ] || die "no package $deb"
    dpkg -x "$deb" "$root/fs"
done
inside() { printf '%s%s' "$root/fs" "$1"; }

snippet=$(inside /etc/snmp/snmpd.conf.d/orv3-monitors.conf)
dropin=$(inside /lib/systemd/system/snmpd.service.d/orv3-platform-sim.conf)
[ -f "$snippet" ] || die "the module package has no $snippet"
[ -f "$dropin" ] || die "the simulator package has no snmpd drop-in"

# The snippet's dlmod line and the drop-in's environment, with their paths
# moved into the scratch root.
module=$(awk '$1 == "dlmod" {print $3}' "$snippet")
[ -n "$module" ] || die "no dlmod line in $snippet"
env_args=()
while IFS= read -r assignment; do
    name=${assignment%%=*}
    value=${assignment#*=}
    env_args+=("$name=$(inside "$value")")
done < <(sed -n 's/^Environment=//p' "$dropin")
[ ${#env_args[@]} -eq 2 ] || die "the drop-in should set LD_PRELOAD and ORV3_SIM_MACHINE: ${env_args[*]}"

mkdir -p "$root/persist" "$root/conf" "$root/home"
port=$(free_udp_port)
{
    echo "rocommunity public 127.0.0.1"
    sed "s|$module|$(inside "$module")|" "$snippet"
} >"$root/snmpd.conf"

env "${env_args[@]}" SNMP_PERSISTENT_DIR="$root/persist" SNMPCONFPATH="$root/conf" HOME="$root/home" MIBS= \
    /usr/sbin/snmpd -f -C -c "$root/snmpd.conf" -Lo "udp:127.0.0.1:$port" >"$root/snmpd.log" 2>&1 &
agent=$!

ask() {
    SNMP_PERSISTENT_DIR="$root/persist" SNMPCONFPATH="$root/conf" HOME="$root/home" snmpget -v2c -c public -t 1 -r 0 \
        -M "$(inside /usr/share/snmp/mibs):$ORV3_BASE_MIBS" -m ORV3-MONITORS-MIB "127.0.0.1:$port" "$@" 2>&1
}
answer=
for _ in $(seq 1 60); do
    answer=$(ask fanNumber.0) && break
    sleep 0.5
done
expected="ORV3-MONITORS-MIB::fanNumber.0 = INTEGER: 8"
if [ "$answer" != "$expected" ]; then
    cat "$root/snmpd.log" >&2
    die "the installed agent answered '$answer', not '$expected'"
fi
say "$answer"
health=$(ask systemHealthStat.0)
[ "$health" = "ORV3-MONITORS-MIB::systemHealthStat.0 = INTEGER: 2" ] ||
    die "systemHealthStat.0 answered '$health'"
say "$health"
"$(inside /usr/bin/orv3-monitors-agentx)" -h | head -n 1
say "snmpd served the module from the installed files"
