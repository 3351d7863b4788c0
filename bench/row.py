# SPDX-License-Identifier: Apache-2.0
"""One line of the table."""
import dataclasses
import pathlib
import platform
import re


def duration(seconds):
    for factor, unit in ((1, "s"), (1e3, "ms"), (1e6, "µs")):
        if seconds * factor >= 1 or unit == "µs":
            return f"{seconds * factor:.3g} {unit}"


def rate(count, seconds):
    return f"{count / seconds:,.0f}/s"


UNITS = {
    "call": lambda value, amount: duration(value / amount),
    "datagram": lambda value, amount: rate(amount, value),
    "byte": lambda value, amount: f"{amount / value / 2 ** 20:.0f} MiB/s",
    "KiB": lambda value, amount: f"{value:.0f} KiB",
    "count": lambda value, amount: f"{value:.0f}",
    "a minute": lambda value, amount: f"{value:.0f} a minute",
}


@dataclasses.dataclass
class Row:
    """`measured` and `bare` are seconds for the `amount`, or, of the last three units, just a number; the less the
    better. Without a thing to compare with, the goal is a bound of the measured value itself."""
    name: str
    unit: str = "call"
    measured: float = 0
    compared_with: str = ""
    bare: float | None = None
    ratio: float | None = None
    goal: float | None = None
    amount: float = 1
    failed: str = ""

    def missed(self):
        if self.failed:
            return True
        value = self.measured if self.ratio is None else self.ratio
        return self.goal is not None and value > self.goal

    def is_too_much(self):
        """Whatever else the machine does: a time is for a quiet one to judge."""
        return bool(self.failed) or self.missed() and self.unit != "call"

    def cells(self):
        if self.failed:
            return (self.name, self.failed, "", "", "", "", "FAILED")
        show = UNITS[self.unit]
        if self.goal is None:
            goal, verdict = "-", "-"
        else:
            goal = "<= " + (show(self.goal, 1) if self.ratio is None else f"{self.goal:.2f}")
            verdict = "MISSED" if self.missed() else "met"
        return (self.name, show(self.measured, self.amount), self.compared_with or "-",
                "-" if self.bare is None else show(self.bare, self.amount),
                "-" if self.ratio is None else f"{self.ratio:.2f}", goal, verdict)


def machine():
    model = re.search(r"^model name\s*: (.*)$", pathlib.Path("/proc/cpuinfo").read_text(), re.M)
    cores = len(re.findall(r"^processor\s*:", pathlib.Path("/proc/cpuinfo").read_text(), re.M))
    return f"{model.group(1) if model else platform.machine()}, {cores} processors, Linux {platform.release()}"


def print_table(rows):
    cells = [("measurement", "measured", "compared with", "theirs", "ratio", "goal", "verdict")]
    cells += [row.cells() for row in rows]
    widths = [max(len(line[column]) for line in cells) for column in range(len(cells[0]))]
    for number, line in enumerate(cells):
        print("  ".join(text.ljust(width) for text, width in zip(line, widths)).rstrip())
        if number == 0:
            print("  ".join("-" * width for width in widths))
