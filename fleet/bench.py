"""The fleet at scale, measured: how long a fleet of N agents (default
1,000) takes until every agent answers, its proportional memory, its CPU
when idle, and then a Prometheus server scraping every agent through one
SNMP exporter at an interval (default 60 s) for a while (default 10
minutes): whether every scrape succeeds, how long scrapes take, how soon
the changes of a scenario show in Prometheus, and which alerts fire.

    bench.py --snmp-yml FILE [--count N] [--minutes M] [--interval S] [--module M] [--seed S]
             [--base-port P] [--build DIR] [--dir DIR] [--quick]

It prints figures and which targets hold; it fails only when the fleet or
the monitoring system cannot be run at all. --quick (10 agents, a 5 s
interval for 45 s, about a minute and a half in all) shows that it runs.
"""

import argparse
import calendar
import json
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import urllib.parse
import urllib.request

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from states import choose  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
FLEET = os.path.join(ROOT, "fleet", "fleet.py")
JOB = "orv3_monitors"  # the job the alert rules select

# Targets for the machine this runs on (2 cores, 24 GiB).
START_TARGET_S = 60
PSS_TARGET_GIB = 6
IDLE_CPU_TARGET_PCT = 5  # of one core, for the whole fleet

SETTLE_S = 30  # after every agent answers, before idle CPU is measured
IDLE_S = 60  # how long idle CPU is measured

FAILED_EVENT = "Sensor Exhaust Temp has transitioned to critical from less severe. (fleet bench, change %d)"


class BenchError(Exception):
    pass


def cpu_seconds(pids):
    """The CPU time the processes (all their threads) have used, in
    seconds. The scheduler's own account (schedstat, in nanoseconds), since
    an idle agent runs for well under the 10 ms of a clock tick at a time."""
    nanoseconds = 0
    for pid in pids:
        try:
            for thread in os.listdir("/proc/%d/task" % pid):
                with open("/proc/%d/task/%s/schedstat" % (pid, thread)) as schedstat:
                    nanoseconds += int(schedstat.read().split()[0])
        except OSError:
            pass
    return nanoseconds / 1e9


def pss_kib(pids):
    total = 0
    for pid in pids:
        try:
            with open("/proc/%d/smaps_rollup" % pid) as rollup:
                total += next(int(line.split()[1]) for line in rollup if line.startswith("Pss:"))
        except (OSError, StopIteration):
            pass
    return total


def free_tcp_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def http_json(url, timeout=60):
    with urllib.request.urlopen(url, timeout=timeout) as response:
        return json.load(response)


def percentile(values, p):
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, int(p / 100 * len(ordered)))]


def verdict(holds):
    return "holds" if holds else "MISSED"


class Prometheus:
    """A Prometheus server and one SNMP exporter, on free loopback ports,
    with their state in `directory`."""

    def __init__(self, directory, snmp_yml, module, file_sd, interval):
        self.directory = directory
        exporter_port, self.port = free_tcp_port(), free_tcp_port()
        config = os.path.join(directory, "prometheus.yml")
        with open(config, "w") as f:
            f.write("""global:
  scrape_interval: {interval}s
  scrape_timeout: {timeout}s
  evaluation_interval: 15s
rule_files: ['{rules}']
scrape_configs:
  - job_name: {job}
    metrics_path: /snmp
    params: {{module: [{module}]}}
    file_sd_configs:
      - files: ['{file_sd}']
    relabel_configs:
      - {{source_labels: [__address__], target_label: __param_target}}
      - {{source_labels: [__param_target], target_label: instance}}
      - {{target_label: __address__, replacement: '127.0.0.1:{exporter}'}}
""".format(interval=interval, timeout=min(interval, 30), rules=os.path.join(ROOT, "contrib", "prometheus", "alerts.yml"),
           job=JOB, module=module, file_sd=file_sd, exporter=exporter_port))
        self.processes = []
        self.processes.append(self._launch("exporter", [
            "prometheus-snmp-exporter", "--config.file=" + snmp_yml, "--web.listen-address=127.0.0.1:%d" % exporter_port]))
        self.processes.append(self._launch("prometheus", [
            "prometheus", "--config.file=" + config, "--storage.tsdb.path=" + os.path.join(directory, "data"),
            "--web.listen-address=127.0.0.1:%d" % self.port]))
        deadline = time.monotonic() + 60
        while True:
            try:
                urllib.request.urlopen("http://127.0.0.1:%d/-/ready" % self.port, timeout=2)
                break
            except OSError:
                if time.monotonic() > deadline or any(p.poll() is not None for p in self.processes):
                    raise BenchError("Prometheus or the exporter did not start; logs in %s" % directory)
                time.sleep(0.2)

    def _launch(self, name, command):
        log = open(os.path.join(self.directory, name + ".log"), "w")
        return subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.STDOUT,
                                cwd=self.directory, start_new_session=True)

    def pids(self):
        return [p.pid for p in self.processes]

    def query(self, expr, at):
        url = "http://127.0.0.1:%d/api/v1/query?%s" % (self.port, urllib.parse.urlencode({"query": expr, "time": at}))
        return http_json(url)["data"]["result"]

    def query_range(self, expr, begin, end):
        url = "http://127.0.0.1:%d/api/v1/query_range?%s" % (self.port, urllib.parse.urlencode(
            {"query": expr, "start": begin, "end": end, "step": 1}))
        return http_json(url)["data"]["result"]

    def alerts(self):
        return http_json("http://127.0.0.1:%d/api/v1/alerts" % self.port)["data"]["alerts"]

    def stop(self):
        for process in self.processes:
            process.terminate()
        for process in self.processes:
            try:
                process.wait(timeout=30)
            except subprocess.TimeoutExpired:
                process.kill()


