# SPDX-License-Identifier: Apache-2.0
"""The bus that the simulated router serves, byte for byte."""
import contextlib
import os
import pathlib
import random
import resource
import socket
import struct
import subprocess

import rig
from run import RigTest

STATUS, DATA, PING, LOOKUP, INVOKE = range(1, 6)  # messages
RESULT, PATH, ID, METHOD, TYPE, SIGNATURE, BODY = range(1, 8)  # their attributes
TABLE, STRING, INT32 = 2, 3, 5  # types of values
LED = b"vrop.ledswitch"


def attr(kind, content=b""):
    return struct.pack(">I", kind << 24 | 4 + len(content)) + content + bytes(-len(content) % 4)


def number(kind, value):
    return attr(kind, struct.pack(">I", value))


def value(kind, name, content=b""):
    head = struct.pack(">H", len(name)) + name + b"\0"
    return attr(0x80 | kind, head + bytes(-len(head) % 4) + content)


def message(kind, *attributes, peer=0, version=0):
    return struct.pack(">BBHI", version, kind, 9, peer) + attr(0, b"".join(attributes))


def lookup(path):
    return message(LOOKUP, attr(PATH, path + b"\0"))


class Wire:
    """A raw connection that has been greeted."""

    def __init__(self):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(rig.LIMIT)
        self.socket.connect(rig.BUS)
        self.send, self.read = self.socket.sendall, self.socket.makefile("rb").read
        self.hello = self.receive()

    def receive(self):
        """The next whole message, empty when the other end has closed."""
        head = self.read(12)
        return head + self.read((struct.unpack(">I", head[8:])[0] & 0xffffff) - 4) if head else b""

    def look_up(self):
        """The LEDs' id, after all else that is said of them was compared."""
        self.send(lookup(LED))
        said = self.receive() + self.receive()
        led, kind = struct.unpack_from(">I4xI", said, len(lookup(LED)) + 4)
        signature = value(TABLE, b"set", value(INT32, b"status", struct.pack(">I", STRING)))
        expected = message(DATA, attr(PATH, LED + b"\0"), number(ID, led), number(TYPE, kind),
                           attr(SIGNATURE, value(TABLE, b"get") + signature)) + message(STATUS, number(RESULT, 0))
        if said != expected or led < 0x400:
            raise rig.Failed(f"{said} instead of {expected}")
        return led


class Bus(RigTest):
    def setUp(self):
        self.rig.start_router()
        self.wire = Wire()

    def test_answers_each_request(self):
        self.assertEqual(self.wire.hello, b"\0\0\0\0" + self.wire.hello[4:8] + attr(0))
        led = self.wire.look_up()

        def status(code):
            return message(STATUS, number(RESULT, code))

        def of_led(code, *data):
            return (b"".join(message(DATA, number(ID, led), attr(BODY, item), peer=led) for item in data)
                    + message(STATUS, number(RESULT, code), number(ID, led), peer=led))

        def invoke(method, *data):
            return message(INVOKE, number(ID, led), attr(METHOD, method + b"\0"), *(attr(BODY, d) for d in data),
                           peer=led)
        state = value(TABLE, LED, value(STRING, b"status", b"off\0"))
        for what, request, answer in (
                ("set", invoke(b"set", value(STRING, b"status", b"off\0")),
                 of_led(0, value(STRING, b"result", b"0\0"))),
                ("get", invoke(b"get", b""), of_led(0, state)),
                ("lookup of an unknown object", lookup(b"nope"), status(4)),
                ("lookup of nothing", lookup(b""), status(2)),
                ("unknown object", message(INVOKE, number(ID, 77), attr(METHOD, b"m\0"), peer=77),
                 message(STATUS, number(RESULT, 4), peer=77)),
                ("ping", message(PING, attr(11)), message(DATA, attr(11)) + status(0)),
                ("another version is not looked at", message(PING, version=255), message(DATA) + status(0)),
                ("unknown type", message(255), status(1)),
                ("no id", message(INVOKE, attr(METHOD, b"m\0")), status(2)),
                ("no method", message(INVOKE, number(ID, led)), status(2)),
                ("unknown method", invoke(b"m", b""), of_led(3)),
                ("no data", invoke(b"get"), of_led(2))):
            with self.subTest(what):
                self.wire.send(request)
                self.assertEqual(self.wire.read(len(answer)), answer)

    def test_lists_sorted(self):
        for request, some in ((message(LOOKUP), [b"sim", LED, b"vrop.waninfo"]),
                              (lookup(b"vrop.wani*"), [b"vrop.waninfo"])):
            self.wire.send(request)
            found = []
            while len(answer := self.wire.receive()) > 20:  # until the status
                found.append(answer[16:].split(b"\0")[0])
            self.assertEqual(found, sorted(found))
            self.assertLessEqual(set(some), set(found))
        self.assertEqual(found, some)

    def test_closes_on_frame_errors_and_survives_any_bytes(self):
        for frame in "000300010000000000000003", "000300010000000000100001":
            bad = Wire()
            bad.send(bytes.fromhex(frame))
            self.assertEqual(bad.receive(), b"")
        source = random.Random(99)
        good = lookup(LED) + message(INVOKE, number(ID, self.wire.look_up()), attr(METHOD, b"get\0"), attr(BODY))
        for _ in range(400):
            damaged = bytearray(good)
            for _ in range(source.randrange(8)):
                damaged[source.randrange(len(damaged))] = source.randrange(256)
            wire = Wire()
            with contextlib.suppress(ConnectionError):
                wire.send(damaged)
                wire.socket.shutdown(socket.SHUT_WR)
                wire.read()
        self.wire.look_up()

    def test_drops_messages_for_a_client_that_does_not_read(self):
        ping, pings = message(PING, attr(11, b"p" * 65528)), 200  # what is got is whole, and memory stays bounded
        for _ in range(pings):
            self.wire.send(ping)
        whole, answer = 0, b""
        while answer[:4] != b"\0\1\0\1":
            self.wire.send(bytes.fromhex("000300010000000000000004"))  # until there is room for its answer again
            answer = self.wire.receive()
            self.assertIn(len(answer), (len(ping), 20, 12))
            whole += len(answer) == len(ping)
        self.assertTrue(16 <= whole < pings, whole)

    def test_refuses_clients_that_it_has_no_descriptors_for_and_serves_the_others(self):
        router = self.rig.processes["routersim"].pid
        used = {int(name) for name in os.listdir(f"/proc/{router}/fd")}
        first_free = min(set(range(len(used) + 1)) - used)
        _, most = resource.prlimit(router, resource.RLIMIT_NOFILE)
        resource.prlimit(router, resource.RLIMIT_NOFILE, (first_free, most))
        self.assertEqual(Wire().hello, b"")
        self.wire.look_up()

    def test_takes_over_only_a_socket_that_nobody_serves(self):
        file = pathlib.Path("/tmp/file.sock")
        file.write_text("not a socket")
        for path in (rig.BUS, file):
            done = subprocess.run([self.rig.build / "sim/router/routersim", "--socket", path], timeout=rig.LIMIT)
            self.assertEqual(done.returncode, 1)
        self.assertEqual(file.read_text(), "not a socket")
        self.wire.look_up()
