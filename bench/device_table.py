"""Turns what bench/device/count prints into a table in Markdown, and a chart if it is to be drawn.

device_table.py [CHART] <COUNTS
"""
import pathlib
import sys

from chart import draw

# What each work is, and who does the bare minimum of it.
WORKS = {
    "escape_plain": ("escape 1,000 plain bytes into a buffer", "copy"),
    "escape_20th": ("the same, every 20th byte an entity", "copy"),
    "escape_all": ("the same, every byte an entity", "copy"),
    "escape_allocated": ("escape 16 bytes, allocated", "copy"),
    "report": ("report of an interface with an address", "fwrite"),
    "int_item": ("print an item of a number", "fwrite"),
    "text_item": ("print an item of 16 bytes", "fwrite"),
    "escaped_item": ("print an item of 16 bytes, escaped", "fwrite"),
    "walk": ("walk 200 lines of 24 bytes", "fgets"),
    "first_match": ("first match, on line 200", "fgets"),
    "address": ("parse an address", "sscanf"),
    "translate": ("look up the last of 500 texts", "fgets"),
    "load": ("load 35 records of 24 bytes", "records"),
    "save": ("save 35 records", "mmap"),
    "update": ("update 35 records", "records"),
    "message": ("send and drain a message of 100 bytes", "bare"),
}
CYCLES_PER_MICROSECOND = 384


def read(lines):
    counts = {}
    for line in lines:
        work, who, count = line.split()
        counts.setdefault(work, {})[who] = int(count)
    return counts


def row(*cells):
    print("| " + " | ".join(str(cell) for cell in cells) + " |")


def print_table(counts):
    row("work", "instructions", "at 384 MHz, µs", "bare", "times the bare", "others")
    row(*["---"] * 6)
    for work, (name, bare) in WORKS.items():
        mine, theirs = counts[work]["devfacts"], counts[work][bare]
        others = ", ".join(f"{who} {count:,}" for who, count in counts[work].items() if who not in ("devfacts", bare))
        row(name, f"{mine:,}", f"{mine / CYCLES_PER_MICROSECOND:.1f}", f"{bare} {theirs:,}", f"{mine / theirs:.2f}", others)


def multiples(counts):
    for work, (name, bare) in WORKS.items():
        yield name, {who: count / counts[work][bare] for who, count in counts[work].items() if who != bare}


counted = read(sys.stdin)
print_table(counted)
if len(sys.argv) > 1:
    pathlib.Path(sys.argv[1]).write_text(draw([*multiples(counted)], "instructions, as a multiple of the bare work's"))
