#!/usr/bin/env python3
"""Holds that each test of the i386 library runs against the macOS bundle too, at two addresses.

    same_tests.py CTEST BUILD_FOLDER BUNDLE
"""
import collections
import json
import subprocess
import sys

ADDRESSES = 2
PROGRAMS = ("internal_tests", "picture_tests", "fault_tests", "soak_tests", "time_tests")

ctest, folder, bundle = sys.argv[1:]
listing = json.loads(subprocess.check_output([ctest, "--test-dir", folder, "--show-only=json-v1"]))

# The tests of each program, by where it loads the bundle; under None, with the library.
runs = {program: collections.defaultdict(list) for program in PROGRAMS}
for test in listing["tests"]:
    program, *options = test.get("command", [test["name"]])  # none where it isn't built
    program = program.rsplit("/", 1)[-1]
    if program not in runs:
        continue
    chosen = dict(option.split("=", 1) for option in options if "=" in option)
    if "--plugin" in chosen:
        assert chosen["--plugin"] == bundle, test
    address = chosen.get("--load-address")
    assert (address is None) == ("--plugin" not in chosen), test
    runs[program][address].append(chosen["--gtest_filter"])

for program, by_address in runs.items():
    library = sorted(by_address.pop(None))
    print(f"{program}: {len(library)} tests with the library")
    assert library and len(by_address) == ADDRESSES, by_address.keys()
    for address, tests in by_address.items():
        print(f"{program}: {len(tests)} tests with the bundle at {address}")
        different = set(library) ^ set(tests)
        assert sorted(tests) == library, f"only one of them runs {sorted(different)}"
