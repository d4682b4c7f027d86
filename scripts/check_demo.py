#!/usr/bin/env python3
"""Checks what a demo session left behind against the camera's stream, and prints a short table.

check_demo.py engine DIR    a scripted session of marvo-host: source.dv, camera.log, recording.raw,
                            recording.avi, report.json and the screenshots
check_demo.py evening DIR   an evening at marvo-replay: source.dv, camera.log, session.json, the recording,
                            the export and the screenshots

Exit status 0 only if every check held.
"""

import json
import math
import struct
import subprocess
import sys
from pathlib import Path

FRAME_BYTES = 144000
SECTOR = 512
# The pictures that are compared: small enough that the screen's way of drawing makes no difference.
GRID = (90, 72)
# In dB, the middle of the picture against that frame of the stream: about 24, another frame: at most 16.
LEAST_LIKENESS = 20


class Table:
    def __init__(self):
        self.rows = []
        self.failed = False

    def add(self, name, held, detail):
        self.rows.append((name, "ok" if held else "FAILED", detail))
        self.failed |= not held

    def show(self):
        width = max(len(name) for name, _, _ in self.rows)
        for name, result, detail in self.rows:
            print(f"  {name:<{width}}  {result:<6}  {detail}")


def read_source(path):
    data = path.read_bytes()
    return [data[i:i + FRAME_BYTES] for i in range(0, len(data), FRAME_BYTES)]


def read_recording(path):
    """The frames of the records, or the reason why they are none."""
    data = path.read_bytes()
    record = (FRAME_BYTES + 8 + SECTOR - 1) // SECTOR * SECTOR
    if not data or len(data) % record:
        return [], f"{len(data)} bytes are not whole records of {record}"
    frames = []
    for at in range(0, len(data), record):
        size, duration = struct.unpack_from("<II", data, at)
        if (size, duration) != (FRAME_BYTES, 400000):
            return frames, f"record {len(frames)} says {size} bytes, {duration} x 100 ns"
        frames.append(data[at + 8:at + 8 + FRAME_BYTES])
    return frames, ""


def read_avi(path):
    """The frames that other software finds in the AVI file, or the reason why they are none."""
    counted = subprocess.run(["ffprobe", "-v", "error", "-count_packets", "-select_streams", "v:0",
                              "-show_entries", "stream=codec_name,width,height,nb_frames,nb_read_packets",
                              "-of", "json", str(path)],
                             capture_output=True)
    if counted.returncode:
        return [], counted.stderr.decode(errors="replace").strip()
    stream = json.loads(counted.stdout)["streams"][0]
    copied = subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-i", str(path), "-map", "0:v:0",
                             "-c", "copy",
                             "-f", "rawvideo", "-"], check=True, capture_output=True).stdout
    frames = [copied[i:i + FRAME_BYTES] for i in range(0, len(copied), FRAME_BYTES)]
    if (stream["codec_name"], stream["width"], stream["height"]) != ("dvvideo", 720, 576):
        return frames, f"ffprobe sees {stream}"
    if not int(stream["nb_frames"]) == int(stream["nb_read_packets"]) == len(frames):
        return frames, (f"the header says {stream['nb_frames']} frames, "
                        f"ffprobe counts {stream['nb_read_packets']}, ffmpeg copies {len(frames)}")
    return frames, ""


def read_deliveries(path):
    """The source frames that the camera delivered, in order."""
    lines = path.read_text().splitlines()
    return [int(line.split()[1]) for line in lines if line and not line.startswith("#")]


def check_recording(table, name, source, recorded, deliveries, written=None, losses=0):
    """`losses` of the camera are seen as breaks, behind which the stream begins anew. Returns the number of
    the camera's frame with which the recording begins."""
    frames, problem = recorded
    place = {frame: index for index, frame in enumerate(source)}
    order = [place.get(frame) for frame in frames]
    foreign = [k for k, index in enumerate(order) if index is None]
    table.add(f"{name}: the camera's frames, byte for byte", not problem and not foreign and frames,
              problem or f"{len(frames)} frames, {len(foreign)} foreign")
    if foreign or not frames:
        return None
    gaps = sum((a + 1) % len(source) != b for a, b in zip(order, order[1:]))
    table.add(f"{name}: in order, none missing, none twice", gaps <= losses,
              f"{gaps} breaks in the sequence" + f", {losses} times without a camera" * bool(losses))
    # The stream is shorter than the session, so the recording is looked for in the camera's own log.
    starts = [i for i in range(len(deliveries) - len(order) + 1) if deliveries[i:i + len(order)] == order]
    table.add(f"{name}: the camera's log agrees", bool(starts), f"{len(deliveries)} frames delivered in all")
    if written is not None:
        table.add(f"{name}: as many frames as the engine reports", len(frames) == written,
                  f"{written} reported written")
    return order[0]


