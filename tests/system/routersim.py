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
        self.assertEqual(str(left_over.readlink()), "/aptmp/firmware.img")
        self.assertEqual(str(pathlib.Path("/tmp/qvtk_upgrade.bin").readlink()), "/aptmp/qvtk_upgrade.bin")
        self.assertEqual(self.rig.stop("routersim"), 0)
        self.assertFalse(bus.exists())

    def test_faults_befall_the_calls_that_they_name(self):
        self.rig.start_router()
        for fault, reply, led in (("no_reply", "Request timed out", "off"),
                                  ("delay=5", DONE, "off"),
                                  ("delay=60000", "Request timed out", "off"),
                                  ("result=2", {"result": "2"}, "on"),
                                  ("absent", "Not found", "on"),
                                  ("status=6", "Permission denied", "on"),
                                  ('reply={"odd": [1, 2]} vrop* set', {"odd": [1, 2]}, "on"),
                                  ("result=-1  vrop.led* set", {"result": "-1"}, "on"),
                                  ("result=2 vrop.wifi*", DONE, "off"),
                                  ("result=2 * get", DONE, "off"),
                                  ("result=2 * * 0", DONE, "off")):
            with self.subTest(fault):
                self.assertEqual(self.call('vrop.ledswitch set {"status":"on"}'), DONE)
                self.rig.bus("sim", "fault", {"kind": fault})
                self.assertEqual(self.call(LED_OFF, seconds=1 if reply == "Request timed out" else rig.LIMIT), reply)
                self.rig.bus("sim", "clear")
                self.assertEqual(self.rig.router("vrop.ledswitch")["status"], led)

    def test_faults_end_after_their_count_and_calls_are_recorded(self):
        self.rig.start_router()
        self.rig.bus("sim", "clearcalls")
        for arguments in ({"kind": "result", "value": 2, "object": "vrop.led*", "count": 1},
                          {"kind": "status=8 vrop.led* set 1"}):
            self.assertEqual(self.rig.bus("sim", "fault", arguments)[1], DONE)
        self.assertEqual([self.call(LED_OFF) for _ in range(3)], [{"result": "2"}, "Operation not supported", DONE])
        self.call('vrop.webwifi1adv set {"txpower":40,"channel":-1}')
        self.call("vrop.waninfo get")
        self.assertEqual(self.call('sim calls {"object":"vrop.w*"}'),
                         {"calls": [{"object": "vrop.webwifi1adv", "method": "set",
                                     "arguments": {"txpower": 40, "channel": -1}},
                                    {"object": "vrop.waninfo", "method": "get", "arguments": {}}]})
        self.rig.bus("sim", "clearcalls")
        self.assertEqual(self.call("sim calls {}"), {"calls": []})

    def test_a_reboot_takes_all_objects_away(self):
        self.rig.start_router("--set", "/sim/boottime=60000", "--set", "/sim/restartdelay=1")
        self.assertEqual(self.call("vrop reboot"), DONE)
        rig.wait_until("its going", lambda: self.call("vrop.ledswitch get") == "Not found")
        self.assertIsInstance(self.call("sim state"), dict)
