#!/usr/bin/env python3
"""Says whether a 32-bit macOS bundle is sound: that it exports and imports what it may and nothing
else, and that it works at whatever address it is loaded.

    check.py BUNDLE MOVED -exported_symbols_list EXPORTS LIBRARY.tbd...

MOVED is the same bundle linked at another address. The words in which the two differ are those
that a loader has to correct, and they must be the ones that the bundle says it should. An unsound
bundle is deleted, so that a build can't go on with it.
"""
import os
import pathlib
import struct
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from bundle_tables import check, check_interface, problems, rows

FORBIDDEN_SECTIONS = ("__mod_init_func", "__mod_term_func", "__stubs", "__stub_helper",
                      "__symbol_stub", "__la_symbol_ptr", "__nl_symbol_ptr", "__pointers")
ZERO_FILL = 1


class Image:
    """What the load commands of a 32-bit image say."""

    def __init__(self, path):
        self.bytes = open(path, "rb").read()
        self.segments, self.sections = {}, {}
        magic, _, _, self.kind, count, _, self.flags = struct.unpack_from("<7I", self.bytes)
        check(magic == 0xFEEDFACE, "not a 32-bit image")
        at = 28
        for _ in range(count):
            command, size = struct.unpack_from("<2I", self.bytes, at)
            if command == 0x1:  # LC_SEGMENT
                self.read_segment(at)
            elif command == 0xB:  # LC_DYSYMTAB
                self.relocations = struct.unpack_from("<4I", self.bytes, at + 64)
            at += size

    def read_segment(self, at):
        name = self.bytes[at + 8:at + 24].rstrip(b"\0").decode()
        address, _, offset, size, _, _, count, _ = struct.unpack_from("<8I", self.bytes, at + 24)
        self.segments[name] = (address, self.bytes[offset:offset + size])
        for at in range(at + 56, at + 56 + 68 * count, 68):
            section = self.bytes[at:at + 16].rstrip(b"\0").decode()
            self.sections[section] = (name, *struct.unpack_from("<7I", self.bytes, at + 32))


def check_addresses(path, image, moved):
    """That exactly the listed words depend on where the image lies, and none of them in code."""
    rebases = {int(address, 16) for _, _, address, *_ in rows(path, "rebase")}
    (text, text_bytes), (data, data_bytes) = image.segments["__TEXT"], image.segments["__DATA"]
    moved_by = moved.segments["__TEXT"][0] - text
    code = min(address for segment, address, *_ in image.sections.values() if segment == "__TEXT") - text
    check(moved_by != 0 and text_bytes[code:] == moved.segments["__TEXT"][1][code:],
          "code depends on its address")
    moved_data = moved.segments["__DATA"][1]
    check(len(moved_data) == len(data_bytes), "the two images differ in size")
    words = struct.iter_unpack("<I", data_bytes), struct.iter_unpack("<I", moved_data)
    differing = set()
    for place, ((word,), (moved_word,)) in enumerate(zip(*words)):
        if word != moved_word:
            differing.add(data + 4 * place)
            check(moved_word - word == moved_by, f"{data + 4 * place:#x} moves by another distance")
    check(rebases and rebases == differing, f"wrong rebases {sorted(map(hex, rebases ^ differing))}")
    check(not any(image.relocations), "relocations outside the tables")


def check_sections(image):
    check(image.kind == 8, "not a bundle")
    check(set(image.segments) == {"__TEXT", "__DATA", "__LINKEDIT"}, f"segments {set(image.segments)}")
    check(not image.flags & 0x8000 + 0x10000, "weak symbols to be shared with other images")
    for name, (segment, address, size, _, _, _, relocations, flags) in image.sections.items():
        check(not name.startswith(FORBIDDEN_SECTIONS), f"has a section {name}")
        check(relocations == 0, f"relocations in {name}")
        if flags & 0xFF == ZERO_FILL:
            start, contents = image.segments[segment]
            check(not any(contents[address - start:address - start + size]), f"{name} isn't zero")


def main():
    path, moved, _, exports, *libraries = sys.argv[1:]
    image = Image(path)
    check_sections(image)
    check_interface(path, set(open(exports).read().split()),
                    [open(library).read() for library in libraries])
    check(not rows(path, "lazy-bind"), "lazy bindings")
    check_addresses(path, image, Image(moved))
    for problem in problems:
        print(f"{os.path.basename(path)}: {problem}", file=sys.stderr)
    if problems:
        os.remove(path)
    sys.exit(1 if problems else 0)


main()
