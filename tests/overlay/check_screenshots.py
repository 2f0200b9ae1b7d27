#!/usr/bin/env python3
"""Saves the overlay's screenshots (tools/screenshots.sh) and checks that each is a real picture
of the panel: a PNG of the panel's size on the 1440 x 900 test screen, not blank."""
import struct
import subprocess
import sys
import zlib
from pathlib import Path

root, build, out = Path(sys.argv[1]), Path(sys.argv[2]), Path(sys.argv[3])
subprocess.run([root / "tools/screenshots.sh", build, out], check=True)

expected = {f"{kind}-{palette}.png" for kind in ("peeking", "pinned-search", "favorites", "loading")
            for palette in ("light", "dark")}
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


for name in sorted(expected):
    width, height, depth, colour, raw = pixels(out / name)
    assert (width, height) == (940, 640), f"{name}: {width} x {height}, not 940 x 640"
    distinct = len(set(raw[i:i + 4] for i in range(0, len(raw), 4)))
    assert distinct > 50, f"{name}: looks blank ({distinct} distinct samples)"
    print(f"{name}: {width} x {height}, {distinct} distinct samples")
