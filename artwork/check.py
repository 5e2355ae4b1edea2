#!/usr/bin/env python3
"""Checks the rendered artwork: file formats, resource numbers, and the grounds that the pages draw on.

Usage: artwork/check.py [--folder DIR]

  --folder DIR  check the files in DIR instead of artwork/rendered

How readable the texts are is measured on frames of the program itself, by the tests of the pages.

Prints one line per fault and exits with 1 if there is any. Needs Python 3 only.
"""

import re
import struct
import sys
import zlib
from pathlib import Path

ARTWORK = Path(__file__).resolve().parent
SCREEN = (320, 240)
MAIL_POSITION = (235, 155)

BITMAPS = {
    "104_mail.bmp": (34, 22),
    "105_picture.bmp": SCREEN,
    "107_shade.bmp": SCREEN,
    "108_background.bmp": SCREEN,
    "304_list_background.bmp": SCREEN,
}
PNGS = {
    "106_overlay.png": SCREEN,
    "129_battery_wired.png": (42, 37),
    "130_microphone_on.png": (25, 37),
    "131_speaker_on.png": (18, 37),
    "132_battery_empty.png": (42, 37),
    "133_battery_full.png": (42, 37),
    "134_battery_low.png": (42, 37),
    "135_battery_medium.png": (42, 37),
    "136_microphone_muted.png": (25, 37),
    "137_speaker_muted.png": (18, 37),
}
ICON = "300_kelvaro.ico"
ICON_SIZES = [16, 20, 24, 32, 40, 48, 64, 256]
PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"

# Inclusive pixel rectangles (left, top, right, bottom) of the main page.
CPU_GRAPH = (4, 4, 204, 103)
GPU_GRAPH = (4, 109, 204, 208)
SIDE_BARS = [(209, 4, 226, 103), (209, 109, 226, 208)]
SIDE_BAR_LABELS = [(210, 27, 224, 31), (210, 132, 224, 136)]
GROUND_MAX = 6  # per channel, outside the grid
GRID_MIN = 32  # in one channel at least, or an empty graph has no scale
GRID_MAX = 80  # per channel
GRID_SHARE_MAX = 0.06  # of a graph's pixels

faults = []


def expect(condition, text):
    if not condition:
        faults.append(text)
    return condition


def read_bitmap(path, size):
    """Rows of (r, g, b) top to bottom, or None after reporting what is wrong."""
    data = path.read_bytes()
    width, height = size
    stride = (width * 3 + 3) // 4 * 4
    want = 54 + stride * height
    if not expect(len(data) == want, f"{path.name}: {len(data)} bytes, expected {want}"):
        return None
    magic, file_size, _, offset = struct.unpack("<2sIII", data[:14])
    header, w, h, planes, bits, compression, _, _, _, used, _ = struct.unpack("<IiiHHIIiiII", data[14:54])
    facts = (magic, file_size, offset, header, w, h, planes, bits, compression, used)
    wanted = (b"BM", want, 54, 40, width, height, 1, 24, 0, 0)
    if not expect(facts == wanted, f"{path.name}: header {facts}, expected {wanted}"):
        return None
    rows = []
    for y in reversed(range(height)):
        row = data[54 + y * stride : 54 + y * stride + width * 3]
        rows.append([(row[i + 2], row[i + 1], row[i]) for i in range(0, len(row), 3)])
    return rows