def plan_scenario(args, path):
    """A scenario that breaks and mends agents while Prometheus scrapes:
    its changes fall between one interval after the first scrape and two
    intervals before the last. Returns what each change should show in
    Prometheus, by the agent it names (or "random")."""
    scraping_from = args.settle + args.idle + 5
    first, last = scraping_from + args.interval, scraping_from + args.minutes * 60 - 2 * args.interval
    if last <= first:
        raise BenchError("--minutes %g leaves no time for changes: give at least %g" % (
            args.minutes, (3 * args.interval + 10) / 60))
    agents = list(range(17, args.count)) + list(range(min(17, args.count)))
    healthy = [n for n in agents if choose(args.seed, n)[0] == "healthy"]
    if len(healthy) < 2:
        raise BenchError("--count %d leaves too few healthy agents to break" % args.count)
    fan_agent, volume_agent = healthy[0], healthy[1]
    at = lambda share: round(first + share * (last - first), 1)
    steps = [
        {"at": at(0), "agent": fan_agent, "change": {"fan": 1, "status": "Critical"}},
        {"at": at(0.25), "agent": volume_agent, "change": {"volume": 1, "state": 2}},
        {"at": at(0.5), "agent": "random", "change": {"event": {"severity": 3, "message": FAILED_EVENT % 3}}},
        {"at": at(0.75), "agent": fan_agent, "change": {"fan": 1, "status": "Normal"}},
        {"at": at(1), "agent": "random", "change": {"event": {"severity": 3, "message": FAILED_EVENT % 5}}},
    ]
    with open(path, "w") as f:
        json.dump({"steps": steps}, f, indent=1)


def shows(change, instance):
    """A PromQL expression over `instance` and the value it takes once
    Prometheus has seen `change`."""
    where = 'job="%s",instance="%s"' % (JOB, instance)
    if "fan" in change:
        critical = 'count(fanHealthStatus{%s,fanHealthStatus="Critical"}) or vector(0)' % where
        return critical, 1 if change["status"] == "Critical" else 0
    if "volume" in change:
        return 'count(raidVolumeState{%s,raidVolumeState="Degraded"}) or vector(0)' % where, 1
    if "event" in change:
        return ('count(systemHealthSummarySeverity{%s,systemHealthSummaryDescription="%s"}) or vector(0)'
                % (where, change["event"]["message"]), 1)
    raise BenchError("no expression for %r" % change)


def read_scenario_log(directory):
    """(time made, agent, change) of every change the scenario made."""
    made = []
    with open(os.path.join(directory, "scenario.log")) as log:
        for line in log:
            stamp, _, rest = line.rstrip("\n").partition(" ")
            agent_part, _, change = rest.split(" agent ", 1)[1].partition(": ")
            seconds = calendar.timegm(time.strptime(stamp[:19], "%Y-%m-%dT%H:%M:%S")) + float(stamp[19:-1] or 0)
            made.append((seconds, int(agent_part), json.loads(change)))
    return made


