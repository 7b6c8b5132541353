"""What `cmake --install` gives, staged and then moved: it works where it lies, and C++ programs are
built against it."""

import os
import pathlib
import shlex
import shutil
import subprocess
import tempfile
import unittest

from common import BUILD, PHOTO, SOURCE, files_below, run


class InstalledTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.scratch)
        staging = dict(os.environ, DESTDIR=str(cls.scratch / "staged"))
        run("cmake", "--install", BUILD, "--prefix", "/opt/picture", env=staging)
        cls.prefix = (cls.scratch / "staged/opt/picture").rename(cls.scratch / "moved here")
        cls.program = cls.prefix / "bin/picturehost"
        [cls.plugin] = cls.prefix.rglob("Picture.so")

    def expect_inverted_by(self, embed):
        """That a program makes of the photograph what picturehost makes of it."""
        expected, result = self.scratch / "expected.bmp", embed.with_suffix(".bmp")
        run(self.program, "run", "InvertKRT", PHOTO, "--metadata", "none", "--output", expected)
        run(embed, PHOTO, result)
        self.assertEqual(result.read_bytes(), expected.read_bytes())

    def test_the_program_finds_the_plugin_where_both_were_moved(self):
        self.assertEqual(run(self.program, "list"), run(BUILD / "picturehost", "list"))
        away = self.plugin.rename(self.plugin.with_suffix(".away"))
        try:
            done = subprocess.run([self.program, "list"], text=True, capture_output=True)
        finally:
            away.rename(self.plugin)
        self.assertEqual(done.returncode, 1)
        self.assertIn(str(self.plugin), done.stderr)

    def test_the_headers_are_those_that_host_h_includes(self):
        folder = self.prefix / "include/picturehost"
        listed = run("g++", "-std=c++20", "-MM", f"-I{folder}", "-x", "c++", folder / "host/host.h")
        used = {word.replace("//", " ") for word in listed.replace("\\ ", "//").replace("\\\n", "").split()[1:]}
        self.assertEqual({os.path.relpath(path, folder) for path in used}, set(files_below(folder)))

    def test_nothing_installed_names_the_source_folder(self):
        texts = [path for path in self.prefix.rglob("*") if path.suffix in (".cmake", ".pc", ".h")]
        self.assertGreater(len(texts), 10)
        for path in texts:
            self.assertNotIn(str(SOURCE), path.read_text(), path)

    def test_a_program_is_built_through_cmake(self):
        source = shutil.copytree(SOURCE / "examples/embed", self.scratch / "embed")
        build = self.scratch / "embed-build"
        run("cmake", "-S", source, "-B", build, "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={self.prefix}",
            "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror")
        run("cmake", "--build", build)
        self.expect_inverted_by(build / "embed")

    def test_a_program_is_built_through_pkg_config(self):
        [found] = self.prefix.rglob("picturehost.pc")
        where = dict(os.environ, PKG_CONFIG_PATH=str(found.parent))
        embed = self.scratch / "embed-by-pkg-config"
        flags = shlex.split(run("pkg-config", "--cflags", "--libs", "picturehost", "gdk-pixbuf-2.0", env=where))
        [plugin] = shlex.split(run("pkg-config", "--variable=plugin", "picturehost", env=where))
        run("g++", "-std=c++20", "-o", embed, SOURCE / "examples/embed/main.cpp", *flags,
            f'-DPICTURE_PLUGIN="{plugin}"')
        self.expect_inverted_by(embed)

    def test_the_versions_agree(self):
        [found] = self.prefix.rglob("picturehost.pc")
        where = dict(os.environ, PKG_CONFIG_PATH=str(found.parent))
        version = run("pkg-config", "--modversion", "picturehost", env=where).strip()
        self.assertEqual(run(self.program, "--version"), f"picturehost {version}\n")


if __name__ == "__main__":
    unittest.main()