def unfilter(raw, width, height):
    """Rows of (r, g, b, a) from the inflated data of an 8-bit RGBA image."""
    rows = []
    above = bytearray(width * 4)
    for y in range(height):
        start = y * (width * 4 + 1)
        kind = raw[start]
        row = bytearray(raw[start + 1 : start + 1 + width * 4])
        for i in range(len(row)):
            left = row[i - 4] if i >= 4 else 0
            up = above[i]
            corner = above[i - 4] if i >= 4 else 0
            estimate = left + up - corner
            paeth = min((left, up, corner), key=lambda v: abs(estimate - v))
            row[i] = (row[i] + (0, left, up, (left + up) // 2, paeth)[kind]) & 255
        rows.append([tuple(row[i : i + 4]) for i in range(0, len(row), 4)])
        above = row
    return rows


def decode_png(name, data, size):
    """Rows of (r, g, b, a), or None after reporting what is wrong."""
    if not expect(data.startswith(PNG_SIGNATURE), f"{name}: no PNG signature"):
        return None
    chunks = []
    position = 8
    while position + 12 <= len(data):
        (length,) = struct.unpack(">I", data[position : position + 4])
        kind = data[position + 4 : position + 8]
        body = data[position + 8 : position + 8 + length]
        crc = data[position + 8 + length : position + 12 + length]
        if not expect(crc == struct.pack(">I", zlib.crc32(kind + body)), f"{name}: {kind} fails its checksum"):
            return None
        chunks.append((kind.decode("latin-1"), body))
        position += 12 + length
    expect(position == len(data), f"{name}: bytes behind the last chunk")
    # Any other chunk is metadata, which may hold a time, or the mark of an animation.
    kinds = "".join(kind + " " for kind, _ in chunks)
    if not expect(re.fullmatch("IHDR (IDAT )+IEND ", kinds), f"{name}: chunks {kinds}"):
        return None
    facts = struct.unpack(">IIBBBBB", chunks[0][1])
    wanted = (*size, 8, 6, 0, 0, 0)
    if not expect(facts == wanted, f"{name}: IHDR {facts}, expected {wanted}"):
        return None
    raw = zlib.decompress(b"".join(body for kind, body in chunks if kind == "IDAT"))
    if not expect(len(raw) == size[1] * (size[0] * 4 + 1), f"{name}: wrong amount of pixel data"):
        return None
    return unfilter(raw, *size)


def check_icon(path):
    data = path.read_bytes()
    reserved, kind, count = struct.unpack("<HHH", data[:6])
    facts = (reserved, kind, count)
    if not expect(facts == (0, 1, len(ICON_SIZES)), f"{path.name}: directory header {facts}"):
        return
    end = 6 + 16 * count
    for index, size in enumerate(ICON_SIZES):
        name = f"{path.name}, {size} pixels"
        entry = struct.unpack("<BBBBHHII", data[6 + 16 * index : 22 + 16 * index])
        width, height, colours, _, planes, bits, length, offset = entry
        facts = (width, height, colours, planes, bits)
        wanted = (size % 256, size % 256, 0, 1, 32)
        # Zero planes and bits are allowed by the format, and used by some tools, for an image stored as PNG.
        expect(facts == wanted or (size == 256 and facts == (0, 0, 0, 0, 32)), f"{name}: entry {facts}")
        if not expect(offset == end, f"{name}: image at {offset}, expected {end}"):
            return
        image = data[offset : offset + length]
        end += length
        if size == 256:
            decode_png(name, image, (256, 256))
            continue
        header, w, h, planes, bits, compression = struct.unpack("<IiiHHI", image[:20])
        facts = (header, w, h, planes, bits, compression)
        wanted = (40, size, size * 2, 1, 32, 0)
        expect(facts == wanted, f"{name}: image header {facts}, expected {wanted}")
        mask = (size + 31) // 32 * 4 * size
        expect(length == 40 + size * size * 4 + mask, f"{name}: {length} bytes of image")
    expect(end == len(data), f"{path.name}: {len(data) - end} bytes behind the last image")


def check_script():
    """Each rendered image stands in artwork.rc once, under the number that its file name begins with."""
    ids = dict(re.findall(r"^#define (\w+) (\d+)$", (ARTWORK.parent / "pages/image_ids.h").read_text(), re.M))
    script = (ARTWORK / "artwork.rc").read_text()
    found = re.findall(r'^(\w+) +(BITMAP|PNG) +"artwork/rendered/([^"]+)"$', script, re.M)
    wanted = {name: "BITMAP" for name in BITMAPS} | {name: "PNG" for name in PNGS}
    expect(
        sorted((name, kind) for _, kind, name in found) == sorted(wanted.items()),
        "artwork.rc: the files and types do not match the rendered images",
    )
    for symbol, _, name in found:
        number = name.split("_")[0]
        expect(ids.get(symbol) == number, f"artwork.rc: {symbol} is {ids.get(symbol)}, {name} wants {number}")
    expect(sorted(ids) == sorted(symbol for symbol, _, _ in found), "image_ids.h: a number without an image")


def over(ground, colour, alpha):
    return tuple(c * alpha / 255 + g * (255 - alpha) / 255 for g, c in zip(ground, colour))


def compose_main_page(images):
    """The backdrop as the main page draws it: background times shade, truncated, then the overlay."""
    rows = []
    for y in range(SCREEN[1]):
        row = []
        for x in range(SCREEN[0]):
            lit = tuple(
                b * s // 255 for b, s in zip(images["108_background.bmp"][y][x], images["107_shade.bmp"][y][x])
            )
            *colour, alpha = images["106_overlay.png"][y][x]
            row.append(tuple(round(c) for c in over(lit, colour, alpha)))
        rows.append(row)
    return rows


def pixels(page, rectangle):
    left, top, right, bottom = rectangle
    return [page[y][x] for y in range(top, bottom + 1) for x in range(left, right + 1)]


def inside(rectangle, x, y):
    left, top, right, bottom = rectangle
    return left <= x <= right and top <= y <= bottom


def check_main_page(images):
    page = compose_main_page(images)
    for rectangle in (CPU_GRAPH, GPU_GRAPH):
        ground = pixels(page, rectangle)
        grid = [colour for colour in ground if max(colour) > GROUND_MAX]
        expect(0 < len(grid) <= GRID_SHARE_MAX * len(ground), f"graph at {rectangle}: {len(grid)} bright pixels")
        expect(all(GRID_MIN <= max(colour) <= GRID_MAX for colour in grid), f"graph at {rectangle}: brightness of the grid")
    for bar, label in zip(SIDE_BARS, SIDE_BAR_LABELS):
        left, top, right, bottom = bar
        bright = [
            (x, y)
            for y in range(top, bottom + 1)
            for x in range(left, right + 1)
            if max(page[y][x]) > GROUND_MAX
        ]
        expect(bright, f"side bar at {bar}: no label")
        expect(all(inside(label, x, y) for x, y in bright), f"side bar at {bar}: bright outside its label")

    # The mail bitmap has no transparency: its border must vanish in the page.
    left, top = MAIL_POSITION
    mail = images["104_mail.bmp"]
    width, height = BITMAPS["104_mail.bmp"]
    ground = pixels(page, (left, top, left + width - 1, top + height - 1))
    expect(len(set(ground)) == 1, "the page is not flat beneath the mail bitmap")
    border = mail[0] + mail[-1] + [row[0] for row in mail] + [row[-1] for row in mail]
    expect(set(border) == set(ground), "the ground of the mail bitmap differs from the page")
    expect(len(set(pixels(mail, (0, 0, width - 1, height - 1)))) > 8, "the mail bitmap shows nothing")


def check_icons_differ(images):
    names = [name for name in PNGS if name != "106_overlay.png"]
    for name in names:
        twins = [other for other in names if other > name and images[other] == images[name]]
        expect(not twins, f"{name} shows the same as {', '.join(twins)}")
        alphas = {pixel[3] for row in images[name] for pixel in row}
        expect({0, 255} <= alphas, f"{name}: needs both transparent and opaque pixels")


def main(arguments):
    folder = ARTWORK / "rendered"
    while arguments:
        argument = arguments.pop(0)
        if argument == "--folder" and arguments:
            folder = Path(arguments.pop(0))
        else:
            print(__doc__.strip())
            return 0 if argument in ("--help", "-h") else 2

    wanted = sorted([*BITMAPS, *PNGS, ICON])
    found = sorted(path.name for path in folder.iterdir()) if folder.is_dir() else []
    for name in sorted(set(wanted) ^ set(found)):
        expect(False, f"{name}: {'missing' if name in wanted else 'not expected'} in {folder}")
    if not faults:
        images = {name: read_bitmap(folder / name, size) for name, size in BITMAPS.items()}
        images |= {name: decode_png(name, (folder / name).read_bytes(), size) for name, size in PNGS.items()}
        check_icon(folder / ICON)
        check_script()
        if all(images.values()):
            check_icons_differ(images)
            check_main_page(images)

    for fault in faults:
        print(f"check.py: {fault}", file=sys.stderr)
    if not faults:
        print(f"artwork: {len(wanted)} files as expected")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
