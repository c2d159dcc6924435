"""How often a recording asks for memory, for each frame more that it has."""

import collections
import os
import re

from measurements import machine, programs
from measurements.movie import Movie
from measurements.table import Row

LENGTHS = (4, 16)  # seconds
LIMIT = 0.05  # for each frame: what a fragment of many frames, a timer or a log line needs now and then
FOREIGN = re.compile(r"lib(av|sw|x26|xcb|ld-linux)")


def measure(conditions):
    load = conditions.await_quiet()
    with programs.directory_for_movies() as directory, programs.client("motion_client"):
        (few, short), (many, long) = (counts(directory, seconds) for seconds in LENGTHS)
    frames = many - few
    slopes = {place: (long[place] - short[place]) / frames for place in long}
    own = {place: slope for place, slope in slopes.items() if not FOREIGN.match(os.path.basename(place[0]))}
    rows = [Row("allocations for each frame, our own code and the C and C++ libraries", f"{sum(own.values()):.3f}",
                f"<= {LIMIT}", sum(own.values()) <= LIMIT, load)]
    for (module, offset, name), slope in sorted(own.items(), key=lambda item: -item[1])[:6]:
        if slope > 0.005:
            rows.append(Row(f"  {os.path.basename(module)} {offset} {name[:60]}", f"{slope:.3f}", load=load))
    foreign = collections.Counter()
    for place, slope in slopes.items():
        if place not in own:
            foreign[os.path.basename(place[0])] += slope
    for module, slope in foreign.most_common():
        rows.append(Row(f"  inside {module}", f"{slope:.2f}", load=load))
    return rows


def counts(directory, seconds):
    """The frames of a recording, and how often each place in the code asked for memory."""
    path = os.path.join(directory, f"allocations-{seconds}")
    run = programs.record(directory, seconds, {"LD_PRELOAD": machine.benchmark_program("libcount_allocations.so"),
                                               "ALLOCATIONS": path})
    places = collections.Counter()
    with open(path, encoding="ascii") as file:
        for line in file:
            count, module, offset, name = line.split(maxsplit=3)
            places[module, offset, name.strip()] += int(count)
    return len(Movie(run.movie).packets), places
