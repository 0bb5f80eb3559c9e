#!/usr/bin/env bash
# Checks mibs/ORV3-MONITORS-MIB.txt against tests/mib/objects.tsv, the
# reference list of the objects the agent serves (name, OID, wire type,
# access), and lints it.
#
# Usage: tests/mib/check_mib.sh BASE_MIB_DIR REPO_ROOT
#   BASE_MIB_DIR  directory holding SNMPv2-SMI, SNMPv2-TC and SNMPv2-CONF
#                 (for example the lib/mibs folder of the npm package net-snmp)
#   REPO_ROOT     root of the monitors repository
#
# Steps:
#   1. smilint at level 6: any error fails; any warning fails unless it
#      matches an expression of tests/mib/smilint-allowed.txt.
#   2. net-snmp's snmptranslate loads the module (no complaint about the MIB
#      allowed; the library's notices about its own directories are not
#      about the MIB) and describes every OBJECT-TYPE of the file in one
#      batch; each line of
#      objects.tsv must match the object's OID, the wire type its SYNTAX
#      maps to, and its MAX-ACCESS. Every readable or writable OBJECT-TYPE
#      of the MIB must be listed in objects.tsv (tables and entries are
#      not: they are never served).
#   3. The conformance section (OBJECT-GROUPs, MODULE-COMPLIANCE) must lie
#      outside the served subtree 1.3.6.1.4.1.53917.11.1.1.
# Needs: bash, awk, grep, smilint (Debian package smitools), snmptranslate
# (Debian package snmp).
set -euo pipefail

if [ $# -ne 2 ]; then
    echo "usage: $0 BASE_MIB_DIR REPO_ROOT" >&2
    exit 2
fi
for d in "$1" "$2"; do
    [ -d "$d" ] || { echo "FAIL: no directory $d" >&2; exit 2; }
done
base_dir=$(cd "$1" && pwd)
root=$(cd "$2" && pwd)
module=ORV3-MONITORS-MIB
mib="$root/mibs/$module.txt"
tsv="$root/tests/mib/objects.tsv"
allow="$root/tests/mib/smilint-allowed.txt"
served=1.3.6.1.4.1.53917.11.1.1

for tool in smilint snmptranslate awk; do
    if ! command -v "$tool" >/dev/null 2>&1; then
        echo "FAIL: $tool not found (smilint: apt-get install smitools;" \
             "snmptranslate: apt-get install snmp)" >&2
        exit 2
    fi
done
for f in "$mib" "$tsv" "$allow"; do
    [ -f "$f" ] || { echo "FAIL: missing $f" >&2; exit 2; }
done
# smilint and net-snmp find the base modules by module name, whatever the
# file's extension; just make sure the directory is the right one
if ! ls "$base_dir"/SNMPv2-SMI* >/dev/null 2>&1; then
    echo "FAIL: no SNMPv2-SMI module in $base_dir" >&2
    exit 2
fi

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
failures=0
fail() {
    echo "FAIL: $*"
    failures=$((failures + 1))
}

# ------------------------------------------------------------ 1. smilint
# -c /dev/null: ignore /etc/smi.conf and ~/.smirc (they may hide warnings);
# SMIPATH: where libsmi looks for imported modules, by module name with or
# without an extension such as .mib or .txt.
SMIPATH="$root/mibs:$base_dir" smilint -c /dev/null -l 6 -s -m "$mib" \
    >"$tmp/smilint.out" 2>&1 || true
# drop the "file:line: " prefix, keep the line number apart for messages
sed -E 's/^[^:]*:([0-9]+): /\1\t/' "$tmp/smilint.out" >"$tmp/smilint.msgs"

# allow-list: expressions, each preceded by a comment line
: >"$tmp/allowed.re"
prev=""
lineno=0
while IFS= read -r line || [ -n "$line" ]; do
    lineno=$((lineno + 1))
    case "$line" in
        '#'*) ;;
        '') ;;
        *)
            case "$prev" in
                '#'*) printf '%s\n' "$line" >>"$tmp/allowed.re" ;;
                *) fail "smilint-allowed.txt line $lineno: expression without a comment line above it" ;;
            esac
            ;;
    esac
    prev=$line
