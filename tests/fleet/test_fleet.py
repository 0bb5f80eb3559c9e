"""scripts/fleet as its users run it: a fleet starts, every agent answers as
its own server, a scenario changes exactly the agent it names, bad input
changes nothing, and stop leaves nothing behind.

Run: python3 -m unittest tests/fleet/test_fleet.py (ctest: fleet). The
fleet's size is ORV3_FLEET_TEST_COUNT (default 20).
"""

import json
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
# The build whose module and simulator the agents load: ORV3_FLEET_BUILD
# (ctest passes its own), else build/.
FLEET = [sys.executable, os.path.join(ROOT, "fleet", "fleet.py"), "--build",
         os.environ.get("ORV3_FLEET_BUILD", os.path.join(ROOT, "build"))]
COUNT = int(os.environ.get("ORV3_FLEET_TEST_COUNT", "20"))

SERIAL = "1.3.6.1.4.1.53917.11.1.1.5.2.1.3.0"
UUID = "1.3.6.1.4.1.53917.11.1.1.5.2.1.4.0"
MAC_COLUMN = "1.3.6.1.4.1.53917.11.1.1.5.19.1.3"
FAN1_STATUS = "1.3.6.1.4.1.53917.11.1.1.3.2.1.10.1"


def free_port_range(count):
    """A base port whose `count` ports are free now."""
    for base in range(24000, 60000, 500):
        if all(_free(base + k) for k in range(count)):
            return base
    raise RuntimeError("no %d free ports" % count)


def _free(port):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as s:
        try:
            s.bind(("127.0.0.1", port))
            return True
        except OSError:
            return False


def running(pid):
    """True while `pid` is a process that has not exited (a zombie has)."""
    try:
        with open("/proc/%d/stat" % pid) as stat:
            return stat.read().split(")")[-1].split()[0] != "Z"
    except OSError:
        return False


