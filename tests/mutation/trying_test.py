"""Mutants of a made-up library of two files, compiled and tried with a made-up test program."""

import argparse
import contextlib
import io
import pathlib
import signal
import subprocess
import sys
import tempfile
import unittest

SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "script"
sys.path.insert(0, str(SCRIPTS))

from mutation import runs  # noqa: E402
from mutation.project import TREE, Library, Project, Step, Unit  # noqa: E402

HEADER = "inline int Twice(int a) { return a * 2; }\n"
CODE = """#include "room/twice.h"
extern "C" int Smaller(int a, int b) { return a < b ? Twice(a) : Twice(b); }
extern "C" int Ignored(int a) { return a - a + 0 * a; }
static_assert(sizeof(int) == 4);
constexpr int kSize = 4;
static_assert(kSize == 4);
"""
# Smaller(4, 4) can't tell `<` from `<=`, and nobody calls Ignored.
ENDLESS = """
extern "C" int Down(int a) {
  while (a > 5) a &= 5;
  return a;
}
"""
PROGRAM = r"""
#include <dlfcn.h>
#include <cstdio>
#include <cstring>
int main(int argc, char** argv) {
  void* library = nullptr;
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--plugin=", 9) == 0) library = dlopen(argv[i] + 9, RTLD_NOW);
  }
  if (library == nullptr) return 2;
  auto smaller = reinterpret_cast<int (*)(int, int)>(dlsym(library, "Smaller"));
  auto down = reinterpret_cast<int (*)(int)>(dlsym(library, "Down"));
  if (smaller(3, 4) != 6 || smaller(4, 3) != 6 || smaller(4, 4) != 8 || (down && down(7) != 5)) {
    std::puts("[  FAILED  ] Room.Works");
    return 1;
  }
  return 0;
}
"""
SURVIVOR = "room/file.cpp:2:49: 'a < b' -> 'a <= b' survived"


