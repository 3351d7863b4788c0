# SPDX-License-Identifier: Apache-2.0
"""start.py BUILD HOME VERSION: the daemon as installed, started with its init script's own command and environment, on
a simulated router; inside dev/sandbox, with the programs of the package in /usr/bin. BUILD has the simulation."""
import pathlib
import os
import subprocess
import sys

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parents[1] / "dev/lib"))
import rig as rigs  # noqa: E402


def instance(root):
    """(command, environment) that the init script gives procd."""
    told = subprocess.run(["busybox", "sh", HERE / "procd.sh", root / "etc/init.d/qvtkd", "start_service"],
                          env={**os.environ, "ROOT": str(root)}, stdout=subprocess.PIPE, text=True, check=True).stdout
    lines = [line.split("\t") for line in told.splitlines()]
    command = next(line[2:] for line in lines if line[:2] == ["set_param", "command"])
    return command, dict(line[2].split("=", 1) for line in lines if line[:2] == ["append_param", "env"])


def main():
    build, home, version = sys.argv[1:]
    root = pathlib.Path(os.environ["QEMU_LD_PREFIX"])
    subprocess.run([HERE.parent / "openwrt/qvtkd/test-version.sh", "qvtkd", version], check=True)
    command, settings = instance(root)
    emulation = {name: value for name, value in os.environ.items() if name.startswith("QEMU_")}
    rig = rigs.Rig(build, home)
    try:
        rig.start_broker()
        rig.start_router()
        rig.start("qvtkd", command, {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", **emulation, **settings})
        rig.wait_online()
        print(f"started {' '.join(command)} from the package: {rig.get('deviceInfo')}")
    finally:
        rig.stop_all()


if __name__ == "__main__":
    try:
        main()
    except rigs.Failed as error:
        sys.exit(f"start.py: {error}")
