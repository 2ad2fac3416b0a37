# SPDX-License-Identifier: Apache-2.0
"""Draws the groups of a topic as bars: the shorter, the faster."""

from xml.sax.saxutils import escape

WIDTH, LABELS, BARS, LINE = 860, 330, 440, 20
COLOURS = {"floor": "#9aa5b1", "ours": "#1f7a5c", "peer": "#c2703d", "note": "#c9c2a8"}


def _text(x, y, text, extra=""):
    return f'<text x="{x}" y="{y}" {extra}>{escape(text)}</text>'


def _bar(y, name, row, longest):
    kind, _, what = name.partition("/")[2].partition(": ")
    length = max(1, BARS * row["median"] / longest)
    value = f"{row['median']:.0f} ns" if row["median"] >= 100 else f"{row['median']:.1f} ns"
    weight = 'font-weight="bold" ' if kind == "ours" else ""
    return [_text(LABELS - 8, y + 14, what, f'{weight}text-anchor="end"'),
            f'<rect x="{LABELS}" y="{y + 3}" width="{length:.1f}" height="{LINE - 6}" fill="{COLOURS[kind]}"/>',
            _text(f"{LABELS + length + 6:.1f}", y + 14, value)]


def _group(y, title, names, rows):
    longest = max(rows[name]["median"] for name in names)
    parts = [_text(8, y + 14, title, 'font-weight="bold"')]
    for position, name in enumerate(names, 1):
        parts += _bar(y + position * LINE, name, rows[name], longest)
    return parts


def draw(groups, rows):
    """The whole picture, as SVG."""
    parts, y = [], 8
    for title, names in groups.items():
        parts += _group(y, title, names, rows)
        y += (len(names) + 2) * LINE
    head = (f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{y}" font-family="sans-serif" '
            f'font-size="12"><rect width="{WIDTH}" height="{y}" fill="white"/>')
    return "\n".join([head, *parts, "</svg>"]) + "\n"
