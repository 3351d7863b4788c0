# SPDX-License-Identifier: Apache-2.0
"""The daemon as it is installed: sizes, what it holds at rest and after work, and how long it takes to start."""
import json
import os
import pathlib
import statistics
import time

import rig as rigs
from footprint import Footprint
from row import Row

STARTS = 9
STATIONS = 128
SIZE = "size of "
STAND_INS = "OpenSSL's tables, for the stand-in"
BUDGETS = pathlib.Path(__file__).with_name("budgets.json")


def sizes(rig, installed, names):
    for name in names:
        file = name.removeprefix(SIZE)
        folder = "usr/lib" if file.endswith(".so") else "usr/bin"
        yield name, "KiB", (installed / folder / file).stat().st_size / 1024


def fill_home(rig):
    """As many client devices as the daemon takes."""
    one = rig.bus("sim", "state", {"pointer": "/vrop.laninfo/0"})[1]["value"]
    stations = [{**one, "mac": f"02a0c9{i:06x}"} for i in range(STATIONS)]
    rig.bus("sim", "setstate", {"pointer": "/vrop.laninfo", "value": json.dumps(stations)})


def work(rig):
    """What makes it take memory: the largest document, every other property, a change, requests over HTTPS."""
    fill_home(rig)
    for name in ("apDevices", "deviceInfo", "wifiInfo", "networkInfo", "visitorsWifi", "mesh"):
        rig.get(name)
    rig.set("ledStatus", "off")
    rig.local_event({"action": "updatesettime", "otaCheckInterval": 1, "minInterval": 60, "maxInterval": 3600})
    rigs.wait_until("a request over HTTPS", lambda: rig.requests("check-upgrade"))
    rig.local_event({"action": "updatesettime", "otaCheckInterval": 3600, "minInterval": 60, "maxInterval": 3600})


def footprint(rig, *_):
    rig.start_broker()
    held = Footprint(rig.start_daemon(environment={**rig.environment, "TEBRA_SDK_REPORT_SECONDS": "5"}))
    rig.wait_online(60)
    yield "memory at rest", "KiB", held.anonymous_at_rest()
    yield STAND_INS, "KiB", held.stand_ins()
    yield "threads", "count", held.threads()
    yield "wake-ups", "a minute", held.wake_ups()
    work(rig)
    yield "memory after work", "KiB", held.anonymous_at_rest()
    yield "deepest stack", "KiB", held.deepest_stack()
    rig.stop("qvtkd")
    rig.stop("broker")


def start_once(rig, fifo):
    """Seconds from exec to start_sdk. The SDK in the daemon's place opens the fifo when it is started."""
    environment = {**rig.environment, "PROBE_RECORD": str(fifo),
                   "LD_LIBRARY_PATH": str(rig.build / "tests/system/probe")}
    began = time.monotonic()
    rig.start_daemon(environment=environment)
    with open(fifo, "rb") as record:
        taken = time.monotonic() - began
        record.read()
    rig.stop("qvtkd")
    return taken


def start(rig, *_):
    fifo = rig.home / "started"
    os.mkfifo(fifo)
    yield "exec to start_sdk", "call", statistics.median(start_once(rig, fifo) for _ in range(STARTS))


def measure(rig, wanted, say, installed, platform):
    """The daemon's rows that are wanted, against the platform's budgets. The rig's router and cloud run."""
    budgets = json.loads(BUDGETS.read_text())[platform]
    kinds = {sizes: [name for name in budgets if name.startswith(SIZE)], start: ["exec to start_sdk"],
             footprint: ["memory at rest", STAND_INS, "threads", "wake-ups", "memory after work", "deepest stack"]}
    rows = []
    for kind, names in kinds.items():
        names = [name for name in names if wanted(f"daemon: {name}")]
        if not names:
            continue
        say(f"daemon: {', '.join(names)}")
        try:
            for name, unit, value in kind(rig, installed, names):
                if name in names:
                    rows.append(Row(f"daemon: {name}", unit, value, goal=budgets.get(name)))
        except (rigs.Failed, OSError) as error:
            rows.append(Row(f"daemon: {kind.__name__}", failed=repr(error)))
    return rows
