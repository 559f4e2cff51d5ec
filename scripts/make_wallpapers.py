#!/usr/bin/env python3
"""Writes the sample wallpapers below resources/intermediate/wallpapers/.

Each picture is 256 by 192 (the window's 4:3) and a smooth formula of the
pixel position, so that a screenshot of it stretched to the window can be
compared with the same formula: tests/window/wallpaper.sh does. The files
are committed; run this again only to change them:
python3 scripts/make_wallpapers.py
"""
import math
import os
import struct

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "resources", "intermediate", "wallpapers")
WIDTH, HEIGHT = 256, 192


def dusk(x, y):
    """A sky from deep blue at the top to orange at the bottom."""
    t = y / (HEIGHT - 1)
    return int(20 + 215 * t), int(30 + 110 * t), int(120 - 80 * t)


def sea(x, y):
    """Soft diagonal bands of blue and green."""
    wave = 0.5 + 0.5 * math.sin((x + y) * 2 * math.pi / 128)
    return int(10 + 30 * wave), int(90 + 80 * wave), int(150 + 80 * (1 - wave))


def meadow(x, y):
    """Green fading to yellow from left to right, lighter towards the top."""
    s, t = x / (WIDTH - 1), y / (HEIGHT - 1)
    return int(60 + 170 * s), int(200 - 60 * t), int(40 + 30 * (1 - t))


def make_tga(pixel):
    # 32 bits, alpha 8, top row first.
    header = struct.pack("<BBBHHBHHHHBB", 0, 0, 2, 0, 0, 0, 0, 0, WIDTH, HEIGHT, 32, 8 | 0x20)
    body = bytearray()
    for y in range(HEIGHT):
        for x in range(WIDTH):
            r, g, b = pixel(x, y)
            body += bytes((b, g, r, 255))
    return header + bytes(body)


def make_bmp(pixel):
    # 24 bits, bottom row first; 256 * 3 bytes need no row padding.
    rows = bytearray()
    for y in reversed(range(HEIGHT)):
        for x in range(WIDTH):
            r, g, b = pixel(x, y)
            rows += bytes((b, g, r))
    offset = 14 + 40
    file_header = struct.pack("<2sIHHI", b"BM", offset + len(rows), 0, 0, offset)
    info = struct.pack("<IiiHHIIiiII", 40, WIDTH, HEIGHT, 1, 24, 0, len(rows), 2835, 2835, 0, 0)
    return file_header + info + bytes(rows)


def main():
    os.makedirs(ROOT, exist_ok=True)
    for name, data in (("dusk.tga", make_tga(dusk)), ("sea.tga", make_tga(sea)), ("meadow.bmp", make_bmp(meadow))):
        with open(os.path.join(ROOT, name), "wb") as out:
            out.write(data)


if __name__ == "__main__":
    main()
