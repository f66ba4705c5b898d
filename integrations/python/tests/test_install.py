"""The two ways to install the package: pip in a virtual environment without network, and cmake --install."""

import os
import pathlib
import subprocess
import sys
import zipfile

import pytest

PACKAGE = pathlib.Path(__file__).resolve().parents[1]
BUILD = pathlib.Path(os.environ["KOR_MODULE"]).resolve().parents[3]
# The vector forms take long to compile, and are no different here.
QUICK = os.environ.get("CMAKE_ARGS", "") + " -DKOR_VECTOR=OFF"
PROGRAM = "import kor, numpy; print(kor.__file__, kor.bgra_to_i420(numpy.full((2, 2, 4), 255, 'u1')).y.max())"


def run(*command, **environment):
    variables = {**os.environ, **environment}
    if "PYTHONPATH" not in environment:
        del variables["PYTHONPATH"]
    ran = subprocess.run([str(word) for word in command], env=variables, capture_output=True, text=True)
    assert ran.returncode == 0, ran.stdout + ran.stderr
    return ran.stdout


@pytest.fixture(scope="module")
def environment(tmp_path_factory):
    """A virtual environment that sees the system's NumPy, and the wheel that pip has built for it."""
    root = tmp_path_factory.mktemp("venv")
    run(sys.executable, "-m", "venv", "--system-site-packages", root / "venv")
    python = root / "venv/bin/python"
    # No network: pip may look nowhere, and a proxy that does not exist ends whatever tries.
    run(python, "-m", "pip", "install", "--no-index", "--no-cache-dir", PACKAGE, https_proxy="http://127.0.0.1:9",
        http_proxy="http://127.0.0.1:9", CMAKE_ARGS=QUICK)
    return python


def test_pip(environment):
    where, white = run(environment, "-c", PROGRAM).split()
    assert pathlib.Path(where).is_relative_to(environment.parents[1])
    assert white == "235"
    assert "digests agree" in run(environment, "-m", "kor", "verify")
    listed = run(environment, "-m", "pip", "show", "--files", "kor")
    assert "Requires: numpy" in listed and "kor/py.typed" in listed and "kor/_kor.pyi" in listed
    run(environment, "-m", "pip", "uninstall", "--yes", "kor")
    assert not (pathlib.Path(where).parent).exists()


def test_wheels_repeat(tmp_path):
    """The same tree makes the same wheel."""
    program = "import kor_build, sys; print(kor_build.build_wheel(sys.argv[1]))"
    wheels = []
    for directory in (tmp_path / "a", tmp_path / "b"):
        directory.mkdir()
        name = run(sys.executable, "-c", program, directory, PYTHONPATH=str(PACKAGE),
                   KOR_PYTHON_BUILD_DIR=str(tmp_path / "build"), CMAKE_ARGS=QUICK).split()[-1]
        wheels.append((directory / name).read_bytes())
    assert wheels[0] == wheels[1]
    with zipfile.ZipFile(tmp_path / "a" / name) as wheel:
        assert wheel.testzip() is None


def test_cmake_install(tmp_path):
    run("cmake", "--install", BUILD, "--component", "python", "--prefix", tmp_path)
    (package,) = tmp_path.rglob("kor/__init__.py")
    where, white = run(sys.executable, "-c", PROGRAM, PYTHONPATH=str(package.parents[1])).split()
    assert where == str(package) and white == "235"
