#!/usr/bin/env python3
"""Recordings of the virtual desktop, from their begin to their end."""

import json
import os
import re
import resource
import signal
import stat
import time
import unittest

from zorvane_cli import TIME_LIMIT, CommandLineTest, Terminal, pending, wait_for_log

STARTED = "Started recording."


class Record(CommandLineTest):
    def test_the_json_object_tells_the_whole_recording(self):
        report = self.record_json("--seconds", "1.5", "-o", "talk")
        self.assertEqual(list(report), ["bundle", "status", "recordFrom", "recordUntil", "files", "unlisted",
                                        "errors", "dropped", "repeated"])
        self.assertEqual(report["bundle"], str(self.place / "talk"))
        self.assertEqual(report["status"], "complete")
        self.assertEqual((report["unlisted"], report["errors"]), ([], []))
        self.assertEqual(report["files"], json.loads((self.place / "talk/zorvane.json").read_text())["files"])
        length = report["recordUntil"] - report["recordFrom"]
        self.assertGreaterEqual(length, 1.5)
        self.assertLess(length, 2)  # milliseconds over, unless the machine is busy
        self.assertAlmostEqual(self.info_json("talk")["files"][0]["duration"], length, delta=0.0001)

    def test_without_a_place_the_bundle_is_made_in_the_current_directory(self):
        result = self.record("--seconds", "0.3")
        self.assertEqual(result.returncode, 0, result.stderr)
        name, = os.listdir(self.place)
        self.assertRegex(name, r"^\d{4}-\d\d-\d\dT\d{6}(Z|[+-]\d{4})-\w{5}\.zorvane$")
        self.assertEqual(result.stdout, f"{self.place / name}\n")

    def test_what_was_on_the_screen_is_private(self):
        os.umask(0)
        bundle = self.bundle(name="new parent/bundle")
        self.assertEqual(stat.S_IMODE(bundle.parent.stat().st_mode), 0o700)
        self.assertEqual(stat.S_IMODE(bundle.stat().st_mode), 0o700)
        self.assertEqual({stat.S_IMODE(file.stat().st_mode) for file in bundle.iterdir()}, {0o600})

    def test_names_with_blanks_and_letters_of_any_kind_work(self):
        bundle = self.bundle(name="ein Vortrag/über Zürich: ✓")
        self.assertEqual(self.info_json(bundle)["bundle"], str(bundle))

    def test_off_a_terminal_no_control_character_is_written(self):
        result = self.record("--seconds", "0.5", env={"TERM": "xterm"})
        self.assertIsNone(re.search(r"[\x00-\x09\x0b-\x1f\x7f]", result.stdout + result.stderr))
        self.assertIn("frames written", result.stderr)

    def test_quiet_leaves_nothing_but_the_path(self):
        result = self.record("--quiet", "--seconds", "0.3", "-o", "talk")
        self.assertEqual((result.stdout, result.stderr), (f"{self.place / 'talk'}\n", ""))

    def test_log_lines_below_the_level_stay_away(self):
        result = self.record("--quiet", "--seconds", "0.3", "--log-level", "info")
        levels = {line.split()[1] for line in result.stderr.splitlines()}
        self.assertIn("info", levels)
        self.assertLessEqual(levels, {"info", "warning", "error", "critical"})

    def test_a_full_disk_leaves_a_movie_that_plays(self):
        limit = 60_000
        result = self.record("--json", "--seconds", "20", "-o", "talk",
                             preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
        self.assertEqual(result.returncode, 3, result.stderr)
        report = json.loads(result.stdout)
        self.assertEqual(report["status"], "aborted")
        for text in ["message", "userMessage"]:
            self.assertIn("display-1.mov", report["errors"][0][text])
        self.assertEqual(self.info_json("talk")["unlisted"], ["display-1.mov"])
        manifest = {"version": 1, "files": [{"type": "screen", "filename": "display-1.mov"}]}
        (self.place / "talk/zorvane.json").write_text(json.dumps(manifest))
        self.assertGreater(self.info_json("talk")["files"][0]["duration"], 0.4)


class Sound(CommandLineTest):
    def test_picture_voice_and_sound_are_files_of_the_same_length(self):
        report = self.record_json("--display", "main", "--microphone", "default", "--system-audio",
                                  "--application-audio", "1", "--application-audio", "1", "--seconds", "1.5",
                                  "-o", "talk")
        files = self.info_json("talk")["files"]
        self.assertEqual([file["type"] for file in files], ["screen", "audio", "systemAudio", "systemAudio"])
        self.assertEqual([[track["type"] for track in file["tracks"]] for file in files],
                         [["video"], ["audio"], ["audio"], ["audio"]])
        length = report["recordUntil"] - report["recordFrom"]
        for file in files:
            self.assertAlmostEqual(file["duration"], length, delta=0.0001, msg=file["filename"])

    def test_sound_inside_the_movie_is_a_track_of_its_length(self):
        report = self.record_json("--audio", "--seconds", "1", "-o", "talk")
        file, = self.info_json("talk")["files"]
        self.assertEqual([track["type"] for track in file["tracks"]], ["video", "audio"])
        length = report["recordUntil"] - report["recordFrom"]
        for track in file["tracks"]:
            self.assertEqual(track["begin"], 0)
            self.assertAlmostEqual(track["duration"], length, delta=0.0001, msg=track["type"])

    def test_a_camera_has_the_first_microphones_sound_and_a_phone_its_own(self):
        report = self.record_json("--camera", "default", "--microphone", "default", "--microphone",
                                  "virtual.microphone", "--device", "virtual.phone", "--seconds", "1.2", "-o", "talk")
        files = self.info_json("talk")["files"]
        self.assertEqual([(file["type"], sorted(track["type"] for track in file["tracks"])) for file in files],
                         [("webcam", ["audio", "video"]), ("audio", ["audio"]), ("appleDevice", ["audio", "video"])])
        length = report["recordUntil"] - report["recordFrom"]
        for file in files:
            for track in file["tracks"]:
                self.assertEqual(track["begin"], 0)
                self.assertAlmostEqual(track["duration"], length, delta=0.0001, msg=file["filename"])

    def test_sound_alone_needs_no_display(self):
        result = self.record("--microphone", "virtual.microphone", "--seconds", "0.5", "-o", "talk")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertRegex(result.stderr, r"\nRecorded 0\.\d{3} s, [\d.]+ \w+\.\n$")
        file, = self.info_json("talk")["files"]
        self.assertEqual((file["type"], file["tracks"][0]["channels"]), ("audio", 1))

    def test_events_tell_the_start_each_segment_and_the_end_in_this_order(self):
        result = self.record("--json", "--events", "--segmented", "--display", "main", "--audio", "--microphone",
                             "default", "--seconds", "1", "-o", "talk")
        self.assertEqual(result.returncode, 0, result.stderr)
        first, *segments, last = [json.loads(line) for line in result.stdout.splitlines()]
        bundle = self.place / "talk"
        self.assertEqual(first, {"event": "started", "bundle": str(bundle), "recordFrom": last["recordFrom"]})
        self.assertEqual((last["event"], last["status"], last["files"]), ("ended", "complete", []))
        self.assertEqual({segment["event"] for segment in segments}, {"segment"})
        told = {segment["filename"]: segment["size"] for segment in segments}
        self.assertEqual(len(told), len(segments), "each once")
        self.assertEqual(told, {file.name: file.stat().st_size
                                for pattern in ["*.mp4", "*.m4s"] for file in bundle.glob(pattern)})
        self.assertEqual(len(told), 6)  # an initialization and a segment of each track
        self.assertIn("display-1-audio.m3u8", (bundle / "display-1.m3u8").read_text())

    def test_json_is_valid_also_where_a_name_is_no_text(self):
        name = os.fsdecode(b"caf\xe9")
        result = self.record("--json", "--events", "--microphone", "default", "--seconds", "0.3", "-o", name,
                             errors="surrogateescape")
        self.assertEqual(result.returncode, 0, result.stderr)
        for line in result.stdout.splitlines():
            self.assertEqual(json.loads(line)["bundle"], f"{self.place}/caf\ufffd")
        self.assertEqual(os.listdir(self.place), [name])


class Signals(CommandLineTest):
    def recording(self):
        process = self.start("--json", "-o", "talk", "--log-level", "info")
        wait_for_log(process, STARTED)
        return process

    def test_each_stop_signal_ends_the_recording_cleanly(self):
        for number in [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]:
            with self.subTest(signal=number.name):
                process = self.start("--json", "-o", number.name, "--log-level", "info")
                wait_for_log(process, STARTED)
                process.send_signal(number)
                output, _ = process.communicate()
                self.assertEqual(process.returncode, 0)
                self.assertEqual(json.loads(output)["status"], "complete")

    def test_a_signal_that_comes_twice_at_once_is_one_wish(self):
        process = self.recording()
        process.send_signal(signal.SIGINT)
        process.send_signal(signal.SIGINT)
        process.communicate()
        self.assertEqual(process.returncode, 0)

    def test_ctrl_c_after_another_signal_leaves_at_once(self):
        process = self.recording()
        process.send_signal(signal.SIGSTOP)  # so that both are there when it looks
        os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WNOWAIT)
        process.send_signal(signal.SIGHUP)
        process.send_signal(signal.SIGINT)
        process.send_signal(signal.SIGCONT)
        output, _ = process.communicate()
        self.assertEqual(process.returncode, -signal.SIGINT)
        self.assertEqual(output, "")

    def test_a_signal_before_the_start_leaves_nothing_behind(self):
        report = self.record_json("-o", "talk", status=4, preexec_fn=pending(signal.SIGTERM))
        self.assertEqual(report["status"], "failed")
        self.assertEqual(report["recordFrom"], None)
        self.assertEqual(len(report["errors"]), 1)
        self.assertEqual(os.listdir(self.place), [])

    def test_a_signal_at_any_moment_gives_a_clean_recording_or_none(self):
        for delay in range(0, 300, 15):  # milliseconds
            with self.subTest(delay=delay):
                place = self.place / str(delay)
                place.mkdir()
                # Blocked, the signal can't come before the program has begun.
                process = self.start("--json", "-o", "talk", cwd=place, preexec_fn=lambda: signal.pthread_sigmask(
                    signal.SIG_BLOCK, [signal.SIGTERM]))
                time.sleep(delay / 1000)
                process.send_signal(signal.SIGTERM)
                output, errors = process.communicate(timeout=TIME_LIMIT)
                report = json.loads(output)
                if process.returncode == 4:
                    self.assertEqual((report["status"], os.listdir(place)), ("failed", []), errors)
                else:
                    self.assertEqual((process.returncode, report["status"]), (0, "complete"), errors)
                    file, = self.info_json(place / "talk")["files"]
                    length = report["recordUntil"] - report["recordFrom"]
                    self.assertAlmostEqual(file["duration"], length, delta=0.001)

    def test_a_background_job_of_a_script_hears_sigint(self):
        process = self.start("-o", "talk", "--log-level", "info",
                             preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_IGN))
        wait_for_log(process, STARTED)
        process.send_signal(signal.SIGINT)
        process.communicate()
        self.assertEqual(process.returncode, 0)


