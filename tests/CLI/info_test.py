#!/usr/bin/env python3
"""What is told of bundles, sound and broken."""

import unittest

from zorvane_cli import CommandLineTest


class Info(CommandLineTest):
    def test_a_sound_bundle_is_told_file_by_file_and_track_by_track(self):
        bundle = self.bundle()
        file, = self.info_json(bundle)["files"]
        self.assertEqual(file["size"], (bundle / "display-1.mov").stat().st_size)
        self.assertIsNone(file["error"])
        track, = file["tracks"]
        self.assertEqual((track["type"], track["codec"], track["width"], track["height"], track["begin"]),
                         ("video", "h264", 1920, 1080, 0))
        self.assertGreater(track["frames"], 1)  # a slow machine drops some
        self.assertEqual(track["colorTags"], {"primaries": "bt709", "transferFunction": "bt709", "matrix": "bt709",
                                              "range": "tv"})
        text = self.run_program("info", bundle).stdout
        self.assertIn(": 1 file\n", text)
        self.assertRegex(text, r"display-1\.mov \(screen\): \d+\.\d{3} s, ")
        self.assertIn("video h264 1920x1080", text)

    def test_broken_and_missing_files_are_told_and_the_rest_still_listed(self):
        bundle = self.bundle()
        movie = (bundle / "display-1.mov").read_bytes()
        (bundle / "text.mov").write_text("no movie at all")
        (bundle / "empty.mov").touch()
        (bundle / "cut.mov").write_bytes(movie[:len(movie) // 2])
        self.manifest(bundle, files=["text.mov", "empty.mov", "cut.mov", "gone.mov", "gone.json", "display-1.mov"])
        files = {file["filename"]: file for file in self.info_json(bundle, status=3)["files"]}
        for name in ["text.mov", "empty.mov", "cut.mov", "gone.mov", "gone.json"]:
            self.assertIsNotNone(files[name]["error"], name)
        self.assertIn("missing", files["gone.mov"]["error"])
        self.assertIn("empty", files["empty.mov"]["error"])
        self.assertEqual(len(files["display-1.mov"]["tracks"]), 1)
        result = self.run_program("info", bundle)
        self.assertIn(": 6 files\n", result.stdout)
        self.assertIn("video h264", result.stdout)
        self.assertEqual(result.stderr, "")

    def test_segmented_streams_are_told_with_what_they_lost(self):
        bundle = self.bundle()
        (bundle / "b.m3u8").write_text("#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1\na.m3u8\n")
        (bundle / "a.m3u8").write_text("#EXTM3U\n#EXTINF:6.000000,\n1.m4s\n#EXT-X-GAP\n#EXTINF:5.500000,\n2.m4s\n"
                                       "#EXT-X-ENDLIST\n")
        stream, = self.info_json(bundle, status=3)["streams"]
        self.assertEqual(stream, {"playlist": "a.m3u8", "duration": 11.5, "segments": 1, "lost": 1, "ended": True})
        text = self.run_program("info", bundle).stdout
        self.assertIn("a.m3u8 (stream): 11.500 s, 1 segment\n  1 segment could not be written\n", text)

    def test_an_unknown_version_is_told_and_read_all_the_same(self):
        bundle = self.bundle()
        self.manifest(bundle, version=2)
        result = self.run_program("info", bundle)
        self.assertEqual(result.returncode, 0)
        self.assertIn("version 2", result.stderr)
        self.assertIn("display-1.mov", result.stdout)

    def test_a_directory_without_a_readable_manifest_is_no_bundle(self):
        cases = {"absent": None, "garbage": "{", "unknown type": '{"version":1,"files":[{"type":"x","filename":"y"}]}'}
        for name, content in cases.items():
            with self.subTest(name):
                bundle = self.place / name
                bundle.mkdir()
                if content:
                    (bundle / "zorvane.json").write_text(content)
                result = self.run_program("info", bundle)
                self.assertEqual((result.returncode, result.stdout), (4, ""))
                self.assertIn("zorvane.json", result.stderr)

    def test_a_bundle_that_lost_its_manifest_still_names_its_movies(self):
        bundle = self.bundle()
        (bundle / "zorvane.json").unlink()
        result = self.run_program("info", bundle)
        self.assertEqual(result.returncode, 4)
        self.assertIn("display-1.mov", result.stderr)

    def test_names_in_a_manifest_play_no_tricks_on_the_terminal(self):
        bundle = self.bundle()
        self.manifest(bundle, files=["\x1b[2Jevil.mov"])
        self.assertNotIn("\x1b", self.run_program("info", bundle).stdout)


if __name__ == "__main__":
    unittest.main()
