"""Turns the measurements, one JSON file a round, into the tables of ratios and of growth, in Markdown, and a chart.

table.py FOLDER CHART NAMESPACE...
"""
import json
import pathlib
import sys
from statistics import median

from chart import draw

# What is measured, against whom, and the maximum that our time may be of theirs.
COLLECTING = {
    "veth": {"collect/libmnl": 1.0, "collect/libnl": 1.0, "collect/getifaddrs": 1.0, "print/libxml2": 1.0, "print/glib": 1.0},
    "ifb": {"collect/libmnl": None, "collect/libnl": None, "collect/getifaddrs": None, "print/libxml2": None,
            "print/glib": None},
}
LIMIT = {"veth": {10: 1.15, 100: 1.08, 1000: 1.05, 4000: 1.05}, "ifb": {10: 1.15, 100: 1.1, 1000: 1.1}}
LINKED = {"veth": "with IFLA_LINK", "ifb": "without IFLA_LINK"}
FAMILIES = {
    "scan": {"20": "walk 20 lines", "35000": "walk 1 MB of lines"},
    "send": {"100": "send a message of 100 bytes", "1500": "send a message of 1500 bytes"},
    "drain": {"1": "send and drain 1 message", "10": "send and drain 10 messages"},
    "translate": {"1": "translate by the first of 2,000 entries", "1000": "translate by the 1,000th",
                  "2000": "translate by the last"},
    "load": {"0": "search an empty store", "35": "load 35 records"},
    "save": {"35": "save 35 records"},
}
GOALS = {"scan/limit/20": 1.1, "scan/limit/35000": 1.7, "send/limit/100": 1.65, "send/select/100": 1.05,
         "translate/limit/1": 1.1, "translate/limit/1000": 1.1, "translate/limit/2000": 1.1,
         "load/limit/0": 3.0, "load/limit/35": 2.8, "save/mmap/35": 1.5}


def rounds_of(folder, name):
    """For each benchmark what every round measured."""
    runs = {}
    for path in sorted(folder.glob(f"{name}.*.json")):
        for run in json.loads(path.read_text())["benchmarks"]:
            runs.setdefault(run["name"], []).append(run)
    return runs


def row(*cells):
    print("| " + " | ".join(str(cell) for cell in cells) + " |")


def ratio(ours, theirs):
    return median(mine["cpu_time"] / other["cpu_time"] for mine, other in zip(ours, theirs, strict=True))


def ratios_of_collecting(measured):
    """Rows of what, against whom, ratio and goal."""
    for (kind, count), runs in measured:
        for peer, goal in {"collect/limit": LIMIT[kind][count], **COLLECTING[kind]}.items():
            what, who = peer.split("/")
            yield (f"{what} {count} interfaces {LINKED[kind]}", who, ratio(runs[f"{what}/devfacts"], runs[peer]), goal)


def ratios_of_families(runs):
    for name, theirs in runs.items():
        family, who, *case = name.split("/")
        if who != "devfacts":
            ours = runs["/".join([family, "devfacts", *case])]
            yield (FAMILIES[family]["/".join(case)], who, ratio(ours, theirs), GOALS.get(name))


def print_ratios(ratios):
    row("what", "against", "ours / theirs", "goal")
    row(*["---"] * 4)
    for what, who, value, goal in ratios:
        over = " (over)" if goal is not None and round(value, 2) > goal else ""
        row(what, who, f"{value:.2f}{over}", "" if goal is None else goal)


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
    ratios = [*ratios_of_collecting(measured), *ratios_of_families(rounds_of(folder, "families"))]
    print("Our CPU time as a part of theirs, the median of all rounds:\n")
    print_ratios(ratios)
    print("\nWhat one interface costs us as their number grows:\n")
    print_growth(measured)
    pathlib.Path(chart).write_text(draw(ratios))


main(pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3:])
