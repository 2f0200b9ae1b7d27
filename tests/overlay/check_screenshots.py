#!/usr/bin/env python3
"""Saves the screenshots (tools/screenshots.sh) and checks that each is a real picture: the
overlay's a PNG of the panel's size on the 1440 x 900 test screen, each window's of its width
(settings 470 x 470, Welcome 440 wide, What's New 520 wide and at most 640 high), none blank, and
the dark ones darker than the light ones."""
import struct
import subprocess
import sys
import zlib
from pathlib import Path

root, build, out = Path(sys.argv[1]), Path(sys.argv[2]), Path(sys.argv[3])
subprocess.run([root / "tools/screenshots.sh", build, out], check=True)

panels = ("peeking", "pinned-search", "favorites", "loading")
windows = ("settings", "welcome", "welcome-granted", "whatsnew")
expected = {f"{kind}-{palette}.png" for kind in panels + windows for palette in ("light", "dark")}
found = {p.name for p in out.glob("*.png")}
assert expected <= found, f"missing screenshots: {sorted(expected - found)}"


def pixels(path):
    data = path.read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n", f"{path.name}: not a PNG"
    pos, idat, header = 8, b"", None
    while pos < len(data):
        length, kind = struct.unpack(">I4s", data[pos:pos + 8])
        body = data[pos + 8:pos + 8 + length]
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", body)
        elif kind == b"IDAT":
            idat += body
        pos += 12 + length
    width, height, depth, colour = header[:4]
    return width, height, depth, colour, zlib.decompress(idat)


def fits(kind, width, height):
    if kind in panels:
        return (width, height) == (940, 640)
    if kind == "settings":
        return (width, height) == (470, 470)
    if kind.startswith("welcome"):
        return width == 440 and 300 < height < 900
    return width == 520 and 300 < height <= 640


def mean_level(raw, width, depth, colour):
    """The mean of every sample after undoing the PNG row filters (8-bit images)."""
    channels = {0: 1, 2: 3, 4: 2, 6: 4}[colour]
    bpp = channels * depth // 8
    stride = width * bpp
    previous = bytearray(stride)
    total = count = 0
    for start in range(0, len(raw), stride + 1):
        kind, row = raw[start], bytearray(raw[start + 1:start + 1 + stride])
        for i in range(stride):
            a = row[i - bpp] if i >= bpp else 0
            b = previous[i]
            c = previous[i - bpp] if i >= bpp else 0
            if kind == 1:
                row[i] = (row[i] + a) & 0xFF
            elif kind == 2:
                row[i] = (row[i] + b) & 0xFF
            elif kind == 3:
                row[i] = (row[i] + (a + b) // 2) & 0xFF
            elif kind == 4:
                p = a + b - c
                pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
                row[i] = (row[i] + (a if pa <= pb and pa <= pc else b if pb <= pc else c)) & 0xFF
        total += sum(row)
        count += stride
        previous = row
    return total / max(1, count)


levels = {}
for name in sorted(expected):
    kind = name.rsplit("-", 1)[0]
    width, height, depth, colour, raw = pixels(out / name)
    assert fits(kind, width, height), f"{name}: {width} x {height} is not its size"
    distinct = len(set(raw[i:i + 4] for i in range(0, len(raw), 4)))
    assert distinct > 50, f"{name}: looks blank ({distinct} distinct samples)"
    levels[name] = mean_level(raw, width, depth, colour)
    print(f"{name}: {width} x {height}, {distinct} distinct samples")
for kind in windows:
    assert levels[f"{kind}-dark.png"] < levels[f"{kind}-light.png"], f"{kind}: dark is not darker"
