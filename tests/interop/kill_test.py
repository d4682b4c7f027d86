"""Recorders that die while they record: killed at any moment, or stopped by the system at a byte."""
import json
import os
import random
import signal
import subprocess
import tempfile
import time

import recordings
import scripted_tests
from recordings import NTSC, PAL

SEED = int(os.environ.get("MARVO_SEED", random.randrange(1 << 32)))


def few(count, long=None):
    """How often something is tried; less often on the second target, since the formats are the same."""
    count = long if long and scripted_tests.LONG else count
    return count if scripted_tests.TARGET == "win32" else count // 4


class Recorder:
    """A recording that runs until it is killed. Its log is a file, since services of Wine that it was the
    first to need would hold the other end of a pipe."""

    def __init__(self, file, system, most_bytes=None):
        limit = [] if most_bytes is None else ["prlimit", "--core=0", f"--fsize={most_bytes}"]
        with tempfile.NamedTemporaryFile() as log:
            self._log = open(log.name, "rb")
            self._process = subprocess.Popen(
                limit + scripted_tests.command(*recordings.probe_arguments("record", file, system)),
                cwd=scripted_tests.scratch(), env=scripted_tests.environment(), stdin=subprocess.DEVNULL,
                stdout=log, stderr=subprocess.DEVNULL)

    def written(self):
        """How many frames are on disk by the recorder's log; -1 as long as it says nothing."""
        self._log.seek(0)
        *lines, _ = self._log.read().split(b"\n")
        return int(lines[-1]) if lines else -1

    def follow(self, frames):
        """Waits until so many frames are on disk."""
        while self.written() < frames and self._process.poll() is None:
            time.sleep(0.001)

    def kill(self):
        self._process.kill()

    def end(self):
        """Waits for the end: the signal that it was, and the frames on disk."""
        with self._log:
            return -self._process.wait(), self.written()


class Killed(recordings.Case):
    @classmethod
    def setUpClass(cls):
        print(f"MARVO_SEED={SEED}", flush=True)
        cls.random = random.Random(SEED)
        recordings.start_wine()

    def verified(self, file, system):
        """How many frames `dvrec verify` counts; and whether it finds a fault, as it must without an end."""
        done = scripted_tests.run("dvrec", "verify", "--json", recordings.dos(file))
        ended = file.suffix != ".avi" and file.stat().st_size % recordings.record_size(system) == 0
        self.assertEqual(done.returncode, 0 if ended else 1, done.stderr.decode())
        return json.loads(done.stdout)["frames"]

    def repaired(self, file, system, frames):
        """How many frames ffprobe counts in what `dvrec repair` makes of the file; they are compared here."""
        whole = self.file("repaired.avi")
        done = scripted_tests.run("dvrec", "repair", "--force", recordings.dos(file), recordings.dos(whole))
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        self.assertEqual(recordings.frames_on_disk(whole, system), frames)
        return recordings.ffprobe_frames(whole)

    def check(self, file, system, written, moment):
        """Everyone finds the same frames: those that the recorder knew to be on disk, or one more that it
        could not tell of any more."""
        on_disk = recordings.frames_on_disk(file, system)
        read = recordings.read_through_library(file, system)
        counts = [len(on_disk), len(read), self.verified(file, system), self.repaired(file, system, on_disk)]
        print(f"{file.name} {moment}: recorder's log {written}, on disk {counts[0]}, library {counts[1]}, "
              f"verify {counts[2]}, ffprobe after repair {counts[3]}", flush=True)
        self.assertIn(len(on_disk) - written, (0, 1))
        self.assertEqual(on_disk, system.expected(len(on_disk)))
        self.assertEqual(read, on_disk)
        self.assertEqual(counts, [len(on_disk)] * 4)
        file.unlink()

    def kill_at(self, name, system, frames):
        file = self.file(name)
        recorder = Recorder(file, system)
        recorder.follow(frames)
        time.sleep(self.random.uniform(0, 0.01))
        recorder.kill()
        ended_by, written = recorder.end()
        self.assertEqual(ended_by, signal.SIGKILL)
        self.check(file, system, written, f"killed behind frame {frames}")

    def stop_at(self, name, system, size):
        file = self.file(name)
        ended_by, written = Recorder(file, system, size).end()
        self.assertEqual(ended_by, signal.SIGXFSZ)
        self.assertLessEqual(file.stat().st_size, size)
        self.check(file, system, written, f"stopped at byte {size}")

    def test_avi_killed_at_random_moments(self):
        # A standard index follows 2044 frames.
        moments = [self.random.randrange(2030, 2045) for _ in range(few(4))]
        moments += [self.random.randrange(1, 400) for _ in range(few(16, long=96))]
        for number, frames in enumerate(moments):
            with self.subTest(frames=frames):
                self.kill_at(f"killed-{number}.avi", (PAL, NTSC)[number % 2], frames)

    def test_avi_stopped_at_a_byte(self):
        measured = self.file("measured.avi")
        recordings.probe("record", measured, PAL, 2)
        (first, size), (second, _) = recordings.Scan(measured).frames
        slot = second - first
        frame = first + 7 * slot
        places = [frame - 8, frame - 5, frame, frame + self.random.randrange(1, size), frame + size - 1,
                  frame + size, frame + size + 5, frame + slot - 9,
                  first - 8 + 2044 * slot + self.random.randrange(16384)]
        for place in places[::1 if scripted_tests.TARGET == "win32" else 3]:
            with self.subTest(place=place):
                self.stop_at("stopped.avi", PAL, place)

    def test_raw_killed_at_random_moments(self):
        for number in range(few(6, long=100)):
            with self.subTest(number=number):
                self.kill_at(f"killed-{number}.dv", (PAL, NTSC)[number % 2], self.random.randrange(1, 400))


if __name__ == "__main__":
    scripted_tests.main()