def status_after(steps, first, command):
    """What the engine reported after the first `command` behind the command `first`."""
    begin = [step["command"] for step in steps].index(first)
    return next(step["status"] for step in steps[begin:] if step["command"] == command)


def check_watch(table, name, posts, first, last, speed):
    """Every frame of the range was shown, looped, each for the right number of ticks."""
    frames = [post["frame"] for post in posts]
    step = 1 if speed > 0 else -1
    length = last - first + 1
    jumps = sum((b - a - step) % length != 0 for a, b in zip(frames, frames[1:]))
    # The first and the last post are cut off by the beginning and the end of the watch.
    inner = [post["ticks"] for post in posts[1:-1]]
    ticks = sum(inner) / len(inner) if inner else 0
    held = set(frames) == set(range(first, last + 1)) and jumps == 0 and abs(ticks - 1 / abs(speed)) < 0.05
    table.add(f"replay {first} to {last} at speed {speed:g}", held,
              f"{len(set(frames))} different frames, {jumps} jumps, {ticks:.2f} ticks a frame")


def gray_pictures(arguments):
    """Pictures of the grid's size, as bytes of brightness."""
    size = f"{GRID[0]}:{GRID[1]}"
    made = subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", *arguments[:2], "-vf",
                           ",".join([*arguments[2:], f"scale={size}:flags=area"]), "-pix_fmt", "gray", "-f",
                           "rawvideo",
                           "-"], check=True, capture_output=True).stdout
    length = GRID[0] * GRID[1]
    return [made[i:i + length] for i in range(0, len(made), length)]


def check_screenshots(table, folder, steps, pictures, first):
    for step in steps:
        words = step["command"].split()
        if words[0] != "screenshot":
            continue
        shot = gray_pictures(["-i", str(folder / f"{words[1]}.png"), "crop=720:576:0:0"])[0]
        distance = [sum(abs(a - b) for a, b in zip(shot, picture)) for picture in pictures]
        seen = distance.index(min(distance))
        shown = step["status"]["shown"]
        if step["status"]["recording"]:
            expected = (first + shown) % len(pictures)
            off = (seen - expected + len(pictures) // 2) % len(pictures) - len(pictures) // 2
            # While the picture moves, the screen may be a frame or two behind the number.
            tolerance = 0 if step["status"]["paused"] else 3
            table.add(f"screenshot {words[1]}.png", abs(off) <= tolerance,
                      f"shows camera frame {seen}, engine says {shown} = camera frame {expected}")
        else:
            table.add(f"screenshot {words[1]}.png", min(distance) < sum(distance) / len(distance) / 2,
                      f"shows camera frame {seen}")


def durations(path):
    """Seconds of each stream of a file, by its kind; of sound by what it decodes to."""
    if not path.exists():
        return {}
    told = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries",
                           "stream=duration", "-of", "json", str(path)], check=True, capture_output=True)
    samples = subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-i", str(path), "-map", "0:a",
                              "-ac", "1", "-ar", "48000", "-f", "s16le", "-"],
                             check=True, capture_output=True).stdout
    return {"video": float(json.loads(told.stdout)["streams"][0]["duration"]),
            "audio": len(samples) / 2 / 48000}


def psnr(one, other):
    """How alike two pictures are, in dB; the same one gives 99."""
    error = sum((a - b) ** 2 for a, b in zip(one, other)) / len(one)
    return 10 * math.log10(255 ** 2 / error) if error else 99.0


