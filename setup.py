"""Lets pip install the Python module; CMake builds it.

PICTURE_BUILD_DIR names a build folder, configured with -DPICTURE_PYTHON=ON, to take it from.
"""

import os
import pathlib
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

SOURCE = pathlib.Path(__file__).resolve().parent


class BuildByCMake(build_ext):
    def build_extension(self, extension):
        package = pathlib.Path(self.get_ext_fullpath(extension.name)).resolve().parent
        build = os.environ.get("PICTURE_BUILD_DIR")
        if build is None:
            build = str(SOURCE / "build" / "pip")
            cmake("-S", str(SOURCE), "-B", build, "-G", "Ninja", "-DPICTURE_PYTHON=ON", "-DPICTURE_TESTS=OFF",
                  f"-DPython_EXECUTABLE={os.path.realpath(sys.executable)}")
        cmake("--build", build, "--target", "python_package")
        cmake("--install", build, "--component", "python", "--prefix", str(package.parent))


def cmake(*words):
    subprocess.check_call(["cmake", *words])


setup(
    packages=[],  # CMake installs the whole package, the plug-in and the stubs included
    ext_modules=[Extension("picturehost._picturehost", sources=[])],
    cmdclass={"build_ext": BuildByCMake},
)
