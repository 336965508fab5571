#!/usr/bin/env python3
"""Generates the pictures in this folder, using only Python's standard library.

Every run writes the same pixels. A picture is computed at twice its size and averaged down for smooth
edges. Colours are triples from 0 to 1, coordinates run from 0 to 480 and 320.
"""

import math
import pathlib
import struct
import zlib

WIDTH, HEIGHT = 480, 320
FOLDER = pathlib.Path(__file__).resolve().parent / "pictures"


def write_png(name, pixels, channels):
    """Writes 8-bit rows of 3 or 4 channels; pixels is one tuple for each pixel, from the top."""
    rows = bytearray()
    previous = bytes(WIDTH * channels)
    for y in range(HEIGHT):
        row = bytes(v for pixel in pixels[y * WIDTH:(y + 1) * WIDTH] for v in pixel)
        rows.append(2)  # the filter "up" stores differences to the row above
        rows += bytes((v - above) & 255 for v, above in zip(row, previous))
        previous = row

    def chunk(kind, data):
        check = zlib.crc32(kind + data)
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", check)

    header = struct.pack(">IIBBBBB", WIDTH, HEIGHT, 8, 2 if channels == 3 else 6, 0, 0, 0)
    FOLDER.mkdir(exist_ok=True)
    (FOLDER / name).write_bytes(
        b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
        + chunk(b"IDAT", zlib.compress(bytes(rows), 9)) + chunk(b"IEND", b""))


def smoothed(paint):
    """Averages 2 by 2 samples for each pixel, with colours weighted by alpha."""
    pixels = []
    for y in range(HEIGHT):
        for x in range(WIDTH):
            parts = [paint(x + dx, y + dy) for dy in (0.25, 0.75) for dx in (0.25, 0.75)]
            alpha = sum(p[3] for p in parts)
            color = [sum(p[i] * p[3] for p in parts) / alpha if alpha else 0 for i in range(3)]
            pixels.append(tuple(round(255 * min(max(v, 0), 1)) for v in (*color, alpha / 4)))
    return pixels


def mix(a, b, t):
    t = min(max(t, 0.0), 1.0)
    return tuple(p + (q - p) * t for p, q in zip(a, b))


def ramp(stops, t):
    """The colour at t between stops (position, colour)."""
    for (p, a), (q, b) in zip(stops, stops[1:]):
        if t <= q:
            return mix(a, b, (t - p) / (q - p))
    return stops[-1][1]


def hills(x, base, height, seed):
    """The height of a row of hills at x, as a y coordinate."""
    waves = ((0.9, 97.0), (0.5, 41.0), (0.22, 17.0))
    return base - height * sum(a * math.sin(x / w + seed * (i + 1.7))
                               for i, (a, w) in enumerate(waves))


EVENING = ((0.0, (0.13, 0.17, 0.42)), (0.35, (0.45, 0.35, 0.62)), (0.62, (0.96, 0.55, 0.45)),
           (0.85, (1.0, 0.82, 0.50)), (1.0, (1.0, 0.93, 0.72)))


def sky(x, y):
    color = ramp(EVENING, y / 215)
    reach = math.hypot(x - 330, y - 128)
    color = mix(color, (1.0, 0.90, 0.62), 0.75 * math.exp(-reach / 55))
    return mix((1.0, 0.97, 0.84), color, (reach - 34) / 1.5)


def balloon(x, y, cx, cy, r):
    """A striped hot-air balloon, or None outside of it."""
    u, v = (x - cx) / r, (y - cy) / r
    if v > 0.55:
        u_edge = 0.87 * (1 - (v - 0.55) / 1.1)
        if 1.42 < v < 1.75 and abs(u) < 0.19:
            return (0.36, 0.20, 0.12) if int((v - 1.42) * 9) % 2 else (0.52, 0.31, 0.17)
        if 1.28 < v <= 1.42:
            return (0.25, 0.16, 0.12) if 0.13 < abs(u) < 0.17 else None
        if v > 1.28 or abs(u) > u_edge:
            return None
    elif u * u + v * v > 1:
        return None
    if v <= 0.55:
        width = math.sqrt(max(1 - v * v, 0.02))
    else:
        width = max(0.87 * (1 - (v - 0.55) / 1.1), 0.02)
    turn = math.asin(min(max(u / width, -1), 1)) / math.pi * 8 + 0.5
    stripe = ((0.88, 0.16, 0.20), (1.0, 0.96, 0.88), (0.10, 0.45, 0.62), (1.0, 0.78, 0.20))
    color = stripe[math.floor(turn) % 4]
    light = 0.66 + 0.42 * max(0.0, 1 - math.hypot(u - 0.35, v + 0.35) / 1.3)
    return tuple(c * light for c in color)


