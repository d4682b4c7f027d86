#!/usr/bin/python3
"""Measures how soon the picture follows the mouse on the timeline of marvo-replay, while it records.

bench_scrub.py MOVES DIR DISPLAY FILE: the application runs as for demo_session.py. FILE gets a line
"MILLISECONDS" per move of the mouse, from the move to other pixels in the picture, and at last "lost FRAMES"
of the recording. Debian's Python, since Xlib is a package of Debian's.
"""
import random
import sys
import time
from pathlib import Path

from Xlib import X, display
from Xlib.ext import xtest

import check_demo
import demo_session

PATIENCE_S = 1.0
REST_S = 0.2
# Where the stream's frame number stands in the window, as parts of its width and height.
LEFT, TOP, WIDTH, HEIGHT = 0.30, 0.33, 0.15, 0.10


class Eye:
    """The pixels of a part of the display."""

    def __init__(self, name, left, top, width, height):
        self.display = display.Display(name)
        self.root = self.display.screen().root
        self.area = (left, top, width, height)

    def look(self):
        return self.root.get_image(*self.area, X.ZPixmap, 0xFFFFFFFF).data

    def move_mouse(self, x, y):
        xtest.fake_input(self.display, X.MotionNotify, x=x, y=y)
        self.display.sync()


def settled(eye):
    """The picture once it stands: what is still on its way must not count for the next move."""
    seen, since = eye.look(), time.monotonic()
    began = since
    while time.monotonic() - since < REST_S and time.monotonic() - began < PATIENCE_S:
        time.sleep(0.01)
        now = eye.look()
        if now != seen:
            seen, since = now, time.monotonic()
    return seen


def wait_for_change(eye, before):
    """Milliseconds until the picture is another one."""
    began = time.monotonic()
    while eye.look() == before and time.monotonic() - began < PATIENCE_S:
        time.sleep(0.001)
    return (time.monotonic() - began) * 1000


def scrub(session, eye, moves):
    left, top, width, height = session.window()
    y = top + height - demo_session.TIMELINE_ABOVE_BOTTOM
    span = width - 2 * demo_session.TIMELINE_INSET
    draw = random.Random(1)
    share = 0.5
    session.run("xdotool", "mousemove", left + span // 2, y, "mousedown", 1)
    times_ms = []
    for move in range(moves + 3):
        before = settled(eye)
        # At any moment of a tick.
        time.sleep(draw.random() * 0.04)
        # Far enough for another frame, also when an hour is on the line.
        share = (share + 0.1 + draw.random() * 0.7 - 0.05) % 0.9 + 0.05
        eye.move_mouse(left + demo_session.TIMELINE_INSET + int(span * share), y)
        took_ms = wait_for_change(eye, before)
        # The first ones open the file.
        if move >= 3:
            times_ms.append(took_ms)
    session.run("xdotool", "mouseup", 1)
    return times_ms


def frames_lost(folder, recording):
    """Breaks in the recording's order against the camera's stream."""
    source = {frame: index for index, frame in enumerate(check_demo.read_source(folder / "source.dv"))}
    frames, problem = check_demo.read_avi(recording)
    if problem or not frames:
        raise SystemExit(f"the recording cannot be read: {problem or 'it is empty'}")
    order = [source.get(frame, -2) for frame in frames]
    return sum((a + 1) % len(source) != b for a, b in zip(order, order[1:]))


def main():
    moves, folder = int(sys.argv[1]), Path(sys.argv[2]).resolve()
    name, result = sys.argv[3], Path(sys.argv[4])
    session = demo_session.Session(folder, name)
    demo_session.first_click(session)
    session.wait("live", lambda s: s["mode"] == "live" and s["newest"] is not None)
    session.keys("r")
    begun = session.wait("recording", lambda s: s["recording"] == "recording")
    time.sleep(20)
    left, top, width, height = session.window()
    eye = Eye(name, left + int(width * LEFT), top + int(height * TOP), int(width * WIDTH),
              int(height * HEIGHT))
    times_ms = scrub(session, eye, moves)
    session.keys("BackSpace", "s", "y")
    session.wait("stopped", lambda s: s["recording"] == "rolling")
    session.keys("ctrl+q", "y")
    recording = folder / "recordings" / begun["recordingFile"].replace("\\", "/").rsplit("/", 1)[-1]
    lost = frames_lost(folder, recording)
    result.write_text("".join(f"{took:.1f}\n" for took in times_ms) + f"lost {lost}\n")
    return 0 if all(step["held"] for step in session.steps) else 1


if __name__ == "__main__":
    sys.exit(main())
