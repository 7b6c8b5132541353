#!/usr/bin/env python3
"""Holds that each test of the library runs against the macOS bundle too, at two addresses.

    same_tests.py CTEST BUILD_FOLDER BUNDLE PROGRAM...

The programs named run at one address.

A test of the bundle is one of the library's, or a program with all of its tests but those after
--all-but=, which it looks after itself.
"""
import collections
import json
import subprocess
import sys

ADDRESSES = 2
PROGRAMS = ("internal_tests", "picture_tests", "fault_tests", "soak_tests", "large_tests", "time_tests")
NOT_EVERYWHERE = "large_tests"

ctest, folder, bundle, *once = sys.argv[1:]
listing = json.loads(subprocess.check_output([ctest, "--test-dir", folder, "--show-only=json-v1"]))


def names(start):
    """The tests that a program has. `start` begins the command that runs it."""
    lines = subprocess.check_output([*start, "--gtest_list_tests"], text=True).splitlines()
    found, suite = [], ""
    for line in lines:
        word = line.split("#")[0].strip()
        if line.startswith("  "):
            found.append(suite + word)
        elif word.endswith("."):
            suite = word
    return found


# The tests of each program, by where it loads the bundle; under None, with the library.
runs = {program: collections.defaultdict(list) for program in PROGRAMS}
for test in listing["tests"]:
    command = test.get("command", [test["name"]])  # none where it isn't built
    place, program = next(((place, word.rsplit("/", 1)[-1]) for place, word in enumerate(command)
                           if word.rsplit("/", 1)[-1] in runs), (None, None))
    if program is None:
        continue
    chosen = dict(option.split("=", 1) for option in command[place:] if "=" in option)
    if "--plugin" in chosen:
        assert chosen["--plugin"] == bundle, test
    address = chosen.get("--load-address")
    assert (address is None) == ("--plugin" not in chosen), test
    if "--instruction-set" in chosen:
        continue
    if "--gtest_filter" in chosen:
        runs[program][address].append(chosen["--gtest_filter"])
    elif address is not None:
        all_of_them, left_out = names(command[:place + 1]), chosen["--all-but"].split(":")
        if left_out != [""]:
            print(f"{program}: at {address} without {left_out}")
        assert set(left_out) <= {"", *all_of_them}, "there is no such test"
        runs[program][address] += all_of_them

for program, by_address in runs.items():
    library = sorted(by_address.pop(None, []))
    print(f"{program}: {len(library)} tests with the library")
    assert library or program == NOT_EVERYWHERE
    if library:
        assert len(by_address) == (1 if program in once else ADDRESSES), by_address.keys()
    for address, tests in by_address.items():
        print(f"{program}: {len(tests)} tests with the bundle at {address}")
        different = set(library) ^ set(tests)
        assert sorted(tests) == library, f"only one of them runs {sorted(different)}"
