"""What recording costs the processor, beside ffmpeg doing the same in the same run."""

import statistics

from measurements import programs
from measurements.movie import Movie
from measurements.table import Row

SECONDS = 10
STILL_LIMIT = 0.25  # seconds of CPU
SCROLL_LIMIT = 0.5  # of ffmpeg's
DROP_LIMIT = 0.01


class Comparison:
    """Recordings by both programs, in turns."""

    def __init__(self, conditions, directory):
        self.ours, self.theirs = [], []
        self.load = conditions.await_quiet()
        for _ in range(conditions.repeat):
            conditions.await_quiet()
            self.ours.append(programs.record(directory, SECONDS))
            rate_control = Movie(self.ours[-1].movie).rate_control()
            conditions.await_quiet()
            self.theirs.append(programs.grab_with_ffmpeg(directory, SECONDS, rate_control))
        self.rate_control = " ".join(rate_control)

    def cpu(self):
        return median_of(self.ours, "cpu")

    def their_cpu(self):
        return median_of(self.theirs, "cpu")

    def rows_to_compare_with(self):
        return [
            Row(f"  ffmpeg x11grab, 30 fps, ultrafast {self.rate_control}", spread(self.theirs, "cpu"), load=self.load),
            Row("  X server meanwhile, ours / ffmpeg's",
                f"{median_of(self.ours, 'server_cpu'):.2f} s / {median_of(self.theirs, 'server_cpu'):.2f} s",
                load=self.load),
        ]


def median_of(runs, what):
    return statistics.median(getattr(run, what) for run in runs)


def spread(runs, what):
    values = sorted(getattr(run, what) for run in runs)
    return f"{statistics.median(values):.3f} s ({values[0]:.3f} to {values[-1]:.3f}, {len(values)} runs)"


def measure_still(conditions):
    with programs.directory_for_movies() as directory:
        comparison = Comparison(conditions, directory)
    return [Row("still screen, 10 s of 1080p: CPU of the process", spread(comparison.ours, "cpu"),
                f"<= {STILL_LIMIT} s", comparison.cpu() <= STILL_LIMIT, comparison.load),
            *comparison.rows_to_compare_with()]


def measure_scroll(conditions):
    with programs.directory_for_movies() as directory, programs.client("scroll_client"):
        comparison = Comparison(conditions, directory)
    ratio = comparison.cpu() / comparison.their_cpu()
    return [Row("scrolling terminal, 5 bursts a second: CPU of the process", spread(comparison.ours, "cpu"),
                load=comparison.load),
            Row("  share of ffmpeg's", f"{ratio:.2f}", f"<= {SCROLL_LIMIT}", ratio <= SCROLL_LIMIT, comparison.load),
            *comparison.rows_to_compare_with()]


def measure_motion(conditions):
    with programs.directory_for_movies() as directory, programs.client("motion_client") as client:
        comparison = Comparison(conditions, directory)
        shown = [(int(number), float(time)) for number, time in client.lines()]
        shares = [missing_share(run, shown) for run in comparison.ours]
        cost, their_cost = cost_per_frame(comparison.ours), cost_per_frame(comparison.theirs)
    missing = statistics.median(shares)
    return [
        Row("full-screen motion, 30 fps: frames that are not in the movie",
            f"{missing:.2%} (worst of {len(shares)}: {max(shares):.2%})", f"< {DROP_LIMIT:.0%}", missing < DROP_LIMIT,
            comparison.load),
        Row("  CPU for an encoded frame", f"{cost * 1000:.2f} ms", f"<= ffmpeg's {their_cost * 1000:.2f} ms",
            cost <= their_cost, comparison.load),
        Row("  CPU of the process, 10 s", spread(comparison.ours, "cpu"), load=comparison.load),
        *comparison.rows_to_compare_with(),
    ]


def missing_share(run, shown):
    """The share of the frames shown during a recording that can't be found in its movie."""
    first, last = run.report["recordFrom"], run.report["recordUntil"]
    expected = {number for number, time in shown if first + 0.05 < time < last - 0.05}
    return len(expected - set(Movie(run.movie).stamps())) / len(expected)


def cost_per_frame(runs):
    return statistics.median(run.cpu / len(Movie(run.movie).packets) for run in runs)
