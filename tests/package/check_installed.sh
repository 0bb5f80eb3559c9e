#!/usr/bin/env bash
# Installs the packages of DIR (orv3-monitors and orv3-monitors-sim) into a
# scratch root and starts Debian's snmpd from the installed files only: the
# snmpd.conf.d snippet that loads the module, the snmpd drop-in that
# preloads the simulator with its machine, the installed MIB for the names.
# Paths the files name are read inside the scratch root. Then the
# notifications: with the command line of Debian's snmpd.service the event
# MIB is off and the installed notifications.conf is refused; with the
# command line of the installed drop-in, a fan that fails in the machine
# file is announced to a real snmptrapd.
set -euo pipefail
source "$(dirname "$0")/../../scripts/lib.sh"
packages=${1:?usage: check_installed.sh PACKAGE_DIR}

root=$(mktemp -d /tmp/orv3-installed-XXXXXX)
agent=
receiver=
cleanup() {
    for pid in $agent $receiver; do
        kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
    done
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

# ------------------------------------------------------------ notifications
notifications=$(inside /usr/share/orv3-monitors/notifications.conf)
event_dropin=$(inside /usr/share/orv3-monitors/snmpd-event-mib.conf)
[ -f "$notifications" ] || die "the module package has no notifications.conf"
[ -f "$event_dropin" ] || die "the module package has no snmpd-event-mib.conf drop-in"
[ -f "$(inside /usr/share/orv3-monitors/snmpv3-access.conf)" ] || die "the module package has no snmpv3-access.conf"
kill "$agent" && wait "$agent" 2>/dev/null
agent=

# The last ExecStart= of a unit or drop-in is the command systemd runs. The
# check runs it without -u and -g: the scratch root belongs to the user
# running the check, not to Debian-snmp.
exec_start() { sed -n 's/^ExecStart=\(.\)/\1/p' "$1" | tail -n 1 | sed -E 's/ -[ug] [^ ]+//g'; }
stock=$(exec_start /lib/systemd/system/snmpd.service)
enabled=$(exec_start "$event_dropin")
[ -n "$stock" ] && [ -n "$enabled" ] || die "no ExecStart in snmpd.service or in the drop-in"

trap_port=$(free_udp_port)
mkdir -p "$root/trapd/persist" "$root/trapd/conf"
echo "authCommunity log public" >"$root/trapd/snmptrapd.conf"
SNMP_PERSISTENT_DIR="$root/trapd/persist" SNMPCONFPATH="$root/trapd/conf" HOME="$root/home" MIBS= \
    /usr/sbin/snmptrapd -f -C -c "$root/trapd/snmptrapd.conf" -Lf "$root/trapd/traps.log" -On \
    -F 'NOTIFICATION %v\n' "udp:127.0.0.1:$trap_port" &
receiver=$!
{
    cat "$root/snmpd.conf"
    echo "includeFile $notifications"
    echo "trap2sink 127.0.0.1:$trap_port public"
} >"$root/snmpd-notify.conf"

# Runs the command line $1 as snmpd's, serving the machine file $2, logging to $3.
start_agent() {
    local -a command
    read -r -a command <<<"$1"
    env "${env_args[@]}" ORV3_SIM_MACHINE="$2" SNMP_PERSISTENT_DIR="$root/persist" SNMPCONFPATH="$root/conf" \
        HOME="$root/home" MIBS= "${command[@]}" -C -c "$root/snmpd-notify.conf" "udp:127.0.0.1:$port" >"$3" 2>&1 &
    agent=$!
    for _ in $(seq 1 60); do
        ask fanNumber.0 >/dev/null && return 0
        sleep 0.5
    done
    cat "$3" >&2
    die "snmpd did not start with: $1"
}

start_agent "$stock" "$(inside /usr/share/orv3-monitors/machines/sample.json)" "$root/stock.log"
grep -q "Unknown token: monitor" "$root/stock.log" ||
    { cat "$root/stock.log" >&2; die "with Debian's command line, snmpd took the monitor directive"; }
say "Debian's snmpd.service: the event MIB is off ($(grep -m1 -o 'Unknown token: monitor' "$root/stock.log"))"
kill "$agent" && wait "$agent" 2>/dev/null
agent=

machine="$root/machine.json"
cp "$(inside /usr/share/orv3-monitors/machines/sample.json)" "$machine"
start_agent "$enabled" "$machine" "$root/enabled.log"
! grep -q "Unknown token" "$root/enabled.log" ||
    { cat "$root/enabled.log" >&2; die "with the drop-in's command line, snmpd refused a directive"; }
# The event MIB's first poll is made while the agent starts; fan 1 of the
# sample is Normal.
sleep 1
python3 - "$machine" <<'PY'
import json, os, sys
path = sys.argv[1]
machine = json.load(open(path))
machine["store"]["s/fans/status/fantbl"][0]["status"] = "Critical"
json.dump(machine, open(path + ".new", "w"))
os.replace(path + ".new", path)
PY
expected='.1.3.6.1.4.1.53917.11.1.0.2	.1.3.6.1.4.1.53917.11.1.1.3.2.1.2.1 = STRING: "Fan 1A Tach"	.1.3.6.1.4.1.53917.11.1.1.3.2.1.10.1 = STRING: "Critical"'
for _ in $(seq 1 150); do
    grep -qF "$expected" "$root/trapd/traps.log" 2>/dev/null && break
    sleep 0.1
done
grep -qF "$expected" "$root/trapd/traps.log" ||
    { cat "$root/trapd/traps.log" "$root/enabled.log" >&2; die "no fanStatusChanged notification within 15 s"; }
say "With the drop-in: $(grep -F "$expected" "$root/trapd/traps.log" | head -n 1 | cut -f 2-)"
say "the installed drop-in turns the event MIB on, and the notifications arrive"
