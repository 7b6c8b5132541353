"""Compiles and links mutants, each from a copy of the sources: nothing is written where they lie."""

import contextlib
import os
import pathlib
import shutil
import signal
import subprocess

from mutation.project import TREE


class NotViable(Exception):
    """A mutant that no compiler takes."""


class Stopped(Exception):
    """The run was interrupted."""


class Processes:
    """The programs that run now, so that they can be ended."""

    def __init__(self):
        self.running = set()
        self.stopped = False

    def run(self, command, log, timeout=None):
        """The exit status; None where it took longer than `timeout` seconds."""
        if self.stopped:
            raise Stopped
        with open(log, "wb") as output:
            process = subprocess.Popen([str(word) for word in command], stdin=subprocess.DEVNULL, stdout=output,
                                       stderr=subprocess.STDOUT, process_group=0)  # fmt: skip
            self.running.add(process)
            try:
                status = process.wait(timeout)
            except subprocess.TimeoutExpired:
                end(process)
                process.wait()
                status = None
            finally:
                self.running.discard(process)
        if self.stopped:
            raise Stopped
        return status

    def stop(self):
        self.stopped = True
        for process in list(self.running):
            end(process)


def end(process):
    """Ends a program and what it started."""
    with contextlib.suppress(ProcessLookupError):
        os.killpg(process.pid, signal.SIGKILL)


class Build:
    """The unmutated objects, and which sources are compiled from which files."""

    def __init__(self, project, processes):
        self.project = project
        self.processes = processes
        self.tree = project.work / "tree"
        self.folder = project.work / "unmutated"
        self.includers = {}  # file -> units that are compiled from it

    def copy_sources(self):
        """The sources as they are now, whatever is edited meanwhile."""
        shutil.rmtree(self.tree, ignore_errors=True)
        for folder in self.project.copied:
            for file in self.project.root.joinpath(folder).rglob("*"):
                if file.suffix in (".h", ".cpp"):
                    target = self.tree / file.relative_to(self.project.root)
                    target.parent.mkdir(parents=True, exist_ok=True)
                    shutil.copyfile(file, target)

    def compile_all(self, pool):
        """Every unit as it is; notes what it includes."""
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)

        def compile_one(unit):
            self.compile(unit, self.folder, [self.tree])
            return unit, self.includes_of(unit)

        for unit, files in pool.map(compile_one, self.project.units):
            for file in files:
                self.includers.setdefault(file, []).append(unit)
        # The quickest first: a mutant that doesn't compile is known sooner.
        for units in self.includers.values():
            units.sort(key=lambda unit: object_of(self.folder, unit.source).stat().st_size)
        self.link(self.folder, {})

    def includes_of(self, unit):
        rule = object_of(self.folder, unit.source).with_suffix(".d").read_text()
        files = [pathlib.Path(word) for word in rule.replace("\\\n", " ").split()[1:]]
        return {f.relative_to(self.tree).as_posix() for f in files if f.is_relative_to(self.tree)}

    def compile(self, unit, folder, trees):
        """Compiles a unit from the first of the trees that has it; raises NotViable."""
        source = next(tree / unit.source for tree in trees if (tree / unit.source).exists())
        target = object_of(folder, unit.source)
        target.parent.mkdir(parents=True, exist_ok=True)
        command = []
        for word in unit.command:
            command += [f"-I{tree}" for tree in trees] if word == TREE else [word]
        command += ["-MMD", "-MF", target.with_suffix(".d"), "-o", target, "-c", source]
        if self.processes.run(command, folder / "compiler.log", timeout=300) != 0:
            raise NotViable
        return target

    def link(self, folder, changed):
        """The libraries, of the changed objects and the unmutated ones."""
        for library in self.project.libraries:
            objects = [changed.get(source, object_of(self.folder, source)) for source in library.sources]
            status = self.processes.run([*library.command, "-o", folder / library.name, *objects], folder / "linker.log")
            if status != 0:
                raise NotViable

    def changed_objects(self, mutant, text, folder):
        """The objects of a mutant that differ from the unmutated ones, by source."""
        trees = [self.write(mutant, text, folder), self.tree]
        changed = {}
        for unit in self.includers.get(mutant.file, []):
            built = self.compile(unit, folder, trees)
            if built.read_bytes() != object_of(self.folder, unit.source).read_bytes():
                changed[unit.source] = built
        return changed

    def write(self, mutant, text, folder):
        tree = folder / "tree"
        shutil.rmtree(tree, ignore_errors=True)
        (tree / mutant.file).parent.mkdir(parents=True)
        (tree / mutant.file).write_text(mutant.apply(text))
        return tree

    def own_tests(self, mutant, folder):
        """A program of the tests that include the mutated header themselves; None where there are none."""
        own = self.project.own_tests.get(mutant.file)
        if own is None:
            return None
        objects = [self.compile(unit, folder, [folder / "tree", self.tree]) for unit in own.units]
        program = folder / "own_tests"
        if self.processes.run([*own.link, "-o", program, *objects, *own.archives], folder / "linker.log") != 0:
            raise NotViable
        return program


def object_of(folder, source):
    return folder / (source.replace("/", "-").removesuffix(".cpp") + ".o")