class Fleet(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.mkdtemp(prefix="orv3-fleet-test-")
        cls.dir = os.path.join(cls.scratch, "fleet")
        cls.base = free_port_range(COUNT)
        cls.env = dict(os.environ, SNMP_PERSISTENT_DIR=os.path.join(cls.scratch, "client"),
                       SNMPCONFPATH=os.path.join(cls.scratch, "client"), MIBS="")
        cls.scenario = os.path.join(cls.scratch, "scenario.json")
        with open(cls.scenario, "w") as f:
            json.dump({"steps": [{"at": 1, "agent": 3, "change": {"fan": 1, "status": "Critical"}}]}, f)
        cls.started = cls.fleet("start", "--count", str(COUNT), "--seed", "9", "--base-port", str(cls.base),
                                "--scenario", cls.scenario)

    @classmethod
    def tearDownClass(cls):
        # stop fails with the sanitizers' reports when agents wrote any.
        stopped = cls.fleet("stop")
        shutil.rmtree(cls.scratch, ignore_errors=True)
        if stopped.returncode != 0:
            raise AssertionError("stop: " + stopped.stderr)

    @classmethod
    def fleet(cls, *args, directory=None):
        return subprocess.run(FLEET + ["--dir", directory or cls.dir] + list(args), capture_output=True, text=True,
                              env=cls.env, timeout=300)

    def get(self, number, *oids):
        out = subprocess.run(["snmpget", "-v2c", "-c", "public", "-Oqv", "-t", "2", "127.0.0.1:%d" % (self.base + number)]
                             + list(oids), capture_output=True, text=True, env=self.env, timeout=30)
        self.assertEqual(out.returncode, 0, out.stderr)
        return out.stdout.splitlines()

    def walk(self, number, oid):
        out = subprocess.run(["snmpwalk", "-v2c", "-c", "public", "-Oqv", "127.0.0.1:%d" % (self.base + number), oid],
                             capture_output=True, text=True, env=self.env, timeout=30)
        self.assertEqual(out.returncode, 0, out.stderr)
        return out.stdout.splitlines()

    def test_every_agent_answers_with_an_identity_of_its_own(self):
        self.assertEqual(self.started.returncode, 0, self.started.stdout + self.started.stderr)
        serials, uuids, macs = set(), set(), set()
        for number in range(COUNT):
            serial, uuid = self.get(number, SERIAL, UUID)
            serials.add(serial)
            uuids.add(uuid)
            agent_macs = self.walk(number, MAC_COLUMN)
            self.assertEqual(len(agent_macs), 4)
            macs.update(agent_macs)
        self.assertEqual(len(serials), COUNT)
        self.assertEqual(len(uuids), COUNT)
        self.assertEqual(len(macs), 4 * COUNT)

    def test_the_scenario_changes_exactly_the_agent_it_names(self):
        log = os.path.join(self.dir, "scenario.log")
        deadline = time.monotonic() + 10
        while time.monotonic() < deadline and not (os.path.exists(log) and os.path.getsize(log)):
            time.sleep(0.1)
        with open(log) as f:
            lines = f.read().splitlines()
        self.assertEqual(len(lines), 1)
        self.assertRegex(lines[0], r'^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z \+1\.\d s agent 3: '
                                   r'\{"fan": 1, "status": "Critical"\}$')
        # The fan table refreshes within 2 s of the change.
        deadline = time.monotonic() + 5
        while time.monotonic() < deadline and self.get(3, FAN1_STATUS) != ['"Critical"']:
            time.sleep(0.2)
        self.assertEqual(self.get(3, FAN1_STATUS), ['"Critical"'])
        # Every other agent serves fan 1 as its own machine file has it,
        # which the scenario left alone.
        for number in range(COUNT):
            if number == 3:
                continue
            with open(os.path.join(self.dir, "agents", "%04d" % number, "machine.json")) as f:
                own = json.load(f)["store"]["s/fans/status/fantbl"][0]["status"]
            self.assertEqual(self.get(number, FAN1_STATUS), ['"%s"' % own], "agent %d" % number)

    def test_status_writes_targets_for_prometheus_and_other_tools(self):
        out = self.fleet("status")
        self.assertEqual(out.returncode, 0, out.stderr)
        self.assertIn("%d of %d agents answering" % (COUNT, COUNT), out.stdout)
        with open(os.path.join(self.dir, "file_sd.json")) as f:
            targets = json.load(f)
        self.assertEqual([t["targets"] for t in targets], [["127.0.0.1:%d" % (self.base + n)] for n in range(COUNT)])
        self.assertEqual(len({t["labels"]["serial"] for t in targets}), COUNT)
        with open(os.path.join(self.dir, "targets.txt")) as f:
            self.assertEqual(f.read().split(), ["127.0.0.1:%d" % (self.base + n) for n in range(COUNT)])

    def test_a_second_start_refuses_and_changes_nothing(self):
        out = self.fleet("start", "--count", "2", "--base-port", str(self.base + 1000))
        self.assertEqual(out.returncode, 1)
        self.assertIn("a fleet of %d agents is already running in %s; stop it first" % (COUNT, self.dir), out.stderr)

    def test_a_second_host_with_the_same_seed_and_later_agent_numbers_serves_other_identities(self):
        other = os.path.join(self.scratch, "second-host")
        base = free_port_range(2)
        out = self.fleet("start", "--count", "2", "--seed", "9", "--first-agent", str(COUNT), "--base-port", str(base),
                         directory=other)
        try:
            self.assertEqual(out.returncode, 0, out.stderr)
            first_host = {tuple(self.get(n, SERIAL, UUID)) for n in range(COUNT)}
            for port in (base, base + 1):
                get = subprocess.run(["snmpget", "-v2c", "-c", "public", "-Oqv", "127.0.0.1:%d" % port, SERIAL, UUID],
                                     capture_output=True, text=True, env=self.env, timeout=30)
                serial, uuid = get.stdout.splitlines()
                self.assertNotIn(serial, {s for s, _ in first_host})
                self.assertNotIn(uuid, {u for _, u in first_host})
            refused = self.fleet("edit", "0", '{"fan": 1, "status": "Critical"}', directory=other)
            self.assertEqual(refused.returncode, 1)
            self.assertIn("no agent 0: the fleet has agents %d to %d" % (COUNT, COUNT + 1), refused.stderr)
        finally:
            self.assertEqual(self.fleet("stop", directory=other).returncode, 0)

    def test_bad_input_gets_a_clear_error_and_starts_nothing(self):
        other = os.path.join(self.scratch, "other")
        bad = os.path.join(self.scratch, "bad.json")
        cases = [
            ({"steps": [{"at": 1, "agent": COUNT + 5, "change": {"fan": 1, "status": "Critical"}}]},
             "step 1: agent %d does not exist" % (COUNT + 5)),
            ({"steps": [{"at": 1, "agent": 0, "change": {"fan": 99, "status": "Critical"}}]},
             "step 1, agent 0: fan 99: the machine has fan 1 to 8"),
            ('{"steps": [ {"at": 1,, } ]}', ":1: Expecting property name"),
        ]
        for scenario, message in cases:
            with open(bad, "w") as f:
                f.write(scenario if isinstance(scenario, str) else json.dumps(scenario))
            out = self.fleet("start", "--count", "2", "--base-port", str(self.base + 1000), "--scenario", bad,
                             directory=other)
            self.assertEqual(out.returncode, 1, out.stdout)
            self.assertIn(message, out.stderr)
            self.assertFalse(os.path.exists(other))
        # The running fleet's ports are in use.
        out = self.fleet("start", "--count", "3", "--base-port", str(self.base), directory=other)
        self.assertEqual(out.returncode, 1)
        self.assertIn("port %d on 127.0.0.1 is in use (3 of the fleet's 3 endpoints are)" % self.base, out.stderr)
        self.assertFalse(os.path.exists(other))


class StoppedFleet(unittest.TestCase):
    def test_agents_on_addresses_of_their_own_and_stop_leaves_no_process_and_no_state(self):
        scratch = tempfile.mkdtemp(prefix="orv3-fleet-test-")
        directory = os.path.join(scratch, "fleet")
        port = free_port_range(1)
        env = dict(os.environ, SNMP_PERSISTENT_DIR=os.path.join(scratch, "client"),
                   SNMPCONFPATH=os.path.join(scratch, "client"), MIBS="")
        run = lambda *a: subprocess.run(FLEET + ["--dir", directory] + list(a), capture_output=True, text=True,
                                        env=env, timeout=120)
        out = run("start", "--count", "3", "--base-port", str(port), "--address-per-agent")
        self.assertEqual(out.returncode, 0, out.stderr)
        addresses = ["127.1.0.%d:%d" % (n, port) for n in (1, 2, 3)]
        self.assertIn("fleet of 3 agents on %s to %s answering" % (addresses[0], addresses[-1]), out.stdout)
        self.assertEqual(run("status").returncode, 0)
        with open(os.path.join(directory, "targets.txt")) as f:
            self.assertEqual(f.read().split(), addresses)
        serials = set()
        for address in addresses:
            get = subprocess.run(["snmpget", "-v2c", "-c", "public", "-Oqv", address, SERIAL],
                                 capture_output=True, text=True, env=env, timeout=30)
            self.assertEqual(get.returncode, 0, get.stderr)
            serials.add(get.stdout)
        self.assertEqual(len(serials), 3)
        with open(os.path.join(directory, "fleet.json")) as f:
            pids = [a["pid"] for a in json.load(f)["agents"]]
        out = run("stop")
        self.assertEqual(out.returncode, 0, out.stderr)
        self.assertEqual(out.stdout, "stopped 3 agents and removed %s\n" % directory)
        self.assertFalse(os.path.exists(directory))
        for pid in pids:
            self.assertFalse(running(pid), "agent process %d" % pid)
        shutil.rmtree(scratch, ignore_errors=True)


if __name__ == "__main__":
    unittest.main()
