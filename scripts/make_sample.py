#!/usr/bin/env python3
"""Draws data/samples/welcome.png, the animated PNG that ./run.sh opens: a boat folded of a sheet, at sunset.

usage: make_sample.py FOLDER_OF_PROGRAMS OUT

The frames are drawn here, with nothing but Python; `vellum` makes the animation of them.
"""
import math
import struct
import subprocess
import sys
import tempfile
import zlib
from pathlib import Path

WIDTH, HEIGHT, FRAMES, DELAY = 288, 168, 24, 80
SAMPLES = 3  # a side, of each pixel
HORIZON = 92
SKY = [(0, (38, 34, 84)), (34, (98, 62, 132)), (64, (214, 98, 116)), (86, (252, 164, 94)), (HORIZON, (255, 210, 130))]
SUN, SUN_RADIUS, SUN_COLOR = (206, 84), 22, (255, 240, 190)
# From the back: height of the rest, swing, crests across the picture, steps of a crest in all frames, color.
WAVES = [(HORIZON + 4, 1.5, 5, 1, (198, 92, 120)), (HORIZON + 18, 3.0, 4, -1, (132, 70, 132)),
         (HORIZON + 36, 4.0, 3, 1, (78, 56, 118)), (HORIZON + 56, 5.0, 2, -1, (44, 40, 92))]
BOAT_WAVE, BOAT_X = 2, 104
PAPER, FOLD, SHADE = (252, 246, 232), (226, 212, 190), (196, 176, 158)
# Parts of the boat around the middle of its water line, upwards negative.
BOAT = [([(-44, -15), (0, -2), (0, 13), (-26, 13)], PAPER), ([(44, -15), (0, -2), (0, 13), (26, 13)], FOLD),
        ([(0, -38), (-20, -6), (0, -2)], FOLD), ([(0, -38), (20, -6), (0, -2)], SHADE)]
STARS = [(20, 14), (52, 30), (84, 10), (118, 24), (150, 8), (178, 32), (244, 12), (270, 30), (34, 46), (226, 40)]


def mix(a, b, share):
    return tuple(x + (y - x) * share for x, y in zip(a, b))


def sky(x, y):
    color = SKY[-1][1]
    for (top, above), (bottom, below) in zip(SKY, SKY[1:]):
        if y < bottom:
            color = mix(above, below, max(0.0, y - top) / (bottom - top))
            break
    away = math.hypot(x - SUN[0], y - SUN[1])
    if away < SUN_RADIUS:
        return SUN_COLOR
    return mix(color, SUN_COLOR, 0.5 * max(0.0, 1 - (away - SUN_RADIUS) / 60) ** 2)


def wave_top(wave, x, frame):
    rest, swing, crests, steps, _ = WAVES[wave]
    turn = 2 * math.pi * (crests * x / WIDTH + steps * frame / FRAMES)
    return rest + swing * (math.sin(turn) + 0.3 * math.sin(2 * turn + wave))


def inside(corners, x, y):
    result = False
    for (ax, ay), (bx, by) in zip(corners, corners[1:] + corners[:1]):
        if (ay > y) != (by > y) and x < ax + (y - ay) * (bx - ax) / (by - ay):
            result = not result
    return result


def boat_at(frame):
    """Its parts where they stand: lifted and turned by the wave that carries it."""
    lift = wave_top(BOAT_WAVE, BOAT_X, frame) - 4
    turn = math.atan2(wave_top(BOAT_WAVE, BOAT_X + 20, frame) - wave_top(BOAT_WAVE, BOAT_X - 20, frame), 40)
    sine, cosine = math.sin(turn), math.cos(turn)
    return [([(BOAT_X + x * cosine - y * sine, lift + x * sine + y * cosine) for x, y in corners], color)
            for corners, color in BOAT]


def frame_rows(frame, ground):
    boat = boat_at(frame)
    rows = bytearray()
    for y in range(HEIGHT):
        rows.append(0)
        for x in range(WIDTH):
            if y < 40:
                rows += ground[y][x]
                continue
            sums = [0.0, 0.0, 0.0]
            for i in range(SAMPLES):
                for j in range(SAMPLES):
                    px, py = x + (i + 0.5) / SAMPLES, y + (j + 0.5) / SAMPLES
                    color = ground[y][x]
                    for wave in range(len(WAVES)):
                        if wave == BOAT_WAVE and abs(px - BOAT_X) < 60:
                            for corners, paper in boat:
                                if inside(corners, px, py):
                                    color = paper
                        top = wave_top(wave, px, frame)
                        if py >= top:
                            color = WAVES[wave][4]
                            # The sun lies on the water, broken by the waves.
                            if abs(px - SUN[0]) < 16 - 3 * wave and int(py - top) % 5 == 0:
                                color = mix(color, SUN_COLOR, 0.55 - 0.1 * wave)
                    for c in range(3):
                        sums[c] += color[c]
            rows += bytes(int(value / SAMPLES**2 + 0.5) for value in sums)
    return bytes(rows)


def still_ground():
    rows = []
    for y in range(HEIGHT):
        row = []
        for x in range(WIDTH):
            color = sky(x + 0.5, min(y, HORIZON) + 0.5)
            for sx, sy in STARS:
                color = mix(color, (255, 255, 255), max(0.0, 0.9 - 0.45 * math.hypot(x - sx, y - sy)))
            row.append(bytes(int(value + 0.5) for value in color))
        rows.append(row)
    return rows


def chunk(tag, payload):
    return struct.pack('>I', len(payload)) + tag + payload + struct.pack('>I', zlib.crc32(tag + payload))


def png(rows):
    header = struct.pack('>IIBBBBB', WIDTH, HEIGHT, 8, 2, 0, 0, 0)
    return (b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', header) + chunk(b'IDAT', zlib.compress(rows, 6)) + chunk(b'IEND', b''))


def main(programs, out):
    vellum = str(Path(programs) / 'vellum')
    quiet = [vellum, '--quiet', '--set', 'AutoUpdateTime=0', '--set', 'IdentifyFiles=0']
    with tempfile.TemporaryDirectory() as folder:
        ground = still_ground()
        files = []
        for number in range(FRAMES):
            files.append(f'{folder}/{number:02}.png')
            Path(files[-1]).write_bytes(png(frame_rows(number, ground)))
        made = f'{folder}/made.png'
        subprocess.run(quiet + ['build', '-o', made, '--delay', str(DELAY), '--plays', '0'] + files, check=True)
        subprocess.run(quiet + ['supercompress', made, made, '--all'], check=True)
        subprocess.run(quiet + ['edit', made, out, '--insert', 'gAMA@1', '--insert', 'tEXt@2:Title=A boat of vellum',
                                '--insert', 'zTXt@3:Comment=Every line of this list is a chunk of the file. A double click '
                                'shows what is in it; F7, F8 and F9 show how the document plays, its frames side by side, '
                                'and what the selected line holds.'], check=True)


main(sys.argv[1], sys.argv[2])
