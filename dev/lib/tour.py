# SPDX-License-Identifier: Apache-2.0
"""The demo's tour: what an operator does with a router, each step checked on the router's side."""
import base64
import json
import pathlib
import time

import rig as rigs
from rig import Failed, wait_until

STEPS = []
POSTED_DEVICE_INFO = "[connectok_hook_deviceInfo]"


def step(title):
    """One row of the tour, in the order of the functions below."""
    def add(function):
        STEPS.append((title, function))
        return function
    return add


def expect(what, found, wanted):
    if found != wanted:
        raise Failed(f"{what} is {found!r}, not {wanted!r}")


@step("the cloud reads who the device is")
def device_information(rig, watch):
    info = rig.get("deviceInfo")
    expect("the serial number", info["sn"], rig.router("vrop.ftinfo")["sn"])
    return f'{info["deviceModel"]}, firmware {info["fwVersion"]}, {info["mac"]}'


@step("the cloud reads the Wi-Fi")
def wifi_read(rig, watch):
    wifi = rig.get("wifiInfo")
    expect("the 2.4 GHz name", wifi["wifi2gName"], rig.router("vrop.webwifisimple")["wifi24ssid"])
    return f'{wifi["wifi2gName"]} and {wifi["wifi5gName"]}'


@step("the cloud renames the Wi-Fi; the guest network follows and the change is reported")
def wifi_renamed(rig, watch):
    wifi = rig.get("wifiInfo")
    wifi.update(wifi2gName="Office", wifi5gName="Office-5G", backupWifiOpen=not wifi["backupWifiOpen"])
    rig.set("wifiInfo", wifi)
    event = watch.wait("event/networkRestartTime")
    expect("the router's name", rig.router("vrop.webwifisimple")["wifi24ssid"], "Office")
    guest = rig.router("vrop.wifi.1.ap.modify", "getbyindex", {"index": 2})
    expect("the guest network", guest["ssid"], "Office_Guest")
    watch.wait('property .*"wifi2gName": ?"Office"')
    return event.split("  ")[-1]


@step("an unchanged property is not reported again")
def no_report(rig, watch):
    watch.drain()
    cycles = rig.log_count("set_flag:")
    rig.wait_logged("set_flag:", more_than=cycles + 5)
    again = [line for line in watch.drain() if "wifiInfo" in line]
    expect("what was reported", again, [])


@step("a local event becomes a cloud event")
def local_event(rig, watch):
    rig.local_event({"action": "deviceConnect", "mac": "A0:B1:C2:00:00:99", "devName": "tablet", "time": 1})
    return watch.wait('event/deviceConnet .*tablet').split("  ")[-1]


@step("the cable is pulled, then the WAN link is lost and comes back")
def wan_lost(rig, watch):
    rig.bus("sim", "cable", {"status": "out"})
    expect("linkStatus", rig.get("deviceStatus")["linkStatus"], 2)
    rig.bus("sim", "cable", {"status": "in"})
    rig.bus("sim", "wan", {"status": "down"})
    rig.stop("broker")
    offline = rig.log_count("device is offline")

    def event_dropped():
        rig.local_event({"action": "deviceConnect", "mac": "A0:B1:C2:00:00:98", "devName": "lost"})
        return rig.log_count("device is offline") > offline
    wait_until("the relay to see the link down", event_dropped)
    rig.bus("sim", "wan", {"status": "up"})
    posted = rig.log_count(POSTED_DEVICE_INFO)
    rig.start_broker()
    watch.open()
    rig.wait_logged(POSTED_DEVICE_INFO, more_than=posted)
    return "online again, and says who it is"


@step("the router's bus is restarted under the daemon")
def bus_restarted(rig, watch):
    before = rig.get("wifiInfo")["wifi2gName"]
    rig.bus("sim", "restart", {"bus": 1}, check=False)
    wait_until("the bus", lambda: rig.bus("vrop.ftinfo", "get", check=False)[0] == 0)
    expect("the name", rig.get("wifiInfo")["wifi2gName"], before)


@step("a client joins the Wi-Fi")
def client_joins(rig, watch):
    rig.bus("sim", "station", {"mac": "a0b1c2000077", "radio": "5G"})


