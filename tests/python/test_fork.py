"""Processes that are forked open and change pictures, and are told what they can't do."""

import os
import subprocess
import sys

import pytest
from conftest import Sources, run_words

PATIENCE = 300  # seconds until a test gives up, on a machine that is busy

# In each, `work` is done by a process that was forked.
OPENS = """
import io, multiprocessing, pathlib, sys
import numpy
from picturehost import Error, Picture

folder = pathlib.Path(sys.argv[1])
names = sorted(path.name for path in folder.iterdir() if path.suffix != ".webp")

def content(name):
    return Picture.open(folder / name).InvertKRT().to_array().tobytes()

def work(name):
    return content(name)

if __name__ == "__main__":
    Picture.open(folder / "photo.jpg").to_bytes("png")
    expected = [content(name) for name in names]
    with multiprocessing.get_context("fork").Pool(2) as pool:
        assert pool.map(work, names) == expected
    print(len(names))
"""

# The parent does one thing, the children the other one.
DOES_IT_AFTER_ITS_PARENT = """
import multiprocessing, sys
from picturehost import Error, Picture

folder, parents, childs = sys.argv[1:]

def do(what, name):
    if what == "save":
        Picture(3, 2).save(folder + "/" + name)
    else:
        Picture.open(folder + "/lossy.webp")

def work(name):
    try:
        do(childs, name)
    except Error as problem:
        return str(problem)

if __name__ == "__main__":
    do(parents, "parents.png")
    with multiprocessing.get_context("fork").Pool(1) as pool:
        print(pool.apply(work, ["forked.png"]))
    with multiprocessing.get_context("spawn").Pool(1) as pool:
        print(pool.apply(work, ["spawned.png"]))
"""

SAVES_FIRST = """
import multiprocessing, sys
from picturehost import Picture

def work(number):
    Picture(3, 2).save(f"{sys.argv[1]}/{number}.png")

if __name__ == "__main__":
    with multiprocessing.get_context("fork").Pool(2) as pool:
        pool.map(work, range(4))
    print(Picture.open(sys.argv[1] + "/3.png").width)
"""

FORKS_WHILE_ANOTHER_THREAD_IS_IN_THE_HOST = """
import os, sys, threading
from picturehost import Picture, _picturehost

batch = _picturehost.Batch(["InvertKRT"] * 2)
ended = False

def keep_the_host_busy():
    while not ended:
        batch.run(sys.argv[1] + "/photo.jpg", sys.argv[1] + "/out.png")

threads = [threading.Thread(target=keep_the_host_busy) for _ in range(3)]
for thread in threads:
    thread.start()
statuses = []
for _ in range(30):
    child = os.fork()
    if child == 0:
        os._exit(7 if Picture(4, 4).InvertKRT().CountColorKRT("#000000") == 16 else 1)
    statuses.append(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]))
ended = True
for thread in threads:
    thread.join()
print(set(statuses), Picture(2, 2).CountColorKRT("#FFFFFF"))
"""


def run(script, tmp_path, folder, *words):
    (tmp_path / "script.py").write_text(script)
    done = subprocess.run([sys.executable, tmp_path / "script.py", folder, *words], capture_output=True, text=True,
                          timeout=PATIENCE, env=dict(os.environ))
    assert done.returncode == 0, done.stderr
    return done.stdout.splitlines()


@pytest.fixture
def sources(program, tmp_path):
    (tmp_path / "sources").mkdir()
    return Sources(program, tmp_path / "sources")


def test_a_forked_process_opens_what_its_parent_opens(sources, tmp_path):
    for name in ("jxl", "jp2", "heic", "avif", "ppm"):
        subprocess.run([sources.program, *run_words(sources.folder / "photo.jpg", "InvertKRT"), "-o",
                        sources.folder / f"photo.{name}", "--metadata", "none"], check=True)
    opened = [path for path in sources.folder.iterdir() if path.suffix != ".webp"]
    assert run(OPENS, tmp_path, sources.folder) == [str(len(opened))]
    assert len(opened) > 12


@pytest.mark.parametrize("parents", ["save", "open"])
@pytest.mark.parametrize("childs", ["save", "open"])
def test_a_forked_process_says_why_it_cannot(sources, tmp_path, parents, childs):
    """What the library does in threads: it saves, and it opens WebP files."""
    forked, spawned = run(DOES_IT_AFTER_ITS_PARENT, tmp_path, sources.folder, parents, childs)
    assert "forked" in forked and 'multiprocessing\'s "spawn"' in forked
    assert spawned == "None"
    assert (sources.folder / "spawned.png").exists() == (childs == "save")
    assert not (sources.folder / "forked.png").exists()
    assert not [name for name in os.listdir(sources.folder) if name.startswith(".")]


def test_processes_that_are_forked_before_any_is_saved_save(tmp_path):
    assert run(SAVES_FIRST, tmp_path, tmp_path) == ["3"]


def test_a_fork_waits_for_the_other_threads(sources, tmp_path):
    assert run(FORKS_WHILE_ANOTHER_THREAD_IS_IN_THE_HOST, tmp_path, sources.folder) == ["{7} 4"]
