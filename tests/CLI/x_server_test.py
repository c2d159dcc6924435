#!/usr/bin/env python3
"""A recording whose X server goes away, or hangs."""

import ctypes
import json
import os
import signal
import subprocess
import time
import unittest

from zorvane_cli import BARE, PROGRAM, TIME_LIMIT, CommandLineTest, pending, wait_for_log


PR_SET_PDEATHSIG = 1


def die_with_parent():
    """For preexec_fn: a server that is stopped would outlive an interrupted test otherwise."""
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


class XServer(CommandLineTest):
    def setUp(self):
        super().setUp()
        self.start_server()

    def start_server(self):
        reading, writing = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "640x480x24"],
                                       pass_fds=[writing], stderr=subprocess.DEVNULL, preexec_fn=die_with_parent)
        os.close(writing)
        self.addCleanup(self.server.wait)
        self.addCleanup(self.server.kill)
        with open(reading) as number:
            # The server lets everybody in. Without a file named, the authority library keeps its name in memory that it
            # frees at the exit, under the eyes of a thread that a server that hangs has held up: a race, to a sanitizer.
            self.environment = {**BARE, "DISPLAY": f":{number.readline().strip()}", "XAUTHORITY": "/dev/null"}

    def start_recording(self, name):
        process = subprocess.Popen([PROGRAM, "record", "--json", "-o", name, "--log-level", "info"],
                                   **self.options(env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE))
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        return process

    def recording(self):
        process = self.start_recording("talk")
        wait_for_log(process, "Started recording.")
        return process

    def test_its_death_is_told_and_what_was_recorded_plays(self):
        process = self.recording()
        self.server.kill()
        output, _ = process.communicate()
        self.assertEqual(process.returncode, 3)
        report = json.loads(output)
        self.assertEqual(report["status"], "aborted")
        self.assertIn("X server", report["errors"][0]["message"])
        file, = self.info_json("talk")["files"]
        self.assertAlmostEqual(file["duration"], report["recordUntil"] - report["recordFrom"], delta=0.001)

    def test_its_death_at_any_moment_leaves_a_movie_or_nothing(self):
        for delay in range(0, 200, 20):  # milliseconds
            with self.subTest(delay=delay):
                name = f"talk {delay}"
                process = self.start_recording(name)
                time.sleep(delay / 1000)
                self.server.kill()
                output, errors = process.communicate(timeout=TIME_LIMIT)
                report = json.loads(output)
                if process.returncode == 4:
                    self.assertEqual((report["status"], name in os.listdir(self.place)), ("failed", False), errors)
                else:
                    self.assertEqual((process.returncode, report["status"]), (3, "aborted"), errors)
                    self.assertIsNone(self.info_json(name)["files"][0]["error"])
                self.assertTrue(report["errors"][0]["userMessage"])
                self.start_server()

    def test_a_server_that_hangs_is_told_and_leaves_nothing_behind(self):
        self.server.send_signal(signal.SIGSTOP)
        result = self.run_program("record", "-o", "talk", env=self.environment)
        self.assertEqual(result.returncode, 4)
        self.assertIn("doesn't answer", result.stderr)
        self.assertEqual(os.listdir(self.place), [])

    def test_a_recording_stops_while_the_server_hangs(self):
        process = self.recording()
        self.server.send_signal(signal.SIGSTOP)
        process.send_signal(signal.SIGTERM)
        output, _ = process.communicate(timeout=TIME_LIMIT)
        self.assertEqual(process.returncode, 0)
        report = json.loads(output)
        self.assertEqual(report["status"], "complete")
        file, = self.info_json("talk")["files"]
        self.assertAlmostEqual(file["duration"], report["recordUntil"] - report["recordFrom"], delta=0.001)

    def test_a_server_that_hangs_does_not_keep_the_program_from_stopping(self):
        self.server.send_signal(signal.SIGSTOP)
        result = self.run_program("record", "--json", "-o", "talk", env=self.environment,
                                  preexec_fn=pending(signal.SIGTERM))
        self.assertEqual(result.returncode, 4)
        self.assertEqual(json.loads(result.stdout)["status"], "failed")
        self.assertEqual(os.listdir(self.place), [])


if __name__ == "__main__":
    unittest.main()
