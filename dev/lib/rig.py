# SPDX-License-Identifier: Apache-2.0
"""A device and its cloud as processes: broker, routersim, cloudsim and the daemon, inside one dev/sandbox.

Used by the demo and by the tests of the daemon as built. Everything waits for the thing itself, with a limit."""
import hashlib
import json
import os
import pathlib
import queue
import re
import signal
import socket
import subprocess
import threading
import time

import contract
import contract_watch

REPO = pathlib.Path(__file__).resolve().parents[2]
MAIN_LOG = pathlib.Path("/apvar/log/qvtk.log")
UPGRADE_LOG = pathlib.Path("/apetc/rvxa/qvtk_upgrade.log")
BUS = "/apvar/run/ubus/ubus.sock"
LIMIT = 20  # seconds that anything may take before it counts as failed
BROKER_PORT = 1883
CLOUD_PORT = 11443
CLOUD_URL = f"https://127.0.0.1:{CLOUD_PORT}"


class Failed(Exception):
    """What was waited for did not come, or came out wrong."""


def wait_until(what, condition, limit=LIMIT):
    """The first true value of condition(), asked again and again until `limit` seconds have passed."""
    deadline = time.monotonic() + limit
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise Failed(f"waited {limit} s in vain for {what}")
        time.sleep(0.05)


class Watch:
    """What the device says from now on, line by line, as dev/cloud watch prints it."""

    def __init__(self, rig):
        self.rig = rig
        self.lines = queue.Queue()
        self.waiting = []
        self.open()

    def open(self):
        """Starts to watch, again when the broker was gone."""
        self.process = subprocess.Popen(self.rig.cloud_command("watch"), stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, text=True)
        self.process.stderr.readline()  # "watching"
        threading.Thread(target=self._read, args=[self.process.stdout], daemon=True).start()

    def _read(self, stream):
        for line in stream:
            self.lines.put(line.rstrip("\n"))

    def wait(self, pattern, limit=LIMIT):
        """The first line not yet waited for that the regular expression finds something in."""
        deadline = time.monotonic() + limit
        at = 0
        while True:
            for at in range(at, len(self.waiting)):
                if re.search(pattern, self.waiting[at]):
                    return self.waiting.pop(at)
            at = len(self.waiting)
            try:
                self.waiting.append(self.lines.get(timeout=max(0.0, deadline - time.monotonic())))
            except queue.Empty:
                raise Failed(f"waited {limit} s in vain for the device to say {pattern}; "
                             f"it said {self.waiting[-5:]}") from None

    def drain(self):
        """The lines that have come and were not waited for, which are forgotten."""
        while not self.lines.empty():
            self.waiting.append(self.lines.get())
        lines, self.waiting = self.waiting, []
        return lines

    def close(self):
        self.process.kill()
        self.process.wait()


