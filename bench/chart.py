"""Draws works as rows of a chart in SVG: a mark for each contender, on a logarithmic scale around a line for the limit."""
from html import escape
from math import log2

ROW, NAMES, PLOT, TOP = 22, 330, 560, 46
COLOURS = ("#c8553d", "#2b6cb0", "#8a5fbf", "#b7791f", "#5f6b6b", "#2c9aa0", "#97266d", "#6b8e23", "#d16fb0", "#444466")
STYLE = ("text { font: 12px sans-serif; fill: #222 } .end { text-anchor: end } .middle { text-anchor: middle } "
         ".grid { stroke: #ddd } .limit { stroke: #222; stroke-width: 1.5 }")


class Scale:
    """Places values between powers of two that hold them all."""

    def __init__(self, values):
        self.first = int(min(0, *(log2(value) for value in values)) // 1)
        self.last = int(-(-max(1, *(log2(value) for value in values)) // 1))

    def place(self, value):
        return NAMES + 20 + PLOT * (log2(value) - self.first) / (self.last - self.first)

    def ticks(self):
        return [2.0 ** power for power in range(self.first, self.last + 1)]


def marks_of(works):
    """Ours is a filled circle, each other contender a colour of its own."""
    names = dict.fromkeys(name for _, values in works for name in values if name != "devfacts")
    return dict(zip(names, COLOURS))


def mark(x, y, colour):
    if colour is None:
        return f'<circle cx="{x:.1f}" cy="{y:.1f}" r="5" fill="#2a7f62"/>'
    return (f'<path d="M{x:.1f} {y - 5:.1f}l5 5l-5 5l-5 -5z" fill="none" stroke="{colour}" stroke-width="1.6"/>')


def legend(colours):
    x = 20
    for name, colour in {"devfacts": None, **colours}.items():
        yield mark(x, 12, colour)
        yield f'<text x="{x + 9}" y="16">{escape(name)}</text>'
        x += 24 + 7 * len(name)


def row(top, name, values, scale, colours):
    middle = top + ROW / 2
    yield f'<text class="end" x="{NAMES}" y="{middle + 4}">{escape(name)}</text>'
    for who in sorted(values, key=lambda who: who == "devfacts"):  # ours is drawn over the others
        yield mark(scale.place(values[who]), middle, colours.get(who))


def draw(works, label):
    """works: name and, for each contender, its cost as a multiple of the limit's."""
    scale = Scale([value for _, values in works for value in values.values()])
    colours = marks_of(works)
    bottom = TOP + ROW * len(works)
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{NAMES + PLOT + 50}" height="{bottom + 24}">',
             f"<style>{STYLE}</style>", '<rect width="100%" height="100%" fill="#fff"/>', *legend(colours)]
    for tick in scale.ticks():
        kind = "limit" if tick == 1 else "grid"
        lines.append(f'<line class="{kind}" x1="{scale.place(tick):.1f}" x2="{scale.place(tick):.1f}" '
                     f'y1="{TOP - 6}" y2="{bottom}"/>')
        lines.append(f'<text class="middle" x="{scale.place(tick):.1f}" y="{TOP - 12}">{tick:g}</text>')
    for number, (name, values) in enumerate(works):
        lines += row(TOP + ROW * number, name, values, scale, colours)
    lines.append(f'<text x="{NAMES + 20}" y="{bottom + 18}">{escape(label)}</text>')
    return "\n".join([*lines, "</svg>", ""])
