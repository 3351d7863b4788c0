# SPDX-License-Identifier: Apache-2.0
"""The daemon as built, when what it talks to goes away."""
import signal

import rig
from run import RigTest


class Recovery(RigTest):
    def test_a_bus_that_is_killed_costs_only_the_calls_in_flight(self):
        self.rig.start_broker()
        self.rig.start_router()
        self.rig.start_daemon()
        self.rig.wait_online()
        name = self.rig.get("wifiInfo")["wifi2gName"]
        self.rig.stop("routersim", signal.SIGKILL)
        self.assertNotEqual(self.rig.cloud("get", "ledStatus", check=False)[0], 0)
        self.rig.start_router()
        self.assertEqual(self.rig.get("wifiInfo")["wifi2gName"], name)
