"""What is in a movie, seen with ffprobe and ffmpeg."""

import fractions
import json
import re
import subprocess

STAMP_SQUARE = 32  # as motion_client draws them
STAMP_SQUARES = 26
EACH_FRAME = ("-fps_mode", "passthrough", "-enc_time_base", "-1")  # none dropped, none doubled


class Packet:
    """One encoded frame."""

    def __init__(self, entry, time_base):
        self.time = int(entry["pts"]) * time_base
        self.size = int(entry["size"])


class Movie:
    """The video track of a file. Times are exact fractions of a second."""

    def __init__(self, path):
        self.path = path
        probed = json.loads(_output("ffprobe", "-v", "error", "-select_streams", "v:0", "-show_streams",
                                    "-show_packets", "-of", "json", path))
        stream = probed["streams"][0]
        time_base = fractions.Fraction(stream["time_base"])
        self.start = int(stream["start_pts"]) * time_base
        self.duration = int(stream.get("duration_ts", 0)) * time_base
        self.packets = [Packet(entry, time_base) for entry in probed["packets"]]

    def times(self):
        return [packet.time for packet in self.packets]

    def rate_control(self):
        """The encoder's rate control in the words of ffmpeg's options, from what the encoder wrote into the stream."""
        with open(self.path, "rb") as file:
            content = file.read()
        settings = re.search(rb"x264 - core[^\0]*", content).group().decode("ascii", "replace")
        constant = re.search(r" qp=(\d+)", settings)
        if "rc=cqp" in settings:
            return ["-qp", constant.group(1)]
        return ["-crf", re.search(r" crf=([\d.]+)", settings).group(1)]

    def brightness(self, x, y, side):
        """Of each frame, the mean of a square, from 0 to 255."""
        return self._samples(f"crop={side}:{side}:{x}:{y},scale=1:1:flags=area,format=gray")

    def stamps(self):
        """Of each frame, the number that motion_client wrote into it, or None where there is none."""
        width = STAMP_SQUARE * STAMP_SQUARES
        samples = self._samples(f"crop={width}:{STAMP_SQUARE}:0:0,scale={STAMP_SQUARES}:1:flags=area,format=gray")
        frames = [samples[index:index + STAMP_SQUARES] for index in range(0, len(samples), STAMP_SQUARES)]
        return [_number(frame) for frame in frames]

    def strongest_color(self):
        """Of each frame, how far its most colourful pixel is from grey, from 0 to 128."""
        printed = _output("ffmpeg", "-v", "error", "-nostdin", "-i", self.path, *EACH_FRAME, "-vf",
                          "signalstats,metadata=print:file=-", "-f", "null", "-").decode("ascii")
        frames = [re.findall(r"signalstats\.[UV]M(?:IN|AX)=([\d.]+)", frame) for frame in printed.split("frame:")[1:]]
        return [max(abs(float(value) - 128) for value in frame) for frame in frames]

    def decoding_errors(self):
        command = ["ffmpeg", "-v", "error", "-nostdin", "-xerror", "-i", self.path, *EACH_FRAME, "-f", "null", "-"]
        result = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False)
        return result.stderr.decode().strip() or (f"status {result.returncode}" if result.returncode else "")

    def _samples(self, filters):
        return _output("ffmpeg", "-v", "error", "-nostdin", "-i", self.path, *EACH_FRAME, "-vf", filters,
                       "-f", "rawvideo", "-")


def _number(squares):
    if squares[0] < 128 or squares[1] >= 128:
        return None
    return int("".join("1" if sample >= 128 else "0" for sample in squares[2:]), 2)


def _output(*command):
    return subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=True).stdout
