"""The archive's promises: the same bytes whatever becomes of a worker or of the program, nothing twice, nothing half."""

import os
import pathlib
import re
import signal
import subprocess
import sys
import time

import numpy as np
import psutil
import pytest
from distributed import LocalCluster

import kor

PROGRAM = pathlib.Path(__file__).with_name("archive.py")
OPTIONS = ["--to", "bgra", "--rotate", "90", "--dither", "1", "--chunk", "1"]
CHROMA = {"420jpeg": (2, 2), "422": (2, 1), "mono": (2, 2)}


def write_clip(path, width, height, frames, colour="420jpeg", tags="F25:1 Ip A4:3", frame=b"FRAME\n"):
    rng = np.random.default_rng([width, height, frames])
    columns, rows = CHROMA[colour]
    size = width * height + 2 * -(-width // columns) * -(-height // rows)
    data = [rng.integers(0, 256, size, np.uint8) for _ in range(frames)]
    path.parent.mkdir(parents=True, exist_ok=True)
    header = f"YUV4MPEG2 W{width} H{height} {tags} C{colour}\n".encode()
    path.write_bytes(header + b"".join(frame + samples.tobytes() for samples in data))
    return data


def start(source, destination, *options):
    return subprocess.Popen([sys.executable, PROGRAM, source, destination, *options], stderr=subprocess.PIPE, text=True)


@pytest.fixture(scope="module")
def run():
    """Runs the program with workers that are there already, which saves the time to start them."""
    with LocalCluster(2, threads_per_worker=1, dashboard_address=None) as cluster:
        yield lambda *arguments: finish(start(*arguments, "--scheduler", cluster.scheduler_address))


def finish(program):
    """The exit status, the lines about bad clips, and the numbers of the last line."""
    _, text = program.communicate(timeout=120)
    # Dask may have something to say after the last line.
    (numbers,) = re.findall(r"^(\d+) of (\d+) clips, .*: (\d+) converted, (\d+) from before, (\d+) clips bad$", text,
                            re.MULTILINE) or [text]
    return program.returncode, text.splitlines(), [int(number) for number in numbers]


def results(destination):
    """All files under their names, without the archive's own."""
    return {
        str(path.relative_to(destination)): path.read_bytes()
        for path in destination.rglob("*")
        if path.is_file() and ".archive" not in path.parts
    }


def wait_for(condition, seconds=60):
    end = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < end, "it did not happen"
        time.sleep(0.005)


def chunks(destination):
    """The chunks that are whole."""
    return [path for path in destination.glob(".archive/**/chunks/*/*") if re.fullmatch(r"\d+-\d+", path.name)]


@pytest.fixture(scope="module")
def archive(tmp_path_factory, run):
    """Clips, and what becomes of them when nobody disturbs the program."""
    source, destination = tmp_path_factory.mktemp("clips"), tmp_path_factory.mktemp("undisturbed")
    write_clip(source / "long.y4m", 160, 90, 140)
    write_clip(source / "odd.y4m", 45, 33, 40)
    write_clip(source / "deep/er/wide.y4m", 64, 50, 9, "422", frame=b"FRAME Ip\n")
    status, _, numbers = run(source, destination, *OPTIONS)
    assert (status, numbers) == (0, [3, 3, 189, 0, 0])
    expected = results(destination)
    assert sorted(expected) == ["deep/er/wide.bgra", "long.bgra", "odd.bgra"]
    assert len(expected["long.bgra"]) == 140 * 160 * 90 * 4
    assert not chunks(destination)
    return source, destination, expected


def test_bytes_are_those_of_the_package(tmp_path, run):
    tags = "F25:1 Ip A4:3 XA=1 XYSCSS=422 XB=2"
    (luma_and_chroma,) = write_clip(tmp_path / "in/clip.y4m", 6, 5, 1, "422", tags)
    planes = luma_and_chroma[:30].reshape(5, 6), *luma_and_chroma[30:].reshape(2, 5, 3)
    chroma = (kor.halve_rows(np.vstack([plane, plane[-1:]])) for plane in planes[1:])
    upright = kor.I420(planes[0], *chroma)
    assert run(tmp_path / "in", tmp_path / "y4m")[0] == 0
    frame = upright.tobytes()
    assert results(tmp_path / "y4m") == {
        "clip.y4m": b"YUV4MPEG2 W6 H5 F25:1 Ip A4:3 C420jpeg XA=1 XB=2\nFRAME\n" + frame
    }
    assert run(tmp_path / "in", tmp_path / "rotated", "--rotate", "90")[0] == 0
    frame = b"".join(kor.rotate(plane, 90).tobytes() for plane in upright)
    assert results(tmp_path / "rotated") == {
        "clip.y4m": b"YUV4MPEG2 W5 H6 F25:1 Ip A3:4 C420jpeg XA=1 XB=2\nFRAME\n" + frame
    }
    assert run(tmp_path / "in", tmp_path / "rgba", "--to", "rgba")[0] == 0
    assert results(tmp_path / "rgba") == {"clip.rgba": kor.i420_to_rgba(upright).tobytes()}


def test_nothing_is_done_twice(archive, run):
    source, destination, expected = archive
    times = {name: (destination / name).stat().st_mtime_ns for name in expected}
    assert run(source, destination, *OPTIONS)[::2] == (0, [3, 3, 0, 0, 0])
    assert times == {name: (destination / name).stat().st_mtime_ns for name in expected}


def test_what_has_changed_is_done_again(tmp_path, run):
    write_clip(tmp_path / "in/a.y4m", 8, 8, 2)
    write_clip(tmp_path / "in/b.y4m", 8, 8, 2)
    assert run(tmp_path / "in", tmp_path / "out")[2] == [2, 2, 4, 0, 0]
    write_clip(tmp_path / "in/b.y4m", 8, 8, 3)
    assert run(tmp_path / "in", tmp_path / "out")[2] == [2, 2, 3, 0, 0]
    assert run(tmp_path / "in", tmp_path / "out", "--rotate", "180")[2] == [2, 2, 5, 0, 0]


def test_a_worker_is_killed(archive, tmp_path):
    source, _, expected = archive
    program = start(source, tmp_path, "--workers", "2", *OPTIONS)
    wait_for(lambda: len(chunks(tmp_path)) >= 20)
    workers = [child for child in psutil.Process(program.pid).children(recursive=True)
               if "spawn_main" in " ".join(child.cmdline())]
    workers[0].kill()
    assert len(workers) == 2 and results(tmp_path).keys() != expected.keys()  # it was in the middle
    status, _, (done, clips, _, _, bad) = finish(program)
    assert (status, done, clips, bad) == (0, 3, 3, 0)
    assert results(tmp_path) == expected


def test_the_whole_program_is_killed(archive, tmp_path, run):
    source, _, expected = archive
    program = start(source, tmp_path, "--workers", "2", *OPTIONS)
    wait_for(lambda: len(chunks(tmp_path)) >= 60)
    family = psutil.Process(program.pid).children(recursive=True)
    program.send_signal(signal.SIGKILL)
    program.communicate()
    gone, alive = psutil.wait_procs(family, timeout=30)
    for process in alive:
        process.kill()
    assert not alive, "workers outlived the program"

    before = results(tmp_path)
    assert before.keys() != expected.keys()  # it was in the middle
    assert all(expected[name] == content for name, content in before.items())  # what has its name is whole
    whole = len(chunks(tmp_path))
    status, _, (done, clips, converted, found, bad) = run(source, tmp_path, *OPTIONS)
    assert (status, done, clips, bad) == (0, 3, 3, 0)
    assert found == whole >= 60
    assert results(tmp_path) == expected
    assert not chunks(tmp_path)


def test_bad_clips_are_reported_and_stop_nothing(tmp_path, run):
    source, destination = tmp_path / "in", tmp_path / "out"
    write_clip(source / "good.y4m", 16, 16, 2)
    write_clip(source / "mono.y4m", 16, 16, 2, "mono")
    write_clip(source / "fields.y4m", 16, 16, 2, tags="It")
    write_clip(source / "fields422.y4m", 16, 16, 2, "422", tags="Ib")
    write_clip(source / "cut.y4m", 16, 16, 2)
    (source / "cut.y4m").write_bytes((source / "cut.y4m").read_bytes()[:-1])
    (source / "empty.y4m").write_bytes(b"")
    (source / "header.y4m").write_bytes(b"YUV4MPEG2 W16 H16\n")
    (source / "huge.y4m").write_bytes(b"YUV4MPEG2 W99999 H16\nFRAME\n")
    (source / "text.y4m").write_bytes(b"not a clip\n")
    status, lines, numbers = run(source, destination, "--rotate", "180")
    assert (status, numbers) == (1, [2, 9, 4, 0, 7])
    assert sorted(line for line in lines if ".y4m: " in line) == [
        "cut.y4m: frame 2 is cut off: 383 of 384 bytes",
        "empty.y4m: the file is empty",
        "fields422.y4m: 4:2:2 of two fields cannot become 4:2:0: its rows would be mixed",
        "header.y4m: the clip has no frames",
        "huge.y4m: a size of 99999x16; expected 1x1 to 32768x32768",
        "mono.y4m: colour space mono; expected one of 420, 420jpeg, 420mpeg2, 420paldv, 422",
        "text.y4m: expected a line that begins with YUV4MPEG2 at byte 0",
    ]
    assert sorted(results(destination)) == ["fields.y4m", "good.y4m"]
    status, lines, _ = run(source, destination, "--rotate", "90")
    assert status == 1 and "fields.y4m: frames of two fields cannot be rotated by 90 degrees" in lines


if __name__ == "__main__":
    sys.exit(pytest.main([__file__, *sys.argv[1:]]))
