#!/usr/bin/env python3
"""Arguments, good and bad."""

import os
import subprocess
import unittest

from zorvane_cli import CommandLineTest


class Arguments(CommandLineTest):
    def test_wrong_usage_is_explained_and_records_nothing(self):
        for arguments, told in [
            ([], "Say what to do"),
            (["play"], "Say what to do"),
            (["record", "more"], "more"),
            (["record", "--loud"], "--loud"),
            (["record", "--seconds"], "--seconds"),
            *((["record", "--seconds", text], f'"{text}" is no length of a recording')
              for text in ["0", "-1", "-1e3", "ten", "5s", "", "nan", "inf", "1e300", "1e400", "1e-400", "0x10"]),
            *((["record", "--display", text], f'"{text}" names no display')
              for text in ["first", "-1", "1.5", "", "4294967296"]),
            *((["record", "--window", text], f'"{text}" names no window')
              for text in ["xterm", "-1", "0x", "0xg", "", "4294967296", "0x100000000"]),
            *((["record", "--exclude", text], "is nothing that can be left out")
              for text in ["me", "", "current,", "current indicator"]),
            (["record", "--window", "1", "--display", "1"], "--display"),
            (["record", "--window", "1", "--exclude", "current"], "--window"),
            *((["record", option, text], f'"{text}" names no process')
              for option in ["--application-audio", "--exclude-process"] for text in ["firefox", "0", "-1", ""]),
            (["record", "--exclude-process", "5"], "--system-audio"),
            *((["record", "--window", "1", option], "--window") for option in ["--audio", "--top-window"]),
            *((["record", *picture, *sound], "Add --display main")
              for picture in [["--audio"], ["--exclude", "current"], ["--mouse"], ["--keyboard"], ["--top-window"]]
              for sound in [["--microphone", "default"], ["--camera", "default"], ["--device", "x"],
                            ["--system-audio"], ["--application-audio", "1"]]),
            (["record", "--events"], "Add --json"),
            (["sources", "screens"], "screens"),
            (["record", "--color-space", "srgb"], "sRGB,displayP3"),
            (["record", "--platform", "mac"], "linux,virtual"),
            (["record", "--log-level", "loud"], "trace,debug,info,warning,error,critical"),
            (["info"], "BUNDLE"),
            (["info", "one", "two"], "two"),
        ]:
            with self.subTest(arguments=arguments):
                result = self.run_program(*arguments)
                self.assertEqual(result.returncode, 2)
                self.assertEqual(result.stdout, "")
                self.assertIn(told, result.stderr)
                self.assertIn("--help", result.stderr)
                self.assertEqual(os.listdir(self.place), [])

    def test_help_has_examples_and_says_where_the_bundle_goes(self):
        result = self.run_program("record", "--help")
        self.assertEqual(result.returncode, 0)
        for text in ["Examples:", "zorvane record --seconds 10 -o", "current one", "Exit status:"]:
            self.assertIn(text, result.stdout)

    def test_an_unknown_display_is_refused_with_a_list_of_the_known_ones(self):
        report = self.record_json("--display", "77", status=4)
        self.assertEqual(report["status"], "failed")
        self.assertIn("Known displays: 1 (Virtual Display, main)", report["errors"][0]["userMessage"])

    def test_an_unknown_device_is_refused_with_a_list_of_the_known_ones(self):
        for kind, known in [("microphone", "microphone"), ("camera", "camera"), ("device", "phone")]:
            with self.subTest(kind=kind):
                report = self.record_json(f"--{kind}", "nobody", status=4)
                self.assertEqual((report["status"], report["files"]), ("failed", []))
                self.assertIn(f'"nobody". Known {kind}s: virtual.{known} (Virtual {known.title()}).',
                              report["errors"][0]["userMessage"])

    def test_what_is_at_the_place_of_the_bundle_stays_as_it_was(self):
        (self.place / "taken").mkdir()
        (self.place / "taken" / "movie.mov").write_text("mine")
        (self.place / "dangling").symlink_to("nowhere")
        for name in ["taken", "taken/", "taken/movie.mov", "dangling"]:
            with self.subTest(name=name):
                result = self.record("--seconds", "1", "-o", name)
                self.assertEqual(result.returncode, 4)
                self.assertIn("Choose another", result.stderr)
        self.assertEqual((self.place / "taken" / "movie.mov").read_text(), "mine")

    def test_a_place_where_nothing_can_be_made_is_named(self):
        (self.place / "file").touch()
        for output, reason in [("/sys/zorvane/talk", ""), (f"{self.place}/file/talk", "Not a directory")]:
            with self.subTest(output=output):
                result = self.record("--seconds", "1", "-o", output)
                self.assertEqual(result.returncode, 4)
                self.assertIn(os.path.dirname(output).removesuffix("/zorvane"), result.stderr)
                self.assertIn(reason, result.stderr)
                self.assertIn("Nothing was recorded", result.stderr)

    def test_without_an_x_server_the_user_is_told_about_display(self):
        for environment in [{}, {"DISPLAY": ":7777"}]:
            with self.subTest(environment=environment):
                result = self.run_program("record", "--seconds", "1", env={"PATH": "/usr/bin", **environment})
                self.assertEqual(result.returncode, 4)
                self.assertIn("DISPLAY", result.stderr)
                self.assertEqual(os.listdir(self.place), [])

    def test_a_result_that_cannot_be_printed_is_an_error(self):
        with open("/dev/full", "w") as full:
            for arguments in [["record", "--help"], ["info", self.bundle()],
                              ["record", "--platform", "virtual", "--seconds", "0.2", "--json"]]:
                with self.subTest(arguments=arguments):
                    result = self.run_program(*arguments, stdout=full)
                    self.assertEqual(result.returncode, 3)
                    self.assertIn("standard output", result.stderr)

    def test_a_closed_pipe_is_an_error_and_not_the_end_of_the_recording(self):
        reading, writing = os.pipe()
        os.close(reading)
        result = self.record("--seconds", "0.3", "-o", "bundle", stdout=writing)
        os.close(writing)
        self.assertEqual(result.returncode, 3)
        self.assertGreater(self.info_json("bundle")["files"][0]["duration"], 0.299)

    def test_closed_standard_descriptors_are_not_taken_for_files(self):
        result = self.run_program("record", "--platform", "virtual", "--seconds", "0.3", "-o", "bundle",
                                  stdout=None, stderr=None, preexec_fn=lambda: (os.close(1), os.close(2)))
        self.assertEqual(result.returncode, 3)
        self.info_json("bundle")


if __name__ == "__main__":
    unittest.main()
