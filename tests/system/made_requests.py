# SPDX-License-Identifier: Apache-2.0
"""Requests made from the schemas of api/: right ones, and each member broken in each way."""
import copy
import json

import contract

SPELLINGS = (True, False, 0, 1, "0", "1", 2, 3, 5, 8)
HOSTILE = "\\\"'`touch /tmp/ran`$(touch /tmp/ran);|&<>%s%n%1$n*?~\u0001\n\r{}[]\u00fc"
# by the type of what stands there: what cannot be read, and what can be but is out of bounds
UNREADABLE = {"number": (None, {}, [], "text"), "text": (None, {}, [[1]]), "object": (None, 7, "text", []), "list": (None, 7, {})}
EXTREME = {"number": (-2, 2**31, 10**20), "text": ("x" * 10000, HOSTILE), "object": (), "list": ()}
SECONDS = "s"  # numbers of seconds are waited: no large ones


def kind_of(value):
    return {dict: "object", list: "list", str: "text"}.get(type(value), "number")


def places(document):
    """The places of a document's members, at every depth and of each list's first element, as tuples of steps."""
    steps = list(document) if isinstance(document, dict) else range(min(1, len(document))) if isinstance(document, list) else ()
    for step in steps:
        if isinstance(step, str):
            yield (step,)
        yield from ((step, *deeper) for deeper in places(document[step]))


def at(document, place):
    for step in place:
        document = document[step]
    return document


def changed(document, place, *value):
    """A copy with that value in that place, or without the member when there is none."""
    document = copy.deepcopy(document)
    part = at(document, place[:-1])
    if value:
        part[place[-1]] = value[0]
    else:
        del part[place[-1]]
    return document


def right(schema):
    """The examples, and each of their switches and numbers in the other ways that the schema allows."""
    for example in contract.schema(schema)["examples"]:
        yield example
        for place in places(example):
            now = at(example, place)
            made = (changed(example, place, value) for value in SPELLINGS
                    if kind_of(now) == "number" and json.dumps(value) != json.dumps(now))
            yield from (each for each in made if not contract.faults(schema, each))


def broken(schema, place):
    """What is broken in that place of the schema's first example: (unreadable, extreme) requests."""
    example = contract.schema(schema)["examples"][0]
    kind = kind_of(at(example, place))
    waited = SECONDS == contract.schema(schema).get("properties", {}).get(place[-1], {}).get("x-unit")
    unreadable, extreme = ([changed(example, place, value) for value in values[kind]
                            if not (waited and isinstance(value, int) and value > 0)] for values in (UNREADABLE, EXTREME))
    return [request for request in unreadable if contract.faults(schema, request)], extreme
