# SPDX-License-Identifier: Apache-2.0
"""As much of an MQTT 5 client (OASIS standard) as a command line tool needs, on the standard library alone."""
import select
import socket
import ssl
import struct
import time

CONNECT, CONNACK, PUBLISH, PUBACK, SUBSCRIBE, SUBACK, PINGREQ, PINGRESP, DISCONNECT = 1, 2, 3, 4, 8, 9, 12, 13, 14
RESPONSE_TOPIC, CORRELATION_DATA, USER_PROPERTY = 0x08, 0x09, 0x26
NO_MATCHING_SUBSCRIBERS = 0x10
FAILURE = 0x80
# Properties by identifier: how many bytes the value has, or "text", "pair", "varint"
SIZES = {0x01: 1, 0x02: 4, 0x03: "text", RESPONSE_TOPIC: "text", CORRELATION_DATA: "text", 0x0B: "varint", 0x11: 4,
         0x12: "text", 0x13: 2, 0x15: "text", 0x16: "text", 0x17: 1, 0x18: 4, 0x19: 1, 0x1A: "text", 0x1C: "text",
         0x1F: "text", 0x21: 2, 0x22: 2, 0x23: 2, 0x24: 1, 0x25: 1, USER_PROPERTY: "pair", 0x27: 4, 0x28: 1, 0x29: 1,
         0x2A: 1}


class MqttError(Exception):
    """The broker cannot be reached, refuses, or breaks the protocol."""


def varint(number):
    out = bytearray()
    while True:
        number, low = divmod(number, 128)
        out.append(low | (0x80 if number else 0))
        if not number:
            return bytes(out)


def text(value):
    data = value if isinstance(value, bytes) else value.encode()
    return struct.pack(">H", len(data)) + data


class Reader:
    """Takes a packet's body apart; a body that ends early is an MqttError."""

    def __init__(self, data):
        self.data, self.at = data, 0

    def take(self, count):
        piece = self.data[self.at:self.at + count]
        if len(piece) < count:
            raise MqttError("the broker sent a broken packet")
        self.at += count
        return piece

    def number(self, count):
        return int.from_bytes(self.take(count), "big")

    def text(self):
        return self.take(self.number(2))

    def varint(self):
        value = shift = 0
        while True:
            byte = self.number(1)
            value |= (byte & 0x7F) << shift
            shift += 7
            if not byte & 0x80:
                return value

    def rest(self):
        return self.data[self.at:]

    def properties(self):
        """{identifier: value}; the user properties as a dictionary of their own."""
        inner = Reader(self.take(self.varint()))
        found = {USER_PROPERTY: {}}
        while inner.rest():
            identifier = inner.varint()
            kind = SIZES.get(identifier)
            if kind is None:
                raise MqttError("the broker sent an unknown property")
            if kind == "pair":
                key = inner.text().decode(errors="replace")
                found[USER_PROPERTY][key] = inner.text().decode(errors="replace")
            elif kind == "text":
                found[identifier] = inner.text()
            else:
                found[identifier] = inner.varint() if kind == "varint" else inner.number(kind)
        return found


class Message:
    def __init__(self, flags, reader):
        self.retained = bool(flags & 1)
        self.qos = flags >> 1 & 3
        self.topic = reader.text().decode(errors="replace")
        self.packet_id = reader.number(2) if self.qos else None
        properties = reader.properties()
        self.correlation = properties.get(CORRELATION_DATA, b"")
        self.user = properties[USER_PROPERTY]
        self.payload = reader.rest().decode(errors="replace")