def station(rig, mac):
    """A client device as the router has it."""
    return rig.router("vrop.laninfo.sta", "getbymac", {"mac": mac})


def device(rig, mac):
    """A client device as the cloud reads it."""
    return next(device for device in rig.get("apDevices") if device["mac"] == mac)


@step("a phone is renamed and limited, blocked and gone from the Wi-Fi, and released")
def phone_settings(rig, watch):
    phone = {"mac": "02a0c9000003", "operationType": 1}
    limit = {"open": True, "upSpeed": 500, "downSpeed": 900}
    rig.set("apDevices", [{**phone, "name": "Anna", "limitSpeed": limit}])
    expect("the name", station(rig, phone["mac"])["devname"], "Anna")
    expect("what the cloud reads", [device(rig, phone["mac"])[key] for key in ("name", "limitSpeed")], ["Anna", limit])
    rig.set("apDevices", [{**phone, "blackEnable": True}])
    expect("a blocked phone's presence", station(rig, phone["mac"])["active"], 0)
    rig.set("apDevices", [{**phone, "blackEnable": False}])
    expect("a released phone's presence", station(rig, phone["mac"])["active"], 1)


@step("a child's tablet gets hours, two addresses and a game that are blocked, and keeps to its hours")
def tablet_supervised(rig, watch):
    tablet, days = {"mac": "02a0c9000005"}, [1, 1, 1, 1, 1, 0, 0]
    hours = [{"timeFrame": "16:00-19:30", "daysOfWeek": days, "open": True}]
    urls = [{"open": True, "url": "a.example.com"}, {"open": True, "url": "b.example.com"}]
    rig.set("apDevices", [{**tablet, "operationType": 3, "timeControlEnable": True, "webControlEnable": True,
                           "parentalTimeControl": hours,
                           "parentalWebControl": {"controlPolicy": 0, "urls": urls}}])
    rig.set("apDevices", [{**tablet, "operationType": 1, "ParentControlType": 1, "ParentalGameControl": {
        "urls": [{"appname": "Blocks", "url": "play.example.net", "open": True}]}}])
    rules = [{"enable": 1, "url": "a.example.com", "index": 0}, {"enable": 1, "url": "b.example.com", "index": 1},
             {"enable": 1, "url": "play.example.net", "appname": "Blocks", "apptype": 1, "index": 2}]
    wait_until("the router's rules", lambda: rig.router("vrop.parent.urlcontrol", "list")[0]["list"] == rules)
    shown = device(rig, tablet["mac"])
    expect("the hours", shown["parentalTimeControl"], hours)
    expect("the addresses", shown["parentalWebControl"]["urls"], urls)
    expect("presence outside its hours", station(rig, tablet["mac"])["active"], 0)
    rig.bus("sim", "elapse", {"seconds": 8 * 3600})  # the router's clock starts on a Wednesday at 08:00
    expect("presence in its hours", station(rig, tablet["mac"])["active"], 1)


def route(kind, members):
    return {"networkMode": 1, "networkConnect": {"route": {"routeType": kind, "routeList": members}}}


@step("the Internet access goes from PPPoE to a static address and back")
def internet_access(rig, watch):
    pppoe = {"userName": "home@example", "userPwd": "secret-1", "mtu": 1492, "dnsEnable": False}
    rig.set("networkInfo", route(0, pppoe))
    watch.wait("event/networkRestartTime .*networkInfo")
    expect("the way", rig.router("vrop.waninfo")["networktype"], "PPPoE")
    static = {"staticIp": "192.0.2.10", "mask": "255.255.255.0", "gateWay": "192.0.2.1", "dns1": "192.0.2.53",
              "dns2": "198.51.100.53"}
    rig.set("networkInfo", route(2, static))
    expect("the address", rig.router("vrop.waninfo")["ipaddr"], "192.0.2.10")
    expect("what the cloud reads", rig.get("networkInfo")["networkConnect"]["route"]["routeList"], static)
    rig.set("networkInfo", route(0, pppoe))
    expect("the way", rig.get("networkInfo")["networkConnect"]["route"]["routeType"], 0)


