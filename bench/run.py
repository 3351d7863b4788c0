# SPDX-License-Identifier: Apache-2.0
"""run.py BUILD [FILTER]: every measurement, inside dev/sandbox; prints one table, and is 1 when a goal is missed.

FILTER is a regular expression that a measurement's name must contain. Progress goes to standard error."""
import json
import pathlib
import re
import statistics
import subprocess
import sys

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "dev/lib")]
import daemon  # noqa: E402
import rig as rigs  # noqa: E402
from row import Row, machine, print_table  # noqa: E402

REPETITIONS = 9
SECONDS = 0.2  # of the agent's turns in each repetition


def say(text):
    print(f"bench: {text}", file=sys.stderr, flush=True)


def run_functions(rig, wanted):
    """The rows of qvtk_bench: its functions against a routersim and a cloudsim of their own."""
    program = rig.build / "bench/qvtk_bench"
    listed = subprocess.run([program, "--benchmark_list_tests"], stdout=subprocess.PIPE, text=True, check=True).stdout
    names = [name.removesuffix("/manual_time") for name in listed.splitlines() if name.endswith("/manual_time")]
    rows = []
    for name in filter(wanted, names):
        say(name)
        rows.append(run_function(program, name))
    return rows


def run_function(program, name):
    result = pathlib.Path("/tmp/result.json")
    exactly = re.sub(r"[^A-Za-z0-9/]", ".", name)
    subprocess.run([program, f"--benchmark_filter=^{exactly}/manual_time$", f"--benchmark_out={result}",
                    "--benchmark_out_format=json", f"--benchmark_repetitions={REPETITIONS}",
                    f"--benchmark_min_time={SECONDS}"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
    runs = [run for run in json.loads(result.read_text())["benchmarks"] if run["run_type"] == "iteration"]
    failed = [run["error_message"] for run in runs if run.get("error_occurred")]
    if failed or len(runs) != REPETITIONS:
        return Row(name, failed=failed[0] if failed else "it did not run")
    unit, compared_with = runs[0]["label"].split(" ", 1)
    typical = {key: statistics.median(run[key] for run in runs) for key in ("measured", "bare", "ratio")}
    return Row(name, unit, typical["measured"], compared_with, typical["bare"], typical["ratio"], runs[0]["goal"] or None,
               amount=runs[0]["amount"])


def main():
    build, pattern = pathlib.Path(sys.argv[1]), re.compile(sys.argv[2] if len(sys.argv) > 2 else "")
    rig = rigs.Rig(build)
    rows = []
    try:
        rig.start_router()
        rig.start_cloud("--home", HERE.parent / "sim/router/home.json")
        rows += run_functions(rig, pattern.search)
        rows += daemon.measure(rig, pattern.search, say, build / "installed", "host")
    finally:
        rig.stop_all()
    if not rows:
        say(f"nothing is called {pattern.pattern}")
        return 2
    print_table(rows)
    print(f"\n{machine()}. Medians of {REPETITIONS} repetitions of {SECONDS} s, both sides in turns; of the daemon's start, "
          f"of {daemon.STARTS}.")
    return 1 if any(row.missed() for row in rows) else 0


if __name__ == "__main__":
    sys.exit(main())
