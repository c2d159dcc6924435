"""How soon lists of sources tell what has happened, and what it costs to keep them."""

import contextlib
import json
import subprocess
import threading
import time

from measurements import machine, programs
from measurements.table import Row

WINDOW_LIMIT = 0.25  # seconds until a window's change is listed
DEVICE_LIMIT = 0.5
IDLE_LIMIT = 0.01  # of a core
MANY_LIMIT = 0.05
MANY = 500
ROUNDS = 20
SETTLE = 5.0  # seconds until what a start costs is over
WATCHED = 30.0  # seconds that idle cost is measured over
PATIENCE = 30.0


class Watch:
    """The program's own watch, whose lines are read as they come."""

    def __init__(self, *kinds):
        self.process = subprocess.Popen([machine.RECORDER, "sources", "--watch", "--json", *kinds],
                                        stdout=subprocess.PIPE)
        self.changes = []  # (time on CLOCK_MONOTONIC, object)
        self._grown = threading.Condition()
        self._reader = threading.Thread(target=self._read)
        self._reader.start()

    def _read(self):
        for line in self.process.stdout:
            now = time.monotonic()
            with self._grown:
                self.changes.append((now, json.loads(line)))
                self._grown.notify_all()

    def first(self, after, wanted):
        """When the first change that `wanted(change)` came after a moment."""
        def found():
            return next((now for now, change in self.changes if now > after and wanted(change)), None)
        with self._grown:
            if not self._grown.wait_for(lambda: found() is not None, PATIENCE):
                raise SystemExit("figures: a change was never told")
            return found()

    def await_lists(self, count):
        with self._grown:
            self._grown.wait_for(lambda: len(self.changes) >= count, PATIENCE)

    def end(self):
        self.process.terminate()
        self.process.wait()
        self._reader.join()
        self.process.stdout.close()


@contextlib.contextmanager
def watching(*kinds):
    watch = Watch(*kinds)
    try:
        watch.await_lists(max(1, len(kinds)))
        yield watch
    finally:
        watch.end()


def tells(deed, window, title):
    """Whether a change tells of what was done to a window."""
    def wanted(change):
        if deed == "raise":
            return change["change"] == "reordered"
        source = change.get("source", {})
        if source.get("id") != window:
            return False
        previous = change.get("previous", {})
        return {"open": change["change"] == "added", "close": change["change"] == "removed",
                "move": "frame" in previous, "rename": "title" in previous and source["title"] == title}[deed]
    return wanted


def measure_windows(conditions):
    load = conditions.await_quiet()
    with watching("windows") as watch, programs.client("windows_client", "--rounds", ROUNDS) as client:
        client.wait()
        delays = {}
        for deed, window, moment, *title in client.lines():
            told = watch.first(float(moment), tells(deed, int(window), " ".join(title)))
            delays.setdefault(deed, []).append(told - float(moment))
    every = [delay for kind in delays.values() for delay in kind]
    worst = {deed: max(times) for deed, times in delays.items()}
    return [Row(f"windows opened, moved, renamed, raised, closed: worst of {len(every)} until listed",
                f"{max(every) * 1000:.0f} ms ({', '.join(f'{deed} {value * 1000:.0f}' for deed, value in worst.items())})",
                f"<= {WINDOW_LIMIT * 1000:.0f} ms", max(every) <= WINDOW_LIMIT, load)]


def measure_devices(conditions):
    load = conditions.await_quiet()
    delays = []
    with watching("microphones") as watch:
        for number in range(ROUNDS // 2):
            name = f"zorvane-figure-{number}"
            with microphone(name) as plugged:
                listed = watch.first(plugged, lambda change: tells_device(change, name, "available"))
                delays.append(listed - plugged)
                time.sleep(0.3)
                unplugged = time.monotonic()
            gone = watch.first(unplugged, lambda change: tells_device(change, name, "notConnected"))
            delays.append(gone - unplugged)
    return [Row(f"microphones plugged and unplugged: worst of {len(delays)} until listed", f"{max(delays) * 1000:.0f} ms",
                f"<= {DEVICE_LIMIT * 1000:.0f} ms", max(delays) <= DEVICE_LIMIT, load)]


def tells_device(change, name, availability):
    source = change.get("source", {})
    return source.get("id") == name and source["availability"] == availability


@contextlib.contextmanager
def microphone(name):
    """A microphone in the private sound server for as long as its maker is connected; gives the moment of asking."""
    maker = subprocess.Popen(["pw-cli"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                             text=True)
    try:
        time.sleep(0.3)  # pw-cli connects
        moment = time.monotonic()
        maker.stdin.write(f"create-node adapter {{ factory.name=support.null-audio-sink node.name={name} "
                          f"media.class=Audio/Source/Virtual audio.position=MONO }}\n")
        maker.stdin.flush()
        yield moment
    finally:
        maker.kill()
        maker.wait()
        maker.stdin.close()


def measure_idle(conditions):
    load = conditions.await_quiet()
    share = idle_share()
    with programs.client("windows_client", "--windows", MANY):
        conditions.await_quiet()
        many = idle_share()
    return [Row("keeping all lists on a still desktop: share of a core", f"{share:.2%}", f"< {IDLE_LIMIT:.0%}",
                share < IDLE_LIMIT, load),
            Row(f"  with {MANY} windows", f"{many:.2%}", f"< {MANY_LIMIT:.0%}", many < MANY_LIMIT, load)]


def idle_share():
    """Of a core, by a watch of all kinds on which nothing happens."""
    with watching() as watch:
        time.sleep(SETTLE)
        before, began = machine.cpu_seconds(watch.process.pid), time.monotonic()
        time.sleep(WATCHED)
        return (machine.cpu_seconds(watch.process.pid) - before) / (time.monotonic() - began)