@step("the router becomes a wireless relay")
def relay(rig, watch):
    rig.set("networkInfo", {"networkMode": 2, "networkConnect": {"relay": {
        "manualWifiName": "Upstairs", "manualWifiPwd": "relay-pass", "manualEncrytion": 2, "sync": 1,
        "relaySignal": 1}}})
    expect("the work mode", rig.router("vrop.waninfo")["workmode"], "APCLIENT")
    expect("the relay's name", rig.router("vrop.wifi.2.apclient")["ssid"], "Upstairs")


def set_schedules(rig, on):
    days = [1, 1, 1, 1, 1, 0, 0]
    restart = [{"daysOfWeek": days, "time": "03:30", "open": on}]
    leds = [{"daysOfWeek": days, "timeFrame": "22:30-06:00", "open": on}]
    rig.set("timeReboot", restart)
    rig.set("timeLed", leds)
    wait_until("the restart schedule", lambda: rig.get("timeReboot") == restart)
    wait_until("the LED schedule", lambda: rig.get("timeLed") == leds)


def elapse_until(rig, hour, minute):
    """The router's clock goes on to that time of day."""
    now = rig.bus("sim", "state", {"pointer": "/sim/time"})[1]["value"]
    rig.bus("sim", "elapse", {"seconds": (hour * 3600 + minute * 60 - now) % 86400})


@step("a restart and an LED schedule are set, and the router keeps to them")
def schedules(rig, watch):
    set_schedules(rig, True)
    elapse_until(rig, 22, 31)
    expect("the LEDs at night", rig.get("ledStatus"), "off")
    elapse_until(rig, 3, 31)
    wait_until("the restart", lambda: (rig.bus("vrop.homewebinfo", "get", check=False)[1] or {})
               .get("vrop.homewebinfo", {}).get("uptime", 3600) < 3600)
    elapse_until(rig, 6, 1)
    expect("the LEDs in the morning", rig.get("ledStatus"), "on")
    set_schedules(rig, False)


@step("the guest network is opened for a time, and closes by itself")
def guests(rig, watch):
    rig.set("visitorsWifi", {"mainOpen": 1, "wifi2gOpen": 1, "wifi2gName": "Welcome", "wifi2gPwd": "come-in-please",
                             "wifi2gOpenPwd": 1, "wifi5gOpen": 1, "wifi5gName": "Welcome-5G", "wifi5gPwd": "",
                             "wifi5gOpenPwd": 0, "openDuration": 1})
    expect("the guest network", rig.get("visitorsWifi")["wifi2gOpen"], True)
    rig.bus("sim", "elapse", {"seconds": 30 * 24 * 3600})
    expect("the guest network", rig.get("visitorsWifi")["wifi2gOpen"], False)


@step("mesh on and off, the LEDs off with their report, IPv6 on, another channel")
def switches(rig, watch):
    rig.set("mesh", {"open": True, "role": 1})
    expect("mesh", rig.get("mesh")["open"], True)
    rig.set("mesh", {"open": False})
    expect("mesh", rig.get("mesh"), {"open": False})
    rig.set("ledStatus", "off")
    watch.wait('property .*"ledStatus": ?"off"')
    rig.set("ipv6Status", {"open": 1})
    expect("the protocol", rig.router("vrop.waninfo")["protocoltype"], "IPv4/IPv6")
    radio = rig.get("wifi2gSeniorInfo")
    radio["channel"] = 11 if radio["channel"] != 11 else 6
    rig.set("wifi2gSeniorInfo", radio)
    expect("the channel", rig.router("vrop.webwifi1adv")["channel"], radio["channel"])


@step("the password is changed; the old one is refused from then on")
def password_changed(rig, watch):
    change = {"user": "admin", "oldPwd": "admin123", "newPwd": "new-\"secret\""}
    expect("the answer", rig.call("updatePwd", change), (200, {}))
    expect("the answer with the old password", rig.call("updatePwd", change)[0], 402)
    kept = base64.b64decode(rig.bus("vrop.devinfo", "getaccount")[1]["vrop.devinfo"]["passwd"]).decode()
    expect("the password kept", kept, change["newPwd"])


