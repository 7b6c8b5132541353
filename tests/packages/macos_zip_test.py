"""The zip for people who have the host on a Mac."""

import os
import pathlib
import shutil
import tempfile
import unittest
import zipfile

from common import BUILD, SOURCE, run


class MacosZipTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        run("cmake", "--build", BUILD, "--target", "package")
        [cls.zip] = BUILD.glob("*.zip")
        cls.contents = [SOURCE / "packages/macos/README.txt", BUILD / "Picture.bundle"]

    def test_it_holds_the_bundle_and_a_word_on_where_it_goes(self):
        with zipfile.ZipFile(self.zip) as archive:
            self.assertEqual(archive.namelist(), [f"{self.zip.stem}/{file.name}" for file in self.contents])
            for file in self.contents:
                self.assertEqual(archive.read(f"{self.zip.stem}/{file.name}"), file.read_bytes())
            readme, bundle = (entry.external_attr >> 16 for entry in archive.infolist())
        self.assertEqual((readme, bundle), (0o100644, 0o100755))

    def test_it_is_the_same_whenever_and_wherever_it_is_made(self):
        with tempfile.TemporaryDirectory() as folder:
            copies = [pathlib.Path(shutil.copyfile(file, f"{folder}/{file.name}")) for file in self.contents]
            for copy in copies:
                os.utime(copy, (10**9, 10**9))
                copy.chmod(0o600)
            again = pathlib.Path(folder, self.zip.name)
            run(SOURCE / "packages/macos/zip.py", again, *copies, env=dict(os.environ, TZ="Asia/Tokyo"), umask=0o077)
            self.assertEqual(again.read_bytes(), self.zip.read_bytes())


if __name__ == "__main__":
    unittest.main()
