#!/usr/bin/env python3
"""What is told of permissions, with and without a desktop."""

import json
import unittest

from zorvane_cli import BARE, CommandLineTest

NAMES = ["screenRecording", "systemAudioRecording", "microphone", "camera", "inputMonitoring", "accessibilityControl"]


class Permissions(CommandLineTest):
    def report(self, *arguments, **more):
        result = self.run_program("permissions", "--json", *arguments, **more)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        rows = json.loads(result.stdout)["permissions"]
        self.assertEqual([row["permission"] for row in rows], NAMES)
        return {row.pop("permission"): row for row in rows}

    def test_the_virtual_desktop_allows_everything(self):
        for row in self.report("--platform", "virtual").values():
            self.assertEqual(row, {"status": "authorized", "explanation": "The virtual desktop allows it.",
                                   "remedy": None})

    def test_what_is_not_allowed_comes_with_a_reason_and_a_remedy(self):
        runtime = self.place / "runtime"
        runtime.mkdir()
        rows = self.report(env={**BARE, "XDG_RUNTIME_DIR": str(runtime), "PIPEWIRE_RUNTIME_DIR": str(runtime)})
        for name in NAMES:
            with self.subTest(name):
                self.assertEqual(rows[name]["status"], "restricted")
                self.assertTrue(rows[name]["remedy"])
        self.assertIn("DISPLAY isn't set", rows["screenRecording"]["explanation"])
        self.assertIn(str(runtime), rows["microphone"]["explanation"])

    def test_a_wayland_session_is_named_as_such(self):
        explanation = self.report(env={**BARE, "WAYLAND_DISPLAY": "wayland-0"})["screenRecording"]["explanation"]
        self.assertIn("Wayland", explanation)

    def test_the_table_has_a_line_for_each_permission_and_one_for_each_remedy(self):
        result = self.run_program("permissions", "--platform", "virtual")
        self.assertEqual(result.returncode, 0)
        self.assertEqual(len(result.stdout.splitlines()), 1 + len(NAMES))
        self.assertRegex(result.stdout, r"(?m)^screen +yes +The virtual desktop allows it\.$")
        bare = self.run_program("permissions", env={**BARE, "DISPLAY": ":65000"})
        self.assertRegex(bare.stdout, r"(?m)^screen +no +There is no X server \":65000\"\.\n +Set DISPLAY")
        self.assertNotIn("\x1b", bare.stdout)


if __name__ == "__main__":
    unittest.main()
