# SPDX-License-Identifier: Apache-2.0
"""The bus that the simulated router serves, under peers that break it or do not read."""
import contextlib
import random
import socket
import struct

import rig
from run import RigTest

PING, LOOKUP, INVOKE = 3, 4, 5  # messages
PATH, METHOD, BODY = 2, 4, 7  # their attributes


def attr(kind, content=b""):
    return struct.pack(">I", kind << 24 | 4 + len(content)) + content + bytes(-len(content) % 4)


def message(kind, *attributes):
    return struct.pack(">BBHI", 0, kind, 9, 0) + attr(0, b"".join(attributes))


LED = message(LOOKUP, attr(PATH, b"vrop.ledswitch\0"))


class Wire:
    """A raw connection that has been greeted."""

    def __init__(self):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(rig.LIMIT)
        self.socket.connect(rig.BUS)
        self.send, self.read = self.socket.sendall, self.socket.makefile("rb").read
        self.receive()

    def receive(self):
        """The next whole message, empty when the other end has closed."""
        head = self.read(12)
        return head + self.read((struct.unpack(">I", head[8:])[0] & 0xffffff) - 4) if head else b""

    def look_up(self):
        """The attribute that holds the LEDs' id."""
        self.send(LED)
        said, status = self.receive(), self.receive()
        if status[-8:] != attr(1, bytes(4)):
            raise rig.Failed(f"the lookup gives {status}")
        return said[len(LED):len(LED) + 8]


class Bus(RigTest):
    def setUp(self):
        self.rig.start_router()
        self.wire = Wire()

    def test_closes_on_frame_errors_and_survives_any_bytes(self):
        for frame in "000300010000000000000003", "000300010000000000100001":
            bad = Wire()
            bad.send(bytes.fromhex(frame))
            self.assertEqual(bad.receive(), b"")
        source = random.Random(99)
        good = LED + message(INVOKE, self.wire.look_up(), attr(METHOD, b"get\0"), attr(BODY))
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
