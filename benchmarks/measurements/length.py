"""How long a recording's track is, against how long it should be."""

from measurements import programs
from measurements.movie import Movie
from measurements.table import Row

LENGTHS = [0.2, 0.5, 0.77, 1, 1.5, 2.34, 3, 4.1, 5.55, 7]  # seconds


def measure(conditions):
    load = conditions.await_quiet()
    errors, begins_at_zero, rises = [], True, True
    with programs.directory_for_movies() as directory, programs.client("scroll_client"):
        for seconds in LENGTHS:
            run = programs.record(directory, seconds)
            movie = Movie(run.movie)
            errors.append(abs(float(movie.duration) - (run.report["recordUntil"] - run.report["recordFrom"])))
            times = movie.times()
            begins_at_zero &= movie.start == 0 and times[0] == 0
            rises &= all(earlier < later for earlier, later in zip(times, times[1:]))
    return [
        Row("track's duration against the recording's, worst of ten", f"{max(errors) * 1000:.3f} ms", "<= 1 ms",
            max(errors) <= 0.001, load),
        Row("  tracks that begin at 0 with strictly rising times", "all" if begins_at_zero and rises else "not all",
            "all", begins_at_zero and rises, load),
    ]
