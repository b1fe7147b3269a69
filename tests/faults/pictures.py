"""Small files for programs that are tested from outside, made without the programs themselves."""
import struct
import zlib


def chunk(tag, data):
    return struct.pack(">I", len(data)) + tag + data + struct.pack(">I", zlib.crc32(tag + data))


def png(width, height, seed):
    """Red, green and blue that no filter makes small: writing takes several calls."""
    noise = bytes((x * x * 31 + x * seed * 7) >> 3 & 255 for x in range(3 * width * height))
    rows = b"".join(b"\0" + noise[3 * width * y:3 * width * (y + 1)] for y in range(height))
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))
