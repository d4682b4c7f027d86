"""dvrec as its user sees it: what it says, what it writes, and how it ends."""
import array
import json
import random
import shlex
import shutil
import signal
import subprocess
import unittest

import recordings
import scripted_tests
from recordings import NTSC, PAL, raw, stamped, stream

FINE, FAULTS, USAGE, CANNOT_READ, CANNOT_WRITE, NO_PICTURE, INTERRUPTED = range(7)


class Case(unittest.TestCase):
    """A test with an empty directory to work in."""
    maxDiff = None

    def setUp(self):
        self.folder = scripted_tests.scratch() / self.id().rpartition(".")[2]
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir()

    def tearDown(self):
        shutil.rmtree(self.folder, ignore_errors=True)

    def file(self, name, content):
        """Makes a file, of bytes or of frames; its name."""
        (self.folder / name).write_bytes(content if isinstance(content, bytes) else b"".join(content))
        return name

    def read(self, name):
        return (self.folder / name).read_bytes()

    def names(self):
        return {path.name for path in self.folder.iterdir()}

    def dvrec(self, *arguments, status=FINE, notes=False, **environment):
        """Runs dvrec, which must end with `status`; its standard output, or its error output when it
        fails."""
        done = scripted_tests.run("dvrec", *arguments, cwd=self.folder, LC_ALL="C.UTF-8", **environment)
        output, errors = done.stdout.decode(), done.stderr.decode()
        self.assertEqual(done.returncode, status, f"dvrec {arguments}: {output}{errors}")
        self.assertEqual("note: " in errors, notes, errors)
        return errors if status > FAULTS else output

    def json(self, *arguments, status=FINE, notes=False):
        return json.loads(self.dvrec(*arguments, "--json", status=status, notes=notes))


class Info(Case):
    def test_what_the_camera_noted(self):
        for name, start, last, rate in (("pal", "01:02:03:20", "01:02:05:19", 25),
                                        ("ntsc", "00:00:59;20", "00:01:01;11", 30)):
            with self.subTest(name):
                frames = stamped(name, 50, start, "2024-02-29T21:58:59", self.folder / "all.dv")
                for made in (self.file("one.dv", frames), self.file("one.raw", raw(frames))):
                    info = self.json("info", made)
                    self.assertEqual(info["system"], "625/50" if name == "pal" else "525/60")
                    self.assertEqual(info["frames"], 50)
                    self.assertAlmostEqual(info["duration"], 50 / (25 if name == "pal" else 30000 / 1001), 3)
                    self.assertEqual(info["recorded"],
                                     {"first": "2024-02-29 21:58:59", "last": "2024-02-29 21:59:00"})
                    codes = info["timeCode"]
                    self.assertEqual((codes["first"], codes["last"], codes["gapCount"]), (start, last, 0))

    def test_what_the_frames_are(self):
        def told(name, frame):
            info = self.json("info", self.file(name, [frame]))
            sound = info["sound"]
            return (info["codec"], info["aspect"], info["fields"],
                    (sound["rate"], sound["channels"], sound["bits"]))

        pal, ntsc = stream("pal", 1)[0], stream("ntsc", 1)[0]
        usual = ("4:3", "bottom first", (48000, 2, 16))
        self.assertEqual(told("a.dv", pal), ("DV 25 Mbit/s, 4:2:0", *usual))
        self.assertEqual(told("b.dv", ntsc), ("DV 25 Mbit/s, 4:1:1", *usual))
        self.assertEqual(told("c.dv", recordings.stream50(1)[0])[0], "DV 50 Mbit/s, 4:2:2")
        # 16:9, not interlaced; four channels of 12 bits at 32 kHz.
        other = recordings.patched(pal, {0x61: (None, 0xFA, 0xEF, None), 0x50: (0x50, 0x20, None, 0xD1)})
        self.assertEqual(told("d.dv", other)[1:], ("16:9", "progressive", (32000, 4, 12)))
        mute = recordings.patched(pal, {0x61: (None, None, 0x3F, None), 0x50: (None, 0xFF, None, None)})
        self.assertEqual(told("e.dv", mute)[2:], ("top first", (0, 0, 0)))
        self.assertIn("sound                 none", self.dvrec("info", "e.dv"))

    def test_several_files_and_patterns(self):
        frames = stream("pal", 3)
        self.file("b.dv", frames[:2])
        self.file("a.dv", frames)
        self.file("broken.raw", raw(frames)[:-1])
        (self.folder / "folder.dv").mkdir()
        done = scripted_tests.run("dvrec", "info", "*.dv", "none.avi", "broken.ra?", "no*", "--json",
                                  cwd=self.folder)
        self.assertEqual((done.returncode, done.stderr), (CANNOT_READ, b""), "failures are where results are")
        found = [json.loads(line) for line in done.stdout.decode().splitlines()]
        self.assertEqual([(one["file"], one.get("frames"), one.get("status")) for one in found],
                         [("a.dv", 3, None), ("b.dv", 2, None), ("none.avi", None, CANNOT_READ),
                          ("broken.raw", 2, None), ("no*", None, CANNOT_READ)])
        self.assertIn("cannot be opened", found[2]["error"])
        self.assertEqual(found[4]["error"], "No file fits 'no*'.")
        said = self.dvrec("verify", "b.dv", "broken.raw", "a.dv", status=FAULTS)
        self.assertIn("'broken.raw': raw recording, 2 frames, 1 fault", said)
        self.assertIn("'a.dv': DV stream, 3 frames, no faults", said)

    def test_gaps_in_the_time_code(self):
        frames = stamped("pal", 60, "23:59:59:00", "2024-02-29T21:58:59", self.folder / "all.dv")
        blank = [recordings.without_time_code(frame) for frame in frames[40:42]]
        # 5 frames are missing behind frame 9, nothing is at midnight, two are blank, then it goes back by 30.
        kept = frames[:10] + frames[15:40] + blank + frames[42:50] + frames[20:30]
        info = self.json("info", self.file("gaps.dv", kept))
        codes = info["timeCode"]
        self.assertEqual((codes["gapCount"], codes["lost"], codes["framesWithout"]), (2, 5, 2))
        self.assertEqual(codes["gaps"], [
            {"frame": 10, "before": "23:59:59:09", "after": "23:59:59:15", "lost": 5},
            {"frame": 45, "before": "00:00:00:24", "after": "23:59:59:20", "lost": 0}])
        self.assertIn("frame 10: 23:59:59:15 follows 23:59:59:09", self.dvrec("info", "gaps.dv"))

    def test_record_sizes_and_how_files_end(self):
        frames = stream("pal", 3)
        whole = raw(frames)
        for name, content, expected in (
                ("small.raw", whole, ("raw", 3, 144384, "finished")),
                ("large.raw", raw(frames, 4096), ("raw", 3, 147456, "finished")),
                ("cut.raw", whole[:-1000], ("raw", 2, 144384, "cut off")),
                ("cut.dv", b"".join(frames)[:-1], ("stream", 2, None, "cut off"))):
            info = self.json("info", self.file(name, content))
            self.assertEqual((info["kind"], info["frames"], info.get("recordSize"), info["state"]), expected,
                             name)
        one = self.file("one.raw", raw(frames[:1], 4096))
        self.assertEqual(self.json("info", one, "--sector", "4096")["state"], "finished")


