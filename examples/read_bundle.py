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


def split(text):
    """The elements in the bytes of a side file, and how many of these bytes to keep if it was cut off, else None.

    One element stands on each line, so of a file that was cut off at most the last line is lost.
    """
    text = text or b"["  # cut off before the first byte
    to_last_element = text.rstrip().rstrip(b",")
    to_last_whole_line = text[:text.rfind(b"\n") + 1].rstrip().rstrip(b",")
    for kept, end in [(text, b""), (to_last_element, b"]"), (to_last_whole_line, b"]")]:
        try:
            elements = json.loads(kept + end)
        except (ValueError, RecursionError):
            continue
        if isinstance(elements, list):
            return elements, len(kept) if end else None
    raise ValueError("it is no side file")


def read_side_file(path):
    """The elements of a side file, and whether its recording had closed it."""
    elements, kept = split(pathlib.Path(path).read_bytes())
    return elements, kept is None


def repair(path):
    """Ends a side file that was cut off as a recording that ended well would have; what is whole stays untouched."""
    with open(path, "r+b") as file:
        elements, kept = split(file.read())
        if kept is not None:
            file.seek(kept if elements else 0)
            file.write(b"\n]" if elements else b"[\n\n]")
            file.truncate()


def inside(bundle, filename):
    """The path of a file in a bundle. A manifest from elsewhere may name any file, and this program may write to it."""
    path = bundle / filename
    if not path.resolve().is_relative_to(bundle.resolve()):
        raise ValueError(f"{printable(filename)} is not in the bundle")
    return path


def side_files(bundle):
    """The side files of a bundle: (type, path). One whose recording was killed has no manifest; names tell then."""
    manifest = bundle / "zorvane.json"
    if manifest.exists():
        files = json.loads(manifest.read_bytes())["files"]
        return [(file["type"], inside(bundle, file["filename"])) for file in files if file["type"] in SUFFIXES]
    return [(kind, path) for kind, suffix in SUFFIXES.items() for path in sorted(bundle.glob("*" + suffix))]


def printable(text):
    """A text from a file, without what could play tricks on a terminal."""
    return "".join(each if each.isprintable() else "?" for each in text)


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
    """(seconds, line) of all that is worth telling. What a later version wrote and this one doesn't know is not."""
    state = {}  # the press that each button is held from
    for element in elements:
        describe = DESCRIBE.get(element["type"])
        line = describe(element, state) if describe else None
        if line is not None:
            yield seconds(element), printable(line)


def tell(path, is_to_be_repaired):
    """The time line of a side file; on standard error whether it was cut off."""
    elements, is_closed = read_side_file(path)
    if not is_closed:
        print(f"{printable(path.name)} was cut off; its {len(elements)} whole lines are read", file=sys.stderr)
        if is_to_be_repaired:
            repair(path)
    return list(timeline(elements))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--repair", action="store_true", help="close side files that a killed recording left open")
    parser.add_argument("bundle", type=pathlib.Path)
    arguments = parser.parse_args()
    lines = []
    path = arguments.bundle
    try:
        files = side_files(arguments.bundle)
        for _, path in files:
            lines += tell(path, arguments.repair)
    except OSError as error:
        sys.exit(str(error))
    except (ValueError, KeyError, TypeError, ArithmeticError) as error:
        sys.exit(f"{path} can't be understood: {error!r}")
    if not files:
        sys.exit(f"{arguments.bundle} has no side files: record with --mouse, --keyboard or --top-window")
    for time, line in sorted(lines, key=lambda entry: entry[0]):
        print(f"{time:9.3f} s  {line}")


if __name__ == "__main__":
    main()
