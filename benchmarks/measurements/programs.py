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

    movie: str  # None where there is none
    cpu: float  # seconds of user and system time, of the whole process from its start to its end
    server_cpu: float  # of the X server meanwhile
    report: dict  # what the recorder says; empty of other programs
    files: list = dataclasses.field(default_factory=list)  # paths, in the order of the manifest


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


DISPLAY = ("--display", "main")


def recorder_command(bundle, seconds, sources=DISPLAY):
    return [machine.RECORDER, "record", *sources, "--seconds", str(seconds), "--json", "--quiet", "--output", bundle]


def movie_in(bundle):
    """The path of the bundle's movie, or None while there is none."""
    names = [name for name in os.listdir(bundle) if name.endswith(".mov")] if os.path.isdir(bundle) else []
    return os.path.join(bundle, names[0]) if names else None


def record(directory, seconds, environment=None, sources=DISPLAY):
    """Records the private desktop; `sources` are the recorder's options for what it is to record."""
    bundle = tempfile.mktemp(suffix=".zorvane", dir=directory)
    cpu, server_cpu, output = _run_and_account(recorder_command(bundle, seconds, sources), environment)
    report = json.loads(output)
    files = [os.path.join(bundle, file["filename"]) for file in report["files"]]
    return Run(movie_in(bundle), cpu, server_cpu, report, files)


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


SPEAKERS = "zorvane-test-speakers.monitor"  # of the private desktop


def grab_with_sound_by_ffmpeg(directory, seconds):
    movie = tempfile.mktemp(suffix=".mp4", dir=directory)
    command = ["ffmpeg", "-v", "error", "-nostdin", "-f", "x11grab", "-framerate", "30", "-video_size", "1920x1080",
               "-i", os.environ["DISPLAY"], "-f", "pulse", "-i", SPEAKERS, "-t", str(seconds), "-c:v", "libx264",
               "-preset", "ultrafast", "-pix_fmt", "yuv420p", "-c:a", "aac", movie]
    cpu, server_cpu, _ = _run_and_account(command, None)
    return Run(movie, cpu, server_cpu, {})


def grab_with_sound_by_gstreamer(directory, seconds):
    """Ended by an interrupt, upon which it closes the file."""
    movie = tempfile.mktemp(suffix=".mp4", dir=directory)
    picture = ["ximagesrc", "use-damage=false", "!", "video/x-raw,framerate=30/1", "!", "queue", "!", "videoconvert",
               "!", "x264enc", "speed-preset=ultrafast", "tune=zerolatency", "!", "queue", "!", "mux."]
    sound = ["pulsesrc", f"device={SPEAKERS}", "!", "queue", "!", "audioconvert", "!", "avenc_aac", "!", "queue", "!",
             "mux."]
    command = ["timeout", "--signal=INT", str(seconds), "gst-launch-1.0", "-q", "-e", *picture, *sound, "mp4mux",
               "name=mux", "!", "filesink", f"location={movie}"]
    cpu, server_cpu, _ = _run_and_account(command, None, accepted=(0, 124))
    return Run(movie, cpu, server_cpu, {})


def _run_and_account(command, environment, accepted=(0,)):
    server = machine.x_server()
    before = machine.cpu_seconds(server)
    with tempfile.TemporaryFile() as output:
        process = subprocess.Popen(command, stdout=output, env={**os.environ, **(environment or {})})
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode not in accepted:
            raise SystemExit(f"figures: {command[0]} ended with status {process.returncode}")
        output.seek(0)
        said = output.read()
    return usage.ru_utime + usage.ru_stime, machine.cpu_seconds(server) - before, said
