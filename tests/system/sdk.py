# SPDX-License-Identifier: Apache-2.0
"""The SDK's stand-in: a device over it, driven through a real broker."""
import os
import pathlib
import queue
import shlex
import signal
import subprocess
import threading
import time

from paho.mqtt.packettypes import PacketTypes
from paho.mqtt.properties import Properties

import mqtt5
import rig
from run import RigTest

PREFIX = "tebra/product1/serial1/"
ONLINE = ('{"online":true,"mac":"A1:B2:C3:D4:E5:F6","softwareVersion":"1.2.3","hardwareVersion":"","vendor":"",'
          '"areaCode":""}')
BUSY = '{"code":-1,"message":"the device is busy"}'
CACHE, LOG = pathlib.Path("/tmp/sdk.cache"), pathlib.Path("/tmp/sdk.log")


class Device:
    """A running sdk_device, and the lines that it printed."""

    def __init__(self, its_rig, name="device", **settings):
        environment = {**its_rig.environment, **{f"TEBRA_SDK_{key}": value for key, value in settings.items()}}
        self.process = its_rig.processes[name] = subprocess.Popen(
            [its_rig.build / "tests/system/sdk_device"], env=environment, start_new_session=True, encoding="utf-8",
            errors="surrogateescape", stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.lines, self.results = [], queue.Queue()
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.process.stdout:
            if line.startswith("= "):
                self.results.put(int(line[2:]))
            else:
                self.lines.append(line.rstrip("\n"))

    def do(self, *words):
        """What the call gives."""
        print(*words, sep="\t", file=self.process.stdin, flush=True)
        return self.results.get(timeout=rig.LIMIT)

    def wait(self, line, times=1):
        rig.wait_until(f"the device to say {line}", lambda: self.lines.count(line) >= times)


class Cloud(mqtt5.Connection):
    """The cloud's side, which hears everything."""
    REPLIES = "reply/test"

    def __init__(self):
        super().__init__(f"127.0.0.1:{rig.BROKER_PORT}", rig.LIMIT)
        self.kept, self.sent = [], 0
        self.subscribe(["tebra/#", self.REPLIES], rig.LIMIT)

    def send(self, topic, payload="", response_topic=REPLIES, retain=False):
        """Gives the correlation data, which finds the answer."""
        properties = Properties(PacketTypes.PUBLISH)
        self.sent += 1
        correlation = f"request {self.sent}".encode()
        if response_topic:
            properties.ResponseTopic, properties.CorrelationData = response_topic, correlation
        self.client.publish(topic, payload, qos=1, retain=retain, properties=properties)
        return correlation

    def wait(self, **wanted):
        """The first message not yet waited for whose members are so."""
        deadline = time.monotonic() + rig.LIMIT
        earlier, self.kept = self.kept, []
        while message := earlier.pop(0) if earlier else self.next_message(deadline):
            if all(getattr(message, key) == value for key, value in wanted.items()):
                self.kept += earlier
                return message
            self.kept.append(message)
        raise rig.Failed(f"waited in vain for {wanted}")

    def ask(self, topic, payload=""):
        """ "CODE BODY" of the answer."""
        answer = self.wait(topic=self.REPLIES, correlation=self.send(PREFIX + topic, payload))
        return f"{answer.user.get('code')} {answer.payload}"


class Sdk(RigTest):
    def start(self, **settings):
        """A device that is online, and the cloud."""
        self.rig.start_broker()
        self.cloud = Cloud()
        self.device = Device(self.rig, **settings)
        self.assertEqual(self.device.do("start"), 0)
        self.device.wait("online")

    def tearDown(self):
        for name in [name for name, process in self.rig.processes.items() if process.stdin]:
            self.rig.processes[name].stdin.close()
            self.assertEqual(self.rig.processes.pop(name).wait(rig.LIMIT), 0)

    def test_slots_are_called_in_order_and_publications_arrive(self):
        began = time.monotonic()
        self.start()
        self.device.wait("report", 2)
        self.assertGreaterEqual(time.monotonic() - began, 1.9)  # two periods
        self.assertEqual(self.device.lines[:8], ["init a", "init c", "init d", "hook a", "hook d", "online", "report",
                                                 "report"])
        for words, topic, payload in ((("property", '{"p":1}'), "property/post", '{"p":1}'),
                                      (("event", "deviceConnet", '{"e":1}'), "event/deviceConnet", '{"e":1}'),
                                      (("progress", -3), "upgrade/progress", '{"progress":-3}'),
                                      (("intervals", 1, 2, 3), "checktime",
                                       '{"otaCheckInterval":1,"minInterval":2,"maxInterval":3}')):
            self.assertEqual(self.device.do(*words), 0)
            self.cloud.wait(topic=PREFIX + topic, payload=payload)
        self.assertEqual(self.device.do("property", "null"), -1)
        self.assertEqual(self.device.do("event", "a", "null"), -1)
        for name in ("null", "", "a/b", "+", "#", "a\x01", "\udcff"):
            self.assertEqual(self.device.do("event", name, "{}"), -1, name)

    def test_unusable_records_and_settings_are_refused(self):
        device = Device(self.rig)
        self.assertEqual(device.do("start nothing"), -1)
        for field, good in (("product", "product1"), ("serial", "serial1")):
            for text in ("", "a/b", "a+", "#", "\udcc3"):
                device.do(field, text)
                self.assertEqual(device.do("start"), -1, text)
            device.do(field, good)
        self.assertEqual(device.lines, [])  # no init slot has run
        self.assertEqual((device.do("property", "{}"), device.do("respond", 1, 1), device.do("state")), (-1, -1, 0))
        for name, value in (("BROKER", "host:"), ("BROKER", "host:0"), ("BROKER", ":1883"), ("BROKER", "host:65536"),
                            ("BROKER", "[::1"), ("BROKER", "host:18x"), ("REPORT_SECONDS", "0"),
                            ("CALL_SECONDS", "soon"), ("CAFILE", "/tmp/absent.pem")):
            self.assertEqual(Device(self.rig, value, **{name: value}).do("start"), -1, value)

    def test_fields_without_terminator_and_files_that_cannot_be_written_are_taken(self):
        self.rig.start_broker()
        device, cloud = Device(self.rig), Cloud()
        for words in (("product", "p" * 99), ("serial", "s" * 199), ("cache", "/absent/c"), ("log", "/absent/l"),
                      ("secret", "secret"), ("start",)):
            device.do(*words)
        cloud.wait(topic=f"tebra/{'p' * 64}/{'s' * 128}/status")

    def test_addresses_lead_to_the_broker_which_may_come_later(self):
        addresses = "", "127.0.0.1:1883", "[::1]:1884", "/tmp/broker.sock"
        devices = [Device(self.rig, address, BROKER=address) for address in addresses]
        for device, serial in zip(devices, ("a", "b", "c", "d")):
            device.do("serial", serial)
            self.assertEqual([device.do("start"), device.do("start")], [0, -1])  # once only
            self.assertEqual(device.do("state"), 0)
        config = self.rig.home / "broker.conf"
        config.write_text("user root\nallow_anonymous true\nlistener 1883 127.0.0.1\nlistener 1884 ::1\n"
                          "listener 0 /tmp/broker.sock\n")
        self.rig.start("broker", ["mosquitto", "-c", config])
        for device in devices:
            device.wait("online")
            self.assertEqual(device.do("state"), 1)

    def test_the_enrolment_is_kept_privately(self):
        CACHE.write_text("an older and longer enrolment than the new one")
        device = Device(self.rig)
        self.assertEqual([device.do("secret", 's"ecret'), device.do("start")], [0, 0])
        rig.wait_until("the enrolment", lambda: CACHE.read_text() == '{"secret":"s\\"ecret"}' and LOG.exists())
        self.assertEqual(CACHE.stat().st_mode & 0o777, 0o600)
        self.assertNotIn("ecret", LOG.read_text())

    def test_requests_are_answered_once(self):
        def refused(message):
            return f'-1 {{"code":-1,"message":"{message}"}}'
        no_offer = refused("the offer needs the texts url and md5")
        self.start()
        self.device.do("open gate")
        for topic, payload, answer in (
                ("property/echo/get", "", "0 {}"),
                ("property/echo/set", '{"a":"é"}', '0 {"code":0}'),
                ("property/echo/get", "", '0 {"a":"é"}'),
                ("property/echo/set", "[" * 10000, '0 {"code":0}'),  # what it means is the slot's business
                ("property/long/get", "", "0 " + "x" * (512 * 1024 - 2)),
                ("property/full/get", "", refused("the document is too large")),
                ("property/locked/get", "", refused("the device cannot read it")),
                ("property/locked/set", "{}", '7 {"code":7,"reply":"locked is locked"}'),
                ("property/full/set", "{}", refused("the property cannot be written")),
                ("property/nothing/get", "", refused("there is no such property")),
                ("property/echo/set", " " * (256 * 1024 + 1), refused("the request is too large")),
                ("property/echo/set", "{}\0{}", refused("the request is not a text")),
                ("service/echo", '{"a":[1,2.50,"/"]}', '200 {"code":200,"data":{"a":[1,2.50,"/"]}}'),
                ("service/echo", "", '200 {"code":200,"data":{"parameters":null}}'),
                ("service/refuse", "{}", '402 {"code":402,"data":{}}'),
                ("service/text", "{}", '200 {"code":200,"data":"no \\"JSON\\""}'),
                ("service/nothing", "", '404 {"code":404,"data":{},"message":"there is no such service"}'),
                ("service/echo", "a\0b", '400 {"code":400,"data":{},"message":"the request is not a text"}'),
                ("upgrade", '{"url":"http://h/i","md5":"AB","version":"5","strategy":"now"}', '5 {"code":5}'),
                ("upgrade", '{"url":"","md5":"","strategy":1}', '0 {"code":0}'),
                ("upgrade", '{"url":"u","md5":7}', no_offer),
                ("upgrade", '{"url":"u","md5":"m","version":[]}', no_offer),
                ("upgrade", '{"url":"u","md5":"m"} and more', no_offer),
                ("upgrade", "", no_offer),
                ("upgrade", "[" * 100000, no_offer)):
            with self.subTest(topic=topic, payload=payload[:80]):
                self.assertEqual(self.cloud.ask(topic, payload), answer)
        self.device.wait("again -1", 2)
        for line, times in (("upgrade http://h/i|AB|5|now", 1), ("upgrade |||1", 1), ("echo 0", 2)):
            self.assertEqual(self.device.lines.count(line), times, line)
        self.assertEqual([self.device.do("respond", 0, 0), self.device.do("respond", 12345, 1)], [-1, -1])

    def test_requests_that_nobody_waits_for_do_no_harm(self):
        self.rig.start_broker()
        early = Cloud()
        early.send(PREFIX + "service/later", "{}", retain=True)  # never served
        early.wait(topic=PREFIX + "service/later")
        self.cloud, self.device = Cloud(), Device(self.rig)
        self.device.do("start")
        self.device.wait("online")
        for topic, payload, response_topic in (
                ("property/echo/get", "", None),
                ("service/echo", "{}", None),
                ("service/text", "", PREFIX + "service/later"),  # an answer that would come back as a request
                ("service/text", "", "with/a/+"),
                ("property/echo/set", '{"applied":1}', None)):
            self.cloud.send(PREFIX + topic, payload, response_topic)
        self.device.wait("echo 0")
        self.assertTrue(self.cloud.ask("service/echo").startswith("200"))
        self.assertEqual(self.cloud.ask("property/echo/get"), '0 {"applied":1}')
        self.assertNotIn("later", self.device.lines)

    def test_an_upgrade_holds_up_nothing_and_a_full_queue_refuses(self):
        self.start()
        offer = self.cloud.send(PREFIX + "upgrade", '{"url":"u","md5":"m","version":"3"}')
        self.device.wait("upgrade u|m|3|")
        self.assertEqual(self.cloud.ask("property/echo/get"), "0 {}")
        self.assertTrue(self.cloud.ask("service/echo").startswith("200"))
        requests = {self.cloud.send(PREFIX + "property/slow/get") for _ in range(100)}
        requests.remove(self.cloud.wait(payload=BUSY).correlation)
        self.device.do("open gate")
        answers = [self.cloud.wait(topic=Cloud.REPLIES, correlation=request) for request in requests]
        self.assertLessEqual({(a.user["code"], a.payload) for a in answers}, {("0", '{"slow":1}'), ("-1", BUSY)})
        self.assertGreaterEqual(sum(a.payload != BUSY for a in answers), 64)  # as many as may wait
        self.assertEqual(self.cloud.wait(topic=Cloud.REPLIES, correlation=offer).payload, '{"code":3}')

    def test_late_answers_find_their_requests(self):
        self.start()
        requests = [self.cloud.send(PREFIX + "service/later", str(i)) for i in range(60)]
        self.device.wait("later", len(requests))
        self.assertEqual(self.device.do("answer", 4), len(requests))
        for i, request in enumerate(requests):
            answer = self.cloud.wait(topic=Cloud.REPLIES, correlation=request)
            self.assertEqual(answer.payload, f'{{"code":200,"data":{i}}}')

    def test_a_call_that_is_never_answered_is_given_up(self):
        self.start(CALL_SECONDS="1")
        self.assertEqual(self.cloud.ask("service/later"),
                         '408 {"code":408,"data":{},"message":"the device did not answer"}')
        self.assertEqual(self.device.do("answer", 1), 0)

    def test_the_link_returns_with_the_broker_and_a_stalled_one_costs_no_memory(self):
        self.start()
        self.rig.processes["broker"].send_signal(signal.SIGSTOP)
        accepted = 0
        while accepted < 1000 and self.device.do("property", "{}") == 0:
            accepted += 1
        self.assertTrue(200 <= accepted < 1000, accepted)
        self.rig.stop("broker", signal.SIGKILL)
        rig.wait_until("the loss", lambda: self.device.do("state") == 0)
        self.assertEqual(self.device.do("property", "{}"), -1)
        self.rig.start_broker()
        self.cloud = Cloud()
        self.device.wait("online", 2)
        self.assertEqual([self.device.lines.count(line) for line in ("hook a", "init a")], [2, 1])
        self.assertEqual(self.cloud.ask("property/echo/get"), "0 {}")
        rig.wait_until("room for posts", lambda: self.device.do("property", "{}") == 0)

    def test_devices_share_a_broker_and_a_dead_one_is_reported_offline(self):
        self.start()
        other, topic = Device(self.rig, "other"), "tebra/product1/serial2/"
        self.assertEqual([other.do("serial", "serial2"), other.do("start")], [len("serial2"), 0])
        self.cloud.wait(topic=topic + "status", payload=ONLINE)
        self.assertEqual(self.cloud.ask("property/echo/set", '{"first":1}'), '0 {"code":0}')
        request = self.cloud.send(topic + "property/echo/get")
        self.assertEqual(self.cloud.wait(topic=Cloud.REPLIES, correlation=request).payload, "{}")
        self.rig.stop("other", signal.SIGKILL)
        for cloud in (self.cloud, Cloud()):  # a latecomer too
            cloud.wait(topic=topic + "status", payload='{"online":false}')
            cloud.wait(topic=PREFIX + "status", payload=ONLINE)

    def test_the_clouds_tool_drives_a_device(self):
        self.start()
        self.device.do("open gate")
        environment = {**os.environ, "QVTK_BROKER": str(self.rig.home / "broker.sock")}
        for arguments, status, output in (
                ("list", 0, "serial1  product1  A1:B2:C3:D4:E5:F6  1.2.3\n"),
                ("""set echo '{"a": 1}'""", 0, '{"code":0}\n'),
                ("get echo --product product1 --device serial1", 0, '{"a": 1}\n'),
                ("get locked", 1, "cannot read"),
                ("set locked {}", 1, '{"code":7,'),
                ("call echo [1] --unchecked", 0, '{"code":200,"data":[1]}\n'),
                ("call refuse", 1, "402"),
                ("upgrade http://h/i 0123 4 now", 1, '{"code":4}'),
                ("call later --timeout 0.2", 3, "no answer from serial1 within 0.2 s"),
                ("get echo --device serial2", 4, "device serial2 is not online"),
                ("list --broker /absent.sock", 4, "no broker at /absent.sock"),
                ("set echo {", 2, "not JSON"),
                ("call reboot [1]", 2, "not an object"),
                ("services", 0, "pingTest              loss and delay"),
                ("get", 2, "number of arguments"),
                ("", 2, "no command"),
                ("list --timeout 0", 2, "above 0"),
                ("list --broker host:port", 2, "HOST:PORT"),
                ("--help", 0, "dev/cloud get NAME"),
                ("watch status --count 1", 0, '  serial1  status  {"online":true')):
            with self.subTest(arguments):
                done = subprocess.run([rig.REPO / "dev/cloud", *shlex.split(arguments)], env=environment, text=True,
                                      stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=rig.LIMIT)
                self.assertEqual(done.returncode, status, done.stdout)
                self.assertIn(output, done.stdout)
