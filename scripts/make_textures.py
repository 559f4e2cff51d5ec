#!/usr/bin/env python3
"""Writes the sample textures below resources/intermediate/samples/.

Every picture is a formula of the pixel position, so that tests can tell
what each file must decode to. The files are committed; run this again only
to change them: python3 scripts/make_textures.py
"""
import os
import struct

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "resources", "intermediate", "samples")

TGA_WIDTH, TGA_HEIGHT = 16, 8
BMP_WIDTH, BMP_HEIGHT = 13, 5  # not a multiple of 4 or 32: rows carry padding


def tga_pixel(x, y):
    """Red, green, blue, alpha of the TGA picture; y = 0 is the top row."""
    return (x * 16) & 255, (y * 32) & 255, (x * y * 7) & 255, (255 - x * 8) & 255


def palette_entry(i):
    """The four stored bytes of palette entry i: blue, green, red, alpha."""
    return (i * 37) & 255, (i * 91 + 7) & 255, (i * 53 + 11) & 255, (i * 5) & 255


def palette_index(x, y, bits):
    return (x + y * 3) % (1 << bits)


def rgb_pixel(x, y):
    """Red, green, blue of the 24-bit picture; y = 0 is the top row."""
    return ((x + y) * 10) & 255, (y * 50) & 255, (x * 19) & 255


def write(name, data):
    with open(os.path.join(ROOT, name), "wb") as out:
        out.write(data)


def make_tga(top_first):
    descriptor = 8 | (0x20 if top_first else 0)  # 8 alpha bits; bit 5: top row first
    header = struct.pack("<BBBHHBHHHHBB", 0, 0, 2, 0, 0, 0, 0, 0, TGA_WIDTH, TGA_HEIGHT, 32, descriptor)
    rows = range(TGA_HEIGHT) if top_first else reversed(range(TGA_HEIGHT))
    body = bytearray()
    for y in rows:
        for x in range(TGA_WIDTH):
            r, g, b, a = tga_pixel(x, y)
            body += bytes((b, g, r, a))
    return header + bytes(body)


def bmp_row(y, bits):
    row = bytearray()
    if bits == 24:
        for x in range(BMP_WIDTH):
            r, g, b = rgb_pixel(x, y)
            row += bytes((b, g, r))
    else:
        indices = [palette_index(x, y, bits) for x in range(BMP_WIDTH)]
        per_byte = 8 // bits
        for start in range(0, BMP_WIDTH, per_byte):
            value = 0
            for k in range(per_byte):
                index = indices[start + k] if start + k < BMP_WIDTH else 0
                value |= index << (8 - bits * (k + 1))
            row.append(value)
    while len(row) % 4:
        row.append(0)
    return bytes(row)


def make_bmp(bits, top_down):
    palette = b""
    if bits <= 8:
        palette = b"".join(bytes(palette_entry(i)) for i in range(1 << bits))
    rows = range(BMP_HEIGHT) if top_down else reversed(range(BMP_HEIGHT))
    pixels = b"".join(bmp_row(y, bits) for y in rows)
    offset = 14 + 40 + len(palette)
    height = -BMP_HEIGHT if top_down else BMP_HEIGHT
    file_header = struct.pack("<2sIHHI", b"BM", offset + len(pixels), 0, 0, offset)
    info = struct.pack("<IiiHHIIiiII", 40, BMP_WIDTH, height, 1, bits, 0, len(pixels), 2835, 2835,
                       len(palette) // 4, 0)
    return file_header + info + palette + pixels


def main():
    os.makedirs(ROOT, exist_ok=True)
    write("tga32_top.tga", make_tga(True))
    write("tga32_bottom.tga", make_tga(False))
    for bits in (1, 4, 8, 24):
        write("bmp%d_up.bmp" % bits, make_bmp(bits, False))
        write("bmp%d_down.bmp" % bits, make_bmp(bits, True))


if __name__ == "__main__":
    main()
