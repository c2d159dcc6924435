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
LIMIT = 0.05  # room for a timer that fires once more in one of the two
# All that isn't one of these counts as ours, also templates of the C++ library, of which the loader takes the first
# copy that it finds in any library.
FOREIGN = re.compile(r"lib(av|sw|x26|xcb)|ld-linux")


def measure(conditions):
    load = conditions.await_quiet()
    (few, slow), (many, fast) = (counts(rate) for rate in RATES)
    frames = many - few
    slopes = {place: (fast[place] - slow[place]) / frames for place in fast | slow}
    own = {place: slope for place, slope in slopes.items() if not FOREIGN.match(os.path.basename(place[0]))}
    others = sum(slow[place] for place in own)
    rows = [Row("allocations for a frame, in our own code and the C and C++ libraries", f"{sum(own.values()):+.3f}",
                f"<= {LIMIT}", sum(own.values()) <= LIMIT, load),
            Row(f"  there in {SECONDS} s with {few} frames, start and finish included", f"{others}", load=load)]
    for (module, offset, name), slope in sorted(own.items(), key=lambda item: -item[1])[:6]:
        if slope > LIMIT / 5:
            rows.append(Row(f"  {os.path.basename(module)} {offset} {name[:60]}", f"{slope:.3f}", load=load))
    foreign = collections.Counter()
    for place, slope in slopes.items():
        if place not in own:
            foreign[os.path.basename(place[0])] += slope
    for module, slope in foreign.most_common():
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
