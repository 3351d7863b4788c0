# SPDX-License-Identifier: Apache-2.0
"""The daemon as built is sent requests that are made from the schemas: right ones are taken; what is broken is refused and
changes nothing, or counts as absent."""
import json
import pathlib
import secrets
import time

import contract
import describe
import made_requests
import mqtt5
import rig
from run import RigTest

LATE = ("timeReboot", "timeLed")  # applied some time after they were taken
# What a right request of it does needs more than this rig: the tour plays these.
ELSEWHERE = ("cfgReport", "remoteCfgExport", "uploadLog", "remoteCap", "outdiskFormat")


NO_OBJECTS = ("[]", "7", "true", '"text"', "[[1]]")
NO_JSON = ("", " ", "nonsense", "null", "{", "[" * 10000, "x" * 10000)  # a service does not answer these


def settings(value, skipped, path=""):
    """The leaves of the router's state but for those that are skipped."""
    if isinstance(value, (dict, list)):
        steps = value.items() if isinstance(value, dict) else enumerate(value)
        return {leaf: held for step, inside in steps for leaf, held in settings(inside, skipped, f"{path}/{step}").items()}
    return {} if path in skipped or path.startswith("/sim/") else {path: value}


def changes(before, after):
    return {path: (before.get(path), after.get(path)) for path in before | after if before.get(path) != after.get(path)}


class RequestsMade(RigTest):
    def start_all(self):
        """A daemon whose pauses are short."""
        self.rig.start_broker()
        self.rig.start_router()
        self.rig.start("qvtkd", [self.rig.build / "tests/system/hurried_qvtkd"])
        self.rig.wait_online()
        self.connection = mqtt5.Connection(str(self.rig.home / "broker.sock"), rig.LIMIT)
        self.connection.subscribe(["reply/made"], rig.LIMIT)
        key, serial = self.rig.router("vrop.qvtkconfig")["productkey"], self.rig.router("vrop.ftinfo")["sn"]
        self.device = f"tebra/{key}/{serial}/"
        self.ticking = ()
        began, first = self.clock(), self.state()
        rig.wait_until("the router's clock", lambda: self.clock() > began + 1)
        later = self.state()
        self.ticking = {*changes(first, later), "/vrop.speedtest/speed"}

    def whole_state(self):
        return self.rig.bus("sim", "state")[1]

    def clock(self):
        return self.whole_state()["sim"]["time"]

    def state(self):
        return settings(self.whole_state(), self.ticking)

    def settled(self):
        """The router's state once what was taken is applied: when it has stayed the same for a while."""
        states = [self.state()]
        def steady():
            states.append(self.state())
            return len(states) > 4 and all(state == states[-1] for state in states[-5:])
        rig.wait_until("the router to be left alone", steady)
        return states[-1]

    def ask(self, topic, request=None, text=None):
        """The code of the answer."""
        correlation = secrets.token_bytes(8)
        self.connection.publish(self.device + topic, json.dumps(request) if text is None else text, "reply/made", correlation)
        while message := self.connection.next_message(time.monotonic() + rig.LIMIT):
            if message.correlation == correlation:
                return int(message.user["code"])
        self.fail(f"{topic} is not answered: {request or text}"[:300])

    def check(self, name, topic, schema, good):
        example = contract.schema(schema)["examples"][0]
        if name not in ELSEWHERE:
            for request in made_requests.right(schema):
                self.assertEqual(self.ask(topic, request), good, f"{name} {request}")
            self.ask(topic, example)
        self.base = self.settled()
        for text in NO_OBJECTS if good == contract.SERVICE_OK else NO_OBJECTS + NO_JSON:
            code = self.ask(topic, text=text)
            self.assertEqual((code != good, changes(self.base, self.state())), (True, {}), f"{name} {text[:40]}")
        for place in made_requests.places(example):
            self.check_member(name, topic, schema, good, example, place)

    def outcome(self, name, topic, request, good, example):
        """(code, what changed), from the state that the example makes."""
        before, code = self.base, self.ask(topic, request)
        after = self.settled if code == good and name in LATE else self.state
        state = after()
        if state != before:
            self.ask(topic, example)
            self.base = after()
        return code, changes(before, state)

    def check_member(self, name, topic, schema, good, example, place):
        unreadable, extreme = made_requests.broken(schema, place)
        refused = contract.schema(schema).get("x-broken", "")
        absent = self.outcome(name, topic, made_requests.changed(example, place), good, example)
        for request in unreadable + extreme:
            said = f"{name} {'.'.join(map(str, place))}: {json.dumps(request)[:300]}"
            code, changed = self.outcome(name, topic, request, good, example)
            if request in unreadable and (not refused or made_requests.at(request, place) is None):
                self.assertEqual((code, changed), absent, said)
            elif request in unreadable or refused == "refused" and contract.faults(schema, request):
                self.assertNotEqual(code, good, said)
            if code != good:
                self.assertEqual(changed, {}, said)
        self.assertFalse(pathlib.Path("/tmp/ran").exists(), name)

    def check_properties(self, names):
        self.start_all()
        for name in names:
            with self.subTest(name=name):
                self.check(name, f"property/{name}/set", contract.request_schema("set", name), 0)
                self.assertEqual(self.ask(f"property/{name}/get", {}), 0)

    def test_of_wireless_properties(self):
        self.check_properties([name for name in describe.settable() if "wifi" in name.lower()])

    def test_of_other_properties(self):
        self.check_properties([name for name in describe.settable() if "wifi" not in name.lower()])

    def test_of_services(self):
        self.start_all()
        for name in sorted({*contract.names("services", ".request")} - {"recovery"}):  # without its member it resets the router
            with self.subTest(name=name):
                self.check(name, f"service/{name}", f"services/{name}.request", contract.SERVICE_OK)
