"""A PNG as GMT writes it, unpacked: eight bits a colour, without transparency, not interlaced."""
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

    def pixel(self, x, y):
        if self.palette:
            return self.palette[self.rows[y][x]]
        return tuple(self.rows[y][3 * x : 3 * x + 3])


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
            for i in range(length):
                row[i] = (row[i] + above[i]) & 255
        elif kind == 3:
            for i in range(length):
                row[i] = (row[i] + ((row[i - size] if i >= size else 0) + above[i]) // 2) & 255
        elif kind == 4:
            for i in range(length):
                a, b, c = (row[i - size], above[i], above[i - size]) if i >= size else (0, above[i], 0)
                p = a + b - c
                pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
                row[i] = (row[i] + (a if pa <= pb and pa <= pc else b if pb <= pc else c)) & 255
        rows.append(row)
        above = row
    return rows
