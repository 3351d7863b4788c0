# SPDX-License-Identifier: Apache-2.0
"""The parts of api/asyncapi.yaml that are made from the schemas: a channel for each topic, and what is done there."""
import contract
import describe

DEVICE = "parameters: {productKey: {$ref: '#/components/parameters/productKey'}, serialNumber: {$ref: '#/components/parameters/serialNumber'}}"
EMPTY = "link/nothing"


def _asked():
    """(kind, name, topic, request's schema, what the answer is) of all that a device can be asked."""
    for name in contract.names("properties"):
        yield "get", name, f"property/{name}/get", EMPTY, f"properties/{name}"
    for name in describe.settable():
        yield "set", name, f"property/{name}/set", contract.request_schema("set", name), "link/result"
    for name in contract.names("services", ".answer"):
        yield "call", name, f"service/{name}", contract.request_schema("call", name) or EMPTY, f"services/{name}.answer"
    yield "offer", "upgrade", "upgrade", "link/upgrade", "link/result"


def _told():
    """(name, topic, schemas) of all that a device says by itself."""
    yield "post", "property/post", [f"properties/{name}" for name in ("deviceInfo", "deviceStatus", "ledStatus", "wifiInfo", "hcdn")]
    for name in contract.names("events"):
        yield f"event-{name}", f"event/{name}", [f"events/{name}"]
    yield "progress", "upgrade/progress", ["link/progress"]
    yield "status", "status", ["link/status"]
    yield "checktime", "checktime", ["link/checktime"]


def _payload(schema, envelope=False):
    ref = f"{{$ref: './{schema}.json'}}"
    if not envelope:
        return ref
    return f"{{allOf: [{{$ref: './link/answer.json'}}, {{properties: {{data: {ref}}}}}]}}"


def channels():
    lines = []
    for kind, name, topic, request, _ in _asked():
        lines += [f"  {kind}-{name}:", f"    {{address: 'tebra/{{productKey}}/{{serialNumber}}/{topic}', {DEVICE},",
                  f"     messages: {{request: {{$ref: '#/components/messages/{kind}-{name}'}}}}}}"]
    for name, topic, schemas in _told():
        shown = ", ".join(f"{part.rpartition('/')[2]}: {{$ref: '#/components/messages/{name}-{part.rpartition('/')[2]}'}}"
                          for part in schemas)
        lines += [f"  {name}:", f"    {{address: 'tebra/{{productKey}}/{{serialNumber}}/{topic}', {DEVICE},",
                  f"     messages: {{{shown}}}}}"]
    answers = ", ".join(f"{kind}-{name}: {{$ref: '#/components/messages/{kind}-{name}-answer'}}"
                        for kind, name, *_ in _asked())
    return "\n".join([*lines, "  reply:", "    address: null", "    title: The response topic of the request",
                      f"    messages: {{{answers}}}"]) + "\n"


def operations():
    lines = []
    for kind, name, *_ in _asked():
        lines += [f"  {kind}-{name}: {{action: receive, channel: {{$ref: '#/channels/{kind}-{name}'}}, reply: {{"
                  f"address: {{$ref: '#/components/replyAddresses/responseTopic'}}, channel: {{$ref: '#/channels/reply'}}, "
                  f"messages: [{{$ref: '#/channels/reply/messages/{kind}-{name}'}}]}}}}"]
    lines += [f"  {name}: {{action: send, channel: {{$ref: '#/channels/{name}'}}}}" for name, *_ in _told()]
    return "\n".join(lines) + "\n"


def messages():
    lines = []
    trait = "traits: [{$ref: '#/components/messageTraits/correlated'}]"
    for kind, name, _, request, answer in _asked():
        lines += [f"    {kind}-{name}: {{{trait}, payload: {_payload(request)}}}",
                  f"    {kind}-{name}-answer: {{{trait}, payload: {_payload(answer, kind == 'call')}}}"]
    for name, _, schemas in _told():
        lines += [f"    {name}-{part.rpartition('/')[2]}: {{payload: {_payload(part)}}}" for part in schemas]
    return "\n".join(lines) + "\n"


MAKERS = {"channels": channels, "operations": operations, "messages": messages}
