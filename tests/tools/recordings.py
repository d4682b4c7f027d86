"""Recordings and pictures for the tests of dvrec, made and read without any code of ours."""
import array
import json
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


def streams_of(file):
    """What ffprobe says of each stream of a file."""
    return json.loads(subprocess.run(["ffprobe", "-v", "error", "-show_streams", "-of", "json", file],
                                     capture_output=True, check=True).stdout)["streams"]


def sound_of(file, stream=0):
    """A sound stream of any file as ffmpeg decodes it, as 16-bit samples of all its channels."""
    samples = array.array("h")
    samples.frombytes(ffmpeg("-i", file, "-map", f"0:a:{stream}", "-f", "s16le", "-"))
    return samples


def with_sound(frame, values, rate=48000, bits=16):
    """The frame with other sound in it: for each channel a list of as many samples, as they lie there."""
    made, half = bytearray(frame), 6 if len(frame) == PAL else 5
    least = {48000: (1896, 1580), 44100: (1742, 1452), 32000: (1264, 1053)}[rate][half == 5]
    code, in_half = {48000: 0, 44100: 8, 32000: 16}[rate] | (bits == 12), 1 + (bits == 12)
    for sequence in range(2 * half):
        for block in range(9):
            at = (sequence * 150 + 6 + 16 * block) * 80
            made[at + 3:at + 80] = b"\xff" * 5 + bytes(72)
            if block == (0 if sequence % 2 else 3):
                made[at + 3:at + 8] = bytes((
                    0x50, 0xc0 | len(values[0]) - least,
                    0 if sequence // half * in_half < len(values) else 15, 0xc0 | (half == 6) << 5, 0xc0 | code))
    for first in range(0, len(values), in_half):
        for n, words in enumerate(zip(*values[first:first + in_half])):
            sequence = (n // 3 + 2 * (n % 3)) % half + first // in_half * half
            block = 3 * (n % 3) + n % (9 * half) // (3 * half)
            place = (sequence * 150 + 6 + 16 * block) * 80 + 8 + (1 + in_half) * (n // (9 * half))
            made[place:place + 1 + in_half] = (words[0] % 65536).to_bytes(2, "big") if bits == 16 else bytes(
                (words[0] >> 4 & 255, words[1] >> 4 & 255, words[0] % 16 << 4 | words[1] % 16))
    return bytes(made)