class Verify(Case):
    def test_damage_is_found_where_it_is(self):
        frames = stream("ntsc", 6)
        record = len(raw(frames[:1]))
        sound = raw(frames)

        def damaged(offset, by):
            return sound[:offset] + by + sound[offset + len(by):]

        for name, content, offsets in (
                ("sound", sound, []),
                ("header", damaged(2 * record, b"\x00\x00"), [2 * record]),
                ("time", damaged(2 * record + 4, b"\x01"), [2 * record]),
                ("begin", damaged(3 * record + 8, b"\x00"), [3 * record + 8]),
                ("inside", damaged(record + 50000, bytes(30000)), [record + 8]),
                ("system", damaged(record + 8 + 3, b"\xBF"), [record + 8]),
                ("unwritten", damaged(5 * record, bytes(record)), [5 * record, 5 * record + 8]),
                ("tail", sound + b"\x00" * 700, [6 * record])):
            with self.subTest(name):
                result = self.json("verify", self.file("x.raw", content), status=FAULTS if offsets else FINE)
                self.assertEqual(sorted(fault["offset"] for fault in result["faults"]), offsets)
                self.assertEqual(result["faultCount"], len(offsets))
        self.assertIn(f"at byte {6 * record}: the file is cut off",
                      self.dvrec("verify", "x.raw", status=FAULTS))
        self.file("x.dv", frames[:2] + [bytes(NTSC)] + frames[3:])
        self.assertEqual([fault["offset"] for fault in self.json("verify", "x.dv", status=FAULTS)["faults"]],
                         [2 * NTSC])


