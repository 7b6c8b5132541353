"""The completion, asked as bash asks it, and once typed into a shell."""

import json
import os
import pathlib
import pty
import re
import select
import shlex
import shutil
import tempfile
import time
import unittest

from common import BUILD, PHOTO, SOURCE, run

COMPLETION = SOURCE / "runner/completion.bash"


class CompletionTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        (self.folder / "photo one.jpg").touch()
        (self.folder / "plates").mkdir()

    def offered(self, *words):
        """What is offered for the last of the words that stand behind "picturehost"."""
        line = " ".join(shlex.quote(word) for word in (str(BUILD / "picturehost"), *words))
        script = (f"source {shlex.quote(str(COMPLETION))}; COMP_WORDS=({line}); COMP_CWORD={len(words)}; "
                  '_picturehost; printf "%s\\n" "${COMPREPLY[@]}"')
        return sorted(filter(None, run("bash", "--norc", "-c", script, cwd=self.folder).splitlines()))

    def test_commands(self):
        self.assertEqual(self.offered(""), ["--help", "--version", "batch", "list", "run"])
        self.assertEqual(self.offered("b"), ["batch"])

    def test_expressions_are_the_names_that_are_registered(self):
        listing = json.loads(run(BUILD / "picturehost", "list", "--json"))
        names = {method["name"] for method in listing["globalMethods"]}
        for entry in listing["classes"]:
            names |= {method["name"] for method in entry["methods"]} if entry["extension"] else {entry["name"]}
        self.assertGreater(len(names), 30)
        self.assertEqual(self.offered("run", ""), sorted(names))
        self.assertEqual(self.offered("batch", ""), sorted(names))
        self.assertEqual(self.offered("run", "--no-picture", ""), sorted(names))
        self.assertEqual(self.offered("run", "-e", "InvertKRT", "-e", "Colorn"), ["ColornessKRT"])
        self.assertEqual(self.offered("run", "--layout", "argb", "-o", "x.png", "Tint"), ["TintPictureKRT"])

    def test_parameters_are_shown_within_quotation_marks(self):
        self.assertEqual(self.offered("run", "'Colorness"), [
            "ColornessKRT(", "ColornessKRT(threshold as integer = 10)"])
        self.assertEqual(self.offered("run", "-e", "\"EmbeddedM"), [
            "EmbeddedMaskKRT(", "EmbeddedMaskKRT(swap as boolean)"])
        self.assertEqual(self.offered("run", "'isBlack"), ["isBlackKRT", "isBlackKRT(", (
            "isBlackKRT(left as integer,top as integer,width as integer,height as integer)")])

    def test_pictures_are_files(self):
        self.assertEqual(self.offered("run", "InvertKRT", ""), ["photo one.jpg", "plates"])
        self.assertEqual(self.offered("run", "InvertKRT", "--layout", "=", "rgbx", "ph"), ["photo one.jpg"])
        self.assertEqual(self.offered("batch", "InvertKRT", "ph"), ["photo one.jpg"])
        self.assertEqual(self.offered("batch", "-e", "InvertKRT", "ph"), ["photo one.jpg"])
        self.assertEqual(self.offered("run", "InvertKRT", "--", "-"), [])

    def test_options_are_those_of_the_command(self):
        self.assertEqual(self.offered("list", "--"), ["--application", "--help", "--host-version", "--json", "--plugin"])
        for command in ("run", "batch", "list"):
            described = run(BUILD / "picturehost", command, "--help")
            options = re.findall(r"(?m)^ {2}((?:-\w,)?--[\w-]+)", described)
            self.assertGreater(len(options), 4)
            self.assertEqual(self.offered(command, "-"), sorted(name for names in options for name in names.split(",")))
        self.assertEqual(self.offered("batch", "--s"), ["--save", "--strict"])
        self.assertEqual(self.offered("run", "--s"), ["--save", "--strict"])

    def test_values_of_options(self):
        self.assertEqual(self.offered("run", "--application", ""), ["console", "desktop", "web"])
        self.assertEqual(self.offered("run", "--application", "=", "we"), ["web"])
        self.assertEqual(self.offered("run", "--application", "="), ["console", "desktop", "web"])
        self.assertEqual(self.offered("run", "--layout", "rgb"), ["rgba", "rgba-premultiplied", "rgbx"])
        self.assertEqual(self.offered("batch", "-f", "ti"), ["tif", "tiff"])
        self.assertEqual(self.offered("batch", "-d", ""), ["plates"])
        self.assertEqual(self.offered("batch", "--input-dir", ""), ["plates"])
        self.assertEqual(self.offered("batch", "--files-from", "p"), ["photo one.jpg", "plates"])
        self.assertEqual(self.offered("batch", "--save", "red", "=", "photo"), ["photo one.jpg"])
        self.assertEqual(self.offered("batch", "-e", "Colorn"), ["ColornessKRT"])
        self.assertEqual(self.offered("run", "-o", "p"), ["photo one.jpg", "plates"])
        self.assertEqual(self.offered("run", "--host-version", ""), [])
        self.assertEqual(self.offered("run", "--save", "photo"), [])
        self.assertEqual(self.offered("run", "--save", "red", "=", "photo"), ["photo one.jpg"])

    def test_typed_within_quotation_marks(self):
        shutil.copy(PHOTO, self.folder / "coffee.png")
        (self.folder / "picturehost").symlink_to(BUILD / "picturehost")
        done = self.folder / "done"
        child, terminal = pty.fork()
        if child == 0:
            os.chdir(self.folder)
            os.environ["PATH"] = f"{self.folder}:{os.environ['PATH']}"
            os.execlp("bash", "bash", "--norc", "--noprofile", "-i")
        typed = f"source {COMPLETION}\n" "picturehost run 'ChangeSat\t30)' cof\t --outp\tout.png; echo $? >done\nexit\n"
        os.write(terminal, typed.encode())
        seen, deadline = b"", time.monotonic() + 30
        while time.monotonic() < deadline and not (done.exists() and done.read_text()):
            if select.select([terminal], [], [], 0.1)[0]:
                try:
                    seen += os.read(terminal, 4096)
                except OSError:  # the shell's end
                    break
        os.close(terminal)
        os.waitpid(child, 0)
        self.assertEqual(done.exists() and done.read_text(), "0\n", seen.decode(errors="replace"))
        run(BUILD / "picturehost", "run", "ChangeSaturationKRT(30)", PHOTO, "--output", self.folder / "expected.png")
        self.assertEqual((self.folder / "out.png").read_bytes(), (self.folder / "expected.png").read_bytes())


if __name__ == "__main__":
    unittest.main()
