"""A fleet of simulated controllers on one machine: each agent Debian's
snmpd with the unchanged module and the simulator, serving its own machine
description on its own loopback port, with its own net-snmp state.

    fleet.py start --count N [--seed S] [--base-port P] [--machine FILE]
    fleet.py status
    fleet.py stop

Everything a fleet has lives in its directory (--dir, default
$TMPDIR/orv3-fleet): fleet.json (what was started), and one directory per
agent with its machine file, configuration, state and log.
"""

import argparse
import concurrent.futures
import json
import os
import signal
import socket
import subprocess
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from identities import personalize  # noqa: E402
from states import agent_machine  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
MODULE = os.path.join(ROOT, "build", "lib", "liborv3_monitors.so")
SIMULATOR = os.path.join(ROOT, "build", "lib", "liborv3_platform_sim.so")
SNMPD = "/usr/sbin/snmpd"
# The MIB modules of snmpd that an agent of a fleet leaves out: SMUX (whose
# port 199 only one agent could have) and the ones that reread /proc on a
# timer whether asked or not (interfaces, disk I/O, CPU statistics): idle,
# a thousand agents would spend most of a core on them.
QUIET_MODULES = "-smux,ifTable,interfaces,ifXTable,diskio,vmstat,cpu"

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


def port_free(port):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        try:
            probe.bind(("127.0.0.1", port))
        except OSError:
            return False
    return True


def answers(port, timeout):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
        client.settimeout(timeout)
        try:
            client.sendto(_GET_SYSUPTIME, ("127.0.0.1", port))
            client.recvfrom(4096)
            return True
        except OSError:
            return False


def write_atomically(path, text):
    with open(path + ".new", "w") as out:
        out.write(text)
    os.replace(path + ".new", path)


def start_agent(directory, number, machine, port, platform):
    here = agent_dir(directory, number)
    for sub in ("persist/cert_indexes", "conf", "home"):
        os.makedirs(os.path.join(here, sub), exist_ok=True)
    write_atomically(os.path.join(here, "machine.json"), json.dumps(machine, indent=1))
    write_atomically(os.path.join(here, "snmpd.conf"),
                     "rocommunity public 127.0.0.1\n"
                     "rwcommunity private 127.0.0.1\n"
                     "dontLogTCPWrappersConnects yes\n"
                     "dlmod snmp_module_monitors %s\n" % MODULE)
    environment = dict(os.environ, LD_PRELOAD=SIMULATOR, ORV3_SIM_MACHINE=os.path.join(here, "machine.json"),
                       SNMP_PERSISTENT_DIR=os.path.join(here, "persist"), SNMPCONFPATH=os.path.join(here, "conf"),
                       HOME=os.path.join(here, "home"), MIBS="", **platform)
    with open(os.path.join(here, "snmpd.log"), "w") as log:
        process = subprocess.Popen(
            [SNMPD, "-f", "-C", "-c", os.path.join(here, "snmpd.conf"), "-I", QUIET_MODULES, "-Lo",
             "udp:127.0.0.1:%d" % port],
            env=environment, stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.STDOUT,
            start_new_session=True)
    return process.pid


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
    ports = [args.base_port + k for k in range(args.count)]
    if ports[-1] > 65535:
        raise FleetError("ports %d to %d: the last is beyond 65535" % (ports[0], ports[-1]))
    taken = [p for p in ports if not port_free(p)]
    if taken:
        raise FleetError("port %d on 127.0.0.1 is in use (%d of the ports %d to %d are); choose another --base-port"
                         % (taken[0], len(taken), ports[0], ports[-1]))
    for path in (MODULE, SIMULATOR):
        if not os.path.exists(path):
            raise FleetError("%s is not built (scripts/fleet builds it)" % path)
    with open(args.machine) as f:
        base = json.load(f)

    os.makedirs(os.path.join(directory, "agents"), exist_ok=True)
    agents = []
    begun = time.monotonic()
    for number, port in enumerate(ports):
        machine, condition, variant, platform = agent_machine(base, args.seed, number)
        machine = personalize(machine, args.seed, number)
        pid = start_agent(directory, number, machine, port, platform)
        agents.append({"number": number, "port": port, "pid": pid,
                       "serial": machine["store"]["s/vpd/machine/serialNo"],
                       "name": "agent-%04d" % number, "condition": condition, "variant": variant,
                       "environment": platform})
    write_atomically(fleet_file(directory), json.dumps(
        {"seed": args.seed, "machine": os.path.abspath(args.machine), "basePort": args.base_port,
         "agents": agents}, indent=1))
    print("started %d snmpd processes in %.1f s; waiting for each to answer" % (len(agents), time.monotonic() - begun))

    pending = list(agents)
    answered = 0
    deadline = time.monotonic() + args.timeout
    with concurrent.futures.ThreadPoolExecutor(max_workers=64) as pool:
        while pending and time.monotonic() < deadline:
            results = list(pool.map(lambda a: answers(a["port"], 0.5), pending))
            still = []
            for agent, ok in zip(pending, results):
                if ok:
                    answered += 1
                elif not alive(agent["pid"]):
                    raise FleetError("agent %d (port %d) exited; its log: %s" % (
                        agent["number"], agent["port"], os.path.join(agent_dir(directory, agent["number"]),
                                                                     "snmpd.log")))
                else:
                    still.append(agent)
            pending = still
            print("  %d/%d answering after %.1f s" % (answered, len(agents), time.monotonic() - begun), flush=True)
    if pending:
        raise FleetError("%d agents did not answer within %d s (first: agent %d, port %d)" % (
            len(pending), args.timeout, pending[0]["number"], pending[0]["port"]))
    print("fleet of %d agents on 127.0.0.1:%d-%d answering after %.1f s (seed %d, %s)" % (
        len(agents), ports[0], ports[-1], time.monotonic() - begun, args.seed, directory))


