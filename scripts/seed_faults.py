#!/usr/bin/env python3
"""Seeds faults into the sources, one at a time, and sees whether the tests notice.

  seed_faults.py --sample 60            a sample of 60 faults over all rooms, about an hour on two cores
  seed_faults.py --rooms replay:2,avi   from these rooms alone, twice as many from the first
  seed_faults.py --operators "by hand"  only faults of some kinds
  seed_faults.py --fault 1a2b3c4d       this fault, whatever came of it before
  seed_faults.py --again                what has survived, once more, after tests were added
  seed_faults.py --report               nothing new; the tables and the survivors so far
  seed_faults.py --list                 every fault that could be seeded
  seed_faults.py --check                whether the faults written by hand still apply

A fault is a change of one place by an operator (scripts/seeded/operators.py), or one written by hand
(scripts/seeded/patches/*.toml). It is noticed when a part of the tests that can see it
(scripts/seeded/parts.py) fails, crashes or hangs, and does so again; one that does not compile does not count
and is replaced. All work is done in copies of the repository, build/seeded/tree-<n>, one for each of the
--trees workers.

The same --seed takes the same sample. Every result is kept at once in build/seeded/<seed>.json: after Ctrl+C
the same command goes on where it was, and a greater --sample adds to what is there. Survivors that nobody
could observe go into scripts/seeded/equivalent.toml with the reason; they do not count.
"""
import argparse
import itertools
import os
import pathlib
import signal
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

from seeded.campaign import DISCARDED, SURVIVED, Campaign, State  # noqa: E402
from seeded.faults import BY_HAND, Catalogue  # noqa: E402
from seeded.operators import OPERATORS  # noqa: E402
from seeded.parts import SEEN_BY  # noqa: E402
from seeded.report import report  # noqa: E402


def read_options():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    add = parser.add_argument
    add("--sample", type=int, default=60, metavar="N", help="faults in all (60)")
    add("--seed", default="1", help="names the sample (1)")
    add("--rooms", default="", metavar="ROOM[:SHARE],...", help="from these rooms (all)")
    add("--operators", default="", metavar="NAME,...", help=f"only these: {', '.join([*OPERATORS, BY_HAND])}")
    add("--fault", action="append", default=[], metavar="ID", help="this fault; may be given several times")
    add("--again", action="store_true", help="what has survived, once more")
    add("--trees", type=int, default=2, metavar="N", help="faults in work at the same time (2)")
    for name in ("report", "list", "check"):
        add(f"--{name}", action="store_true", help="see above")
    options = parser.parse_args()
    options.operators = [name.strip() for name in options.operators.split(",") if name]
    unknown = set(options.operators) - {*OPERATORS, BY_HAND}
    shares = dict(word.partition(":")[::2] for word in options.rooms.split(",") if word)
    shares = shares or dict.fromkeys(SEEN_BY, "")
    unknown |= set(shares) - set(SEEN_BY)
    if unknown:
        parser.error(f"there is no {', '.join(sorted(unknown))}; rooms: {', '.join(SEEN_BY)}")
    options.shares = {room: float(share or 1) for room, share in shares.items()}
    return options


def quotas(shares, sample):
    """How many faults of the sample each room gets; what is left over goes to the greatest remainders."""
    exact = {room: sample * share / sum(shares.values()) for room, share in shares.items()}
    counts = {room: int(count) for room, count in exact.items()}
    for room in sorted(exact, key=lambda room: counts[room] - exact[room])[:sample - sum(counts.values())]:
        counts[room] += 1
    return counts


def wanted_faults(options, catalogue, state):
    """For each room how many faults are to be seeded, and those to try."""
    named = options.fault or [id for id, record in state.records.items() if options.again
                              and record["result"] == SURVIVED and id not in catalogue.equivalent]
    if named or options.again:
        faults = {fault.id: fault for fault in catalogue.faults}
        gone = [id for id in named if id not in faults]
        if gone:
            print(f"seed_faults.py: the sources offer no fault {', '.join(gone)} any more", file=sys.stderr)
        named = [faults[id] for id in named if id in faults]
        named = [fault for fault in named if options.fault or fault.room in options.shares]
        by_room = {room: [fault for fault in named if fault.room == room] for room in options.shares}
        return {room: (len(faults), iter(faults)) for room, faults in by_room.items()}
    wanted = {}
    for room, quota in quotas(options.shares, options.sample).items():
        # What the same seed has taken before counts, but for what did not compile.
        faults = (fault for fault in catalogue.sample(room, options.seed, options.operators)
                  if state.records.get(fault.id, {}).get("result") != DISCARDED)
        todo = [fault for fault in itertools.islice(faults, quota) if fault.id not in state.records]
        wanted[room] = (len(todo), itertools.chain(todo, faults))
    return wanted


def check(catalogue):
    """Faults written by hand that do not apply any more, and entries of equivalent changes that are none."""
    print(*catalogue.problems, sep="\n", end="\n" if catalogue.problems else "")
    by_room = {room: sum(fault.room == room for fault in catalogue.faults) for room in SEEN_BY}
    strange = sorted({fault.room for fault in catalogue.faults} - set(SEEN_BY))
    if strange:
        print(f"scripts/seeded/parts.py does not say which parts see {', '.join(strange)}")
    print(f"{len(catalogue.by_hand)} faults written by hand; by operators:",
          ", ".join(f"{room} {count}" for room, count in by_room.items()))
    return not catalogue.problems and not strange and all(by_room.values()) and bool(catalogue.by_hand)


def main():
    options = read_options()
    catalogue = Catalogue()
    if options.check:
        return 0 if check(catalogue) else 1
    if options.list:
        for fault in catalogue.faults:
            place = f"{fault.file}:{fault.line} {fault.function}"
            print(f"{fault.id} {place} ({fault.operator}) {fault.name}".rstrip())
        return 0
    if catalogue.problems:
        print(*catalogue.problems, sep="\n", file=sys.stderr)
    state = State(options.seed)
    if not options.report:
        campaign = Campaign(catalogue, state, options.trees)
        # The programs are in groups of their own and hear nothing of Ctrl+C; the campaign ends them.
        signal.signal(signal.SIGINT, lambda *_: campaign.stopping.set())
        signal.signal(signal.SIGTERM, lambda *_: campaign.stopping.set())
        campaign.run(wanted_faults(options, catalogue, state))
    print(report(list(state.records.values()), catalogue.equivalent))
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        print("seed_faults.py: broken off; the same command goes on", file=sys.stderr)
        sys.exit(130)
    except BrokenPipeError:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
