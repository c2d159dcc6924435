"""What is in a file's sound, seen with ffprobe and ffmpeg."""

import fractions
import json
import subprocess

RATE = 48000
BLOCK = RATE // 1000  # a millisecond
LOUD = 0.25 * 32767  # of a beep, which is much louder, and of nothing else
QUIET_BLOCKS = 30  # before a beep


class Sound:
    """The sound track of a file. Times are seconds since the file's beginning."""

    def __init__(self, path):
        self.path = path
        probed = json.loads(_output("ffprobe", "-v", "error", "-select_streams", "a:0", "-show_streams", "-of", "json",
                                    path))
        stream = probed["streams"][0]
        self.rate = int(stream["sample_rate"])
        self.start = fractions.Fraction(stream.get("start_time", "0"))
        self.duration = int(stream.get("duration_ts", 0)) * fractions.Fraction(stream["time_base"])

    def samples(self):
        """All of it as one channel of 16 bits, silence where the file has nothing."""
        decoded = _output("ffmpeg", "-v", "error", "-nostdin", "-i", self.path, "-map", "0:a:0", "-af",
                          f"aresample={RATE}:async=1:first_pts=0", "-ac", "1", "-f", "s16le", "-")
        return memoryview(decoded).cast("h")

    def decoded_frames(self):
        """How many frames a decoder gives, which hides what the encoder had put in front."""
        decoded = _output("ffmpeg", "-v", "error", "-nostdin", "-i", self.path, "-map", "0:a:0", "-ac", "1", "-f",
                          "s16le", "-")
        return len(decoded) // 2

    def beeps(self):
        """When each beep begins."""
        samples = self.samples()
        beginnings, quiet = [], QUIET_BLOCKS
        for begin in range(0, len(samples) - BLOCK, BLOCK):
            block = samples[begin:begin + BLOCK]
            if max(max(block), -min(block)) < LOUD:
                quiet += 1
                continue
            if quiet >= QUIET_BLOCKS:
                first = next(index for index, sample in enumerate(block) if abs(sample) >= LOUD)
                beginnings.append((begin + first) / RATE)
            quiet = 0
        return beginnings


def _output(*command):
    return subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=True).stdout