done <"$allow"

smi_errors=0
smi_allowed=0
while IFS=$'\t' read -r ln msg; do
    [ -n "$msg" ] || continue
    sev=$(printf '%s\n' "$msg" | sed -nE 's/^\[([0-9])\].*/\1/p')
    if [ -z "$sev" ] || [ "$sev" -le 3 ]; then
        fail "smilint error at line $ln: $msg"
        smi_errors=$((smi_errors + 1))
    elif [ -s "$tmp/allowed.re" ] && printf '%s\n' "$msg" | grep -Eq -f "$tmp/allowed.re"; then
        smi_allowed=$((smi_allowed + 1))
    else
        fail "smilint warning not in smilint-allowed.txt, line $ln: $msg"
    fi
done <"$tmp/smilint.msgs"
if [ -s "$tmp/allowed.re" ]; then
    while IFS= read -r re; do
        if ! cut -f2- "$tmp/smilint.msgs" | grep -Eq -- "$re"; then
            echo "note: allow-list expression matches no warning any more: $re"
        fi
    done <"$tmp/allowed.re"
fi

# -------------------------------------------------------- 2. snmptranslate
# -M/-m replace the agent tools' default MIB path and module list, and an
# empty SNMPCONFPATH keeps snmp.conf files (/etc/snmp, ~/.snmp) out, so that
# neither configuration nor the environment changes what is loaded. The
# persistent directory and HOME are private too: the check neither reads nor
# writes /var/lib/snmp or the user's home, whatever net-snmp did there before.
mkdir "$tmp/snmpconf" "$tmp/home"
translate() {
    SNMPCONFPATH="$tmp/snmpconf" SNMP_PERSISTENT_DIR="$tmp/persist" HOME="$tmp/home" \
        snmptranslate -M "$root/mibs:$base_dir" -m "$module" "$@"
}

# What the tools say about the MIB: everything on standard error except the
# library's notices about its own state ("Created directory: ..." when a
# persistent directory is made for the first time).
mib_complaints() {
    grep -v -E '^Created directory: ' "$1" || true
}

# loading alone must be silent about the MIB
rc=0
translate -On "$module::monitors" >"$tmp/load.out" 2>"$tmp/load.err" || rc=$?
mib_complaints "$tmp/load.err" >"$tmp/load.complaints"
if [ "$rc" -ne 0 ] || [ -s "$tmp/load.complaints" ]; then
    fail "snmptranslate cannot load $module cleanly (exit $rc):"
    sed 's/^/    /' "$tmp/load.complaints"
fi

# every OBJECT-TYPE defined in the file
grep -E '^[a-z][A-Za-z0-9-]*[[:space:]]+OBJECT-TYPE([[:space:]]|$)' "$mib" \
    | awk '{print $1}' >"$tmp/mib.names"
# plus the names listed in objects.tsv that the file may lack
grep -vE '^(#|[[:space:]]*$)' "$tsv" | cut -f1 >"$tmp/tsv.names"
sort -u "$tmp/mib.names" "$tmp/tsv.names" >"$tmp/all.names"

