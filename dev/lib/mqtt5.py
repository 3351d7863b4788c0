# SPDX-License-Identifier: Apache-2.0
"""MQTT 5 for a command line tool: paho, with what arrives in a queue and every wait bounded."""
import queue
import secrets
import socket
import threading
import time

from paho.mqtt import client as paho
from paho.mqtt.packettypes import PacketTypes
from paho.mqtt.properties import Properties


class MqttError(Exception):
    """The broker cannot be reached, refuses, or has gone."""


class Message:
    def __init__(self, message):
        properties = message.properties
        self.topic = message.topic
        self.payload = message.payload.decode(errors="replace")
        self.correlation = getattr(properties, "CorrelationData", b"")
        self.user = dict(getattr(properties, "UserProperty", []))


class Client(paho.Client):
    """paho's client, over a Unix socket too."""
    unix_socket = None

    def _create_socket_connection(self):
        if self.unix_socket is None:
            return super()._create_socket_connection()
        connection = socket.socket(socket.AF_UNIX)
        connection.settimeout(self._connect_timeout)
        connection.connect(self.unix_socket)
        return connection


class Connection:
    """One clean session. `address` is HOST, HOST:PORT or the path of a Unix socket."""

    def __init__(self, address, timeout, username=None, password=None, cafile=None):
        self.arrived = queue.Queue()  # messages, or the MqttError that ended the connection
        self.answers = {}             # (kind, packet id): reason codes of the broker's answers
        self.answered = threading.Condition()
        self.client = Client(client_id="", protocol=paho.MQTTv5, reconnect_on_failure=False)
        self.client.on_connect = lambda _c, _u, _f, reason, _p: self.answer("connect", 0, [reason])
        self.client.on_subscribe = lambda _c, _u, packet, reasons, _p: self.answer("subscribe", packet, reasons)
        self.client.on_message = lambda _c, _u, message: self.arrived.put(Message(message))
        self.client.on_disconnect = lambda *_: self.lose()
        if username:
            self.client.username_pw_set(username, password)
        try:
            self.open(address, timeout, cafile)
        except (OSError, ValueError, UnicodeError) as error:
            raise MqttError(f"no broker at {address}: {error}") from error
        reason = self.await_answer("connect", 0, timeout, f"the broker at {address}")[0]
        if reason.value >= 0x80:
            raise MqttError(f"the broker at {address} refuses the connection ({reason})")

    def open(self, address, timeout, cafile):
        self.client._connect_timeout = timeout
        host, port = "127.0.0.1", 1883
        if address.startswith("/"):
            self.client.unix_socket = address
        else:
            host, colon, number = address.rpartition(":")
            host, port = (host.strip("[]"), int(number)) if colon else (address, 8883 if cafile else 1883)
        if cafile:
            self.client.tls_set(cafile)
        self.client.connect(host, port, clean_start=True)
        self.client.loop_start()

    def answer(self, kind, packet, reasons):
        with self.answered:
            self.answers[kind, packet] = reasons
            self.answered.notify_all()

    def lose(self):
        self.arrived.put(MqttError("the broker closed the connection"))
        self.answer("lost", 0, True)

    def await_answer(self, kind, packet, timeout, who="the broker"):
        with self.answered:
            self.answered.wait_for(lambda: (kind, packet) in self.answers or ("lost", 0) in self.answers, timeout)
            if (kind, packet) in self.answers:
                return self.answers.pop((kind, packet))
            raise MqttError("the broker closed the connection" if self.answers else f"{who} does not answer")

    def subscribe(self, filters, timeout):
        result, packet = self.client.subscribe([(item, paho.SubscribeOptions(qos=1)) for item in filters])
        if result != paho.MQTT_ERR_SUCCESS:
            raise MqttError("the broker closed the connection")
        if any(reason.value >= 0x80 for reason in self.await_answer("subscribe", packet, timeout)):
            raise MqttError("the broker refuses the subscription")

    def drain(self, timeout):
        """Everything that the broker had to say up to now, the retained messages of new subscriptions included."""
        self.subscribe([f"reply/{secrets.token_hex(8)}"], timeout)  # answered after what came before it
        messages = []
        while not self.arrived.empty():
            messages.append(self.taken(self.arrived.get()))
        return messages

    def publish(self, topic, payload, response_topic, correlation):
        properties = Properties(PacketTypes.PUBLISH)
        properties.ResponseTopic = response_topic
        properties.CorrelationData = correlation
        self.client.publish(topic, payload.encode(), qos=1, properties=properties)

    def next_message(self, deadline):
        """The next message, or None when the deadline (monotonic, None: never) has passed."""
        try:
            left = None if deadline is None else max(0, deadline - time.monotonic())
            return self.taken(self.arrived.get(timeout=left))
        except queue.Empty:
            return None

    @staticmethod
    def taken(arrival):
        if isinstance(arrival, MqttError):
            raise arrival
        return arrival
