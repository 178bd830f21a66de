#!/usr/bin/env python3
"""Makes picture-kinds.md: what the command line does with every kind of picture file, as told by other tools.

make-picture-kinds.py PHOTO: a colour photo, from which pictures of every kind are made with ImageMagick, exiftool and
tiffcp. ../brillatrix then writes them again without a star on them (under a black mask), and ImageMagick and exiftool
say what came out. Last, damaged files of every kind are handed over.
"""
import json
import os
import re
import struct
import subprocess
import sys
import tempfile
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.join(HERE, "..")
PROGRAM = [os.path.join(ROOT, "cmake", "wine-run.sh"),
           os.path.join(ROOT, "build", "windows-x64", "bin", "brillatrix.exe")]
PROFILES = "/usr/share/color/icc/ghostscript/"
SIZE = "240x160"


def run(*words, check=True, **options):
    done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL, **options)
    if check and done.returncode != 0:
        sys.exit("%s: %s" % (" ".join(words), done.stderr.decode()))
    return done


def convert(*words):
    done = run("convert", *words, check=False)  # it fails of mere warnings too
    if not os.path.exists(words[-1]):
        sys.exit("convert %s: %s" % (" ".join(words), done.stderr.decode()))


# --- The pictures.

RGB = ["-profile", PROFILES + "srgb.icc"]
CMYK = ["-profile", PROFILES + "srgb.icc", "-profile", PROFILES + "default_cmyk.icc"]
ALPHA = ["(", "+clone", "-colorspace", "gray", "-negate", ")", "-compose", "CopyOpacity", "-composite"]
GREY = ["-colorspace", "gray"]
FLOATS = ["-depth", "32", "-define", "quantum:format=floating-point"]

# File, how ImageMagick makes it of the photo, whether exiftool gives it all metadata.
INPUTS = [
    ("jpeg-full.jpg", RGB + ["-sampling-factor", "4:2:0", "-quality", "83"], True),
    ("jpeg-444-q95.jpg", ["-sampling-factor", "4:4:4", "-quality", "95"], False),
    ("jpeg-progressive.jpg", ["-interlace", "JPEG", "-quality", "90"], False),
    ("jpeg-grey.jpg", GREY + ["-quality", "90"], False),
    ("jpeg-cmyk.jpg", CMYK + ["-quality", "92"], False),
    ("png-8-full.png", RGB + ["-define", "png:bit-depth=8"], True),
    ("png-16-alpha.png", ALPHA + ["-define", "png:color-type=6", "-define", "png:bit-depth=16"], False),
    ("png-grey.png", GREY + ["-define", "png:color-type=0"], False),
    ("png-grey-16.png", GREY + ["-define", "png:color-type=0", "-define", "png:bit-depth=16"], False),
    ("png-palette.png", ["-colors", "64", "-define", "png:color-type=3"], False),
    ("png-1-bit.png", ["-threshold", "50%", "-define", "png:bit-depth=1", "-define", "png:color-type=0"], False),
    ("png-interlaced.png", ["-interlace", "PNG"], False),
    ("tiff-16-full.tif", RGB + ALPHA + ["-depth", "16", "-compress", "none"], True),
    ("tiff-lzw.tif", ["-compress", "lzw", "-define", "tiff:predictor=2"], False),
    ("tiff-deflate.tif", ["-compress", "zip"], False),
    ("tiff-packbits.tif", ["-compress", "rle"], False),
    ("tiff-zstd.tif", ["-compress", "zstd"], False),
    ("tiff-jpeg.tif", ["-compress", "jpeg", "-quality", "90"], False),
    ("tiff-fax.tif", ["-threshold", "50%", "-compress", "group4"], False),
    ("tiff-palette.tif", ["-colors", "64", "-type", "palette"], False),
    ("tiff-grey-16.tif", GREY + ["-depth", "16"], False),
    ("tiff-float.tif", FLOATS, False),
    ("tiff-half.tif", ["-depth", "16", "-define", "quantum:format=floating-point"], False),
    ("tiff-32-integer.tif", ["-depth", "32", "-define", "quantum:format=unsigned"], False),
    ("tiff-cmyk.tif", CMYK, False),
    ("tiff-lab.tif", ["-colorspace", "Lab"], False),
    ("tiff-big-endian.tif", ["-depth", "16", "-endian", "MSB"], False),
    ("tiff-tiles.tif", ["-define", "tiff:tile-geometry=64x64"], False),
    ("tiff-planes.tif", ["-interlace", "plane"], False),
    ("webp-lossy.webp", RGB + ["-quality", "90"], True),
    ("webp-lossless-alpha.webp", ALPHA + ["-define", "webp:lossless=true"], False),
    ("avif-8.avif", ["-quality", "80"], False),
    ("gif.gif", ["-colors", "64"], False),
    ("bmp-24.bmp", ["-define", "bmp:format=bmp3"], False),
    ("bmp-8.bmp", ["-colors", "64", "-type", "palette", "-define", "bmp:format=bmp3"], False),
    ("ppm-8.ppm", [], False),
    ("ppm-16.ppm", ["-depth", "16"], False),
    ("pgm-8.pgm", GREY, False),
    ("pam-alpha.pam", ALPHA, False),
    ("pfm.pfm", ["-depth", "32"], False),
]
FULL = ["-Make=Acme", "-Model=Nine", "-ExposureTime=1/30", "-ISO=400", "-Artist=A. Photographer",
        "-GPSLatitude=48.2", "-GPSLatitudeRef=N", "-GPSLongitude=16.37", "-GPSLongitudeRef=E", "-XMP-dc:Title=Night",
        "-IPTC:City=Wien", "-Comment=a comment", "-XResolution=240", "-YResolution=240", "-ResolutionUnit=inches"]


