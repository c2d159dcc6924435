"""What the side files of mouse, keyboard and frontmost window tell, against the truth, and what they cost."""

import json
import statistics

from measurements import programs
from measurements.table import Row

ACTIONS = 80  # 40 clicks and 40 keys, two events each
MEDIAN_LIMIT = 0.004
WORST_LIMIT = 0.020
PIXELS = (1920, 1080)

RATE = 1000  # mouse events a second
LOAD_SECONDS = 60
LOAD_LIMIT = 0.10  # of a core

COST_SECONDS = 10
COST_LIMIT = 0.02  # of a core
POINTER_RATE = 125  # Hz, of a common mouse
DRAG_RATE = 60

STILL = (*programs.DISPLAY, "--no-cursor")  # nothing of what the pointer does shows in the picture


def events_of(run, kind="mouse"):
    path = next(path for path, file in zip(run.files, run.report["files"], strict=True) if file["type"] == kind)
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def seconds(event):
    return event["time"]["value"] / event["time"]["timescale"]


def pressed(event):
    """("button" or "key", whether it went down), or None for another event."""
    if event["type"] == "keyboard" and not event["isARepeat"]:
        return "key", event["keyboardEventType"] == "down"
    if event["type"] == "mouse" and event["mouseEventType"] in ("down", "up"):
        return "button", event["mouseEventType"] == "down"
    return None


def distance(event, x, y):
    """Pixels between where a click was and where it was made."""
    return max(abs(event["x"] * PIXELS[0] - x), abs(event["y"] * PIXELS[1] - y))


def measure_times(conditions):
    load = conditions.await_quiet()
    with programs.directory_for_movies() as directory, \
            programs.client("input_client", "--actions", ACTIONS, "--wait", 2) as client:
        run = programs.record(directory, 9, sources=(*STILL, "--mouse", "--keyboard"))
        client.wait()
        made = [(kind, down == "1", float(x), float(y), (float(before) + float(after)) / 2)
                for kind, down, x, y, before, after in client.lines()]
        told = [event for event in events_of(run) if pressed(event)]
    in_order = [pressed(event) for event in told] == [(kind, down) for kind, down, *_ in made]
    if not in_order:
        return [Row("clicks and keys at known instants", f"{len(told)} of {len(made)} told, or in another order",
                    "all, in order", False, load)]
    errors = [run.report["recordFrom"] + seconds(event) - moment for event, (*_, moment) in zip(told, made)]
    sizes = [abs(error) for error in errors]
    off = max(distance(event, x, y) for event, (kind, _, x, y, _) in zip(told, made) if kind == "button")
    median, worst = statistics.median(sizes), max(sizes)
    return [
        Row("time of a click or key against the truth, median",
            f"{median * 1000:.2f} ms ({len(errors)} events, all there, in order)", "<= 4 ms", median <= MEDIAN_LIMIT, load),
        Row("the same, worst", f"{worst * 1000:.2f} ms (from {min(errors) * 1000:+.2f} to {max(errors) * 1000:+.2f})",
            "<= 20 ms", worst <= WORST_LIMIT, load),
        Row("place of a click, worst", f"{off:.2f} pixels", "<= 1", off <= 1, load),
    ]


def measure_load(conditions):
    """Movement that lies within the recording as a whole, so that each event must be in the file."""
    load = conditions.await_quiet()
    with programs.directory_for_movies() as directory, \
            programs.client("input_client", "--rate", RATE, "--seconds", LOAD_SECONDS, "--wait", 3) as client:
        run = programs.record(directory, LOAD_SECONDS + 7, sources=(*STILL, "--mouse"))
        client.wait()
        sent = int(client.lines()[0][1])
        told = sum(event["mouseEventType"] == "moved" for event in events_of(run) if event["type"] == "mouse")
    share = run.cpu / LOAD_SECONDS
    return [
        Row(f"{RATE} mouse events a second for {LOAD_SECONDS} s: events lost", f"{sent - told} of {sent}", "0",
            sent == told, load),
        Row("  CPU of the whole recorder", f"{share:.1%} of a core", f"< {LOAD_LIMIT:.0%}", share < LOAD_LIMIT, load),
    ]


def share_of_core(directory, conditions, sources):
    conditions.await_quiet()
    return programs.record(directory, COST_SECONDS, sources=sources).cpu / COST_SECONDS


def added_cost(directory, conditions, option):
    """What an option adds to a recording, as shares of a core: each time beside one without it."""
    return [share_of_core(directory, conditions, (*STILL, option)) - share_of_core(directory, conditions, STILL)
            for _ in range(conditions.repeat)]


def cost_row(what, added, load, limit=COST_LIMIT):
    median = statistics.median(added)
    return Row(what, f"{median:+.1%} of a core ({min(added):+.1%} to {max(added):+.1%}, {len(added)} runs)",
               f"< {limit:.1%}", median < limit, load)


def measure_cost(conditions):
    load = conditions.await_quiet()
    with programs.directory_for_movies() as directory:
        at_rest = added_cost(directory, conditions, "--mouse")
        with programs.client("input_client", "--rate", POINTER_RATE, "--seconds", 3600):
            moving = added_cost(directory, conditions, "--mouse")
        front_at_rest = added_cost(directory, conditions, "--top-window")
        with programs.client("drag_client", "--rate", DRAG_RATE):
            dragged = added_cost(directory, conditions, "--top-window")
    return [
        cost_row("mouse and cursor, pointer at rest: CPU added", at_rest, load, 0.005),
        cost_row(f"  pointer moved at {POINTER_RATE} Hz", moving, load),
        cost_row("window in front, at rest: CPU added", front_at_rest, load, 0.005),
        cost_row(f"  window dragged at {DRAG_RATE} Hz", dragged, load),
    ]