def check_picture(table, path, shot, pictures, numbers):
    """Whether the picture on a screenshot is one of the camera's, and that which the application says.
    `numbers` has the camera's number of each frame of the recording."""
    left, top, width, height = shot["picture"]
    # Words lie over the upper edge, an alarm in the middle.
    above, below = (0.62, 0.96) if shot["mode"] == "no-signal" else (0.3, 0.7)
    part = (f"crop={width * 6 // 10}:{int(height * (below - above))}:"
            f"{left + width * 2 // 10}:{top + int(height * above)}")
    seen = gray_pictures(["-i", str(path), part])[0]
    parts = pictures[above, below]
    likeness = [psnr(seen, picture) for picture in parts]
    best = likeness.index(max(likeness))
    expected = None
    if shot["file"].endswith(numbers["file"]) and shot["frame"] < len(numbers["order"]):
        expected = numbers["order"][shot["frame"]]
    off = 0 if expected is None else (best - expected + len(parts) // 2) % len(parts) - len(parts) // 2
    # While the picture moves, the screen may be some frames off the number.
    tolerance = 0 if shot["held"] else 12
    held = likeness[best] >= LEAST_LIKENESS and abs(off) <= tolerance
    told = "" if expected is None else f", the application says {expected}"
    table.add(f"screenshot {path.name}", held,
              f"shows camera frame {best} ({likeness[best]:.1f} dB){told}")


def check_screens(table, folder, shots, recording, frames):
    source = read_source(folder / "source.dv")
    place = {frame: index for index, frame in enumerate(source)}
    numbers = {"file": f"recordings\\{recording.name}", "order": [place.get(frame) for frame in frames]}
    pictures = {}
    for above, below in ((0.3, 0.7), (0.62, 0.96)):
        part = f"crop=iw*0.6:ih*{below - above:.2f}:iw*0.2:ih*{above}"
        pictures[above, below] = gray_pictures(["-i", str(folder / "source.dv"), part])
    for shot in shots:
        check_picture(table, folder / f"{shot['name']}.png", shot, pictures, numbers)


def check_evening(table, folder):
    session = json.loads((folder / "session.json").read_text(encoding="utf-8"))
    steps = session["steps"]
    failed = [step["step"] for step in steps if not step["held"]]
    table.add("every step of the evening", not failed, f"{len(steps)} steps, {len(failed)} without effect")
    recording = folder / "recordings" / session["recording"].replace("\\", "/").rsplit("/", 1)[-1]
    recorded = read_avi(recording)
    check_recording(table, recording.name, read_source(folder / "source.dv"), recorded,
                    read_deliveries(folder / "camera.log"), losses=1)
    seconds = session["exported_frames"] / 25
    told = durations(folder / "export.avi")
    held = all(abs(told.get(kind, 0) - seconds) <= 0.04 for kind in ("video", "audio"))
    table.add("export.avi: picture and sound of the right length", held, f"{seconds:.2f} s wanted, {told}")
    table.add("the clips are kept beside the recording", Path(f"{recording}.clips").is_file(),
              f"{recording.name}.clips")
    check_screens(table, folder, session["screenshots"], recording, recorded[0])


def check_engine(table, folder):
    report = json.loads((folder / "report.json").read_text(encoding="utf-8"))
    source = read_source(folder / "source.dv")
    deliveries = read_deliveries(folder / "camera.log")
    steps = report["steps"]
    table.add("every step of the session", report["passed"],
              f"{len(steps)} steps, {report['failures']} failed, {steps[-1]['time_ms'] / 1000:.1f} s")
    firsts = []
    for name, read in (("recording.raw", read_recording), ("recording.avi", read_avi)):
        begun = status_after(steps, f"record {name}", f"record {name}")["newest"]
        table.add(f"{name}: numbering began at 0", begun < 3, f"newest frame {begun} right after the start")
        written = status_after(steps, f"record {name}", "stop")["written"] + 1
        firsts.append(check_recording(table, name, source, read(folder / name), deliveries, written))
    for name, speed in (("normal", 1.0), ("slow", 0.5), ("backwards", -1.0)):
        check_watch(table, name, report["watches"][name], 50, 99, speed)
    if firsts[0] is not None:
        pictures = gray_pictures(["-i", str(folder / "source.dv")])
        check_screenshots(table, folder, steps, pictures, firsts[0])


def main():
    check = {"engine": check_engine, "evening": check_evening}[sys.argv[1]]
    table = Table()
    check(table, Path(sys.argv[2]))
    table.show()
    return 1 if table.failed else 0


if __name__ == "__main__":
    sys.exit(main())
