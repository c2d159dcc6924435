"""How often a recording asks for memory for a frame.

Two recordings of the same length, of motion at two rates: what happens now and then (a fragment of the movie is full, a
timer fires) happens as often in both, so the difference is what the frames cost.
"""

import collections
import os
import re

from measurements import machine, programs
from measurements.movie import Movie
from measurements.table import Row

SECONDS = 12
RATES = (10, 30)  # frames a second
# Of a place that asks for each frame, or for every few. Fragments of the movie begin at frames, so that they and their
# timers are a little more numerous at the higher rate.
NOTEWORTHY = 0.1
# All that isn't one of these counts as ours, also templates of the C++ library, of which the loader takes the first
# copy that it finds in any library.
FOREIGN = re.compile(r"lib(av|sw|x26|xcb)|ld-linux")


def measure(conditions):
    load = conditions.await_quiet()
    (few, slow), (many, fast) = (counts(rate) for rate in RATES)
    frames = many - few
    slopes = {place: (fast[place] - slow[place]) / frames for place in fast | slow}
    own = {place: slope for place, slope in slopes.items() if not FOREIGN.match(os.path.basename(place[0]))}
    frequent = [place for place, slope in own.items() if slope > NOTEWORTHY]
    rows = [Row("places in our code that ask for memory frame by frame", f"{len(frequent)}", "0", not frequent, load)]
    rows += [Row(f"  {os.path.basename(module)} {offset} {name[:60]}", f"{own[module, offset, name]:.2f} a frame",
                 load=load) for module, offset, name in frequent]
    rows.append(Row("  allocations for a frame, all our places together", f"{sum(own.values()):+.3f}", load=load))
    foreign = collections.Counter()
    for place, slope in slopes.items():
        if place not in own:
            foreign[os.path.basename(place[0])] += slope
    for module, slope in foreign.most_common():
        if slope > NOTEWORTHY:
            rows.append(Row(f"  inside {module}", f"{slope:.2f}", load=load))
    return rows


def counts(rate):
    """The frames of a recording, and how often each place in the code asked for memory."""
    with programs.directory_for_movies() as directory, \
            programs.client("motion_client", "--fps", rate, "--width", 960, "--height", 540):
        path = os.path.join(directory, "allocations")
        run = programs.record(directory, SECONDS, {"LD_PRELOAD": machine.benchmark_program("libcount_allocations.so"),
                                                   "ALLOCATIONS": path})
        places = collections.Counter()
        with open(path, encoding="ascii") as file:
            for line in file:
                count, module, offset, name = line.split(maxsplit=3)
                places[module, offset, name.strip()] += int(count)
        return len(Movie(run.movie).packets), places
