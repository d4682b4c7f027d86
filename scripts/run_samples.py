#!/usr/bin/env python3
"""Runs the samples of the documentation as they stand there, and checks that none is left out.

run_samples.py PRESET [FILES...]  (default: README.md, CONTRIBUTING.md and docs/*.md)

A block of code says its language:

  sh        run by bash, in the page's folder; $marvo is the repository, dvrec runs under Wine
  console   lines behind "> " are run; what stands below them must be what they print
  cpp, c    with a file's name, kept for the commands that build it; else compiled
  ini       read by the library's settings reader
  json      parsed
  cmake     kept under its file's name
  text      nothing to run: pictures in letters, log lines, patterns of commands

A comment in front of a block says more, and is not seen on the page:

  <!-- file: NAME -->, <!-- more: NAME -->   the block is that file, or goes on with it
  <!-- needs: NAME... -->                    recordings to be made first (RECORDINGS)
  <!-- keys: KEY SECONDS ... -->             keys pressed meanwhile, and the time behind each
  <!-- not run: REASON -->                   why it is only shown
  <!-- tested by: PART -->                   the test that runs it

On win64 only the pages with programs are run, with that target's names in place of win32's.
"""
import json
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
MENTIONS = re.compile(r"\s*<!-- (file|more|needs|keys|not run|tested by): (.*) -->")
LANGUAGES = {"sh", "console", "cpp", "c", "ini", "json", "cmake", "text", "python", "csharp", "pascal"}
# Pages whose blocks are a test program of their own.
TESTED_BY = {"docs/toolkit.md": "docs.0"}
PAL = 144000


class Block:
    """A block of code, and what the comment in front of it says."""

    def __init__(self, page, first, language, mentions):
        self.page, self.first, self.language, self.mentions, self.lines = page, first, language, mentions, []

    @property
    def text(self):
        """The code."""
        return "\n".join(self.lines) + "\n"

    def fail(self, why):
        """Ends everything."""
        sys.exit(f"{self.page}:{self.first}: {why}")


def blocks_of(page):
    """The blocks of a page."""
    found, block, mentions = [], None, {}
    for number, line in enumerate((ROOT / page).read_text(encoding="utf-8").split("\n"), 1):
        mention = MENTIONS.fullmatch(line)
        if block:
            if line.strip() == "```":
                found.append(block)
                block = None
            else:
                block.lines.append(line)
        elif mention:
            mentions[mention[1]] = mention[2]
        elif line.lstrip().startswith("```"):
            block = Block(page, number + 1, line.strip()[3:], mentions)
            mentions = {}
        elif line.strip():
            if mentions:
                sys.exit(f"{page}:{number}: a comment on a block of code, and no block")
    return found


def ffmpeg(*arguments, **options):
    """Runs it without a word."""
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *arguments], check=True, **options)


def stream():
    """The frames of a camera with time code and clock, as its stream."""
    target = ROOT / "build" / "streams" / "stamped.dv"
    if not target.is_file():
        made = target.with_suffix(f".{os.getpid()}.dv")
        ffmpeg("-i", target.with_name("pal.dv"), "-c", "copy", "-metadata", "timecode=01:02:03:20",
               "-metadata", "creation_time=2024-02-29T21:58:59", "-f", "dv", made)
        made.rename(target)
    content = target.read_bytes()
    return [content[at:at + PAL] for at in range(0, len(content), PAL)]


def records(frames):
    """A raw recording of them."""
    head = struct.pack("<II", PAL, 400000)
    return b"".join(head + frame + bytes(-(len(frame) + 8) % 512) for frame in frames)


def match_raw(folder):
    """190 frames; the camera's time code counts ten more, from frame 100 on."""
    frames = stream()[:200]
    (folder / "match.raw").write_bytes(records(frames[:100] + frames[110:]))


def broken_raw(folder):
    """The same, damaged: in frame 10, from frame 120 on, and at its end."""
    match_raw(folder)
    content = bytearray((folder / "match.raw").read_bytes())
    record = PAL + 384
    content[10 * record + 8 + 4 * 80] ^= 0x55
    start = 120 * record + 8 + 5 * 12000 + 125 * 80
    content[start:start + 300000] = b"\x55" * 300000
    (folder / "broken.raw").write_bytes(content[:-516])


def match_avi(folder):
    """The frames as another program's AVI file."""
    (folder / "frames.dv").write_bytes(b"".join(stream()[:190]))
    ffmpeg("-i", "frames.dv", "-c", "copy", "match.avi", cwd=folder)
    (folder / "frames.dv").unlink()


