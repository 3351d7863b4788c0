# SPDX-License-Identifier: Apache-2.0
"""The members of a schema of api/ in words, for people: a row each."""
import json
from dataclasses import dataclass

import contract


@dataclass
class Member:
    path: str       # from the document's start, with dots, [] for the elements of a list
    type: str
    required: bool
    meaning: str


def _first_small(text):
    return text[:1].lower() + text[1:] if text[:2] not in ("IP", "LE") else text


def _range(part, unit):
    low, high = part.get("minimum"), part.get("maximum")
    if low is None and high is None:
        return unit
    said = f"{low} to {high}" if None not in (low, high) else f"from {low}" if high is None else f"up to {high}"
    return f"{said} {unit}".strip()


def _length(part):
    low, high = part.get("minLength", 0), part.get("maxLength")
    if high is None:
        return "not empty" if low else ""
    return f"{low} characters" if low == high else f"{low} to {high} characters" if low else f"up to {high} characters"


def _with(word, more):
    return f"{word}, {more}" if more else word


def type_text(part):
    """The type of a part whose reference has been followed, with its range and its unit."""
    unit = part.get("x-unit", "")
    if "enum" in part:
        return ", ".join(json.dumps(value) for value in part["enum"]) + (f" {unit}" if unit else "")
    if "anyOf" in part:
        return "switch"
    kind = part.get("type", "anything")
    if kind == "string":
        return _with("text", part["x-form"] if "x-form" in part else _with(_length(part), unit).strip(", "))
    if kind in ("integer", "number"):
        return _with(kind, _range(part, unit))
    if kind == "array":
        return _with("list", f"at most {part['maxItems']}" if "maxItems" in part else "")
    return kind if isinstance(kind, str) else " or ".join(kind)


def _meaning(part):
    text = part.get("description") or _first_small(part.get("title", ""))
    return text + (f". Default: {json.dumps(part['default'])}" if "default" in part else "")


def members(name, deep=True):
    """The members of schema NAME in its order; those within members only when `deep`."""
    return list(_walk(contract.schema(name), name, "", deep))


def _walk(part, name, prefix, deep):
    part, name = contract.resolve(part, name)
    if part.get("type") == "array":
        yield from _walk(part["items"], name, f"{prefix}[]", deep)
        return
    alternatives = [clause["then"] for clause in [part, *part.get("allOf", [])] if "then" in clause]
    for key, sub in part.get("properties", {}).items():
        if sub is False:
            continue
        full, _ = contract.resolve(sub, name)
        path = f"{prefix}.{key}".lstrip(".")
        yield Member(path, type_text(full), key in part.get("required", []), _meaning(full))
        for choice in [sub, *(other["properties"][key] for other in alternatives if "$ref" in other.get("properties", {}).get(key, ()))]:
            if deep:
                yield from _walk(choice, name, path, deep)


def example(name):
    return contract.schema(name)["examples"][0]
