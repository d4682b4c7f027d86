"""Says what a recording is, and whether it is whole; makes an AVI file of it, too, when that is named.

report.py RECORDING [NEW.avi]
"""
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "bindings" / "python"))
import marvo  # noqa: E402


def time_code(info):
    if not info.time_code_known:
        return "no time code"
    return (f"{info.time_code_hours:02}:{info.time_code_minutes:02}:{info.time_code_seconds:02}:"
            f"{info.time_code_frames:02}")


def report(recording, copy=None):
    print(f"marvo {marvo.marvo_version_text()}")
    reader = marvo.marvo_reader_open(recording)
    try:
        info = marvo.marvo_reader_info(reader)
        print(f"{recording}: {info.frames} frames, {info.duration_100ns / 1e7:.2f} s")
        for number in sorted({0, info.frames - 1} if info.frames else ()):
            frame = bytearray(info.frame_bytes)
            found = marvo.marvo_reader_read(reader, number, frame)
            print(f"frame {number}: {time_code(found)}, {found.bytes} bytes, {sum(frame[:80])}")
    finally:
        marvo.marvo_reader_close(reader)

    def tell(offset, text):
        print(f"at byte {offset}: {text}")

    print(f"{marvo.marvo_verify(recording, tell).faults} faults")
    if copy:
        options = marvo.marvo_copy_options(last=marvo.MARVO_TO_THE_END, flags=marvo.MARVO_REPLACE)
        made = marvo.marvo_export(recording, copy, options)
        print(f"{copy}: {made.frames} frames")


if __name__ == "__main__":
    try:
        report(*sys.argv[1:3])
    except marvo.Error as failure:
        sys.exit(f"result {failure.code}: {failure}")
