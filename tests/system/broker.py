# SPDX-License-Identifier: Apache-2.0
"""The broker's example settings: TLS, users, and rights that keep one router from another's topics."""
import os
import pathlib
import subprocess
import sys
import time

import rig
from run import RigTest

sys.path.insert(0, str(rig.REPO / "dev/lib"))
import mqtt5  # noqa: E402

EXAMPLE = rig.REPO / "packaging/broker"
OTHER = "SIM2408000099"
ROUTERS, OPERATORS = "127.0.0.1:8883", "127.0.0.1:8884"


class Broker(RigTest):
    def start_example(self, *users):
        folder = self.rig.home
        for name in ("mosquitto.conf", "acl"):
            (folder / name).write_text((EXAMPLE / name).read_text().replace("/etc/mosquitto", str(folder)))
        with open(folder / "mosquitto.conf", "a") as config:
            config.write("user root\n")
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                        "-subj", "/CN=broker", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout",
                        folder / "server.key", "-out", folder / "ca.pem"], check=True, capture_output=True)
        (folder / "server.pem").write_bytes((folder / "ca.pem").read_bytes())
        for number, user in enumerate(users):
            subprocess.run(["mosquitto_passwd", *(["-c"] if number == 0 else []), "-b", folder / "passwd", user,
                            f"secret of {user}"], check=True, capture_output=True)
        self.rig.start("broker", ["mosquitto", "-c", folder / "mosquitto.conf"])
        rig.wait_until("the broker", lambda: self.rig._accepts(8883) and self.rig._accepts(8884))

    def connect(self, address, user, password=None):
        return mqtt5.Connection(address, rig.LIMIT, user, password or f"secret of {user}", self.rig.home / "ca.pem")

    def ask_as_operator(self, *words):
        environment = {**os.environ, "QVTK_BROKER_USERNAME": "operator", "QVTK_BROKER_PASSWORD": "secret of operator"}
        return subprocess.run([rig.REPO / "dev/cloud", "--broker", OPERATORS, "--cafile", self.rig.home / "ca.pem", *words],
                              env=environment, capture_output=True, text=True, timeout=2 * rig.LIMIT)

    def test_a_router_reaches_its_own_topics_alone(self):
        self.rig.start_router()
        serial = self.rig.router("vrop.ftinfo")["sn"]
        self.start_example("operator", serial, OTHER)
        with self.assertRaises(mqtt5.MqttError):
            self.connect(ROUTERS, serial, "wrong")

        other = self.connect(ROUTERS, OTHER)
        other.subscribe([f"tebra/+/{OTHER}/#"], rig.LIMIT)
        other.client.subscribe([(topic, mqtt5.paho.SubscribeOptions(qos=1))
                                for topic in ("#", f"tebra/+/{serial}/#", "reply/#")])  # in vain
        self.rig.start("qvtkd", [self.rig.build / "src/qvtkd"],
                       {**self.rig.environment, "TEBRA_SDK_BROKER": ROUTERS, "TEBRA_SDK_USERNAME": serial,
                        "TEBRA_SDK_PASSWORD": f"secret of {serial}", "TEBRA_SDK_CAFILE": str(self.rig.home / "ca.pem")})
        rig.wait_until("the device to be online", lambda: self.ask_as_operator("list").returncode == 0)
        self.assertIn('"on"', self.ask_as_operator("get", "ledStatus").stdout)

        key = self.rig.router("vrop.qvtkconfig")["productkey"]
        other.publish(f"tebra/{key}/{serial}/property/ledStatus/set", '{"ledStatus":"off"}', "reply/x", b"x")
        other.publish(f"tebra/p/{OTHER}/probe", "own", "reply/x", b"x")
        seen = other.next_message(time.monotonic() + rig.LIMIT)
        self.assertEqual((seen.topic, seen.payload), (f"tebra/p/{OTHER}/probe", "own"))
        self.assertIn('"on"', self.ask_as_operator("get", "ledStatus").stdout)
