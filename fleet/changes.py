"""Changes to an agent's machine, as `scripts/fleet edit` and scenarios make
them: a status of a sensor, fan, power supply or disk, the state of a RAID
drive or volume, an event raised or all events cleared, or any value by
JSON Pointer. Each change is a small JSON object:

    {"fan": 3, "status": "Critical"}          the third row of the fan table
    {"voltage": 1, "status": "Warning"}       also "temperature", "powerSupply", "disk"
    {"drive": 2, "state": 4}                  the second RAID drive: Failed
    {"volume": 1, "state": 1}                 the first volume: Partially Degraded
    {"event": {"severity": 3, "message": "Fan 3A Tach has failed."}}
    {"clearEvents": true}
    {"set": "/store/s~1vpd~1machine~1prodName", "value": "Orvane R1260 V3"}
"""

import json

STATUS_TABLES = {
    "fan": "s/fans/status/fantbl",
    "voltage": "s/voltages/status/voltagetbl",
    "temperature": "s/temperatures/status/temperaturetbl",
    "powerSupply": "s/hw_health/power_modules",
    "disk": "s/hw_health/disks",
}


class ChangeError(Exception):
    pass


def _row(rows, number, what):
    if not isinstance(number, int) or isinstance(number, bool) or not 1 <= number <= len(rows):
        raise ChangeError("%s %r: the machine has %s 1 to %d" % (what, number, what, len(rows)))
    return rows[number - 1]


def _unescape(token):
    return token.replace("~1", "/").replace("~0", "~")


def _set(machine, pointer, value):
    if not isinstance(pointer, str) or not pointer.startswith("/"):
        raise ChangeError("set: %r is not a JSON Pointer" % (pointer,))
    tokens = [_unescape(t) for t in pointer[1:].split("/")]
    here = machine
    for token in tokens[:-1]:
        try:
            here = here[int(token)] if isinstance(here, list) else here[token]
        except (KeyError, IndexError, ValueError, TypeError):
            raise ChangeError("set: the machine has no %s" % pointer)
    last = tokens[-1]
    if isinstance(here, list):
        try:
            here[int(last)] = value
        except (IndexError, ValueError):
            raise ChangeError("set: the machine has no %s" % pointer)
    elif isinstance(here, dict):
        here[last] = value
    else:
        raise ChangeError("set: the machine has no %s" % pointer)


def apply(machine, change):
    """Applies `change` to `machine` in place; ChangeError says what is wrong."""
    if not isinstance(change, dict):
        raise ChangeError("a change is a JSON object, not %s" % json.dumps(change))
    for kind, table in STATUS_TABLES.items():
        if kind in change:
            if not isinstance(change.get("status"), str):
                raise ChangeError("%s: needs a \"status\" text" % json.dumps(change))
            _row(machine.get("store", {}).get(table, []), change[kind], kind)["status"] = change["status"]
            return
    raid = machine.get("raid", {})
    for kind, rows in (("drive", raid.get("drives", [])), ("volume", raid.get("volumes", []))):
        if kind in change:
            if not isinstance(change.get("state"), int):
                raise ChangeError("%s: needs a numeric \"state\"" % json.dumps(change))
            _row(rows, change[kind], kind)["state"] = change["state"]
            return
    if "event" in change:
        event = change["event"]
        if not (isinstance(event, dict) and isinstance(event.get("severity"), int)
                and isinstance(event.get("message"), str)):
            raise ChangeError("event: needs {\"severity\": 2 or 3, \"message\": text}")
        machine.setdefault("events", []).append({"severity": event["severity"], "message": event["message"]})
        return
    if change.get("clearEvents") is True:
        machine["events"] = []
        return
    if "set" in change:
        if "value" not in change:
            raise ChangeError("%s: needs a \"value\"" % json.dumps(change))
        _set(machine, change["set"], change["value"])
        return
    raise ChangeError("unknown change %s" % json.dumps(change))


def describe(change):
    return json.dumps(change, separators=(", ", ": "))
