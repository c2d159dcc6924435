"""Every kind of source in one recording, for ten minutes."""

import json
import os
import statistics
import subprocess
import time

from measurements import machine, memory, programs
from measurements.movie import Movie
from measurements.sound import Sound
from measurements.table import Row

SECONDS = 600
PAUSE = 5  # seconds between samples of the memory
LENGTH_LIMIT = 0.001
GROWTH_LIMIT = 12  # MiB from the second minute to the last; the index of six tracks takes one a minute of them

SOURCES = ["--display", "main", "--audio", "--mouse", "--keyboard", "--top-window", "--camera", "zorvane-figures-camera",
           "--microphone", "zorvane-figures-microphone", "--microphone", "zorvane-test-microphone", "--system-audio"]

# What the threads of the recorder are for, by their names.
PARTS = {"zv.writer": "encoding and writing", "zv.screen": "reading the screen",
         "zv.camera": "converting the camera's pictures", "zv.sound": "aligning sound", "zv.input": "mouse and keyboard",
         "zv.desktop": "windows", "zv.displaylink": "following the cursor", "zv.pipewire": "PipeWire"}
# The encoders' threads bear the name of the thread that opened them, the pool's that of what they work at.
OTHER_PART = "the encoders' own threads, and everything else"


def measure(conditions):
    load = conditions.await_quiet()
    with programs.directory_for_movies() as directory, programs.client("camera_client"), \
            programs.client("tone_client"), programs.client("scroll_client"), programs.client("input_client", "--actions", 1_000_000):
        bundle = os.path.join(directory, "together.zorvane")
        command = programs.recorder_command(bundle, SECONDS, SOURCES)
        process = subprocess.Popen(command, stdout=subprocess.PIPE)
        sizes, begin, end = _observe(process)
        report = json.loads(process.communicate()[0])
        if process.returncode != 0:
            raise SystemExit("figures: the recorder failed")
        return [*_lengths(bundle, report, load), *_memory(sizes, load), *_cpu(begin, end, load)]


class ThreadTimes:
    """The CPU seconds of a process's threads so far, by what they are for."""

    def __init__(self, pid):
        self.moment = time.monotonic()
        self.by_part = {}
        for thread in os.listdir(f"/proc/{pid}/task"):
            with open(f"/proc/{pid}/task/{thread}/stat", encoding="utf-8") as file:
                head, _, tail = file.read().rpartition(")")
            fields = tail.split()
            part = PARTS.get(head.split("(", 1)[1], OTHER_PART)
            seconds = (int(fields[11]) + int(fields[12])) / machine.TICKS_PER_SECOND
            self.by_part[part] = self.by_part.get(part, 0) + seconds


def _observe(process):
    """The process's memory over time, and its threads' times after the first minute and near the end."""
    sizes, begin = [], None
    for index in range(SECONDS // PAUSE - 1):
        time.sleep(PAUSE)
        if process.poll() is not None:
            raise SystemExit("figures: the recorder ended early")
        sizes.append(memory.resident_size(process.pid))
        if index == 60 // PAUSE:
            begin = ThreadTimes(process.pid)
    return sizes, begin, ThreadTimes(process.pid)


def _lengths(bundle, report, load):
    interval = report["recordUntil"] - report["recordFrom"]
    tracks = {}
    for file in report["files"]:
        path = os.path.join(bundle, file["filename"])
        if file["type"] in ("screen", "webcam"):
            tracks[file["filename"] + ", picture"] = Movie(path)
        if not path.endswith(".json"):
            tracks[file["filename"] + ", sound"] = Sound(path)
    worst = max(abs(float(track.duration) - interval) for track in tracks.values())
    events = _events(bundle, report)
    pictures = ", ".join(f"{name.split(',')[0]} {len(track.packets)}" for name, track in tracks.items()
                         if isinstance(track, Movie))
    return [
        Row(f"everything at once, {SECONDS // 60} min: length of {len(tracks)} tracks, worst", f"{worst * 1000:.3f} ms",
            "<= 1 ms", worst <= LENGTH_LIMIT and len(tracks) == 6, load),
        Row("  pictures written; dropped", f"{pictures}; {report['dropped']}"),
        Row("  events of mouse and keyboard; windows in front", events, "both", "0" not in events.split("; ")),
    ]


def _events(bundle, report):
    counts = []
    for file in report["files"]:
        if file["filename"].endswith(".json"):
            with open(os.path.join(bundle, file["filename"]), encoding="utf-8") as side_file:
                counts.append(str(len(json.load(side_file))))
    return "; ".join(counts)


def _memory(sizes, load):
    per_minute = 60 // PAUSE
    growth = statistics.median(sizes[-per_minute:]) - statistics.median(sizes[per_minute:2 * per_minute])
    by_minute = [statistics.median(sizes[begin:begin + per_minute]) for begin in range(0, len(sizes), per_minute)]
    return [
        Row("  resident memory, largest", f"{max(sizes):.0f} MiB", load=load),
        Row("  by minute, in MiB", " ".join(f"{size:.0f}" for size in by_minute), load=load),
        Row("  growth from the second minute to the last", f"{growth:+.1f} MiB", f"<= {GROWTH_LIMIT} MiB",
            growth <= GROWTH_LIMIT, load),
    ]


def _cpu(begin, end, load):
    seconds = end.moment - begin.moment
    shares = {part: (end.by_part[part] - begin.by_part.get(part, 0)) / seconds for part in end.by_part}
    rows = [Row("  CPU of the process", f"{sum(shares.values()) * 100:.1f} % of a core", load=load)]
    for part, share in sorted(shares.items(), key=lambda each: -each[1]):
        rows.append(Row(f"    {part}", f"{share * 100:.1f} %", load=load))
    return rows
