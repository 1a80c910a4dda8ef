"""Charts as SVG: lines over a logarithmic scale, and bars beside a limit."""

import math
from xml.sax.saxutils import escape

COLOURS = ("#1f6fb4", "#c8553d", "#3f8f5b", "#7d5ba6", "#b58900", "#555555")
MISSED = "#c8553d"
WIDTH = 820
HEIGHT = 420
LEFT, RIGHT, TOP, BOTTOM = 80, 170, 50, 60
BAR_LABEL = 370  # room for the names of bars
BAR_STEP = 26


def text(x, y, content, anchor="start", size=13):
    return f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}">{escape(content)}</text>'


def line(x1, y1, x2, y2, colour="#999999", more=""):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}"{more}/>'


def page(title, height, parts):
    head = (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}" font-family="sans-serif">'
            f'<rect width="{WIDTH}" height="{height}" fill="#ffffff"/>')
    return "\n".join([head, text(WIDTH / 2, 26, title, "middle", 17), *parts, "</svg>"]) + "\n"


def decades(values):
    """The powers of ten around positive values, as (lowest, highest) exponents."""
    low, high = math.floor(math.log10(min(values))), math.ceil(math.log10(max(values)))
    return low, max(high, low + 1)


def power_label(exponent):
    return f"{10 ** exponent:,}" if exponent >= 0 else f"{10.0 ** exponent:g}"


def lines(title, x_name, y_name, series):
    """Lines through the points of {name: [(x, y), ...]}, both axes logarithmic. Points that are not positive, which
    noise can make, are left out."""
    series = {name: [point for point in points if min(point) > 0] for name, points in series.items()}
    points = [point for one in series.values() for point in one]
    if not points:
        return page(title, HEIGHT, [text(WIDTH / 2, HEIGHT / 2, "nothing measured", "middle")])
    (x_low, x_high), (y_low, y_high) = decades([x for x, _ in points]), decades([y for _, y in points])

    def x_of(x):
        return LEFT + (math.log10(x) - x_low) / (x_high - x_low) * (WIDTH - LEFT - RIGHT)

    def y_of(y):
        return HEIGHT - BOTTOM - (math.log10(y) - y_low) / (y_high - y_low) * (HEIGHT - TOP - BOTTOM)

    parts = [text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 15, x_name, "middle"), text(10, TOP - 12, y_name)]
    for exponent in range(x_low, x_high + 1):
        x = x_of(10.0 ** exponent)
        parts += [line(x, TOP, x, HEIGHT - BOTTOM, "#dddddd"),
                  text(x, HEIGHT - BOTTOM + 20, power_label(exponent), "middle")]
    for exponent in range(y_low, y_high + 1):
        y = y_of(10.0 ** exponent)
        parts += [line(LEFT, y, WIDTH - RIGHT, y, "#dddddd"), text(LEFT - 8, y + 4, power_label(exponent), "end")]
    for index, (name, one) in enumerate(series.items()):
        colour = COLOURS[index % len(COLOURS)]
        places = [(x_of(x), y_of(y)) for x, y in one]
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in places)
        parts.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>')
        parts += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{colour}"/>' for x, y in places]
        y = TOP + 10 + 20 * index
        parts += [line(WIDTH - RIGHT + 15, y, WIDTH - RIGHT + 35, y, colour, ' stroke-width="3"'),
                  text(WIDTH - RIGHT + 42, y + 4, name)]
    return page(title, HEIGHT, parts)


def bars(title, rows, limit):
    """A bar for each (name, value), and a line at the limit; what is beyond it is red."""
    height = TOP + BAR_STEP * max(len(rows), 1) + 30
    largest = max([limit, *(value for _, value in rows)]) * 1.02
    room = WIDTH - BAR_LABEL - 70

    def width_of(value):
        return max(value, 0) / largest * room

    parts = []
    for index, (name, value) in enumerate(rows):
        y = TOP + BAR_STEP * index
        colour = MISSED if value > limit else COLOURS[0]
        parts += [text(BAR_LABEL - 8, y + 14, name, "end", 12),
                  f'<rect x="{BAR_LABEL}" y="{y}" width="{width_of(value):.1f}" height="18" fill="{colour}"/>',
                  text(BAR_LABEL + width_of(value) + 5, y + 14, f"{value:.2f}", "start", 12)]
    x = BAR_LABEL + width_of(limit)
    parts += [line(x, TOP - 8, x, height - 24, "#222222", ' stroke-dasharray="5 3"'),
              text(x, height - 8, f"limit {limit:g}", "middle", 12)]
    return page(title, height, parts)
