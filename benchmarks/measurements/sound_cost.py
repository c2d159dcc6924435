"""What sound costs, how long its files are, and what a busy machine does to it."""

import contextlib
import math
import os
import subprocess
import sys
import tempfile

from measurements import machine, programs
from measurements.sound import RATE, Sound
from measurements.table import Row

SECONDS = 20
SHORT_SECONDS = 5
SHARE_LIMIT = 0.03  # of a core, for each source
LENGTHS = [0.3, 0.77, 1, 1.5, 2.34, 3.1, 5.55]  # seconds
PITCH = 440  # of the tone client and of the test microphone
BUSY = 16  # processes that use up all they get

ALL_SOUND = ["--microphone", "default", "--microphone", "zorvane-test-microphone", "--system-audio"]


def measure_cost(conditions):
    load = conditions.await_quiet()
    rows = []
    with programs.directory_for_movies() as directory, programs.client("tone_client"):
        for what, sources in [("a microphone", ["--microphone", "default"]), ("the system's sound", ["--system-audio"])]:
            shares = [_share(directory, sources) for _ in range(conditions.repeat)]
            median = sorted(shares)[len(shares) // 2]
            rows.append(Row(f"{what}, recorded and encoded, of each second, median of {len(shares)}", f"{median * 100:.2f} % of a core",
                            "<= 3 %", median <= SHARE_LIMIT, load))
    return rows


def _share(directory, sources):
    """The share of a core while it goes on: what the program's start and end cost is in both recordings."""
    long = programs.record(directory, SECONDS, sources=sources).cpu
    return (long - programs.record(directory, SHORT_SECONDS, sources=sources).cpu) / (SECONDS - SHORT_SECONDS)


def measure_length(conditions):
    load = conditions.await_quiet()
    worst, longest = 0, -math.inf
    with programs.directory_for_movies() as directory:
        for seconds in LENGTHS:  # nothing plays: the system is silent
            run = programs.record(directory, seconds, sources=["--microphone", "default", "--system-audio"])
            interval = run.report["recordUntil"] - run.report["recordFrom"]
            for path in run.files:
                sound = Sound(path)
                worst = max(worst, abs(float(sound.duration) - interval) * sound.rate)
                longest = max(longest, sound.decoded_frames() - interval * sound.rate)
    count = 2 * len(LENGTHS)
    return [
        Row(f"sound track's duration against the recording's, worst of {count}", f"{worst:.2f} samples", "<= 1 sample",
            worst <= 1, load),
        Row("  what a decoder gives beyond it, of the last packet's 1024", f"{longest:.0f} samples", "< 1024",
            0 <= longest < 1024, load),
    ]


def measure_load(conditions):
    """Sound of a screen in motion on a machine that has too much to do."""
    load = conditions.await_quiet()
    with programs.directory_for_movies() as directory, programs.client("tone_client"), \
            programs.client("motion_client"), _busy_processors(), _plain_capture() as plain:
        run = programs.record(directory, SECONDS, sources=["--display", "main", *ALL_SOUND])
        breaks = [breaks_in(Sound(path).samples()) for path in run.files if not path.endswith(".mov")]
        lengths = [abs(float(Sound(path).duration) - (run.report["recordUntil"] - run.report["recordFrom"])) * RATE
                   for path in run.files if not path.endswith(".mov")]
        plain.end()
        plain_breaks = breaks_in(Sound(plain.path).samples())
    return [
        Row("pictures dropped under load, for two microphones and the system's sound beside them",
            str(run.report["dropped"]), "> 0", run.report["dropped"] > 0, load),
        Row("  length of their three files, worst", f"{max(lengths):.2f} samples", "<= 1 sample", max(lengths) <= 1),
        Row("  breaks in their sound", ", ".join(map(str, breaks))),
        Row("  breaks in a plain capture of the same sound meanwhile", str(plain_breaks)),
    ]


def breaks_in(samples):
    """How often a tone is broken: a sample is not where the two before it lead to, within what an encoder changes."""
    factor = 2 * math.cos(2 * math.pi * PITCH / RATE)
    tolerance = 0.03 * 32767
    count, last = 0, -RATE
    for index in range(RATE // 10, len(samples) - RATE // 10):  # what begins or ends in the middle is no break
        expected = factor * samples[index - 1] - samples[index - 2]
        if abs(samples[index] - expected) > tolerance:
            if index - last > RATE // 200:
                count += 1
            last = index
    return count


@contextlib.contextmanager
def _busy_processors():
    processes = [subprocess.Popen([sys.executable, "-c", "while True: pass"]) for _ in range(BUSY)]
    try:
        yield
    finally:
        for process in processes:
            process.kill()
            process.wait()


class _Capture:
    def __init__(self, path):
        self.path = path
        self.process = subprocess.Popen(["pw-record", "--target", "zorvane-test-speakers", "-P",
                                         "{ stream.capture.sink = true }", path])

    def end(self):
        self.process.terminate()
        self.process.wait()


@contextlib.contextmanager
def _plain_capture():
    """Of the speakers, by PipeWire's own program."""
    with tempfile.TemporaryDirectory(prefix="zorvane-figures.") as directory:
        capture = _Capture(os.path.join(directory, "plain.wav"))
        try:
            yield capture
        finally:
            capture.end()
