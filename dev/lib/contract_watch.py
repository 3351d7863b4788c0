# SPDX-License-Identifier: Apache-2.0
"""Listens to all that passes the broker and checks it against api/: documents, answers, events, and what the device says
of itself. Requests are not checked: some are wrong on purpose."""
import json
import secrets
import threading

import contract
import mqtt5

BROKER_SECONDS = 20


class ContractWatch:
    """What it could not check is a fault too, unless the broker was to end (`broker_ends`, set by who ends it)."""

    def __init__(self, address):
        self.faults = []
        self.asked = {}  # correlation data: the topic that was asked, without the device
        self.marks = set()
        self.changed = threading.Condition()
        self.broker_ends = False
        self.ended = False  # everything that came before the connection's end is checked
        self.connection = mqtt5.Connection(address, BROKER_SECONDS)
        self.connection.subscribe(["#"], BROKER_SECONDS)
        threading.Thread(target=self._listen, daemon=True).start()

    def _listen(self):
        try:
            while message := self.connection.next_message(None):
                try:
                    self._take(message)
                except Exception as error:  # whatever it is, the message is not checked
                    self._note(message.topic, [f"it cannot be checked, {error!r}"], message)
        except mqtt5.MqttError:
            pass  # whoever starts the broker again listens again
        with self.changed:
            self.ended = True
            self.changed.notify_all()

    def _take(self, message):
        kind, _, rest = message.topic.partition("/")
        if kind == "mark":
            with self.changed:
                self.marks.add(rest)
                self.changed.notify_all()
            return
        topic = message.topic.split("/", 3)[3] if kind == "tebra" else self.asked.pop(message.correlation, None)
        if kind == "tebra" and message.correlation:
            self.asked[message.correlation] = topic
        elif topic:
            self._note(topic, message_faults(topic, message), message)

    def _note(self, topic, faults, message):
        with self.changed:
            self.faults += [f"{topic}: {fault}: {message.payload[:300]}" for fault in faults]

    def flush(self):
        """Waits until all that has passed up to now is checked, and gives and forgets what was wrong."""
        mark = secrets.token_hex(8)
        if not self.broker_ends:
            self.connection.client.publish(f"mark/{mark}", b"", qos=1)
        with self.changed:
            in_time = self.changed.wait_for(lambda: mark in self.marks or self.ended, BROKER_SECONDS)
            found, self.faults = self.faults, []
        if not in_time or self.ended and not self.broker_ends:
            found.append("nobody listens to what passes the broker")
        return found


def message_faults(topic, message):
    """What is wrong with one message of the device, under that topic, or answering a request to it."""
    kind, *names = topic.split("/")
    try:
        document = json.loads(message.payload)
    except ValueError:
        return ["it is not JSON"]
    if kind in ("status", "checktime"):
        return contract.faults(f"link/{kind}", document)
    if topic == "upgrade/progress":
        return contract.faults("link/progress", document)
    if kind == "event":
        return named_faults(f"events/{names[0]}", document)
    if kind == "service":
        return service_faults(names[0], document)
    if kind == "property" and (names == ["post"] or names[1] == "get" and message.user.get("code") == "0"):
        return property_faults(document, None if names == ["post"] else names[0])
    return contract.faults("link/result", document)


def named_faults(name, document):
    return contract.faults(name, document) if contract.schema(name) else [f"there is no schema {name}"]


def property_faults(document, asked):
    if not isinstance(document, dict) or asked and list(document) != [asked]:
        return ["it is not the property's document"]
    return [fault for name in document for fault in named_faults(f"properties/{name}", document)]


def service_faults(name, document):
    found = contract.faults("link/answer", document)
    if found or "message" in document:  # the stand-in's own refusal
        return found
    return contract.answer_faults(name, document["code"], document["data"])
