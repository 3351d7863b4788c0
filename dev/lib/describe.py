# SPDX-License-Identifier: Apache-2.0
"""What dev/cloud says of the interface: its names, their members, and what is wrong with a request."""
import json

import contract
import members

# a part of the interface: its schemas' kind and suffix, and what a person calls it
PARTS = (("properties", "", "property, as it is read"), ("properties", ".set", "property, as it is set"),
         ("services", ".request", "service, its request"), ("services", ".answer", "service, its answer"),
         ("events", "", "event"), ("link", "", "message of the cloud link"), ("https", ".request", "HTTPS, what is sent"),
         ("https", ".answer", "HTTPS, what is answered"), ("https", "", "document"))


def settable():
    return [name for name in contract.names("properties") if not contract.read_only(name)]


def all_names():
    return sorted({name for kind, suffix, _ in PARTS for name in contract.names(kind, suffix)})


def _part(schema, what):
    rows = members.members(schema)
    whole = contract.schema(schema)
    if schema.startswith("properties/") and not contract.schema(f"{schema}.set") and schema.rpartition("/")[2] in settable():
        what = "property, as it is read and set"
    lines = [f"{schema.rpartition('/')[2].partition('.')[0]} ({what}): {whole['title']}"]
    if "description" in whole:
        lines.append(f"  {whole['description']}")
    path_width = max([len(row.path) for row in rows], default=0)
    type_width = max([len(row.type) for row in rows if len(row.type) < 40], default=0)
    lines += [f"  {row.path:{path_width}} {'*' if row.required else ' '} {row.type:{type_width}}  {row.meaning}".rstrip()
              for row in rows]
    if "x-refusals" in whole:
        lines.append(f"  refused: {whole['x-refusals']}")
    lines.append(f"  example: {json.dumps(members.example(schema), ensure_ascii=False)}")
    return "\n".join(lines)


def describe(name):
    """The name's members, types, ranges and an example, for people; None when nothing bears it. * marks what is required."""
    found = [_part(f"{kind}/{name}{suffix}", what) for kind, suffix, what in PARTS
             if contract.schema(f"{kind}/{name}{suffix}")]
    return "\n\n".join(found) if found else None


def _needs(name):
    """The request of a service in a line: optional members in brackets."""
    schema = contract.request_schema("call", name)
    if not schema:
        return ""
    shown = members.example(schema)
    parts = [(row.required, f'"{row.path}": {json.dumps(shown[row.path])}' if row.path in shown else f'"{row.path}"')
             for row in members.members(schema, deep=False)]
    return "; request: " + ", ".join(text if required else f"[{text}]" for required, text in parts)


def listing():
    """The services, a line each."""
    names = contract.names("services", ".answer")
    width = max(map(len, names))
    return "\n".join(f"{name:{width}}  {contract.schema(f'services/{name}.answer')['title']}{_needs(name)}"
                     for name in names)


def request_faults(command, name, document):
    """What is wrong with a request, a line each; `document` is None when there is none. Nothing is, of names that are not
    known here."""
    schema = contract.request_schema(command, name)
    if command == "set" and contract.read_only(name):
        return [f"{name} cannot be set"]
    if schema is None:
        known = command == "call" and contract.schema(f"services/{name}.answer")
        return [f"{name} takes no request"] if known and document is not None else []
    if document is None:
        return [] if contract.schema(schema).get("x-optional") else [f"{name} needs a request"]
    found = contract.faults(schema, document)
    return found + [f"see dev/cloud describe {name}"] if found else []
