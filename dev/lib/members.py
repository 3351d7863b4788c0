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
        return _with("text", _with(_length(part), unit).strip(", "))
    if kind in ("integer", "number"):
        return _with(kind, _range(part, unit))
    if kind == "array":
        low, high = part.get("minItems"), part.get("maxItems")
        return f"list of {high}" if low == high and high else _with("list", f"at most {high}" if high else "")
    return kind if isinstance(kind, str) else " or ".join(kind)


def _meaning(part):
    text = part.get("description") or _first_small(part.get("title", ""))
    if part.get("items", {}).get("title") and not part.get("description"):
        text = _first_small(part["items"]["title"])
    return text + (f". Default: {json.dumps(part['default'])}" if "default" in part else "")


def members(name, deep=True):
    """The members of schema NAME in its order, without the one that a property's document is wrapped in. Unless `deep`,
    what shared schemas hold is left to the description of whoever refers to them."""
    whole = contract.schema(name)
    own = name.rpartition("/")[2].partition(".")[0]
    inside = whole.get("properties", {}).get(own)
    if name.startswith("properties/") and isinstance(inside, dict) and _is_open(inside, name, True):
        return list(_walk(inside, name, "", deep))
    return list(_walk(whole, name, "", deep))


def _is_open(part, name, deep):
    """Whether there are members in it that are to be shown."""
    if not deep and "shared/" in part.get("$ref", ""):
        return False
    full, _ = contract.resolve(part, name)
    return _is_open(full["items"], name, deep) if full.get("type") == "array" else "properties" in full


def _choices(part, key, name):
    """What else the member may be, by another member's value."""
    for clause in (part, *part.get("allOf", [])):
        choice = clause.get("then", {}).get("properties", {}).get(key, {})
        if isinstance(choice, dict) and "$ref" in choice:
            yield choice, contract.resolve(choice, name)[0]["title"]


def _walk(part, name, prefix, deep):
    part, name = contract.resolve(part, name)
    if part.get("type") == "array":
        yield from _walk(part["items"], name, f"{prefix}[]" if prefix else "", deep)
        return
    for key, sub in part.get("properties", {}).items():
        if sub is False:
            continue
        full, _ = contract.resolve(sub, name)
        path = f"{prefix}.{key}".lstrip(".")
        if full.get("type") != "object" or _meaning(full):
            yield Member(path, type_text(full), key in part.get("required", []), _meaning(full))
        if _is_open(sub, name, deep):
            yield from _walk(sub, name, path, deep)
        for choice, title in _choices(part, key, name):
            yield from _walk(choice, name, f"{path} ({title})", deep)


def example(name):
    return contract.schema(name)["examples"][0]
