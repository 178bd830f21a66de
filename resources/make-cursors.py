#!/usr/bin/env python3
"""Draws the cursors of the view tools into resources/*.cur. Run it after a change; the results are committed.

A drawing is a list of layers on a grid of 32 units, painted one over the other: (colour, shapes). A shape is
("disc", x, y, radius), ("line", x1, y1, x2, y2, width) with round ends, or ("star", x, y, long, short).
"""
import math
import struct
import sys
from pathlib import Path

SIZES = (32, 48)  # pixels; the second for large screens
SAMPLES = 4  # a pixel side, for smooth edges
BLACK, WHITE = (0, 0, 0), (255, 255, 255)


def grow(shape, by):
    if shape[0] == "disc":
        return shape[:3] + (shape[3] + by,)
    if shape[0] == "line":
        return shape[:5] + (shape[5] + 2 * by,)
    return shape[:3] + (shape[3] + 2 * by, shape[4] + by)


def covers(shape, px, py):
    if shape[0] == "disc":
        return math.hypot(px - shape[1], py - shape[2]) <= shape[3]
    if shape[0] == "line":
        x1, y1, x2, y2, width = shape[1:]
        dx, dy = x2 - x1, y2 - y1
        along = max(0.0, min(1.0, ((px - x1) * dx + (py - y1) * dy) / (dx * dx + dy * dy)))
        return math.hypot(px - x1 - along * dx, py - y1 - along * dy) <= width / 2
    # Four points: the radius falls from long to short between two of them.
    x, y, long, short = shape[1:]
    turn = abs((math.atan2(py - y, px - x) / (math.pi / 2) + 0.5) % 1.0 - 0.5) * math.pi / 2
    edge = long * short * math.sin(math.pi / 4) / (short * math.sin(math.pi / 4 - turn) + long * math.sin(turn))
    return math.hypot(px - x, py - y) <= edge


def outlined(shapes, fill=WHITE, outline=BLACK, by=1.1):
    return [(outline, [grow(s, by) for s in shapes]), (fill, shapes)]


def lens(sign):
    ring = [(WHITE, [("disc", 12, 12, 10.3), ("line", 19, 19, 27, 27, 6.4)]),
            (BLACK, [("disc", 12, 12, 9.2), ("line", 19, 19, 27, 27, 4.2)]), (WHITE, [("disc", 12, 12, 7.2)])]
    return ring + [(BLACK, sign)] if sign else ring


MINUS = [("line", 8.5, 12, 15.5, 12, 1.8)]
PLUS = MINUS + [("line", 12, 8.5, 12, 15.5, 1.8)]
PALM = [("disc", 15.5, 21, 6.5), ("disc", 17, 18.5, 6), ("line", 12, 25, 19, 25, 5)]
OPEN_FINGERS = [("line", 12, 17, 9.5, 8, 3), ("line", 15.5, 16, 14.5, 5.5, 3), ("line", 18.5, 16, 19.3, 6.5, 3),
                ("line", 21.5, 17, 23.5, 9.5, 2.8), ("line", 11, 21, 6, 16, 3)]
CLOSED_FINGERS = [("line", 12, 17, 11.3, 14, 3.4), ("line", 15.5, 16, 15.2, 12.8, 3.4),
                  ("line", 18.7, 16, 19, 13.2, 3.4), ("line", 21.5, 17, 22.2, 14.6, 3.2),
                  ("line", 11, 21, 8.8, 18.4, 3.2)]
STAR = [("star", 12, 12, 10.5, 2.6)]
BADGE = [("disc", 23.5, 23.5, 6)]


def badge(sign):
    return outlined(BADGE, WHITE, BLACK, 1.2) + [(BLACK, sign)]


def hand(fingers):
    # Each finger keeps its own outline over the ones before it.
    layers = []
    for finger in fingers:
        layers += outlined([finger])
    return layers + outlined(PALM)[:1] + [(WHITE, PALM)] + [(WHITE, [f]) for f in fingers]


SLASH = [("line", 20.5, 26.5, 26.5, 20.5, 2)]
TICK = [("line", 20.8, 23.5, 26.2, 23.5, 2), ("line", 23.5, 20.8, 23.5, 26.2, 2)]

CURSORS = {
    "OpenHand": (hand(OPEN_FINGERS), (15, 17)),
    "ClosedHand": (hand(CLOSED_FINGERS), (15, 17)),
    "ZoomIn": (lens(PLUS), (12, 12)),
    "ZoomOut": (lens(MINUS), (12, 12)),
    "NoZoom": (lens(None), (12, 12)),
    "HideEffect": (outlined(STAR) + badge(SLASH), (12, 12)),
    "ShowEffect": (outlined(STAR) + badge(TICK), (12, 12)),
}


def sample(layers, x, y):
    colour = None
    for paint, shapes in layers:
        if any(covers(shape, x, y) for shape in shapes):
            colour = paint
    return colour


def pixel(layers, px, py, unit):
    """Blue, green, red and alpha of a pixel, averaged over its samples."""
    hits = [sample(layers, (px + (i + 0.5) / SAMPLES) * unit, (py + (j + 0.5) / SAMPLES) * unit)
            for i in range(SAMPLES) for j in range(SAMPLES)]
    hits = [c for c in hits if c]
    if not hits:
        return bytes(4), False
    red, green, blue = (sum(c[k] for c in hits) // len(hits) for k in range(3))
    return bytes((blue, green, red, len(hits) * 255 // SAMPLES**2)), 2 * len(hits) >= SAMPLES**2


def image(layers, size):
    """A 32-bit bitmap, bottom row first, followed by the mask of what stays transparent without alpha."""
    colours, mask = b"", b""
    for py in reversed(range(size)):
        solid = []
        for px in range(size):
            data, opaque = pixel(layers, px, py, 32 / size)
            colours += data
            solid.append(opaque)
        bits = "".join("0" if opaque else "1" for opaque in solid).ljust((size + 31) // 32 * 32, "0")
        mask += int(bits, 2).to_bytes(len(bits) // 8, "big")
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, len(colours) + len(mask), 0, 0, 0, 0)
    return header + colours + mask


def cursor_file(layers, hot):
    images = [image(layers, size) for size in SIZES]
    offset = 6 + 16 * len(SIZES)
    directory = struct.pack("<HHH", 0, 2, len(SIZES))
    for size, data in zip(SIZES, images):
        directory += struct.pack("<BBBBHHII", size, size, 0, 0, hot[0] * size // 32, hot[1] * size // 32,
                                 len(data), offset)
        offset += len(data)
    return directory + b"".join(images)


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).parent
    for name, (layers, hot) in CURSORS.items():
        (folder / f"{name}.cur").write_bytes(cursor_file(layers, hot))


main()
