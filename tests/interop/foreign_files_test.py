"""AVI files by other writers, read frame by frame through the library."""
import random
import subprocess

import recordings
import scripted_tests
from recordings import FFMPEG, NTSC, PAL, linux

# One with bounds stops for ever when the multiplexer waits for the other stream.
WIDE_QUEUE = ("queue", "max-size-buffers=0", "max-size-bytes=0", "max-size-time=0")


def by_ffmpeg(*options):
    return lambda system, file: linux(*FFMPEG, "-f", "dv", "-i", system.path, "-c:v", "copy", *options, file,
                                      talks=True)


def by_gstreamer(*sound):
    def make(system, file):
        linux("gst-launch-1.0", "-q", "filesrc", f"location={system.path}", "!", "dvdemux", "name=d",
              "d.video", "!", *WIDE_QUEUE, "!", "mux.video_0", *sound,
              "avimux", "name=mux", "!", "filesink", f"location={file}")
    return make


def by_dvgrab(*options):
    """dvgrab takes a pipe for a camera, and buffers since a pipe is faster than one. It numbers its files,
    and takes what follows a dot in a path for the name's extension. Once in hundreds of times it never
    ends."""
    def make(system, file):
        for seconds in 20, 40, 80:
            file.with_name(file.stem + "-001.avi").unlink(missing_ok=True)
            try:
                with system.path.open("rb") as stream:
                    linux("dvgrab", "-stdin", "-buffers", len(system.frames) + 50, *options, file.stem + "-",
                          stdin=stream, cwd=file.parent, talks=True, timeout=seconds)
            except subprocess.TimeoutExpired:
                continue
            file.with_name(file.stem + "-001.avi").rename(file)
            return
        raise AssertionError("dvgrab did not end, three times")
    return make


class ForeignFiles(recordings.Case):
    def make(self, writer, system):
        file = self.file(f"{self._testMethodName}-{system.path.stem}.avi")
        writer(system, file)
        return file

    def check(self, writer, all_frames=True, sound=False):
        for system in PAL, NTSC:
            with self.subTest(stream=system.path.name):
                file = self.make(writer, system)
                written = recordings.Scan(file).stream_frames(system)
                self.assertGreater(len(written), 0)
                # dvgrab begins when it is ready, which the others are from the first frame on.
                self.assertEqual(written, list(range(0 if all_frames else written[0], len(system.frames))))
                self.assertEqual(recordings.read_through_library(file, system), written)
                self.assertIsNone(recordings.faults(file))
                if sound:
                    self.check_sound(file, system, len(written))

    def check_sound(self, file, system, frames):
        """An export has the file's own sound stream."""
        made = self.file(f"exported-{file.name}")
        done = scripted_tests.run("dvrec", "convert", "--force", recordings.dos(file), recordings.dos(made))
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        wanted, got = (linux("ffmpeg", "-v", "error", "-i", one, "-map", "0:a", "-f", "s16le", "-")
                       for one in (file, made))
        common = min(len(wanted), len(got))
        self.assertAlmostEqual(len(got) / 4, 48000 * frames / system.rate, delta=2)
        self.assertGreater(common, 0.95 * len(got))
        self.assertTrue(got[:common] == wanted[:common] and not any(got[common:]))

    def test_ffmpeg_without_sound_and_with_it(self):
        self.check(by_ffmpeg("-an"))
        self.check(by_ffmpeg("-c:a", "pcm_s16le"), sound=True)

    def test_gstreamer_without_sound_and_with_it(self):
        self.check(by_gstreamer())
        self.check(by_gstreamer("d.audio", "!", *WIDE_QUEUE, "!", "audioconvert", "!", "mux.audio_0"),
                   sound=True)

    def test_dvgrab_without_opendml_indexes_and_with_them(self):
        for more in (), ("-opendml",):
            self.check(by_dvgrab("-f", "dv2", *more), all_frames=False, sound=True)

    def test_dvgrab_type_1_is_refused_with_the_reason(self):
        file = self.make(by_dvgrab("-f", "dv1"), PAL)
        done = scripted_tests.run(*recordings.probe_arguments("read", file, PAL))
        self.assertEqual((done.returncode, done.stdout), (3, b""))
        self.assertIn("type 1", done.stderr.decode().lower())

    @recordings.on_first_target
    def test_ffmpeg_above_1_gib(self):
        rounds = 2**30 // PAL.path.stat().st_size + 1
        file = self.make(lambda system, file: linux(
            *FFMPEG, "-stream_loop", rounds - 1, "-f", "dv", "-i", system.path, "-an", "-c:v", "copy", file,
            talks=True), PAL)
        self.assertGreater(file.stat().st_size, 2**30)
        scan = recordings.Scan(file)
        self.assertGreater(len(scan.pieces), 1)
        expected = PAL.expected(rounds * len(PAL.frames))
        self.assertEqual(len(scan.frames), len(expected))
        self.assertEqual(recordings.read_through_library(file, PAL), expected)
        some = random.Random(1).sample(range(len(expected)), 50) + [len(expected) - 1]
        self.assertEqual(recordings.read_through_library(file, PAL, *some), [expected[k] for k in some])


if __name__ == "__main__":
    scripted_tests.main()
