#!/usr/bin/env python3
"""Draws the application icon: a phase-distorted cosine on a dark rounded square.

Usage: draw_icon.py OUT.png [SIZE]   (standard library only; SIZE defaults to 1024)
"""
import math
import struct
import sys
import zlib


def lerp(a, b, t):
    return a + (b - a) * t


def pd_wave(phase, knee):
    # The phase runs fast up to the knee and slowly after it, which bends a cosine towards a saw.
    phase -= math.floor(phase)
    if phase < knee:
        warped = 0.5 * phase / knee
    else:
        warped = 0.5 + 0.5 * (phase - knee) / (1.0 - knee)
    return math.cos(2.0 * math.pi * warped)


def rounded_square_coverage(x, y, size, radius):
    # Signed distance to a rounded square, turned into pixel coverage for a soft edge.
    half = size / 2.0
    qx = abs(x - half) - (half - radius)
    qy = abs(y - half) - (half - radius)
    outside = math.hypot(max(qx, 0.0), max(qy, 0.0))
    inside = min(max(qx, qy), 0.0)
    d = outside + inside - radius
    return min(max(0.5 - d, 0.0), 1.0)


def main():
    if len(sys.argv) < 2:
        sys.exit("usage: draw_icon.py OUT.png [SIZE]")
    out = sys.argv[1]
    size = int(sys.argv[2]) if len(sys.argv) > 2 else 1024
    s = size / 1024.0

    top, bottom = (0x22, 0x26, 0x3a), (0x10, 0x12, 0x1c)
    pixels = bytearray(size * size * 4)
    radius = 200 * s
    for y in range(size):
        t = y / (size - 1)
        colour = [int(lerp(top[i], bottom[i], t)) for i in range(3)]
        row = y * size * 4
        for x in range(size):
            a = rounded_square_coverage(x + 0.5, y + 0.5, size, radius)
            if a > 0.0:
                o = row + x * 4
                pixels[o:o + 4] = bytes((colour[0], colour[1], colour[2], int(a * 255 + 0.5)))

    # Stroke coverage, stamped as discs along the curve: a wide faint glow, then the line itself.
    glow = [0.0] * (size * size)
    line = [0.0] * (size * size)
    left, right = 150 * s, 874 * s
    mid, amp = 512 * s, 250 * s

    def stamp(buf, cx, cy, r, strength, soft=False):
        x0, x1 = max(int(cx - r - 1), 0), min(int(cx + r + 2), size)
        y0, y1 = max(int(cy - r - 1), 0), min(int(cy + r + 2), size)
        for py in range(y0, y1):
            dy = py + 0.5 - cy
            base = py * size
            for px in range(x0, x1):
                d = math.hypot(px + 0.5 - cx, dy)
                if soft:
                    c = max(1.0 - d / r, 0.0) ** 2 * strength
                else:
                    c = min(max(r + 0.5 - d, 0.0), 1.0) * strength
                if c > buf[base + px]:
                    buf[base + px] = c

    steps = int(3000 * s) + 200
    for i in range(steps + 1):
        u = i / steps
        x = lerp(left, right, u)
        y = mid - amp * pd_wave(2.0 * u, 0.12) * (1.0 - 0.25 * u)
        stamp(glow, x, y, 60 * s, 0.35, soft=True)
    for i in range(steps * 2 + 1):
        u = i / (steps * 2)
        x = lerp(left, right, u)
        y = mid - amp * pd_wave(2.0 * u, 0.12) * (1.0 - 0.25 * u)
        stamp(line, x, y, 20 * s, 1.0)

    warm, hot = (0xff, 0xb3, 0x47), (0xff, 0x5e, 0x7a)
    for y in range(size):
        for x in range(size):
            i = y * size + x
            g, l = glow[i], line[i]
            if g <= 0.0 and l <= 0.0:
                continue
            o = i * 4
            if pixels[o + 3] == 0:
                continue
            t = x / (size - 1)
            stroke = [lerp(warm[k], hot[k], t) for k in range(3)]
            for k in range(3):
                v = lerp(pixels[o + k], stroke[k], g)
                v = lerp(v, stroke[k], l)
                pixels[o + k] = int(min(max(v, 0.0), 255.0) + 0.5)

    raw = bytearray()
    for y in range(size):
        raw.append(0)
        raw.extend(pixels[y * size * 4:(y + 1) * size * 4])

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xffffffff)

    png = b"\x89PNG\r\n\x1a\n"
    png += chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0))
    png += chunk(b"IDAT", zlib.compress(bytes(raw), 9))
    png += chunk(b"IEND", b"")
    with open(out, "wb") as f:
        f.write(png)


if __name__ == "__main__":
    main()