@step("a crowded channel disturbs the Wi-Fi, another one does not")
def interference(rig, watch):
    radio = rig.get("wifi2gSeniorInfo")
    for channel, disturbed in ((11, True), (13, False)):
        rig.set("wifi2gSeniorInfo", {**radio, "channel": channel})
        expect(f"interference on channel {channel}", rig.call("checkInterference", {"wifiSignal": 1}),
               (200, {"interference": disturbed}))
    return f'noise {rig.call("wirelessInterference", {"radio": 1})[1]["noise"]} dBm'


@step("a download shows in the rates of its device and of the WAN")
def rates(rig, watch):
    mac, bytes_per_second = "02a0c9000006", 40 * 1024 * 1024 // 8
    before = rig.call("monitorSpeed")[1]["downSpeed"]
    rig.bus("sim", "download", {"mac": mac, "rate": 40})
    expect("the device's rate", rig.call("apMonitorSpeed", {"mac": mac})[1]["downSpeed"], bytes_per_second)
    wan = rig.call("monitorSpeed")[1]["downSpeed"]
    expect("the WAN's rate", wan, before + bytes_per_second)
    rates = {device["mac"]: device["downSpeed"] for device in rig.call("allApMonitorSpeed")[1]["monitorSpeeds"]}
    expect("its rate among all", rates[mac], bytes_per_second)
    rig.bus("sim", "download", {"mac": mac, "rate": 0})
    best = rig.call("maxMonitorSpeed", {"time": 2})[1]["downSpeed"]
    expect("a speed was measured", best > 0, True)
    return f"{wan} bytes/s, {best} in the speed test"


@step("a ping reaches a host and does not reach a dead one")
def pings(rig, watch):
    expect("a host that lives", rig.call("pingTest", {"times": 1, "testUrl": "ping.example.com"}),
           (200, {"loss": 0, "relay": "9.334"}))
    expect("a dead one", rig.call("pingTest", {"times": 0, "testUrl": "dead.example.com"}),
           (200, {"loss": 100, "relay": ""}))
    expect("the NAT", rig.call("nat"), (200, {"natType": 3, "upnp": True}))


@step("a reboot is answered before the router goes away; the device comes back online")
def reboot(rig, watch):
    rig.bus("sim", "setstate", {"pointer": "/sim/boottime", "value": "2000"})
    expect("the answer", rig.call("reboot"), (200, {}))
    wait_until("the router to be away", lambda: rig.bus("vrop.ftinfo", "get", check=False)[0] != 0)
    rig.stop("qvtkd")  # as it ends with the router
    wait_until("the router to be back", lambda: rig.bus("vrop.ftinfo", "get", check=False)[0] == 0)
    expect("the uptime started again", rig.router("vrop.homewebinfo")["uptime"] < 60, True)
    posted = rig.log_count(POSTED_DEVICE_INFO)
    rig.start_daemon()
    rig.wait_logged(POSTED_DEVICE_INFO, more_than=posted)
    expect("the password kept by the reboot", rig.call("updatePwd", {
        "user": "admin", "oldPwd": "new-\"secret\"", "newPwd": "admin123"}), (200, {}))


@step("the client that joined is announced")
def client_announced(rig, watch):
    return watch.wait("event/deviceConnet .*a0b1c2000077", limit=60).split("  ")[-1]


def settings(rig):
    """What a restore has to give back."""
    return [rig.get(name) for name in ("wifi2gSeniorInfo", "wifi5gSeniorInfo")] + [
        {key: value for key, value in rig.get("wifiInfo").items() if key != "use2gPwd"},
        {key: rig.router("vrop.waninfo")[key] for key in ("workmode", "radio")},
        {key: rig.router("vrop.wifi.2.apclient")[key] for key in ("enable", "ssid", "key", "authmode")}]


