#!/usr/bin/env python3
"""Says whether the 64-bit slices of a macOS bundle are sound, as far as that shows in the file: what
they export and import, and that nothing runs when they are loaded.

    check.py BUNDLE -exported_symbols_list EXPORTS LIBRARY.tbd...

An unsound bundle is deleted, so that a build can't go on with it.
"""
import os
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from bundle_tables import check, check_interface, objdump, problems, rows

PROCESSORS = ("x86_64", "arm64")
RUN_AT_LOADING = ("__mod_init_func", "__init_offsets", "__mod_term_func", "__thread_init", "__interpose")
WRITTEN_BY_LOADER = ("__DATA", "__DATA_CONST")


def check_slice(path, exports, libraries, processor):
    of = f"--arch={processor}"
    check_interface(path, exports, libraries, of)
    header = objdump(path, "--private-header", of)
    check(re.search(r"\bBUNDLE\b", header), "not a bundle")
    check("TWOLEVEL" in header, "imports aren't bound to their libraries")
    check("WEAK_DEFINES" not in header and "BINDS_TO_WEAK" not in header,
          "weak symbols to be shared with other images")
    sections = re.findall(r"sectname (\S+)", objdump(path, "--private-headers", of))
    check("__text" in sections, "no code")
    check(not set(sections) & set(RUN_AT_LOADING), f"sections {sections}")
    for table in ("rebase", "bind", "lazy-bind"):
        found = rows(path, table, of)
        check(found, f"nothing in the table {table}")
        for segment, section, address, *_ in found:
            check(segment in WRITTEN_BY_LOADER, f"{table} in {segment},{section} at {address}")


def main():
    path, _, exports, *libraries = sys.argv[1:]
    exports = set(open(exports).read().split())
    libraries = [open(library).read() for library in libraries]
    found = re.findall(r"^architecture (\S+)", objdump(path, "--universal-headers"), re.M)
    check(found == list(PROCESSORS), f"slices {found}")
    for processor in found:
        before = len(problems)
        check_slice(path, exports, libraries, processor)
        problems[before:] = [f"{processor}: {problem}" for problem in problems[before:]]
    for problem in problems:
        print(f"{os.path.basename(path)}: {problem}", file=sys.stderr)
    if problems:
        os.remove(path)
    sys.exit(1 if problems else 0)


main()
