"""A fleet of simulated controllers on one machine: each agent Debian's
snmpd with the unchanged module and the simulator, serving its own machine
description on its own loopback port, with its own net-snmp state.

    fleet.py start --count N [--seed S] [--first-agent K] [--base-port P] [--address-per-agent]
                   [--machine FILE] [--scenario FILE]
    fleet.py status
    fleet.py edit AGENT CHANGE...
    fleet.py stop

CHANGE is a JSON object (fleet/changes.py lists them), for example
'{"fan": 3, "status": "Critical"}'. A scenario (--scenario FILE) is a
timeline of such changes (docs/fleet.md).

Everything a fleet has lives in its directory (--dir, default
$TMPDIR/orv3-fleet): fleet.json (what was started), and one directory per
agent with its machine file, configuration, state and log.
"""

import argparse
import concurrent.futures
import glob
import ipaddress
import json
import random
import os
import signal
import socket
import subprocess
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from identities import Identities, personalize  # noqa: E402
from states import agent_machine  # noqa: E402
import changes  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SNMPD = "/usr/sbin/snmpd"


def built(args, name):
    """A library of the build the fleet runs (--build, default build/)."""
    return os.path.join(args.build, "lib", name)
# The MIB modules of snmpd that an agent of a fleet leaves out: SMUX (whose
# port 199 only one agent could have) and the ones that wake the agent on a
# timer whether asked or not: interfaces, disk I/O and CPU statistics
# reread /proc every few seconds; the IP address and statistics tables
# refresh their caches every 30 and 60 s, the pass_persist scripts are
# checked every 10 s and the notification log is trimmed every 300 s. Idle,
# a thousand agents would spend a tenth of a core on those, and most of a
# core on the first.
QUIET_MODULES = ("-smux,ifTable,interfaces,ifXTable,diskio,vmstat,cpu,"
                 "ipAddressTable,ipSystemStatsTable,ipIfStatsTable,pass_persist,notification_log")

# GET sysUpTime.0, SNMPv2c, community public: the agent answers once it
# serves. Encoded by hand so that asking a thousand agents costs no process.
_GET_SYSUPTIME = bytes.fromhex(
    "3026" "020101" "0406" + b"public".hex() + "a019" "020101" "020100" "020100"
    "300e" "300c" "06082b06010201010300" "0500")


class FleetError(Exception):
    pass


def fleet_file(directory):
    return os.path.join(directory, "fleet.json")


def agent_dir(directory, number):
    return os.path.join(directory, "agents", "%04d" % number)


def alive(pid):
    try:
        os.kill(pid, 0)
    except ProcessLookupError:
        return False
    except PermissionError:
        return True
    # A zombie of ours counts as gone.
    try:
        with open("/proc/%d/stat" % pid) as stat:
            return stat.read().split(")")[-1].split()[0] != "Z"
    except OSError:
        return False


# With --address-per-agent, agent n listens on the (n+1)th address of this
# block, every agent on the same port: monitoring tools that key devices by
# address see a thousand devices. Linux routes all of 127.0.0.0/8 to the
# loopback interface, so no address needs configuring.
AGENT_ADDRESSES = ipaddress.ip_network("127.1.0.0/16")


def agent_endpoints(args):
    """(address, port) of each agent to start."""
    if args.address_per_agent:
        if args.count > AGENT_ADDRESSES.num_addresses - 2:
            raise FleetError("--address-per-agent serves at most %d agents" % (AGENT_ADDRESSES.num_addresses - 2))
        return [(str(AGENT_ADDRESSES[k + 1]), args.base_port) for k in range(args.count)]
    return [("127.0.0.1", args.base_port + k) for k in range(args.count)]


def endpoint(agent):
    return "%s:%d" % (agent["address"], agent["port"])


def port_free(address, port):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        try:
            probe.bind((address, port))
        except OSError:
            return False
    return True


