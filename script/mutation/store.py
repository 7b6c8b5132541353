"""What became of each mutant, kept so that a run goes on where another stopped."""

import json
import threading

from mutation.project import hash_of
from mutation.trial import KILLED, Verdict


class Store:
    """One line for each verdict, in results.jsonl; a later one counts.

    A kill is kept as long as the mutated file and the file of the test that killed it are the same. What
    else was found out is kept as long as the mutated file is the same and all the rest is, too.
    """

    def __init__(self, project):
        self.project = project
        self.file = project.work / "results.jsonl"
        self.rest = project.rest()
        self.lock = threading.Lock()
        # As they are now, before anything is tried.
        names = {*project.sources(), *(where for where, _ in project.tests.values() if where)}
        self.hashes = {name: hash_of((project.root / name).read_bytes()) for name in names}
        self.lines = {}
        if self.file.exists():
            for line in self.file.read_text().splitlines():
                try:
                    entry = json.loads(line)
                except ValueError:  # the last one, of a run that was killed
                    continue
                self.lines[entry["key"]] = entry

    def key(self, mutant):
        return hash_of(mutant.file, self.hashes[mutant.file], mutant.start, mutant.end, mutant.new)

    def basis(self, outcome, killer):
        """What has to be the same for a verdict to be kept."""
        where = self.project.tests.get(killer, ("", ""))[0]
        return self.hashes[where] if outcome == KILLED and where else self.rest

    def get(self, mutant):
        entry = self.lines.get(self.key(mutant))
        if entry is None or entry["basis"] != self.basis(entry["outcome"], entry["killer"]):
            return None
        return Verdict(entry["outcome"], entry["killer"], entry["how"], entry["seconds"])

    def put(self, mutant, verdict):
        entry = {"key": self.key(mutant), "basis": self.basis(verdict.outcome, verdict.killer),
                 "name": mutant.name, **vars(verdict)}  # fmt: skip
        with self.lock:
            self.lines[entry["key"]] = entry
            with open(self.file, "a", encoding="utf-8") as output:
                output.write(json.dumps(entry) + "\n")
