"""A sample of faults, seeded one at a time, and what the tests made of each; kept in a file after each."""
import collections
import datetime
import hashlib
import json
import subprocess
import sys
import threading
import time

from seeded import parts
from seeded.faults import ROOT
from seeded.tree import FOLDER, BuildFailed, Tree

NOTICED, SURVIVED, DISCARDED = "noticed", "survived", "does not compile"
# A machine that is busy with other things may take several times as long as the first run did.
_PATIENCE, _LEAST_S, _ALONE_S = 4, 30, 60
_BASELINE_TRIES = 6


class State:
    """The records of a campaign by fault's id, in build/seeded/<name>.json. Written whole after each, so that
    a run can be broken off at any moment."""

    def __init__(self, name):
        self.file = FOLDER / f"{name}.json"
        self.records = {}
        if self.file.exists():
            self.records = {record["id"]: record for record in json.loads(self.file.read_text())["faults"]}

    def add(self, record):
        self.records[record["id"]] = record
        self.save()

    def save(self):
        self.file.parent.mkdir(parents=True, exist_ok=True)
        new = self.file.with_suffix(".new")
        new.write_text(json.dumps({"faults": list(self.records.values())}, indent=1), encoding="utf-8")
        new.replace(self.file)


class Baseline:
    """How long each part takes without a fault, and which of its tests fail even so: these are left out."""

    def __init__(self):
        self.file = FOLDER / "baseline.json"
        self.known = json.loads(self.file.read_text()) if self.file.exists() else {}

    def measure(self, tree, names, stopping, say):
        tree.compile(sorted({target for name in names for target in tree.parts[name].targets(True)}))
        for name in names:
            state = self._digest(name)
            if self.known.get(name, {}).get("state") == state:
                continue
            self.known[name] = {"state": state, **self._run(tree.parts[name], stopping, say)}
            self.file.write_text(json.dumps(self.known, indent=1), encoding="utf-8")
            said = self.known[name]
            left_out = f", without {', '.join(said['without'])}" if said["without"] else ""
            say(f"  {name}: {said['seconds']:.0f} s{left_out}{'' if said['usable'] else ': fails, left out'}")

    @staticmethod
    def _run(part, stopping, say):
        without = []
        for _ in range(_BASELINE_TRIES):
            done = part.run(900, stopping, without=without)
            if done.passed or not done.failed:
                break
            say(f"  {part.name}: {', '.join(done.failed)} {done.how}, once more")
            if not part.is_script and not part.run(_ALONE_S, stopping, only=done.failed).passed:
                without += done.failed
        return {"seconds": done.seconds, "without": without, "usable": done.passed}

    @staticmethod
    def _digest(part):
        """A word for the state of everything that a part is made of."""
        folder = parts.FOLDER_OF.get(part, part.partition(".")[0])
        digest = hashlib.sha1()
        names = subprocess.run(["git", "ls-files", "-coz", "--exclude-standard", "marvo", "tools", "devices",
                                "guard", "cmake", "tests/support", f"tests/{folder}"], cwd=ROOT, check=True,
                               stdout=subprocess.PIPE).stdout.decode()
        for name in sorted(filter(None, names.split("\0"))):
            if (ROOT / name).is_file():
                digest.update(name.encode() + (ROOT / name).read_bytes())
        return digest.hexdigest()

    def usable(self, name):
        return self.known.get(name, {}).get("usable", False)

    def without(self, name):
        return self.known[name]["without"]

    def limit(self, name):
        return _LEAST_S + _PATIENCE * self.known[name]["seconds"]


