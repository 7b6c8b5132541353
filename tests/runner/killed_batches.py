#!/usr/bin/python3
"""Kills a batch in the middle, again and again, and resumes it until it is done.

    killed_batches.py PICTUREHOST [FILES [KILLS]]

Makes so many thumbnails (300), half of them named in a list and half below a folder, and kills workers
and the program at random moments so many times (6), each time anew with --output-dir and with --in-place.
At the end every result has to be there, be the same as one that `picturehost run` makes alone, and stand
in the manifest with its size and time; nothing else may lie around. Prints figures.
"""

import json
import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from PIL import Image

MANIFEST = "picturehost-manifest.jsonl"
CALL = "InvertKRT"


def make_thumbnails(folder, count, rng):
    """Files of a few kinds."""
    folder.mkdir()
    kinds = []
    for kind in range(20):
        size = rng.randint(20, 64), rng.randint(20, 64)
        Image.frombytes("RGB", size, rng.randbytes(size[0] * size[1] * 3)).save(folder / "kind.png", compress_level=1)
        kinds.append((folder / "kind.png").read_bytes())
    (folder / "kind.png").unlink()
    names = []
    for number in range(count):
        below = folder / ("listed" if number % 2 else "found") / f"{number % 37}"
        below.mkdir(parents=True, exist_ok=True)
        names.append(below / f"{number}.png")
        names[-1].write_bytes(kinds[number % 20])
    return names


def descendants(process):
    try:
        text = pathlib.Path(f"/proc/{process}/task/{process}/children").read_text()
    except OSError:
        return []
    return [int(word) for word in text.split()]


def lines(manifest):
    """The manifest's whole lines; a kill may leave a last one without its end."""
    if not manifest.exists():
        return []
    whole, _, _ = manifest.read_bytes().rpartition(b"\n")
    return [json.loads(line) for line in whole.splitlines()]


def done_count(manifest):
    return manifest.read_bytes().count(b'"result":"written"') if manifest.exists() else 0


def wait_for(child, manifest, more, patience):
    goal = done_count(manifest) + more
    while child.poll() is None and done_count(manifest) < goal:
        time.sleep(patience)
    time.sleep(random.random() * 0.02)


def kill(processes):
    for process in processes:
        try:
            os.kill(process, signal.SIGKILL)
        except ProcessLookupError:
            pass


def kill_and_resume(command, folder, manifest, count, kills, rng):
    """Kills a worker, then the program, alone or with its workers; and so on. Gives how many files were done
    at each end, what the last run said, and its seconds."""
    at_kill = []
    share = max(2, count // (2 * kills + 2))
    for _ in range(kills):
        child = subprocess.Popen(command, cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        wait_for(child, manifest, rng.randint(1, share), max(0.005, count / 200_000))
        kill(descendants(child.pid)[:1])
        wait_for(child, manifest, rng.randint(1, share), max(0.005, count / 200_000))
        if child.poll() is None:
            kill([child.pid] if rng.random() < 0.5 else [*descendants(child.pid), child.pid])
        child.communicate()
        at_kill.append(done_count(manifest))
    started = time.monotonic()
    last = subprocess.run(command, cwd=folder, capture_output=True, text=True)
    if last.returncode != 0:
        raise SystemExit(f"status {last.returncode}:\n{last.stderr}")
    return at_kill, last.stderr.strip(), time.monotonic() - started


def check(pairs, manifest, before, program, scratch, rng, in_place):
    """That each result is there, as it should be, and as the manifest has it."""
    written = {}
    for line in lines(manifest):
        if line["result"] == "written":
            written[os.path.normpath(manifest.parent / line["outputs"][0]["file"])] = line
    wrong = []
    alone = {}
    for number, (source, result) in enumerate(pairs):
        if not result.exists():
            wrong.append(f"{result} is missing")
            continue
        kind = before[number % 20]
        if kind not in alone:
            (scratch / "alone-in.png").write_bytes(kind)
            subprocess.run([program, "run", CALL, scratch / "alone-in.png", "-o", scratch / "alone.png"], check=True)
            alone[kind] = (scratch / "alone.png").read_bytes()
        if result.read_bytes() != alone[kind]:
            wrong.append(f"{result} isn't what run makes")
        line = written.pop(str(result.resolve()), None)
        status = result.stat()
        if line is None:
            wrong.append(f"{result} isn't in the manifest")
        elif (line["outputs"][0]["size"], line["outputs"][0]["time"]) != (status.st_size, status.st_mtime_ns):
            wrong.append(f"{result} has another size or time than the manifest says")
        elif not in_place and line["input"] != str(source.resolve()):
            wrong.append(f"{result} was made of {line['input']}")
    wrong += [f"the manifest has {name}, which nobody asked for" for name in written]
    return wrong


def strangers(folder, expected):
    names = {path for path in folder.rglob("*") if not path.is_dir()}
    # Of a worker that was killed its unfinished file remains.
    return [str(path) for path in names - expected if not path.name.endswith(".part")]


def main():
    program = pathlib.Path(sys.argv[1]).resolve()
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 300
    kills = int(sys.argv[3]) if len(sys.argv) > 3 else 6
    seed = int(os.environ.get("SEED", random.randrange(1 << 30)))
    rng = random.Random(seed)
    wrong = []
    with tempfile.TemporaryDirectory() as name:
        scratch = pathlib.Path(name).resolve()
        inputs = scratch / "in"
        names = make_thumbnails(inputs, count, rng)
        before = [names[kind].read_bytes() for kind in range(min(20, count))]
        listed = [path.relative_to(scratch) for path in names if "listed" in path.parts]
        (scratch / "list").write_text("".join(f"{path}\n" for path in listed))
        common = [program, "batch", CALL, "-r", "in/found", "--files-from", "list", "--input-dir", "in", "--resume"]
        for way in (["-d", "out"], ["--in-place"]):
            in_place = way == ["--in-place"]
            manifest = (inputs if in_place else scratch / "out") / MANIFEST
            at_kill, summary, seconds = kill_and_resume(common + way, scratch, manifest, count, kills, rng)
            results = names if in_place else [scratch / "out" / path.relative_to(inputs) for path in names]
            here = check(list(zip(names, results)), manifest, before, program, scratch, rng, in_place)
            here += strangers(inputs if in_place else scratch / "out", set(results) | {manifest})
            print(f"{' '.join(way)}: {count} files, done at the kills: {at_kill}; then {summary}, in {seconds:.1f} s; "
                  f"{len(here)} wrong", flush=True)
            wrong += here
        shutil.rmtree(scratch / "out", ignore_errors=True)
    for problem in wrong[:20]:
        print(problem)
    if wrong:
        raise SystemExit(f"{len(wrong)} wrong, with SEED={seed}")


if __name__ == "__main__":
    main()
