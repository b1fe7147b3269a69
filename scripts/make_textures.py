#!/usr/bin/env python3
"""Makes the textures of banners: data/generators/textures.png, 16 tiles of 64 x 64 pixels below each other.

Each tile goes on without a seam on all sides. The same bytes come out on every machine."""
import math
import pathlib
import struct
import zlib

SIDE = 64
NAMES = ("Brick", "Canvas", "Checker", "Clouds", "Fire", "Gold", "Granite", "Grass", "Marble", "Metal", "Paper",
         "Rainbow", "Sand", "Steel", "Water", "Wood")


def chance(x, y, seed):
    """0 to 1, by place."""
    n = (x * 374761393 + y * 668265263 + seed * 2147483647 + 12345) & 0xFFFFFFFF
    n = ((n ^ (n >> 13)) * 1274126177) & 0xFFFFFFFF
    return ((n ^ (n >> 16)) & 0xFFFF) / 65535


def noise(x, y, across, down, seed):
    """Smooth noise with so many cells to a side, which repeats after one."""
    u, v = x * across / SIDE, y * down / SIDE
    i, j = math.floor(u), math.floor(v)
    fade = lambda t: t * t * (3 - 2 * t)
    a, b = fade(u - i), fade(v - j)
    at = lambda p, q: chance((i + p) % across, (j + q) % down, seed)
    return (at(0, 0) * (1 - a) + at(1, 0) * a) * (1 - b) + (at(0, 1) * (1 - a) + at(1, 1) * a) * b


def layers(x, y, across, down, seed, octaves=4):
    total = weight = 0
    for o in range(octaves):
        total += noise(x, y, across << o, down << o, seed + o) / (1 << o)
        weight += 1 / (1 << o)
    return total / weight


def ramp(t, *colors):
    t = min(max(t, 0), 1) * (len(colors) - 1)
    i = min(int(t), len(colors) - 2)
    return tuple(a + (b - a) * (t - i) for a, b in zip(colors[i], colors[i + 1]))


def shade(color, factor):
    return tuple(c * factor for c in color)


def contrast(t, by):
    return 0.5 + (t - 0.5) * by


def wave(t):
    return 0.5 + 0.5 * math.sin(2 * math.pi * t)


