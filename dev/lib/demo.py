# SPDX-License-Identifier: Apache-2.0
"""What dev/demo runs inside its sandbox: demo.py BUILD HOME tour|night|follow. Ends, and the sandbox with it, when its
standard input does."""
import os
import subprocess
import sys
import threading
import traceback

sys.dont_write_bytecode = True
import night  # noqa: E402
import rig as rigs  # noqa: E402
import tour  # noqa: E402
import tour_maintenance  # noqa: E402,F401 -- its steps come behind the others


def start_surroundings(rig):
    rig.start_broker()
    rig.start_router()
    rig.start_cloud()


def start_device(rig):
    rig.start_daemon()
    rig.wait_online()


def introduce(rig):
    home = rig.home
    print(f"""
A router is running in a sandbox of its own, bound to a simulated cloud:
  qvtkd, the agent             its log: {home}/apvar/log/qvtk.log
  routersim, bus and router    log: {home}/routersim.log   socket: {home}/apvar/run/ubus/ubus.sock
  cloudsim, the HTTPS servers  requests: {home}/requests.log
  mosquitto, the cloud's side  socket: {home}/broker.sock

Try in another terminal:
  dev/cloud get wifiInfo
  dev/cloud set ledStatus '{{"ledStatus":"off"}}'
  {rig.build}/platform/ubus/buscall -s {home}/apvar/run/ubus/ubus.sock call vrop.ledswitch get

What the device says follows here until Ctrl-C.
""", flush=True)


def end_with_input():
    while os.read(0, 1):
        pass
    os._exit(1)


def main():
    build, home, mode = sys.argv[1:4]
    threading.Thread(target=end_with_input, daemon=True).start()
    rig = rigs.Rig(build, home, {"TEBRA_SDK_REPORT_SECONDS": "5"} if mode == "follow" else {})
    try:
        start_surroundings(rig)
        if mode == "night":
            night.play(rig)
        elif mode == "tour":
            start_device(rig)
            tour.play(rig)
        else:
            start_device(rig)
            introduce(rig)
            return subprocess.run(rig.cloud_command("watch"), check=False, stdin=subprocess.DEVNULL).returncode
    except Exception as error:  # whatever it is, say it, and say where to look
        if not isinstance(error, rigs.Failed):
            traceback.print_exc()
        print(f"dev/demo: {error}\ndev/demo: the logs are in {home}", file=sys.stderr)
        return 1
    finally:
        rig.stop_all()
    return 0


if __name__ == "__main__":
    sys.exit(main())
