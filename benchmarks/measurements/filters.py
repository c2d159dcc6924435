"""What leaving a window out of the picture costs, and that it is left out."""

import statistics

from measurements import programs
from measurements.cost import spread
from measurements.movie import Movie
from measurements.table import Row

SECONDS = 10
COST_LIMIT = 2.0  # times the CPU of a recording that leaves nothing out
GREY_LIMIT = 40  # of 128: the window's magenta has about 100, the encoder's errors in a grey picture below 20


def measure_cost(conditions):
    plain, filtered = [], []
    with programs.directory_for_movies() as directory, programs.client("motion_client"):
        load = conditions.await_quiet()
        for _ in range(conditions.repeat):
            conditions.await_quiet()
            plain.append(programs.record_with_window(directory, SECONDS))
            conditions.await_quiet()
            filtered.append(programs.record_with_window(directory, SECONDS, exclude=True))
        frames = [statistics.median(len(Movie(run.movie).packets) for run in runs) for runs in (plain, filtered)]
    ratio = statistics.median(run.cpu for run in filtered) / statistics.median(run.cpu for run in plain)
    servers = [statistics.median(run.server_cpu for run in runs) for runs in (filtered, plain)]
    return [Row("full-screen motion with a window left out: CPU of the process", spread(filtered, "cpu"), load=load),
            Row("  the same with nothing left out", spread(plain, "cpu"), load=load),
            Row("  ratio", f"{ratio:.2f}", f"<= {COST_LIMIT:.0f}", ratio <= COST_LIMIT, load),
            Row("  frames, left out / not", f"{frames[1]:.0f} / {frames[0]:.0f}", load=load),
            Row("  X server meanwhile, left out / not", f"{servers[0]:.2f} s / {servers[1]:.2f} s", load=load)]


def measure_exclusion(conditions):
    load = conditions.await_quiet()
    with programs.directory_for_movies() as directory, programs.client("motion_client", "--grey", 1):
        shown = Movie(programs.record_with_window(directory, SECONDS, moving=True).movie).strongest_color()
        hidden = Movie(programs.record_with_window(directory, SECONDS, moving=True, exclude=True).movie).strongest_color()
    if min(shown) <= GREY_LIMIT:
        raise SystemExit("figures: the window does not show in a recording that leaves nothing out")
    colored = sum(value > GREY_LIMIT for value in hidden)
    return [Row(f"frames of {len(hidden)} that show a moving window which is left out",
                f"{colored} (strongest colour {max(hidden):.0f} of 128; {min(shown):.0f} where it shows)", "0",
                colored == 0, load)]
