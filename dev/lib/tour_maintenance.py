# SPDX-License-Identifier: Apache-2.0
"""The tour's later steps: hardware, channels, the mesh, storage, captures, logs; and a crowd, whose announcements keep
the agent busy from then on."""
import base64
import pathlib
import subprocess
import tarfile

import rig as rigs
from rig import Failed, wait_until
from tour import device, expect, route, step

STICK = {"path": "/mnt/usb", "device": "/dev/sda1", "fs": "tmpfs", "total": 1024, "free": 1024, "readOnly": False,
         "status": 0}


@step("a cable gives only 100 Mbit/s")
def slow_cable(rig, watch):
    rig.bus("sim", "port", {"name": "lan1", "speed": 100, "duplex": "half"})
    ports = {port.pop("name"): port for port in rig.call("portLinkSpeed")[1]["ports"]}
    expect("the slow port", ports["lan1"], {"link": True, "speed": 100, "duplex": "half"})
    expect("a port without a cable", ports["lan3"], {"link": False, "speed": 0, "duplex": "unknown"})
    return ", ".join(ports)


@step("the processor runs hot")
def hot_processor(rig, watch):
    rig.bus("sim", "temperature", {"zone": 0, "millicelsius": 98500})
    found = rig.call("physicsInfo")[1]
    expect("the temperature", found["temperatures"][0], {"name": "cpu-thermal", "celsius": 98.5})
    return f'{found["cpu"]["usage"]} % of {found["cpu"]["cores"]} cores, {found["memory"]["available"]} KiB free'


@step("a station that is heard badly shows in the quality check")
def weak_station(rig, watch):
    stations = rig.router("vrop.laninfo", "list")
    at = next(at for at, station in enumerate(stations) if station["mac"] == "02a0c9000003")
    for rssi, quality in ((-65, 0), (-66, 1), (-75, 1), (-76, 2)):
        rig.bus("sim", "setstate", {"pointer": f"/vrop.laninfo/{at}/rssi", "value": str(rssi)})
        found = rig.call("rssiQualityCheck", {"mac": "02a0c9000003"})[1]["devices"]
        expect(f"what is heard at {rssi} dBm", [(each["rssi"], each["quality"]) for each in found], [(rssi, quality)])


@step("a crowded channel is left for the best one, and for none that is hardly better")
def channel_tuned(rig, watch):
    radio = rig.get("wifi2gSeniorInfo")
    rig.set("wifi2gSeniorInfo", {**radio, "channel": 11})
    watch.drain()
    scores = {each["channel"]: each["score"]
              for each in rig.call("channelQuality", {"radio": 1})[1]["radios"][0]["channels"]}
    best = max(scores, key=scores.get)
    moved = {"radio": 1, "from": 11, "to": best, "score": scores[best], "changed": True}
    expect("the answer", rig.call("tuningWifi", {"radio": 1}), (200, {"radios": [moved]}))
    watch.wait("event/networkRestartTime")
    expect("the channel", rig.router("vrop.webwifi1adv")["channel"], best)
    expect("the second answer", rig.call("tuningWifi", {"radio": 1})[1]["radios"][0]["changed"], False)
    return f"from 11 ({scores[11]} points) to {best} ({scores[best]})"


@step("the strongest neighbour is chosen for a wireless relay")
def relay_chosen(rig, watch):
    found = rig.call("relayScan", {"radio": 0})[1]["relayList"]
    expect("the names", [each["ssid"] for each in found], ["Garage", "Cafe", "Open for all"])
    rig.set("networkInfo", {"networkMode": 2, "networkConnect": {"relay": {
        "manualWifiName": found[0]["ssid"], "manualWifiPwd": "garage-pass", "manualEncrytion": found[0]["encryption"],
        "sync": 0, "relaySignal": 0}}})
    expect("the relay's name", rig.router("vrop.wifi.1.apclient")["ssid"], "Garage")
    rig.set("networkInfo", route(1, {"dnsEnable": False}))
    expect("the work mode", rig.router("vrop.waninfo")["workmode"], "ROUTE")


@step("a mesh of three nodes is shown with the devices behind each")
def mesh_nodes(rig, watch):
    rig.set("mesh", {"open": True, "role": 1})
    shown = rig.get("meshTopology")
    expect("the links", [(node["name"], node["link"]) for node in shown["nodes"]],
           [("AX3000", "wired"), ("Upstairs", "5G"), ("Garden", "2.4G")])
    behind = [[each["mac"] for each in node["apDevices"]] for node in shown["nodes"]]
    expect("the devices", behind, [["02a0c9000001", "02a0c9000002"], ["02a0c9000003", "02a0c9000004"],
                                   ["02a0c9000006"]])
    shown_device = shown["nodes"][1]["apDevices"][0]
    expect("a device", shown_device["name"], device(rig, "02a0c9000003")["name"])
    rig.set("mesh", {"open": False})
    expect("the nodes without a mesh", [node["name"] for node in rig.get("meshTopology")["nodes"]], ["AX3000"])


@step("file sharing and the home content cache are switched on, and reported")
def storage_switched(rig, watch):
    watch.drain()
    rig.set("hcdn", {"samba": True, "open": True, "path": "/mnt/usb"})
    watch.wait("event/networkRestartTime")
    watch.wait('property .*"hcdn".*"samba": ?true')
    lines = pathlib.Path("/apetc/rvxa/ecm.conf").read_text().splitlines()
    expect("the settings", [line for line in lines if line.startswith(("samba", "hcdn_open"))],
           ["samba=1", "hcdn_open=1"])
    expect("the path", rig.router("vrop.ecm")["hcdnpath"], "/mnt/usb")


