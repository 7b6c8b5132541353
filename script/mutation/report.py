"""The explanations of survivors, and what is printed of a run."""

import collections
import re

from mutation.trial import KILLED, NOT_VIABLE, SAME, SURVIVED

HEADING = re.compile(r"^## `?([\w/]+\.(?:h|cpp))`?$")
ITEM = re.compile(r"^- `` (.*?) ``\s+becomes `` (.*?) ``$", re.S)


def explanations(text):
    """(file, line, mutated line) -> reason, from the sections that are named after files.

    A paragraph is the reason of the items that follow it.
    """
    found = {}
    file, reason = None, ""
    for block in re.split(r"\n\s*\n|\n(?=- )", text):
        block = block.strip()
        heading, item = HEADING.match(block), ITEM.match(block)
        if block.startswith("#"):
            file, reason = heading and heading[1], ""
        elif item and file:
            if not reason:
                raise ValueError(f"docs/mutation.md: no reason before: {block}")
            found[file, " ".join(item[1].split()), " ".join(item[2].split())] = reason
        elif file:
            reason = " ".join(block.split())
    return found


def items(mutants):
    """Survivors as they are written into the document."""
    lines = []
    file = None
    for mutant in mutants:
        if mutant.file != file:
            file = mutant.file
            lines += ["", f"## `{file}`", ""]
        lines += [f"- `` {mutant.before} ``", f"  becomes `` {mutant.after} ``"]
    return "\n".join(lines)


def stale(reasons, tried, whole_files):
    """Explanations without a survivor: (identity, what is wrong). Of files that weren't tried as a whole,
    only what was tried is looked at."""
    outcomes = collections.defaultdict(set)
    for mutant, verdict in tried:
        outcomes[mutant.identity].add(verdict.outcome)
    problems = []
    for identity in reasons:
        if identity in outcomes and SURVIVED not in outcomes[identity]:
            problems.append((identity, f"explained, but {' and '.join(sorted(outcomes[identity]))}"))
        elif identity not in outcomes and identity[0] in whole_files:
            problems.append((identity, "explained, but no such mutant"))
    return problems


def summary(tried, reasons):
    """The counts and the score, as lines."""
    count = collections.Counter(verdict.outcome for _, verdict in tried)
    explained = sum(v.outcome == SURVIVED and m.identity in reasons for m, v in tried)
    counted = count[KILLED] + count[SURVIVED]
    score = 100 * count[KILLED] / counted if counted else 100
    lines = [
        f"{len(tried)} mutants: {count[NOT_VIABLE]} not viable, {count[SAME]} with the same code, {counted} counted",
        f"{count[KILLED]} killed, {count[SURVIVED]} survived, {explained} of them explained; score {score:.1f} %",
    ]
    kinds = collections.defaultdict(collections.Counter)
    for mutant, verdict in tried:
        kinds[mutant.kind][verdict.outcome] += 1
    for kind, outcomes in sorted(kinds.items()):
        parts = [f"{outcomes[outcome]} {outcome}" for outcome in (KILLED, SURVIVED, SAME, NOT_VIABLE)]
        lines.append(f"  {kind:11} {sum(outcomes.values()):5}: {', '.join(parts)}")
    return lines