# snmptranslate stops at the first unknown name: run the batch, note the
# unknown name, go on with the names after it.
: >"$tmp/described"
: >"$tmp/unknown"
mapfile -t todo <"$tmp/all.names"
while [ "${#todo[@]}" -gt 0 ]; do
    args=()
    for n in "${todo[@]}"; do args+=("$module::$n"); done
    rc=0
    translate -On -Td "${args[@]}" >>"$tmp/described" 2>"$tmp/td.raw" || rc=$?
    mib_complaints "$tmp/td.raw" >"$tmp/td.err"
    bad=$(sed -nE "s/^$module::([A-Za-z0-9-]+): Unknown Object Identifier.*/\1/p" \
        "$tmp/td.err" | head -n1)
    if [ "$rc" -eq 0 ] && [ -z "$bad" ]; then
        if [ -s "$tmp/td.err" ]; then
            fail "snmptranslate complained:"
            sed 's/^/    /' "$tmp/td.err"
        fi
        break
    fi
    if [ -z "$bad" ]; then
        fail "snmptranslate failed (exit $rc):"
        sed 's/^/    /' "$tmp/td.err"
        break
    fi
    echo "$bad" >>"$tmp/unknown"
    if [ "$(wc -l <"$tmp/unknown")" -ge 25 ]; then
        fail "snmptranslate: 25 unknown names, giving up on the rest"
        break
    fi
    rest=()
    seen=0
    for n in "${todo[@]}"; do
        if [ "$seen" -eq 1 ]; then rest+=("$n"); fi
        if [ "$n" = "$bad" ]; then seen=1; fi
    done
    todo=("${rest[@]+"${rest[@]}"}")
done

# name, OID, syntax, access, kind (leaf or structure) per described object,
# separated by the unit separator so that empty fields survive "read"
awk -F'\t' '
    function flush() {
        if (name != "") print name US oid US syn US acc US kind
        name = ""; oid = ""; syn = ""; acc = ""; kind = "leaf"; indesc = 0
    }
    BEGIN { kind = "leaf"; US = "\037" }
    /^\.[0-9.]+$/ { flush(); oid = substr($0, 2); next }
    /^[A-Za-z][A-Za-z0-9-]* OBJECT-TYPE$/ { split($0, w, " "); name = w[1]; next }
    /^  DESCRIPTION/ { indesc = 1; next }
    /^::= / { indesc = 0; next }
    indesc { next }
    /^  SYNTAX\t/ { if (syn == "") syn = $2; next }
    /^  MAX-ACCESS\t/ { acc = $2; next }
    /^  (INDEX|AUGMENTS)\t/ { kind = "structure"; next }
    END { flush() }
' "$tmp/described" >"$tmp/mib.described"

# tables (SYNTAX SEQUENCE OF, which snmptranslate -Td does not print) and
# entries (INDEX or AUGMENTS), read from the file itself
awk '
    /^[a-z][A-Za-z0-9-]*[ \t]+OBJECT-TYPE/ { cur = $1; next }
    cur != "" && /SYNTAX[ \t]+SEQUENCE[ \t]+OF/ { print cur; next }
    cur != "" && /^[ \t]+(INDEX|AUGMENTS)[ \t]*\{/ { print cur; next }
    /::=/ { cur = "" }
' "$mib" | sort -u >"$tmp/structure.names"
awk -v US=$'\037' '
    NR == FNR { structure[$1] = 1; next }
    { split($0, f, US); if (f[1] in structure) sub(/leaf$/, "structure") ; print }
' "$tmp/structure.names" "$tmp/mib.described" >"$tmp/mib.objects"

# wire type of a SYNTAX as snmptranslate prints it
wire_of() {
    case "$1" in
        Integer32* | INTEGER*) w="INTEGER" ;;
        Gauge32*) w="Gauge32" ;;
        DisplayString* | "OCTET STRING"*) w="OCTET STRING" ;;
        *) w="unknown($1)" ;;
    esac
}

declare -A m_oid=() m_syn=() m_acc=() m_kind=() listed=()
while IFS=$'\037' read -r name oid syn acc kind; do
    m_oid[$name]=$oid
    m_syn[$name]=$syn
    m_acc[$name]=$acc
    m_kind[$name]=$kind
done <"$tmp/mib.objects"

declare -A unknown=()
while IFS= read -r name; do unknown[$name]=1; done <"$tmp/unknown"
while IFS= read -r name; do
    if [ -n "${unknown[$name]+x}" ] && ! grep -qxF -- "$name" "$tmp/tsv.names"; then
        fail "$name: defined in $module.txt but unknown to snmptranslate"
    fi
