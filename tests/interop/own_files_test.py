"""AVI files that the library wrote, opened with other software."""
import json
import unittest

import recordings
import scripted_tests
from recordings import FFMPEG, NTSC, PAL, all_frames_by_ffmpeg, frames_from, linux


def all_frames_by_gstreamer(file, system):
    return frames_from(system, "gst-launch-1.0", "-q", "filesrc", f"location={file}", "!", "avidemux", "!",
                       "video/x-dv", "!", "fdsink", "fd=1")


def frame_by_ffmpeg(file, system, number):
    # A quarter of a frame more, so that rounding does not end at the frame before.
    at = (number + 0.25) / system.rate
    return frames_from(system, *FFMPEG, "-ss", f"{at:.6f}", "-i", file, "-map", "0:v", "-c", "copy",
                       "-frames:v", "1", "-f", "rawvideo", "-")


class OwnFiles(recordings.Case):
    def record(self, system, count, name=None):
        file = self.file(name or f"{self._testMethodName}.avi")
        recordings.probe("record", file, system, count)
        return file

    def check_pieces(self, file, count):
        """Piece follows piece, as their headers say, to the last byte."""
        pieces = recordings.Scan(file).pieces
        self.assertEqual(len(pieces), count)
        ends = [at + size for at, size in pieces]
        self.assertEqual(ends, [at for at, _ in pieces[1:]] + [file.stat().st_size])

    def check_mediainfo(self, file, system, count):
        tracks = json.loads(linux("mediainfo", "--Output=JSON", file))["media"]["track"]
        info = {track["@type"]: track for track in tracks}  # of the file as a whole and of its video
        video = info["Video"]
        self.assertEqual((video["Format"], video["CodecID"], int(video["FrameCount"])), ("DV", "dvsd", count))
        self.assertEqual((video["Width"], video["Standard"]), ("720", "PAL" if system is PAL else "NTSC"))
        self.assertAlmostEqual(float(video["Duration"]), count / system.rate, delta=0.02)
        self.assertEqual([track.get("extra", {}) for track in info.values()], [{}] * 2)

    def check_everything(self, file, system, count, seeks):
        expected = system.expected(count)
        self.assertEqual(recordings.ffprobe_frames(file), count)
        self.assertEqual(all_frames_by_ffmpeg(file, system), expected)
        self.assertEqual([frame_by_ffmpeg(file, system, k) for k in seeks], [[expected[k]] for k in seeks])
        self.assertEqual(all_frames_by_gstreamer(file, system), expected)
        self.check_mediainfo(file, system, count)
        self.assertEqual(recordings.read_through_library(file, system), expected)
        self.assertIsNone(recordings.faults(file))

    def test_one_piece(self):
        for system, count in (PAL, 230), (NTSC, 270):
            with self.subTest(stream=system.path.name):
                file = self.record(system, count)
                self.check_pieces(file, 1)
                self.check_everything(file, system, count, (0, 1, count // 2, count - 1))

    def test_one_frame_and_none(self):
        one, none = self.record(PAL, 1, "1.avi"), self.record(PAL, 0, "0.avi")
        self.check_everything(one, PAL, 1, ())
        self.assertEqual(recordings.ffprobe_frames(none), 0)
        self.assertEqual(recordings.read_through_library(none, PAL), [])

    def test_a_name_in_other_letters(self):
        file = self.record(PAL, 20, "Матч – 決勝 ñ.avi")
        self.check_everything(file, PAL, 20, ())

    def check_large(self, count, pieces):
        file = self.record(PAL, count)
        self.check_pieces(file, pieces)
        scan = recordings.Scan(file)
        second = sum(offset < scan.pieces[1][0] for offset, _ in scan.frames)
        # Where a standard index and a piece end, and near the file's end, beyond 4 GiB or not.
        self.check_everything(file, PAL, count, (0, 2043, 2044, second - 1, second, second + 1, count - 1))

    @recordings.on_first_target
    def test_several_pieces(self):
        self.check_large(7600, 2)

    @recordings.on_first_target
    @unittest.skipUnless(scripted_tests.LONG, "writes 4.5 GB")
    def test_above_4_gib(self):
        self.check_large(31400, 5)


if __name__ == "__main__":
    scripted_tests.main()
