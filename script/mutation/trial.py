"""Runs the tests on a mutant, from the most likely to see it on, and says what became of it."""

import dataclasses
import re
import resource
import time

from mutation.build import NotViable

KILLED, SURVIVED, SAME, NOT_VIABLE = "killed", "survived", "same code", "not viable"
RECENT = 8  # tests that have killed other mutants of the file, to begin with
GIB = 1 << 30
MIB = 1 << 20


@dataclasses.dataclass
class Verdict:
    outcome: str
    killer: str = ""  # the test that failed
    how: str = ""  # failed, crashed, too long
    seconds: float = 0


@dataclasses.dataclass
class Limits:
    cpu: int  # seconds of the processor
    wall: float


class Trial:
    """Tries mutants in one folder after the other; several may run at a time, each with its own."""

    def __init__(self, project, build, processes):
        self.project = project
        self.build = build
        self.processes = processes
        self.recent = {}  # file -> tests that killed a mutant of it, the last one last
        self.limits = {}  # program -> Limits

    def time_unmutated(self):
        """Runs every test without a mutant, to know how long it takes; names the program that fails."""
        for step in self.project.steps:
            before, started = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime, time.monotonic()
            self.limits[step.program] = Limits(600, 900)
            failure = self.run(step.program, self.build.folder)
            if failure:
                return f"{step.program.name} fails without a mutant: {failure[0]} ({failure[1]})"
            cpu = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before
            self.limits[step.program] = Limits(int(10 * cpu) + self.project.spare_seconds, 20 * (time.monotonic() - started) + 10)
        return None

    def verdict(self, mutant, text, folder):
        started = time.monotonic()
        folder.mkdir(parents=True, exist_ok=True)
        verdict = self.judge(mutant, text, folder)
        verdict.seconds = round(time.monotonic() - started, 2)
        return verdict

    def judge(self, mutant, text, folder):
        try:
            changed = self.build.changed_objects(mutant, text, folder)
            if not changed:
                return Verdict(SAME)
            self.build.link(folder, changed)
            failure = self.first_failure(mutant, folder)
        except NotViable:
            return Verdict(NOT_VIABLE)
        if failure is None:
            return Verdict(SURVIVED)
        test, how = failure
        recent = self.recent.setdefault(mutant.file, [])
        if test in self.project.tests:
            self.recent[mutant.file] = [t for t in recent if t != test][1 - RECENT :] + [test]
        return Verdict(KILLED, test, how)

    def first_failure(self, mutant, folder):
        for tests in (self.recent.get(mutant.file, []), self.project.tests_of(mutant.file)):
            for step in self.project.steps:
                chosen = [t for t in tests if self.project.tests[t][1] == step.program.name]
                failure = chosen and self.run(step.program, folder, chosen)
                if failure:
                    return failure
        for step in self.project.steps:
            failure = self.run(step.program, folder)
            if failure:
                return failure
        try:
            program = self.build.own_tests(mutant, folder)
        except NotViable:
            return mutant.file, "its tests don't compile"
        return program and self.run(program, folder)

    def run(self, program, folder, tests=()):
        """The test that fails first, and how; None where all pass."""
        limits = self.limits.get(program, Limits(20, 60))
        if tests:
            limits = Limits(min(limits.cpu, self.project.spare_seconds + limits.cpu // 8), limits.wall)
        log = folder / "tests.log"
        command = ["prlimit", f"--cpu={limits.cpu}", f"--as={2 * GIB}", f"--fsize={256 * MIB}", "--core=0",
                   program, f"--plugin={folder / self.project.libraries[0].name}", "--gtest_fail_fast",
                   f"--gtest_filter={':'.join(tests) or '*'}"]  # fmt: skip
        status = self.processes.run(command, log, timeout=limits.wall)
        if status == 0:
            return None
        output = log.read_text(errors="replace")
        failed = re.findall(r"^\[  FAILED  \] ([^\s,]+)", output, re.M)
        begun = re.findall(r"^\[ RUN      \] (\S+)", output, re.M)
        how = "failed" if failed else "too long" if status in (None, -24, -9) else "crashed"
        return (failed[0] if failed else begun[-1] if begun else program.name), how