def run_fleet(args, *command):
    return subprocess.run([sys.executable, FLEET, "--dir", args.dir, "--build", args.build] + list(command),
                          capture_output=True, text=True)


def bench(args):
    if os.path.exists(os.path.join(args.dir, "fleet.json")):
        raise BenchError("%s already holds a fleet; stop it first (scripts/fleet --dir %s stop)" % (args.dir, args.dir))
    scratch = tempfile.mkdtemp(prefix="orv3-fleet-bench-")
    scenario = os.path.join(scratch, "scenario.json")
    plan_scenario(args, scenario)
    print("fleet bench: %d agents of %s, seed %d; Prometheus scraping every %d s for %g min with the exporter's "
          "module %s" % (args.count, os.path.relpath(args.machine, ROOT), args.seed, args.interval, args.minutes,
                         args.module), flush=True)

    prometheus = None
    kept = False
    try:
        begun = time.monotonic()
        starting = subprocess.Popen(
            [sys.executable, FLEET, "--dir", args.dir, "--build", args.build, "start", "--count", str(args.count),
             "--seed", str(args.seed), "--base-port", str(args.base_port), "--machine", args.machine,
             "--scenario", scenario, "--timeout", "600"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        for line in starting.stdout:
            if "answering after" in line and not line.startswith("fleet"):
                continue  # progress lines: the last one says it all
            print("  " + line.rstrip(), flush=True)
        if starting.wait() != 0:
            raise BenchError("the fleet did not start")
        start_s = time.monotonic() - begun
        with open(os.path.join(args.dir, "fleet.json")) as f:
            fleet = json.load(f)
        agent_pids = [a["pid"] for a in fleet["agents"]]
        instance = {a["number"]: "%s:%d" % (a["address"], a["port"]) for a in fleet["agents"]}

        pss_started = pss_kib(agent_pids)
        time.sleep(args.settle)
        before = cpu_seconds(agent_pids)
        time.sleep(args.idle)
        idle_pct = (cpu_seconds(agent_pids) - before) / args.idle * 100

        status = run_fleet(args, "status")
        if status.returncode != 0:
            raise BenchError("status: " + status.stderr)
        prometheus = Prometheus(scratch, args.snmp_yml, args.module, os.path.join(args.dir, "file_sd.json"),
                                args.interval)
        scraping_from = time.time()
        agents_before, monitoring_before = cpu_seconds(agent_pids), cpu_seconds(prometheus.pids())
        window_s = args.minutes * 60
        print("  Prometheus and the exporter started; scraping until %s" % time.strftime(
            "%H:%M:%S", time.localtime(scraping_from + window_s)), flush=True)
        time.sleep(window_s)
        end = time.time()
        scraping_agents_s = cpu_seconds(agent_pids) - agents_before
        monitoring_s = cpu_seconds(prometheus.pids()) - monitoring_before
        pss_scraped = pss_kib(agent_pids)

        window = "%ds" % window_s
        selector = '{job="%s"}' % JOB
        up = prometheus.query("up%s[%s]" % (selector, window), end)
        scrapes = [float(v) for series in up for _, v in series["values"]]
        failed = scrapes.count(0.0)
        durations = [float(v) for series in prometheus.query("scrape_duration_seconds%s[%s]" % (selector, window), end)
                     for _, v in series["values"]]
        walks = [float(v) for series in prometheus.query("snmp_scrape_duration_seconds%s[%s]" % (selector, window), end)
                 for _, v in series["values"]]
        samples = [float(v) for series in prometheus.query("scrape_samples_scraped%s[%s]" % (selector, window), end)
                   for _, v in series["values"]]
        if not durations:
            kept = True
            raise BenchError("Prometheus has no scrape of the fleet (%d series of up); its configuration and log "
                             "are in %s" % (len(up), scratch))

        delays = []
        for made, agent, change in read_scenario_log(args.dir):
            expr, value = shows(change, instance[agent])
            seen = next((float(t) for series in prometheus.query_range(expr, made, end)
                         for t, v in series["values"] if float(v) == value), None)
            delays.append((made - scraping_from, agent, change, None if seen is None else seen - made))
        firing = {}
        for alert in prometheus.alerts():
            if alert["state"] == "firing":
                firing.setdefault(alert["labels"]["alertname"], set()).add(alert["labels"].get("instance"))

        mib = 1024
        print()
        print("start: every agent answering after %.1f s (target <= %d s: %s)" % (
            start_s, START_TARGET_S, verdict(start_s <= START_TARGET_S)))
        print("memory: PSS %.2f GiB in all, %.1f MiB an agent, after start (target <= %d GiB: %s); "
              "%.2f GiB after %g min of scrapes" % (
                  pss_started / mib / mib, pss_started / mib / args.count, PSS_TARGET_GIB,
                  verdict(pss_started / mib / mib <= PSS_TARGET_GIB), pss_scraped / mib / mib, args.minutes))
        print("idle: %.3f %% of one core for the whole fleet (%.1f ms of CPU in %d s, %d s after start; "
              "target <= %d %%: %s)" % (idle_pct, idle_pct * args.idle * 10, args.idle, args.settle,
                                        IDLE_CPU_TARGET_PCT, verdict(idle_pct <= IDLE_CPU_TARGET_PCT)))
        print("scrapes: %d targets, %d scrapes in %g min, %d failed (target: none fails: %s)" % (
            len(up), len(scrapes), args.minutes, failed, verdict(failed == 0 and len(up) == args.count)))
        print("  scrape_duration_seconds: median %.3f s, p99 %.3f s, max %.3f s" % (
            percentile(durations, 50), percentile(durations, 99), max(durations)))
        if walks:
            print("  snmp_scrape_duration_seconds (the exporter's walk): median %.3f s, p99 %.3f s, max %.3f s" % (
                percentile(walks, 50), percentile(walks, 99), max(walks)))
        print("  samples a scrape: median %d; CPU while scraping: agents %.1f %%, exporter and Prometheus %.1f %% "
              "of one core" % (percentile(samples, 50), scraping_agents_s / window_s * 100,
                               monitoring_s / window_s * 100))
        within = all(d is not None and d <= 2 * args.interval for *_, d in delays)
        print("scenario: %d changes; in Prometheus within two intervals (%d s): %s" % (
            len(delays), 2 * args.interval, verdict(within)))
        for offset, agent, change, delay in delays:
            print("  +%5.1f s agent %4d %-58s %s" % (offset, agent, json.dumps(change)[:58],
                                                     "not seen" if delay is None else "seen after %.1f s" % delay))
        print("alerts firing at the end:")
        for name in sorted(firing):
            print("  %-34s %d agents" % (name, len(firing[name])))
        volume_agent = next(agent for _, agent, change, _ in delays if "volume" in change)
        print("  the agent whose volume the scenario degraded (%d): %s" % (volume_agent, ", ".join(
            sorted(name for name, instances in firing.items() if instance[volume_agent] in instances)) or "none"))
    finally:
        if prometheus:
            prometheus.stop()
        stopped = run_fleet(args, "stop")
        print(stopped.stdout.rstrip())
        if not kept:
            shutil.rmtree(scratch, ignore_errors=True)


def main():
    parser = argparse.ArgumentParser(prog="scripts/fleet bench", description=__doc__.split("\n\n")[0])
    parser.add_argument("--snmp-yml", required=True, help="the exporter's configuration (contrib/prometheus/generate)")
    parser.add_argument("--count", type=int, default=1000)
    parser.add_argument("--minutes", type=float, default=10)
    parser.add_argument("--interval", type=int, default=60, help="Prometheus' scrape interval, seconds")
    parser.add_argument("--module", default="orv3_monitors_health",
                        help="the exporter's module: orv3_monitors_health (what the alert rules read) or "
                             "orv3_monitors (everything)")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--base-port", type=int, default=20000)
    parser.add_argument("--machine", default=os.path.join(ROOT, "machines", "sample.json"))
    parser.add_argument("--build", default=os.path.join(ROOT, "build"))
    parser.add_argument("--dir", default=os.path.join(os.environ.get("TMPDIR", "/tmp"), "orv3-fleet-bench"))
    parser.add_argument("--quick", action="store_true")
    args = parser.parse_args()
    # Interrupted, it still stops what it started.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("stopped by SIGTERM"))
    signal.signal(signal.SIGINT, lambda *_: sys.exit("interrupted"))
    args.settle, args.idle = SETTLE_S, IDLE_S
    if args.quick:
        args.count, args.interval, args.minutes, args.settle, args.idle = 10, 5, 0.75, 2, 5
    try:
        bench(args)
    except BenchError as error:
        print("error: %s" % error, file=sys.stderr)
        sys.exit(1)


if __name__ == "__main__":
    main()
