# SPDX-License-Identifier: Apache-2.0
"""What the device's services need and do, in the order of its table; and a sign of life while one works."""
import sys
import threading
import time

# name: (what the request holds, what the service does)
SERVICES = {
    "tuningWifi": ('["radio": 1 or 2]', "the radios go to their best channel"),
    "reboot": ("", "restart the router"),
    "recovery": ('["resetType": 0]', "back to factory state, to the router's level"),
    "checkSignal": ('"wifiSignal": 1 (2.4 GHz) or 2 (5 GHz)', "class of the transmit power, 0 strong to 2 weak"),
    "checkInterference": ('["wifiSignal": 1 or 2]', "whether others disturb the band"),
    "updatePwd": ('"user", "oldPwd", "newPwd"', "another password for the web pages; 402 when it is refused"),
    "monitorSpeed": ("", "the WAN's rates, bytes per second"),
    "apMonitorSpeed": ('"mac": as apDevices spells it', "the rates of one device"),
    "allApMonitorSpeed": ("", "the rates of all active devices"),
    "tuningBackupCfg": ("", "upload a backup of the configuration"),
    "cfgReport": ('"backupUrl"', "download a backup and restore it"),
    "relayScan": ('"radio": 0 (2.4 GHz) or 1 (5 GHz)', "the networks around, strongest first"),
    "maxMonitorSpeed": ('["url", "time": 8 s, "interval": 1000 ms], at least {}', "download speed test"),
    "cutUsb": ('["diskPath"]', "detach the USB disk"),
    "diskCheck": ("", "the external disks and their room"),
    "nat": ("", "NAT type and UPnP"),
    "connectCheck": ("", "whether the WAN and the storage service are connected"),
    "uploadLog": ('"uploadUrl", "url"', "upload the logs, secrets masked"),
    "outdiskFormat": ('"diskPath" of diskCheck', "format a disk; the event outFormatFeedback says 0 good, 1 bad"),
    "channelQuality": ('["radio": 1 or 2]', "the channels and their scores"),
    "portLinkSpeed": ("", "the wired ports and their speed"),
    "rssiQualityCheck": ('["mac"]', "how well the wireless stations are heard"),
    "networkCheck": ('["testUrl", "dnsTimeout": 100 ms], or ""', "whether IPv6 is down, and names are slow"),
    "physicsInfo": ("", "processor, memory, flash, temperatures"),
    "pingTest": ('"times": seconds to wait, "testUrl": host', "loss in percent and average delay in ms"),
    "remoteCap": ('"time": 1 to 300 s, "interface", ["filter"], "uploadUrl", "url"',
                  "capture packets and upload them; the event RemoteCapSuccess says where"),
    "remoteCfgExport": ('"uploadUrl", "url"', "upload the exported configuration"),
    "tuningMemory": ("", "drop the page cache"),
    "wirelessInterference": ('"radio": 1 or 2', "noise and interference of the band"),
}


def listing():
    width = max(map(len, SERVICES))
    return "\n".join(f"{name:{width}}  {does}{'; needs ' + needs if needs else ''}"
                     for name, (needs, does) in SERVICES.items())


class Waiting:
    """Says on a terminal, from the second second on, how long it has been waited; nothing elsewhere."""

    def __init__(self, what):
        self.what, self.done, self.shown = what, threading.Event(), False

    def __enter__(self):
        self.thread = threading.Thread(target=self._tick, daemon=True)
        if sys.stderr.isatty():
            self.thread.start()

    def _tick(self):
        began = time.monotonic()
        while not self.done.wait(1):
            self.shown = True
            print(f"\r{self.what} works: {time.monotonic() - began:.0f} s ", end="", file=sys.stderr, flush=True)

    def __exit__(self, *_):
        self.done.set()
        if self.thread.is_alive():
            self.thread.join()
        if self.shown:
            print("\r\x1b[K", end="", file=sys.stderr, flush=True)
