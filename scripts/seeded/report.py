"""What a campaign found, per room and per operator, and what survived."""
import collections

from seeded.campaign import DISCARDED, NOTICED, SURVIVED


def table(records, key, equivalent):
    """Lines of a table: of each value of a record's `key`, how many were seeded and what came of them."""
    counts = collections.defaultdict(collections.Counter)
    for record in records:
        survived = record["result"] == SURVIVED
        what = "equivalent" if survived and record["id"] in equivalent else record["result"]
        for name in (record[key], "all"):
            counts[name][what] += 1
    width = max(map(len, [key, *counts]))
    yield f"{key:{width}}  seeded  noticed  survived  share   equivalent  not compiling"
    for name in [*sorted(set(counts) - {"all"}), *(["all"] if counts else [])]:
        count = counts[name]
        noticed, survived = count[NOTICED], count[SURVIVED]
        share = f"{100 * noticed / (noticed + survived):4.0f} %" if noticed + survived else "     -"
        yield (f"{name:{width}}  {noticed + survived:6}  {noticed:7}  {survived:8} {share}  "
               f"{count['equivalent']:10}  {count[DISCARDED]:13}")


def report(records, equivalent):
    """The whole report as text. The share leaves out what is known to be equivalent."""
    lines = [*table(records, "room", equivalent), "", *table(records, "operator", equivalent)]
    survivors = sorted((record for record in records if record["result"] == SURVIVED),
                       key=lambda record: (record["id"] in equivalent, record["file"], record["line"]))
    for record in survivors:
        reason = equivalent.get(record["id"])
        lines += ["", f"{'equivalent' if reason else 'survived'}: {record['id']}",
                  f"  {record['file']}:{record['line']} {record['function']}",
                  f"  {record['operator']} {record['name']}"]
        lines += [f"    {line}" for line in record["diff"].split("\n")]
        lines += [f"    reason: {reason}"] if reason else []
    seconds = sum(record["seconds"] for record in records)
    compiled = sum(record["result"] != DISCARDED for record in records)
    if compiled:
        lines += ["", f"{seconds / 60:.0f} minutes of work for {compiled} faults"]
    return "\n".join(lines)