@step("a backup is uploaded, the router reset to factory state, the backup restored: Wi-Fi and WAN are as before")
def backup_and_restore(rig, watch):
    before = settings(rig)
    expect("the answer", rig.call("tuningBackupCfg"), (200, {}))
    expect("the upload", rig.requests("upload-config-file")[-1]["verdict"], "ok")
    name = max(rig.uploads.glob("*.config"), key=lambda path: path.stat().st_mtime).name
    expect("the answer", rig.call("recovery"), (200, {}))
    wait_until("the factory state", lambda: (rig.bus("vrop.webwifisimple", "get", check=False)[1] or {})
               .get("vrop.webwifisimple", {}).get("wifi24ssid") == "Home")
    rig.restart_daemon()
    expect("the way after the reset", rig.router("vrop.waninfo")["workmode"], "ROUTE")
    done = rig.log_count("set internet config ok")
    expect("the answer", rig.call("cfgReport", {"backupUrl": f"{rigs.CLOUD_URL}/backup/{name}"}), (200, {}))
    rig.wait_logged("set internet config ok", more_than=done)
    expect("what came back", settings(rig), before)
    return name


@step("the configuration is exported to the cloud, byte for byte")
def export(rig, watch):
    answer = rig.call("remoteCfgExport", {"uploadUrl": f"{rigs.CLOUD_URL}/upload/export.conf", "url": "export.conf"})
    expect("the answer", answer, (200, {"url": "export.conf"}))
    expect("what the cloud has", (rig.uploads / "export.conf").read_bytes(),
           pathlib.Path("/aptmp/cfg_export_config_file.conf").read_bytes())


def reports(rig):
    """The versions and progress values that the device has reported over HTTPS, each once, in order."""
    bodies = [json.loads(request["body"]) for request in rig.requests("upgrade-progress")]
    values = [(body["newVersion"], body["progress"]) for body in bodies]
    return [value for at, value in enumerate(values) if at == 0 or values[at - 1] != value]


@step("firmware offered over HTTPS is found, checked and flashed; the new version is reported")
def upgrade_over_https(rig, watch):
    image, _ = rig.make_image("V1.1.0")
    rig.control("firmware", image, "V1.1.0", "1")
    rig.local_event({"action": "updatesettime", "otaCheckInterval": 1, "minInterval": 60, "maxInterval": 3600})
    rig.restart_into("V1.1.0")
    wait_until("the report after the restart", lambda: reports(rig)[-1:] == [("V1.1.0", 120)])
    expect("the reports", reports(rig), [("V1.1.0", 50), ("V1.1.0", 120)])
    expect("the version", rig.get("deviceInfo")["fwVersion"], "V1.1.0")


@step("firmware offered through the SDK goes the same way")
def upgrade_through_sdk(rig, watch):
    image, digest = rig.make_image("V1.2.0")
    rig.control("firmware", image, "V1.2.0", "1")
    upgrade = rig.start("upgrade", rig.cloud_command("upgrade", f"{rigs.CLOUD_URL}/firmware/{image.name}", digest,
                                                     "V1.2.0", "1"))
    expect("the progress", [json.loads(watch.wait("  progress  ").split("  ")[-1])["progress"] for _ in range(4)],
           [10, 60, 80, 100])
    watch.wait("event/deviceUpgrade .*upgrade ok")
    upgrade.wait(rigs.LIMIT)
    rig.restart_into("V1.2.0")
    wait_until("the report after the restart", lambda: reports(rig)[-1:] == [("V1.2.0", 120)])


@step("a program asks for all client devices, and the cloud is told of them")
def devices_event(rig, watch):
    rig.local_event({"action": "allDevicesReport"})
    event = json.loads(watch.wait("event/allDevicesReport").split("  ")[-1])
    expect("the devices", [device["mac"] for device in event["apDevices"]],
           [station["mac"] for station in rig.router("vrop.laninfo", "list")])
    return f'{len(event["apDevices"])} devices'


def play(rig):
    """Plays all steps; raises Failed at the first that fails."""
    watch = rig.watch()
    for number, (title, function) in enumerate(STEPS, 1):
        print(f"[{number:2}/{len(STEPS)}] {title} ...", end=" ", flush=True)
        began = time.monotonic()
        try:
            said = function(rig, watch)
            rig.check_contract()
        except Exception:
            print("FAILED", flush=True)
            raise
        print(f"ok ({time.monotonic() - began:.1f} s){': ' + said if said else ''}", flush=True)
    watch.close()
