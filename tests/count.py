#!/usr/bin/env python3
"""Adds up what CTest's verbose logs say: "N passed, N failed".

    count.py LOG...

A program of GoogleTest's, of unittest or of pytest counts as the tests that it ran; any other test of
CTest's counts as one, and so does a program that ended before it said how many there were.
"""
import re
import sys

OUTPUT = re.compile(r"^(\d+): (.*)")
ENDED = re.compile(r"^ *\d+/\d+ Test +#(\d+): (\S+) \.*(.*)")
STATUS = re.compile(r"^ *(\*\*\*)?([A-Z]\w+).* ([0-9.]+) sec")
GOOGLE_PASSED = re.compile(r"^\[  PASSED  \] (\d+) tests?\.")
GOOGLE_FAILED = re.compile(r"^\[  FAILED  \] (\d+) tests?, listed below")
PYTHON = re.compile(r"^Ran (\d+) tests? in|(\d+) passed\b")


def count(path):
    passed, failed = {}, {}
    totals = [0, 0]
    ended, current = 0, None
    for line in open(path, encoding="utf-8", errors="replace"):
        output = OUTPUT.match(line)
        if output:
            number, text = output.groups()
            if found := GOOGLE_PASSED.match(text):
                passed[number] = passed.get(number, 0) + int(found[1])
            elif found := GOOGLE_FAILED.match(text):
                failed[number] = failed.get(number, 0) + int(found[1])
            elif found := PYTHON.search(text):
                passed[number] = int(found[1] or found[2])
            continue
        # How a test ended stands behind its name, or in the next line.
        if found := ENDED.match(line):
            current, line = (found[1], found[2]), found[3]
        if current and (status := STATUS.match(line)):
            number, name = current
            current = None
            ended += 1
            if status[1] is None and status[2] == "Passed":
                totals[0] += passed.get(number, 1)
            else:
                totals[0] += passed.get(number, 0) if number in failed else 0
                totals[1] += failed.get(number, 1)
                print(f"failed: {name}")
    if ended == 0:
        sys.exit(f"{path}: no tests were run")
    return totals


if __name__ == "__main__":
    sums = [sum(column) for column in zip(*(count(path) for path in sys.argv[1:]))]
    print(f"{sums[0]} passed, {sums[1]} failed")
    sys.exit(0 if sums[1] == 0 else 1)
