#!/usr/bin/env python3
"""What there is to record: tables, JSON, and changes as they come."""

import json
import os
import signal
import subprocess
import unittest

from zorvane_cli import PROGRAM, CommandLineTest

KINDS = ["displays", "windows", "cameras", "microphones", "applications", "devices"]


class Sources(CommandLineTest):
    def sources(self, *arguments):
        result = self.run_program("sources", "--platform", "virtual", *arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    def watch(self, *arguments):
        process = subprocess.Popen([PROGRAM, "sources", "--platform", "virtual", "--watch", *arguments],
                                   **self.options(stdout=subprocess.PIPE, stderr=subprocess.PIPE))
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        return process

    def test_json_lists_every_kind_under_the_librarys_names(self):
        listed = json.loads(self.sources("--json"))
        self.assertEqual(list(listed), KINDS)
        [display] = listed["displays"]
        self.assertEqual((display["id"], display["localizedName"], display["isMain"]), (1, "Virtual Display", True))
        self.assertEqual(display["frame"], {"x": 0, "y": 0, "width": 1920, "height": 1080})
        self.assertEqual((display["availability"], display["recoverySuggestion"]), ("available", ""))
        for kind in ["windows", "cameras", "microphones", "applications", "devices"]:
            self.assertGreater(len(listed[kind]), 0, kind)
            for source in listed[kind]:
                self.assertEqual(source["availability"], "available")
        owners = {application["id"]: application["name"] for application in listed["applications"]}
        for window in listed["windows"]:
            self.assertEqual(owners[window["applicationProcessID"]], window["applicationName"])

    def test_only_the_kinds_that_are_named_are_listed_in_a_fixed_order(self):
        self.assertEqual(list(json.loads(self.sources("cameras", "displays", "--json"))), ["displays", "cameras"])

    def test_the_table_has_a_heading_for_each_kind_and_says_what_is_not_there(self):
        table = self.sources("displays", "devices")
        self.assertIn("Displays\n  ID  NAME             FRAME                MAIN  STATUS\n", table)
        self.assertIn("\n  1   Virtual Display  1920x1080 at (0, 0)  yes   Available\n", table)
        self.assertTrue(table.endswith("\n  virtual.phone  Virtual Phone  Virtual Model  Available\n"), table)
        self.assertEqual(self.run_program("sources", "--platform", "linux", "microphones").stdout,
                         "Microphones\n  none\n")

    def test_a_watch_begins_with_the_lists_and_ends_at_the_users_word(self):
        for number in [signal.SIGINT, signal.SIGTERM]:
            with self.subTest(number):
                process = self.watch("--json", "displays", "microphones")
                lists = [json.loads(process.stdout.readline()) for _ in range(2)]
                self.assertEqual({line["kind"] for line in lists}, {"displays", "microphones"})
                self.assertEqual({line["change"] for line in lists}, {"listed"})
                process.send_signal(number)
                self.assertEqual(process.wait(timeout=20), 0)
                self.assertEqual(process.stdout.read(), "")

    def test_a_watch_ends_when_nobody_reads_it(self):
        reading, writing = os.pipe()
        os.close(reading)
        result = self.run_program("sources", "--platform", "virtual", "--watch", stdout=writing)
        os.close(writing)
        self.assertEqual(result.returncode, 3)
        self.assertIn("standard output", result.stderr)

    def test_without_a_desktop_there_is_nothing_and_a_word_why(self):
        result = self.run_program("sources", "--json", env={"PATH": "/usr/bin", "XDG_RUNTIME_DIR": str(self.place)})
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(json.loads(result.stdout), {kind: [] for kind in KINDS})
        self.assertIn("DISPLAY", result.stderr)


if __name__ == "__main__":
    unittest.main()
