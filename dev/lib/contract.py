# SPDX-License-Identifier: Apache-2.0
"""The device's interface as api/ describes it: which schema is whose, and what is wrong with a document."""
import functools
import json
import pathlib

import jsonschema

API = pathlib.Path(__file__).resolve().parents[2] / "api"
SERVICE_OK = 200


@functools.lru_cache(None)
def schema(name):
    """The schema api/NAME.json, or None when there is none."""
    path = API / f"{name}.json"
    return json.loads(path.read_text()) if path.exists() else None


@functools.lru_cache(None)
def _validator(name, pointer):
    path = API / f"{name}.json"
    whole = schema(name)
    store = {other.as_uri(): json.loads(other.read_text()) for other in (API / "shared").glob("*.json")}
    store[path.as_uri()] = whole
    resolver = jsonschema.RefResolver(path.as_uri(), whole, store)
    part = {"$ref": f"{path.as_uri()}#{pointer}"} if pointer else whole
    return jsonschema.Draft202012Validator(part, resolver=resolver)


def resolve(part, name):
    """A part of schema NAME with its reference followed: the part's own words count before those it refers to. The second
    of the pair is the name of the schema that what is in it belongs to."""
    while "$ref" in part:
        file, _, pointer = part["$ref"].partition("#")
        if file:
            name = str((API / name).parent.joinpath(file).resolve().relative_to(API)).removesuffix(".json")
        target = schema(name)
        for key in filter(None, pointer.split("/")):
            target = target[key]
        part = {**target, **{key: value for key, value in part.items() if key != "$ref"}}
    return part, name


def names(kind, suffix=""):
    """The names of a kind (properties, services, events, ...) that have a schema with that suffix."""
    end = f"{suffix}.json"
    found = (path.name.removesuffix(end) for path in (API / kind).glob(f"*{end}"))
    return sorted(name for name in found if "." not in name)


def _leaf(error):
    """Of the ways in which an alternative is missed, the one nearest to what was meant."""
    return jsonschema.exceptions.best_match(error.context) if error.context and error.validator != "anyOf" else error


def faults(name, document, pointer=""):
    """What is wrong with a document of schema NAME, a line each: "where: what". Empty when it is right."""
    lines = []
    for error in sorted(_validator(name, pointer).iter_errors(document), key=lambda each: list(map(str, each.path))):
        error = _leaf(error)
        where = "".join(f"[{step}]" if isinstance(step, int) else f".{step}" for step in error.absolute_path)
        lines.append(f"{where.lstrip('.') or 'the document'}: {_said(error)}")
    return lines


def _said(error):
    shown = json.dumps(error.instance, ensure_ascii=False)
    shown = shown if len(shown) <= 60 else shown[:57] + "..."
    value = error.validator_value
    if error.validator == "required":
        return f"{', '.join(name for name in value if name not in error.instance)} is missing"
    if error.validator == "additionalProperties":
        return f"{', '.join(sorted(set(error.instance) - set(error.schema['properties'])))} is unknown"
    if error.validator == "anyOf":
        return f"{shown} is none of: {error.schema.get('description') or error.schema.get('title') or value}"
    if error.validator is None:  # the schema `false`
        return "it must not be there"
    said = {"type": "is no", "enum": "is none of", "minimum": "is less than", "maximum": "is more than",
            "maxLength": "is longer than", "minLength": "is shorter than", "pattern": "does not fit"}
    return f"{shown} {said.get(error.validator, 'breaks ' + str(error.validator))} {value}"


def request_schema(kind, name):
    """The schema's name of what a property's set or a service takes; None when there is none."""
    choices = {"set": (f"properties/{name}.set", f"properties/{name}"), "call": (f"services/{name}.request",)}
    return next((choice for choice in choices[kind] if schema(choice)), None)


def answer_faults(service, code, data):
    """What is wrong with what a service answers."""
    name = f"services/{service}.answer"
    if not schema(name):
        return [f"there is no schema {name}"]
    if code == SERVICE_OK:
        return faults(name, data)
    return faults(name, data, "/$defs/refused") if "$defs" in schema(name) else faults("shared/empty", data)


def https_faults(request):
    """What is wrong with the bodies of a request that cloudsim has logged and neither refused nor spoilt."""
    endpoint = request["path"].rpartition("/")[2]
    if request["method"] != "POST" or request["verdict"] != "ok" or request["fault"]:
        return []  # a file, or not ours
    answer = f"https/{endpoint}.answer"
    bodies = [(answer if schema(answer) else "https/result.answer", request["answer"])]
    if not request["body"].startswith("<"):  # the fields of an upload
        bodies.append((f"https/{endpoint}.request", request["body"]))
    found = []
    for name, body in bodies:
        wrong = faults(name, json.loads(body)) if schema(name) else ["there is no such schema"]
        found += [f"{name}: {fault}: {body[:300]}" for fault in wrong]
    return found


def read_only(name):
    """A property that cannot be set."""
    return name in ("deviceInfo", "deviceStatus", "meshTopology")
