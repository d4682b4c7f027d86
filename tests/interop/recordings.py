"""What the tests here share: the streams, our recording probe, other software, and a reader of AVI files that
owes nothing to the library's."""
import functools
import os
import pathlib
import struct
import subprocess
import unittest

import scripted_tests


class System:
    """A television system and its test stream."""

    def __init__(self, name, frame_size, rate):
        self.frame_size, self.rate = frame_size, rate
        self.path = scripted_tests.STREAMS / f"{name}.dv"

    @functools.cached_property
    def frames(self):
        data = self.path.read_bytes()
        return [data[at:at + self.frame_size] for at in range(0, len(data), self.frame_size)]

    @functools.cached_property
    def _places(self):
        return {frame: number for number, frame in enumerate(self.frames)}

    def find(self, frame):
        """Which frame of the stream these bytes are, -1 for none."""
        return self._places.get(frame, -1)

    def find_all(self, data):
        """The same for frames one behind the other in a file object, and -1 for a rest at its end."""
        return [self.find(frame) for frame in iter(lambda: data.read(self.frame_size), b"")]

    def expected(self, count):
        """What `count` frames recorded from the stream are, round and round."""
        return [number % len(self.frames) for number in range(count)]


# The formats do not depend on the target, so one is enough for what takes long.
on_first_target = unittest.skipUnless(scripted_tests.TARGET == "win32", "win32 does it")

PAL = System("pal", 144000, 25)
NTSC = System("ntsc", 120000, 30000 / 1001)


def dos(path):
    """A file of the repository as Windows programs see it; it may lie behind a link inside the repository."""
    return "R:\\" + str(pathlib.Path(path).relative_to(scripted_tests.ROOT)).replace("/", "\\")


def probe_arguments(command, file, system, *more):
    return ("marvo-recording-probe", command, dos(file), dos(system.path), system.frame_size, *more)


def probe(command, file, system, *more):
    """Runs the recording probe; its output, once it ended with 0."""
    done = scripted_tests.run(*probe_arguments(command, file, system, *more))
    if done.returncode != 0:
        raise AssertionError(f"{command} {file} ended with {done.returncode}: {done.stderr.decode()}")
    return done.stdout.decode()


def start_wine():
    """Wine's server lives on beyond the program that starts it, and must not be started by one that is
    limited."""
    probe("record", scripted_tests.scratch() / "warm.dv", PAL, 1)


class Case(unittest.TestCase):
    """A test that makes files."""

    def file(self, name):
        """A file of that name in the scratch directory, removed at the end."""
        file = scripted_tests.scratch() / name
        self.addCleanup(file.unlink, missing_ok=True)
        return file


def read_through_library(file, system, *frames):
    """Which frames of the stream the file's frames (or those named) are, as the library reads them."""
    return [int(line) for line in probe("read", file, system, *frames).split()]


def faults(file):
    """What `dvrec verify` finds wrong with a file; None for a sound one."""
    done = scripted_tests.run("dvrec", "verify", dos(file))
    return None if done.returncode == 0 else (done.stdout + done.stderr).decode()


def linux(*command, talks=False, timeout=120, **options):
    """The output of a program of the build machine, which must succeed and (unless it `talks` anyway)
    complain of nothing."""
    done = subprocess.run([str(word) for word in command], stdin=options.pop("stdin", subprocess.DEVNULL),
                          capture_output=True, timeout=timeout, check=False, **options)
    if done.returncode != 0 or (done.stderr and not talks):
        said = done.stderr.decode(errors="replace")
        raise AssertionError(f"{command[0]} ended with {done.returncode}: {said}")
    return done.stdout


def frames_from(system, *command):
    """Which frames of the stream a program of the build machine writes to its standard output; its words when
    it fails or complains."""
    with subprocess.Popen([str(word) for word in command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE) as program:
        found = system.find_all(program.stdout)
        words = program.stderr.read().decode(errors="replace")
    return words or (found if program.returncode == 0 else f"{command[0]} ended with {program.returncode}")


FFMPEG = ("ffmpeg", "-nostdin", "-hide_banner", "-loglevel", "warning", "-y")


def all_frames_by_ffmpeg(file, system):
    return frames_from(system, *FFMPEG, "-i", file, "-map", "0:v", "-c", "copy", "-f", "rawvideo", "-")


def ffprobe_frames(file):
    """How many video packets ffprobe reads from the file."""
    count = linux("ffprobe", "-v", "error", "-select_streams", "v", "-count_packets", "-show_entries",
                  "stream=nb_read_packets", "-of", "csv=p=0", file).split()[0]
    return 0 if count == b"N/A" else int(count)


class Scan:
    """An AVI file's whole video frames, found by stepping from chunk to chunk through all lists that hold
    frames. What headers and indexes say plays no part, nor do the sizes of these lists, which are late in a
    growing file."""

    def __init__(self, file):
        self.frames = []  # (offset of the data, bytes)
        self.pieces = []  # (offset, bytes with the header) as the file says
        self._file = file
        with open(file, "rb") as opened:
            self._walk(opened, opened.seek(0, os.SEEK_END))

    def _walk(self, file, end):
        at = 0
        while at + 12 <= end:
            file.seek(at)
            name, size, kind = struct.unpack("<4sI4s", file.read(12))
            if name == b"RIFF":
                self.pieces.append((at, size + 8))
            if name == b"RIFF" or name == b"LIST" and kind in (b"movi", b"rec "):
                at += 12
                continue
            if at + 8 + size > end or not name.strip(b"\0"):
                break
            if size and name[:2].isdigit() and name[2:] in (b"dc", b"db"):
                self.frames.append((at + 8, size))
            at += 8 + size + size % 2

    def stream_frames(self, system):
        """Which frames of the stream they are, -1 for none."""
        found = []
        with open(self._file, "rb") as opened:
            for offset, size in self.frames:
                opened.seek(offset)
                found.append(system.find(opened.read(size)))
        return found


def record_size(system):
    """Bytes of a record in a raw recording."""
    return (system.frame_size + 8 + 511) // 512 * 512


def frames_on_disk(file, system):
    """Which frames of the stream a recording, AVI or raw, holds as a whole; -1 for none."""
    if file.suffix == ".avi":
        return Scan(file).stream_frames(system)
    data = file.read_bytes()
    record = record_size(system)
    places = range(8, len(data) - record + 9, record)
    return [system.find(data[at:at + system.frame_size]) for at in places]


def place_behind(file, system, count):
    """The offset at which frame `count` of a recording that has that many frames would begin."""
    if file.suffix != ".avi":
        return count * record_size(system)
    frames = Scan(file).frames
    return frames[-1][0] - 8 + frames[1][0] - frames[0][0]