def answers(agent, timeout):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
        client.settimeout(timeout)
        try:
            client.sendto(_GET_SYSUPTIME, (agent["address"], agent["port"]))
            client.recvfrom(4096)
            return True
        except OSError:
            return False


def write_atomically(path, text):
    with open(path + ".new", "w") as out:
        out.write(text)
    os.replace(path + ".new", path)


def start_agent(args, number, machine, address, port, platform):
    directory = args.dir
    here = agent_dir(directory, number)
    for sub in ("persist/cert_indexes", "conf", "home"):
        os.makedirs(os.path.join(here, sub), exist_ok=True)
    write_atomically(os.path.join(here, "machine.json"), json.dumps(machine, indent=1))
    write_atomically(os.path.join(here, "snmpd.conf"),
                     "rocommunity public 127.0.0.0/8\n"
                     "rwcommunity private 127.0.0.0/8\n"
                     "dontLogTCPWrappersConnects yes\n"
                     "dlmod snmp_module_monitors %s\n" % built(args, "liborv3_monitors.so"))
    # A build with the sanitizers names their runtime in ORV3_FLEET_PRELOAD:
    # it must come first into snmpd, before the simulator.
    preload = ":".join(filter(None, [os.environ.get("ORV3_FLEET_PRELOAD"), built(args, "liborv3_platform_sim.so")]))
    sanitizer_logs = {"ASAN_OPTIONS": "log_path=%s/asan:detect_leaks=1" % here,
                      "UBSAN_OPTIONS": "print_stacktrace=1:log_path=%s/ubsan" % here} \
        if os.environ.get("ORV3_FLEET_PRELOAD") else {}
    environment = dict(os.environ, LD_PRELOAD=preload, ORV3_SIM_MACHINE=os.path.join(here, "machine.json"),
                       SNMP_PERSISTENT_DIR=os.path.join(here, "persist"), SNMPCONFPATH=os.path.join(here, "conf"),
                       HOME=os.path.join(here, "home"), MIBS="", **sanitizer_logs, **platform)
    with open(os.path.join(here, "snmpd.log"), "w") as log:
        process = subprocess.Popen(
            [SNMPD, "-f", "-C", "-c", os.path.join(here, "snmpd.conf"), "-I", QUIET_MODULES, "-Lo",
             "udp:%s:%d" % (address, port)],
            env=environment, stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.STDOUT,
            start_new_session=True)
    return process.pid


def agent_numbers(fleet):
    """The numbers of a fleet's agents: from its first, one a port."""
    return range(fleet["firstAgent"], fleet["firstAgent"] + len(fleet["agents"]))


def describe_numbers(numbers):
    return "agents %d to %d" % (numbers[0], numbers[-1])


# Each agent's simulator watches its machine file with an inotify instance.
# The kernel allows a user 128 by default: a large fleet would take them
# all, and then the user's other programs could not watch files (Prometheus'
# file_sd fails with "too many open files"). An agent without an instance
# still serves its edits: it looks at the file's time instead.
INOTIFY_LIMIT = "/proc/sys/fs/inotify/max_user_instances"
INOTIFY_RESERVE = 32  # instances left to other programs before the limit is raised
INOTIFY_HEADROOM = 128  # and after


def inotify_instances_in_use():
    """The inotify instances this user's processes hold."""
    uid, held = os.getuid(), 0
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            if os.stat("/proc/" + pid).st_uid != uid:
                continue
            for fd in os.listdir("/proc/%s/fd" % pid):
                held += os.readlink("/proc/%s/fd/%s" % (pid, fd)) == "anon_inode:inotify"
        except OSError:
            continue
    return held


