"""Runs the recorder, the programs it is compared with, and the clients that draw what is recorded."""

import contextlib
import dataclasses
import json
import os
import subprocess
import tempfile
import time

from measurements import machine

START_TIMEOUT = 20.0


@dataclasses.dataclass
class Run:
    """One recording that went well."""

    movie: str
    cpu: float  # seconds of user and system time, of the whole process from its start to its end
    server_cpu: float  # of the X server meanwhile
    report: dict  # what the recorder says; empty of other programs


class Client:
    """A test client that draws on the private desktop."""

    def __init__(self, process, output):
        self.process = process
        self._output = output

    def lines(self):
        """What it has said after "ready", in fields."""
        with open(self._output, encoding="ascii") as file:
            return [line.split() for line in file.read().splitlines()[1:] if line]

    def is_ready(self):
        return os.path.getsize(self._output) > 0

    def wait(self):
        if self.process.wait() != 0:
            raise SystemExit("figures: a test client failed")


@contextlib.contextmanager
def client(name, *arguments):
    with tempfile.TemporaryDirectory(prefix="zorvane-figures.") as directory:
        output = os.path.join(directory, "output")
        with open(output, "wb") as file:
            process = subprocess.Popen([machine.benchmark_program(name), *map(str, arguments)], stdout=file)
        try:
            running = Client(process, output)
            deadline = time.monotonic() + START_TIMEOUT
            while not running.is_ready():
                if process.poll() is not None or time.monotonic() > deadline:
                    raise SystemExit(f"figures: {name} did not start")
                time.sleep(0.01)
            yield running
        finally:
            process.kill()
            process.wait()


@contextlib.contextmanager
def directory_for_movies():
    with tempfile.TemporaryDirectory(prefix="zorvane-figures.") as directory:
        yield directory


def recorder_command(bundle, seconds):
    return [machine.RECORDER, "record", "--display", "main", "--seconds", str(seconds), "--json", "--quiet",
            "--output", bundle]


def movie_in(bundle):
    """The path of the bundle's movie, or None while there is none."""
    names = [name for name in os.listdir(bundle) if name.endswith(".mov")] if os.path.isdir(bundle) else []
    return os.path.join(bundle, names[0]) if names else None


def record(directory, seconds, environment=None):
    """Records the private desktop."""
    bundle = tempfile.mktemp(suffix=".zorvane", dir=directory)
    cpu, server_cpu, output = _run_and_account(recorder_command(bundle, seconds), environment)
    return Run(movie_in(bundle), cpu, server_cpu, json.loads(output))


def record_with_window(directory, seconds, **options):
    """Records it by a host that has a window of its own in front: `exclude` leaves that out, `moving` moves it."""
    bundle = tempfile.mktemp(suffix=".zorvane", dir=directory)
    flags = [text for name, value in options.items() if value for text in (f"--{name}", "1")]
    command = [machine.benchmark_program("record_excluding"), "--seconds", str(seconds), "--output", bundle, *flags]
    cpu, server_cpu, output = _run_and_account(command, None)
    return Run(movie_in(bundle), cpu, server_cpu, json.loads(output))


def grab_with_ffmpeg(directory, seconds, rate_control):
    """The same by ffmpeg, 30 pictures a second, with the encoder that the recorder uses and the same preset."""
    movie = tempfile.mktemp(suffix=".mp4", dir=directory)
    command = ["ffmpeg", "-v", "error", "-nostdin", "-f", "x11grab", "-framerate", "30", "-video_size", "1920x1080",
               "-i", os.environ["DISPLAY"], "-t", str(seconds), "-c:v", "libx264", "-preset", "ultrafast",
               *rate_control, "-pix_fmt", "yuv420p", movie]
    cpu, server_cpu, _ = _run_and_account(command, None)
    return Run(movie, cpu, server_cpu, {})


def _run_and_account(command, environment):
    server = machine.x_server()
    before = machine.cpu_seconds(server)
    with tempfile.TemporaryFile() as output:
        process = subprocess.Popen(command, stdout=output, env={**os.environ, **(environment or {})})
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            raise SystemExit(f"figures: {command[0]} ended with status {process.returncode}")
        output.seek(0)
        said = output.read()
    return usage.ru_utime + usage.ru_stime, machine.cpu_seconds(server) - before, said
