"""A run: which mutants, one after the other or several at a time, and how it ends."""

import concurrent.futures
import contextlib
import fcntl
import queue
import random
import re
import subprocess
import sys
import time

from mutation import mutants, report
from mutation.build import Build, Processes, Stopped
from mutation.store import Store
from mutation.trial import SURVIVED, Trial


def all_mutants(project):
    texts = {file: (project.root / file).read_text() for file in project.sources()}
    return [mutant for file, text in texts.items() for mutant in mutants.find(file, text)], texts


def changed_lines(root, folders):
    """File -> numbers of its lines that differ from the branch main, committed or not."""
    git = lambda *words: subprocess.run(["git", *words], cwd=root, stdout=subprocess.PIPE, text=True).stdout
    base = git("merge-base", "main", "HEAD").strip()
    if not base:
        sys.exit("script/mutate: there is no branch main to compare with")
    lines = {file: None for file in git("ls-files", "--others", "--exclude-standard", "--", *folders).splitlines()}
    file = ""
    for line in git("diff", "-U0", "--no-color", base, "--", *folders).splitlines():
        if line.startswith("+++ "):
            file = line[4:].removeprefix("b/")
        elif hunk := re.match(r"@@ -\S+ \+(\d+)(?:,(\d+))? @@", line):
            first, count = int(hunk[1]), int(hunk[2] or 1)
            lines.setdefault(file, set()).update(range(first, first + count))
    return lines


def mutants_at(place, found):
    file, _, line = place.partition(":")
    file = file.removeprefix("./")
    return [m for m in found if m.file == file and (not line or m.line == int(line))]


def choose(project, found, options):
    """The mutants that the options ask for."""
    if options.places:
        found = [mutant for place in options.places for mutant in mutants_at(place, found)]
    if options.changed:
        lines = changed_lines(project.root, project.folders)
        found = [m for m in found if m.file in lines and (lines[m.file] is None or m.line in lines[m.file])]
    if options.sample is not None and options.sample < len(found):
        chosen = random.Random(options.seed).sample(range(len(found)), options.sample)
        found = [found[i] for i in sorted(chosen)]
    return found


def read_explanations(project):
    file = project.root / project.explanations
    return report.explanations(file.read_text()) if file.exists() else {}


@contextlib.contextmanager
def alone(work):
    """Two runs would write into the same folders: the second one ends."""
    work.mkdir(parents=True, exist_ok=True)
    with open(work / "lock", "w") as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            print("script/mutate: another run is going on", file=sys.stderr)
            sys.exit(2)
        yield


def run(project, options):
    """Tries what the options ask for; returns the exit status."""
    everything, texts = all_mutants(project)
    chosen = choose(project, everything, options)
    if not chosen:
        print("no mutants")
        return 0
    reasons = read_explanations(project)
    store = Store(project)
    known = {} if options.again else {m: v for m in chosen if (v := store.get(m)) is not None}
    todo = [m for m in chosen if m not in known]
    print(f"{len(chosen)} mutants, {len(known)} of them known from before", flush=True)
    status, verdicts = try_all(project, todo, texts, store, options.jobs, reasons, known) if todo else (0, {})
    verdicts.update(known)
    tried = [(m, verdicts[m]) for m in chosen if m in verdicts]
    return finish(tried, everything, reasons, options) if status == 0 else status


def print_survivor(mutant, reasons):
    explained = " (explained)" if mutant.identity in reasons else ""
    print(f"{mutant.name} survived{explained}", flush=True)


def try_all(project, todo, texts, store, jobs, reasons, known):
    """Tries mutants, `jobs` at a time; (exit status, verdicts)."""
    processes = Processes()
    build = Build(project, processes)
    trial = Trial(project, build, processes)
    folders = queue.SimpleQueue()
    for number in range(jobs):
        folders.put(project.work / f"worker-{number}")
    verdicts = {}
    for mutant, verdict in known.items():
        if verdict.outcome == SURVIVED:
            print_survivor(mutant, reasons)

    def attempt(mutant):
        folder = folders.get()
        try:
            verdict = trial.verdict(mutant, texts[mutant.file], folder)
            store.put(mutant, verdict)
            return mutant, verdict
        finally:
            folders.put(folder)

    started = time.monotonic()
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        try:
            build.copy_sources()
            build.compile_all(pool)
            problem = trial.time_unmutated()
            if problem:
                print(problem, file=sys.stderr)
                return 2, {}
            started = time.monotonic()
            for future in concurrent.futures.as_completed([pool.submit(attempt, mutant) for mutant in todo]):
                mutant, verdict = future.result()
                verdicts[mutant] = verdict
                if verdict.outcome == SURVIVED:
                    print_survivor(mutant, reasons)
                if len(verdicts) % 100 == 0:
                    print(f"  {len(verdicts)} of {len(todo)}, {(time.monotonic() - started) / len(verdicts):.1f} s each",
                          file=sys.stderr, flush=True)  # fmt: skip
        except (KeyboardInterrupt, Stopped):
            processes.stop()
            pool.shutdown(cancel_futures=True)
            print(f"stopped; {len(verdicts)} verdicts are kept, and another run goes on from there", file=sys.stderr)
            return 130, verdicts
    print(f"{(time.monotonic() - started) / len(todo):.1f} s for each of {len(todo)} mutants, {jobs} at a time")
    return 0, verdicts


def finish(tried, everything, reasons, options):
    """Prints what came out; 1 where a survivor has no reason, or a reason no survivor."""
    chosen = {mutant for mutant, _ in tried}
    whole = {m.file for m in everything} - {m.file for m in everything if m not in chosen}
    if len(whole) == len({m.file for m in everything}):  # and of files that are gone
        whole |= {identity[0] for identity in reasons}
    problems = report.stale(reasons, tried, whole)
    for (file, before, after), problem in problems:
        print(f"{file}: {problem}: '{before}' -> '{after}'")
    unexplained = [m for m, verdict in tried if verdict.outcome == SURVIVED and m.identity not in reasons]
    if options.document and unexplained:
        print(report.items(unexplained))
    print(*report.summary(tried, reasons), sep="\n")
    return 1 if unexplained or problems else 0
