# SPDX-License-Identifier: Apache-2.0
"""What a running daemon holds, from the outside: pages, threads, wake-ups.

Under emulation qemu maps a 64-bit guest's pages one to one below 1 << 40 and keeps its own above: the guest's part of
smaps is what the program would hold on a device with pages of 4 KiB. One thread is qemu's own."""
import pathlib
import re
import time

from rig import Failed, wait_until

GUEST_END = 1 << 40
STAND_INS = r"/lib(ssl|crypto)\.so"
THREAD_STACKS = range(500, 540)  # KiB: 512, less or more a guard page and what the C library keeps there
AT_REST = 5   # seconds without a change of its memory
WATCHED = 20  # seconds


class Footprint:
    def __init__(self, process):
        self.folder = pathlib.Path(f"/proc/{process.pid}")
        self.emulated = "qemu" in (self.folder / "exe").resolve().name

    def mappings(self):
        """[(size, mode, file, anonymous)] of the program's own mappings, sizes in KiB."""
        rows = []
        for text in re.split(r"\n(?=[0-9a-f]+-[0-9a-f]+ )", (self.folder / "smaps").read_text()):
            begin, end, mode, file = re.match(r"([0-9a-f]+)-([0-9a-f]+) (\S+) \S+ \S+ \d+ *(.*)", text).groups()
            if not self.emulated or int(begin, 16) < GUEST_END:
                anonymous = int(re.search(r"^Anonymous:\s*(\d+) kB", text, re.M).group(1))
                rows.append(((int(end, 16) - int(begin, 16)) // 1024, mode, file, anonymous))
        return rows

    def anonymous(self):
        """KiB that no file stands behind, without the tables of the stand-in's TLS library, which is not the agent's."""
        return sum(anonymous for _, _, file, anonymous in self.mappings() if not re.search(STAND_INS, file))

    def stand_ins(self):
        """Those tables, in KiB."""
        return sum(anonymous for _, _, file, anonymous in self.mappings() if re.search(STAND_INS, file))

    def anonymous_at_rest(self):
        """The same once it has not changed for a while."""
        value, since = self.anonymous(), time.monotonic()

        def has_settled():
            nonlocal value, since
            now = self.anonymous()
            if now != value:
                value, since = now, time.monotonic()
            return time.monotonic() - since > AT_REST

        wait_until("the daemon's memory to settle", has_settled, 60)
        return value

    def deepest_stack(self):
        """KiB that were ever touched of the thread's stack that was touched most."""
        touched = [anonymous for size, mode, _, anonymous in self.mappings()
                   if size in THREAD_STACKS and mode.startswith("rw")]
        if not touched:
            raise Failed("no mapping has the size of a thread's stack")
        return max(touched)

    def threads(self):
        return len(list((self.folder / "task").iterdir())) - self.emulated

    def wake_ups(self):
        """How often in a minute one of the threads has something to do, when nobody asks for anything."""
        def so_far():
            return sum(int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", status.read_text(), re.M).group(1))
                       for status in self.folder.glob("task/*/status"))

        before = so_far()
        time.sleep(WATCHED)
        return (so_far() - before) * 60 / WATCHED
