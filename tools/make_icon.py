#!/usr/bin/env python3
"""Draws resources/launcher.ico: a teal tile with a white "start" triangle, 16 to 256 pixels.

All sizes are stored as PNG, which Windows reads since Vista, to keep the program small.
Run again only when the drawing changes; the result is kept under version control.
"""
import pathlib
import struct
import zlib

TILE, MARK = (0x0F, 0x6E, 0x78), (0xFF, 0xFF, 0xFF)
SAMPLES = 4


def covered(x, y):
    """The colour at a point of the unit square, or None outside the tile's rounded corners."""
    radius = 0.2
    dx = max(radius - x, x - (1 - radius), 0)
    dy = max(radius - y, y - (1 - radius), 0)
    if dx * dx + dy * dy > radius * radius:
        return None
    left, right, half = 0.36, 0.74, 0.26
    if left <= x <= right and abs(y - 0.5) <= half * (right - x) / (right - left):
        return MARK
    return TILE


def pixels(size):
    rows = []
    for py in range(size):
        row = []
        for px in range(size):
            hits = [covered((px + (i + 0.5) / SAMPLES) / size, (py + (j + 0.5) / SAMPLES) / size)
                    for i in range(SAMPLES) for j in range(SAMPLES)]
            hits = [hit for hit in hits if hit]
            alpha = 255 * len(hits) // SAMPLES ** 2
            colour = tuple(sum(hit[k] for hit in hits) // len(hits) for k in range(3)) if hits else (0, 0, 0)
            row.append((*colour, alpha))
        rows.append(row)
    return rows


def png(size):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    raw = b"".join(b"\0" + b"".join(bytes(pixel) for pixel in row) for row in pixels(size))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def main():
    images = [(size, png(size)) for size in (16, 32, 48, 256)]
    offset = 6 + 16 * len(images)
    directory, data = struct.pack("<HHH", 0, 1, len(images)), b""
    for size, image in images:
        directory += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(image), offset + len(data))
        data += image
    target = pathlib.Path(__file__).resolve().parent.parent / "resources" / "launcher.ico"
    target.write_bytes(directory + data)


if __name__ == "__main__":
    main()
