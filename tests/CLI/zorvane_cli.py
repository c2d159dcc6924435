"""What the tests of the command line share: a place of their own, the program, and ways to run it."""

import fcntl
import json
import os
import pathlib
import pty
import select
import signal
import struct
import subprocess
import tempfile
import termios
import unittest

PROGRAM = os.environ["ZORVANE"]
TIME_LIMIT = 60  # seconds; only a program that hangs takes so long

# A machine without a desktop, a session bus and a terminal.
BARE = {"PATH": os.environ["PATH"], "HOME": "/nonexistent", "LANG": "C.UTF-8"}


class CommandLineTest(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="zorvane-cli.")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)

    def options(self, **more):
        return {"cwd": self.place, "env": BARE, "text": True, **more}

    def run_program(self, *arguments, **more):
        return subprocess.run([PROGRAM, *map(str, arguments)], timeout=TIME_LIMIT, stdin=subprocess.DEVNULL,
                              **self.options(**{"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **more}))

    def start(self, *arguments, **more):
        """A recording of the virtual desktop that goes on; returned once it has said so."""
        process = subprocess.Popen([PROGRAM, "record", "--platform", "virtual", *arguments],
                                   **self.options(stdout=subprocess.PIPE, stderr=subprocess.PIPE, **more))
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        return process

    def record(self, *arguments, **more):
        return self.run_program("record", "--platform", "virtual", *arguments, **more)

    def record_json(self, *arguments, status=0, **more):
        result = self.record("--json", *arguments, **more)
        self.assertEqual(result.returncode, status, result.stderr)
        return json.loads(result.stdout)

    def bundle(self, seconds=0.5, name="bundle"):
        self.assertEqual(self.record("--seconds", seconds, "-o", name).returncode, 0)
        return self.place / name

    def manifest(self, bundle, version=1, files=("display-1.mov",)):
        """Writes a bundle's manifest anew."""
        entries = [{"type": "mouse" if name.endswith(".json") else "screen", "filename": name} for name in files]
        (bundle / "zorvane.json").write_text(json.dumps({"version": version, "files": entries}))

    def info_json(self, bundle, status=0):
        result = self.run_program("info", "--json", bundle)
        self.assertEqual(result.returncode, status, result.stderr)
        return json.loads(result.stdout)


def wait_for_log(process, text):
    """Reads the log on a process's standard error up to a line that holds `text`."""
    for line in process.stderr:
        if text in line:
            return line
    raise AssertionError(f"the process ended without saying {text!r}")


def pending(*numbers):
    """For preexec_fn: signals that wait for the program before it has begun."""
    def raise_blocked():
        signal.pthread_sigmask(signal.SIG_BLOCK, numbers)
        for number in numbers:
            os.kill(os.getpid(), number)
    return raise_blocked


class Terminal:
    """A program on a pseudo-terminal, which is 80 columns wide unless told otherwise."""

    def __init__(self, arguments, place, columns=80):
        self.process_id, self.descriptor = pty.fork()
        if self.process_id == 0:
            try:
                fcntl.ioctl(2, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
                os.chdir(place)
                os.execve(PROGRAM, [PROGRAM, *arguments], {**BARE, "TERM": "xterm"})
            finally:  # never a second run of the tests
                os._exit(127)
        self.output = b""

    def read_until(self, wanted):
        """Reads until `wanted(output)`, or to the end if that never holds. Says whether it held."""
        while not wanted(self.output):
            ready, _, _ = select.select([self.descriptor], [], [], TIME_LIMIT)
            try:
                read = os.read(self.descriptor, 65536) if ready else b""
            except OSError:  # the program has closed the terminal
                read = b""
            if not read:
                return False
            self.output += read
        return True

    def type(self, keys):
        os.write(self.descriptor, keys)

    def end(self):
        """The rest of the output is read; returns the exit status."""
        self.read_until(lambda output: False)
        _, status = os.waitpid(self.process_id, 0)
        os.close(self.descriptor)
        return os.waitstatus_to_exitcode(status)
