#!/usr/bin/env python3
"""The man page and the completions know every option of the program, and no other."""

import pathlib
import re
import unittest

from zorvane_cli import CommandLineTest

ROOT = pathlib.Path(__file__).resolve().parents[2]
OPTION = re.compile(r"--[a-z][a-z-]+")


class Documentation(CommandLineTest):
    def options_of(self, *command):
        return set(OPTION.findall(self.run_program(*command, "--help").stdout))

    def test_each_option_stands_in_the_man_page_and_the_completions(self):
        known = self.options_of() | self.options_of("record") | self.options_of("sources") | \
            self.options_of("info") | self.options_of("permissions")
        completions = ROOT / "apps/zorvane/completions"
        texts = {
            "man page": (ROOT / "docs/man/zorvane.1").read_text().replace(r"\-", "-"),
            "bash": (completions / "zorvane.bash").read_text(),
            "zsh": (completions / "_zorvane").read_text(),
            "fish": re.sub(r"(?m)^complete(.*) -l ", r"complete\1 --", (completions / "zorvane.fish").read_text()),
        }
        for name, text in texts.items():
            with self.subTest(name):
                self.assertEqual(set(OPTION.findall(text)), known)


if __name__ == "__main__":
    unittest.main()
