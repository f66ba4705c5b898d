#!/usr/bin/env python3
"""Converts a directory of Y4M clips on all processors of a machine, or of many.

    archive.py clips converted --to bgra
    archive.py clips converted --rotate 90 --scheduler tcp://10.0.0.1:8786

Clips of 4:2:0 and 4:2:2 are read, below SOURCE at any depth; each becomes one file of the same name below DESTINATION.
It appears there when it is whole. Frames are converted in chunks by Dask's distributed scheduler: a chunk whose worker
is lost is converted by another one, and a program that was stopped goes on where it was when it is started again. A
clip that cannot be read is reported and does not stop the others; the exit status is 1 then.

With a scheduler of your own, source and destination must have the same paths on all workers, and each worker needs the
package kor.
"""

import argparse
import collections
import contextlib
import hashlib
import json
import os
import pathlib
import shutil
import sys
import time
import uuid

import numpy as np
from distributed import Client, LocalCluster, as_completed

import kor

# ---- Y4M -----------------------------------------------------------------------------------------------------------

HEADER_LIMIT = 4096
# Columns and rows of luma for each sample of chroma.
SUBSAMPLING = {"420": (2, 2), "420jpeg": (2, 2), "420mpeg2": (2, 2), "420paldv": (2, 2), "422": (2, 1)}

Clip = collections.namedtuple("Clip", "width height colour tags frames")


def read_line(file, magic):
    """The words of a header line behind its magic word; None at the end of the file."""
    line = file.readline(HEADER_LIMIT)
    if not line:
        return None
    words = line.decode("latin-1").split()
    if not line.endswith(b"\n") or not words or words[0] != magic:
        raise ValueError(f"expected a line that begins with {magic} at byte {file.tell() - len(line)}")
    return words[1:]


def parse_tags(words):
    """Values by their letters. An extension, of which there may be several, is a letter of its own without a value."""
    tags = {word[0]: word[1:] for word in words if not word.startswith("X")}
    # One of them repeats the colour space, which may change.
    tags.update((word, "") for word in words if word.startswith("X") and not word.startswith("XYSCSS="))
    return tags


