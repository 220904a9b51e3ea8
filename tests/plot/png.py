"""A PNG as GMT writes it, unpacked: eight bits a colour, without transparency, not interlaced."""
import functools
import struct
import zlib


def size_of(path):
    with open(path, "rb") as file:
        return struct.unpack(">16x2I", file.read(24))


class Picture:
    def __init__(self, path):
        with open(path, "rb") as file:
            data = file.read()
        assert data[:8] == b"\x89PNG\r\n\x1a\n", "no PNG"
        packed, at, palette = b"", 8, None
        while at < len(data):
            length, kind = struct.unpack(">I4s", data[at : at + 8])
            body = data[at + 8 : at + 8 + length]
            at += length + 12
            if kind == b"IHDR":
                self.width, self.height, depth, colour, _, _, interlaced = struct.unpack(">IIBBBBB", body)
                assert depth == 8 and colour in (2, 3) and not interlaced, "another kind of PNG"
            elif kind == b"PLTE":
                palette = [tuple(body[i : i + 3]) for i in range(0, length, 3)]
            elif kind == b"IDAT":
                packed += body
        self.palette = palette
        self.rows = unfiltered(zlib.decompress(packed), self.width, self.height, 1 if palette else 3)

    def where(self, holds):
        """A row of bytes for each row of pixels, 1 where the pixel's colour (red, green, blue) holds, else 0."""
        if self.palette:
            table = bytes(map(holds, self.palette)).ljust(256, b"\0")
            return [row.translate(table) for row in self.rows]
        known = functools.cache(holds)
        return [bytes(map(known, zip(row[::3], row[1::3], row[2::3]))) for row in self.rows]


def nearest(a, b, c):
    """Which of the bytes left, above, and left of that one is nearest to a + b - c."""
    if b == c:
        return a
    if a == c:
        return b
    p = a + b - c
    return min((abs(p - a), 0, a), (abs(p - b), 1, b), (abs(p - c), 2, c))[2]


def unfiltered(data, width, height, size):
    length = width * size
    above, rows = bytearray(length), []
    for y in range(height):
        start = y * (length + 1)
        kind, row = data[start], bytearray(data[start + 1 : start + 1 + length])
        if kind == 1:
            for i in range(size, length):
                row[i] = (row[i] + row[i - size]) & 255
        elif kind == 2:
            like_above = row.count(0) == length  # as most rows are
            row = above if like_above else bytearray((r + b) & 255 for r, b in zip(row, above))
        elif kind == 3:
            for i in range(length):
                row[i] = (row[i] + ((row[i - size] if i >= size else 0) + above[i]) // 2) & 255
        elif kind == 4:
            for i in range(length):
                a, b, c = (row[i - size], above[i], above[i - size]) if i >= size else (0, above[i], 0)
                row[i] = (row[i] + nearest(a, b, c)) & 255
        rows.append(row)
        above = row
    return rows
