"""The plug-in as a project: built by CMake for 32 bits, and its test programs."""

import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess

from mutation.project import TREE, Library, OwnTests, Project, Step, Unit, run

FOLDERS = ("plugin", "plugin/binding", "pixels", "tonal", "colour", "compose", "render", "classes")
TESTS = ("support", "faults", "soak", "platforms", "plugin", "pixels", "tonal", "colour", "compose",
         "render", "classes")  # fmt: skip
COPIED = (*FOLDERS, "host", *(f"tests/{folder}" for folder in TESTS))
WIDTH = ("-m32", "-msse2", "-mfpmath=sse")
PROGRAMS = ("internal_tests", "picture_tests", "fault_tests", "soak_tests")
INTERNALS = "tests/support/internals.cpp"


def picture_plugin(root, jobs):
    """Builds the test programs, and says how the plug-in is compiled."""
    base = root / "build" / "mutation" / "base"
    run(root / "script/bootstrap")
    configure(root, base)
    environment = {**os.environ, "CCACHE_BASEDIR": str(root), "CCACHE_NOHASHDIR": "1"}
    run("cmake", "--build", base, "-j", jobs, "--target", *PROGRAMS, "--", "--quiet", env=environment)
    commands = {
        pathlib.Path(entry["file"]).relative_to(root).as_posix(): shlex.split(entry["command"])
        for entry in json.loads((base / "compile_commands.json").read_text())
        if entry["file"].startswith(f"{root}/")
    }
    sources = [name for name in commands if os.path.dirname(name) in FOLDERS]
    units = [unit_of(root, name, commands[name]) for name in [*sources, INTERNALS]]
    compiler = units[0].command[0]
    shared = [compiler, *WIDTH, "-fPIC", "-shared"]
    libraries = [
        Library("Picture.so", shared + ["-nostartfiles", "-Wl,--as-needed", "-Wl,-z,defs", "-Wl,-z,now"], sources),
        Library("PictureInternals.so", shared + ["-Wl,--wrap=malloc,--wrap=calloc"], [*sources, INTERNALS]),
    ]
    steps = [Step(base / program) for program in PROGRAMS]
    return Project(root, base.parent, FOLDERS, COPIED, units, libraries, steps, tests_in(root, base),
                   own_tests(root, base, commands))  # fmt: skip


def sources_alone(root):
    """The project as far as it is needed to find mutants."""
    return Project(root, root / "build" / "mutation", FOLDERS, COPIED, [], [], [])


def configure(root, base):
    base.mkdir(parents=True, exist_ok=True)
    run("cmake", "-S", root, "-B", base, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DPICTURE_RUNNER=OFF",
        f"-DCMAKE_CXX_FLAGS={' '.join(WIDTH)}", "-DCMAKE_UNITY_BUILD=OFF",
        f"-DCMAKE_CXX_COMPILER_LAUNCHER={'ccache' if shutil.which('ccache') else ''}",
        stdout=subprocess.DEVNULL)  # fmt: skip


def unit_of(root, source, words):
    """CMake's command, but without the launcher, without warnings, and optimised little: it compiles quickly."""
    words = words[words[0].endswith("ccache") : words.index("-o")]
    kept = [w for w in words if not re.fullmatch(r"-O\d|-W.*|-DPictureInternals_EXPORTS", w)]
    return Unit(source, [TREE if w == f"-I{root}" else w for w in kept] + ["-O1", "-w"])


def tests_in(root, base):
    """Where each test stands, and which program runs it."""
    files = {}
    for file in sorted((root / "tests").glob("*/*_test.cpp")):
        for suite, name in re.findall(r"^TEST(?:_F|_P)?\((\w+),\s*(\w+)\)", file.read_text(), re.M):
            files[f"{suite}.{name}"] = file.relative_to(root).as_posix()
    found = {}
    for program in PROGRAMS:
        listed = run(base / program, "--gtest_list_tests", stdout=subprocess.PIPE, text=True)
        suite = ""
        for line in listed.splitlines():
            name = line.split("#")[0].strip()
            if line.startswith("  "):
                # "Openings/HostFaults.Each/3" is written HostFaults, Each.
                plain = re.sub(r"^\w+/", "", re.sub(r"/\w+$", "", suite + name))
                found[suite + name] = (files.get(plain, ""), program)
            elif name.endswith("."):
                suite = name
    return found


def own_tests(root, base, commands):
    """The sources of internal_tests by the header that they include themselves."""
    found = {}
    archives = [base / "tests/libtest_support.a", base / "host/libpicturehost.a", "-ldl", base / "lib/libgtest.a"]
    for source, words in commands.items():
        if not source.startswith("tests/") or not any("internal_tests.dir" in word for word in words):
            continue
        unit = unit_of(root, source, words)
        for header in re.findall(r'^#include "([^"]+)"', (root / source).read_text(), re.M):
            if os.path.dirname(header) in FOLDERS:
                own = found.setdefault(header, OwnTests([], [unit.command[0], *WIDTH], archives))
                own.units.append(unit)
    return found
