# SPDX-License-Identifier: Apache-2.0
"""One line of the table."""
import dataclasses


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
}


@dataclasses.dataclass
class Row:
    """`measured` and `bare` are seconds for the `amount`, or, of "KiB", a size; the less the better. Without a thing
    to compare with, the goal is a bound of the measured value itself."""
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