def make_room_for_watches(count):
    """Raises the user's inotify instance limit when `count` more would leave
    other programs too few; says what it did, or what to do."""
    try:
        with open(INOTIFY_LIMIT) as f:
            limit = int(f.read())
    except (OSError, ValueError):
        return
    in_use = inotify_instances_in_use()
    if in_use + count + INOTIFY_RESERVE <= limit:
        return
    wanted = in_use + count + INOTIFY_HEADROOM
    try:
        with open(INOTIFY_LIMIT, "w") as f:
            f.write("%d\n" % wanted)
        print("raised fs.inotify.max_user_instances from %d to %d: each agent watches its machine file with one, "
              "and %d are in use" % (limit, wanted, in_use))
    except OSError:
        print("warning: fs.inotify.max_user_instances is %d and %d are in use: the agents beyond it watch their "
              "machine files by looking at their times, and other programs of this user may fail to watch files; "
              "as root: sysctl -w fs.inotify.max_user_instances=%d" % (limit, in_use, wanted), file=sys.stderr)


def read_fleet(directory):
    try:
        with open(fleet_file(directory)) as f:
            return json.load(f)
    except FileNotFoundError:
        return None


def start(args):
    directory = args.dir
    running = read_fleet(directory)
    if running and any(alive(a["pid"]) for a in running["agents"]):
        raise FleetError("a fleet of %d agents is already running in %s; stop it first (scripts/fleet stop)"
                         % (len(running["agents"]), directory))
    if args.count < 1:
        raise FleetError("--count must be at least 1")
    numbers = range(args.first_agent, args.first_agent + args.count)
    if args.first_agent < 0 or numbers[-1] >= Identities.MAX_AGENTS:
        raise FleetError("agent numbers run from 0 to %d; --first-agent %d --count %d goes beyond"
                         % (Identities.MAX_AGENTS - 1, args.first_agent, args.count))
    endpoints = agent_endpoints(args)
    if endpoints[-1][1] > 65535:
        raise FleetError("ports %d to %d: the last is beyond 65535" % (endpoints[0][1], endpoints[-1][1]))
    taken = [e for e in endpoints if not port_free(*e)]
    if taken:
        raise FleetError("port %d on %s is in use (%d of the fleet's %d endpoints are); choose another --base-port"
                         % (taken[0][1], taken[0][0], len(taken), len(endpoints)))
    for path in (built(args, "liborv3_monitors.so"), built(args, "liborv3_platform_sim.so")):
        if not os.path.exists(path):
            raise FleetError("%s is not built (scripts/fleet builds it)" % path)
    with open(args.machine) as f:
        base = json.load(f)
    steps = load_scenario(args.scenario, numbers) if args.scenario else None

    begun = time.monotonic()
    planned = []
    for number in numbers:
        machine, condition, variant, platform = agent_machine(base, args.seed, number)
        planned.append((personalize(machine, args.seed, number), condition, variant, platform))
    if steps:
        check_scenario_changes(args.scenario, steps, dict(zip(numbers, (p[0] for p in planned))))

    make_room_for_watches(args.count)
    os.makedirs(os.path.join(directory, "agents"), exist_ok=True)
    agents = []
    for number, (address, port), (machine, condition, variant, platform) in zip(numbers, endpoints, planned):
        pid = start_agent(args, number, machine, address, port, platform)
        agents.append({"number": number, "address": address, "port": port, "pid": pid,
                       "serial": machine["store"]["s/vpd/machine/serialNo"],
                       "name": "agent-%04d" % number, "condition": condition, "variant": variant,
                       "environment": platform})
    write_atomically(fleet_file(directory), json.dumps(
        {"seed": args.seed, "firstAgent": args.first_agent, "machine": os.path.abspath(args.machine),
         "basePort": args.base_port,
         "agents": agents}, indent=1))
    print("started %d snmpd processes in %.1f s; waiting for each to answer" % (len(agents), time.monotonic() - begun))

    pending = list(agents)
    answered = 0
    deadline = time.monotonic() + args.timeout
    with concurrent.futures.ThreadPoolExecutor(max_workers=64) as pool:
        while pending and time.monotonic() < deadline:
            results = list(pool.map(lambda a: answers(a, 0.5), pending))
            still = []
            for agent, ok in zip(pending, results):
                if ok:
                    answered += 1
                elif not alive(agent["pid"]):
                    raise FleetError("agent %d (%s) exited; its log: %s" % (
                        agent["number"], endpoint(agent), os.path.join(agent_dir(directory, agent["number"]),
                                                                     "snmpd.log")))
                else:
                    still.append(agent)
            pending = still
            print("  %d/%d answering after %.1f s" % (answered, len(agents), time.monotonic() - begun), flush=True)
    if pending:
        raise FleetError("%d agents did not answer within %d s (first: agent %d, %s)" % (
            len(pending), args.timeout, pending[0]["number"], endpoint(pending[0])))
    print("fleet of %d agents on %s to %s answering after %.1f s (seed %d, %s)" % (
        len(agents), endpoint(agents[0]), endpoint(agents[-1]), time.monotonic() - begun, args.seed, directory))
    if steps:
        with open(os.path.join(directory, "scenario.out"), "w") as out:
            runner = subprocess.Popen([sys.executable, os.path.abspath(__file__), "--dir", directory, "run-scenario",
                                       os.path.abspath(args.scenario)],
                                      stdin=subprocess.DEVNULL, stdout=out, stderr=subprocess.STDOUT,
                                      start_new_session=True)
        fleet = read_fleet(directory)
        fleet["scenarioPid"] = runner.pid
        write_atomically(fleet_file(directory), json.dumps(fleet, indent=1))
        print("scenario %s running from now; each change is logged in %s" % (
            args.scenario, os.path.join(directory, "scenario.log")))


