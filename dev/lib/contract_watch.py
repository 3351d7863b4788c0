# SPDX-License-Identifier: Apache-2.0
"""Listens to all that passes the broker and checks it against api/: documents, answers, events, and what the device says
of itself. Requests are not checked: some are wrong on purpose."""
import json
import secrets
import threading
import time

import contract
import mqtt5

BROKER_SECONDS = 5


class ContractWatch:
    def __init__(self, address):
        self.faults = []
        self.asked = {}  # correlation data: the topic that was asked, without the device
        self.seen = 0
        self.marks = set()
        self.marked = threading.Condition()
        self.connection = mqtt5.Connection(address, BROKER_SECONDS)
        self.connection.subscribe(["#"], BROKER_SECONDS)
        threading.Thread(target=self._listen, daemon=True).start()

    def _listen(self):
        try:
            while message := self.connection.next_message(None):
                self._take(message)
        except mqtt5.MqttError:
            pass  # the broker has ended; whoever starts it again listens again

    def _take(self, message):
        kind, _, rest = message.topic.partition("/")
        if kind == "mark":
            with self.marked:
                self.marks.add(rest)
                self.marked.notify_all()
            return
        topic = message.topic.split("/", 3)[3] if kind == "tebra" else self.asked.pop(message.correlation, None)
        if kind == "tebra" and message.correlation:
            self.asked[message.correlation] = topic
        elif topic:
            self.seen += 1
            self.faults += [f"{topic}: {fault}: {message.payload[:300]}" for fault in message_faults(topic, message)]

    def flush(self):
        """Waits until all that has passed up to now is checked, and gives and forgets what was wrong."""
        mark = secrets.token_hex(8)
        self.connection.client.publish(f"mark/{mark}", b"", qos=1)
        deadline = time.monotonic() + BROKER_SECONDS
        with self.marked:
            while mark not in self.marks and time.monotonic() < deadline:
                if not self.connection.client.is_connected():
                    break  # with its broker; what had come is checked
                self.marked.wait(0.05)
        found, self.faults = self.faults, []
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
