"""What is mutated and tried: sources, how they become libraries, and the programs that load them."""

import dataclasses
import hashlib
import os
import pathlib
import signal
import subprocess

TREE = "TREE"  # stands in a command for the folders that are searched for headers


@dataclasses.dataclass
class Unit:
    """A source that becomes an object file: the command lacks the source and the object."""

    source: str
    command: list


@dataclasses.dataclass
class Library:
    """What the test programs load: the command lacks the output, and the objects follow it."""

    name: str
    command: list
    sources: list


@dataclasses.dataclass
class Step:
    """A run of a test program."""

    program: pathlib.Path


@dataclasses.dataclass
class OwnTests:
    """The tests that include a header themselves: they have a copy of its code, and so are built anew."""

    units: list
    link: list  # the command lacks the output and the objects
    archives: list


@dataclasses.dataclass
class Project:
    root: pathlib.Path
    work: pathlib.Path  # everything that is made lies here
    folders: tuple  # whose files are mutated
    copied: tuple  # folders that sources are compiled from, with those below them
    units: list
    libraries: list  # the first is what --plugin=PATH names
    steps: list  # from the quickest on
    tests: dict = dataclasses.field(default_factory=dict)  # "Suite.Name" -> (file, program)
    own_tests: dict = dataclasses.field(default_factory=dict)  # header -> OwnTests
    explanations: str = "docs/mutation.md"
    spare_seconds: int = 3  # of the processor, that any test may take

    def sources(self):
        """Every file that is mutated."""
        files = [file for folder in self.folders for file in code_in(self.root / folder)]
        return [file.relative_to(self.root).as_posix() for file in files]

    def tests_of(self, file):
        """The tests in the file's own test files: tests/tonal/invert_test.cpp, invert_..._test.cpp."""
        path = pathlib.PurePosixPath(file)
        own = f"tests/{path.parts[0]}/{path.stem}_"
        return [name for name, (where, _) in self.tests.items() if where.startswith(own)]

    def rest(self):
        """A hash of what decides about a mutant: sources, tests and commands."""
        files = {file for folder in self.copied for file in (self.root / folder).rglob("*.[ch]*")}
        return hash_of(*[part for file in sorted(files) for part in (file.name, file.read_bytes())],
                       *[unit.command for unit in self.units],
                       *[library.command for library in self.libraries])  # fmt: skip


def code_in(folder):
    return sorted(file for file in folder.glob("*") if file.suffix in (".h", ".cpp"))


def hash_of(*parts):
    digest = hashlib.sha256()
    for part in parts:
        digest.update(part if isinstance(part, bytes) else str(part).encode())
        digest.update(b"\0")
    return digest.hexdigest()[:24]


def run(*command, **options):
    """Runs a program to its end; where this process is interrupted, ends it and what it started."""
    words = [str(word) for word in command]
    with subprocess.Popen(words, process_group=0, **options) as process:
        try:
            output, _ = process.communicate()
        except BaseException:
            os.killpg(process.pid, signal.SIGTERM)
            raise
    if process.returncode != 0:
        raise subprocess.CalledProcessError(process.returncode, words)
    return output