def match_dv(folder):
    """More than a minute of the engine's records, under the name that misleads."""
    (folder / "match.dv").write_bytes(records(stream()[:200] * 9))


def broken_avi(folder):
    """An AVI file without its end."""
    match_avi(folder)
    content = (folder / "match.avi").read_bytes()
    (folder / "broken.avi").write_bytes(content[:len(content) // 2])


def clips(folder):
    """Two clips of match.raw, as the application keeps them."""
    (folder / "match.raw.clips").write_text(
        "marvo clips 1: match.raw\n12\t61\t2024-02-29 21:58:59.480\tFirst goal\n"
        "120\t169\t2024-02-29 21:59:04.200\tOffside?\n", encoding="utf-8")


def tape_mov(folder):
    """A tape as another program has it."""
    (folder / "tape.dv").write_bytes(b"".join(stream()[:50]))
    ffmpeg("-i", "tape.dv", "-c", "copy", "tape.mov", cwd=folder)


RECORDINGS = {"match.raw": match_raw, "match.avi": match_avi, "match.dv": match_dv, "broken.raw": broken_raw,
              "broken.avi": broken_avi, "match.raw.clips": clips, "tape.mov": tape_mov}
COMPILE = """
i686-w64-mingw32-g++ -std=c++17 -O0 pieces.cpp -I"$marvo" "$marvo/build/win32/lib/libmarvo.dll.a" -static \\
    -o pieces.exe
cp "$marvo/build/win32/bin/marvo.dll" .
"$marvo/scripts/run.sh" win32 pieces.exe
"""
SHELL = 'set -eu -o pipefail\ndvrec() { "$marvo/scripts/run.sh" "$preset" dvrec "$@"; }\n'


def settings(block):
    """Each key of a block of settings, with its section, and its value; the library must know its own."""
    table = (ROOT / "docs/settings.md").read_text(encoding="utf-8")
    known = set(re.findall(r"^\| (\w+\.\w+) \|", table, re.M))
    section = ""
    for line in filter(None, map(str.strip, block.lines)):
        if line.startswith("["):
            section = line.strip("[]")
            continue
        key, _, value = (part.strip() for part in line.partition("="))
        if section in ("dv", "video") and f"{section}.{key}" not in known:
            block.fail(f"there is no setting {section}.{key}")
        yield f"{section}.{key}", value


class Samples:
    """A run over the pages."""

    def __init__(self, preset):
        self.preset, self.run, self.compiled, self.kept = preset, 0, [], 0
        self.marked, self.elsewhere, self.read = [], 0, []
        self.folder = ROOT / "build" / preset / "scratch" / "samples"
        dropped = "MARVO_TEST_RESULT", "MARVO_CWD"
        self.environment = {**{name: value for name, value in os.environ.items() if name not in dropped},
                            "marvo": str(ROOT), "preset": preset, "MARVO_TIMEOUT": "60"}

    def new_folder(self, name):
        """An empty folder."""
        folder = self.folder / name
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        return folder

    def shell(self, block, command, folder, may_fail=False):
        """What a command prints."""
        if self.preset.startswith("win64"):
            command = command.replace("i686-w64", "x86_64-w64").replace("win32", self.preset)
        # Services of Wine may hold a pipe open for longer than the command takes.
        output = folder / ".output"
        with open(output, "wb") as file:
            done = subprocess.run(["bash", "-c", SHELL + command], cwd=folder, env=self.environment,
                                  check=False, stdin=subprocess.DEVNULL, stdout=file,
                                  stderr=subprocess.STDOUT)
        text = output.read_text(encoding="utf-8", errors="replace").replace("\r\n", "\n")
        output.unlink()
        if done.returncode != 0 and not may_fail:
            block.fail(f"ended with status {done.returncode}: {command.strip()}\n{text[-3000:]}")
        return text

    def console(self, block, folder):
        """Runs the lines behind "> ", and compares what stands below them."""
        parts = re.split(r"^> ", block.text, flags=re.M)
        if parts[0]:
            block.fail("begins with output")
        for part in parts[1:]:
            command, _, expected = part.partition("\n")
            got = self.shell(block, command, folder, may_fail=bool(expected))
            if expected and got != expected:
                block.fail(f"{command}\nprints\n{got}in place of\n{expected}")

    def press(self, keys):
        """Presses keys in the window that opens."""
        def tool(*arguments):
            display = (ROOT / "build" / "wine" / "display").read_text(encoding="utf-8").split()[0]
            return subprocess.run(["xdotool", *arguments], env={**os.environ, "DISPLAY": f":{display}"},
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False).stdout
        for _ in range(300):
            # It has recorded for some seconds.
            if tool("search", "--name", "^match: live, frame ([1-9]|[1-9][0-9])[0-9]"):
                break
            time.sleep(0.1)
        for word in keys.split():
            if word.isdigit():
                time.sleep(int(word))
            else:
                tool("key", word)

    def one(self, block, folder):
        """Runs a block, or keeps it."""
        mentions = block.mentions
        if block.language not in LANGUAGES:
            block.fail(f"no language that is known here: '{block.language}'")
        for name in mentions.get("needs", "").split():
            RECORDINGS[name](folder)
        if "not run" in mentions:
            self.marked.append(f"{block.page}:{block.first}: {mentions['not run']}")
        elif "tested by" in mentions:
            self.elsewhere += 1
        elif "file" in mentions or "more" in mentions:
            with open(folder / mentions.get("file", mentions.get("more")), "w" if "file" in mentions else "a",
                      encoding="utf-8") as file:
                file.write(block.text)
            self.kept += 1
        elif block.language == "sh":
            if "keys" in mentions:
                threading.Thread(target=self.press, args=(mentions["keys"],), daemon=True).start()
            self.shell(block, block.text, folder)
            self.run += 1
        elif block.language == "console":
            self.console(block, folder)
            self.run += 1
        elif block.language in ("cpp", "c"):
            self.compiled.append(block)
        elif block.language == "ini":
            self.read.append(block)
        elif block.language == "json":
            for line in block.lines:
                json.loads(line)
            self.run += 1
        elif block.language != "text":
            block.fail(f"nothing runs {block.language}: say which test does")

    def page(self, page):
        """Runs the blocks of a page, in their order."""
        folder = self.new_folder(pathlib.Path(page).stem)
        blocks = blocks_of(page)
        if page in TESTED_BY:
            self.elsewhere += len([block for block in blocks if block.language == "cpp"])
            blocks = [block for block in blocks if block.language != "cpp"]
        for block in blocks:
            self.one(block, folder)

    def program(self):
        """Compiles the pieces of C++ that are no whole file, and reads the settings, with one program."""
        if not self.compiled and not self.read:
            return
        folder = self.new_folder("pieces")
        source = ['#include "marvo.h"', "#include <cstdio>"]
        for number, block in enumerate(self.compiled):
            if block.language == "c":
                block.fail("a piece of C belongs to a file")
            source += [f"namespace piece{number} {{", f'#line {block.first} "{ROOT / block.page}"',
                       block.text, "}"]
        wanted = [(f"{number}.ini", key, value) for number, block in enumerate(self.read)
                  for key, value in settings(block)]
        for number, block in enumerate(self.read):
            (folder / f"{number}.ini").write_text(block.text, encoding="utf-8")
        keys = [f'{{L"{name}", L"{key}"}}' for name, key, _ in wanted]
        source.append(READER % ", ".join(keys or ['{L"", L""}']))
        (folder / "pieces.cpp").write_text("\n".join(source), encoding="utf-8")
        whole = Block("the pieces of C++ and the settings", 0, "sh", {})
        printed = self.shell(whole, COMPILE, folder)
        for line in wanted:
            if "\t".join(line) not in printed.splitlines():
                whole.fail(f"the library does not read {line}: {printed}")
        self.run += len(self.read)


READER = r"""
int main() {
    const wchar_t* const keys[][2] = {%s};
    for (const auto& [name, key] : keys) {
        vcore::str text;
        vcore::iniFile(name).get(key).toStr(text, false);
        std::printf("%%ls\t%%ls\t%%ls\n", name, key, text.oleStr());
    }
}
"""


def main():
    preset, *pages = sys.argv[1:]
    samples = Samples(preset)
    programs = ["docs/tutorial.md", "docs/tutorial_c.md"]
    documents = sorted(f"docs/{path.name}" for path in (ROOT / "docs").glob("*.md"))
    every = ["README.md", "CONTRIBUTING.md", *documents]
    chosen = pages or [page for page in every if preset.startswith("win32") or page in programs]
    for page in chosen:
        begun = time.monotonic()
        samples.page(page)
        print(f"{time.monotonic() - begun:6.1f} s  {page}", flush=True)
    samples.program()
    summary = (f"{preset}: samples of the documentation: {samples.run} run, "
               f"{len(samples.compiled)} compiled, {samples.kept} kept as files that were built, "
               f"{samples.elsewhere} run by other parts, {len(samples.marked)} marked as not run\n")
    print(summary, *samples.marked, sep="\n")
    if "MARVO_TEST_RESULT" in os.environ and not pages:
        results = pathlib.Path(os.environ["MARVO_TEST_RESULT"])
        results.with_suffix(".txt").write_text(summary, encoding="utf-8")


main()