def status(args):
    fleet = read_fleet(args.dir)
    if not fleet:
        raise FleetError("no fleet in %s" % args.dir)
    up = 0
    for agent in fleet["agents"]:
        state = "answering" if answers(agent["port"], 0.5) else ("running" if alive(agent["pid"]) else "gone")
        up += state == "answering"
        print("%-10s 127.0.0.1:%-5d %-10s %-10s %-18s %s" % (agent["name"], agent["port"], agent["serial"], state,
                                                           agent["condition"], agent["variant"]))
    # For monitoring systems: Prometheus file_sd targets, and plain address:port lines.
    targets = [{"targets": ["127.0.0.1:%d" % a["port"]], "labels": {"serial": a["serial"], "name": a["name"]}}
               for a in fleet["agents"]]
    write_atomically(os.path.join(args.dir, "file_sd.json"), json.dumps(targets, indent=1))
    write_atomically(os.path.join(args.dir, "targets.txt"),
                     "".join("127.0.0.1:%d\n" % a["port"] for a in fleet["agents"]))
    print("%d of %d agents answering; targets in %s and %s" % (
        up, len(fleet["agents"]), os.path.join(args.dir, "file_sd.json"), os.path.join(args.dir, "targets.txt")))


def stop(args):
    fleet = read_fleet(args.dir)
    if not fleet:
        print("no fleet in %s" % args.dir)
        return
    pids = [a["pid"] for a in fleet["agents"] if alive(a["pid"])]
    for pid in pids:
        os.kill(pid, signal.SIGTERM)
    deadline = time.monotonic() + 10
    while time.monotonic() < deadline and any(alive(p) for p in pids):
        time.sleep(0.05)
    for pid in pids:
        if alive(pid):
            os.kill(pid, signal.SIGKILL)
    subprocess.run(["rm", "-rf", args.dir], check=True)
    print("stopped %d agents and removed %s" % (len(pids), args.dir))


def main():
    parser = argparse.ArgumentParser(prog="scripts/fleet", description=__doc__.split("\n\n")[0])
    parser.add_argument("--dir", default=os.path.join(os.environ.get("TMPDIR", "/tmp"), "orv3-fleet"))
    commands = parser.add_subparsers(dest="command", required=True)
    begin = commands.add_parser("start")
    begin.add_argument("--count", type=int, required=True)
    begin.add_argument("--seed", type=int, default=1)
    begin.add_argument("--base-port", type=int, default=20000)
    begin.add_argument("--machine", default=os.path.join(ROOT, "machines", "sample.json"))
    begin.add_argument("--timeout", type=int, default=120)
    commands.add_parser("status")
    commands.add_parser("stop")
    args = parser.parse_args()
    try:
        {"start": start, "status": status, "stop": stop}[args.command](args)
    except FleetError as error:
        print("error: %s" % error, file=sys.stderr)
        sys.exit(1)


if __name__ == "__main__":
    main()
