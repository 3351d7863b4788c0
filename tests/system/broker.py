# SPDX-License-Identifier: Apache-2.0
"""The broker's example settings: TLS, users, and rights that keep one router from another's topics."""
import os
import subprocess

import rig
import sdk
from run import RigTest

EXAMPLE = rig.REPO / "packaging/broker"
OTHER = "SIM2408000099"
ROUTERS, OPERATORS = 8883, 8884


class Broker(RigTest):
    def start_example(self, **users):
        """The broker, with its users: {file: [name]}."""
        folder = self.rig.home
        for name in ("mosquitto.conf", "routers.acl", "operators.acl"):
            (folder / name).write_text((EXAMPLE / name).read_text().replace("/etc/mosquitto", str(folder)))
        with open(folder / "mosquitto.conf", "a") as config:
            config.write("user root\n")
        for key, certificate in ("other.key", "other.pem"), ("server.key", "ca.pem"):
            subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
                            "-nodes", "-subj", "/CN=broker", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout",
                            folder / key, "-out", folder / certificate], check=True, capture_output=True)
        (folder / "server.pem").write_bytes((folder / "ca.pem").read_bytes())
        for file, names in users.items():
            (folder / file).touch(mode=0o600)
            for name in names:
                subprocess.run(["mosquitto_passwd", "-b", folder / file, name, f"secret of {name}"], check=True,
                               capture_output=True)
        self.rig.start("broker", ["mosquitto", "-c", folder / "mosquitto.conf"])
        rig.wait_until("the broker", lambda: self.rig._accepts(ROUTERS) and self.rig._accepts(OPERATORS))

    def client(self, program, user, *words, password=None, port=None):
        """A command of the broker's own clients."""
        port = port or (OPERATORS if user == "operator" else ROUTERS)
        return [program, "-V", "mqttv5", "-h", "127.0.0.1", "-p", str(port), "--cafile", str(self.rig.home / "ca.pem"),
                "-u", user, "-P", password or f"secret of {user}", *words]

    def publish(self, user, topic, message, **options):
        return subprocess.run(self.client("mosquitto_pub", user, "-q", "1", "-t", topic, "-m", message, **options),
                              capture_output=True, timeout=rig.LIMIT).returncode

    def ask_as_operator(self, *words):
        environment = {**os.environ, "QVTK_BROKER_USERNAME": "operator", "QVTK_BROKER_PASSWORD": "secret of operator"}
        return subprocess.run([rig.REPO / "dev/cloud", "--broker", f"127.0.0.1:{OPERATORS}", "--cafile",
                               self.rig.home / "ca.pem", *words], env=environment, capture_output=True, text=True, timeout=2 * rig.LIMIT)

    def test_a_router_reaches_its_own_topics_alone(self):
        self.rig.start_router()
        serial = self.rig.router("vrop.ftinfo")["sn"]
        self.start_example(routers=[serial, OTHER], operators=["operator"])
        for user, other in (serial, {"password": "wrong"}), (serial, {"port": OPERATORS}), ("operator", {"port": ROUTERS}):
            self.assertNotEqual(self.publish(user, "t", "m", **other), 0, (user, other))
        self.rig.start("qvtkd", [self.rig.build / "src/qvtkd"],
                       {**self.rig.environment, "TEBRA_SDK_BROKER": f"127.0.0.1:{ROUTERS}", "TEBRA_SDK_USERNAME": serial,
                        "TEBRA_SDK_PASSWORD": f"secret of {serial}", "TEBRA_SDK_CAFILE": str(self.rig.home / "ca.pem")})
        rig.wait_until("the device to be online", lambda: self.ask_as_operator("list").returncode == 0)
        distrustful = sdk.Device(self.rig, BROKER=f"127.0.0.1:{ROUTERS}", USERNAME=OTHER,
                                 PASSWORD=f"secret of {OTHER}", CAFILE=str(self.rig.home / "other.pem"))
        self.assertEqual(distrustful.do("start"), 0)
        rig.wait_until("the error", lambda: sdk.LOG.exists() and "TLS error" in sdk.LOG.read_text())
        self.assertNotIn("is up", sdk.LOG.read_text())
        key = self.rig.router("vrop.qvtkconfig")["productkey"]
        self.publish(OTHER, f"tebra/{key}/{serial}/property/ledStatus/set", '{"ledStatus":"off"}')
        self.assertIn('"on"', self.ask_as_operator("get", "ledStatus").stdout)

        probe = f"tebra/p/{OTHER}/probe"
        self.rig.start("other", self.client("mosquitto_sub", OTHER, "-v", "-t", "#", "-t", f"tebra/+/{serial}/#",
                                            "-t", "reply/#", "-t", probe))
        heard = self.rig.home / "other.log"
        rig.wait_until("the other to hear what it may", lambda: self.publish("operator", probe, "own") == 0
                       and "own" in heard.read_text())
        self.assertEqual(self.ask_as_operator("set", "ledStatus", '{"ledStatus":"off"}').returncode, 0)
        self.publish("operator", probe, "last")
        rig.wait_until("the other to hear the last", lambda: "last" in heard.read_text())
        self.assertEqual({line.split()[0] for line in heard.read_text().splitlines()}, {probe})