def status(args):
    fleet = read_fleet(args.dir)
    if not fleet:
        raise FleetError("no fleet in %s" % args.dir)
    up = 0
    for agent in fleet["agents"]:
        state = "answering" if answers(agent, 0.5) else ("running" if alive(agent["pid"]) else "gone")
        up += state == "answering"
        print("%-10s %-21s %-10s %-10s %-18s %s" % (agent["name"], endpoint(agent), agent["serial"], state,
                                                  agent["condition"], agent["variant"]))
    # For monitoring systems: Prometheus file_sd targets, and plain address:port lines.
    targets = [{"targets": [endpoint(a)], "labels": {"serial": a["serial"], "name": a["name"]}}
               for a in fleet["agents"]]
    write_atomically(os.path.join(args.dir, "file_sd.json"), json.dumps(targets, indent=1))
    write_atomically(os.path.join(args.dir, "targets.txt"),
                     "".join(endpoint(a) + "\n" for a in fleet["agents"]))
    print("%d of %d agents answering; targets in %s and %s" % (
        up, len(fleet["agents"]), os.path.join(args.dir, "file_sd.json"), os.path.join(args.dir, "targets.txt")))


def stop(args):
    fleet = read_fleet(args.dir)
    if not fleet:
        print("no fleet in %s" % args.dir)
        return
    pids = [a["pid"] for a in fleet["agents"] if alive(a["pid"])]
    agents = len(pids)
    if fleet.get("scenarioPid") and alive(fleet["scenarioPid"]):
        pids.append(fleet["scenarioPid"])
    for pid in pids:
        os.kill(pid, signal.SIGTERM)
    deadline = time.monotonic() + 10
    while time.monotonic() < deadline and any(alive(p) for p in pids):
        time.sleep(0.05)
    for pid in pids:
        if alive(pid):
            os.kill(pid, signal.SIGKILL)
    # An agent that has exited stays a zombie until init reaps it, which
    # takes a moment: wait for that, so that nothing is listed after stop.
    deadline = time.monotonic() + 2
    while time.monotonic() < deadline and any(os.path.exists("/proc/%d" % p) for p in pids):
        time.sleep(0.02)
    # Agents run with the sanitizers write their reports as they exit; what
    # they found in the module or the simulator outlives the fleet's
    # directory on standard error.
    findings = 0
    for report in sorted(glob.glob(os.path.join(args.dir, "agents", "*", "asan.*")) +
                         glob.glob(os.path.join(args.dir, "agents", "*", "ubsan.*"))):
        with open(report, errors="replace") as f:
            own = sanitizer_findings(f.read())
        findings += len(own)
        for finding in own:
            print("==== %s\n%s" % (os.path.relpath(report, args.dir), finding), file=sys.stderr)
    subprocess.run(["rm", "-rf", args.dir], check=True)
    print("stopped %d agents and removed %s" % (agents, args.dir))
    if findings:
        raise FleetError("the sanitizers found %d errors in the agents (above)" % findings)


