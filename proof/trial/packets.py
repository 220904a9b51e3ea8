"""Packets and recordings as the trials need them; a packet is 1024 bytes."""

import struct

PACKET = 1024


def bcd(number, digits):
    return bytes.fromhex(str(number % 10**digits).zfill(digits))


def packet(kind, unit=0x9A2F, seq=0, second=0, fields=b"", fill=b" "):
    """Header of any packet, `fields` behind it, the rest filled. `second` counts within the year 2004."""
    day, rest = divmod(second, 86400)
    time = f"{day + 1:03}{rest // 3600:02}{rest // 60 % 60:02}{rest % 60:02}000"
    head = kind.encode() + bcd(7, 2) + bcd(4, 2) + unit.to_bytes(2, "big") + bytes.fromhex(time)
    body = head + bcd(PACKET, 4) + bcd(seq, 4) + fields
    return body + fill * (PACKET - len(body))


def event(number, stream=0, channel=0, samples=0, data_format=0x32):
    """What follows the header in EH, ET, DT, NH and NT."""
    return bcd(number, 4) + bcd(stream, 2) + bcd(channel, 2) + bcd(samples, 4) + bytes([0, data_format])


def data(number, values, channel=0, **header):
    """A data packet of plain 32-bit samples."""
    words = b"".join(v.to_bytes(4, "big", signed=True) for v in values)
    return packet("DT", fields=event(number, 0, channel, len(values)) + words, fill=b"\0", **header)


def headed(kind, number, rate="100", station="STA1", second=0, **header):
    """An event header or trailer with station, rate, trigger and first time."""
    body = bytearray(packet(kind, second=second, fields=event(number), **header))
    day, rest = divmod(second, 86400)
    time = f"2004{day + 1:03}{rest // 3600:02}{rest // 60 % 60:02}{rest % 60:02}000"
    for at, text in ((60, station), (88, rate), (92, "EVT"), (96, time), (112, time)):
        body[at : at + len(text)] = text.encode()
    return bytes(body)


def whole_event(number, values, channels=1, **header):
    middle = b"".join(data(number, values, channel=c, **header) for c in range(channels))
    return headed("EH", number, **header) + middle + headed("ET", number, **header)


def floats(values):
    """Samples as they stand in a trace."""
    return struct.pack(f">{len(values)}f", *values)
