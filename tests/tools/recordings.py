"""Recordings and pictures for the tests of dvrec, made and read without any code of ours."""
import struct
import subprocess

import scripted_tests

PAL, NTSC = 144000, 120000


def ffmpeg(*arguments):
    """What ffmpeg writes to its standard output."""
    return subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *map(str, arguments)],
                          capture_output=True, check=True).stdout


def stream(name, frames, first=0):
    """`frames` different DV frames of the stream `name` ("pal" or "ntsc"), as a list of bytes."""
    size = PAL if name == "pal" else NTSC
    with open(scripted_tests.STREAMS / f"{name}.dv", "rb") as file:
        file.seek(first * size)
        return [file.read(size) for _ in range(frames)]


def raw(frames, sector=512):
    """A raw recording of the frames, as on a volume with that sector size."""
    records = []
    for frame in frames:
        time = 400000 if len(frame) == PAL else 333333
        record = struct.pack("<II", len(frame), time) + frame
        records.append(record + b"\xAA" * (-len(record) % sector))
    return b"".join(records)


def stamped(name, frames, time_code, recorded, file):
    """A stream with the camera's time code and clock in it, by ffmpeg; its frames."""
    source = scripted_tests.STREAMS / f"{name}.dv"
    ffmpeg("-i", source, "-c", "copy", "-metadata", f"timecode={time_code}", "-metadata",
           f"creation_time={recorded}", "-f", "dv", file)
    size = PAL if name == "pal" else NTSC
    content = file.read_bytes()
    return [content[i * size:(i + 1) * size] for i in range(frames)]


def without_time_code(frame):
    """The frame with nothing in its subcode."""
    blank = bytearray(frame)
    for begin in (at + block * 80 + 3 for at in range(0, len(frame), 12000) for block in (1, 2)):
        blank[begin:begin + 48] = b"\xff" * 48
    return bytes(blank)


def patched(frame, packs):
    """The frame with other bytes in its VAUX and AAUX packs: `packs` has 4 bytes for a pack's type, None for
    those that stay."""
    made = bytearray(frame)
    vaux = [block * 80 + 3 + pack * 5 for block in (3, 4, 5) for pack in range(15)]
    aaux = [block * 80 + 3 for block in range(6, 150, 16)]
    for at in (start + place for start in range(0, len(frame), 12000) for place in vaux + aaux):
        for i, byte in enumerate(packs.get(made[at], ())):
            made[at + 1 + i] = made[at + 1 + i] if byte is None else byte
    return bytes(made)


WIDE = {0x61: (None, 0xFA, None, None)}


def rgb(file):
    """The first picture of any file that ffmpeg reads, as its lines in RGB."""
    probe = ["ffprobe", "-v", "error", "-show_entries", "stream=width,height", "-of", "csv=p=0", str(file)]
    sides = subprocess.run(probe, capture_output=True, check=True, text=True).stdout
    width, height = map(int, sides.strip().split(","))
    pixels = ffmpeg("-i", file, "-frames:v", 1, "-f", "rawvideo", "-pix_fmt", "rgb24", "-")
    return [pixels[line * width * 3:(line + 1) * width * 3] for line in range(height)]


def stream50(frames):
    """As `stream`, of 50 Mbit/s PAL."""
    made = ffmpeg("-i", scripted_tests.STREAMS / "pal.dv", "-map", "0:v", "-frames:v", frames, "-pix_fmt",
                  "yuv422p", "-c:v", "dvvideo", "-f", "rawvideo", "-")
    return [made[i * 2 * PAL:(i + 1) * 2 * PAL] for i in range(frames)]


def frames_of(file):
    """The frames of any video file as ffmpeg finds them, joined."""
    return ffmpeg("-i", file, "-map", "0:v", "-c", "copy", "-f", "rawvideo", "-")


def thumbnail(file):
    """The first picture of any file that ffmpeg reads, as 36 x 24 grey values."""
    return ffmpeg("-i", file, "-frames:v", 1, "-vf", "scale=36:24:flags=area:out_range=pc,format=gray",
                  "-f", "rawvideo", "-")


def difference(one, other):
    """How much two thumbnails differ: the mean per pixel, of 255."""
    return sum(abs(a - b) for a, b in zip(one, other, strict=True)) / len(one)
