"""The machine that is measured on, and the programs that measurements are made with."""

import os
import platform
import time

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
BUILD = os.path.join(ROOT, "build", "release")
RECORDER = os.path.join(BUILD, "apps", "zorvane", "zorvane")
TICKS_PER_SECOND = os.sysconf("SC_CLK_TCK")


def benchmark_program(name):
    return os.path.join(BUILD, "benchmarks", name)


def description():
    with open("/proc/cpuinfo", encoding="ascii") as file:
        models = [line.split(":")[1].strip() for line in file if line.startswith("model name")]
    return f"{len(models)} x {models[0]}, Linux {platform.release()}"


class Conditions:
    """How measurements are to be made."""

    IDLE = 0.95  # share of idle processor time that counts as quiet
    PATIENCE = 1800.0  # seconds

    def __init__(self, repeat, when_quiet):
        self.repeat = repeat
        self.when_quiet = when_quiet

    def await_quiet(self):
        """Returns the load of the last minute, a part of which is the measurement before."""
        deadline = time.monotonic() + self.PATIENCE
        while self.when_quiet and idle_share(2.0) < self.IDLE:
            if time.monotonic() > deadline:
                raise SystemExit("figures: the machine did not fall quiet")
        return os.getloadavg()[0]


def idle_share(seconds):
    before, total_before = _idle_and_total()
    time.sleep(seconds)
    after, total_after = _idle_and_total()
    return (after - before) / max(1, total_after - total_before)


def _idle_and_total():
    with open("/proc/stat", encoding="ascii") as file:
        ticks = [int(field) for field in file.readline().split()[1:9]]
    return ticks[3] + ticks[4], sum(ticks)


def x_server():
    """The process of the private desktop's X server, which is a child of the same parent as this process."""
    parent = os.getppid()
    with open(f"/proc/{parent}/task/{parent}/children", encoding="ascii") as file:
        for pid in file.read().split():
            with open(f"/proc/{pid}/comm", encoding="ascii") as comm:
                if comm.read().strip() == "Xvfb":
                    return int(pid)
    raise SystemExit("figures: there is no private X server")


def cpu_seconds(pid):
    """What a running process has used up so far."""
    with open(f"/proc/{pid}/stat", encoding="ascii") as file:
        fields = file.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / TICKS_PER_SECOND
