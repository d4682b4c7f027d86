"""Recordings to where there is no room."""
import recordings
import scripted_tests
from recordings import NTSC, PAL


def run_with_room(most_bytes, *arguments):
    """Runs a program of ours that cannot make a file larger than that: what would be beyond is written in
    part, then not at all."""
    # Python ignores the signal that would end the program instead, and so do the programs it starts, when
    # told to.
    return scripted_tests.complete(
        ["prlimit", f"--fsize={most_bytes}", *scripted_tests.command(*arguments)],
        cwd=scripted_tests.scratch(), env=scripted_tests.environment(MARVO_TIMEOUT="100"),
        restore_signals=False)


SESSION = """
init
record full.avi
expect result == 1
wait-frame 60 20000
expect recording == 1
expect failing == 1
expect failed > 20
expect lost == 0
wait-written 55 10000
replay 3 12 full.avi
expect result == 1
wait 1500
expect info.from == 3
expect info.to == 12
expect shown >= 3
expect shown <= 12
live
wait-shown newest 10000
stop
record after.dv
expect result == 1
wait-written 5 10000
expect failing == 0
expect failed == 0
stop
record COM1
expect result == 0
done
"""


class Faults(recordings.Case):
    @classmethod
    def setUpClass(cls):
        recordings.start_wine()

    def test_full_disk(self):
        whole = 100
        for name, system in ("full-pal.avi", PAL), ("full-ntsc.avi", NTSC), ("full-pal.dv", PAL):
            with self.subTest(name):
                file = self.file(name)
                recordings.probe("record", file, system, whole)
                frames = recordings.frames_on_disk(file, system)
                room = recordings.place_behind(file, system, whole) + 7000
                done = run_with_room(room, *recordings.probe_arguments("record", file, system, 3 * whole))
                # The recorder went on to its end, and its ring holds the newest frames.
                self.assertEqual((done.returncode, done.stdout.split()[-2:]), (0, [b"ring", b"50"]))
                # Nothing is left of the frame that had no room, and the index has its own.
                self.assertTrue(file.suffix == ".avi" or file.stat().st_size == room - 7000)
                self.assertEqual(recordings.frames_on_disk(file, system), frames)
                self.assertEqual(recordings.read_through_library(file, system), frames)
                if file.suffix == ".avi":
                    self.assertEqual(recordings.all_frames_by_ffmpeg(file, system), frames)

    def test_engine_goes_on_when_the_disk_is_full(self):
        script, report = self.file("full.script"), self.file("full.json")
        script.write_text(SESSION)
        file = self.file("full.avi")
        self.file("after.dv")
        done = run_with_room(20 * 144384, "marvo-host", "--script", recordings.dos(script), "--report",
                             recordings.dos(report))
        log = (scripted_tests.scratch() / "marvo.log").read_text()
        said = report.read_text() if report.exists() else done.stderr.decode()
        self.assertEqual(done.returncode, 0, said)
        read = recordings.read_through_library(file, PAL)
        self.assertIn(len(read), range(14, 20))
        self.assertEqual([(a + 1) % len(PAL.frames) for a in read[:-1]], read[1:])
        self.assertEqual(recordings.ffprobe_frames(file), len(read))
        self.assertRegex(log, rf"recording: frame {len(read)} could not be written: \w.* \(\d+\)\n")
        self.assertRegex(log, rf"ended: full.avi: \d+ frames taken, {len(read)} written, 0 lost, [1-9]")
        self.assertRegex(log, r"ended: after.dv: (\d+) frames taken, \1 written, 0 lost, 0 failed, 0 beyond")
        self.assertIn("COM1 cannot be recorded: it is the name of a device, not of a file", log)


if __name__ == "__main__":
    scripted_tests.main()
