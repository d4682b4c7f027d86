"""What is inside of the packages: foreign code, found by its symbols in the programs, with its version, its
licence and the text that has to accompany it; written down as CycloneDX."""
import datetime
import hashlib
import pathlib
import subprocess
import uuid

TRIPLETS = {"win32": "i686-w64-mingw32", "win64": "x86_64-w64-mingw32"}


class Library:
    """Foreign code that is linked into programs, or is part of the installer."""

    def __init__(self, name, package, licence, symbols, texts=()):
        self.name, self.package, self.licence, self.symbols = name, package, licence, symbols
        # File in the packages -> file of the system.
        self.texts = dict(texts) or {f"{name}.txt": f"/usr/share/doc/{package}/copyright"}

    def version(self):
        """The package's version, with what Debian adds to it."""
        done = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", self.package], capture_output=True,
                              text=True, check=False)
        if done.returncode != 0:
            raise SystemExit(f"make_packages.py: the package {self.package} is not installed; "
                             "run scripts/setup.sh")
        return done.stdout


def libraries(target):
    """What programs for a target may contain. The symbols are parts of mangled names."""
    gcc = {"gcc.txt": "/usr/share/doc/gcc-mingw-w64-base/copyright",
           "GPL-3.txt": "/usr/share/common-licenses/GPL-3"}
    exception = "GPL-3.0-or-later WITH GCC-exception-3.1"
    mingw = {"mingw-w64.txt": "/usr/share/doc/mingw-w64-common/copyright"}
    processor = TRIPLETS[target].partition("-")[0].replace("_", "-")
    mingw_w64 = f"mingw-w64-{processor}"
    return [
        Library("libgcc", f"gcc-{mingw_w64}-posix", exception, ["_Unwind_Resume", "divdi3"], gcc),
        Library("libstdc++", f"g++-{mingw_w64}-posix", exception, ["__cxa_", "_ZNSt"], gcc),
        Library("winpthreads", f"{mingw_w64}-dev", "MIT AND BSD-3-Clause", ["pthread_mutex_"], mingw),
        Library("mingw-w64", f"{mingw_w64}-dev", "ZPL-2.1", ["__mingw_", "CRTStartup"], mingw),
        Library("nlohmann-json", "nlohmann-json3-dev", "MIT", ["8nlohmann"]),
        Library("CLI11", "libcli11-dev", "BSD-3-Clause", ["N3CLI"]),
    ]


INSTALLER = Library("nsis", "nsis", "Zlib", [])


def linked_into(program, target):
    """The libraries in a program that still has its symbols."""
    names = subprocess.run([f"{TRIPLETS[target]}-nm", program], capture_output=True, text=True,
                           check=True).stdout
    return [library for library in libraries(target)
            if any(symbol in names for symbol in library.symbols)]


def sha256(path):
    return hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest()


def bill_of_materials(version, epoch, programs, others=()):
    """A CycloneDX document. `programs` maps the place of a program in the package to its file and the
    libraries in it; `others` are libraries that belong to the whole."""
    components, dependencies = {}, {"marvo": sorted(programs) + [entry.name for entry in others]}

    def add_library(library):
        full = library.version()
        reference = f"{library.name}@{full}" if library not in others else library.name
        package = f"pkg:deb/debian/{library.package}@{full}"
        components[reference] = {
            "type": "library", "bom-ref": reference, "name": library.name,
            "version": full.partition("-")[0].partition("+")[0],
            "licenses": [{"expression": library.licence}], "purl": package.replace("+", "%2B")}
        return reference
    for library in others:
        add_library(library)
    for place in sorted(programs):
        file, linked = programs[place]
        components[place] = {"type": "file", "bom-ref": place, "name": place,
                             "hashes": [{"alg": "SHA-256", "content": sha256(file)}],
                             "licenses": [{"license": {"id": "MIT"}}]}
        dependencies[place] = sorted({add_library(library) for library in linked})
    moment = datetime.datetime.fromtimestamp(epoch, datetime.timezone.utc)
    identity = "\n".join(f"{name} {entry.get('hashes', '')}" for name, entry in components.items())
    return {
        "bomFormat": "CycloneDX", "specVersion": "1.5",
        "serialNumber": f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_OID, identity)}", "version": 1,
        "metadata": {
            "timestamp": moment.strftime("%Y-%m-%dT%H:%M:%SZ"),
            "component": {"type": "library", "bom-ref": "marvo", "name": "marvo", "version": version,
                          "licenses": [{"license": {"id": "MIT"}}]}},
        "components": list(components.values()),
        "dependencies": [{"ref": name, "dependsOn": on} for name, on in sorted(dependencies.items())],
    }
