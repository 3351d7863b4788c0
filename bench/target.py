# SPDX-License-Identifier: Apache-2.0
"""target.py BUILD INSTALLED: what the daemon takes on a router, measured under emulation inside dev/sandbox; prints one
table, and is 1 when something but a time is beyond its budget."""
import pathlib
import sys

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "dev/lib")]
import daemon  # noqa: E402
import rig as rigs  # noqa: E402
from row import print_table  # noqa: E402


def main():
    build, installed = map(pathlib.Path, sys.argv[1:])
    rig = rigs.Rig(build)
    try:
        rig.start_router()
        rig.start_cloud("--home", HERE.parent / "sim/router/home.json")
        rows = daemon.measure(rig, lambda name: True, lambda name: None, installed, "target")
    finally:
        rig.stop_all()
    print_table(rows)
    return 1 if any(row.is_too_much() for row in rows) else 0


if __name__ == "__main__":
    sys.exit(main())
