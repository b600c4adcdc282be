"""Turns the measurements, one JSON file a round, into the tables of ratios and of growth, in Markdown."""
import json
import pathlib
import sys
from statistics import median

# The most that our time may be of theirs.
GOALS = {
    "veth": {"collect/limit": 1.15, "collect/libmnl": 1.0, "collect/libnl": 1.0, "collect/getifaddrs": 1.0,
             "print/libxml2": 1.0, "print/glib": 1.0},
    "ifb": {"collect/limit": 1.2},
}
LINKED = {"veth": "with IFLA_LINK", "ifb": "without"}


def rounds_of(folder, namespace):
    """For each benchmark what every round measured."""
    runs = {}
    for path in sorted(folder.glob(f"{namespace}.*.json")):
        for run in json.loads(path.read_text())["benchmarks"]:
            runs.setdefault(run["name"], []).append(run)
    return runs


def row(*cells):
    print("| " + " | ".join(str(cell) for cell in cells) + " |")


def ratio(runs, peer, goal):
    ours, theirs = runs[peer.split("/")[0] + "/devfacts"], runs[peer]
    value = median(mine["cpu_time"] / other["cpu_time"] for mine, other in zip(ours, theirs, strict=True))
    return f"{value:.2f}" + (" (over)" if value > goal else "")


def print_ratios(measured):
    peers = list(GOALS["veth"])
    row("interfaces", "", *peers)
    row(*["---"] * (2 + len(peers)))
    row("goal", LINKED["veth"], *GOALS["veth"].values())
    row("goal", LINKED["ifb"], *[GOALS["ifb"].get(peer, "") for peer in peers])
    for (kind, count), runs in measured:
        row(count, LINKED[kind], *[ratio(runs, peer, GOALS[kind].get(peer, float("inf"))) for peer in peers])


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


def main(folder, namespaces):
    measured = []
    for namespace in namespaces:
        kind, count = namespace.split("-")
        measured.append(((kind, int(count)), rounds_of(folder, namespace)))
    print("Our CPU time as a part of theirs, the median of all rounds:\n")
    print_ratios(measured)
    print("\nWhat one interface costs us as their number grows:\n")
    print_growth(measured)


main(pathlib.Path(sys.argv[1]), sys.argv[2:])
