# SPDX-License-Identifier: Apache-2.0
"""The simulated router as a program, over its bus."""
import json
import pathlib
import subprocess

import rig
from run import RigTest

DONE = {"result": "0"}
LED_OFF = 'vrop.ledswitch set {"status":"off"}'


class Routersim(RigTest):
    def call(self, line, socket=rig.BUS, seconds=rig.LIMIT):
        """The reply to "OBJECT METHOD ARGUMENTS", or why there is none."""
        done = subprocess.run([self.rig.build / "platform/ubus/buscall", "-s", socket, "-t", str(seconds), "call",
                               *line.split(" ", 2)], capture_output=True, text=True)
        return json.loads(done.stdout) if done.stdout else done.stderr.strip().split(": ")[-1]

    def test_serves_a_home_as_its_options_say(self):
        patch, left_over = pathlib.Path("/tmp/patch.json"), pathlib.Path("/tmp/firmware.img")
        patch.write_text('{"vrop.ledswitch":{"status":"dim"}}')
        left_over.write_text("left over")
        bus = pathlib.Path("/tmp/bus.sock")
        self.rig.start("routersim", [self.rig.build / "sim/router/routersim", "--socket", bus, "--state", patch,
                                     "--fault", "result=3 vrop.led* set 1", "--set", '/vrop.mesh={"enable":7}'])
        rig.wait_until("the bus", bus.exists)
        self.assertEqual(self.call("vrop.ledswitch get", bus), {"vrop.ledswitch": {"status": "dim"}})
        self.assertEqual(self.call("vrop.mesh get", bus), {"vrop.mesh": {"enable": 7}})
        self.assertEqual(self.call(LED_OFF, bus), {"result": "3"})
        for fault, reply in ("delay=5", DONE), ("delay=60000", "Request timed out"):
            self.call(f'sim fault {{"kind":"{fault} vrop.led* set 1"}}', bus)
            self.assertEqual(self.call(LED_OFF, bus, seconds=rig.LIMIT if reply == DONE else 1), reply)
        self.assertEqual(str(left_over.readlink()), "/aptmp/firmware.img")
        self.assertEqual(str(pathlib.Path("/tmp/qvtk_upgrade.bin").readlink()), "/aptmp/qvtk_upgrade.bin")
        self.assertEqual(self.rig.stop("routersim"), 0)
        self.assertFalse(bus.exists())