class Trying(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.programs = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.programs.cleanup)
        subprocess.run(["g++", "-x", "c++", "-", "-o", f"{cls.programs.name}/program", "-ldl"], check=True,
                       input=PROGRAM, text=True)  # fmt: skip

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = pathlib.Path(temporary.name)
        (self.root / "room").mkdir()
        (self.root / "room/twice.h").write_text(HEADER)
        (self.root / "room/file.cpp").write_text(CODE)
        self.project = Project(
            self.root, self.root / "work", ("room",), ("room",),
            [Unit("room/file.cpp", ["g++", TREE, "-O1", "-fPIC"])],
            [Library("room.so", ["g++", "-shared"], ["room/file.cpp"])],
            [Step(pathlib.Path(self.programs.name, "program"))], spare_seconds=1,
        )  # fmt: skip

    def run_it(self, **chosen):
        """The exit status and what was printed."""
        options = dict(places=[], changed=False, sample=None, seed=1, jobs=2, again=False, document=False)
        output = io.StringIO()
        with contextlib.redirect_stdout(output), contextlib.redirect_stderr(output):
            status = runs.run(self.project, argparse.Namespace(**{**options, **chosen}))
        return status, output.getvalue()

    def verdicts(self, **chosen):
        """What became of each mutant, by what is shown of it."""
        self.run_it(**chosen)
        store = runs.Store(self.project)
        found, _ = runs.all_mutants(self.project)
        return {mutant.name.split(": ", 1)[1]: store.get(mutant) for mutant in found}

    def explain(self, before, after):
        (self.root / "docs").mkdir(exist_ok=True)
        self.root.joinpath("docs/mutation.md").write_text(
            f"## `room/file.cpp`\n\nEqual numbers are equally small.\n\n- `` {before} ``\n  becomes `` {after} ``\n")

    def test_each_mutant_gets_its_verdict(self):
        verdicts = self.verdicts(places=["room/file.cpp"])
        outcome = lambda shown: verdicts[shown].outcome
        self.assertEqual(outcome("'a < b' -> 'a <= b'"), "survived")
        self.assertEqual(outcome("'a < b' -> 'a >= b'"), "killed")
        self.assertEqual(outcome("'a - a' -> 'a + a'"), "survived")
        self.assertEqual(outcome("'a + 0' -> 'a - 0'"), "same code")
        self.assertEqual(outcome("'kSize = 4' -> 'kSize = 5'"), "not viable")
        self.assertEqual(verdicts["'a < b' -> 'a >= b'"].killer, "Room.Works")

    def test_an_endless_loop_is_a_kill(self):
        (self.root / "room/file.cpp").write_text(CODE + ENDLESS)
        verdict = self.verdicts(places=["room/file.cpp:9"])["'a &= 5' -> 'a |= 5'"]
        self.assertEqual((verdict.outcome, verdict.how), ("killed", "too long"))

    def test_a_header_is_mutated_in_what_includes_it(self):
        verdicts = self.verdicts(places=["room/twice.h"])
        self.assertEqual(verdicts["'a * 2' -> 'a / 2'"].outcome, "killed")
        self.assertEqual(verdicts["'a * 2' -> 'a * 3'"].outcome, "killed")

    def test_a_survivor_fails_the_run_until_it_is_explained(self):
        status, printed = self.run_it(places=["room/file.cpp:2"])
        self.assertEqual(status, 1)
        self.assertIn(SURVIVOR + "\n", printed)
        self.assertIn("1 survived, 0 of them explained", printed)
        line = CODE.splitlines()[1]
        self.explain(line, line.replace("<", "<="))
        status, printed = self.run_it(places=["room/file.cpp:2"])
        self.assertEqual(status, 0, printed)
        self.assertIn("1 survived, 1 of them explained", printed)

    def test_an_explanation_that_has_no_survivor_fails_the_run(self):
        line = CODE.splitlines()[1]
        self.explain(line, line.replace("a < b", "a >= b"))
        status, printed = self.run_it(places=["room/file.cpp:2"])
        self.assertEqual(status, 1)
        self.assertIn("room/file.cpp: explained, but killed", printed)

    def test_another_run_takes_up_what_is_known(self):
        first = self.verdicts()
        status, printed = self.run_it()
        self.assertIn(f"{len(first)} mutants, {len(first)} of them known from before", printed)
        self.assertEqual(status, 1)
        (self.root / "room/file.cpp").write_text("// longer\n" + CODE)
        _, printed = self.run_it(places=["room/file.cpp:3"])
        self.assertIn("0 of them known from before", printed)

    def test_a_part_is_the_same_part_again(self):
        _, first = self.run_it(sample=3, seed=7)
        _, second = self.run_it(sample=3, seed=7)
        self.assertIn("3 mutants, 0 of them known", first)
        self.assertIn("3 mutants, 3 of them known", second)

    def test_nothing_is_written_where_the_sources_are(self):
        self.run_it(places=["room/file.cpp"])
        self.assertEqual((self.root / "room/file.cpp").read_text(), CODE)
        self.assertEqual(sorted(file.name for file in (self.root / "room").iterdir()), ["file.cpp", "twice.h"])

    def test_tests_that_fail_anyway_end_the_run(self):
        (self.root / "room/file.cpp").write_text(CODE.replace("a < b", "a > b"))
        status, printed = self.run_it(places=["room/file.cpp:2"])
        self.assertEqual(status, 2)
        self.assertIn("program fails without a mutant: Room.Works (failed)", printed)


class Interrupting(unittest.TestCase):
    def test_an_interrupt_ends_what_a_program_has_started(self):
        with tempfile.TemporaryDirectory() as folder:
            # Of a pipe, the end is seen when the last program that writes to it has ended.
            runner = f"""
import sys
sys.path.insert(0, {str(SCRIPTS)!r})
from mutation.project import run
run("sh", "-c", "sleep 30 & echo started; wait")
"""
            # A shell lets what it starts in the background ignore interrupts.
            process = subprocess.Popen([sys.executable, "-B", "-c", runner], cwd=folder, text=True,
                                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                       preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))  # fmt: skip
            self.addCleanup(process.kill)
            self.assertEqual(process.stdout.readline(), "started\n")
            process.send_signal(signal.SIGINT)
            output, _ = process.communicate(timeout=20)
            self.assertEqual(output, "")


if __name__ == "__main__":
    unittest.main()
