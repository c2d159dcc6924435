#!/usr/bin/env python3
"""Tells what the user did in a recording: reads a bundle's side files with nothing but Python's standard library.

    read_bundle.py BUNDLE             clicks, drags, keys and windows in the order of their times
    read_bundle.py --repair BUNDLE    also closes side files that a killed recording left open

As a module it has `read_side_file` and `side_files` for programs of your own.
"""

import argparse
import json
import pathlib
import sys

SUFFIXES = {"mouse": ".input-events.json", "topWindow": ".top-windows.json"}


def read_side_file(path):
    """The elements of a side file, and whether its recording had closed it.

    One element stands on each line, so of a file that was cut off at most the last line is lost.
    """
    text = pathlib.Path(path).read_bytes()
    cut_off = text.rstrip().rstrip(b",")
    whole_lines = text[:text.rfind(b"\n") + 1].rstrip().rstrip(b",")
    for form, is_closed in [(text, True), (cut_off + b"]", False), (whole_lines + b"]", False)]:
        try:
            return json.loads(form), is_closed
        except ValueError:
            pass
    raise ValueError(f"{path} is no side file")


def repair(path, elements):
    """Writes a side file as a recording that ended well would have left it."""
    lines = ",\n".join(json.dumps(element, ensure_ascii=False, separators=(",", ":"), sort_keys=True).replace("/", r"\/")
                       for element in elements)
    pathlib.Path(path).write_text(f"[\n{lines}\n]", encoding="utf-8")


def side_files(bundle):
    """The side files of a bundle: (type, path). One whose recording was killed has no manifest; names tell then."""
    manifest = bundle / "zorvane.json"
    if manifest.exists():
        files = json.loads(manifest.read_bytes())["files"]
        return [(file["type"], bundle / file["filename"]) for file in files if file["type"] in SUFFIXES]
    return [(kind, path) for kind, suffix in SUFFIXES.items() for path in sorted(bundle.glob("*" + suffix))]


def seconds(element):
    """When it was, since the start of the recording: the same 0 as in all media files."""
    return element["time"]["value"] / element["time"]["timescale"]


def place(element):
    """Fractions of the recorded area; (0, 0) is its top left corner."""
    return f"{element['x']:.4f}, {element['y']:.4f}"


def chord(event, key):
    return " + ".join(sorted(event["modifiers"]) + [key])


def describe_mouse(event, state):
    """A line for a click, the way of a drag, or a change of the cursor; None for mere movement."""
    what = event["mouseEventType"]
    if what == "cursorChanged":
        return f"cursor {event['cursorType']}"
    if what == "down":
        state[event["button"]] = event
        return f"press {chord(event, event['button'])} at {place(event)}"
    if what == "up":
        pressed = state.pop(event["button"], event)
        moved = (pressed["x"], pressed["y"]) != (event["x"], event["y"])
        return f"{'drop' if moved else 'release'} {event['button']} at {place(event)}"
    return None


def describe_key(event, _state):
    if event["keyboardEventType"] != "down":
        return None
    typed = event.get("characters")
    return "key " + chord(event, event["keyTitle"]) + (f" types {typed!r}" if typed else "") \
        + (" again" if event["isARepeat"] else "")


def describe_modifiers(event, _state):
    return "modifiers " + (" + ".join(sorted(event["modifiers"])) or "none")


def describe_window(window, _state):
    name = window.get("windowTitle") or f"window {window['windowID']}"
    return f"in front: {name!r} ({window.get('applicationName', 'unknown application')}) at {place(window)}, " \
           f"{window['width']:.4f} x {window['height']:.4f}"


DESCRIBE = {
    "mouse": describe_mouse,
    "keyboard": describe_key,
    "modifiersChanged": describe_modifiers,
    "present": describe_window,
    "absent": lambda _window, _state: "no window in front",
}


def timeline(elements):
    """(seconds, line) of all that is worth telling."""
    state = {}  # the press that each button is held from
    for element in elements:
        line = DESCRIBE[element["type"]](element, state)
        if line is not None:
            yield seconds(element), line


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--repair", action="store_true", help="close side files that a killed recording left open")
    parser.add_argument("bundle", type=pathlib.Path)
    arguments = parser.parse_args()
    files = side_files(arguments.bundle)
    if not files:
        sys.exit(f"{arguments.bundle} has no side files: record with --mouse, --keyboard or --top-window")
    lines = []
    for _, path in files:
        elements, is_closed = read_side_file(path)
        if not is_closed:
            print(f"{path.name} was cut off; its {len(elements)} whole lines are read", file=sys.stderr)
            if arguments.repair:
                repair(path, elements)
        lines.extend(timeline(elements))
    for time, line in sorted(lines, key=lambda entry: entry[0]):
        print(f"{time:9.3f} s  {line}")


if __name__ == "__main__":
    main()
