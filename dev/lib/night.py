# SPDX-License-Identifier: Apache-2.0
"""The end of a day and the night after it, on a device whose clock is set by libfaketime."""
import calendar
import json
import pathlib
import subprocess
import time

from rig import Failed, wait_until

DAY_FILE = pathlib.Path("/aptmp/runTime_oneDay.log")
NIGHT = calendar.timegm((2026, 11, 23, 2, 0, 0))


def night_second(rig):
    """A second of a night at which a daemon started then, whose clock stands still, finds its report due: the report
    point is drawn from the time at which it starts, by the C library that it runs on."""
    return int(subprocess.run([rig.build / "sim/night/due_second", str(NIGHT)], stdout=subprocess.PIPE, check=True).stdout)


def start_at(rig, clock):
    environment = {**rig.environment, "TZ": "UTC", "FAKETIME_DONT_FAKE_MONOTONIC": "1", "DONT_FAKE_MONOTONIC": "1"}
    rig.start_daemon("faketime", "-f", clock, environment=environment)


def play(rig):
    print("[night] the day is closed in its last seconds ...", end=" ", flush=True)
    start_at(rig, "@2026-11-22 23:59:50")
    wait_until("the day file", DAY_FILE.exists)
    clients = json.loads(DAY_FILE.read_text())
    print(f"ok: {len(clients)} clients", flush=True)
    rig.stop("qvtkd")

    print("[night] the totals are reported at night ...", end=" ", flush=True)
    start_at(rig, time.strftime("%Y-%m-%d %H:%M:%S", time.gmtime(night_second(rig))))  # and stands still
    report = wait_until("the report", lambda: rig.requests("report-runtime"))[0]
    found = json.loads(report["body"])["runtimeList"]
    if report["verdict"] != "ok" or found != clients:
        raise Failed(f"the report was {report}")
    rig.check_contract()
    print(f"ok: {found[0]['name']} was online for {found[0]['runTime']} s", flush=True)