# A leak is ours when a frame of its stack is in the module or the simulator
# ("<unknown module>": snmpd unloads the module before it reports leaks).
# snmpd's own libraries leak a few allocations at exit that are not.
_OWN_CODE = ("liborv3_", "<unknown module>", ROOT + "/")


def sanitizer_findings(report):
    """The findings of a sanitizer report that count: every address or
    undefined-behaviour error, and the leaks of our own code."""
    findings, current, kind = [], [], None

    def flush():
        text = "\n".join(current)
        if kind == "error" or (kind == "leak" and any(m in text for m in _OWN_CODE)):
            findings.append(text)
        current.clear()

    for line in report.splitlines():
        if "runtime error:" in line or "ERROR: AddressSanitizer" in line:
            flush()
            kind = "error"
        elif "Direct leak of" in line or "Indirect leak of" in line:
            flush()
            kind = "leak"
        elif "ERROR: LeakSanitizer" in line or line.startswith("SUMMARY:"):
            flush()
            kind = None
        if kind:
            current.append(line)
    flush()
    return findings


def machine_path(directory, number):
    return os.path.join(agent_dir(directory, number), "machine.json")


def edit_agent(directory, number, change_list):
    """Applies the changes to agent `number`'s machine file in one replace."""
    path = machine_path(directory, number)
    with open(path) as f:
        machine = json.load(f)
    for change in change_list:
        changes.apply(machine, change)
    write_atomically(path, json.dumps(machine, indent=1))


def edit(args):
    fleet = read_fleet(args.dir)
    if not fleet:
        raise FleetError("no fleet in %s" % args.dir)
    if args.agent not in agent_numbers(fleet):
        raise FleetError("no agent %d: the fleet has %s" % (args.agent, describe_numbers(agent_numbers(fleet))))
    try:
        change_list = [json.loads(text) for text in args.changes]
        edit_agent(args.dir, args.agent, change_list)
    except json.JSONDecodeError as error:
        raise FleetError("a change is not JSON: %s" % error)
    except changes.ChangeError as error:
        raise FleetError("agent %d: %s; nothing changed" % (args.agent, error))
    print("agent %d: %s" % (args.agent, "; ".join(changes.describe(c) for c in change_list)))


def load_scenario(path, numbers):
    """The scenario's steps, checked against a fleet of the agents `numbers`;
    FleetError names the first thing wrong, with its step."""
    try:
        with open(path) as f:
            scenario = json.load(f)
    except OSError as error:
        raise FleetError("cannot read the scenario %s: %s" % (path, error.strerror))
    except json.JSONDecodeError as error:
        raise FleetError("%s:%d: %s" % (path, error.lineno, error.msg))
    steps = scenario.get("steps") if isinstance(scenario, dict) else None
    if not isinstance(steps, list) or not steps:
        raise FleetError("%s: needs a non-empty \"steps\" list" % path)
    for n, step in enumerate(steps, 1):
        where = "%s: step %d" % (path, n)
        if not isinstance(step, dict):
            raise FleetError("%s: is not an object" % where)
        timing = [k for k in ("at", "every") if k in step]
        if len(timing) != 1 or not isinstance(step[timing[0]], (int, float)) or step[timing[0]] < 0 or \
                (timing[0] == "every" and step["every"] <= 0):
            raise FleetError("%s: needs \"at\" (seconds from the start) or \"every\" (seconds, above 0)" % where)
        agent = step.get("agent")
        if agent != "random" and (not isinstance(agent, int) or isinstance(agent, bool) or agent not in numbers):
            raise FleetError("%s: agent %r does not exist (the fleet has %s, or \"random\")"
                             % (where, agent, describe_numbers(numbers)))
        if "change" not in step:
            raise FleetError("%s: needs a \"change\"" % where)
    return steps