@step("a disk is full, and formatted; another one is refused")
def disk_formatted(rig, watch):
    rig.bus("sim", "disk", {"used": 1024})
    expect("the full disk", rig.call("diskCheck"), (200, {"disks": [{**STICK, "free": 0}]}))
    for path in ("/", "/mnt/usb/../usb", "/dev/sda1", ""):
        expect(f"the answer for {path}", rig.call("outdiskFormat", {"diskPath": path}, unchecked=True), (400, {}))
    expect("the answer", rig.call("outdiskFormat", {"diskPath": "/mnt/usb"}), (200, {}))
    expect("the answer meanwhile", rig.call("outdiskFormat", {"diskPath": "/mnt/usb"}), (409, {}))
    watch.wait('event/outFormatFeedback .*"result": ?0')
    expect("the empty disk", rig.call("diskCheck"), (200, {"disks": [STICK]}))


@step("packets are captured and uploaded, and can be read")
def packets_captured(rig, watch):
    if pathlib.Path("/proc/self/setgroups").read_text().strip() == "deny":
        return "left out: in a user namespace tcpdump cannot give up root's rights; start as root for it"
    request = {"time": 2, "interface": "lo", "filter": f"tcp port {rigs.BROKER_PORT}",
               "uploadUrl": f"{rigs.CLOUD_URL}/upload/capture.pcap", "url": "https://files.example.com/capture.pcap"}
    for bad in ({"filter": "tcp prot 1"}, {"interface": "lo; id"}, {"time": 301}):
        expect(f"the answer for {bad}", rig.call("remoteCap", {**request, **bad}, unchecked=True), (400, {}))
    expect("the answer", rig.call("remoteCap", request), (200, {}))
    expect("the answer meanwhile", rig.call("remoteCap", request), (409, {}))
    watch.wait(f'event/RemoteCapSuccess .*{request["url"]}')
    read = subprocess.run(["tcpdump", "-n", "-r", rig.uploads / "capture.pcap"], capture_output=True, text=True)
    packets = read.stdout.splitlines()
    if read.returncode != 0 or not packets or any(f".{rigs.BROKER_PORT}" not in line for line in packets):
        raise Failed(f"tcpdump -r: status {read.returncode}: {read.stderr} {packets[:3]}")
    wait_until("the capture to be removed", lambda: not list(pathlib.Path("/aptmp").glob("qvtk_capture*")))
    return f"{len(packets)} packets"


def secrets_of(value, name=""):
    """Every secret of the home, as the names of its members tell; the account's is kept in base64."""
    if isinstance(value, dict):
        return {secret for key, member in value.items() for secret in secrets_of(member, key.lower())}
    if isinstance(value, list):
        return {secret for member in value for secret in secrets_of(member, name)}
    is_secret = name != "productkey" and any(part in name for part in ("key", "pwd", "passw", "secret"))
    if not is_secret or not isinstance(value, str) or len(value) < 4:
        return set()
    return {value, base64.b64decode(value).decode()} if name == "passwd" else {value}


@step("the logs are uploaded without one secret of the home in them")
def logs_uploaded(rig, watch):
    secrets = secrets_of(rig.bus("sim", "state")[1]) | {"garage-pass", "relay-pass", "come-in-please", "secret-1"}
    wifi = rig.get("wifiInfo")
    rig.set("wifiInfo", {**wifi, "wifi2gPwd": 'a "quoted\\" key'})
    secrets |= {wifi["wifi2gPwd"], 'a "quoted', 'quoted\\'}
    rig.get("wifiInfo")
    name = "logs.tar.gz"
    answer = rig.call("uploadLog", {"uploadUrl": f"{rigs.CLOUD_URL}/upload/{name}", "url": name})
    expect("the answer", answer, (200, {"url": name}))
    with tarfile.open(rig.uploads / name) as package:
        logs = {pathlib.Path(each.name).name: package.extractfile(each).read().decode(errors="replace")
                for each in package if each.isfile()}
    expect("the main log is there", "uploadlog_call" in logs["qvtk.log"], True)
    shown = rigs.MAIN_LOG.read_text(errors="replace")
    expect("something was to be masked", any(secret in shown for secret in secrets), True)
    expect("the secrets found", [(secret, log) for secret in secrets for log, text in logs.items() if secret in text], [])
    expect("what was left behind", list(pathlib.Path("/aptmp").glob("qvtk_logs*")), [])
    return f'{", ".join(sorted(logs))}: none of {len(secrets)} secrets'


@step("of several hundred devices 128 are read, with few calls of the router")
def many_devices(rig, watch):
    rig.bus("sim", "station", {"mac": "02a0c8000000", "radio": "5G", "count": 300})
    rig.bus("sim", "clearcalls")
    expect("the devices", len(rig.get("apDevices")), 128)
    calls = [(call["object"], call["method"]) for call in rig.bus("sim", "calls")[1]["calls"]]
    of_one = [call for call in calls if call[1] == "getbymac"]
    lists = [call for call in calls if call[0].startswith(("vrop.laninfo", "vrop.parent", "vrop.firewall"))
             and call not in of_one]
    if len(of_one) > 2 * 128 or len(lists) > 6:
        raise Failed(f"{len(of_one)} calls about one device, {len(lists)} about all")
    return f"{len(of_one)} calls about one device, {len(lists)} about all"
