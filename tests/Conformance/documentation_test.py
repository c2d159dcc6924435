#!/usr/bin/env python3
"""Compares what docs/conformance.md says of the suites with what the test programs list; --write writes it anew."""

import collections
import pathlib
import re
import subprocess
import sys

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/conformance.md"
BEGIN, END = "<!-- What follows is written by tests/Conformance/documentation_test.py. -->\n", "<!-- End. -->\n"


def listed(programs):
    """Suite -> test -> backend -> the kinds it runs for, all in the programs' order."""
    suites = collections.defaultdict(lambda: collections.defaultdict(dict))
    for program in programs:
        command = [program, "--gtest_list_tests", "--gtest_filter=*Conformance.*"]
        for line in subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines():
            if suite := re.fullmatch(r"(\w+)/(\w+)\.", line):
                backend, name = suite.groups()
            elif test := re.match(r"  (\w+)/(\w+)", line):
                suites[name][test[1]].setdefault(backend, []).append(test[2])
    return suites


def table(suite, tests):
    """One line for each kind, one column for each backend; all tests of a suite run for the same kinds."""
    runs = next(iter(tests.values()))
    for test, its_runs in tests.items():
        assert its_runs == runs, f"{suite}.{test} runs elsewhere than its siblings"
    kinds = list(dict.fromkeys(kind for its_kinds in runs.values() for kind in its_kinds))
    yield f"### {suite}\n\n"
    yield f"| | {' | '.join(runs)} |\n|---|{'---|' * len(runs)}\n"
    for kind in kinds:
        name = "all tests" if kind.isdigit() else kind
        yield f"| {name} | {' | '.join('yes' if kind in its_kinds else '' for its_kinds in runs.values())} |\n"
    yield "\n" + "".join(f"- `{test}`\n" for test in tests) + "\n"


def main():
    programs = [argument for argument in sys.argv[1:] if argument != "--write"]
    suites = listed(programs)
    assert suites, "no program lists a suite"
    text = "".join(line for suite in sorted(suites) for line in table(suite, suites[suite]))
    before, _, rest = PAGE.read_text().partition(BEGIN)
    _, _, after = rest.partition(END)
    page = before + BEGIN + "\n" + text + END + after
    if "--write" in sys.argv:
        PAGE.write_text(page)
    elif page != PAGE.read_text():
        sys.exit(f"{PAGE.name} doesn't say what runs where; write it anew with --write and the test programs.")


if __name__ == "__main__":
    main()