class OnATerminal(CommandLineTest):
    def test_one_live_line_is_overwritten_in_place(self):
        terminal = Terminal(["record", "--platform", "virtual", "-o", "talk"], self.place)
        self.assertTrue(terminal.read_until(lambda output: output.count(b"REC 0:0") >= 3), terminal.output)
        terminal.type(b"\x03")
        self.assertEqual(terminal.end(), 0, terminal.output)
        self.assertRegex(terminal.output,
                         rb"\r\x1b\[KREC 0:0\d  \d+ frames written, \d+ dropped, \d+ repeated, [\d.]+ \w+")
        # The live line never moves down, and is gone at the end.
        self.assertNotRegex(terminal.output, rb"REC [^\r\n]*\n")
        self.assertRegex(terminal.output, rb"\r\x1b\[KRecorded [\d.]+ s: ")

    def test_the_live_line_shows_levels_and_never_wraps(self):
        for columns in [200, 40]:
            with self.subTest(columns=columns):
                terminal = Terminal(["record", "--platform", "virtual", "--audio", "--display", "main", "--microphone",
                                     "default", "-o", f"talk{columns}"], self.place, columns)
                self.assertTrue(terminal.read_until(lambda output: output.count(b"REC 0:0") >= 4), terminal.output)
                terminal.type(b"\x03")
                self.assertEqual(terminal.end(), 0, terminal.output)
                lines = re.findall(rb"\r\x1b\[K(REC [^\r\n]*)", terminal.output)
                self.assertLess(max(map(len, lines)), columns, "with the ^C that the terminal shows")
                self.assertIn(b"System Audio [", lines[-1])
                if columns == 200:
                    self.assertRegex(lines[-1], rb"System Audio \[[# ]{10}\]  Microphone \[[# ]{10}\]  \d+ frames .*"
                                                rb"Ctrl-C stops")


if __name__ == "__main__":
    unittest.main()
