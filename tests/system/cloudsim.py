# SPDX-License-Identifier: Apache-2.0
"""The simulated cloud's servers, over HTTP and through their control."""
import hashlib
import hmac
import http.client
import json
import ssl
import time

import rig
from run import RigTest

JSON = "application/json"
SECRET = "device-secret"
IDENTITY = {"sn": "SN0001", "productKey": "PRODUCT1", "timestamp": 1700000000}
DEVICE = {**IDENTITY, "mac": "A1B2C3D4E5F6", "checkType": 2, "manufacturer": "M", "hardwareVersion": "H",
          "firmwareVersion": "1.0", "areaCode": "11"}


def sign(text="SN0001_PRODUCT1_1700000000", secret=SECRET):
    return hmac.new(secret.encode(), text.encode(), hashlib.sha1).hexdigest()


class Cloudsim(RigTest):
    def start(self, *arguments):
        self.image = self.rig.home / "image.bin"
        self.image.write_bytes(b"image")
        self.rig.start_cloud("--device", f"SN0001:PRODUCT1:{SECRET}", *arguments)

    def ask(self, path, method="GET", body=None, headers=None):
        """(HTTP status, or "refused"; body)"""
        connection = http.client.HTTPSConnection("127.0.0.1", rig.CLOUD_PORT, timeout=rig.LIMIT,
                                                 context=ssl._create_unverified_context())
        try:
            connection.request(method, path, body, headers or {})
            answer = connection.getresponse()
            return answer.status, answer.read()
        except ConnectionRefusedError:
            return "refused", b""
        finally:
            connection.close()

    def download(self):
        return self.ask("/firmware/image.bin")[0]

    def post(self, path, body, signature=None, kind=JSON):
        headers = {"Content-Type": kind, "sign": sign() if signature is None else signature}
        return self.ask(f"/device-api/device/{path}", "POST", body, headers)[1].decode()

    def test_faults_apply_in_turn_to_their_endpoint(self):
        self.start()
        self.rig.control("firmware", self.image, "2", "1")
        for fault in ("any count=0 status=599", "firmware count=2 status=501", "firmware status=502"):
            self.rig.control("fault", *fault.split())
        self.assertEqual([self.download() for _ in range(5)], [501, 501, 502, 599, 599])
        self.rig.control("fault", "clear")
        self.assertEqual(self.download(), 200)
        self.rig.control("fault", "any", "refuse=0")
        self.assertEqual(self.download(), "refused")
        self.rig.control("fault", "clear")
        self.assertEqual(self.download(), 200)
        began = time.monotonic()
        self.rig.control("fault", "any", "refuse=300")
        rig.wait_until("the port", lambda: self.download() == 200)
        self.assertGreaterEqual(time.monotonic() - began, 0.3)

    def test_uploads_are_bounded_and_stored_privately(self):
        self.start("--max-upload", "100000")
        rows = (("small", b"a\0b", 200), ("largest", b"b" * 100000, 200), ("larger", b"b" * 100001, 413),
                (".hidden", b"x", 400), ("a%2Fb", b"x", 404), ("refused", b"x", 503))
        for name, body, status in rows:
            with self.subTest(name):
                if status == 503:
                    self.rig.control("fault", "upload", "status=503")
                answer = self.ask(f"/upload/{name}", "PUT", body, {"Content-Type": "application/octet-stream"})
                self.assertEqual(answer[0], status)
                stored = self.rig.uploads / name
                self.assertEqual(stored.read_bytes() if stored.exists() else None, body if status == 200 else None)
        self.assertEqual(self.rig.control("upload", "largest"), "b" * 100000)
        for path in (self.rig.uploads / "small", self.rig.home / "cloudsim.sock"):
            self.assertEqual(path.stat().st_mode & 0o777, 0o600, path)
        self.assertEqual(len(self.rig.requests()), len(rows))  # refused ones are recorded too

    def test_requests_are_judged(self):
        self.start()
        mine = json.dumps(IDENTITY)
        for path, verdict, body, *rest in (
                ("get-settings", "ok", mine),
                ("get-settings", "Content-Type is not application/json", mine, sign(), "text/plain"),
                ("get-settings", "no sign header", mine, ""),
                ("get-settings", "wrong signature", mine, sign().upper()),
                ("get-settings", "wrong signature", mine, sign("SN0001_PRODUCT1_6")),
                ("get-settings", "wrong signature", mine, sign(secret="other")),
                ("get-settings", "body is not a JSON object", mine + " x"),
                ("get-settings", "body is not a JSON object", "[]"),
                ("get-settings", "sn missing", json.dumps({**IDENTITY, "sn": 1})),
                ("get-settings", "timestamp missing or not a number", json.dumps({**IDENTITY, "timestamp": "5"})),
                ("get-settings", "unknown device SN2", json.dumps({**IDENTITY, "sn": "SN2"})),
                ("report-runtime", "runtimeList missing", mine),
                ("upgrade-progress", "newVersion missing",
                 json.dumps({**IDENTITY, "strategy": "1", "progress": 50, "oldVersion": "1"})),
                ("check-upgrade", "ok", json.dumps(DEVICE))):
            with self.subTest(path=path, body=body, rest=rest):
                self.assertEqual(json.loads(self.post(path, body, *rest))["code"] == 0, verdict == "ok")
                self.assertEqual(self.rig.requests()[-1]["verdict"], verdict)
