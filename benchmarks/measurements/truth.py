"""When something is seen in a recording, against when it was on the screen."""

import statistics

from measurements import programs
from measurements.movie import Movie
from measurements.table import Row

FLASHES = 40
SECONDS = 16  # longer than the client takes for them
MEDIAN_LIMIT = 0.003
WORST_LIMIT = 0.018


def measure(conditions):
    load = conditions.await_quiet()
    with programs.directory_for_movies() as directory, programs.client("flash_client", "--flashes", FLASHES) as client:
        run = programs.record(directory, SECONDS)
        client.wait()
        shown = [(float(before) + float(after)) / 2 for before, after in client.lines()]
        seen = flashes_in(Movie(run.movie), run.report["recordFrom"])
    first, last = run.report["recordFrom"], run.report["recordUntil"]
    errors = [nearest(seen, moment) - moment for moment in shown if first < moment < last - 0.1]
    sizes = [abs(error) for error in errors]
    median, worst = statistics.median(sizes), max(sizes)
    count = len(errors)
    return [
        Row("time of a flash in the movie against the truth, median", f"{median * 1000:.2f} ms ({count} flashes)",
            "<= 3 ms of at least 30", median <= MEDIAN_LIMIT and count >= 30, load),
        Row("the same, worst", f"{worst * 1000:.2f} ms (from {min(errors) * 1000:+.2f} to {max(errors) * 1000:+.2f})",
            "<= 18 ms", worst <= WORST_LIMIT, load),
    ]


def flashes_in(movie, record_from):
    """The host times of frames that are white where the one before was not."""
    samples = movie.brightness(96, 96, 64)
    frames = list(zip(movie.times(), samples, strict=True))
    return [record_from + float(time) for (_, before), (time, sample) in zip(frames, frames[1:])
            if sample >= 128 > before]


def nearest(moments, moment):
    return min(moments, key=lambda each: abs(each - moment))
