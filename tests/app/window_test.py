"""marvo-replay as its operator sees it: real keys and a real mouse, and what it says on its remote port."""
import json
import os
import shutil
import socket
import subprocess
import time
import unittest

import scripted_tests
from scripted_tests import ROOT

TOKEN = "let me in"


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Replay:
    """A running marvo-replay in a folder of its own."""

    def __init__(self, folder, *arguments, camera="stream = pal.dv", **settings):
        self.port = free_port()
        values = {"deinterlace": "no", "ring": 25, "port": self.port, "token": TOKEN, **settings}
        (folder / "marvo-replay.ini").write_text(
            "[marvo-replay]\n" + "".join(f"{key} = {value}\n" for key, value in values.items()))
        (folder / "camera.txt").write_text(camera.replace("pal.dv", "R:\\build\\streams\\pal.dv") + "\n")
        inside = str(folder.relative_to(ROOT)).replace("/", "\\")
        environment = scripted_tests.environment(MARVO_CAMERA=f"R:\\{inside}\\camera.txt",
                                                 MARVO_TIMEOUT="120")
        self.output = open(folder / "output.txt", "wb")
        self.process = subprocess.Popen(scripted_tests.command("marvo-replay", *arguments), cwd=folder,
                                        env=environment, stdin=subprocess.DEVNULL, stdout=self.output,
                                        stderr=subprocess.STDOUT)
        self.connection = None
        if values["port"] != self.port:
            return
        self.connection = self.await_(self._connect, "the remote port")
        # The port is open before the camera is; until that is found, nobody answers.
        self.connection.settimeout(60)
        self.answers = self.connection.makefile("r", encoding="utf-8")
        assert self.say(TOKEN)["ok"]

    def _connect(self):
        assert self.process.poll() is None, f"marvo-replay ended with {self.process.returncode}"
        try:
            return socket.create_connection(("127.0.0.1", self.port), 1)
        except OSError:
            return None

    def await_(self, condition, what, seconds=60):
        end = time.monotonic() + seconds
        while not (result := condition()):
            assert time.monotonic() < end, f"{what} did not come; {self.status() if what[0] != 't' else ''}"
            time.sleep(0.04)
        return result

    def say(self, line):
        self.connection.sendall(line.encode() + b"\n")
        return json.loads(self.answers.readline())

    def status(self):
        return self.say("status")

    def until(self, condition):
        """The first status for which the condition holds."""
        return self.await_(lambda: (now := self.status()) and condition(now) and now, "a status")

    def hand(self, *arguments):
        """Keys and mouse."""
        number = (ROOT / "build/wine/display").read_text().split()[0]
        subprocess.run(["xdotool", *map(str, arguments)], check=True,
                       env={**os.environ, "DISPLAY": f":{number}"})

    def close(self):
        if self.process.poll() is None:
            self.process.terminate()
        self.process.wait(20)
        if self.connection:
            self.connection.close()
        self.output.close()