def house(x, y):
    """A white cottage with a checked roof, or None outside of it."""
    u, v = x - 96, y - 226
    if 0 <= u < 58 and 0 <= v < 36:
        if 23 <= u < 35 and v >= 14:
            return (0.42, 0.20, 0.16)
        if v > 9 and v < 22 and (6 <= u < 18 or 41 <= u < 53):
            cross = abs((u % 35) - 12) < 0.8 or abs(v - 15.5) < 0.8
            return (0.45, 0.30, 0.22) if cross else (1.0, 0.86, 0.42)
        return mix((0.80, 0.74, 0.72), (1.0, 0.95, 0.86), u / 58)
    if -26 <= v < 0 and abs(u - 29) < 36 + v * 0.75:
        return ((0.70, 0.22, 0.16), (0.86, 0.40, 0.24))[(int(u + 60) // 6 + int(v + 60) // 5) % 2]
    return None


def scene(x, y):
    color = sky(x, y)
    for base, height, seed, far, near in (
            (196, 22, 0.6, (0.62, 0.45, 0.62), (0.80, 0.56, 0.58)),
            (226, 17, 2.9, (0.30, 0.40, 0.46), (0.38, 0.50, 0.44)),
            (254, 12, 5.2, (0.24, 0.44, 0.22), (0.36, 0.58, 0.24))):
        top = hills(x, base, height, seed)
        if y > top:
            color = mix(near, far, (y - top) / 60)
    color = house(x, y) or color
    front = hills(x, 288, 8, 8.4)
    if y > front:
        # Rows of a field, with a vanishing point behind the hill.
        row = math.floor((x - 250) / (y - 238) * 5.0)
        color = ((0.85, 0.66, 0.24), (0.62, 0.44, 0.16))[row % 2]
        color = mix(color, (0.30, 0.20, 0.12), (y - front) / 90)
    color = balloon(x, y, 402, 64, 17) or balloon(x, y, 176, 92, 46) or color
    return (*color, 1.0)


def second(x, y):
    """Under water: light from above, bubbles, and a striped fish."""
    color = ramp(((0.0, (0.62, 0.95, 0.90)), (0.3, (0.12, 0.66, 0.76)), (0.7, (0.04, 0.32, 0.58)),
                  (1.0, (0.03, 0.10, 0.30))), y / HEIGHT)
    angle = math.atan2(x - 150, y + 90)
    beam = 0.5 + 0.5 * math.sin(angle * 26) * math.sin(angle * 11 + 1)
    color = mix(color, (0.85, 1.0, 0.92), 0.40 * beam * max(0.0, 1 - y / 300))
    floor = hills(x, 290, 6, 3.3)
    if y > floor:
        color = mix((0.90, 0.80, 0.52), (0.30, 0.38, 0.42), (y - floor) / 34)
    for i in range(9):
        sway = 8 * math.sin(y / 23 + i * 2.1)
        root = 24 + i * 13 + (i % 3) * 7 + (230 if i > 4 else 0)
        length = 70 + 31 * ((i * 5) % 4)
        up = 300 - y
        if 0 < up < length and abs(x - root - sway * up / length) < 5 * (1 - up / length) + 0.8:
            color = mix((0.05, 0.30, 0.20), (0.36, 0.72, 0.26), up / length)
    color = fish(x, y, 268, 158, 74) or fish(x, y, 96, 96, 30) or color
    for i in range(14):
        cx, cy, r = (37 * i * i + 60) % 470, (83 * i + 31) % 250, 3 + (i * 7) % 8
        reach = math.hypot(x - cx, y - cy) / r
        if reach < 1:
            shine = 0.15 + 0.6 * reach ** 4
            if math.hypot(x - cx + r * 0.35, y - cy + r * 0.35) < r * 0.25:
                shine = 0.95
            color = mix(color, (0.92, 1.0, 1.0), shine)
    return (*color, 1.0)


def fish(x, y, cx, cy, r):
    u, v = (x - cx) / r, (y - cy) / r
    body = u * u + (v / 0.52) ** 2
    tail = 0.85 < u < 1.4 and abs(v) < 0.08 + 0.72 * (u - 0.85) and u < 1.4 - 0.25 * math.cos(v * 4)
    fin = abs(u) < 0.4 and -0.78 < v < 0 and v > -0.72 - 0.2 * u + 0.9 * u * u
    if body < 1:
        if math.hypot(u + 0.62, v + 0.10) < 0.11:
            return (1, 1, 1) if math.hypot(u + 0.65, v + 0.13) < 0.03 else (0.08, 0.08, 0.12)
        white = abs(u + 0.28 + 0.2 * v * v) < 0.10 or abs(u - 0.36 - 0.2 * v * v) < 0.09
        edge = abs(u + 0.28 + 0.2 * v * v) < 0.14 or abs(u - 0.36 - 0.2 * v * v) < 0.13
        if white:
            return (1.0, 0.97, 0.92)
        if edge:
            return (0.10, 0.08, 0.12)
        return mix((1.0, 0.64, 0.16), (0.86, 0.24, 0.10), v + 0.5)
    if tail or fin:
        return mix((1.0, 0.56, 0.12), (0.72, 0.18, 0.10), abs(math.sin((u * 3 + v) * 9)) * 0.6)
    return None


def alpha(x, y):
    """A coloured ring and a soft glow around it, on nothing."""
    u, v = x - WIDTH / 2, y - HEIGHT / 2
    reach, angle = math.hypot(u, v), math.atan2(v, u)
    third = 2 * math.pi / 3
    color = tuple(0.5 + 0.5 * math.cos(angle - k * third) for k in range(3))
    petals = 98 + 22 * math.cos(angle * 5)
    glow = 0.75 * math.exp(-max(reach - petals, 0.0) / 26)
    if abs(reach - petals) < 13:
        return (*mix(color, (1, 1, 1), 0.35), 1.0)
    if reach < petals:
        glow = 0.25 + 0.5 * (reach / petals) ** 3
    edge = min(x, y, WIDTH - x, HEIGHT - y)
    return (*color, glow * min(edge / 30, 1.0))


if __name__ == "__main__":
    write_png("scene.png", [p[:3] for p in smoothed(scene)], 3)
    write_png("second.png", [p[:3] for p in smoothed(second)], 3)
    write_png("alpha.png", smoothed(alpha), 4)
