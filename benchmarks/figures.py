#!/usr/bin/env python3
"""Measures, on recordings of a private desktop, what the README claims; prints a table. Exits 1 if a target is missed.

    cmake --preset release && cmake --build --preset release
    benchmarks/figures.py all            # about fifteen minutes
    benchmarks/figures.py still scroll   # some of them

A busy machine spoils most figures: with --when-quiet each measurement waits until the processors are idle.
"""

import argparse
import os
import sys

from measurements import allocations, cost, crash, finish, length, machine, memory, table, truth

FIGURES = {
    "length": length.measure,
    "truth": truth.measure,
    "still": cost.measure_still,
    "scroll": cost.measure_scroll,
    "motion": cost.measure_motion,
    "crash": crash.measure,
    "finish": finish.measure,
    "memory": memory.measure,
    "allocations": allocations.measure,
}
INSIDE = "ZORVANE_FIGURES_INSIDE_DESKTOP"


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    choices = [*FIGURES, "all"]
    parser.add_argument("figures", nargs="+", choices=choices, metavar="FIGURE", help=", ".join(choices))
    parser.add_argument("--repeat", type=int, default=5, metavar="N",
                        help="measurements of CPU time of which the median counts (default: 5)")
    parser.add_argument("--when-quiet", action="store_true", help="before each measurement, wait for idle processors")
    return parser.parse_args()


def enter_private_desktop():
    with_desktop = os.path.join(machine.ROOT, "scripts", "with-desktop")
    os.execve(with_desktop, [with_desktop, "--no-audio", sys.executable, *sys.argv], {**os.environ, INSIDE: "1"})


def main():
    arguments = parse_arguments()
    if INSIDE not in os.environ:
        enter_private_desktop()
    names = list(FIGURES) if "all" in arguments.figures else arguments.figures
    print(machine.description())
    rows = []
    for name in names:
        print(f"measuring {name}...", file=sys.stderr)
        rows += FIGURES[name](machine.Conditions(arguments.repeat, arguments.when_quiet))
    print(table.text(rows))
    return 0 if all(row.is_met for row in rows) else 1


if __name__ == "__main__":
    sys.exit(main())