class Conversion(Case):
    def test_raw_recordings_and_streams_turn_into_each_other(self):
        for name in ("pal", "ntsc"):
            frames = stream(name, 5)
            self.dvrec("convert", self.file("a.dv", frames), "b.raw", "--force")
            record = len(raw(frames[:1]))
            made = self.read("b.raw")
            self.assertEqual(len(made), 5 * record)
            for i, frame in enumerate(frames):
                expected = raw([frame])[:8 + len(frame)]
                self.assertEqual(made[i * record:i * record + len(expected)], expected)
            result = self.json("export", "b.raw", "c.dv", "--from", "1", "--to=3", "--force")
            self.assertEqual((result["from"], result["frames"], result["bytes"]), (1, 3, 3 * len(frames[0])))
            self.assertEqual(self.read("c.dv"), b"".join(frames[1:4]))
        self.assertEqual(self.names(), {"a.dv", "b.raw", "c.dv"})

    def test_places_by_time_time_code_and_clock(self):
        for name, start, cut, places in (
                ("pal", "01:02:03:20", 50, (
                    ("0:01", "0:02.5", 25, 62), ("1.5", "0:00:02", 37, 50), ("0:1", "0:03.6", 25, 89),
                    ("01:02:04:00", "01:02:04:10", 5, 15), ("01:02:05:22", "01:02:06;10", 50, 55),
                    ("48", "01:02:06:03", 48, 49), ("@21:59:00", "@21:59:00", 25, 49),
                    ("@2024-02-29 21:59:01", "@2024-02-29T21:59:01", 50, 64),
                    ("@21:59", "@21:59:2", 25, 89))),
                # Two numbers are left out at the full minute.
                ("ntsc", "00:00:59;20", 80, (
                    ("00:01:00;02", "00:01:00:03", 10, 11), ("0:01.0010", "0:02", 30, 59)))):
            frames = stamped(name, 100, start, "2024-02-29T21:58:59", self.folder / "all.dv")
            kept = frames[:cut] + frames[cut + 10:]
            self.file("cut.dv", kept)
            for first, last, expected, to in places:
                result = self.json("export", "cut.dv", "out.dv", "--from", first, "--to", last, "--force")
                self.assertEqual((result["from"], result["frames"]), (expected, to - expected + 1),
                                 (first, last))
            self.assertEqual(self.read("out.dv"), b"".join(kept[expected:to + 1]))
            grabbed = self.json("grab", "cut.dv", "a.png", "--frame", places[0][0], "--force")
            self.assertEqual(grabbed["frame"], places[0][2])
        for place, reason in (("@22:00", "the date and time"), ("00:01:02:14", "the time code")):
            self.assertIn(f"No frame of 'cut.dv' has {reason}",
                          self.dvrec("grab", "cut.dv", "a.png", "--frame", place, "--force", status=USAGE))

    def test_pipes(self):
        users = scripted_tests.ROOT / "build" / "wine" / f"prefix-{scripted_tests.TARGET}" / "drive_c"
        before = set(users.glob("users/*/Temp/dvrec-*"))
        frames = stream("ntsc", 4)
        self.file("a.raw", raw(frames))
        done = scripted_tests.run("dvrec", "export", "a.raw", "-", "--from", "1", cwd=self.folder)
        self.assertEqual((done.returncode, done.stdout), (FINE, b"".join(frames[1:])))
        self.assertIn("'-': DV stream, 3 frames, 360000 bytes", done.stderr.decode())
        for words, out in (("convert - b.avi", "b.avi"), ("export - c.dv --from 2", "c.dv"),
                           ("repair - d.raw", "d.raw"), ("grab - e.png --frame 3", "e.png"),
                           ("info -", None)):
            piped = ["sh", "-c", "cat a.raw | \"$@\"", "sh", *scripted_tests.command("dvrec", *words.split())]
            done = scripted_tests.complete(piped, cwd=self.folder, env=scripted_tests.environment())
            self.assertEqual(done.returncode, FINE, done.stderr)
            self.assertTrue(out is None or self.read(out))
        self.assertEqual(self.json("info", "b.avi")["frames"], 4)
        self.assertEqual((self.read("c.dv"), self.read("d.raw")[8:8 + NTSC]),
                         (b"".join(frames[2:]), frames[0]))
        self.assertIn("use a pipe", self.dvrec("verify", "-", status=CANNOT_READ))
        self.assertEqual(set(users.glob("users/*/Temp/dvrec-*")) - before, set())

    def test_long_paths(self):
        folder = "/".join(["n" * 90] * 3)
        (self.folder / folder).mkdir(parents=True)
        self.file(f"{folder}/a.dv", stream("pal", 2))
        self.dvrec("convert", f"{folder}/a.dv", f"{folder}/игра.avi")
        self.dvrec("grab", f"{folder}/игра.avi", f"{folder}/a.png", "--frame", "1")
        found = self.dvrec("verify", f"{folder}/*.avi", f"{folder}/a.dv")
        self.assertEqual((found.count("no faults"), found.count("?")), (2, 0), found)
        self.assertEqual({path.name for path in (self.folder / folder).iterdir()},
                         {"a.dv", "игра.avi", "a.png"})

    def test_what_lies_behind_4_gib(self):
        frames = stream("pal", 3)
        records = raw(frames)
        record, far = len(records) // 3, 29750
        with open(self.folder / "long.raw", "wb") as file:
            file.write(records)
            file.truncate(record * far)
            file.seek(record * far)
            file.write(records + records[:99])
        self.json("export", "long.raw", "out.avi", "--from", str(far), "--to", str(far + 2))
        self.assertEqual(recordings.frames_of(self.folder / "out.avi"), b"".join(frames))
        info = self.json("info", "long.raw")
        self.assertEqual((info["frames"], info["size"], info["state"]),
                         (far + 3, record * (far + 3) + 99, "cut off"))
        self.json("grab", "long.raw", "out.png", "--frame", str(far + 1))
        wanted = recordings.thumbnail(self.folder / self.file("one.dv", frames[1:2]))
        self.assertLess(recordings.difference(recordings.thumbnail(self.folder / "out.png"), wanted), 8)
        result = self.json("repair", "long.raw", "saved.raw")
        self.assertEqual((result["frames"], result["lost"], result["exact"]), (6, far - 3 + 1, True))
        self.assertEqual(result["holes"][1]["offset"], record * (far + 3) + 8)

    def test_avi_files_hold_the_same_frames(self):
        for name, frames in (("pal", stream("pal", 30)), ("ntsc", stream("ntsc", 30)),
                             ("50 Mbit/s", recordings.stream50(4))):
            with self.subTest(name):
                count, sounds = len(frames), int("Mbit" not in name)
                self.dvrec("convert", self.file("a.dv", frames), "b.avi", "--force")
                self.assertEqual(recordings.frames_of(self.folder / "b.avi"), b"".join(frames))
                self.assertEqual(self.json("verify", "b.avi"), {
                    "file": "b.avi", "kind": "avi", "frames": count, "faultCount": 0, "faults": []})
                self.dvrec("convert", "b.avi", "c.raw", "--force")
                self.dvrec("export", "c.raw", "d.dv", "--force")
                self.assertEqual(self.read("d.dv"), b"".join(frames))
                self.dvrec("export", "b.avi", "e.avi", "--from", "1", "--to", "2", "--force")
                self.assertEqual(recordings.frames_of(self.folder / "e.avi"), b"".join(frames[1:3]))
                info = self.json("info", "b.avi")
                self.assertEqual((info["kind"], info["frames"], info["pieces"], info["standardIndexes"],
                                  info["legacyEntries"],
                                  info["audioStreams"], info["state"]),
                                 ("avi", count, 1, 1, count * (1 + sounds), sounds, "finished"))

    def test_names_may_be_in_any_script(self):
        self.file("игра 試合.dv", stream("pal", 2))
        self.assertIn("'второй тайм.raw': raw recording, 2 frames",
                      self.dvrec("convert", "игра 試合.dv", "второй тайм.raw"))
        self.assertIn("'нет.raw'", self.dvrec("info", "нет.raw", status=CANNOT_READ))

    def test_an_interruption_leaves_nothing_behind(self):
        self.dvrec("convert", self.file("a.dv", stream("ntsc", 12)), "whole.avi")
        # One sound record is enough to begin copying with; the rest is a hole of 20 GB, slow to read.
        for command, name, start, says in (
                ("convert", "long.raw", raw(stream("pal", 1)) * 2, "out.raw"),
                ("repair", "long.raw", stream("ntsc", 1)[0], "searching 'long.raw"),
                ("repair", "long.avi", self.read("whole.avi"), "searching 'long.avi")):
            with open(self.folder / name, "wb") as file:
                file.write(start)
                file.truncate(20 << 30)
            out = "out.raw" if command == "convert" else "out.avi"
            with subprocess.Popen(scripted_tests.command("dvrec", command, name, out, "--progress"),
                                  cwd=self.folder, env=scripted_tests.environment(),
                                  stderr=subprocess.PIPE) as process:
                self.assertIn(says, process.stderr.readline().decode())
                if command == "convert":
                    self.assertEqual(self.json("info", "out.raw.part")["state"], "recording")
                process.send_signal(signal.SIGINT)
                errors = process.communicate(timeout=120)[1].decode()
            self.assertEqual(process.returncode, INTERRUPTED, errors)
        self.assertEqual(self.names(), {"a.dv", "whole.avi", "long.raw", "long.avi"})


