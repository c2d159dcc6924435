#!/usr/bin/env python3
"""The side files of recordings of the virtual desktop, as the program tells of them and as other programs read them."""

import collections
import json
import pathlib
import signal
import subprocess
import sys
import time
import unittest

from zorvane_cli import BARE, TIME_LIMIT, CommandLineTest, wait_for_log

READER = pathlib.Path(__file__).resolve().parents[2] / "examples" / "read_bundle.py"
SOURCES = ["--mouse", "--keyboard", "--top-window"]


def seconds(element):
    return element["time"]["value"] / element["time"]["timescale"]


class SideFiles(CommandLineTest):
    def read(self, *arguments):
        return subprocess.run([sys.executable, "-B", READER, *arguments], timeout=TIME_LIMIT, env=BARE, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def side_file(self, bundle, kind):
        manifest = json.loads((bundle / "zorvane.json").read_text())
        name, = [file["filename"] for file in manifest["files"] if file["type"] == kind]
        return bundle / name

    def test_they_are_listed_summed_up_and_read_by_the_example(self):
        report = self.record_json(*SOURCES, "--seconds", "3", "-o", "talk")
        bundle = self.place / "talk"
        self.assertEqual([file["type"] for file in report["files"]], ["screen", "mouse", "topWindow"])
        length = report["recordUntil"] - report["recordFrom"]

        text = self.side_file(bundle, "mouse").read_text()
        events = json.loads(text)
        self.assertEqual(len(text.splitlines()), len(events) + 2)
        times = [seconds(event) for event in events]
        self.assertEqual(times, sorted(times))
        self.assertTrue(all(0 <= each < length for each in times))
        kinds = collections.Counter(event["type"] for event in events)
        self.assertLessEqual({"mouse", "keyboard"}, set(kinds))
        windows = json.loads(self.side_file(bundle, "topWindow").read_text())
        self.assertEqual(seconds(windows[0]), 0)
        self.assertAlmostEqual(seconds(windows[-1]), length, delta=1e-6)

        info = {file["type"]: file for file in self.info_json(bundle)["files"]}
        self.assertEqual(sum(info["mouse"]["input"]["events"].values()), len(events))
        downs = [event for event in events if event.get("mouseEventType") == "down"]
        self.assertEqual(sum(info["mouse"]["input"]["clicks"].values()), len(downs))
        on_top = info["topWindow"]["topWindows"]
        self.assertAlmostEqual(sum(each["seconds"] for each in on_top["windows"]) + on_top["secondsWithout"], length,
                               delta=1e-6)
        summary = self.run_program("info", bundle).stdout
        self.assertIn(f"  {len(events)} events: ", summary)
        self.assertIn('"Virtual Window", Virtual Application', summary)

        told = self.read(bundle)
        self.assertEqual((told.returncode, told.stderr), (0, ""))
        self.assertEqual(told.stdout.count("  press "), len(downs))
        self.assertIn("in front: 'Virtual Window' (Virtual Application)", told.stdout)

    def test_who_types_is_told_also_when_quiet_is_asked_for(self):
        told = "zorvane: Every key that is pressed is recorded, passwords too.\n"
        for quiet in [[], ["--quiet"]]:
            with self.subTest(quiet=quiet):
                self.assertIn(told, self.record("--keyboard", "--seconds", "0.3", *quiet).stderr)
        self.assertNotIn("key", self.record("--mouse", "--seconds", "0.3").stderr)

    def test_those_of_a_killed_recording_are_repaired_by_the_example(self):
        process = self.start(*SOURCES, "-o", "talk", "--log-level", "info")
        wait_for_log(process, "Started recording.")
        bundle = self.place / "talk"
        files = [bundle / "display-1.input-events.json", bundle / "display-1.top-windows.json"]
        deadline = time.monotonic() + TIME_LIMIT
        while files[0].read_bytes().count(b"\n") < 5 and time.monotonic() < deadline:
            time.sleep(0.02)
        process.send_signal(signal.SIGKILL)
        process.wait()
        whole_lines = files[0].read_bytes().count(b"\n") - 1
        told = self.read("--repair", bundle)
        self.assertEqual(told.returncode, 0, told.stderr)
        self.assertEqual(told.stderr.count("was cut off"), 2)
        self.assertGreaterEqual(len(json.loads(files[0].read_text())), whole_lines)
        self.assertIsInstance(json.loads(files[1].read_text()), list)  # a window that stays in front is written at the end
        self.assertEqual(self.read(bundle).stderr, "")

    def test_a_repair_only_ends_a_file_and_stays_in_the_bundle(self):
        absent = b'{"time":{"seconds":0,"timescale":1,"value":0},"type":"absent"}'
        whole = b"[\n" + absent + b",\n" + absent + b"\n]"
        bundle = self.place / "killed"
        bundle.mkdir()
        path = bundle / "display-1.top-windows.json"
        for size in [0, 1, 2, 20, len(absent) + 2, len(absent) + 3, len(absent) + 9, len(whole) - 2, len(whole)]:
            with self.subTest(size=size):
                path.write_bytes(whole[:size])
                told = self.read("--repair", bundle)
                count = whole[:size].count(absent)
                self.assertEqual((told.returncode, told.stdout.count("no window")), (0, count), told.stderr)
                self.assertEqual(path.read_bytes(), b"[\n" + b",\n".join([absent] * count) + b"\n]")
        outside = self.place / "outside.json"
        outside.write_bytes(b"[\n" + absent)
        (bundle / "zorvane.json").write_text('{"files":[{"filename":"../outside.json","type":"mouse"}],"version":1}')
        self.assertEqual(self.read("--repair", bundle).returncode, 1)
        self.assertEqual(outside.read_bytes(), b"[\n" + absent)

    def test_one_that_is_broken_or_cut_off_is_told(self):
        bundle = self.bundle()
        (bundle / "broken.json").write_text('[\n{"type":"mice"}\n]')
        (bundle / "text.json").write_text("no side file")
        (bundle / "cut.json").write_text('[\n{"modifiers":[],"time":{"seconds":1,"timescale":1,"value":1},'
                                         '"type":"modifiersChanged"},\n{"modif')
        self.manifest(bundle, files=["broken.json", "text.json", "cut.json"])
        files = {file["filename"]: file for file in self.info_json(bundle, status=3)["files"]}
        self.assertIn("mice", files["broken.json"]["error"])
        self.assertIsNotNone(files["text.json"]["error"])
        self.assertEqual(files["cut.json"]["input"]["events"], {"modifiersChanged": 1})


if __name__ == "__main__":
    unittest.main()
