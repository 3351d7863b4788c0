# SPDX-License-Identifier: Apache-2.0
"""The simulated cloud's servers, over HTTP and through their control."""
import http.client
import ssl
import time

import rig
from run import RigTest


class Cloudsim(RigTest):
    def start(self, *arguments):
        self.image = self.rig.home / "image.bin"
        self.image.write_bytes(b"image")
        self.rig.start_cloud("--device", "SN0001:PRODUCT1:device-secret", *arguments)

    def ask(self, path, method="GET", body=None):
        """The HTTP status, or "refused"."""
        connection = http.client.HTTPSConnection("127.0.0.1", rig.CLOUD_PORT, timeout=rig.LIMIT,
                                                 context=ssl._create_unverified_context())
        try:
            connection.request(method, path, body)
            return connection.getresponse().status
        except ConnectionRefusedError:
            return "refused"
        finally:
            connection.close()

    def download(self):
        return self.ask("/firmware/image.bin")

    def test_faults_apply_in_turn_to_their_endpoint(self):
        self.start()
        self.rig.control("firmware", self.image, "2", "1")
        for fault in ("any count=0 status=599", "firmware count=2 status=501", "firmware status=502"):
            self.rig.control("fault", *fault.split())
        self.assertEqual([self.download() for _ in range(5)], [501, 501, 502, 599, 599])
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
                (".hidden", b"x", 400), ("a%2Fb", b"x", 404))
        for name, body, status in rows:
            with self.subTest(name):
                self.assertEqual(self.ask(f"/upload/{name}", "PUT", body), status)
                stored = self.rig.uploads / name
                self.assertEqual(stored.read_bytes() if stored.exists() else None, body if status == 200 else None)
        self.assertEqual(self.rig.control("upload", "largest"), "b" * 100000)
        for path in (self.rig.uploads / "small", self.rig.home / "cloudsim.sock"):
            self.assertEqual(path.stat().st_mode & 0o777, 0o600, path)
        self.assertEqual(len(self.rig.requests()), len(rows))  # refused ones are recorded too
