"""A camera against its microphone, the screen and the truth, and what it costs beside a screen in motion."""

import statistics

from measurements import cost, programs, truth
from measurements.movie import Movie
from measurements.sound import RATE, Sound
from measurements.table import Row

SECONDS = 40
COST_SECONDS = 20
FRAME = 1 / 30  # seconds
EDGE = 0.25  # seconds at either end of a recording in which moments are not counted
FLASH = (96, 300, 64)  # where a camera's picture of 640x480 flashes

CAMERA = ["--camera", "zorvane-figures-camera", "--microphone", "zorvane-figures-microphone"]


def measure_sync(conditions):
    load = conditions.await_quiet()
    with programs.directory_for_movies() as directory, \
            programs.client("camera_client", "--width", 640, "--height", 480, "--seconds", SECONDS + 4) as client:
        run = programs.record(directory, SECONDS, sources=["--display", "main", *CAMERA])
        client.wait()
        told = [tuple(map(float, line)) for line in client.lines()]
        begin, end = run.report["recordFrom"] + EDGE, run.report["recordUntil"] - EDGE
        screen, camera = (path for path in run.files if path.endswith(".mov"))
        told = [moments for moments in told if begin < moments[0] < end and begin < moments[3] < end]
        screen_flashes = truth.flashes_in(Movie(screen), run.report["recordFrom"])
        camera_flashes = _camera_flashes(Movie(camera), run.report["recordFrom"])
        falls = [run.report["recordFrom"] + fall for fall in _falls(Sound(camera))]
    seen = [truth.nearest(camera_flashes, taken) - taken for _, _, _, taken in told]
    heard = [truth.nearest(falls, second) - second for second, _, _, _ in told]
    shown = [truth.nearest(screen_flashes, (before + after) / 2) - (before + after) / 2 for _, before, after, _ in told]
    return [
        *_rows("camera against the truth", seen, load),
        *_rows("camera's microphone against the truth", heard, load),
        *_rows("camera against its microphone", _differences(seen, heard), load),
        *_rows("camera against the screen", _differences(seen, shown), load),
    ]


def measure_cost(conditions):
    """A camera of 1080p30 beside a screen of 1080p in motion: what is missing in the movies, and what it costs."""
    rows = []
    for name, options in [("raw pictures", []), ("JPEGs", ["--jpeg", 1])]:
        load = conditions.await_quiet()
        with programs.directory_for_movies() as directory, programs.client("camera_client", *options):
            alone = programs.record(directory, COST_SECONDS, sources=CAMERA)
            with programs.client("motion_client") as client:
                run = programs.record(directory, COST_SECONDS, sources=["--display", "main", *CAMERA])
                shown = [(int(number), float(time)) for number, time in client.lines()]
            screen, camera = (path for path in run.files if path.endswith(".mov"))
            missing = cost.missing_share(programs.Run(screen, 0, 0, run.report), shown)
            interval = run.report["recordUntil"] - run.report["recordFrom"]
            pictures, sound = Movie(camera), Sound(camera)
            expected = round(interval / FRAME)
            gaps = _gaps(sound, run.report["recordFrom"])
            rows += [
                Row(f"camera of 1080p30, {name}, alone: CPU", f"{alone.cpu / COST_SECONDS * 100:.0f} % of a core", load=load),
                Row("  its pictures in the movie", _count(Movie(alone.files[0]), alone, load)),
                Row("  beside a screen in motion: CPU", f"{run.cpu / COST_SECONDS * 100:.0f} % of a core", load=load),
                Row("  camera's pictures in the movie", f"{len(pictures.packets)} of {expected}", load=load),
                Row("  screen's frames that are not in the movie", f"{missing:.2%}", load=load),
                Row("  pieces of 2 ms that are missing in the sound", str(gaps), "0", gaps == 0, load),
            ]
    return rows


def _count(movie, run, load):
    interval = run.report["recordUntil"] - run.report["recordFrom"]
    return f"{len(movie.packets)} of {round(interval / FRAME)}"


def _camera_flashes(movie, record_from):
    samples = movie.brightness(*FLASH)
    frames = list(zip(movie.times(), samples, strict=True))
    return [record_from + float(time) for (_, before), (time, sample) in zip(frames, frames[1:])
            if sample >= 170 > before]


def _falls(sound):
    """When the ramp falls from its height, in seconds of the file."""
    samples = sound.samples()
    half = 16384
    return [index / RATE for index in range(8, len(samples))
            if samples[index] < half <= samples[index - 1] and samples[index - 8] > 3 * half // 2]


def _gaps(sound, record_from):
    """How many pieces of 2 ms are silent, or nearly, where the ramp was in its upper half. An encoder makes waves of the
    ramp that go down to half of it, and worse ones near its fall, which is left out."""
    samples = sound.samples()
    piece = RATE // 500
    gaps = 0
    for begin in range(0, len(samples) - piece, piece):
        heard = (record_from + (begin + piece / 2) / RATE) % 1
        mean = sum(samples[begin:begin + piece]) / piece / 32767
        gaps += 0.5 < heard < 0.88 and mean < heard / 4
    return gaps


def _differences(some, others):
    return [one - other for one, other in zip(some, others)]


def _rows(what, errors, load):
    sizes = [abs(error) for error in errors]
    median, worst = statistics.median(sizes), max(sizes)
    return [
        Row(f"{what}, median and worst",
            f"{median * 1000:.2f} ms, {worst * 1000:.2f} ms ({len(errors)} moments, {min(errors) * 1000:+.2f} to "
            f"{max(errors) * 1000:+.2f})", "<= 33 ms of at least 30", worst <= FRAME and len(errors) >= 30, load),
    ]