def make_inputs(photo, folder):
    base = os.path.join(folder, "base.ppm")
    convert(photo, "-resize", SIZE + "!", base)
    for name, words, is_full in INPUTS:
        path = os.path.join(folder, name)
        density = ["-density", "240", "-units", "PixelsPerInch"] if is_full else []
        convert(base, "+set", "comment", *density, *words, path)
        if is_full:
            turned = ["-Orientation#=6"] if name.endswith(".jpg") else []
            run("exiftool", "-q", "-m", "-overwrite_original", *FULL, *turned, path)
    first, second = (os.path.join(folder, name) for name in ("tiff-lzw.tif", "tiff-deflate.tif"))
    run("tiffcp", first, second, os.path.join(folder, "tiff-two-pages.tif"))
    run("tiffcp", "-8", first, os.path.join(folder, "tiff-64-bit-offsets.tif"))
    convert("-delay", "50", base, "(", base, "-negate", ")", "-colors", "64", os.path.join(folder, "gif-frames.gif"))
    linear = read(os.path.join(folder, "png-interlaced.png"))
    gamma = chunk(b"gAMA", struct.pack(">I", 100000))
    write(os.path.join(folder, "png-gamma-1.png"), without_chunks(linear, b"gAMA", b"cHRM", b"sRGB", b"iCCP", add=gamma))
    convert("-size", SIZE, "xc:black", os.path.join(folder, "mask.pgm"))
    convert(os.path.join(folder, "mask.pgm"), "-rotate", "90", os.path.join(folder, "mask-turned.pgm"))
    os.remove(base)
    names = [name for name, _, _ in INPUTS]
    return sorted(names + ["tiff-two-pages.tif", "tiff-64-bit-offsets.tif", "gif-frames.gif", "png-gamma-1.png"])


def read(path):
    with open(path, "rb") as file:
        return file.read()


def write(path, data):
    with open(path, "wb") as file:
        file.write(data)


def chunk(name, body):
    return struct.pack(">I", len(body)) + name + body + struct.pack(">I", zlib.crc32(name + body))


def chunks(png):
    at = 8
    while at < len(png):
        length = struct.unpack(">I", png[at:at + 4])[0]
        yield png[at + 4:at + 8], at, length
        at += length + 12


def without_chunks(png, *names, add=b""):
    made = png[:33] + add
    for name, at, length in chunks(png):
        if name != b"IHDR" and name not in names:
            made += png[at:at + length + 12]
    return made


# --- What other tools say.

TAGS = ["EXIF:Make", "EXIF:ExposureTime", "EXIF:GPSLatitude", "XMP:Title", "IPTC:City", "File:Comment", "PNG:Comment",
        "EXIF:Orientation", "ICC_Profile:ProfileDescription", "EXIF:XResolution", "JFIF:XResolution",
        "PNG:PixelsPerUnitX", "EXIF:Compression", "File:BitsPerSample", "EXIF:BitsPerSample"]