done <"$tmp/mib.names"

checked=0
while IFS=$'\t' read -r name oid wire access rest; do
    case "$name" in '#'* | '') continue ;; esac
    if [ -n "${rest:-}" ] || [ -z "${access:-}" ]; then
        fail "objects.tsv: malformed line for '$name' (want name<TAB>OID<TAB>type<TAB>access)"
        continue
    fi
    if [ -n "${listed[$name]+x}" ]; then
        fail "objects.tsv: $name listed twice"
        continue
    fi
    listed[$name]=1
    checked=$((checked + 1))
    case "$oid" in
        "$served".*) ;;
        *) fail "objects.tsv: $name $oid is not below the served subtree $served" ;;
    esac
    if [ -z "${m_kind[$name]+x}" ]; then
        if [ -n "${unknown[$name]+x}" ]; then
            fail "$name: listed in objects.tsv but unknown to snmptranslate (not in $module?)"
        else
            fail "$name: listed in objects.tsv but not an OBJECT-TYPE of $module"
        fi
        continue
    fi
    if [ "${m_kind[$name]}" != leaf ]; then
        fail "$name: listed in objects.tsv but is a table or entry in the MIB"
        continue
    fi
    [ "${m_oid[$name]}" = "$oid" ] ||
        fail "$name: OID differs: objects.tsv $oid, MIB ${m_oid[$name]}"
    wire_of "${m_syn[$name]}"
    [ "$w" = "$wire" ] ||
        fail "$name: type differs: objects.tsv $wire, MIB SYNTAX '${m_syn[$name]}' (sent as $w)"
    [ "${m_acc[$name]}" = "$access" ] ||
        fail "$name: access differs: objects.tsv $access, MIB ${m_acc[$name]}"
done <"$tsv"

for name in "${!m_kind[@]}"; do
    if [ "${m_kind[$name]}" = leaf ] && [ -z "${listed[$name]+x}" ]; then
        fail "$name (${m_oid[$name]}): OBJECT-TYPE of $module missing from objects.tsv"
    fi
done

# ----------------------------------------------------------- 3. conformance
grep -E '^[a-z][A-Za-z0-9-]*[[:space:]]+(OBJECT-GROUP|MODULE-COMPLIANCE|NOTIFICATION-GROUP)([[:space:]]|$)' \
    "$mib" | awk '{print $1}' >"$tmp/conf.names"
if [ -s "$tmp/conf.names" ]; then
    mapfile -t conf <"$tmp/conf.names"
    args=()
    for n in "${conf[@]}"; do args+=("$module::$n"); done
    rc=0
    translate -On "${args[@]}" >"$tmp/conf.oids" 2>"$tmp/conf.raw" || rc=$?
    mib_complaints "$tmp/conf.raw" >"$tmp/conf.err"
    if [ "$rc" -eq 0 ] && [ ! -s "$tmp/conf.err" ]; then
        paste "$tmp/conf.names" "$tmp/conf.oids" | while IFS=$'\t' read -r n o; do
            case "${o#.}." in
                "$served".*) echo "FAIL: $n ($o) lies inside the served subtree $served" ;;
            esac
        done >"$tmp/conf.fail"
        if [ -s "$tmp/conf.fail" ]; then
            cat "$tmp/conf.fail"
            failures=$((failures + $(wc -l <"$tmp/conf.fail")))
        fi
    else
        fail "snmptranslate cannot resolve the conformance names:"
        sed 's/^/    /' "$tmp/conf.err"
    fi
else
    fail "$module has no conformance section"
fi

echo "smilint: $smi_errors error(s), $smi_allowed allowed warning(s)"
echo "$checked objects checked"
if [ "$failures" -ne 0 ]; then
    echo "$failures problem(s) found"
    exit 1
fi
echo "OK"
