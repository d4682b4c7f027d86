"""Makes the packages of finished builds: `make_packages.py [--site DIR] OUT BUILD...`, where BUILD is a
build's folder that is named after its preset (build/win32), and DIR has the documentation as web pages.
./package.sh calls it.

Everything that goes into a package gets the time SOURCE_DATE_EPOCH of the environment, so that the same
builds give the same packages, byte for byte."""
import argparse
import json
import os
import pathlib
import shutil
import stat
import subprocess
import tempfile
import time
import zipfile

import contents

ROOT = pathlib.Path(__file__).resolve().parents[1]
# What the installer takes of each width.
INSTALLED = "marvo-replay.exe", "dvrec.exe", "marvo.dll"
DOCUMENTATION = "share/doc/marvo"


def call(*words, **options):
    """Runs a command; its words are shown only when it fails."""
    done = subprocess.run(list(map(str, words)), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors="replace", check=False, **options)
    if done.returncode != 0:
        raise SystemExit(f"{done.stdout}make_packages.py: {words[0]} failed (its words are above).")


def files(folder):
    return sorted(path for path in folder.rglob("*") if path.is_file())


def set_times(folder, epoch):
    for path in [folder, *folder.rglob("*")]:
        os.utime(path, (epoch, epoch))


def zip_folder(archive, folder, epoch, chosen, level=9):
    """Packs the chosen files of a folder, under the folder's name."""
    moment = time.gmtime(epoch)[:6]
    with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED, compresslevel=level) as packed:
        for path in chosen:
            entry = zipfile.ZipInfo(str(path.relative_to(folder.parent)), moment)
            entry.compress_type = zipfile.ZIP_DEFLATED
            mode = 0o755 if path.suffix in (".exe", ".dll") else 0o644
            entry.external_attr = (stat.S_IFREG | mode) << 16
            packed.writestr(entry, path.read_bytes())


def read_cache(build, name):
    """An entry of a build's cache."""
    try:
        lines = (build / "CMakeCache.txt").read_text(encoding="utf-8").splitlines()
    except OSError as error:
        raise SystemExit(f"make_packages.py: {build} is no build: {error.strerror}") from error
    for line in lines:
        if line.startswith(name + ":"):
            return line.partition("=")[2]
    raise SystemExit(f"make_packages.py: {build} has no {name}; configure it again.")


def split_symbols(program, triplet):
    """Moves a program's debug information into a file of its own beside it, to which it then refers."""
    symbols = program.with_name(program.name + ".debug")
    call(f"{triplet}-objcopy", "--only-keep-debug", program, symbols)
    call(f"{triplet}-strip", program)
    call(f"{triplet}-objcopy", f"--add-gnu-debuglink={symbols.name}", program, cwd=program.parent)


class Package:
    """What one target's build has to give, in a folder as it will be unpacked."""

    def __init__(self, build, parent, version, site):
        self.target = build.name.partition("-")[0]
        self.folder = parent / f"marvo-{version}-{build.name}"
        call("cmake", "--install", build, "--prefix", self.folder)
        if site:
            shutil.copytree(site, self.folder / DOCUMENTATION / "html")
        self.linked = {}
        for program in sorted((self.folder / "bin").iterdir()):
            self.linked[program.name] = contents.linked_into(program, self.target)
            split_symbols(program, contents.TRIPLETS[self.target])

    def programs(self, prefix, names=None):
        """For the bill of materials."""
        return {prefix + name: (self.folder / "bin" / name, linked) for name, linked in self.linked.items()
                if names is None or name in names}

    def add_texts(self, bill):
        folder = self.folder / DOCUMENTATION
        write_bill(folder / "marvo.cdx.json", bill)
        copy_licences(folder, [library for linked in self.linked.values() for library in linked])


def copy_licences(folder, libraries):
    """The licences of foreign code that is inside."""
    for library in libraries:
        for name, source in library.texts.items():
            (folder / "licences").mkdir(exist_ok=True)
            shutil.copyfile(source, folder / "licences" / name)


def write_bill(path, bill):
    path.write_text(json.dumps(bill, indent=1) + "\n", encoding="utf-8")


