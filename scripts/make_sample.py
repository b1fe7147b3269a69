#!/usr/bin/env python3
"""Draws data/samples/welcome.png, the animated PNG that ./run.sh opens: a pen stroke that writes itself on vellum.

usage: make_sample.py OUT        (needs nothing but Python)
"""
import math
import struct
import sys
import zlib

WIDTH, HEIGHT, FRAMES = 224, 132, 24
INK, LEAF, EDGE = (46, 38, 92), (250, 243, 226), (222, 206, 170)


def chunk(tag, payload):
    return struct.pack('>I', len(payload)) + tag + payload + struct.pack('>I', zlib.crc32(tag + payload))


def coverage(distance):
    """How much of a pixel a shape covers whose edge is this far from the pixel's middle (negative: inside)."""
    return min(1.0, max(0.0, 0.5 - distance))


def mix(below, above, amount):
    return tuple(b + (a - b) * amount for b, a in zip(below, above))


def leaf(x, y):
    """Distance from a sheet with round corners, 10 pixels inside the picture."""
    dx = max(abs(x - WIDTH / 2) - (WIDTH / 2 - 24), 0)
    dy = max(abs(y - HEIGHT / 2) - (HEIGHT / 2 - 24), 0)
    return math.hypot(dx, dy) - 14


def curve(t):
    """The pen stroke: a wave that grows, t from 0 to 1."""
    return 34 + 150 * t, HEIGHT / 2 + 6 + math.sin(t * 4.2 * math.pi) * (12 + 22 * t) - 10 * t


def stroke(points, x, y):
    """Distance from the drawn part of the stroke; thicker where the pen moves down."""
    best = 1e9
    for px, py, radius in points:
        best = min(best, math.hypot(x - px, y - py) - radius)
    return best


def frame(number):
    shown = int((number + 1) / (FRAMES - 4) * 120) if number < FRAMES - 4 else 120
    points = []
    for i in range(min(shown, 120)):
        x, y = curve(i / 119)
        _, ahead = curve((i + 1) / 119)
        points.append((x, y, 2.2 + max(0.0, ahead - y) * 0.9))
    rows = bytearray()
    for y in range(HEIGHT):
        rows.append(0)
        for x in range(WIDTH):
            d = leaf(x + 0.5, y + 0.5)
            color = mix(EDGE, LEAF, coverage(d + 2.0))
            near = [p for p in points if abs(p[0] - x) < 9 and abs(p[1] - y) < 9]
            if near:
                color = mix(color, INK, coverage(stroke(near, x + 0.5, y + 0.5)))
            rows += bytes(int(c + 0.5) for c in color) + bytes([int(255 * coverage(d) + 0.5)])
    return zlib.compress(bytes(rows), 9)


def main(out):
    data = b'\x89PNG\r\n\x1a\n'
    data += chunk(b'IHDR', struct.pack('>IIBBBBB', WIDTH, HEIGHT, 8, 6, 0, 0, 0))
    data += chunk(b'acTL', struct.pack('>II', FRAMES, 0))
    data += chunk(b'gAMA', struct.pack('>I', 45455))
    data += chunk(b'tEXt', b'Title\0A stroke of the pen')
    data += chunk(b'zTXt', b'Comment\0\0' + zlib.compress(b'Drawn by the program that comes with it.'))
    sequence = 0
    for number in range(FRAMES):
        delay = 120 if number == FRAMES - 1 else 6
        data += chunk(b'fcTL', struct.pack('>IIIIIHHBB', sequence, WIDTH, HEIGHT, 0, 0, delay, 100, 0, 0))
        sequence += 1
        image = frame(number)
        if number == 0:
            data += chunk(b'IDAT', image)
        else:
            data += chunk(b'fdAT', struct.pack('>I', sequence) + image)
            sequence += 1
    data += chunk(b'tIME', struct.pack('>HBBBBB', 2026, 11, 21, 12, 0, 0)) + chunk(b'IEND', b'')
    with open(out, 'wb') as file:
        file.write(data)


if __name__ == '__main__':
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
