"""pip installs the module, with the plug-in in it."""

import os
import subprocess
import sys

from conftest import SOURCE

USE = """
import pathlib, picturehost
package = pathlib.Path(picturehost.__file__).parent
print(package)
print(sorted(entry.name for entry in package.iterdir() if entry.suffix in (".so", ".pyi", ".typed")))
print(picturehost.Picture(3, 2).InvertKRT().to_array().tolist()[1][2])
"""


def test_pip_installs_it_into_an_environment(program, tmp_path):
    environment = {name: value for name, value in os.environ.items() if name not in ("PYTHONPATH", "PYTHONHOME")}
    environment.update(PICTURE_BUILD_DIR=os.path.dirname(program), PIP_NO_INDEX="1")

    def run(*words):
        done = subprocess.run(words, env=environment, cwd=tmp_path, capture_output=True, text=True)
        assert done.returncode == 0, done.stdout + done.stderr
        return done.stdout

    run(sys.executable, "-m", "venv", "--system-site-packages", "--without-pip", "env")
    python = tmp_path / "env" / "bin" / "python"
    run(python, "-m", "pip", "install", "--no-build-isolation", str(SOURCE))
    package, parts, pixel = run(python, "-c", USE).splitlines()
    assert package.startswith(str(tmp_path / "env"))
    assert parts == str(sorted(["Picture.so", "_picturehost.cpython-311-x86_64-linux-gnu.so", "__init__.pyi",
                                "_picturehost.pyi", "py.typed"]))
    assert pixel == "[0, 0, 0, 255]"
    run(python, "-m", "picturehost.cluster", "--help")
