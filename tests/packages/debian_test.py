"""The Debian package: made, looked at, unpacked, installed and removed."""

import gzip
import pathlib
import re
import shutil
import tempfile
import unittest

from common import BUILD, PHOTO, SOURCE, files_below, run

CONTENTS = [
    "usr/bin/picturehost",
    "usr/lib/picturehost/plugins/Picture.so",
    "usr/share/bash-completion/completions/picturehost",
    "usr/share/doc/picturehost/changelog.gz",
    "usr/share/doc/picturehost/copyright",
    "usr/share/man/man1/picturehost.1.gz",
]


class DebianTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.scratch)
        run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", cls.scratch)
        [cls.package] = cls.scratch.glob("*.deb")
        cls.unpacked = cls.scratch / "unpacked"
        run("dpkg-deb", "-x", cls.package, cls.unpacked)
        cls.program = cls.unpacked / "usr/bin/picturehost"

    def test_lintian_finds_nothing(self):
        self.assertNotRegex(run("lintian", "--allow-root", "--fail-on", "error,warning", self.package), "(?m)^[EW]:")

    def test_it_holds_the_program_and_what_goes_with_it(self):
        self.assertEqual(files_below(self.unpacked), CONTENTS)

    def test_it_names_its_version_once(self):
        [_, version, _] = self.package.stem.split("_")
        changelog = gzip.open(self.unpacked / "usr/share/doc/picturehost/changelog.gz", "rt").read()
        self.assertTrue(changelog.startswith(f"picturehost ({version}) "), changelog)
        self.assertIn(f"plug-in {version} ", (SOURCE / "packages/macos/README.txt").read_text())

    def test_it_depends_on_what_its_files_load(self):
        depends = run("dpkg-deb", "-f", self.package, "Depends")
        names = {re.match(r"[\w.+-]+", entry)[0] for entry in depends.split(", ")}
        self.assertLessEqual({"libc6", "libffi8", "libvips42", "libexif12", "libexempi8", "libtiff6", "libsndfile1"}, names)
        self.assertFalse({name for name in names if name.endswith("-dev")})

    def test_the_unpacked_program_works(self):
        results = [self.scratch / name for name in ("unpacked.png", "built.png")]
        for program, result in zip((self.program, BUILD / "picturehost"), results):
            run(program, "run", "InvertKRT", PHOTO, "--output", result)
        self.assertEqual(results[0].read_bytes(), results[1].read_bytes())

    def test_it_is_installed_and_removed_without_a_trace(self):
        root = self.scratch / "root"
        database = root / "var/lib/dpkg"
        for folder in ("updates", "info"):
            (database / folder).mkdir(parents=True)
        (database / "status").touch()
        dpkg = ["dpkg", f"--root={root}", "--force-not-root", "--force-depends", "--log=/dev/null"]

        def present():
            return [path for path in files_below(root) if not path.startswith("var/lib/dpkg/")]

        run(*dpkg, "--install", self.package)
        self.assertEqual(present(), CONTENTS)
        self.assertEqual(run("dpkg-query", f"--admindir={database}", "-W", "-f=${db:Status-Status}", "picturehost"),
                         "installed")
        run(*dpkg, "--purge", "picturehost")
        self.assertEqual(present(), [])


class ManPageTest(unittest.TestCase):
    page = SOURCE / "runner/picturehost.1"

    def test_mandoc_and_man_have_no_complaint(self):
        self.assertEqual(run("mandoc", "-T", "lint", self.page), "")
        run("man", "--warnings", "--local-file", "--encoding=utf-8", self.page)

    def test_it_has_the_options_of_the_help_and_no_other(self):
        text = self.page.read_text()
        common = self.options_below(text, "What the plug-in meets") | {"--help"}
        for command in ("run", "batch", "list"):
            described = run(BUILD / "picturehost", command, "--help")
            has = set(re.findall(r"(?m)^ {2}(?:-\w,)?(--[\w-]+)", described))
            wants = self.options_below(text, f"Options of {command}") | common
            if command == "list":
                wants.remove("--layout")
            else:
                wants |= self.options_below(text, "How files are opened and saved")
            self.assertEqual(wants, has, command)

    @staticmethod
    def options_below(text, heading):
        section = re.search(rf"(?ms)^\.Ss {heading}$(.*?)^\.S[sh] ", text)[1]
        return {f"--{name}" for name in re.findall(r"(?m)^\.It Fl (?:\w , )?-([\w-]+)", section)}


if __name__ == "__main__":
    unittest.main()