class Campaign:
    """Takes a sample, with a tree for each of several workers."""

    def __init__(self, catalogue, state, trees):
        self.catalogue, self.state = catalogue, state
        self.stopping = threading.Event()
        self.trees = [Tree(number, self.stopping) for number in range(trees)]
        self.baseline = Baseline()
        self._lock = threading.Lock()
        self._began = time.monotonic()
        self._planned = self._done = 0

    def say(self, text):
        minutes = (time.monotonic() - self._began) / 60
        with self._lock:
            print(f"[{minutes:5.1f} min] {text}", file=sys.stderr, flush=True)

    def run(self, room_faults):
        """`room_faults`: for each room how many faults are wanted, and an iterator of those to try."""
        rooms = [room for room, (wanted, _) in room_faults.items() if wanted > 0]
        if not rooms:
            return
        self._planned = sum(wanted for wanted, _ in room_faults.values())
        self._prepare(rooms)
        supply = _Supply(room_faults, self._lock)
        threads = [threading.Thread(target=self._work, args=(tree, supply)) for tree in self.trees]
        for thread in threads:
            thread.start()
        for thread in threads:
            while thread.is_alive():
                thread.join(0.2)

    def _prepare(self, rooms):
        for tree in self.trees:
            self.say(f"copying and configuring {tree.folder.relative_to(ROOT)}")
            tree.prepare()
        names = list(dict.fromkeys(name for room in rooms for name in parts.SEEN_BY[room]))
        names.append(parts.THREAD_SAFETY)
        missing = [name for name in names if name not in self.trees[0].parts]
        if missing:
            raise SystemExit(f"parts.py names parts that the tests do not have: {', '.join(missing)}")
        self.say("building, and running the tests without a fault")
        self.baseline.measure(self.trees[0], names, self.stopping, self.say)
        for tree in self.trees[1:]:
            tree.compile(sorted({target for name in names for target in tree.parts[name].targets(True)}))

    def _work(self, tree, supply):
        try:
            while not self.stopping.is_set():
                fault = supply.take()
                if not fault:
                    return
                record = self._examine(tree, fault)
                supply.settle(fault, record["result"] != DISCARDED)
                with self._lock:
                    self.state.add(record)
                    self._done += record["result"] != DISCARDED
                self.say(f"{self._done} of {self._planned}  {fault.id} {fault.file}:{fault.line} "
                         f"{fault.operator}: {record['result']}" + f" by {record['by']}" * bool(record["by"]))
        except KeyboardInterrupt:
            pass
        except Exception:
            self.stopping.set()
            raise
        finally:
            tree.mend()
            tree.clear_away()

    def _examine(self, tree, fault):
        began = time.monotonic()
        record = {"id": fault.id, "room": fault.room, "file": fault.file, "line": fault.line,
                  "function": fault.function, "operator": fault.operator, "name": fault.name,
                  "diff": fault.diff, "result": SURVIVED, "by": "", "how": "",
                  "when": datetime.datetime.now().isoformat("T", "seconds")}
        tree.seed(fault)
        try:
            for name in parts.parts_for(fault):
                if not self.baseline.usable(name):
                    continue
                found = self._ask(tree, fault, tree.parts[name])
                if found:
                    record.update(result=NOTICED, by=" ".join([name, *found.failed[:3]]), how=found.how)
                    break
        except BuildFailed as failure:
            record.update(result=DISCARDED, how=str(failure)[-600:])
        finally:
            tree.mend()
        record["seconds"] = round(time.monotonic() - began, 1)
        return record

    def _ask(self, tree, fault, part):
        """Runs a part; its Outcome when it notices the fault. As in a run of all tests, what fails but passes
        alone or in a second run has passed: the machine may have been the reason."""
        tree.compile(part.targets(header=any(path.endswith(".h") for path, _, _ in fault.files())))
        source = fault.file if fault.file.endswith(".cpp") else f"/{fault.room}/"
        options = {"stopping": self.stopping, "without": self.baseline.without(part.name), "source": source}
        limit = self.baseline.limit(part.name)
        first = part.run(limit, **options)
        if first.passed:
            return None
        if first.how != "failed":
            tree.clear_away()
        if first.failed:
            if not part.run(_ALONE_S, only=first.failed, **options).passed:
                return first
        again = part.run(limit, **options)
        return None if again.passed else again


class _Supply:
    """Hands out each room's faults until so many have compiled, the rooms in turn."""

    def __init__(self, room_faults, lock):
        self._open = {room: wanted for room, (wanted, _) in room_faults.items()}
        self._wanted = dict(self._open)
        self._faults = {room: faults for room, (_, faults) in room_faults.items()}
        self._in_work = collections.Counter()
        self._lock = lock

    def take(self):
        """The next fault; None when nothing is left but what others have in work. Whoever has a fault in work
        that does not compile takes its replacement himself."""
        with self._lock:
            while True:
                rooms = [room for room in self._open if self._open[room] > self._in_work[room]]
                if not rooms:
                    return None
                room = max(rooms, key=self._share_left)
                fault = next(self._faults[room], None)
                if fault:
                    self._in_work[room] += 1
                    return fault
                self._open[room] = 0

    def _share_left(self, room):
        return (self._open[room] - self._in_work[room]) / self._wanted[room]

    def settle(self, fault, counts):
        with self._lock:
            self._in_work[fault.room] -= 1
            self._open[fault.room] -= counts