class Window(unittest.TestCase):
    def setUp(self):
        self.folder = scripted_tests.scratch() / self.id().rpartition(".")[2]
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir()
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def start(self, *arguments, **options):
        replay = Replay(self.folder, *arguments, **options)
        self.addCleanup(replay.close)
        return replay

    def test_help_and_mistakes(self):
        for words, status, there in ((["--help"], 0, b"--full-screen"), (["--version"], 0, b"marvo-replay "),
                                     (["--nonsense"], 2, b"unknown option --nonsense"),
                                     (["a.avi", "b.avi"], 2, b"more than one FILE")):
            with self.subTest(words):
                done = scripted_tests.run("marvo-replay", *words, cwd=self.folder)
                self.assertEqual(done.returncode, status)
                self.assertIn(there, done.stderr if status else done.stdout)

    def test_an_evening(self):
        replay = self.start()
        live = replay.until(lambda now: now["mode"] == "live" and (now["newest"] or 0) > 30)
        self.assertEqual(live["recording"], "rolling")
        # Keys come by the real way; those with modifiers mean something else, or nothing.
        replay.hand("mousemove", 400, 300, "click", 1, "key", "ctrl+r", "key", "m")
        self.assertEqual(replay.until(lambda now: not now["mute"])["recording"], "rolling")
        replay.hand("key", "r")
        replay.until(lambda now: now["recording"] == "recording")
        name = replay.status()["recordingFile"]
        replay.hand("key", "r")
        self.assertEqual(replay.until(lambda now: now["message"])["recordingFile"], name)
        replay.hand("key", "i")
        # Frame 12 is out of the ring by then.
        replay.until(lambda now: now["recorded_ms"] > 2500 and now["frame"] > 60)
        replay.hand("key", "o")
        clip = replay.until(lambda now: now["clips"])["clips"][0]
        # Far behind the ring a step is a step, and the picture says which one it is.
        self.assertTrue(replay.say("go-to 12")["ok"])
        held = replay.until(lambda now: now["held"] and now["frame"] == 12)
        self.assertEqual((held["mode"], held["file"]), ("replay", name))
        replay.hand("key", "Left", "key", "shift+Left")
        replay.until(lambda now: now["frame"] == 1)
        # Dragging over the timeline, from its left to its right end.
        first = replay.status()["position"]
        replay.hand("mousemove", 60, 740, "mousedown", 1, "mousemove", 400, 740, "mousemove", 1000, 740)
        replay.until(lambda now: now["held"] and now["position"] > first + 20)
        replay.hand("mouseup", 1, "key", "BackSpace")
        replay.until(lambda now: now["mode"] == "live")
        # Nothing ends the recording at once.
        self.assertIn("error", replay.say("stop"))
        self.assertTrue(replay.status()["question"])
        self.assertTrue(replay.say("dismiss")["ok"])
        self.assertEqual(replay.until(lambda now: not now["question"])["recording"], "recording")
        replay.hand("key", "s", "key", "s")
        replay.until(lambda now: now["recording"] == "rolling")
        replay.say("quit")
        replay.say("confirm")
        self.assertEqual(replay.process.wait(30), 0)
        recordings = sorted(path.name for path in (self.folder / "recordings").iterdir() if path.is_file())
        base = name.rpartition("\\")[2]
        self.assertEqual(recordings, [base, base + ".clips"])
        told = scripted_tests.run("dvrec", "info", "--json", base, cwd=self.folder / "recordings").stdout
        self.assertGreater(json.loads(told)["frames"], clip["last"])

    def test_trouble_is_told(self):
        # The camera is gone for a while; a setting makes no sense; a stranger comes to the port.
        replay = self.start(camera="stream = pal.dv\nlose = 100:2500", delay="soon", monitor=7)
        self.assertIn("soon", replay.until(lambda now: now["message"])["message"])
        # The port is taken by then for another one, which says so and goes on.
        (self.folder / "other").mkdir()
        other = Replay(self.folder / "other", port=replay.port)
        self.addCleanup(other.close)
        for command in range(2):
            self.assertTrue(replay.say("output-window")["ok"])
            replay.until(lambda now: "no monitor 7" in now["message"] or command)
        with socket.create_connection(("127.0.0.1", replay.port)) as stranger:
            stranger.sendall(b"wrong\nrecord\n")
            self.assertEqual(stranger.makefile().read().count("\n"), 1)
        lost = replay.until(lambda now: now["mode"] == "no-signal")
        self.assertEqual(lost["recording"], "rolling")
        self.assertGreater(lost["noSignal_ms"], 0)
        back = replay.until(lambda now: now["mode"] == "live")
        self.assertEqual(back["recordingFile"], lost["recordingFile"])
        log = self.folder / "other" / "marvo.log"
        other.await_(lambda: log.exists() and f"Port {replay.port} cannot" in log.read_text(), "the log")
        other.await_(lambda: list((log.parent / "recordings" / "rolling").glob("*.avi")), "the log's file")
        # An old recording says whose it is, and the window takes what is dropped or given by name.
        old = self.folder / "old match.dv"
        shutil.copy(scripted_tests.STREAMS / "pal.dv", old)
        self.assertTrue(replay.say("open old match.dv")["ok"])
        shown = replay.until(lambda now: now["mode"] == "old-recording")
        self.assertIn("old match.dv", shown["source"])
        self.assertIn("error", replay.say("open nothing.avi"))
        self.assertIn("old match.dv", (self.folder / "marvo-replay.ini").read_text())
        # A dialog that is open does not keep the program from ending.
        self.assertTrue(replay.say("settings")["ok"])
        replay.say("quit")
        replay.say("confirm")
        self.assertEqual(replay.process.wait(30), 0)


if __name__ == "__main__":
    scripted_tests.main()
