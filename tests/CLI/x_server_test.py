#!/usr/bin/env python3
"""A recording whose X server goes away."""

import json
import os
import subprocess
import unittest

from zorvane_cli import BARE, PROGRAM, CommandLineTest, wait_for_log


class XServer(CommandLineTest):
    def setUp(self):
        super().setUp()
        reading, writing = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "640x480x24"],
                                       pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        self.addCleanup(self.server.wait)
        self.addCleanup(self.server.kill)
        with open(reading) as number:
            self.environment = {**BARE, "DISPLAY": f":{number.readline().strip()}"}

    def test_its_death_is_told_and_what_was_recorded_plays(self):
        process = subprocess.Popen([PROGRAM, "record", "--json", "-o", "talk", "--log-level", "info"],
                                   **self.options(env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE))
        wait_for_log(process, "Started recording.")
        self.server.kill()
        output, _ = process.communicate()
        self.assertEqual(process.returncode, 3)
        report = json.loads(output)
        self.assertEqual(report["status"], "aborted")
        self.assertIn("X server", report["errors"][0]["message"])
        file, = self.info_json("talk")["files"]
        self.assertAlmostEqual(file["duration"], report["recordUntil"] - report["recordFrom"], delta=0.001)


if __name__ == "__main__":
    unittest.main()