def check_scenario_changes(path, steps, machines):
    """Tries every step's change on a copy of its agent's machine (every
    agent's for a random one), so that a change that cannot apply is found
    before the fleet starts. `machines` holds each agent's by number."""
    for n, step in enumerate(steps, 1):
        numbers = [step["agent"]] if step["agent"] != "random" else machines.keys()
        for number in numbers:
            try:
                changes.apply(json.loads(json.dumps(machines[number])), step["change"])
            except changes.ChangeError as error:
                raise FleetError("%s: step %d, agent %d: %s" % (path, n, number, error))


def run_scenario(args):
    """Applies the scenario's steps on time, logging each with the time it
    was made (scenario.log); runs until the fleet is stopped."""
    fleet = read_fleet(args.dir)
    numbers = agent_numbers(fleet)
    steps = load_scenario(args.scenario, numbers)
    rng = random.Random("%d/scenario" % fleet["seed"])
    begun = time.time()
    schedule = []
    for n, step in enumerate(steps):
        schedule.append([step.get("at", step.get("every")), n])
    log = open(os.path.join(args.dir, "scenario.log"), "a", buffering=1)
    while schedule:
        schedule.sort()
        due, n = schedule[0]
        time.sleep(max(0.0, begun + due - time.time()))
        step = steps[n]
        agent = step["agent"] if step["agent"] != "random" else rng.choice(numbers)
        try:
            edit_agent(args.dir, agent, [step["change"]])
            outcome = changes.describe(step["change"])
        except (changes.ChangeError, OSError) as error:
            outcome = "not made: %s" % error
        made = time.time()
        log.write("%s +%.1f s agent %d: %s\n" % (
            time.strftime("%Y-%m-%dT%H:%M:%S", time.gmtime(made)) + ".%03dZ" % int(made % 1 * 1000),
            made - begun, agent, outcome))
        if "every" in step:
            schedule[0][0] += step["every"]
        else:
            schedule.pop(0)


def main():
    # Piped into head, the listing ends quietly.
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)
    parser = argparse.ArgumentParser(prog="scripts/fleet", description=__doc__.split("\n\n")[0])
    parser.add_argument("--dir", default=os.path.join(os.environ.get("TMPDIR", "/tmp"), "orv3-fleet"))
    parser.add_argument("--build", default=os.path.join(ROOT, "build"),
                        help="the build directory whose module and simulator the agents load")
    commands = parser.add_subparsers(dest="command", required=True)
    begin = commands.add_parser("start")
    begin.add_argument("--count", type=int, required=True)
    begin.add_argument("--seed", type=int, default=1)
    begin.add_argument("--first-agent", type=int, default=0,
                       help="the number of the first agent: hosts that share a seed and run agents of distinct "
                            "numbers serve distinct identities")
    begin.add_argument("--base-port", type=int, default=20000)
    begin.add_argument("--address-per-agent", action="store_true",
                       help="agent n on 127.1.0.(n+1) and so on, every agent on --base-port")
    begin.add_argument("--machine", default=os.path.join(ROOT, "machines", "sample.json"))
    begin.add_argument("--timeout", type=int, default=120)
    begin.add_argument("--scenario")
    commands.add_parser("status")
    change = commands.add_parser("edit")
    change.add_argument("agent", type=int)
    change.add_argument("changes", nargs="+")
    commands.add_parser("stop")
    runner = commands.add_parser("run-scenario")
    runner.add_argument("scenario")
    args = parser.parse_args()
    try:
        {"start": start, "status": status, "edit": edit, "stop": stop,
         "run-scenario": run_scenario}[args.command](args)
    except FleetError as error:
        print("error: %s" % error, file=sys.stderr)
        sys.exit(1)


if __name__ == "__main__":
    main()
