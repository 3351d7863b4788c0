# SPDX-License-Identifier: Apache-2.0
"""Start-up of the daemon as built, seen from outside."""
import pathlib
import signal
import struct
import time

import rig
from run import RigTest

RECORD = pathlib.Path("/tmp/record")
# Slots of a row: init, set, get, connectok_hook, reserved, report
PROPERTIES = """deviceInfo 101100
ledStatus 111001
wifiInfo 111001
timeReboot 111000
networkInfo 111000
visitorsWifi 111000
deviceStatus 101100
apDevices 111000
mesh 111000
meshTopology 101000
timeLed 111000
hcdn 111001
ipv6Status 111000
networkProtocol 111000
wifi2gSeniorInfo 111000
wifi5gSeniorInfo 111000""".splitlines()
SERVICES = """tuningWifi reboot recovery checkSignal checkInterference updatePwd monitorSpeed apMonitorSpeed
allApMonitorSpeed tuningBackupCfg cfgReport relayScan maxMonitorSpeed cutUsb diskCheck nat connectCheck uploadLog
outdiskFormat channelQuality portLinkSpeed rssiQualityCheck networkCheck physicsInfo pingTest remoteCap remoteCfgExport
tuningMemory wirelessInterference""".split()


class Startup(RigTest):
    def start_with_probe(self, result="0"):
        environment = {**self.rig.environment, "LD_LIBRARY_PATH": str(self.rig.build / "tests/system/probe"),
                       "PROBE_RECORD": str(RECORD), "PROBE_RESULT": result}
        return self.rig.start_daemon(environment=environment)

    def test_another_library_gets_the_record_byte_for_byte(self):
        self.rig.start_router()
        info = self.rig.router("vrop.ftinfo")
        config = self.rig.router("vrop.qvtkconfig")
        self.start_with_probe()
        rig.wait_until("the record", lambda: RECORD.exists() and b"online" in RECORD.read_bytes())
        data = RECORD.read_bytes()
        digits = info["mac"]
        texts = {(0, 64): config["productkey"], (64, 128): info["sn"],
                 (192, 64): ":".join(digits[i:i + 2] for i in range(0, 12, 2)).upper(),
                 (256, 64): info["iswversion"], (320, 64): info.get("ihdversion") or info["hdversion"],
                 (384, 128): info["odmvendor"], (512, 256): config["registerurl"], (768, 64): config["productid"],
                 (832, 128): config["productsecret"], (960, 128): config["cachepath"],
                 (1088, 128): config["tebralogpath"], (1280, 8): info["province"][:7]}
        for (offset, size), text in texts.items():
            with self.subTest(offset=offset):
                self.assertEqual(data[offset:offset + size], text.encode().ljust(size, b"\0"))
        self.assertEqual(struct.unpack_from("<Q", data, 1240)[0], 0)
        self.assertEqual(struct.unpack_from("<Qi12s", data, 1256), (0, 300, bytes(12)))
        self.assertEqual(struct.unpack_from("<Q", data, 1288)[0], 0)
        self.assertEqual(data[1296:].decode().splitlines(),
                         [f"secret {config['devicesecret']}", *(f"property {row}" for row in PROPERTIES),
                          *(f"service {name}" for name in SERVICES), "online 1"])

    def test_without_a_device_secret_the_status_is_255(self):
        self.rig.start_router()
        self.rig.bus("sim", "setstate", {"pointer": "/vrop.qvtkconfig/devicesecret", "value": '""'})
        self.assertEqual(self.start_with_probe().wait(rig.LIMIT), 255)
        self.assertFalse(RECORD.exists())

    def test_an_sdk_that_does_not_start_is_logged_and_the_status_is_255(self):
        self.rig.start_router()
        self.assertEqual(self.start_with_probe(result="7").wait(rig.LIMIT), 255)
        self.assertEqual(self.rig.log_count("start sdk fail\n"), 2)

    def test_waits_for_bus_and_wan_then_starts_in_order(self):
        self.rig.start_broker()
        self.rig.start_daemon()
        self.rig.start_router("--set", '/vrop.waninfo/status="Unconnected"')
        self.rig.wait_logged("network is down, waiting..................")
        self.rig.bus("sim", "wan", {"status": "up"})
        self.rig.wait_online()
        log = rig.MAIN_LOG.read_text()
        order = ["]devSecret:", "]network is down", "]creat tcp socket:0", "]start event handle",
                 "]-------------->start init config<------------------", "]mac:", "]register_url:",
                 "start enter deviceInfo_init", "]runtimeList init"]
        places = [log.index(text) for text in order]
        self.assertEqual(places, sorted(places), log)
        self.assertEqual(rig.MAIN_LOG.stat().st_mode & 0o777, 0o600)

    def test_sigterm_ends_at_once_and_sigint_does_not(self):
        self.rig.start_broker()
        self.rig.start_router()
        daemon = self.rig.start_daemon()
        self.rig.wait_online()
        daemon.send_signal(signal.SIGINT)
        self.rig.wait_logged("destroy ubus_mutex")
        self.assertIn("deviceModel", self.rig.get("deviceInfo"))
        self.assertIsNone(daemon.poll())
        began = time.monotonic()
        self.assertEqual(self.rig.stop("qvtkd"), -signal.SIGTERM)
        self.assertLess(time.monotonic() - began, 3)