class Rig:
    """One device in this sandbox. `home` holds its sockets and the logs of the simulation."""

    def __init__(self, build, home="/tmp/rig", environment=None):
        self.build = pathlib.Path(build)
        self.home = pathlib.Path(home)
        self.home.mkdir(parents=True, exist_ok=True)
        self.uploads = self.home / "uploads"  # what the device has uploaded
        self.processes = {}
        self.contract = None  # who listens to what passes the broker
        self.requests_checked = 0
        self.environment = {**os.environ, "TEBRA_SDK_BROKER": f"127.0.0.1:{BROKER_PORT}",
                            "TEBRA_SDK_REPORT_SECONDS": "1", **(environment or {})}

    # processes

    def start(self, name, command, environment=None):
        log = open(self.home / f"{name}.log", "ab")
        self.processes[name] = subprocess.Popen([str(word) for word in command], stdout=log, stderr=log,
                                                stdin=subprocess.DEVNULL, env=environment or self.environment,
                                                start_new_session=True)
        return self.processes[name]

    def stop(self, name, number=signal.SIGTERM):
        """Ends a process and gives its exit status."""
        process = self.processes.pop(name)
        if process.poll() is not None:
            return process.returncode
        if name == "broker" and self.contract:
            self.contract.broker_ends = True
        os.killpg(process.pid, number)  # a wrapper's child too
        try:
            return process.wait(LIMIT)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            raise Failed(f"{name} did not end on signal {number}") from None

    def stop_all(self):
        for name in reversed(list(self.processes)):
            self.stop(name, signal.SIGKILL)

    def start_broker(self):
        config = self.home / "broker.conf"
        config.write_text(f"listener 0 {self.home}/broker.sock\nlistener {BROKER_PORT} 127.0.0.1\n"
                          "allow_anonymous true\nuser root\nlog_type warning\n")
        (self.home / "broker.sock").unlink(missing_ok=True)
        self.start("broker", ["mosquitto", "-c", config])
        wait_until("the broker", lambda: self._accepts(BROKER_PORT) and (self.home / "broker.sock").exists())
        self.check_contract()
        self.contract = contract_watch.ContractWatch(str(self.home / "broker.sock"))

    def start_router(self, *arguments):
        self.start("routersim", [self.build / "sim/router/routersim", *arguments])
        wait_until("routersim", lambda: self.bus("vrop.ftinfo", "get", check=False)[0] == 0)

    def start_cloud(self, *arguments):
        self.uploads.mkdir(exist_ok=True)
        self.start("cloudsim", [self.build / "sim/cloud/cloudsim", "--port", CLOUD_PORT,
                                "--control", self.home / "cloudsim.sock", "--log", self.home / "requests.log",
                                "--store", self.uploads,
                                *arguments])
        wait_until("cloudsim", lambda: self._accepts(CLOUD_PORT) and (self.home / "cloudsim.sock").exists())

    def start_daemon(self, *prefix, environment=None):
        return self.start("qvtkd", [*prefix, self.build / "src/qvtkd"], environment)

    def wait_online(self, limit=LIMIT):
        wait_until("the device to be online", lambda: self.cloud("list", check=False)[0] == 0, limit)

    @staticmethod
    def _accepts(port):
        try:
            socket.create_connection(("127.0.0.1", port), 1).close()
            return True
        except OSError:
            return False

    # the cloud's and the bus's side

    def cloud_command(self, *words):
        return [str(REPO / "dev/cloud"), "--broker", str(self.home / "broker.sock"), *map(str, words)]

    def cloud(self, *words, check=True):
        """(exit status, output) of one dev/cloud command."""
        done = subprocess.run(self.cloud_command(*words), capture_output=True, text=True, timeout=LIMIT * 2)
        if check and done.returncode != 0:
            raise Failed(f"dev/cloud {' '.join(map(str, words))}: status {done.returncode}: "
                         f"{done.stdout}{done.stderr}")
        return done.returncode, done.stdout

    def get(self, name):
        return json.loads(self.cloud("get", name)[1])[name]

    def set(self, name, value):
        self.cloud("set", name, json.dumps({name: value}))

    def call(self, name, request=None, unchecked=False):
        """The answer of a service as (code, data); `unchecked` sends what is wrong on purpose."""
        words = [json.dumps(request)] if request is not None else []
        words += ["--unchecked"] if unchecked else []
        answer = json.loads(self.cloud("call", name, *words, check=False)[1])
        return answer["code"], answer["data"]

    def bus(self, target, method, arguments=None, check=True):
        """(exit status, reply) of one call on the router's bus."""
        command = [self.build / "platform/ubus/buscall", "-s", BUS, "call", target, method]
        done = subprocess.run([*map(str, command), *([json.dumps(arguments)] if arguments is not None else [])],
                              capture_output=True, text=True, timeout=LIMIT * 2)
        if check and done.returncode != 0:
            raise Failed(f"{target} {method}: status {done.returncode}: {done.stdout}{done.stderr}")
        return done.returncode, json.loads(done.stdout) if done.stdout.strip() else None

    def router(self, target, method="get", arguments=None):
        """What the router's object holds."""
        reply = self.bus(target, method, arguments)[1]
        return reply.get(target, reply)

    def control(self, *words):
        """One command of the simulated cloud's servers."""
        environment = {**os.environ, "QVTK_CLOUDSIM": str(self.home / "cloudsim.sock")}
        done = subprocess.run([str(REPO / "sim/cloud/control"), *map(str, words)], capture_output=True, text=True,
                              timeout=LIMIT, env=environment)
        if done.returncode != 0:
            raise Failed(f"control {' '.join(map(str, words))}: {done.stdout}{done.stderr}")
        return done.stdout

    def requests(self, path=""):
        """The requests that cloudsim has logged, oldest first, to paths that end so."""
        log = self.home / "requests.log"
        lines = log.read_text().splitlines() if log.exists() else []
        return [entry for entry in map(json.loads, lines) if entry["path"].endswith(path)]

    def check_contract(self):
        """Fails when anything that has passed since the last check is not as api/ says."""
        found = self.contract.flush() if self.contract else []
        requests = self.requests()
        for request in requests[self.requests_checked:]:
            found += contract.https_faults(request)
        self.requests_checked = len(requests)
        for backup in self.uploads.glob("*.config") if self.contract else []:  # else no device made it
            found += contract.faults("https/backup", json.loads(backup.read_text()))
        if found:
            raise Failed("not as api/ says: " + "\n  ".join(found))

    @staticmethod
    def local_event(document):
        """One datagram to the daemon's event relay."""
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
            sender.sendto(json.dumps(document).encode(), ("127.0.0.1", 9589))

    def watch(self):
        return Watch(self)

    # firmware

    def make_image(self, version):
        """An image that the router takes for that version: (path, MD5)."""
        path = self.home / f"firmware-{version}.bin"
        path.write_bytes(f"version={version}\n".encode() + os.urandom(200_000))
        return path, hashlib.md5(path.read_bytes()).hexdigest()

    def restart_into(self, version):
        """The device restarts with the router when that runs the version, and comes online again."""
        wait_until(f"the router to run {version}",
                   lambda: (self.bus("vrop.ftinfo", "get", check=False)[1] or {}).get("vrop.ftinfo", {})
                   .get("iswversion") == version)
        self.restart_daemon()

    def restart_daemon(self):
        """The agent starts with the router, and comes online again."""
        self.stop("qvtkd")
        self.start_daemon()
        self.wait_online()

    # the daemon's logs

    @staticmethod
    def log_count(text, path=MAIN_LOG):
        return path.read_text(errors="replace").count(text) if path.exists() else 0

    def wait_logged(self, text, more_than=0, limit=LIMIT):
        wait_until(f"the log to say {text}", lambda: self.log_count(text) > more_than, limit)
