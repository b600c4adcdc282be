"""Prints how much of the stack the exported functions take, in Markdown, from the call graphs that the compiler wrote.

stack.py MINIMUM SYMBOLS GRAPH...: SYMBOLS names the exported functions, one a line; those below MINIMUM share a row.
Frames of the C library and of callbacks are not in the graphs.
"""
import pathlib
import re
import sys

NODE = re.compile(r'node: { title: "([^"]*)" label: "([^"]*)"')
EDGE = re.compile(r'edge: { sourcename: "([^"]*)" targetname: "([^"]*)"')
GROWS = {"nl_recv": 16384, "_ZN8devfacts17eeprom_load_imageEi": 65536}  # what frames that grow grow by
FRAME = re.compile(r"(\d+) bytes \((\w+)")


def read(paths):
    frames, calls, grows = {}, {}, set()
    for path in paths:
        text = pathlib.Path(path).read_text()
        for name, label in NODE.findall(text):
            frame = FRAME.search(label)
            if frame:
                frames[name] = max(int(frame[1]), frames.get(name, 0))
                if frame[2] == "dynamic":
                    grows.add(name)
        for caller, callee in EDGE.findall(text):
            calls.setdefault(caller, set()).add(callee)
    return frames, calls, grows


def depth(name, graph, above=()):
    """The bytes of the deepest chain of calls."""
    frames, calls, grows = graph
    if name in above:
        return 0
    deepest = max((depth(callee, graph, (*above, name)) for callee in calls.get(name, ())), default=0)
    return frames.get(name, 0) + deepest + (GROWS[name] if name in grows else 0)


def main(minimum, symbols, paths):
    graph = read(paths)
    exported = [name for name in pathlib.Path(symbols).read_text().split() if name in graph[0]]
    rows = sorted(((depth(name, graph), name) for name in exported), reverse=True)
    print("| function | stack, bytes |\n| --- | --- |")
    for size, name in rows:
        if size >= minimum:
            print(f"| `{name}` | {size:,} |")
    rest = [size for size, _ in rows if size < minimum]
    print(f"| {len(rest)} others | at most {max(rest):,} |")


main(int(sys.argv[1]), sys.argv[2], sys.argv[3:])