def facts(path):
    told = json.loads(run("exiftool", "-j", "-G", *["-" + tag for tag in TAGS], path, check=False).stdout or b"[{}]")[0]
    form = run("identify", "-format", "%w %h %z %A %x %U %[channels]|", path + "[0]", check=False).stdout.decode()
    words = form.split("|")[0].split()
    has_density = len(words) > 4
    dots = round(float(words[4]) * (2.54 if words[5] == "PixelsPerCentimeter" else 1)) if has_density else 0
    return {
        "size": " x ".join(words[:2]), "depth": words[2] if has_density else "?",
        "alpha": bool(words) and words[-1].endswith("a") and words[3] not in ("Undefined", "False"),
        "icc": run("exiftool", "-b", "-icc_profile", path, check=False).stdout,
        "EXIF": "EXIF:Make" in told and "EXIF:ExposureTime" in told, "GPS": "EXIF:GPSLatitude" in told,
        "XMP": "XMP:Title" in told, "IPTC": "IPTC:City" in told,
        "comment": "File:Comment" in told or "PNG:Comment" in told, "dpi": dots if dots == 240 else 0,
        "turned": told.get("EXIF:Orientation", "Horizontal (normal)") != "Horizontal (normal)",
    }


def difference(one, other):
    """As signal to noise in dB; "same" without any difference."""
    form = run("identify", "-format", "%[colorspace] %[orientation]|", one + "[0]").stdout.decode().split("|")[0]
    with tempfile.TemporaryDirectory() as folder:
        if form.split()[0] in ("CMYK", "Lab", "CIELab") or form.split()[1] not in ("Undefined", "TopLeft"):
            plain = os.path.join(folder, "plain.miff")
            words = ["-profile", PROFILES + "srgb.icc"] if form.startswith("CMYK") else []
            convert(one + "[0]", "-auto-orient", *words, "-strip", "-colorspace", "sRGB", plain)
            one = plain
        said = run("compare", "-alpha", "off", "-metric", "PSNR", one + "[0]", other + "[0]", "null:", check=False)
        ratio = re.match(r"inf|[0-9.]*", said.stderr.decode()).group()
    return "same" if ratio == "inf" else "%.0f dB" % float(ratio) if ratio else "cannot be compared"


COLUMNS = ["ICC", "EXIF", "GPS", "XMP", "IPTC", "comment", "dpi", "alpha"]


def kept(before, after, column):
    key = {"ICC": "icc"}.get(column, column)
    if not before[key]:
        return "made" if column == "ICC" and after[key] else ""
    return "yes" if after[key] == before[key] else "no"


def brillatrix(source, target, *words):
    mask = "mask-turned.pgm" if os.path.basename(source) == "jpeg-full.jpg" else "mask.pgm"
    mask = os.path.join(os.path.dirname(source), mask)
    done = run(*PROGRAM, "--overwrite", "--quiet", *words, "--mask", mask, source, target, check=False)
    said = done.stderr.decode().replace("brillatrix: ", "").replace("warning: ", "").strip()
    return done.returncode, said.replace(os.path.dirname(source) + "/", "").replace(os.path.dirname(target) + "/", "")


def row(source, target):
    status, said = brillatrix(source, target)
    names = "| %s | %s " % (os.path.basename(source), os.path.splitext(target)[1][1:])
    said = "; ".join(said.split("\n"))
    if status != 0:
        return names + "| status %d |" % status + " |" * (len(COLUMNS) + 2) + " %s |" % said
    before, after = facts(source), facts(target)
    depth = before["depth"] if before["depth"] == after["depth"] else before["depth"] + " → " + after["depth"]
    upright = "yes" if before["turned"] and not after["turned"] and before["size"] != after["size"] else ""
    cells = [difference(source, target), depth] + [kept(before, after, column) for column in COLUMNS] + [upright, said]
    return names + "| " + " | ".join(cells) + " |"


HEAD = ("| input | out | pixels | bits | " + " | ".join(COLUMNS) + " | turned upright | told |\n" +
        "|---" * (len(COLUMNS) + 6) + "|\n")


# --- Damaged files.

def cut(data, share):
    return data[:int(len(data) * share)]


def flip(data, share, count=1):
    at = int(len(data) * share)
    return data[:at] + bytes(byte ^ 0x55 for byte in data[at:at + count]) + data[at + count:]


def flip_chunk(png, wanted):
    for name, at, length in chunks(png):
        if name == wanted:
            return png[:at + length + 8] + bytes([png[at + length + 8] ^ 1]) + png[at + length + 9:]
    return png


def jpeg_scan(data, share):
    start = data.rindex(b"\xff\xda") + 14
    return start + int((len(data) - start) * share)


