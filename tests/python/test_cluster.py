"""Collections on a cluster: a scheduler and workers, all of them on this machine's loopback."""

import os
import re
import signal
import subprocess
import sys
import time

import numpy as np
import pytest
from conftest import random_pixels
from PIL import Image

from picturehost import cluster

EXPRESSIONS = ["ChangeContrastKRT(0.2)", "ChangeSaturationKRT(150)", "InvertKRT(9, 9, 100, 100)"]
PATIENCE = 300  # seconds until a test gives up, on a machine that is busy


@pytest.fixture(scope="module")
def environment(tmp_path_factory):
    folder = tmp_path_factory.mktemp("dask")
    return dict(os.environ, DASK_CONFIG=str(folder), DASK_TEMPORARY_DIRECTORY=str(folder))


def start(words, environment, name, folder):
    log = open(folder / f"{name}.log", "w", encoding="utf-8")
    return subprocess.Popen([sys.executable, "-m", *words], env=environment, stdout=log, stderr=log)


def wait_for(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end, f"waited in vain for {what}"
        time.sleep(0.02)


class Cluster:
    """A scheduler and three workers, which end by themselves where nobody ends them."""

    def __init__(self, folder, environment):
        self.folder = folder
        self.scheduler = start(["distributed.cli.dask_scheduler", "--host", "127.0.0.1", "--port", "0",
                                "--no-dashboard", "--idle-timeout", "120s"], environment, "scheduler", folder)
        self.workers = []
        wait_for(lambda: self.find_address() is not None, "the scheduler's address")
        self.address = self.find_address()
        self.workers = [
            start(["distributed.cli.dask_worker", self.address, "--host", "127.0.0.1", "--no-nanny", "--no-dashboard",
                   "--nthreads", "1", "--death-timeout", "20"], environment, f"worker{number}", folder)
            for number in range(3)
        ]
        wait_for(lambda: self.log("scheduler").count("Register worker") == 3, "three workers")

    def log(self, name):
        return (self.folder / f"{name}.log").read_text()

    def find_address(self):
        found = re.search(r"tcp://127\.0\.0\.1:[0-9]+", self.log("scheduler"))
        return found and found.group()

    def end(self):
        # Told to end, a worker may wait for its scheduler for ever, if that ends at the same time.
        processes = [*self.workers, self.scheduler]
        for process in processes:
            process.kill()
        for process in processes:
            process.wait(PATIENCE)


@pytest.fixture
def three_workers(tmp_path, environment):
    made = Cluster(tmp_path, environment)
    yield made
    made.end()


def run(*words, environment):
    return subprocess.Popen([sys.executable, "-m", "picturehost.cluster", *map(str, words)], env=environment,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)


def finish(process):
    printed, errors = process.communicate(timeout=PATIENCE)
    return process.returncode, printed, errors


def make_pictures(folder, count, size):
    for number in range(count):
        below = folder / f"{number % 7}"
        below.mkdir(parents=True, exist_ok=True)
        Image.fromarray(random_pixels(number, size, size, alpha=255)).save(below / f"{number}.png", compress_level=1)


def contents(folder):
    return {str(path.relative_to(folder)): path.read_bytes() for path in folder.rglob("*.png")}


def expected_by_the_program(program, inputs, outputs, expressions):
    for below in sorted(inputs.iterdir()):
        if below.is_dir():
            words = [word for expression in expressions for word in ("-e", expression)]
            subprocess.run([program, "batch", *words, "--output-dir", outputs / below.name,
                            *sorted(below.glob("*.png"))], check=True, capture_output=True)
    return contents(outputs)


def test_a_worker_that_is_killed_has_its_files_redone(program, three_workers, tmp_path, environment):
    inputs, outputs = tmp_path / "in", tmp_path / "out"
    make_pictures(inputs, 150, 220)
    expected = expected_by_the_program(program, inputs, tmp_path / "expected", EXPRESSIONS)
    assert len(expected) == 150

    words = [*EXPRESSIONS, "CountColorKRT(&c000000)", "--input-dir", inputs, "--output-dir", outputs,
             "--scheduler", three_workers.address]
    driver = run(*words, environment=environment)
    wait_for(lambda: outputs.exists() and len(list(outputs.rglob("*.png"))) > 10, "the first files")
    three_workers.workers[1].send_signal(signal.SIGKILL)
    three_workers.workers[1].wait(PATIENCE)
    at_the_end_of_one = len(list(outputs.rglob("*.png")))
    status, printed, errors = finish(driver)
    assert at_the_end_of_one < 150, "it was to be killed in the middle"
    assert status == 0, errors
    assert contents(outputs) == expected
    lines = printed.splitlines()
    assert lines.pop() == f"150 written, in {outputs}"
    files = [line.split(": ")[0] for line in lines]
    assert sorted(files) == sorted(str(path) for path in inputs.rglob("*.png")), "each is done once"
    assert "Remove worker" in three_workers.log("scheduler")

    before = {path: path.stat().st_mtime_ns for path in outputs.rglob("*.png")}
    lost = sorted(outputs.rglob("*.png"))[:3]
    for path in lost:
        path.unlink()
    status, printed, errors = finish(run(*words, environment=environment))
    assert status == 0 and f"3 written, 147 there already, in {outputs}" in printed, errors
    assert contents(outputs) == expected
    after = {path: path.stat().st_mtime_ns for path in outputs.rglob("*.png")}
    assert {path for path in after if after[path] != before[path]} == set(lost)


def test_a_scheduler_that_is_lost_is_told(three_workers, tmp_path, environment):
    inputs, outputs = tmp_path / "in", tmp_path / "out"
    make_pictures(inputs, 60, 300)
    patience = dict(environment, DASK_DISTRIBUTED__COMM__TIMEOUTS__CONNECT="2s")
    driver = run(*EXPRESSIONS, "--input-dir", inputs, "--output-dir", outputs, "--scheduler", three_workers.address,
                 environment=patience)
    wait_for(lambda: any(outputs.rglob("*.png")), "the first file")
    three_workers.scheduler.send_signal(signal.SIGKILL)
    status, _, errors = finish(driver)
    assert status == 1
    assert errors.strip().splitlines()[-1].startswith("picturehost.cluster: the scheduler was lost; the same command")
    for worker in three_workers.workers:
        worker.wait(PATIENCE)


def test_a_cluster_of_its_own_lists_what_fails(tmp_path, environment):
    inputs, outputs = tmp_path / "in", tmp_path / "out"
    make_pictures(inputs, 10, 20)
    (inputs / "0" / "broken.png").write_text("no picture")
    (inputs / "text.txt").write_text("no picture, and not called one")
    status, printed, errors = finish(run("InvertKRT", "--input-dir", inputs, "--output-dir", outputs, "--progress",
                                         environment=environment))
    assert status == 1
    assert printed.splitlines()[-1] == f"10 written, 1 failed, in {outputs}"
    assert "10 written, 1 failed, " in errors, "progress, which was asked for"
    last = errors.strip().splitlines()[-1]
    assert last.startswith("picturehost.cluster: '0/broken.png': ") and "isn't an image" in last
    assert sorted(contents(outputs)) == sorted(name for name in contents(inputs) if "broken" not in name)
    pixels = np.array(Image.open(outputs / "3" / "3.png"))
    assert np.array_equal(pixels[..., :3], 255 - np.array(Image.open(inputs / "3" / "3.png"))[..., :3])


def test_options_for_files_are_those_of_batch(program, tmp_path, environment):
    inputs, outputs = tmp_path / "in", tmp_path / "out"
    make_pictures(inputs, 8, 40)
    words = ["--metadata", "none", "-f", "webp", "--quality=40", "--strict", "--layout", "rgba"]
    status, printed, errors = finish(run("InvertKRT", *words, "--input-dir", inputs, "--output-dir", outputs,
                                         environment=environment))
    assert status == 0 and printed == f"8 written, in {outputs}\n", errors
    for below in inputs.iterdir():
        subprocess.run([program, "batch", "InvertKRT", *words, "--output-dir", tmp_path / "expected" / below.name,
                        *below.iterdir()], check=True, capture_output=True)
    written = {str(path.relative_to(outputs)): path.read_bytes() for path in outputs.rglob("*.webp")}
    expected = tmp_path / "expected"
    assert written == {str(path.relative_to(expected)): path.read_bytes() for path in expected.rglob("*.webp")}
    assert len(written) == 8 and all(name.endswith(".webp") for name in written)


def test_warnings_are_told_and_names_that_meet_are_failures(tmp_path, environment):
    inputs, outputs = tmp_path / "in", tmp_path / "out"
    make_pictures(inputs, 1, 40)
    Image.fromarray(random_pixels(3, 64, 64)[..., :3]).save(inputs / "0" / "damaged.jpg")
    data = (inputs / "0" / "damaged.jpg").read_bytes()
    (inputs / "0" / "damaged.jpg").write_bytes(data[: len(data) * 2 // 3])
    (inputs / "0" / "0.gif").write_bytes((inputs / "0" / "0.png").read_bytes())
    status, printed, errors = finish(run("InvertKRT", "--format", "png", "--input-dir", inputs, "--output-dir", outputs,
                                         environment=environment))
    assert (status, printed) == (1, f"2 written, 1 failed, in {outputs}\n"), errors
    assert sorted(path.name for path in outputs.rglob("*.*")) == ["0.png", "damaged.png"]
    lines = [line for line in errors.splitlines() if line.startswith("picturehost.cluster: ")]  # others are Dask's
    assert len(lines) == 2, errors
    assert lines[0].startswith(f"picturehost.cluster: warning: '{inputs}/0/damaged.jpg' ") and " rows " in lines[0]
    assert "becomes '0/0.png' already" in lines[1]

    status, printed, errors = finish(run("InvertKRT", "--damage", "fail", "--input-dir", inputs / "0", "--output-dir",
                                         tmp_path / "strict", environment=environment))
    assert (status, printed) == (1, f"2 written, 1 failed, in {tmp_path / 'strict'}\n")
    lines = [line for line in errors.splitlines() if line.startswith("picturehost.cluster: ")]
    assert len(lines) == 2, errors
    assert lines[0].startswith(f"picturehost.cluster: warning: '{inputs}/0/0.gif': the result has more colours")
    assert lines[1].startswith("picturehost.cluster: 'damaged.jpg': ")


def test_help_shows_every_option_for_files(program, capsys):
    with pytest.raises(SystemExit) as ended:
        cluster.main(["--help"])
    assert ended.value.code == 0
    shown = capsys.readouterr().out
    batch = subprocess.run([program, "batch", "--help"], capture_output=True, text=True, check=True).stdout
    of_the_run = {"--help", "--expression", "--jobs", "--file-timeout", "--file-memory", "--keep-going", "--json",
                  "--csv", "--quiet", "--files-from", "--null", "--recursive", "--output", "--in-place", "--save",
                  "--manifest", "--resume", "--plugin", "--host-version", "--application"}
    options = set(re.findall(r"^ +(?:-\w,)?(--[a-z-]+)", batch, re.MULTILINE)) - of_the_run
    assert {"--page", "--damage", "--keep-alpha", "--format", "--quality", "--layout"} < options
    assert [option for option in sorted(options) if option not in shown] == []


@pytest.mark.parametrize("words, told", [
    (["InvertKRTT"], "did you mean InvertKRT"),
    (["InvertKRT("], "column"),
    (["InvertKRT", "--quality", "101"], "--quality: Value 101 not in range"),
    (["InvertKRT", "--damage=fial"], "{warn,fail,ignore}"),
])
def test_mistakes_are_told_before_anything_is_done(words, told, tmp_path, environment):
    (tmp_path / "in").mkdir()
    status, _, errors = finish(run(*words, "--input-dir", tmp_path / "in", "--output-dir", tmp_path / "out",
                                   environment=environment))
    assert status == 1 and told in errors and len(errors.splitlines()) == 1
    assert not (tmp_path / "out").exists()


def test_folders_that_cannot_be(tmp_path):
    with pytest.raises(cluster.Error, match="no folder"):
        cluster.main(["InvertKRT", "--input-dir", str(tmp_path / "none"), "--output-dir", str(tmp_path)])
    with pytest.raises(cluster.Error, match="overwritten"):
        cluster.main(["InvertKRT", "--input-dir", str(tmp_path), "--output-dir", str(tmp_path)])


def test_files_are_listed_as_they_are_asked_for(tmp_path, monkeypatch):
    for name in ("a/1.png", "a/b/2.JPG", "3.webp", "4.txt", "out/5.png", "a/6.tiff"):
        (tmp_path / name).parent.mkdir(parents=True, exist_ok=True)
        (tmp_path / name).touch()
    (tmp_path / "loop").symlink_to(tmp_path)
    found = list(cluster.picture_files(tmp_path, leave_out=tmp_path / "out"))
    assert sorted(found) == ["3.webp", "a/1.png", "a/6.tiff", "a/b/2.JPG"]

    asked = []

    class Entry:
        def __init__(self, number):
            self.name = self.path = f"{number}.png"
            asked.append(number)

        def is_dir(self, **_):
            return False

        def is_file(self):
            return True

    class Endless:
        def __init__(self, _):
            self.entries = (Entry(number) for number in range(10**12))

        def __next__(self):
            return next(self.entries)

        def close(self):
            asked.append("closed")

    monkeypatch.setattr(cluster.os, "scandir", Endless)
    files = cluster.picture_files("", leave_out="out")
    assert [next(files) for _ in range(3)] == ["0.png", "1.png", "2.png"]
    files.close()
    assert asked == [0, 1, 2, "closed"]
