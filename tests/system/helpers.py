# SPDX-License-Identifier: Apache-2.0
"""The helper programs as built, run by name as the agent runs them."""
import os
import pathlib
import re
import subprocess
import time

import rig
from run import RigTest

PROGRAMS = "post_data", "common_put_file", "post_file"
SETTINGS = pathlib.Path("/aptmp/time_settings.json")
CONFIGURATION = pathlib.Path("/tmp/backup.config")
ADDRESS = pathlib.Path("/tmp/url.txt")
USAGE = "usage: [a-z_]+ .*"
NO_CODE = 'the server\'s reply holds no number as "code"'
TRANSFER = "transfer failed: .*"
SOMEBODY = 12345


class Helpers(RigTest):
    def setUp(self):
        rig.UPGRADE_LOG.parent.mkdir(parents=True, exist_ok=True)
        rig.UPGRADE_LOG.write_text('[t][f][1]buf:{"newversion": "V1.0.3", "strategy": "1"}\n')
        self.rig.start_router()
        self.rig.start_cloud()

    def expect(self, command, line=""):
        """It says nothing and succeeds, says how it is used, or says its name and why it failed."""
        done = subprocess.run(command.split(" "), capture_output=True, text=True, timeout=rig.LIMIT)
        start = "" if line in ("", USAGE) else f"{command.split()[0]}: "
        self.assertRegex(done.stderr, f"^{start}{line}\n$" if line else "^$", command)
        self.assertEqual((done.returncode, done.stdout), (0 if not line else 2 if line == USAGE else 1, ""), command)

    @staticmethod
    def give_away(path):
        """Makes it another user's file. False where that takes more than this user may; then it is gone."""
        try:
            os.chown(path, SOMEBODY, SOMEBODY)
            return True
        except OSError:
            os.unlink(path)
            return False

    def fault(self, words, endpoint="any"):
        self.rig.control("fault", endpoint, *words) if words else None

    def test_usage_is_told_without_bus_or_server(self):
        for command in ("post_data", "post_data 4", "post_data 10", "post_data ", "post_data -1", "post_data x",
                        "post_data 1 1", "common_put_file", "common_put_file a b", "post_file x"):
            self.expect(command, USAGE)
        self.assertEqual(self.rig.requests(), [])
        self.rig.stop_all()
        for name in PROGRAMS:
            self.assertRegex(subprocess.check_output([name, "--version"], text=True), rf"^{name} \d+\.\d+\.\d+\n$")
            self.assertRegex(subprocess.check_output([name, "--help"], text=True), f"^usage: {name}.*\n")

    def test_posted_requests_fail_unless_the_server_took_them(self):
        for mode, path in ((0, "report-runtime"), (1, "get-settings"), (3, "upgrade-progress")):
            self.expect(f"post_data {mode}")
            self.assertEqual([request["verdict"] for request in self.rig.requests(path)], ["ok"])
        SETTINGS.write_text("before")
        (self.rig.home / "long").write_text(" " * 70000 + '{"code":0}')
        for mode in (0, 1, 3):
            for fault, line in (("status=500", "the server answered HTTP 500"),
                                ("status=302", "the server answered HTTP 302"),
                                ('body={"code":7}', "the server refused the request with code 7"),
                                ("body={}", NO_CODE),
                                ("body=<html>", NO_CODE),
                                ('body={"code":null}', NO_CODE),
                                ('body={"code":"denied"}', NO_CODE),
                                ('body={"code":[]}', NO_CODE),
                                ('body={"code":0.7}', NO_CODE),
                                ('body={"code":4294967296}', "the server refused the request with code 2147483647"),
                                ("body=", NO_CODE),
                                (f"body-file={self.rig.home}/long", TRANSFER),
                                ("drop=1", TRANSFER),
                                ("cut=3", TRANSFER)):
                self.fault([fault])
                self.expect(f"post_data {mode}", line)
        self.rig.bus("sim", "setstate", {"pointer": "/vrop.qvtkconfig/devicesecret", "value": '"other"'})
        self.expect("post_data 1", "the server refused the request with code [0-9]+")
        self.assertEqual(SETTINGS.read_text(), "before")
        rig.UPGRADE_LOG.unlink()
        self.expect("post_data 3", "the request cannot be built: 100003")
        self.rig.stop("routersim")  # no bus: no configuration, no address
        for mode in (0, 1):
            self.expect(f"post_data {mode}", "the registration record holds no address for this request")

    def test_settings_are_kept_whole(self):
        (self.rig.home / "settings").write_text('{"rules": [{"mac": "aa"}]}')
        self.rig.control("settings", self.rig.home / "settings")
        for _ in range(2):  # the second reply holds none
            self.expect("post_data 1")
            self.assertEqual(SETTINGS.read_text(), '{"rules":[{"mac":"aa"}]}')
            self.assertEqual(SETTINGS.stat().st_mode & 0o777, 0o600)
            self.fault(['body={"code":0}'])
        self.rig.control("fault", "clear")
        SETTINGS.unlink()
        SETTINGS.mkdir()
        self.expect("post_data 1", "cannot write /aptmp/time_settings.json")

    def test_a_configuration_is_fetched_whole_or_not_at_all(self):
        file = self.rig.home / "home.config"
        for size, fault, line in ((0, [], "the server sent an empty configuration"), (1, [], ""),
                                  (1024 * 1024, [], ""), (1024 * 1024 + 1, [], TRANSFER),
                                  (5000, ["cut=4999"], TRANSFER),
                                  (5000, ["status=404"], "the server answered HTTP 404")):
            file.write_bytes(b"c" * size)
            ADDRESS.write_text(self.rig.control("backup", file).strip() + " \r\n")
            CONFIGURATION.write_text("before")
            self.fault(fault)
            self.expect("post_data 2", line)
            self.assertEqual(CONFIGURATION.read_text(), "before" if line else "c" * size)

    def test_an_address_file_that_is_none(self):
        pathlib.Path("/tmp/file.bin").write_text("bytes")
        for command in ("post_data 2", "common_put_file /tmp/file.bin"):
            for address, line in ((None, "cannot read /tmp/url.txt"),
                                  (" \n", "/tmp/url.txt holds no address"),
                                  ("http://host/" + "a" * 2000, "the address in /tmp/url.txt is too long"),
                                  ("file:///etc/passwd", "transfer failed: Unsupported protocol"),
                                  ("https://127.0.0.1:1/", TRANSFER)):
                if address:
                    ADDRESS.write_text(address)
                self.expect(command, line)
            self.give_away(ADDRESS)
            self.expect(command, "cannot read /tmp/url.txt")
            ADDRESS.unlink(missing_ok=True)
            os.mkfifo(ADDRESS)
            self.expect(command, "cannot read /tmp/url.txt")
            ADDRESS.unlink()
        self.assertFalse(CONFIGURATION.exists())

    def test_files_are_put(self):
        capture, foreign = pathlib.Path("/tmp/cap.pcap"), pathlib.Path("/tmp/foreign")
        ADDRESS.write_text(f"{rig.CLOUD_URL}/upload/capture.pcap")
        for size in (0, 1, 3000000):
            capture.write_bytes(b"p" * size)
            self.expect(f"/usr/bin/common_put_file {capture}")
            self.assertEqual((self.rig.uploads / "capture.pcap").read_bytes(), b"p" * size)
        os.mkfifo("/tmp/fifo")
        foreign.write_text("bytes")
        foreigners = ["/tmp/foreign"] if self.give_away(foreign) else []
        self.expect("common_put_file /tmp/none", "cannot read /tmp/none")
        for path in ("/tmp", "/tmp/fifo", *foreigners):
            self.expect(f"common_put_file {path}", f"{path} is not a file of the agent's")
        self.fault(["status=403"], "upload")
        self.expect(f"common_put_file {capture}", "the server answered HTTP 403")

    def test_the_newest_backup_is_posted(self):
        self.expect("post_file", r"there is no /tmp/\*_\*_\*.config")
        for name, age in (("a_b_old", 60), ("b_new_c", 5), ("c_d_older", 3600), ("plain", 0), ("f_g_foreign", 0)):
            file = pathlib.Path(f"/tmp/{name}.config")
            file.write_text(f"of {name}")
            os.utime(file, (time.time() - age,) * 2)
        self.give_away("/tmp/f_g_foreign.config")
        os.mkfifo("/tmp/f_i_fo.config")
        self.expect("post_file")
        self.assertEqual([r["verdict"] for r in self.rig.requests("iot/device/upload-config-file")], ["ok"])
        self.assertEqual([file.read_text() for file in self.rig.uploads.iterdir()], ["of b_new_c"])
        self.fault(['body={"code":1}'])
        self.expect("post_file", "the server refused the request with code 1")
