# Shared by scripts/run and scripts/test: packages, builds and the agent.
# shellcheck shell=bash

ORV3_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
ORV3_PACKAGES=(g++ cmake make pkg-config snmpd snmp libsnmp-dev nlohmann-json3-dev libgtest-dev libbenchmark-dev smitools
    systemd prometheus-snmp-exporter prometheus snmptrapd)

# The SMIv2 base modules (SNMPv2-SMI, SNMPv2-TC, SNMPv2-CONF) that the
# project's MIB imports are not in Debian 12's packages; the npm package
# net-snmp ships them.
ORV3_DEPS="$ORV3_ROOT/.deps"
ORV3_BASE_MIBS="$ORV3_DEPS/node_modules/net-snmp/lib/mibs"
ORV3_BASE_MIBS_PACKAGE=net-snmp@3.29.2

say() { printf '%s\n' "$*"; }
die() { printf 'error: %s\n' "$*" >&2; exit 1; }

# Installs the Debian packages the project needs that are not there yet.
ensure_packages() {
    local missing=() package
    for package in "${ORV3_PACKAGES[@]}" "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    if [ "$(id -u)" -ne 0 ]; then
        die "missing packages: ${missing[*]}; install them with: sudo apt-get install ${missing[*]}"
    fi
    say "Installing missing packages with apt-get: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq >/dev/null || die "apt-get update failed"
    # Installing snmpd must not start Debian's own agent on port 161.
    local policy=/usr/sbin/policy-rc.d created_policy=
    if [ ! -e "$policy" ]; then
        printf '#!/bin/sh\nexit 101\n' >"$policy" && chmod +x "$policy" && created_policy=1
    fi
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null || die "apt-get install ${missing[*]} failed"
    [ -n "$created_policy" ] && rm -f "$policy"
    return 0
}

# A UDP port on 127.0.0.1 that is free now (bound to port 0, read, closed).
free_udp_port() {
    python3 -c 'import socket; s = socket.socket(socket.AF_INET, socket.SOCK_DGRAM); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}

# snmpwalk, snmpget, snmptable ... options that load the project's MIB.
mib_options() {
    printf '%s\n' -M "$ORV3_ROOT/mibs:$ORV3_BASE_MIBS" -m ORV3-MONITORS-MIB
}

# build DIR [cmake options...]: configures once and builds the whole tree.
build() {
    local dir=$1
    shift
    mkdir -p "$dir"
    if [ ! -f "$dir/CMakeCache.txt" ]; then
        cmake -S "$ORV3_ROOT" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >"$dir/configure.log" 2>&1 ||
            { cat "$dir/configure.log" >&2; die "cmake configuration of $dir failed"; }
    fi
    cmake --build "$dir" -j"$(nproc)" >"$dir/build.log" 2>&1 ||
        { tail -n 60 "$dir/build.log" >&2; die "build of $dir failed (full log: $dir/build.log)"; }
}

# Installs the npm package that ships the SMIv2 base modules, into .deps/.
ensure_base_mibs() {
    [ -f "$ORV3_BASE_MIBS/SNMPv2-SMI.mib" ] && return 0
    command -v npm >/dev/null 2>&1 || ensure_packages npm
    say "Installing the SMIv2 base MIB modules (npm package $ORV3_BASE_MIBS_PACKAGE) into $ORV3_DEPS"
    mkdir -p "$ORV3_DEPS"
    # npm's cache is kept in .deps/ too, so that the install does not depend on
    # (or add to) the user's ~/.npm.
    npm_config_cache="$ORV3_DEPS/npm-cache" npm_config_update_notifier=false \
        npm install --prefix "$ORV3_DEPS" --no-audit --no-fund --loglevel=error "$ORV3_BASE_MIBS_PACKAGE" >/dev/null ||
        die "npm install $ORV3_BASE_MIBS_PACKAGE failed"
    [ -f "$ORV3_BASE_MIBS/SNMPv2-SMI.mib" ] || die "the npm package did not bring $ORV3_BASE_MIBS/SNMPv2-SMI.mib"
}

# build_targets DIR TARGET...: configures once and builds only those targets.
build_targets() {
    local dir=$1
    shift
    mkdir -p "$dir"
    if [ ! -f "$dir/CMakeCache.txt" ]; then
        cmake -S "$ORV3_ROOT" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo >"$dir/configure.log" 2>&1 ||
            { cat "$dir/configure.log" >&2; die "cmake configuration of $dir failed"; }
    fi
    cmake --build "$dir" -j"$(nproc)" --target "$@" >"$dir/build.log" 2>&1 ||
        { tail -n 60 "$dir/build.log" >&2; die "build of $* in $dir failed (full log: $dir/build.log)"; }
}
