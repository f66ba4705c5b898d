"""The build backend of pyproject.toml: CMake builds and installs the package, and this makes a wheel of it.

It needs no other package. pip calls it as PEP 517 says:

    pip install integrations/python

The build needs CMake, Ninja, a C++ compiler, and the headers of Python and pybind11. The environment may add options
for CMake (CMAKE_ARGS) and name a directory in which the build stays (KOR_PYTHON_BUILD_DIR).
"""

import base64
import hashlib
import os
import pathlib
import re
import shlex
import subprocess
import sys
import sysconfig
import tempfile
import zipfile

HERE = pathlib.Path(__file__).resolve().parent
TREE = HERE.parents[1]


def version():
    header = (TREE / "Kor/Utils/SysDep/KorBaseTypes.h").read_text()
    return ".".join(re.findall(r"#define KOR_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)", header))


def tag():
    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    platform = sysconfig.get_platform().replace("-", "_").replace(".", "_")
    return f"{python}-{python}-{platform}"


def metadata():
    return {
        "METADATA": f"""Metadata-Version: 2.1
Name: kor
Version: {version()}
Summary: Video pixel-format conversions, exact to the bit
Requires-Python: >=3.9
Requires-Dist: numpy
""",
        "WHEEL": f"""Wheel-Version: 1.0
Generator: kor_build {version()}
Root-Is-Purelib: false
Tag: {tag()}
""",
    }


def build(prefix, work):
    """Builds the package and installs it in the directory prefix."""
    only = [f"-DKOR_BUILD_{part}=OFF" for part in ("TESTS", "BENCH", "TOOLS", "CONFORMANCE", "EXAMPLES")]
    subprocess.run(
        [
            "cmake", "-S", TREE, "-B", work, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DKOR_BUILD_PYTHON=ON",
            f"-DPython3_EXECUTABLE={sys.executable}", "-DKOR_PYTHON_INSTALL_DIR=.", *only,
            *shlex.split(os.environ.get("CMAKE_ARGS", "")),
        ],
        check=True,
    )
    subprocess.run(["cmake", "--build", work, "--target", "KorPython"], check=True)
    subprocess.run(["cmake", "--install", work, "--component", "python", "--strip", "--prefix", prefix], check=True)


def record(name, content):
    digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
    return f"{name},sha256={digest},{len(content)}\n"


# ---- The hooks of PEP 517 ------------------------------------------------------------------------------------------


def get_requires_for_build_wheel(config_settings=None):
    return []


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    name = f"kor-{version()}-{tag()}.whl"
    info = f"kor-{version()}.dist-info"
    with tempfile.TemporaryDirectory() as temporary:
        prefix = pathlib.Path(temporary, "prefix")
        build(prefix, os.environ.get("KOR_PYTHON_BUILD_DIR") or pathlib.Path(temporary, "build"))
        files = {
            str(path.relative_to(prefix)): path.read_bytes() for path in sorted(prefix.rglob("*")) if path.is_file()
        }
    files.update((f"{info}/{key}", text.encode()) for key, text in metadata().items())
    records = "".join(record(*file) for file in files.items()) + f"{info}/RECORD,,\n"
    with zipfile.ZipFile(pathlib.Path(wheel_directory, name), "w", zipfile.ZIP_DEFLATED) as wheel:
        for path, content in (*files.items(), (f"{info}/RECORD", records.encode())):
            # A fixed time: the same tree makes the same wheel.
            entry = zipfile.ZipInfo(path)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = (0o755 if path.endswith(".so") else 0o644) << 16
            wheel.writestr(entry, content)
    return name


def build_sdist(sdist_directory, config_settings=None):
    raise NotImplementedError("kor is built inside the tree of the library: use a wheel, or that tree")