def brick(x, y):
    row = y // 16
    u, v = (x + (16 if row % 2 else 0)) % 32, y % 16
    if u < 2 or v < 2:
        return shade((205, 198, 186), 0.88 + 0.2 * noise(x, y, 32, 32, 3))
    which = chance(((x + (16 if row % 2 else 0)) // 32) % 2, row, 5)
    edge = 1.14 if u == 2 or v == 2 else 0.8 if u == 31 or v == 15 else 1
    return shade(ramp(which, (156, 58, 42), (190, 84, 58)), edge * (0.86 + 0.28 * noise(x, y, 32, 32, 4)))


def canvas(x, y):
    over = (x // 4 + y // 4) % 2
    along = (y if over else x) % 4
    return shade((214, 198, 164), (0.8 + 0.24 * math.sin(math.pi * (along + 0.5) / 4)) * (0.94 + 0.12 * noise(x, y, 32, 32, 1)))


def checker(x, y):
    return (32, 36, 44) if (x // 16 + y // 16) % 2 else (242, 240, 234)


def clouds(x, y):
    return ramp(contrast(layers(x, y, 2, 2, 11, 5), 2.2), (64, 126, 206), (128, 180, 232), (240, 246, 252), (255, 255, 255))


def fire(x, y):
    t = layers(x, y, 4, 2, 21, 4)
    return ramp(contrast(t, 2.4), (92, 8, 0), (196, 32, 0), (244, 110, 8), (254, 196, 48), (255, 246, 176))


def gold(x, y):
    t = wave((x + y) / 64 + 0.35 * noise(x, y, 2, 2, 31))
    return shade(ramp(t, (132, 88, 14), (212, 164, 40), (255, 238, 150)), 0.96 + 0.08 * chance(x, y, 32))


def granite(x, y):
    grain = chance(x, y, 41)
    base = ramp(layers(x, y, 8, 8, 42, 3), (92, 90, 94), (176, 170, 168))
    return (40, 38, 42) if grain < 0.07 else (226, 216, 210) if grain > 0.94 else (176, 128, 116) if grain > 0.86 else base


def grass(x, y):
    blade = noise(x, y, 32, 8, 51) * 0.6 + layers(x, y, 4, 4, 52, 2) * 0.4
    return ramp(contrast(blade, 1.9), (20, 66, 16), (52, 124, 30), (118, 182, 52), (186, 220, 96))


def marble(x, y):
    t = wave((x + 2 * y) / 64 + 1.1 * layers(x, y, 2, 2, 61, 4))
    return ramp(t ** 3, (250, 248, 244), (226, 224, 222), (150, 148, 154))


def metal(x, y):
    u, v = x % 32, y % 32
    away = math.hypot(u - 15.5, v - 15.5)
    if away < 6:
        return shade((196, 200, 206), 1.18 - 0.06 * (u + v - 22))
    if away < 7.5:
        return (84, 88, 96)
    line = 1.18 if u == 0 or v == 0 else 0.66 if u == 31 or v == 31 else 1
    return shade((136, 142, 150), line * (0.95 + 0.1 * noise(x, y, 32, 32, 71)))


def paper(x, y):
    return ramp(contrast(layers(x, y, 16, 16, 81, 3), 1.4), (224, 212, 184), (250, 244, 228))


def rainbow(x, y):
    colors = ((232, 54, 54), (244, 150, 38), (246, 222, 60), (76, 184, 76), (52, 128, 220), (140, 76, 196), (232, 54, 54))
    return ramp(x / SIDE, *colors)


def sand(x, y):
    dune = wave(y / 16 + 0.4 * noise(x, y, 4, 4, 91))
    return shade(ramp(dune, (206, 172, 116), (238, 212, 160)), 0.9 + 0.18 * chance(x, y, 92))


def steel(x, y):
    brushed = noise(x, y, 2, 64, 101) * 0.7 + noise(x, y, 8, 64, 102) * 0.3
    return shade(ramp(wave(x / 64), (126, 134, 146), (214, 220, 228)), 0.86 + 0.28 * brushed)


def water(x, y):
    t = abs(noise(x, y, 4, 4, 111) - noise(x, y, 4, 4, 112)) * 2
    return ramp(1 - min(t * 2.2, 1), (14, 84, 156), (30, 124, 190), (112, 196, 226), (224, 246, 252))


def wood(x, y):
    ring = wave(x / 16 + 0.8 * layers(x, y, 2, 1, 121, 2))
    grain = noise(x, y, 64, 4, 122)
    return shade(ramp(ring, (112, 66, 32), (166, 106, 56), (196, 138, 80)), 0.86 + 0.26 * grain)


def rows():
    for name in NAMES:
        draw = globals()[name.lower()]
        for y in range(SIDE):
            # Few steps of a channel, which no eye tells apart, pack well.
            row = b"".join(bytes(min(max(round(c / 6) * 6, 0), 255) for c in draw(x, y)) for x in range(SIDE))
            yield b"\0" + row


def chunk(tag, data):
    return struct.pack(">I", len(data)) + tag + data + struct.pack(">I", zlib.crc32(tag + data))


header = struct.pack(">IIBBBBB", SIDE, SIDE * len(NAMES), 8, 2, 0, 0, 0)
png = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(b"".join(rows()), 9)) + chunk(b"IEND", b"")
out = pathlib.Path(__file__).resolve().parent.parent / "data" / "generators" / "textures.png"
out.parent.mkdir(exist_ok=True)
out.write_bytes(png)
