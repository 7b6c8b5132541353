"""Spreads expressions over a collection of pictures, on the machines of a Dask cluster.

    python3 -m picturehost.cluster EXPRESSION ... --input-dir DIR --output-dir DIR [--scheduler ADDRESS]

Every picture file in DIR and the folders below it becomes a file of the same name in the output
folder, exactly as `picturehost batch` would make it, with the same options for files. Files that are
there already are left alone, so that a run that was interrupted can be taken up again. Work that a worker
had when it was lost is done by another. Without an address a cluster of this machine's processors is
started. The workers of a cluster need this package, and both folders under the same names.
"""

import argparse
import os
import sys
import tempfile
import time

from . import _picturehost, _work
from ._picturehost import Error

IN_FLIGHT_PER_WORKER = 8


def picture_files(folder, leave_out):
    """Paths relative to `folder` of the picture files in and below it, found as they are asked for.

    Memory is taken for the folders on the way down, not for the files. `leave_out` is a folder that
    isn't entered; links to folders aren't followed.
    """
    open_folders = [os.scandir(folder)]
    try:
        while open_folders:
            entry = next(open_folders[-1], None)
            if entry is None:
                open_folders.pop().close()
            elif entry.is_dir(follow_symlinks=False):
                if not os.path.samefile(entry.path, leave_out):
                    open_folders.append(os.scandir(entry.path))
            elif entry.is_file() and _picturehost.format_of(entry.name):
                yield os.path.relpath(entry.path, folder)
    finally:
        for scan in open_folders:
            scan.close()


class Progress:
    """One line on standard error that is written over; nothing unless it is wanted."""

    def __init__(self, wanted):
        self._wanted = wanted
        self._terminal = sys.stderr.isatty()
        self._started = self._last = time.monotonic()

    def show(self, tally, now=False):
        time_now = time.monotonic()
        if not self._wanted or (not now and time_now - self._last < (0.1 if self._terminal else 5)):
            return
        self._last = time_now
        rate = tally.written / max(time_now - self._started, 0.001)
        text = f"{tally}, {rate:.1f} a second"
        print(f"\r\x1b[K{text}" if self._terminal else text, end="" if self._terminal else "\n",
              file=sys.stderr, flush=True)

    def clear(self):
        """Makes room for a line of something else."""
        if self._wanted and self._terminal:
            print("\r\x1b[K", end="", file=sys.stderr, flush=True)

    def close(self):
        if self._wanted and self._terminal:
            print(file=sys.stderr)


class Tally:
    """What has become of the files."""

    def __init__(self):
        self.written = self.there = self.failed = 0
        # On disk, since of millions of files many may fail.
        self.failures = tempfile.TemporaryFile("w+", encoding="utf-8", errors="backslashreplace")

    def fail(self, name, why):
        self.failed += 1
        print(" ".join(f"{name!r}: {why}".split("\n")), file=self.failures)

    def __str__(self):
        text = f"{self.written} written"
        if self.there:
            text += f", {self.there} there already"
        return text + (f", {self.failed} failed" if self.failed else "")


class Results:
    """Names of results. Where all get one format, two files may want the same one: the second is refused.

    Memory is taken for the names in the folders on the way down, as picture_files has them.
    """

    def __init__(self, extension):
        self._extension = extension
        self._taken = {}  # by folder: which file takes which name

    def name_for(self, name):
        if not self._extension:
            return name
        folder = os.path.dirname(name)
        self._taken = {above: taken for above, taken in self._taken.items()
                       if above in ("", folder) or folder.startswith(above + os.sep)}
        result = f"{os.path.splitext(name)[0]}.{self._extension}"
        first = self._taken.setdefault(folder, {}).setdefault(result, name)
        if first != name:
            raise Error(f"{first!r} becomes {result!r} already")
        return result