def slots(samples, channels, rate, fps):
    """Interleaved samples, cut into what belongs to each frame of a file with `fps` frames per second."""
    frames = int(len(samples) / channels / rate * fps) + 2
    edges = [round(k * rate / fps + 1e-9) * channels for k in range(frames)]
    return [samples[a:b] for a, b in zip(edges, edges[1:])]


class Sound(Case):
    def test_an_avi_file_has_the_sound_of_the_frames(self):
        for name, fps in (("pal", 25), ("ntsc", 29.97)):
            with self.subTest(name):
                frames = stream(name, 60)
                self.file("a.dv", frames)
                said = self.json("export", "a.dv", "b.avi", "--from", "10", "--to", "49", "--force")
                self.assertEqual((said["soundRate"], said["soundChannels"]), (48000, 2))
                self.assertEqual(recordings.frames_of(self.folder / "b.avi"), b"".join(frames[10:50]))
                self.file("part.dv", frames[10:50])
                self.assertEqual(recordings.sound_of(self.folder / "b.avi"),
                                 recordings.sound_of(self.folder / "part.dv"))
                self.assertEqual(self.json("verify", "b.avi")["faults"], [])
                info = self.json("info", "b.avi")
                self.assertEqual((info["audioStreams"], info["legacyEntries"], info["state"]),
                                 (1, 80, "finished"))
                streams = recordings.streams_of(self.folder / "b.avi")
                self.assertEqual([one["codec_name"] for one in streams], ["dvvideo", "pcm_s16le"])
                self.assertAlmostEqual(int(streams[1]["nb_frames"]) / 48000, 40 / fps, delta=0.001)
                # Its own stream is copied from here on, also out of a damaged file once that is repaired.
                self.dvrec("export", "b.avi", "c.avi", "--from=5", "--to=14", "--force")
                self.assertEqual(recordings.sound_of(self.folder / "c.avi"),
                                 sum(slots(recordings.sound_of(self.folder / "b.avi"), 2, 48000, fps)[5:15],
                                     array.array("h")))
                self.dvrec("repair", "b.avi", "c.avi", "--force")
                self.assertEqual(recordings.frames_of(self.folder / "c.avi"), b"".join(frames[10:50]))
                self.dvrec("convert", "a.dv", "b.avi", "--no-sound", "--force")
                self.assertEqual(self.json("info", "b.avi")["streams"], 1)

    def test_every_kind_of_sound_is_read_as_ffmpeg_reads_it(self):
        values = random.Random(3)
        for name, rate, bits, channels, count in (
                ("pal", 48000, 16, 2, 1944), ("ntsc", 48000, 16, 2, 1580), ("pal", 44100, 16, 2, 1764),
                ("ntsc", 32000, 16, 2, 1067), ("pal", 32000, 12, 4, 1296), ("ntsc", 32000, 12, 4, 1053),
                ("pal", 32000, 12, 2, 1280)):
            with self.subTest(f"{name} {rate} {bits} {channels}"):
                top = 1 << bits - 1
                # The value at the bottom means that there is none.
                lists = [[values.randrange(1 - top, top) for _ in range(count)] for _ in range(channels)]
                frames = stream(name, 3)
                self.file("a.dv", [recordings.with_sound(frame, lists, rate, bits) for frame in frames])
                self.dvrec("convert", "a.dv", "b.avi", "--force")
                made = recordings.sound_of(self.folder / "b.avi")
                self.assertEqual(len(made), 3 * count * channels)
                for pair in range(channels // 2):
                    ours = array.array("h", (made[i + j] for i in range(2 * pair, len(made), channels)
                                             for j in (0, 1)))
                    self.assertEqual(ours, recordings.sound_of(self.folder / "a.dv", pair))

    def test_silence_and_other_rates_stand_where_they_were(self):
        frames = stream("pal", 12)
        loud = [[1000] * 1280] * 2
        frames[3:6] = [recordings.with_sound(frame, [[0] * 1920] * 2)[:72000] + frame[72000:]
                       for frame in frames[3:6]]
        mute = bytearray(frames[4])
        for at in range(0, PAL, 80):
            if mute[at] >> 5 == 3:
                mute[at + 3] = 0xff
        frames[4], frames[8] = bytes(mute), recordings.with_sound(frames[8], loud, 32000, 16)
        self.dvrec("convert", self.file("a.dv", [frames[4], *frames]), "b.avi")
        heard = slots(recordings.sound_of(self.folder / "b.avi"), 2, 48000, 25)
        self.assertEqual([len(one) for one in heard[:13]], [2 * 1920] * 13)
        self.assertFalse(any(heard[0]) or any(heard[5]), "no sound in the frame")
        self.assertEqual(set(heard[9]), {1000}, "stretched from 32 to 48 kHz")
        self.assertEqual(heard[1], recordings.sound_of(self.folder / "a.dv")[:2 * 1920])

    def test_a_foreign_sound_stream_is_kept(self):
        source = scripted_tests.STREAMS / "pal.dv"
        for codec, rate, channels, kept in (("pcm_s16le", 44100, 1, True), ("pcm_u8", 22050, 2, True),
                                            ("mp2", 48000, 2, False)):
            foreign = self.folder / "foreign.avi"
            recordings.ffmpeg("-i", source, "-f", "lavfi", "-i", f"sine=frequency=300:sample_rate={rate}",
                              "-map", "0:v", "-map", "1:a", "-c:v", "copy", "-c:a", codec, "-ac", channels,
                              "-t", "4", foreign)
            said = self.json("export", "foreign.avi", "b.avi", "--from", "30", "--to", "69", "--force",
                             notes=not kept)
            if kept:
                wanted = slots(recordings.sound_of(foreign), channels, rate, 25)[30:70]
                self.assertEqual((said["soundRate"], said["soundChannels"]), (rate, channels))
            else:
                self.assertEqual(said["soundRate"], 48000)
                self.file("a.dv", stream("pal", 40, 30))
                wanted = [recordings.sound_of(self.folder / "a.dv")]
            self.assertEqual(recordings.sound_of(self.folder / "b.avi"), sum(wanted, array.array("h")), codec)
            self.assertEqual(self.json("verify", "b.avi")["faults"], [])

    def test_the_line_for_mp4_in_the_documentation(self):
        document = (scripted_tests.ROOT / "docs" / "dvrec.md").read_text(encoding="utf-8")
        line = next(line for line in document.splitlines() if line.startswith("ffmpeg -i match.avi"))
        for name, size in (("pal", (768, 576)), ("ntsc", (640, 480))):
            self.dvrec("convert", self.file("a.dv", stream(name, 50)), "match.avi", "--force")
            subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *shlex.split(line)[1:]],
                           cwd=self.folder, check=True)
            video, sound = recordings.streams_of(self.folder / "match.mp4")
            self.assertEqual((video["width"], video["height"], video["sample_aspect_ratio"]), (*size, "1:1"))
            seconds = 50 / (25 if name == "pal" else 29.97)
            self.assertAlmostEqual(float(video["duration"]), seconds, delta=0.04)
            self.assertAlmostEqual(float(sound["duration"]), seconds, delta=0.04)


