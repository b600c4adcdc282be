"""Turns the measurements, one JSON file a round, into the tables of ratios and of growth, in Markdown, and a chart.

table.py FOLDER CHART NAMESPACE...
"""
import json
import pathlib
import sys
from statistics import median

from chart import draw

# The maximum that our time may be, as a multiple of the limit's.
COLLECTING_GOALS = {"veth": {10: 1.15, 100: 1.08, 1000: 1.05, 4000: 1.05}, "ifb": {10: 1.15, 100: 1.1, 1000: 1.1}}
LINKED = {"veth": "with IFLA_LINK", "ifb": "without IFLA_LINK"}

# For each case of a family what it is, and the goal or None. The limit is "limit", or the contender that LIMITS names.
FAMILIES = {
    "escape_into": {"32/0": ("escape 32 plain bytes into a buffer", None),
                    "32/5": ("escape 32 bytes, 5 % entities, into a buffer", None),
                    "32/100": ("escape 32 entities into a buffer", None),
                    "65536/0": ("escape 64 KiB of plain bytes into a buffer", None),
                    "65536/5": ("escape 64 KiB, 5 % entities, into a buffer", None),
                    "65536/100": ("escape 64 KiB of entities into a buffer", None)},
    "escape": {"32/0": ("escape 32 plain bytes", None), "32/5": ("escape 32 bytes, 5 % entities", None),
               "32/100": ("escape 32 entities", None), "65536/0": ("escape 64 KiB of plain bytes", None),
               "65536/5": ("escape 64 KiB, 5 % entities", None), "65536/100": ("escape 64 KiB of entities", None)},
    "item": {"number": ("print an item of a number", None), "text": ("print an item of 16 bytes", None),
             "escaped": ("print an item, escaped", None)},
    "scan": {"20": ("walk 20 lines", 1.1), "35000": ("walk 1 MB of lines", 1.7)},
    "send": {"100": ("send a message of 100 bytes", 1.65), "1500": ("send a message of 1500 bytes", None)},
    "drain": {"1": ("send and drain 1 message", None), "10": ("send and drain 10 messages", None)},
    "translate": {"20/20": ("translate by the last of 20 entries", 1.1),
                  "2000/1": ("translate by the first of 2,000", 1.1), "2000/2000": ("translate by the last of 2,000", 1.1)},
    "load": {"0": ("search an empty store", 3.0), "35": ("load 35 records", 2.8)},
    "save": {"35": ("save 35 records", 1.5)},
}
LIMITS = {"escape": "escape_into/limit", "save": "save/mmap"}
CHARTED = ("collect 10 interfaces without", "collect 1000 interfaces without", "collect 10 interfaces with ",
           "collect 1000 interfaces with ", "print 1000 interfaces without", "escape 32 bytes, 5 % entities", "escape 64 KiB of plain bytes",
           "escape 64 KiB, 5 % entities", "escape 64 KiB of entities", "print an item", "walk", "translate by the last",
           "load", "save", "send a message of 100")


def rounds_of(folder, name):
    """For each benchmark what every round measured."""
    runs = {}
    for path in sorted(folder.glob(f"{name}.*.json")):
        for run in json.loads(path.read_text())["benchmarks"]:
            runs.setdefault(run["name"], []).append(run)
    return runs


def row(*cells):
    print("| " + " | ".join(str(cell) for cell in cells) + " |")


def ratio(times, limit):
    return median(mine["cpu_time"] / least["cpu_time"] for mine, least in zip(times, limit, strict=True))


def multiples(runs, family, case, limit):
    """Each contender's time as a multiple of the limit's."""
    ends = f"/{case}" if case else ""
    names = {name.split("/")[1]: name for name in runs if name.startswith(f"{family}/") and name.endswith(ends)
             and len(name.split("/")) == 2 + len(case.split("/") if case else [])}
    return {who: ratio(runs[name], runs[limit + ends]) for who, name in names.items() if name != limit + ends}


def works_of_collecting(measured):
    """Rows of what, the multiples and the goal."""
    for (kind, count), runs in measured:
        where = f"{count} interfaces {LINKED[kind]}"
        yield f"collect {where}", multiples(runs, "collect", "", "collect/limit"), COLLECTING_GOALS[kind][count]
        yield f"print {where}", multiples(runs, "print", "", "print/limit"), None


def works_of_families(runs):
    for family, cases in FAMILIES.items():
        for case, (what, goal) in cases.items():
            yield what, multiples(runs, family, case, LIMITS.get(family, f"{family}/limit")), goal


def print_works(works):
    row("work", "devfacts", "goal", "others")
    row(*["---"] * 4)
    for what, values, goal in works:
        over = " (over)" if goal is not None and round(values["devfacts"], 2) > goal else ""
        others = ", ".join(f"{who} {value:.2f}" for who, value in values.items() if who != "devfacts")
        row(what, f"{values['devfacts']:.2f}{over}", "" if goal is None else goal, others)


def times_each(runs):
    """Nanoseconds an interface: collecting, what of it is beyond the limit of the same round, and printing."""
    collect, limit, printing = (
        [run["cpu_time"] / run["interfaces"] for run in runs[name]]
        for name in ("collect/devfacts", "collect/limit", "print/devfacts"))
    beyond = [ours - least for ours, least in zip(collect, limit, strict=True)]
    return [round(median(times)) for times in (collect, beyond, printing)]


def print_growth(measured):
    row("interfaces", "", "collect, ns", "beyond the limit, ns", "print, ns", "allocations", "bytes",
        "system calls in all", "those of the limit")
    row(*["---"] * 9)
    for (kind, count), runs in measured:
        ours, limit = runs["collect/devfacts"][0], runs["collect/limit"][0]
        each = ours["interfaces"]
        row(count, LINKED[kind], *times_each(runs), f"{ours['allocations'] / each:.2f}", round(ours["bytes"] / each),
            round(ours["system_calls"]), round(limit["system_calls"]))


def main(folder, chart, namespaces):
    measured = []
    for namespace in namespaces:
        kind, count = namespace.split("-")
        measured.append(((kind, int(count)), rounds_of(folder, namespace)))
    works = [*works_of_collecting(measured), *works_of_families(rounds_of(folder, "families"))]
    print("CPU time as a multiple of the limit's, the median of all rounds:\n")
    print_works(works)
    print("\nWhat one interface costs us as their number grows:\n")
    print_growth(measured)
    charted = [(what, values) for what, values, _ in works if what.startswith(CHARTED) and not what.endswith("a buffer")]
    pathlib.Path(chart).write_text(draw(charted, "CPU time, as a multiple of the limit's"))


main(pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3:])