def spread(client, expressions, words, inputs, outputs, tally, progress):
    """Does every file once, a bounded number of them in flight. `words` are the options for files."""
    from distributed import CancelledError, as_completed

    workers = max(1, sum(client.nthreads().values()))
    running = as_completed()
    names = {}  # of what is in flight
    results = Results(_picturehost.Batch(expressions, words).format)

    def to_do():
        for name in picture_files(inputs, leave_out=outputs):
            try:
                output = os.path.join(outputs, results.name_for(name))
            except Error as problem:
                tally.fail(name, problem)
                continue
            if os.path.lexists(output):
                tally.there += 1
                progress.show(tally)
            else:
                yield name, output

    def submit(name, output):
        future = client.submit(_work.do_file, expressions, words, os.path.join(inputs, name), output, pure=False)
        names[future] = name
        running.add(future)

    waiting = to_do()
    for job in waiting:
        submit(*job)
        if len(names) == workers * IN_FLIGHT_PER_WORKER:
            break
    for future in running:
        name = names.pop(future)
        try:
            # Waits once more where the worker was lost with the result.
            printed, warnings = future.result()
            if printed or warnings:
                progress.clear()
            for warning in warnings:
                print(f"picturehost.cluster: warning: {warning}", file=sys.stderr)
            print(printed, end="", flush=True)
            tally.written += 1
        except CancelledError:
            raise Error("the scheduler was lost; the same command goes on where this one stopped") from None
        except Exception as problem:
            tally.fail(name, str(problem) or type(problem).__name__)
        future.release()
        progress.show(tally)
        for job in waiting:
            submit(*job)
            break


def connect(address):
    """A client of the scheduler at an address, or of a cluster of this machine's own."""
    from distributed import Client, LocalCluster

    if address:
        client = Client(address, timeout=20)
        client.wait_for_workers(1, timeout=60)
        return client
    cluster = LocalCluster(processes=True, threads_per_worker=1, host="127.0.0.1", dashboard_address=None)
    client = Client(cluster)
    client.own_cluster = cluster  # closed with it
    return client


class FileOption(argparse.Action):
    """Collects options for files, which the program's own parser makes sense of."""

    def __call__(self, parser, namespace, values, option_string=None):
        name = self.option_strings[-1]
        namespace.words.append(name if self.nargs == 0 else f"{name}={values}")


def add_file_options(parser):
    """The options that `picturehost batch` takes for files, as `words` of its command line."""
    parser.set_defaults(words=[])
    group = parser.add_argument_group("how files are opened and saved, as by `picturehost batch`")
    for option in _picturehost.file_options():
        default = f" [{option.initial}]" if option.initial else ""
        takes = {"metavar": option.value} if option.value else {"nargs": 0}
        group.add_argument(*option.names, action=FileOption, dest="words", default=argparse.SUPPRESS,
                           help=(option.purpose + default).replace("%", "%%"), **takes)


def parse(words):
    parser = argparse.ArgumentParser(prog="python3 -m picturehost.cluster", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("expressions", nargs="+", metavar="EXPRESSION",
                        help="as for `picturehost batch`; --help of that explains them")
    parser.add_argument("--input-dir", required=True, metavar="DIR")
    parser.add_argument("--output-dir", required=True, metavar="DIR")
    parser.add_argument("--scheduler", metavar="ADDRESS", help="like tcp://machine:8786")
    parser.add_argument("--progress", action="store_true", default=sys.stderr.isatty(),
                        help="show progress on standard error, as is done where that is a terminal")
    add_file_options(parser)
    return parser.parse_intermixed_args(words)


def main(words=None):
    options = parse(words)
    inputs, outputs = os.path.abspath(options.input_dir), os.path.abspath(options.output_dir)
    try:  # says what is wrong with them before anything is done
        _picturehost.Batch(options.expressions, options.words)
    except ValueError as problem:
        raise Error(f"{problem}; --help explains") from None
    if not os.path.isdir(inputs):
        raise Error(f"there is no folder {inputs!r}")
    os.makedirs(outputs, exist_ok=True)
    if os.path.samefile(inputs, outputs):
        raise Error("the pictures would be overwritten by their own results")

    tally, progress = Tally(), Progress(options.progress)
    client = connect(options.scheduler)
    try:
        spread(client, options.expressions, options.words, inputs, outputs, tally, progress)
    finally:
        progress.show(tally, now=True)
        progress.close()
        client.close()
        if hasattr(client, "own_cluster"):
            client.own_cluster.close()
    tally.failures.seek(0)
    for line in tally.failures:
        print(f"picturehost.cluster: {line}", end="", file=sys.stderr)
    print(f"{tally}, in {outputs}")
    return 1 if tally.failed else 0


def command_line():
    try:
        sys.exit(main())
    except (Error, OSError) as problem:
        sys.exit(f"picturehost.cluster: {problem}")
    except KeyboardInterrupt:
        sys.exit(130)


if __name__ == "__main__":
    command_line()