def chroma_shape(width, height, colour):
    columns, rows = SUBSAMPLING[colour]
    return -(-height // rows), -(-width // columns)


def frame_size(width, height, colour):
    rows, columns = chroma_shape(width, height, colour)
    return width * height + 2 * rows * columns


def survey(path):
    """The clip's header, and where each of its frames begins. Raises ValueError for a clip that cannot be read."""
    with open(path, "rb") as file:
        words = read_line(file, "YUV4MPEG2")
        if words is None:
            raise ValueError("the file is empty")
        tags = parse_tags(words)
        colour = tags.get("C", "420")
        if colour not in SUBSAMPLING:
            raise ValueError(f"colour space {colour}; expected one of {', '.join(SUBSAMPLING)}")
        try:
            width, height = int(tags["W"]), int(tags["H"])
        except (KeyError, ValueError):
            raise ValueError("the header has no width and height") from None
        if not (0 < width <= 32768 and 0 < height <= 32768):
            raise ValueError(f"a size of {width}x{height}; expected 1x1 to 32768x32768")
        size = frame_size(width, height, colour)
        end = os.fstat(file.fileno()).st_size
        frames = []
        while read_line(file, "FRAME") is not None:
            frames.append(file.tell())
            if file.tell() + size > end:
                raise ValueError(f"frame {len(frames)} is cut off: {end - file.tell()} of {size} bytes")
            file.seek(size, os.SEEK_CUR)
    if not frames:
        raise ValueError("the clip has no frames")
    return Clip(width, height, colour, tags, frames)


def read_frame(file, clip, number):
    file.seek(clip.frames[number])
    frame = np.frombuffer(file.read(frame_size(clip.width, clip.height, clip.colour)), np.uint8)
    chroma = chroma_shape(clip.width, clip.height, clip.colour)
    luma, samples = clip.width * clip.height, chroma[0] * chroma[1]
    y = frame[:luma].reshape(clip.height, clip.width)
    u, v = (frame[luma + i * samples : luma + (i + 1) * samples].reshape(chroma) for i in (0, 1))
    if clip.colour == "422":
        # An odd last row has nothing to be averaged with but itself.
        u, v = (kor.halve_rows(np.pad(plane, [(0, clip.height % 2), (0, 0)], mode="edge")) for plane in (u, v))
    return kor.I420(y, u, v)


# ---- What becomes of a frame ---------------------------------------------------------------------------------------

Options = collections.namedtuple("Options", "to rotate dither")
TARGETS = {"i420": ".y4m", **{name: f".{name}" for name in ("bgra", "rgba", "argb", "abgr", "bgr", "yuy2", "uyvy")}}
FRAME = b"FRAME\n"


def header(clip, options):
    """The beginning of an output file: raw frames have none."""
    if options.to != "i420":
        return b""
    tags = {**clip.tags, "C": clip.colour if clip.colour.startswith("420") else "420jpeg"}
    if options.rotate in (90, 270):
        tags["W"], tags["H"] = tags["H"], tags["W"]
        tags["A"] = ":".join(reversed(tags.get("A", "0:0").split(":")))
    return ("YUV4MPEG2 " + " ".join(key + value for key, value in tags.items()) + "\n").encode("latin-1")


def check(clip, options):
    width = clip.height if options.rotate in (90, 270) else clip.width
    if options.to in ("yuy2", "uyvy") and width % 2 != 0:
        raise ValueError(f"{options.to} has an even number of columns, and the frames would have {width}")
    if clip.tags.get("I", "p")[:1] not in ("p", "?", ""):
        if options.rotate in (90, 270):
            raise ValueError("frames of two fields cannot be rotated by 90 degrees")
        if clip.colour == "422":
            raise ValueError("4:2:2 of two fields cannot become 4:2:0: its rows would be mixed")


def convert(planes, options, rng):
    if options.rotate != 0:
        planes = kor.I420(*(kor.rotate(plane, options.rotate) for plane in planes))
    if options.to == "i420":
        return FRAME + (planes if options.dither is None else kor.dither(planes, options.dither, rng=rng)).tobytes()
    return kor.convert(planes, options.to, dither=options.dither, rng=rng).tobytes()


# ---- Steps, each of which may be repeated at any time --------------------------------------------------------------


def write_whole(path, pieces):
    """Writes a file that nobody sees before it is whole and on the disk."""
    part = path.with_name(f"{path.name}.{uuid.uuid4().hex}")
    with open(part, "wb") as file:
        for piece in pieces:
            file.write(piece)
        file.flush()
        os.fsync(file.fileno())
    os.replace(part, path)


def convert_chunk(source, clip, options, first, end, path):
    """Converts frames first to end of a clip into a file of their own. Returns their number, and whether it was new."""
    if path.exists():
        return end - first, False

    def frames():
        with open(source, "rb") as file:
            for number in range(first, end):
                # The noise of a frame is the same, whoever converts it.
                rng = np.random.default_rng([number, *source.name.encode()])
                yield convert(read_frame(file, clip, number), options, rng)

    path.parent.mkdir(parents=True, exist_ok=True)
    write_whole(path, frames())
    return end - first, True


def assemble(beginning, parts, target, record, done):
    """Puts the chunks of a clip together under its name, notes that it is done, and removes the chunks."""

    def pieces():
        yield beginning
        for part in parts:
            with open(part, "rb") as file:
                yield from iter(lambda: file.read(1 << 20), b"")

    target.parent.mkdir(parents=True, exist_ok=True)
    # A repetition may find the chunks gone.
    if not is_done(target, record, done):
        write_whole(target, pieces())
        write_whole(record, [json.dumps({**done, "size": target.stat().st_size}).encode()])
    shutil.rmtree(record.parent / "chunks", ignore_errors=True)


def attempt(function, *arguments):
    """Runs a step on a worker. What is wrong with a clip comes back as a result: to Dask it is no failure."""
    try:
        return function(*arguments)
    except (OSError, ValueError) as error:
        return error


def is_done(target, record, done):
    try:
        return json.loads(record.read_bytes()) == {**done, "size": target.stat().st_size}
    except (OSError, ValueError):
        return False


# ---- The archive ---------------------------------------------------------------------------------------------------


class Job:
    """One clip on its way: where its chunks and its result go, and what is known of it so far."""

    def __init__(self, source, name, destination, options):
        stat = source.stat()
        self.source = source
        self.name = name
        self.target = (destination / name).with_suffix(TARGETS[options.to])
        # What is done is done again if the clip, the options or the program have changed since.
        self.done = {"bytes": stat.st_size, "time": stat.st_mtime_ns, "kor": kor.__version__, **options._asdict()}
        work = destination / ".archive" / name
        self.record = work / "done.json"
        self.chunks = work / "chunks" / hashlib.sha256(json.dumps(self.done).encode()).hexdigest()[:16]
        self.clip = None
        self.parts = []
        self.left = 0
        self.failed = False


class Archive:
    """Clips go through three steps on the workers: survey, chunks, assembly. This side only says what comes next."""

    def __init__(self, client, options, chunk):
        self.client = client
        self.options = options
        self.chunk = chunk
        # Enough for every worker to have something to do, and not the whole archive at once.
        self.window = 4 * sum(client.nthreads().values()) + 4
        self.running = as_completed()
        self.steps = {}  # by the key of a future: the job, and what to do with its result
        self.progress = Progress()

    def run(self, jobs):
        waiting = collections.deque(job for job in jobs if not is_done(job.target, job.record, job.done))
        self.progress.clips = len(jobs)
        self.progress.done = len(jobs) - len(waiting)
        self.start(waiting)
        for future in self.running:
            job, step = self.steps.pop(future.key)
            # A step that killed one worker after another has an exception instead of a result.
            result = future.exception() or future.result()
            if not job.failed:
                try:
                    if isinstance(result, Exception):
                        raise result
                    step(job, result)
                except Exception as reason:  # whatever befalls one clip is no reason to leave the others
                    job.failed = True
                    self.progress.report(job.name, reason)
            self.start(waiting)
            self.progress.show()

    def start(self, waiting):
        while waiting and len(self.steps) < self.window:
            job = waiting.popleft()
            self.submit(job, self.surveyed, survey, job.source)

    def submit(self, job, step, function, *arguments):
        future = self.client.submit(attempt, function, *arguments, pure=False)
        self.steps[future.key] = (job, step)
        self.running.add(future)

    def surveyed(self, job, clip):
        check(clip, self.options)
        job.clip = clip
        self.progress.frames += len(clip.frames)
        for first in range(0, len(clip.frames), self.chunk):
            end = min(first + self.chunk, len(clip.frames))
            job.parts.append(job.chunks / f"{first}-{end}")
            self.submit(job, self.converted, convert_chunk, job.source, clip, self.options, first, end, job.parts[-1])
        job.left = len(job.parts)

    def converted(self, job, result):
        frames, new = result
        self.progress.converted += frames if new else 0
        self.progress.kept += 0 if new else frames
        job.left -= 1
        if job.left == 0:
            beginning = header(job.clip, self.options)
            self.submit(job, self.assembled, assemble, beginning, job.parts, job.target, job.record, job.done)

    def assembled(self, job, _):
        self.progress.done += 1


class Progress:
    """What a person sees: one line that changes on a terminal, a line now and then elsewhere."""

    def __init__(self):
        self.clips = self.done = self.frames = self.converted = self.kept = 0
        self.bad = []
        self.shown = 0.0
        self.terminal = sys.stderr.isatty()

    def report(self, name, reason):
        self.bad.append(name)
        print(f"{name}: {reason}", file=sys.stderr)

    def show(self, last=False):
        if not last and time.monotonic() - self.shown < (0.2 if self.terminal else 5):
            return
        self.shown = time.monotonic()
        text = f"{self.done} of {self.clips} clips, {self.converted + self.kept} of {self.frames} frames"
        if last:
            text += f": {self.converted} converted, {self.kept} from before, {len(self.bad)} clips bad"
        print(f"\r{text}" if self.terminal else text, end="" if self.terminal and not last else "\n", file=sys.stderr)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("source", type=pathlib.Path, help="a directory with clips, *.y4m")
    parser.add_argument("destination", type=pathlib.Path, help="a directory for the results")
    parser.add_argument("--to", choices=TARGETS, default="i420", help="i420 makes Y4M, everything else raw frames")
    parser.add_argument("--rotate", type=int, choices=(0, 90, 180, 270), default=0, help="degrees, clockwise")
    parser.add_argument("--dither", type=int, choices=(0, 1, 2), help="add this much noise")
    parser.add_argument("--chunk", type=int, default=50, metavar="FRAMES", help="frames in a chunk (default: 50)")
    parser.add_argument("--scheduler", metavar="ADDRESS", help="a scheduler that runs; by default, one is started here")
    parser.add_argument("--workers", type=int, help="processes, without --scheduler (default: one a processor)")
    arguments = parser.parse_args()
    if arguments.chunk < 1:
        parser.error("--chunk: expected at least 1")
    if not arguments.source.is_dir():
        parser.error(f"{arguments.source}: expected a directory")

    options = Options(arguments.to, arguments.rotate, arguments.dither)
    source, destination = arguments.source.resolve(), arguments.destination.resolve()
    clips = sorted(path for path in source.rglob("*.y4m") if destination not in path.parents)
    jobs = [Job(path, path.relative_to(source), destination, options) for path in clips]
    with contextlib.ExitStack() as stack:
        address = arguments.scheduler
        if address is None:
            workers = arguments.workers or os.cpu_count()
            address = stack.enter_context(LocalCluster(workers, threads_per_worker=1, dashboard_address=None))
        archive = Archive(stack.enter_context(Client(address)), options, arguments.chunk)
        archive.run(jobs)
    archive.progress.show(last=True)
    return 1 if archive.progress.bad else 0


if __name__ == "__main__":
    sys.exit(main())