class Connection:
    """One clean session. `address` is HOST, HOST:PORT or the path of a Unix socket."""

    def __init__(self, address, timeout, username=None, password=None, cafile=None):
        self.messages = []
        self.next_id = 0
        self.buffer = bytearray()
        deadline = time.monotonic() + timeout
        try:
            self.socket = self.open(address, timeout, cafile)
        except (OSError, ValueError, UnicodeError) as error:
            raise MqttError(f"no broker at {address}: {error}") from error
        flags = 2 | (0x80 if username else 0) | (0x40 if password else 0)
        body = text("MQTT") + bytes([5, flags, 0, 0]) + varint(0) + text("")
        body += (text(username) if username else b"") + (text(password) if password else b"")
        self.send(CONNECT, 0, body)
        reply = self.wait_for(CONNACK, deadline)
        if reply is None:
            raise MqttError(f"the broker at {address} does not answer")
        reply.take(1)
        if reason := reply.number(1):
            raise MqttError(f"the broker at {address} refuses the connection (reason {reason})")

    @staticmethod
    def open(address, timeout, cafile):
        if address.startswith("/"):
            connection = socket.socket(socket.AF_UNIX)
            connection.settimeout(timeout)
            connection.connect(address)
            return connection
        host, colon, port = address.rpartition(":")
        if not colon:
            host, port = address, 8883 if cafile else 1883
        host = host.strip("[]")
        connection = socket.create_connection((host, int(port)), timeout)
        if cafile:
            connection = ssl.create_default_context(cafile=cafile).wrap_socket(connection, server_hostname=host)
        return connection

    def send(self, kind, flags, body):
        try:
            self.socket.sendall(bytes([kind << 4 | flags]) + varint(len(body)) + body)
        except OSError as error:
            raise MqttError(f"the connection to the broker broke: {error}") from error

    def take_packet(self):
        """(kind, flags, Reader) out of what has arrived, or None while it is not whole."""
        size = shift = 0
        for at, byte in enumerate(self.buffer[1:5], 1):
            size |= (byte & 0x7F) << shift
            shift += 7
            if not byte & 0x80:
                end = at + 1 + size
                if len(self.buffer) < end:
                    return None
                head, body = self.buffer[0], bytes(self.buffer[at + 1:end])
                del self.buffer[:end]
                return head >> 4, head & 0x0F, Reader(body)
        if len(self.buffer) >= 5:
            raise MqttError("the broker sent a broken packet")
        return None

    def receive(self, deadline):
        """The next packet, or None when the deadline (monotonic, None: never) has passed."""
        while (packet := self.take_packet()) is None:
            pending = isinstance(self.socket, ssl.SSLSocket) and self.socket.pending()
            left = None if deadline is None else max(0, deadline - time.monotonic())
            if not pending and not select.select([self.socket], [], [], left)[0]:
                return None
            try:
                piece = self.socket.recv(65536)
            except OSError as error:
                raise MqttError(f"the connection to the broker broke: {error}") from error
            if not piece:
                raise MqttError("the broker closed the connection")
            self.buffer += piece
        kind, flags, reader = packet
        if kind == PUBLISH:
            message = Message(flags, reader)
            if message.qos:
                self.send(PUBACK, 0, struct.pack(">H", message.packet_id))
            self.messages.append(message)
        elif kind == DISCONNECT:
            raise MqttError("the broker closed the connection")
        return packet

    def wait_for(self, kind, deadline):
        while packet := self.receive(deadline):
            if packet[0] == kind:
                return packet[2]
        return None

    def packet_id(self):
        self.next_id += 1
        return struct.pack(">H", self.next_id)

    def subscribe(self, filters, timeout):
        body = self.packet_id() + varint(0) + b"".join(text(item) + b"\x01" for item in filters)
        self.send(SUBSCRIBE, 2, body)
        reply = self.wait_for(SUBACK, time.monotonic() + timeout)
        if reply is None:
            raise MqttError("the broker does not answer")
        reply.take(2)
        reply.properties()
        if max(reply.rest()) >= FAILURE:
            raise MqttError("the broker refuses the subscription")

    def drain(self, timeout):
        """Everything that the broker had to say up to now, the retained messages of new subscriptions included."""
        self.send(PINGREQ, 0, b"")
        if self.wait_for(PINGRESP, time.monotonic() + timeout) is None:
            raise MqttError("the broker does not answer")
        messages, self.messages = self.messages, []
        return messages

    def publish(self, topic, payload, response_topic, correlation):
        """Sends a request; its reason code arrives as a PUBACK."""
        properties = bytes([RESPONSE_TOPIC]) + text(response_topic) + bytes([CORRELATION_DATA]) + text(correlation)
        self.send(PUBLISH, 2, text(topic) + self.packet_id() + varint(len(properties)) + properties + payload.encode())

    def next_message(self, deadline):
        """The next message, or None when the deadline has passed."""
        while not self.messages:
            if self.receive(deadline) is None:
                return None
        return self.messages.pop(0)
