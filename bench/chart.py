"""Draws ratios as a chart of bars, in SVG."""
from html import escape

LINE, NAMES, NUMBERS, BARS, WIDTH, MOST = 18, 350, 390, 400, 480, 3.2
WITHIN, OVER, FREE = "#2a7f62", "#c8553d", "#8a9a9a"
STYLE = "text { font: 12px sans-serif; fill: #222 } .end { text-anchor: end } line { stroke: #222; stroke-width: 1.5 }"


def place(value):
    return BARS + WIDTH * min(value, MOST) / MOST


def colour(value, goal):
    if goal is None:
        return FREE
    return OVER if round(value, 2) > goal else WITHIN


def bar(top, what, who, value, goal):
    """One ratio: its names, its number, its bar, and a stroke at its goal."""
    yield f'<text class="end" x="{NAMES}" y="{top + 13}">{escape(what)} / {escape(who)}</text>'
    yield f'<text class="end" x="{NUMBERS}" y="{top + 13}">{value:.2f}</text>'
    yield (f'<rect x="{BARS}" y="{top + 3}" width="{place(value) - BARS:.1f}" height="{LINE - 5}" '
           f'fill="{colour(value, goal)}"/>')
    if goal is not None:
        yield f'<line x1="{place(goal):.1f}" x2="{place(goal):.1f}" y1="{top + 1}" y2="{top + LINE - 1}"/>'


def draw(ratios):
    """ratios: what, against whom, ratio and goal (or None)."""
    height = LINE * (len(ratios) + 2)
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{BARS + WIDTH + 10}" height="{height}">',
             f"<style>{STYLE}</style>", '<rect width="100%" height="100%" fill="#fff"/>',
             f'<text x="{BARS}" y="14">our CPU time / theirs; the stroke is the goal</text>']
    for number, ratio in enumerate(ratios):
        lines += bar(LINE * (number + 1), *ratio)
    return "\n".join([*lines, "</svg>", ""])
