# SPDX-License-Identifier: Apache-2.0
"""A sign of life while a service works."""
import sys
import threading
import time


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
