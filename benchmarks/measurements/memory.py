"""How much memory a long recording holds."""

import os
import statistics
import subprocess
import time

from measurements import programs
from measurements.table import Row

SECONDS = 300
PAUSE = 5  # seconds between samples
SIZE_LIMIT = 250  # MiB
GROWTH_LIMIT = 4  # MiB from the second minute to the last: what the movie's index takes is a part of it


def measure(conditions):
    load = conditions.await_quiet()
    with programs.directory_for_movies() as directory, programs.client("motion_client"):
        bundle = os.path.join(directory, "long.zorvane")
        process = subprocess.Popen(programs.recorder_command(bundle, SECONDS), stdout=subprocess.DEVNULL)
        samples = []
        while len(samples) < SECONDS // PAUSE - 1:
            time.sleep(PAUSE)
            if process.poll() is not None:
                raise SystemExit("figures: the recorder ended early")
            samples.append(resident_size(process.pid))
        if process.wait() != 0:
            raise SystemExit("figures: the recorder failed")
    per_minute = 60 // PAUSE
    growth = statistics.median(samples[-per_minute:]) - statistics.median(samples[per_minute:2 * per_minute])
    return [
        Row("resident memory, five minutes of 1080p motion, largest", f"{max(samples):.0f} MiB", f"<= {SIZE_LIMIT} MiB",
            max(samples) <= SIZE_LIMIT, load),
        Row("  growth from the second minute to the last", f"{growth:+.1f} MiB", f"<= {GROWTH_LIMIT} MiB",
            growth <= GROWTH_LIMIT, load),
    ]


def resident_size(pid):
    """In MiB, the memory shared with the X server included."""
    with open(f"/proc/{pid}/status", encoding="ascii") as file:
        kilobytes = next(line.split()[1] for line in file if line.startswith("VmRSS"))
    return int(kilobytes) / 1024
