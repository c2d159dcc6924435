#!/usr/bin/env python3
"""Disks that are full or may not be written to, each mounted in a name space of the test's own."""

import json
import shutil
import subprocess
import unittest

from zorvane_cli import PROGRAM, CommandLineTest


class Disk(CommandLineTest):
    def setUp(self):
        super().setUp()
        if not shutil.which("unshare") or self.on_disk("size=4k", "true").returncode != 0:
            self.skipTest("this user may not mount a file system in a name space")

    def on_disk(self, options, script):
        """Runs a script on a disk that is gone afterwards."""
        (self.place / "disk").mkdir(exist_ok=True)
        mount = f"mount -t tmpfs -o {options} tmpfs disk && cd disk && {script}"
        return subprocess.run(["unshare", "--map-root-user", "--mount", "sh", "-c", mount], stdin=subprocess.DEVNULL,
                              **self.options(stdout=subprocess.PIPE, stderr=subprocess.PIPE))

    def test_a_disk_that_fills_up_is_told_and_the_movie_plays_up_to_there(self):
        result = self.on_disk("size=64k", f"""
            {PROGRAM} record --platform virtual --json --seconds 20 -o talk > ../report
            echo $? > ../status
            mkdir ../saved && cp talk/display-1.mov ../saved""")
        self.assertEqual((self.place / "status").read_text(), "3\n")
        report = json.loads((self.place / "report").read_text())
        self.assertEqual((report["status"], report["files"], report["unlisted"]), ("aborted", [], ["display-1.mov"]))
        self.assertIn("No space left on device", report["errors"][0]["userMessage"])
        self.assertIn(f"{report['bundle']}/display-1.mov could not be closed", result.stderr)
        self.manifest(self.place / "saved")  # the full disk may have no room for it
        file, = self.info_json("saved")["files"]
        self.assertGreater(file["duration"], 0.4)

    def test_a_disk_without_room_for_anything_is_told_and_nothing_is_left(self):
        result = self.on_disk("size=4k", f"{PROGRAM} record --platform virtual --seconds 20 -o talk; echo $?; ls -A")
        self.assertEqual(result.stdout, "4\n")
        self.assertIn("No space left on device", result.stderr)
        self.assertIn("Nothing was recorded", result.stderr)

    def test_a_disk_that_may_only_be_read_is_told(self):
        result = self.on_disk("ro", f"{PROGRAM} record --platform virtual --seconds 1 -o talk; echo $?")
        self.assertEqual(result.stdout, "4\n")
        self.assertIn("Read-only file system", result.stderr)


if __name__ == "__main__":
    unittest.main()
