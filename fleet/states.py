"""The state of each agent of a fleet: a realistic mix, mostly healthy
servers and a few with a warning, a failed fan, a degraded volume or a lost
power supply, and a mix of platform variants. Chosen from the seed, so the
same seed gives the same fleet.

The base machine may itself be a server with failures (the sample machine
is one): every agent starts from it made healthy, then gets its condition.
"""

import copy
import random

# (condition, share of the fleet)
CONDITIONS = [
    ("healthy", 70),
    ("warning", 10),
    ("failed fan", 8),
    ("degraded volume", 6),
    ("power supply lost", 6),
]

# (name, environment of the agent, share): the controller's platform family,
# code name and flags, as the README's "Try it" describes them.
VARIANTS = [
    ("standard", {}, 80),
    ("N+1 power redundancy", {"ORV_CODENAME": "KELPO7"}, 10),
    ("no power capping", {"PLATFLAGS": "8000"}, 10),
]

_ONLINE, _REBUILDING = 6, 5
_NORMAL_HEALTH = 2
_OPTIMAL, _PARTIALLY_DEGRADED = 3, 1
_WARNING, _ERROR = 2, 3


def _pick(rng, weighted):
    total = sum(item[-1] for item in weighted)
    point = rng.uniform(0, total)
    for item in weighted:
        point -= item[-1]
        if point <= 0:
            return item
    return weighted[-1]


def healthy(machine):
    """A copy of `machine` with every status normal and no active event."""
    m = copy.deepcopy(machine)
    store = m.get("store", {})
    for table in ("s/fans/status/fantbl", "s/voltages/status/voltagetbl", "s/temperatures/status/temperaturetbl",
                  "s/hw_health/power_modules", "s/hw_health/disks", "s/hw_health/processors", "s/hw_health/memory",
                  "s/hw_health/flashdimms"):
        for row in store.get(table, []):
            if "status" in row:
                row["status"] = "Normal"
    for fan in store.get("s/fans/status/fantbl", []):
        if fan.get("speedPct", 1) == 0:
            fan["speedPct"] = 40
    raid = m.get("raid", {})
    for drive in raid.get("drives", []):
        if drive.get("state") in (_REBUILDING, 1, 3, 4):
            drive["state"] = _ONLINE
        drive["health"] = _NORMAL_HEALTH
    for volume in raid.get("volumes", []):
        volume["state"] = _OPTIMAL
    for module in m.get("persistentMemory", []):
        module["healthState"] = 0
    m["events"] = []
    return m


def _with_event(m, severity, message):
    m.setdefault("events", []).append({"severity": severity, "message": message})


def _fail_one(m, rows, rng, status, severity, message):
    """Gives one of `rows`, drawn from `rng`, the status `status` and an
    active event whose message is `message` formatted with the row; returns
    the row, or None when there are no rows."""
    if not rows:
        return None
    row = rng.choice(rows)
    row["status"] = status
    _with_event(m, severity, message % row)
    return row


def apply_condition(m, condition, rng):
    store = m.get("store", {})
    if condition == "warning":
        _fail_one(m, store.get("s/temperatures/status/temperaturetbl", []), rng, "Warning", _WARNING,
                  "Sensor %(descr)s has transitioned to non-critical from normal.")
    elif condition == "failed fan":
        fan = _fail_one(m, store.get("s/fans/status/fantbl", []), rng, "Critical", _ERROR, "%(descr)s has failed.")
        if fan:
            fan["speedPct"] = 0
    elif condition == "degraded volume":
        raid = m.get("raid", {})
        volumes, drives = raid.get("volumes", []), raid.get("drives", [])
        if volumes and drives:
            rng.choice(volumes)["state"] = _PARTIALLY_DEGRADED
            rng.choice(drives)["state"] = _REBUILDING
            _with_event(m, _WARNING, "A RAID volume is degraded; a drive is rebuilding.")
    elif condition == "power supply lost":
        _fail_one(m, store.get("s/hw_health/power_modules", []), rng, "Critical", _ERROR,
                  "%(name)s has lost its input.")
    return m


def choose(seed, agent):
    """The condition and platform variant of agent `agent` of the fleet of `seed`."""
    rng = random.Random("%d/%d/state" % (seed, agent))
    condition = _pick(rng, CONDITIONS)[0]
    name, environment, _ = _pick(rng, VARIANTS)
    return condition, name, dict(environment), rng


def agent_machine(base, seed, agent):
    """Agent `agent`'s machine (before its identities are replaced), its
    condition, variant name and environment."""
    condition, variant, environment, rng = choose(seed, agent)
    return apply_condition(healthy(base), condition, rng), condition, variant, environment
