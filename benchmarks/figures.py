#!/usr/bin/env python3
"""Measures, on recordings of a private desktop, what the README claims; prints a table. Exits 1 if a target is missed.

    cmake --preset release && cmake --build --preset release
    benchmarks/figures.py all            # about forty minutes
    benchmarks/figures.py still scroll   # some of them

A busy machine spoils most figures: with --when-quiet each measurement waits until the processors are idle.
"""

import argparse
import os
import subprocess
import sys

from measurements import (allocations, cameras, cost, crash, filters, finish, length, machine, memory, sound_cost, sources,
                          sync, table, together, truth, user_input)

FIGURES = {
    "length": length.measure,
    "truth": truth.measure,
    "still": cost.measure_still,
    "scroll": cost.measure_scroll,
    "motion": cost.measure_motion,
    "filtered": filters.measure_cost,
    "exclusion": filters.measure_exclusion,
    "crash": crash.measure,
    "finish": finish.measure,
    "memory": memory.measure,
    "allocations": allocations.measure,
    "windows": sources.measure_windows,
    "devices": sources.measure_devices,
    "idle": sources.measure_idle,
    "sync": sync.measure,
    "drift": sync.measure_drift,
    "sound": sound_cost.measure_cost,
    "sound-length": sound_cost.measure_length,
    "sound-load": sound_cost.measure_load,
    "input": user_input.measure_times,
    "input-load": user_input.measure_load,
    "input-cost": user_input.measure_cost,
    "camera": cameras.measure_sync,
    "camera-cost": cameras.measure_cost,
    "together": together.measure,
}
WITH_SOUND = {"devices", "idle", "sync", "drift", "sound", "sound-length", "sound-load", "camera", "camera-cost",
              "together"}  # those for which PipeWire runs
INSIDE = "ZORVANE_FIGURES_INSIDE_DESKTOP"


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    choices = [*FIGURES, "all"]
    parser.add_argument("figures", nargs="+", choices=choices, metavar="FIGURE", help=", ".join(choices))
    parser.add_argument("--repeat", type=int, default=5, metavar="N",
                        help="measurements of CPU time of which the median counts (default: 5)")
    parser.add_argument("--when-quiet", action="store_true", help="before each measurement, wait for idle processors")
    return parser.parse_args()


def measure_in_private_desktop(names, options):
    """Returns whether all targets were met."""
    if not names:
        return True
    sound = [] if WITH_SOUND.intersection(names) else ["--no-audio"]
    command = [os.path.join(machine.ROOT, "scripts", "with-desktop"), *sound, sys.executable, sys.argv[0], *names]
    return subprocess.call([*command, *options], env={**os.environ, INSIDE: "1"}) == 0


def main():
    arguments = parse_arguments()
    names = list(FIGURES) if "all" in arguments.figures else arguments.figures
    if INSIDE not in os.environ:
        options = ["--repeat", str(arguments.repeat), *(["--when-quiet"] if arguments.when_quiet else [])]
        silent = measure_in_private_desktop([name for name in names if name not in WITH_SOUND], options)
        sounding = measure_in_private_desktop([name for name in names if name in WITH_SOUND], options)
        return 0 if silent and sounding else 1
    print(machine.description())
    rows = []
    for name in names:
        print(f"measuring {name}...", file=sys.stderr)
        rows += FIGURES[name](machine.Conditions(arguments.repeat, arguments.when_quiet))
    print(table.text(rows))
    return 0 if all(row.is_met for row in rows) else 1


if __name__ == "__main__":
    sys.exit(main())
