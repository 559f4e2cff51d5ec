#!/usr/bin/env python3
"""compare_image.py SHOT IMAGE [WIDTH HEIGHT]: the screenshot SHOT (any format
ImageMagick reads) against IMAGE (a 24 or 32-bit TGA or BMP of ours)
stretched over WIDTH by HEIGHT pixels (1024 by 768) with linear filtering.
Prints the mean difference per channel and exits 1 when it is above 3, or
when more than 1 % of the sampled pixels differ by more than 24."""
import struct
import subprocess
import sys


def read_shot(path):
    data = subprocess.run(["convert", path, "-depth", "8", "ppm:-"], capture_output=True, check=True).stdout
    parts = data.split(maxsplit=4)  # P6, width, height, maximum, pixels
    width, height = int(parts[1]), int(parts[2])
    return width, height, parts[4][: width * height * 3]


def read_image(path):
    """Rows top first, each pixel (r, g, b)."""
    data = open(path, "rb").read()
    if data[:2] == b"BM":
        offset = struct.unpack_from("<I", data, 10)[0]
        width, height = struct.unpack_from("<ii", data, 18)
        bits = struct.unpack_from("<H", data, 28)[0]
        step = bits // 8
        stride = (width * step + 3) & ~3
        rows = []
        for row in range(abs(height)):
            y = row if height < 0 else abs(height) - 1 - row
            base = offset + y * stride
            rows.append([(data[base + x * step + 2], data[base + x * step + 1], data[base + x * step])
                         for x in range(width)])
        return width, abs(height), rows
    width, height, bits, descriptor = struct.unpack_from("<HHBB", data, 12)
    step = bits // 8
    top_first = descriptor & 0x20
    rows = []
    for row in range(height):
        y = row if top_first else height - 1 - row
        base = 18 + data[0] + y * width * step
        rows.append([(data[base + x * step + 2], data[base + x * step + 1], data[base + x * step])
                     for x in range(width)])
    return width, height, rows


def sample(rows, width, height, u, v):
    """Linear filtering at texel coordinates (u, v), texel centres at +0.5."""
    u, v = u - 0.5, v - 0.5
    x0, y0 = max(0, min(width - 1, int(u // 1))), max(0, min(height - 1, int(v // 1)))
    x1, y1 = min(width - 1, x0 + 1), min(height - 1, y0 + 1)
    fx, fy = max(0.0, min(1.0, u - x0)), max(0.0, min(1.0, v - y0))
    out = []
    for c in range(3):
        top = rows[y0][x0][c] * (1 - fx) + rows[y0][x1][c] * fx
        bottom = rows[y1][x0][c] * (1 - fx) + rows[y1][x1][c] * fx
        out.append(top * (1 - fy) + bottom * fy)
    return out


def main():
    shot, image = sys.argv[1], sys.argv[2]
    target_w = int(sys.argv[3]) if len(sys.argv) > 3 else 1024
    target_h = int(sys.argv[4]) if len(sys.argv) > 4 else 768
    sw, sh, pixels = read_shot(shot)
    iw, ih, rows = read_image(image)
    total, count, far = 0.0, 0, 0
    for y in range(2, min(sh, target_h) - 2, 7):
        for x in range(2, min(sw, target_w) - 2, 7):
            want = sample(rows, iw, ih, (x + 0.5) * iw / target_w, (y + 0.5) * ih / target_h)
            base = (y * sw + x) * 3
            diff = max(abs(pixels[base + c] - want[c]) for c in range(3))
            total += sum(abs(pixels[base + c] - want[c]) for c in range(3)) / 3
            count += 1
            far += diff > 24
    mean = total / count
    print("mean difference %.2f over %d samples, %d far off" % (mean, count, far))
    sys.exit(0 if mean <= 3 and far <= count // 100 else 1)


if __name__ == "__main__":
    main()