def damages(name, data):
    yield "is empty", b""
    yield "ends after a half", cut(data, 0.5)
    yield "ends after nine tenths", cut(data, 0.9)
    if name.endswith((".jpg", ".png", ".webp", ".avif", ".gif")) or name in ("tiff-lzw.tif", "tiff-deflate.tif",
                                                                             "tiff-zstd.tif", "tiff-jpeg.tif"):
        yield "64 bytes changed in the middle", flip(data, 0.6, 64)
    if name.endswith(".jpg"):
        at = jpeg_scan(data, 0.5)
        yield "a false marker in the middle", data[:at] + b"\xff\xd3" + data[at + 2:]
        yield "no end marker", data[:-2]
    if name.endswith(".png"):
        for part in (b"IHDR", b"PLTE", b"IDAT"):
            if flip_chunk(data, part) != data:
                yield "wrong checksum of " + part.decode(), flip_chunk(data, part)
    yield "16 bytes of its head changed", data[:12] + flip(data[12:28], 0, 16) + data[28:]


DAMAGED = ["jpeg-444-q95.jpg", "png-8-full.png", "png-palette.png", "tiff-lzw.tif", "tiff-deflate.tif",
           "tiff-jpeg.tif", "tiff-16-full.tif", "webp-lossy.webp", "webp-lossless-alpha.webp", "avif-8.avif",
           "gif.gif", "bmp-24.bmp", "ppm-8.ppm", "pam-alpha.pam", "pfm.pfm"]


def damaged_row(folder, name, what, data, target, *words):
    path = os.path.join(folder, "damaged" + os.path.splitext(name)[1])
    if os.path.exists(target):
        os.remove(target)
    write(path, data)
    status, said = brillatrix(path, target, *words)
    left = "" if status == 0 else ", and a file is left" if os.path.exists(target) else ""
    pixels = "" if status != 0 else difference(os.path.join(folder, name), target)
    said = "; ".join(said.split("\n")).replace("cannot read damaged" + os.path.splitext(name)[1] + ": ", "")
    return "| %s | %s | %d%s | %s | %s |" % (name, " ".join([what, *words]), status, left, pixels, said)


def write_damaged(folder, results, page):
    page.write("| file | damage | status | pixels | told |\n|---|---|---|---|---|\n")
    for name in DAMAGED:
        for what, data in damages(name, read(os.path.join(folder, name))):
            target = os.path.join(results, "d" + os.path.splitext(name)[1])
            page.write(damaged_row(folder, name, what, data, target) + "\n")
            if name.endswith(".jpg"):
                page.write(damaged_row(folder, name, what, data, target, "--no-strict") + "\n")


def main():
    packages = ["imagemagick", "libimage-exiftool-perl", "libtiff-tools", "libgs-common"]
    run(os.path.join(ROOT, "cmake", "install-packages.sh"), *packages)
    run(os.path.join(ROOT, "brillatrix"), "--version")  # builds it where that is needed
    with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryDirectory() as results, \
            open(os.path.join(HERE, "picture-kinds.md"), "w", encoding="utf-8") as page:
        names = make_inputs(os.path.abspath(sys.argv[1]), folder)
        page.write(INTRODUCTION + HEAD)
        for name in names:
            page.write(row(os.path.join(folder, name), os.path.join(results, name)) + "\n")
        page.write(CROSSING + HEAD)
        for name in ("jpeg-full.jpg", "png-8-full.png", "tiff-16-full.tif", "tiff-float.tif"):
            for ending in ("jpg", "png", "tif", "webp", "avif", "gif", "bmp", "ppm", "pam", "pfm"):
                target = os.path.join(results, "x." + ending)
                page.write(row(os.path.join(folder, name), target) + "\n")
        page.write(DAMAGE)
        write_damaged(folder, results, page)


INTRODUCTION = """# Kinds of picture files

Made by `docs/make-picture-kinds.py`: pictures of every kind, written again by `brillatrix` without a star on them, and
compared with ImageMagick and exiftool. "pixels" is the difference of the colours (after turning upright; CMYK and Lab
as sRGB): "same", or the signal to noise ratio, where above 40 dB nobody sees a difference. "yes" is what was there and
came along unchanged, "no" what did not; an empty cell is what was not there. dpi is 240 where it was set.

## Written as the same kind

"""

CROSSING = """
## Written as another kind

"""

DAMAGE = """
## Damaged files

Status 3 is a refusal, after which no file is left. A change inside the data of a kind without checksums can go
unnoticed by any reader: then the picture is whole, and some of its pixels are other ones.

"""

main()
