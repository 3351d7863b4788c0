# SPDX-License-Identifier: Apache-2.0
"""The daemon as it is installed: its size, its memory at rest, and how long it takes to start."""
import os
import pathlib
import re
import statistics
import time

import rig as rigs
from row import Row

STARTS = 9
SIZE_GOAL = 400      # KiB
MEMORY_GOAL = 2048   # KiB
AT_REST = 5          # seconds without a change of its memory


def size(rig):
    installed = rig.build / "installed/usr/bin/qvtkd"  # by dev/bench
    return Row("daemon: size, stripped", "KiB", installed.stat().st_size / 1024, goal=SIZE_GOAL)


def anonymous_memory(process):
    status = pathlib.Path(f"/proc/{process.pid}/status").read_text()
    return int(re.search(r"^RssAnon:\s*(\d+) kB", status, re.M).group(1))


def memory_at_rest(process):
    """The anonymous memory once it has not changed for a while."""
    value, since = anonymous_memory(process), time.monotonic()

    def has_settled():
        nonlocal value, since
        now = anonymous_memory(process)
        if now != value:
            value, since = now, time.monotonic()
        return time.monotonic() - since > AT_REST

    rigs.wait_until("the daemon's memory to settle", has_settled, 60)
    return value


def memory(rig):
    rig.start_broker()
    process = rig.start_daemon()
    rig.wait_online()
    value = memory_at_rest(process)
    rig.stop("qvtkd")
    rig.stop("broker")
    return Row("daemon: anonymous memory at rest", "KiB", value, goal=MEMORY_GOAL)


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


def start(rig):
    fifo = rig.home / "started"
    os.mkfifo(fifo)
    return Row("daemon: exec to start_sdk", measured=statistics.median(start_once(rig, fifo) for _ in range(STARTS)))


def measure(rig, wanted, say):
    rows = []
    for name, measurement in (("daemon: size, stripped", size), ("daemon: exec to start_sdk", start),
                              ("daemon: anonymous memory at rest", memory)):
        if wanted(name):
            say(name)
            try:
                rows.append(measurement(rig))
            except (rigs.Failed, OSError) as error:
                rows.append(Row(name, failed=str(error)))
    return rows
