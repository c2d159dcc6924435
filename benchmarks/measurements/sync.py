"""Sound against picture, and each against the truth: flashes and beeps at the same known moments."""

import statistics
import subprocess

from measurements import programs, truth
from measurements.movie import Movie
from measurements.sound import Sound
from measurements.table import Row

MOMENTS = 40
SECONDS = 22  # longer than the client takes for them
EDGE = 0.25  # seconds at either end of a recording in which moments are not counted
MEDIAN_LIMIT = 0.005
WORST_LIMIT = 0.020

LONG_SECONDS = 300
LONG_MOMENTS = 270
DRIFT_LIMIT = 0.002


def measure(conditions):
    load = conditions.await_quiet()
    muxed = _observe(lambda directory: programs.record(directory, SECONDS, sources=["--display", "main", "--audio"]))
    separate = _observe(lambda directory: programs.record(directory, SECONDS,
                                                          sources=["--display", "main", "--system-audio"]))
    return [
        *_rows("sound against picture, in one movie", muxed.sound_against_picture(), load),
        *_rows("sound against picture, across files", separate.sound_against_picture(), load),
        *_rows("sound against the truth, in one movie", muxed.sound_against_truth(), load),
        *_rows("sound against the truth, in its own file", separate.sound_against_truth(), load),
        *_rows("picture against the truth", separate.picture_against_truth(), load),
        _comparison("ffmpeg", programs.grab_with_sound_by_ffmpeg),
        _comparison("GStreamer", programs.grab_with_sound_by_gstreamer),
    ]


def measure_drift(conditions):
    """How the sound's error changes over five minutes."""
    load = conditions.await_quiet()
    seen = _observe(lambda directory: programs.record(directory, LONG_SECONDS, sources=["--system-audio"]),
                    LONG_MOMENTS, pause=0.9)
    errors = seen.sound_against_truth()
    tenth = len(errors) // 10
    drift = statistics.median(errors[-tenth:]) - statistics.median(errors[:tenth])
    return [
        Row("drift of the sound over five minutes", f"{drift * 1000:+.3f} ms ({len(errors)} beeps)", "<= 2 ms",
            abs(drift) <= DRIFT_LIMIT and len(errors) >= LONG_MOMENTS - 5, load),
    ]


class Observation:
    """What was played and shown, and what a recording has of it. All times are in seconds."""

    def __init__(self, moments, flashes, beeps):
        self.moments = moments  # (heard, shown), on the host clock; None of a program that doesn't tell its begin
        self.flashes = flashes
        self.beeps = beeps

    def sound_against_picture(self):
        return [truth.nearest(self.beeps, flash) - flash for flash in self.flashes]

    def sound_against_truth(self):
        return [truth.nearest(self.beeps, heard) - heard for heard, _ in self.moments]

    def picture_against_truth(self):
        return [truth.nearest(self.flashes, shown) - shown for _, shown in self.moments]


def _observe(record, moments=MOMENTS, pause=0.3):
    with programs.directory_for_movies() as directory, \
            programs.client("flash_beep_client", "--moments", moments, "--pause", pause) as client:
        run = record(directory)
        client.wait()
        told = [tuple(map(float, line)) for line in client.lines()]
        begin = run.report.get("recordFrom", 0)
        flashes = truth.flashes_in(Movie(run.movie), begin) if run.movie else []
        beeps = [begin + beep for beep in Sound(run.files[-1] if run.files else run.movie).beeps()]
    first, last = begin + EDGE, run.report.get("recordUntil", SECONDS) - EDGE
    played = [(heard, (before + after) / 2) for heard, before, after in told]
    return Observation([moment for moment in played if first < moment[0] < last],
                       [flash for flash in flashes if first < flash < last], beeps)


def _rows(what, errors, load):
    sizes = [abs(error) for error in errors]
    median, worst = statistics.median(sizes), max(sizes)
    count = len(errors)
    return [
        Row(f"{what}, median", f"{median * 1000:.2f} ms ({count} moments)", "<= 5 ms of at least 30",
            median <= MEDIAN_LIMIT and count >= 30, load),
        Row("  the same, worst", f"{worst * 1000:.2f} ms (from {min(errors) * 1000:+.2f} to {max(errors) * 1000:+.2f})",
            "<= 20 ms", worst <= WORST_LIMIT, load),
    ]


def _comparison(program, grab):
    what = f"  sound against picture by {program}, median and worst"
    try:
        errors = _observe(lambda directory: grab(directory, SECONDS)).sound_against_picture()
    except subprocess.CalledProcessError:
        return Row(what, "left no readable file")
    sizes = [abs(error) for error in errors]
    return Row(what, f"{statistics.median(sizes) * 1000:.1f} ms, {max(sizes) * 1000:.1f} ms ({len(errors)} moments)")
