#!/usr/bin/env python3
"""The example hosts, run as a newcomer would."""

import os
import pathlib
import subprocess
import unittest

from zorvane_cli import BARE, TIME_LIMIT, CommandLineTest

EXAMPLES = pathlib.Path(os.environ["ZORVANE_EXAMPLES"])


@unittest.skipUnless(EXAMPLES.is_dir(), "the examples are not part of this build")
class Examples(CommandLineTest):
    def example(self, name, *arguments, text=True):
        environment = {**BARE, "TMPDIR": str(self.place), "XDG_CONFIG_HOME": str(self.place)}
        result = subprocess.run([EXAMPLES / f"zorvane_example_{name}", *arguments], timeout=TIME_LIMIT, text=text,
                                env=environment, stdin=subprocess.DEVNULL, capture_output=True)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result

    def recorded(self, name, types):
        """The files of the bundle whose path is the first line that an example prints, all of one length."""
        bundle = pathlib.Path(self.example(name, "--virtual", "1").stdout.splitlines()[0])
        files = self.info_json(bundle)["files"]
        self.assertEqual([file["type"] for file in files], types)
        for file in files:
            self.assertAlmostEqual(file["duration"], files[0]["duration"], delta=0.0001, msg=file["filename"])
            self.assertGreater(file["duration"], 0.9)

    def test_a_host_that_blocks(self):
        self.recorded("record_display", ["screen"])

    def test_a_host_with_an_event_loop(self):
        self.recorded("event_loop", ["screen"])

    def test_a_host_of_coroutines(self):
        self.recorded("record_camera", ["webcam", "screen"])

    def test_a_host_that_takes_the_sound_itself(self):
        sound = self.example("stream_microphone", "--virtual", "1", text=False).stdout
        self.assertAlmostEqual(len(sound) / 4 / 48000, 1, delta=0.3)

    def test_a_host_that_watches_sources(self):
        self.assertIn("is called Virtual Window", self.example("watch_windows", "--virtual", "1").stdout)

    def test_clicks_of_a_recording(self):
        self.assertEqual(self.record("--mouse", "--seconds", "2", "-o", "talk").returncode, 0)
        clicks = self.example("list_clicks", str(self.place / "talk/display-1.input-events.json"), "1920", "1080")
        self.assertRegex(clicks.stdout, r"^ +\d+\.\d{3} s +\d+, +\d+\n")


if __name__ == "__main__":
    unittest.main()