def write_list(path, folder):
    """The macros by which the installer puts down and removes every file."""
    lines = []
    for part in sorted(child for child in folder.iterdir() if child.is_dir()):
        if part.name != "doc":
            lines.append(f"!define HAS_{part.name.upper()}")
        lines.append(f"!macro Install_{part.name}")
        folders = sorted({path.parent for path in files(part)})
        for place in folders:
            lines.append(f'SetOutPath "{windows_place(place, folder)}"')
            lines += [f'File "{path}"' for path in files(place) if path.parent == place]
        lines += ["!macroend", f"!macro Remove_{part.name}"]
        lines += [f'Delete "{windows_place(path, folder)}"' for path in files(part)]
        # The innermost first.
        all_folders = sorted({part, *(path for path in part.rglob("*") if path.is_dir())}, reverse=True)
        lines += [f'RMDir "{windows_place(place, folder)}"' for place in all_folders]
        lines.append("!macroend")
    path.write_text("\n".join(lines) + "\n", encoding="utf-8")


def windows_place(path, folder):
    return "\\".join(["$INSTDIR", *path.relative_to(folder).parts])


def make_installer(out, packages, version, epoch, work):
    """One for all widths; without 32-bit programs it is a 64-bit program itself."""
    tree = work / "installer"
    linked, programs = [contents.INSTALLER], {}
    for package in packages:
        (tree / package.target).mkdir(parents=True)
        for name in INSTALLED:
            shutil.copyfile(package.folder / "bin" / name, tree / package.target / name)
        shutil.copytree(package.folder / DOCUMENTATION, tree / "doc", dirs_exist_ok=True)
        programs |= package.programs(package.target + "/", INSTALLED)
    copy_licences(tree / "doc", linked)
    bill = contents.bill_of_materials(version, epoch, programs, linked)
    write_bill(tree / "doc" / "marvo.cdx.json", bill)
    set_times(tree, epoch)
    write_list(work / "files.nsh", tree)
    suffix = "" if len(packages) > 1 else "-" + packages[0].target
    installer = out / f"marvo-{version}{suffix}-setup.exe"
    call("makensis", "-V2", "-WX", "-INPUTCHARSET", "UTF8", f"-DVERSION={version}", f"-DOUT={installer}",
         f"-DLIST={work / 'files.nsh'}", f"-DSOURCES={ROOT}", ROOT / "packaging/installer.nsi")


def main():
    os.umask(0o022)
    epoch = int(os.environ["SOURCE_DATE_EPOCH"])
    words = argparse.ArgumentParser(description="Makes the packages of finished builds.")
    words.add_argument("--site", help="folder of the documentation as web pages")
    words.add_argument("out", type=pathlib.Path)
    words.add_argument("builds", type=pathlib.Path, nargs="+")
    options = words.parse_args()
    out, builds = options.out.resolve(), [build.resolve() for build in options.builds]
    versions = {read_cache(build, "CMAKE_PROJECT_VERSION") for build in builds}
    if len(versions) != 1:
        raise SystemExit(f"make_packages.py: the builds are of several versions: {sorted(versions)}")
    version = versions.pop()
    shutil.rmtree(out, ignore_errors=True)
    out.mkdir(parents=True)
    with tempfile.TemporaryDirectory(dir=out.parent) as name:
        work = pathlib.Path(name)
        packages = [Package(build, work, version, options.site) for build in builds]
        programs = {}
        for package in packages:
            package.add_texts(contents.bill_of_materials(version, epoch, package.programs("bin/")))
            programs |= package.programs(package.target + "/bin/")
            set_times(package.folder, epoch)
            symbols = [path for path in files(package.folder) if path.suffix == ".debug"]
            zip_folder(out / f"{package.folder.name}.zip", package.folder, epoch,
                       [path for path in files(package.folder) if path not in symbols])
            zip_folder(out / f"{package.folder.name}-symbols.zip", package.folder, epoch, symbols,
                       level=3)
        make_installer(out, packages, version, epoch, work)
        bill = contents.bill_of_materials(version, epoch, programs, [contents.INSTALLER])
        write_bill(out / f"marvo-{version}.cdx.json", bill)
    sums = [f"{contents.sha256(path)}  {path.name}\n" for path in files(out)]
    (out / "SHA256SUMS").write_text("".join(sums), encoding="utf-8")


if __name__ == "__main__":
    main()
