#!/usr/bin/env python3
"""Renders resources/pictures/*.svg to the icons and bitmaps beside them. Run it after a change; the results are
committed, so that a build needs no renderer, and Manifest.txt holds the sums that show that they belong together.

A source refers to shared shapes as Common.svg#NAME; the contents of Common.svg are laid into it before it is
rendered. The root then has the classes sN and small (up to 20 pixels) or large, N being the size in pixels of an icon
or the scale in per cent of a bitmap: the styles in Common.svg and the sources leave out or widen lines by them.
"""
import hashlib
import re
import struct
import subprocess
import zlib
from pathlib import Path

RESOURCES = Path(__file__).resolve().parent
PICTURES = RESOURCES / "pictures"
ICON_SIZES = (16, 20, 24, 32, 40, 48)  # pixels
SCALES = (100, 125, 150, 200)  # per cent
BITMAPS = {"ProductLogo": (180, 34), "MakerLogo": (108, 20),  # pixels at 100 %
           "ZoomOutButton": (16, 16), "ZoomInButton": (16, 16), "ZoomArrow": (16, 16)}
FACE = 240  # red, green and blue of what a picture without alpha stands on


def complete(source, classes):
    shared = re.search(r"<svg[^>]*>(.*)</svg>", (PICTURES / "Common.svg").read_text(), re.S).group(1)
    text = source.read_text().replace("Common.svg#", "#")
    return re.sub(r"<svg([^>]*)>", lambda tag: f'<svg{tag.group(1)} class="{classes}">{shared}', text, count=1)


def unfilter(kind, row, above):
    for i in range(len(row)):
        left, up, corner = (row[i - 4], above[i], above[i - 4]) if i > 3 else (0, above[i], 0)
        paeth = min((left, up, corner), key=lambda c: abs(left + up - corner - c))
        row[i] = (row[i] + (0, left, up, (left + up) // 2, paeth)[kind]) & 255


def pixels(png):
    """Width and rows of red, green, blue, alpha bytes of a PNG of 8 bits with alpha, as the renderer writes it."""
    width, height, depth, colour, _, _, interlaced = struct.unpack(">IIBBBBB", png[16:29])
    assert (depth, colour, interlaced) == (8, 6, 0)
    data, at = b"", 8
    while at < len(png):
        length, chunk = struct.unpack(">I4s", png[at:at + 8])
        data += png[at + 8:at + 8 + length] if chunk == b"IDAT" else b""
        at += length + 12
    data, rows = zlib.decompress(data), []
    for y in range(height):
        line = y * (4 * width + 1)
        row = bytearray(data[line + 1:line + 1 + 4 * width])
        unfilter(data[line], row, rows[-1] if rows else bytes(4 * width))
        rows.append(row)
    return width, rows


def render(source, classes, width, height):
    command = ["rsvg-convert", "--width", str(width), "--height", str(height), "--format", "png"]
    result = subprocess.run(command, input=complete(source, classes).encode(), stdout=subprocess.PIPE, check=True)
    return pixels(result.stdout)


def bottom_up(rows, premultiply):
    """The rows as blue, green, red, alpha, last row first."""
    data = bytearray()
    for row in reversed(rows):
        for i in range(0, len(row), 4):
            red, green, blue, alpha = row[i:i + 4]
            if premultiply:
                red, green, blue = ((c * alpha + 127) // 255 for c in (red, green, blue))
            data += bytes((blue, green, red, alpha) if alpha else (0, 0, 0, 0))
    return bytes(data)


def icon_image(width, rows):
    """A 32-bit bitmap followed by the mask of what stays transparent where alpha is not understood."""
    mask = b""
    for row in reversed(rows):
        bits = "".join("0" if alpha >= 128 else "1" for alpha in row[3::4]).ljust((width + 31) // 32 * 32, "0")
        mask += int(bits, 2).to_bytes(len(bits) // 8, "big")
    colours = bottom_up(rows, premultiply=False)
    return struct.pack("<IiiHHIIiiII", 40, width, 2 * width, 1, 32, 0, len(colours), 0, 0, 0, 0) + colours + mask


def icon_file(source):
    images = []
    for size in ICON_SIZES:
        images.append(icon_image(*render(source, f"s{size} " + ("small" if size <= 20 else "large"), size, size)))
    offset = 6 + 16 * len(images)
    directory = struct.pack("<HHH", 0, 1, len(images))
    for size, image in zip(ICON_SIZES, images):
        directory += struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(image), offset)
        offset += len(image)
    return directory + b"".join(images)


def render_bitmap(source, scale):
    width, height = (-(-side * scale // 100) for side in BITMAPS[source.stem])
    classes = f"s{scale} " + ("small" if scale <= 125 else "large")
    return width, height, bottom_up(render(source, classes, width, height)[1], premultiply=True)


def bitmap_file(width, height, bits, colours):
    header = struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, 0, len(colours), 0, 0, 0, 0)
    return struct.pack("<2sIHHI", b"BM", 54 + len(colours), 0, 0, 54) + header + colours


def plain_file(source):
    """A bitmap of 24 bits at 100 %. A control copies one with alpha that its template names, and nobody frees both."""
    width, height, colours = render_bitmap(source, 100)
    data = bytearray()
    for y in range(height):
        for i in range(4 * width * y, 4 * width * (y + 1), 4):
            data += bytes(c + (255 - colours[i + 3]) * FACE // 255 for c in colours[i:i + 3])
        data += bytes(-3 * width % 4)
    return bitmap_file(width, height, 24, bytes(data))


def manifest():
    files = [p for p in PICTURES.iterdir() if p.suffix in (".svg", ".ico", ".bmp")]
    sums = [f"{hashlib.sha256(p.read_bytes()).hexdigest()} {p.relative_to(RESOURCES).as_posix()}\n"
            for p in sorted(files) + [Path(__file__).resolve()]]
    return "".join(sums)


def main():
    subprocess.run([RESOURCES.parent / "cmake" / "install-packages.sh", "librsvg2-bin"], check=True)
    for old in list(PICTURES.glob("*.ico")) + list(PICTURES.glob("*.bmp")):
        old.unlink()
    for source in sorted(PICTURES.glob("*.svg")):
        if source.stem in BITMAPS:
            (PICTURES / f"{source.stem}.bmp").write_bytes(plain_file(source))
            for scale in SCALES:
                width, height, colours = render_bitmap(source, scale)
                (PICTURES / f"{source.stem}-{scale}.bmp").write_bytes(bitmap_file(width, height, 32, colours))
        elif source.stem != "Common":
            (PICTURES / f"{source.stem}.ico").write_bytes(icon_file(source))
    (PICTURES / "Manifest.txt").write_text(manifest())


main()