class Repair(Case):
    def test_every_undamaged_frame_is_saved(self):
        frames = stream("pal", 8)
        sound = raw(frames)
        record = len(sound) // 8
        for name, content, saved, lost in (
                ("sound", sound, range(8), 0),
                ("cut off", sound[:-record // 2], range(7), 1),
                ("first header gone", bytes(700) + sound[700:], range(1, 8), 1),
                ("header gone", sound[:2 * record] + bytes(8) + sound[2 * record + 8:], range(8), 0),
                ("two overwritten", sound[:2 * record + 99] + bytes(record) + sound[3 * record + 99:],
                 (0, 1, 4, 5, 6, 7), 2),
                ("bytes missing", sound[:3 * record + 5000] + sound[3 * record + 5777:],
                 (0, 1, 2, 4, 5, 6, 7), 1),
                ("frames' bytes missing", sound[:3 * record + 5000] + sound[5 * record + 777:],
                 (0, 1, 2, 6, 7), 3),
                ("foreign bytes between", sound[:3 * record] + b"x" * 700 + sound[3 * record:], range(8), 0),
                ("two cut off", sound[:-record] + sound[:record // 2], range(7), 1),
                ("last unwritten", sound[:-record] + bytes(record), range(7), 1),
                ("other data in front", b"x" * 5000 + sound, range(8), 0)):
            with self.subTest(name):
                self.file("damaged.raw", content)
                result = self.json("repair", "damaged.raw", "sound.raw", "--force")
                self.assertEqual((result["frames"], result["lost"], result["exact"]),
                                 (len(saved), lost, True))
                self.assertEqual(self.json("verify", "sound.raw")["frames"], len(saved))
                self.dvrec("export", "sound.raw", "sound.dv", "--force")
                self.assertEqual(self.read("sound.dv"), b"".join(frames[i] for i in saved))
                self.assertEqual(self.read("damaged.raw"), content)

    def test_avi_files_are_saved_from_any_damage(self):
        frames = stream("ntsc", 12)
        self.dvrec("convert", self.file("a.dv", frames), "whole.avi")
        whole = self.read("whole.avi")
        place = [whole.index(frame) for frame in frames]

        def overwritten(begin, end):
            return whole[:begin] + b"\xA5" * (end - begin) + whole[end:]

        for name, content, saved, faulty in (
                ("cut off in a frame", whole[:place[9] + 5000], range(9), True),
                ("header gone", overwritten(0, place[0] - 8), range(12), None),
                ("header of a frame gone", overwritten(place[5] - 8, place[5] + 3),
                 [*range(5), *range(6, 12)], True),
                ("a frame damaged inside", overwritten(place[5] + 40000, place[5] + 50000),
                 [*range(5), *range(6, 12)], True),
                ("across frames", overwritten(place[3] + 70000, place[6] + 10), [*range(3), *range(7, 12)],
                 True),
                ("sound and picture interleaved", whole.replace(b"vids", b"iavs", 1), range(12), None),
                ("indexes gone", overwritten(place[11] + NTSC, len(whole)), range(12), True)):
            with self.subTest(name):
                self.file("damaged.avi", content)
                if faulty:
                    self.assertGreater(self.json("verify", "damaged.avi", status=FAULTS)["faultCount"], 0)
                result = self.json("repair", "damaged.avi", "sound.avi", "--force")
                self.assertEqual((result["frames"], result["lost"], result["exact"]),
                                 (len(saved), 12 - len(saved), True))
                self.assertEqual(recordings.frames_of(self.folder / "sound.avi"),
                                 b"".join(frames[i] for i in saved))
                self.assertEqual(self.json("verify", "sound.avi")["faults"], [])
                self.assertEqual(self.read("damaged.avi"), content)
        self.assertIn("give OUT the extension .avi",
                      self.dvrec("repair", "whole.avi", "out.raw", status=USAGE))

    def test_streams_and_files_without_frames(self):
        frames = stream("ntsc", 5)
        self.file("damaged.dv", b"".join(frames[:2])[:-5000] + b"".join(frames[2:]))
        said = self.dvrec("repair", "damaged.dv", "sound.dv").replace("\r", "")
        self.assertIn("saved: 4 frames\nlost: 1 frame, 1 of them", said)
        self.assertIn("new frame 1, from byte 120000 of the old file: 1 frame, by the time code", said)
        self.assertEqual(self.read("sound.dv"), b"".join(frames[:1] + frames[2:]))
        blank = b"".join(map(recordings.without_time_code, frames))
        self.file("damaged.dv", blank[:NTSC + 5000] + blank[3 * NTSC + 777:])
        said = self.dvrec("repair", "damaged.dv", "sound.dv", "--force")
        self.assertIn("lost: at least 1 frame", said, "frames 1 to 3 are lost, and nothing tells")
        self.file("noise.avi", bytes(300000))
        self.assertIn("No DV frame", self.dvrec("repair", "noise.avi", "out.avi", status=CANNOT_READ))


class Grab(Case):
    def test_the_picture_is_that_of_the_frame(self):
        for name in ("pal", "ntsc"):
            frames = stream(name, 4)
            self.file("all.raw", raw(frames))
            expected = recordings.thumbnail(self.folder / self.file("one.dv", frames[3]))
            other = recordings.thumbnail(self.folder / self.file("other.dv", stream(name, 1, 150)))
            for picture in ("a.png", "a.bmp", "a.jpg"):
                result = self.json("grab", "all.raw", picture, "--frame", "3", "--force")
                self.assertEqual((result["width"], result["height"]), (720, 576 if name == "pal" else 480))
                grabbed = recordings.thumbnail(self.folder / picture)
                self.assertLess(recordings.difference(grabbed, expected), 8, picture)
                self.assertGreater(recordings.difference(grabbed, other), 16, picture)

    def test_pixels_have_their_shape_or_are_square(self):
        for name, wide, lines, square in (("pal", False, 576, 768), ("pal", True, 576, 1024),
                                          ("ntsc", False, 480, 640), ("ntsc", True, 480, 853)):
            frame = stream(name, 1, 40)[0]
            self.file("a.dv", [recordings.patched(frame, recordings.WIDE) if wide else frame])
            shape = (16 / 9 if wide else 4 / 3) * lines
            for option, width in ([], 720), (["--square"], square):
                result = self.json("grab", "a.dv", "a.png", "--frame", "0", "--force", *option)
                self.assertEqual((result["width"], result["height"]), (width, lines))
                content = self.read("a.png")
                at = content.index(b"pHYs") + 4
                across, down = (int.from_bytes(content[at + i:at + i + 4], "big") for i in (0, 4))
                self.assertAlmostEqual(width * down / across / shape, 1, 2)
                self.assertAlmostEqual(result["pixelAspect"], down / across, 2)
                pictures = [recordings.thumbnail(self.folder / file) for file in ("a.png", "a.dv")]
                self.assertLess(recordings.difference(*pictures), 8)

    def test_one_field_has_no_combs(self):
        self.file("a.dv", stream("pal", 1, 40))
        self.dvrec("grab", "a.dv", "both.bmp", "--frame", "0")
        both = recordings.rgb(self.folder / "both.bmp")
        for field, kept in (("top", 0), ("bottom", 1)):
            self.dvrec("grab", "a.dv", "one.bmp", "--frame", "0", "--field", field, "--force")
            one = recordings.rgb(self.folder / "one.bmp")
            self.assertEqual(one[kept::2], both[kept::2])
            for line in (1 - kept, 100 + 1 - kept, 574 + 1 - kept):
                above, below = (both[i] if 0 <= i < 576 else None for i in (line - 1, line + 1))
                mean = bytes((a + b + 1) // 2 for a, b in zip(above or below, below or above))
                self.assertEqual(one[line], mean, line)

    def test_without_a_decoder_there_is_a_reason(self):
        self.file("a.dv", stream("pal", 1))
        errors = self.dvrec("grab", "a.dv", "a.png", "--frame", "0", status=NO_PICTURE,
                            WINEDLLOVERRIDES="marvo-devices=;mscoree=;mshtml=;winedbg.exe=")
        self.assertIn("no DV video decoder", errors)
        self.assertEqual(self.names(), {"a.dv"})


class Clips(Case):
    def test_they_are_listed_and_exported(self):
        frames = stream("pal", 6)
        self.file("игра.raw", raw(frames))
        self.assertEqual(self.json("clips", "игра.raw"), {"file": "игра.raw", "clips": [], "findings": []})
        self.file("игра.raw.clips", ("marvo clips 1: игра.raw\n1\t3\t2024-02-29 21:58:59.120\tTor: 1/0?\n"
                                     "rubbish\n5\t5\t-\tПроверка\n").encode())
        listed = self.json("clips", "игра.raw")
        self.assertEqual(listed["clips"], [
            {"number": 1, "name": "Tor: 1/0?", "from": 1, "to": 3, "duration": 0.12,
             "recorded": "2024-02-29 21:58:59"},
            {"number": 2, "name": "Проверка", "from": 5, "to": 5, "duration": 0.04, "recorded": ""}])
        self.assertEqual(len(listed["findings"]), 1)
        self.assertIn("rubbish", listed["findings"][0])
        self.assertRegex(self.dvrec("clips", "игра.raw"), r"2 clips\s+1 .*frames 1 to 3 .*Tor: 1/0\?\s+2 ")
        self.dvrec("clips", "игра.raw", "all *.dv")
        self.assertEqual(self.read("all 01 Tor_ 1_0_.dv"), b"".join(frames[1:4]))
        self.assertEqual(self.read("all 02 Проверка.dv"), frames[5])
        for clip in ("2", "Проверка"):
            made = self.json("clips", "игра.raw", "one.avi", "--clip", clip, "--force")
            self.assertEqual([one["out"] for one in made["clips"]], ["one.avi"])
            self.assertEqual(recordings.frames_of(self.folder / "one.avi"), frames[5])

    def test_what_cannot_be_done_is_said(self):
        self.file("a.dv", stream("pal", 2))
        self.file("a.dv.clips", b"marvo clips 1: a.dv\n0\t1\t-\tfirst\n1\t2\t-\tbeyond\n")
        self.file("b.dv", stream("pal", 2))
        self.file("b.dv.clips", b"marvo clips 1: a.dv\n0\t1\t-\tfirst\n")
        self.file("c.dv", stream("pal", 1))
        for status, arguments, reason in (
                (USAGE, "a.dv out.dv", "There are 2 clips"),
                (USAGE, "a.dv out.dv --clip third", "no clip 'third'"),
                (USAGE, "a.dv out.mov --clip 1", "none of .avi and .dv"),
                (USAGE, "a.dv - --clip 1", "a file and not"),
                (USAGE, "c.dv *.dv", "no clips to export"),
                (USAGE, "a.dv *.dv x", "takes 1 or 2 files, and 3"),
                (CANNOT_READ, "a.dv *.dv", "Clip 2 ends with frame 2, and the recording has 2"),
                (CANNOT_READ, "b.dv", "'b.dv.clips': The clip list names another file, a.dv"),
                (CANNOT_WRITE, "a.dv b.dv --clip 1", "it exists")):
            self.assertIn(reason, self.dvrec("clips", *arguments.split(), status=status))
        self.assertEqual(self.names(), {"a.dv", "a.dv.clips", "b.dv", "b.dv.clips", "c.dv"})


class Refusals(Case):
    def test_each_has_its_status_and_reason(self):
        self.file("a.dv", stream("pal", 3))
        self.file("text.txt", b"not video\n" * 1000)
        self.file("there.dv", b"precious")
        self.file("empty.avi", b"")
        (self.folder / "folder.dv").mkdir()
        for status, arguments, reason in (
                (USAGE, "", "dvrec info"),
                (USAGE, "polish a.dv", "no command 'polish'"),
                (USAGE, "info", "takes 1 file or more, and 0"),
                (USAGE, "grab a.dv", "takes 2 files, and 1"),
                (USAGE, "info a.dv --frame 1", "no option '--frame'"),
                (USAGE, "info a.dv --json=yes", "--json takes no value"),
                (USAGE, "export a.dv b.dv --from", "--from needs a value"),
                (USAGE, "export a.dv b.dv --from 0:60", "not '0:60'"),
                (USAGE, "export a.dv b.dv --from 01:02:03:30", "not '01:02:03:30'"),
                (USAGE, "export a.dv b.dv --from @24:00", "not '@24:00'"),
                (USAGE, "export a.dv b.dv --from @2023-02-29T10:00:00", "not '@2023-02-29T10:00:00'"),
                (USAGE, "export a.dv b.dv --from 1.2.3", "not '1.2.3'"),
                (USAGE, "export a.dv b.dv --to 0:01", "the last frame is 2"),
                (USAGE, "convert a.dv -", "'dvrec export FILE -' writes a DV stream"),
                (USAGE, "grab a.dv a.png --frame 0 --field left", "'top' or 'bottom'"),
                (CANNOT_READ, "verify *.mov", "No file fits '*.mov'"),
                (USAGE, "export a.dv b.dv --from -1", "not '-1'"),
                (USAGE, "export a.dv b.dv --to 4294967296", "not '4294967296'"),
                (USAGE, "export a.dv b.dv --to 3", "the last frame is 2"),
                (USAGE, "export a.dv b.dv --from 2 --to 1", "no range from frame 2 to 1"),
                (USAGE, "export a.dv b.mov", "none of .avi and .dv"),
                (USAGE, "info a.dv --sector 500", "a power of two"),
                (USAGE, "grab a.dv a.png", "which frame with --frame"),
                (USAGE, "grab a.dv a.gif --frame 0", "none of .bmp"),
                (USAGE, "grab a.dv a.png --frame 3", "it has 3 frames"),
                (CANNOT_READ, "info nothing.dv", "'nothing.dv' cannot be opened"),
                (CANNOT_READ, "info folder.dv", "it is a folder"),
                (CANNOT_READ, "verify text.txt", "'text.txt' is no recording"),
                (CANNOT_READ, "info empty.avi", "'empty.avi' is empty"),
                (CANNOT_READ, "repair text.txt b.raw", "No DV frame"),
                (CANNOT_WRITE, "convert a.dv there.dv", "it exists"),
                (CANNOT_WRITE, "convert a.dv A.DV --force", "it is the recording that is read"),
                (CANNOT_WRITE, "convert a.dv ./folder.dv --force", "it is a folder"),
                (CANNOT_WRITE, "convert a.dv missing/b.raw", "'missing/b.raw' cannot be written")):
            errors = self.dvrec(*arguments.split(), status=status)
            self.assertIn(reason, errors, arguments)
            self.assertTrue(arguments == "" or errors.count("\n") == 1, errors)
        self.assertEqual(self.names(), {"a.dv", "text.txt", "there.dv", "empty.avi", "folder.dv"})
        self.assertEqual(self.read("there.dv"), b"precious")

    def test_a_full_disk_leaves_nothing_behind(self):
        self.file("a.dv", stream("pal", 10))
        # The limit on a file's size stands for the end of the disk: half of what is to be written.
        limit = ["sh", "-c", "trap '' XFSZ; ulimit -f 1400; exec \"$@\"", "sh"]
        for out in ("b.raw", "b.avi"):
            done = scripted_tests.complete(limit + scripted_tests.command("dvrec", "convert", "a.dv", out),
                                           cwd=self.folder, env=scripted_tests.environment())
            self.assertEqual(done.returncode, CANNOT_WRITE, done.stderr)
            self.assertIn(f"'{out}' cannot be written: ", done.stderr.decode())
            self.assertIn("disk", done.stderr.decode().lower())
        self.assertEqual(self.names(), {"a.dv"})

    def test_an_existing_file_is_replaced_only_when_told(self):
        self.file("a.dv", stream("pal", 2))
        self.file("b.raw", b"old")
        # A file that has the temporary name already is somebody's as well.
        self.file("b.raw.part", b"not ours")
        self.dvrec("convert", "a.dv", "b.raw", "--force")
        self.assertEqual(self.read("b.raw")[8:8 + PAL], stream("pal", 1)[0])
        self.assertEqual(self.read("b.raw.part"), b"not ours")

    def test_it_needs_no_engine_beside_it_and_leaves_nothing(self):
        self.file("a.dv", stream("pal", 2))
        self.folder.chmod(0o555)
        try:
            self.assertEqual(self.json("info", "a.dv")["frames"], 2)
        finally:
            self.folder.chmod(0o755)
        self.assertEqual(self.names(), {"a.dv"})
        # A front end of its own could begin a log and ask for a drive. What is not imported is not there.
        machine = "i686" if scripted_tests.TARGET == "win32" else "x86_64"
        objdump = [f"{machine}-w64-mingw32-objdump", "-p", scripted_tests.PROGRAMS / "dvrec.exe"]
        listed = subprocess.run(objdump, capture_output=True, check=True, text=True).stdout
        self.assertEqual({line.split()[-1].lower() for line in listed.splitlines() if "DLL Name" in line},
                         {"kernel32.dll", "msvcrt.dll"})
        self.assertNotIn("dvFrontEnd", listed)

    def test_help_tells_all_commands_and_their_options(self):
        overview = self.dvrec("--help")
        for command in ("info", "verify", "export", "convert", "repair", "grab", "clips"):
            self.assertIn(f"dvrec {command} ", overview)
            self.assertIn("Options:", self.dvrec(command, "--help"))
        self.assertIn("--from PLACE", self.dvrec("export", "--help"))
        self.assertIn("@21:58:59", self.dvrec("grab", "--help"))
        self.assertRegex(self.dvrec("--version"), r"^dvrec \d+\.\d+\.\d+\s$")
        self.assertIn("Exit status", overview)


if __name__ == "__main__":
    scripted_tests.main()
