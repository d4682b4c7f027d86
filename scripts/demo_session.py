#!/usr/bin/env python3
"""Plays an evening on marvo-replay by keys and mouse, as its operator does, and prints what held.

demo_session.py EVENING DIR DISPLAY: the application runs on that display with DIR as its current directory
and listens on the port of DIR/marvo-replay.ini. EVENING is "evening"; "full", where the disk takes no more
after a while; or "first", what a new user tries first, with the old recording "cup final 1998.dv" in DIR.
Screenshots and session.json, which says what was seen at each step, are left in DIR. Exit status 0 only if
every step had its effect.
"""
import json
import socket
import subprocess
import sys
import time
from pathlib import Path

FPS = 25
PATIENCE_S = 30
# From the window's lower edge to the middle of the timeline, and from its sides to the timeline's ends.
TIMELINE_ABOVE_BOTTOM, TIMELINE_INSET = 250, 12
# What lies around the picture's panel: the menu above, the panels below, meter and clips on the right.
MENU, PANELS_BELOW, PANELS_RIGHT = 19, 302, 334
OLD = "cup final 1998.dv"
TITLE = "Marvo replay"
# As the export dialog takes it.
EXPORT = r"R:\out\demo\evening\export.avi"


class Session:
    """The operator's hands and eyes. Eyes: the remote port's "status", which changes nothing."""

    def __init__(self, folder, display):
        self.folder = folder
        self.environment = {"DISPLAY": display, "PATH": "/usr/bin:/bin"}
        self.steps = []
        self.shots = []
        lines = (folder / "marvo-replay.ini").read_text().splitlines()
        settings = dict(line.split(" = ", 1) for line in lines if " = " in line)
        self.remote = self.connect(int(settings["port"]), settings["token"])

    @staticmethod
    def connect(port, token):
        deadline = time.monotonic() + PATIENCE_S
        while True:
            try:
                connection = socket.create_connection(("127.0.0.1", port), timeout=PATIENCE_S)
                remote = connection.makefile("rw", newline="\n")
                break
            except OSError:
                if time.monotonic() > deadline:
                    raise SystemExit("marvo-replay does not listen on its port.") from None
                time.sleep(0.2)
        remote.write(token + "\n")
        remote.flush()
        if not json.loads(remote.readline())["ok"]:
            raise SystemExit("marvo-replay refuses the token.")
        return remote

    def send(self, line):
        self.remote.write(line + "\n")
        self.remote.flush()
        return json.loads(self.remote.readline())

    def status(self):
        return self.send("status")

    def run(self, *arguments):
        return subprocess.run([str(argument) for argument in arguments], check=True, env=self.environment,
                              capture_output=True, text=True).stdout

    def find(self, title):
        """The window of that title, as soon as it is there."""
        return self.run("xdotool", "search", "--sync", "--onlyvisible", "--name", f"^{title}").split()[0]

    def window(self):
        """Left, top, width and height of the main window."""
        rows = self.run("xdotool", "getwindowgeometry", "--shell", self.find(TITLE)).split()
        values = dict(row.split("=") for row in rows)
        return [int(values[name]) for name in ("X", "Y", "WIDTH", "HEIGHT")]

    def keys(self, *names):
        for name in names:
            self.run("xdotool", "key", name)
            time.sleep(0.08)

    def picture(self):
        """Left, top, width and height of the 4:3 picture on the display."""
        left, top, width, height = self.window()
        display = [int(part) for part in self.run("xdotool", "getdisplaygeometry").split()]
        if [width, height] != display:
            top, width, height = top + MENU, width - PANELS_RIGHT, height - MENU - PANELS_BELOW
        across = min(width, height * 4 // 3)
        up = across * 3 // 4
        return [left + (width - across) // 2, top + (height - up) // 2, across, up]

    def shoot(self, name):
        """A picture of the display as DIR/<name>.png, and what the status says is on it."""
        seen = self.status()
        self.run("import", "-window", "root", self.folder / f"{name}.png")
        self.shots.append({"name": name, "picture": self.picture()} |
                          {key: seen[key] for key in ("mode", "file", "frame", "held")})

    def note(self, what, held, seen):
        self.steps.append({"step": what, "held": bool(held), "seen": seen})
        print(f"  {'ok    ' if held else 'FAILED'}  {what}: {seen}", flush=True)

    def wait(self, what, condition, patience_s=PATIENCE_S):
        """Looks until a condition on the status holds, and notes whether it did."""
        deadline = time.monotonic() + patience_s
        status = self.status()
        while not condition(status) and time.monotonic() < deadline:
            time.sleep(0.04)
            status = self.status()
        short = {name: status[name] for name in ("mode", "frame", "recording", "message")}
        self.note(what, condition(status), short)
        return status


def first_click(session):
    """Gives the window the keyboard, as a hand does that takes the mouse."""
    left, top, width, height = session.window()
    session.run("xdotool", "mousemove", left + width // 3, top + height // 3, "click", 1)


def record_and_mark(session):
    session.wait("live", lambda s: s["mode"] == "live" and s["newest"] is not None)
    session.shoot("live")
    session.keys("r")
    begun = session.wait("Record begins a file of its own", lambda s: s["recording"] == "recording")
    session.keys("r")
    session.wait("Record while recording does nothing and says so",
                 lambda s: s["recordingFile"] == begun["recordingFile"] and s["message"] != begun["message"])
    time.sleep(2)
    session.keys("i")
    time.sleep(3)
    session.keys("o")
    session.wait("in and out point make a clip", lambda s: len(s["clips"]) == 1)
    time.sleep(8)
    session.keys("c")
    session.wait("one key makes a clip of the last ten seconds", lambda s: len(s["clips"]) == 2)
    return begun["recordingFile"]


def scrub(session):
    left, top, width, height = session.window()
    y = top + height - TIMELINE_ABOVE_BOTTOM
    span = width - 2 * TIMELINE_INSET
    x_of = lambda share: left + TIMELINE_INSET + int(span * share)
    session.run("xdotool", "mousemove", x_of(0.9), y, "mousedown", 1)
    places = []
    for share in (0.8, 0.6, 0.5, 0.4, 0.3, 0.35, 0.4):
        session.run("xdotool", "mousemove", x_of(share), y)
        time.sleep(0.3)
        places.append(session.status()["position"])
    session.shoot("scrub")
    session.run("xdotool", "mouseup", 1)
    back, forth = places[:5], places[4:]
    right = None not in places and back == sorted(back, reverse=True) and forth == sorted(forth)
    session.note("the picture follows the mouse on the timeline", right, places)


def step_behind_the_ring(session):
    session.keys("BackSpace")
    session.wait("back to live", lambda s: s["mode"] == "live")
    session.keys("space")
    held = session.wait("hold", lambda s: s["held"])
    time.sleep(4)
    at = held["position"]
    for _ in range(12):
        session.keys("Left")
        at -= 1
    session.wait("twelve steps back, four seconds after the hold", lambda s: s["position"] == at)
    steps = 30
    for _ in range(steps):
        session.keys("shift+Left")
    status = session.wait("three hundred frames further back, behind the ring",
                          lambda s: s["position"] == at - 10 * steps)
    session.keys("Left")
    session.wait("and one more", lambda s: s["position"] == status["position"] - 1)


def slow_motion(session):
    session.keys("F5")
    session.wait("again, the last five seconds", lambda s: s["mode"] == "replay" and not s["held"])
    session.keys("3")
    session.wait("at a quarter of the speed", lambda s: s["speed"] == 0.25)
    time.sleep(1)
    session.shoot("slow-motion")
    session.keys("BackSpace")


def clips(session):
    session.keys("Prior", "Return")
    session.wait("a clip plays", lambda s: s["mode"] in ("replay", "playlist"))
    time.sleep(0.6)
    session.shoot("clips")
    session.keys("BackSpace")


def full_screen(session):
    first_click(session)
    session.keys("F11", "F12")
    time.sleep(1.5)
    session.shoot("full-screen")
    session.keys("F12", "F11")
    time.sleep(0.5)
    session.wait("live after full screen", lambda s: s["mode"] == "live")


def export_while_recording(session):
    status = session.status()
    clip = next(row for row in status["clips"] if row["chosen"])
    target = session.folder / "export.avi"
    session.keys("ctrl+e")
    dialog = session.find("Export clip")
    session.run("xdotool", "windowfocus", dialog, "type", "--delay", 40, EXPORT)
    session.keys("Return")
    deadline = time.monotonic() + PATIENCE_S
    while not target.exists() and time.monotonic() < deadline:
        time.sleep(0.1)
    frames = clip["last"] - clip["first"] + 1
    session.note("a clip is exported while recording goes on", target.exists(), f"{frames} frames")
    return frames


def lose_the_camera(session):
    session.wait("the camera is lost", lambda s: s["mode"] == "no-signal", 90)
    time.sleep(1.5)
    session.shoot("no-signal")
    session.wait("and comes back by itself", lambda s: s["mode"] == "live" and s["noSignal_ms"] == 0)


def stop_and_quit(session):
    session.keys("s")
    session.wait("Stop asks", lambda s: s["question"])
    session.keys("y")
    session.wait("and stops when confirmed", lambda s: s["recording"] != "recording")
    session.keys("ctrl+q")
    time.sleep(0.5)
    try:
        if session.status()["question"]:
            session.keys("y")
    except (OSError, ValueError):
        pass


def fill_the_disk(session):
    session.wait("live", lambda s: s["mode"] == "live" and s["newest"] is not None)
    session.keys("r")
    session.wait("a full disk is told at once", lambda s: s["recording"] == "failing")
    time.sleep(1)
    session.shoot("disk-full")
    session.keys("s", "y")
    session.wait("and the recording can be stopped", lambda s: s["recording"] != "failing")
    session.keys("ctrl+q", "y")


def first_evening(session):
    session.wait("live", lambda s: s["mode"] == "live" and s["newest"] is not None)
    session.keys("r")
    begun = session.wait("Record records", lambda s: s["recording"] == "recording")
    time.sleep(3)
    session.keys("r")
    again = session.wait("once more, it goes on with the same file",
                         lambda s: s["recordingFile"] == begun["recordingFile"] and "since" in s["message"])
    session.shoot("record-twice")
    session.note("and keeps what it has", again["recorded_ms"] >= 3000, f"{again['recorded_ms']} ms")
    session.keys("space")
    at = session.wait("hold", lambda s: s["held"])["position"]
    time.sleep(12)
    session.keys("Left")
    session.wait("a step back, when the ring has long gone on", lambda s: s["position"] == at - 1)
    session.shoot("hold-then-step")
    session.keys("c")
    session.wait("a clip of the last ten seconds", lambda s: s["clips"])
    session.send(f"open {OLD}")
    session.wait("an older file says whose it is",
                 lambda s: s["mode"] == "old-recording" and OLD in s["source"])
    session.shoot("older-file")
    session.keys("BackSpace", "F11")
    time.sleep(1.5)
    session.shoot("full-screen")
    session.keys("F11")
    lose_the_camera(session)
    stop_and_quit(session)
    return {"recording": begun["recordingFile"]}


def match(session):
    recording = record_and_mark(session)
    scrub(session)
    step_behind_the_ring(session)
    slow_motion(session)
    clips(session)
    frames = export_while_recording(session)
    full_screen(session)
    lose_the_camera(session)
    stop_and_quit(session)
    return {"recording": recording, "exported_frames": frames}


def main():
    evening, folder, display = sys.argv[1], Path(sys.argv[2]).resolve(), sys.argv[3]
    session = Session(folder, display)
    first_click(session)
    result = {"evening": match, "full": fill_the_disk, "first": first_evening}[evening](session) or {}
    result |= {"steps": session.steps, "screenshots": session.shots}
    (folder / "session.json").write_text(json.dumps(result, indent=1) + "\n")
    return 0 if all(step["held"] for step in session.steps) else 1


if __name__ == "__main__":
    sys.exit(main())
