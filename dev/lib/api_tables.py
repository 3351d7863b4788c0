# SPDX-License-Identifier: Apache-2.0
"""The parts of docs/cloud-api.md and api/asyncapi.yaml that are made from the schemas."""
import json
import os.path
import re

import contract
import members

WIDTH = 104


def _json(value):
    return json.dumps(value, ensure_ascii=False)


def laid_out(value, indent=0):
    """JSON for people: objects and lists on lines of at most WIDTH characters, as many members a line as fit."""
    flat = _json(value)
    if len(flat) + indent <= WIDTH or not isinstance(value, (dict, list)) or not value:
        return flat
    opened, closed = "{}" if isinstance(value, dict) else "[]"
    texts = ([f"{_json(key)}: {laid_out(item, indent + 2)}" for key, item in value.items()]
             if isinstance(value, dict) else [laid_out(item, indent + 2) for item in value])
    lines = [opened]
    for text in texts:
        first = text.split("\n")[0]
        if lines[-1] in ("{", "[") or len(lines[-1]) + len(first) + 2 <= WIDTH and "\n" not in text:
            lines[-1] += ("" if lines[-1] in ("{", "[") else " ") + text + ","
        else:
            lines.append(" " * (indent + 2) + text + ",")
        if "\n" in text:
            head, lines[-1] = lines[-1].rsplit("\n", 1)
            lines.insert(-1, head)
    return "\n".join(lines)[:-1] + closed


def code(schema):
    examples = "\n".join(laid_out(example) for example in contract.schema(schema)["examples"])
    return f"```json\n{examples}\n```\n"


def table(*rows):
    cells = [[cell.replace("|", "\\|") for cell in row] for row in rows]
    lines = ["| " + " | ".join(row) + " |" for row in cells]
    lines.insert(1, "|" + "---|" * len(rows[0]))
    return "\n".join(line.replace("|  |", "| |").replace("|  |", "| |") for line in lines) + "\n"


def _merged(rows, together=", ".join):
    """Rows that differ in their first cell alone are one."""
    by_rest = {}
    for first, *rest in rows:
        firsts = by_rest.setdefault(tuple(rest), [])
        if first not in firsts:
            firsts.append(first)
    return [[together(firsts), *rest] for rest, firsts in by_rest.items()]


def _path(row):
    """Where the member stands, whatever is chosen above it."""
    return re.sub(r" \(.*?\)", "", row.path)


def _paths(paths):
    """Paths in one cell: a star for members of many names, and no parent that the path before has."""
    alike = {}
    for path in paths:
        name, _, rest = path.partition(".")
        alike.setdefault((name[0], rest) if rest else path, []).append(path)
    paths = [path for same in alike.values() for path in ([_starred(same)] if len(same) > 2 else same)]
    parents = [""] + [path.rpartition(".")[0] for path in paths]
    return ", ".join(path.removeprefix(f"{before}.") for path, before in zip(paths, parents))


def _starred(paths):
    tail = os.path.commonprefix([path[::-1] for path in paths])[::-1]
    return f"{os.path.commonprefix(paths)}*{tail}"


def _of_a_set(read, taken):
    """What a set says otherwise of a member."""
    said = [taken.type] if taken.type not in (read.type, "switch" if read.type == "boolean" else "") else []
    if taken.meaning != read.meaning:
        said.append(taken.meaning.removeprefix(read.meaning).lstrip(".; "))
    return f". Set: {'; '.join(said)}" if said else ""


def property_table(name):
    """The document's example and members, and what of them a set takes."""
    schema, request = f"properties/{name}", contract.request_schema("set", name)
    request = None if contract.read_only(name) or name in SET_APART else request
    settable = {row.path: row for row in members.members(request, deep=False)} if request else {}
    rows = []
    for row in members.members(schema, deep=False):
        taken = settable.pop(row.path, None)
        meaning = row.meaning
        if taken:
            meaning += _of_a_set(row, taken)
        rows.append([_path(row), row.type, ("required" if taken.required else "yes") if taken else "", meaning])
    rows += [[_path(row), row.type, "required" if row.required else "yes", row.meaning] for row in settable.values()]
    head = ["key", "type", "set", "meaning"]
    if not request:
        rows, head = [[path, kind, meaning] for path, kind, _, meaning in rows], ["key", "type", "meaning"]
    return code(schema) + "\n" + table(head, *_merged(rows, _paths))


SET_APART = ("apDevices",)  # properties whose request is described apart from their document


def members_table(schema):
    rows = [[_path(row), row.type, row.meaning] for row in members.members(schema, deep=False)
            if row.meaning != "only read"]
    return code(schema) + "\n" + table(["key", "type", "meaning"], *_merged(rows, _paths))


def _request_cell(name):
    schema = contract.request_schema("call", name)
    if not schema:
        return ""
    shown = members.example(schema)
    optional = [row.path for row in members.members(schema, deep=False) if not row.required]
    text = f"`{_json(shown)}`"
    if contract.schema(schema).get("x-optional"):
        text += " or none"
    return text + (f"; optional: {', '.join(optional)}" if optional else "")


def services_table(*names):
    """A row for each service, and the members of their requests and answers."""
    rows, details = [], []
    for name in names:
        answer = contract.schema(f"services/{name}.answer")
        rows.append([name, _request_cell(name), answer["title"], f"`{_json(members.example(f'services/{name}.answer'))}`",
                     answer.get("x-refusals", "")])
        asked = contract.request_schema("call", name)
        asked = [row for row in members.members(asked, deep=False) if row.meaning] if asked else []
        said = [row for row in members.members(f"services/{name}.answer", deep=False) if row.meaning]
        details += [[f"{name}: {row.path}", row.type, row.meaning] for row in asked]
        for row in said:
            path = f"{row.path} (answer)" if row.path in [each.path for each in asked] else row.path
            details.append([f"{name}: {path}", row.type, row.meaning])
    text = table(["service", "request", "does", "200", "else"], *rows)
    return text + ("\n" + table(["member", "type", "meaning"], *_merged(details)) if details else "")


def named_table(kind, suffixes=("",)):
    """A row for each schema of a kind: name, example, title, members."""
    rows = []
    for suffix in suffixes:
        for name in contract.names(kind, suffix):
            schema = f"{kind}/{name}{suffix}"
            said = "; ".join(f"`{row.path}` {row.meaning}" for row in members.members(schema, deep=False) if row.meaning)
            shown = _json(members.example(schema))
            rows.append([name + suffix.replace(".", " "), contract.schema(schema)["title"],
                         f"`{shown}`" if len(shown) < 400 else f"`{shown[:360]} ...`", said])
    return table(["name", "says", "example", "members"], *rows)


MAKERS = {"property": property_table, "request": lambda name: members_table(f"properties/{name}.set"),
          "services": services_table,
          "events": lambda: named_table("events"), "https": lambda: named_table("https", (".request", ".answer"))}
