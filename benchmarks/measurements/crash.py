"""What is left of a recording whose process is killed."""

import os
import random
import signal
import subprocess
import time

from measurements import programs
from measurements.movie import Movie
from measurements.table import Row

KILLS = 14  # while it records
KILLS_DURING_FINISH = 6
LOSS_LIMIT = 1.0  # seconds
LONGEST_GAP = 4  # frames between two that follow each other in the movie, when nothing is missing


class Outcome:
    """One killed recording: what is wrong with its movie, if anything, and how many seconds of its end are lost."""

    def __init__(self, bundle, ended_at, shown):
        self.problem, self.loss = "", None
        path = programs.movie_in(bundle)
        if not path:
            self.problem = "no movie"
            return
        try:
            movie = Movie(path)
            self.problem = movie.decoding_errors()
            stamps = [stamp for stamp in movie.stamps() if stamp is not None]
        except (subprocess.CalledProcessError, KeyError, IndexError) as error:
            self.problem = f"the movie can't be opened: {error}"
            return
        if not stamps:
            self.problem = "no frame in the movie"
            return
        gaps = [later - earlier for earlier, later in zip(stamps, stamps[1:])]
        if gaps and (min(gaps) < 0 or max(gaps) > LONGEST_GAP):
            self.problem = f"{max(gaps) - 1} frames are missing after {gaps.index(max(gaps)) + 1} of {len(stamps)}"
        self.loss = ended_at - shown[stamps[-1]]


def measure(conditions):
    load = conditions.await_quiet()
    chance = random.Random(1)
    with programs.directory_for_movies() as directory, \
            programs.client("motion_client", "--width", 960, "--height", 540) as client:
        outcomes = [kill_one(directory, client, chance.uniform(1.5, 5), None) for _ in range(KILLS)]
        outcomes += [kill_one(directory, client, chance.uniform(1.5, 3), chance.uniform(0, 0.03))
                     for _ in range(KILLS_DURING_FINISH)]
    problems = [outcome.problem for outcome in outcomes if outcome.problem]
    worst = max((outcome.loss for outcome in outcomes if outcome.loss is not None), default=float("inf"))
    opened = f"{len(outcomes) - len(problems)} of {len(outcomes)}"
    return [
        Row(f"movies that play after kill -9, {KILLS_DURING_FINISH} of them during the finish",
            opened + "".join(f"; {problem}" for problem in sorted(set(problems))), "all", not problems, load),
        Row("  what is lost at the end, worst", f"{worst:.2f} s", f"<= {LOSS_LIMIT:.0f} s", worst <= LOSS_LIMIT, load),
    ]


def kill_one(directory, client, seconds, seconds_into_finish):
    """Records for so long; then kills the recorder, at once or so long after it was asked to finish."""
    bundle = os.path.join(directory, f"{time.monotonic_ns()}.zorvane")
    process = subprocess.Popen(programs.recorder_command(bundle, 60), stdout=subprocess.DEVNULL)
    time.sleep(seconds)
    ended_at = time.monotonic()
    if seconds_into_finish is not None:
        process.send_signal(signal.SIGINT)
        time.sleep(seconds_into_finish)
    process.kill()
    process.wait()
    time.sleep(0.1)  # until the client has told of the frames before
    return Outcome(bundle, ended_at, {int(number): float(moment) for number, moment in client.lines()})
