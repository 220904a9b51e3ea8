"""The runs that are disturbed: together they go through every part of the program."""

import random
import resource
from dataclasses import dataclass, field

from packets import data, headed, packet, whole_event


@dataclass
class Scenario:
    name: str
    recording: bytes
    switches: list
    ini: bytes = None
    before: dict = field(default_factory=dict)  # files in out/
    descriptors: int = 0  # most open ones, 0 for as many as the host gives

    @property
    def arguments(self):
        return ["rec.pkt", "out", *self.switches]

    def limits(self):
        """What the child does to itself before it becomes the program."""
        if not self.descriptors:
            return {}
        return {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (self.descriptors,) * 2)}


def station_file(units):
    lines = []
    for unit in units:
        lines += [f"[{unit:04X}]", f"Station = S{unit:04X}", "Latitude = 47.123456789", "Longitude = -122.25"]
        for channel in range(1, 4):
            lines += [f"Ch{channel}Azm = {channel}0", f"Ch{channel}Band = H", f"Ch{channel}Type = H",
                      f"Ch{channel}SnsMake = A maker of sensors, told at length"]
        lines += ["; a remark that makes the file longer than one page " + "-" * 40] * 25
    return "\r\n".join(lines).encode() + b"\r\n"


def steim(build):
    recording = build.recording("--size", "700K", "--format", "c2,c0", "--units", "2", "--events", "1")
    return Scenario("steim, two units, station file", recording, [], station_file((0x9A01, 0x9A02)))


def long_traces(build):
    """Traces that the writing thread sees to, closed in the middle of the run and at its end."""
    recording = build.recording("--size", "1200K", "--format", "c2", "--units", "1", "--streams", "1", "--events", "2")
    return Scenario("long traces", recording, ["-DY"])


def statistics(build):
    recording = build.recording("--seconds", "3", "--units", "2", "--events", "2", "--interleave")
    return Scenario("statistics, data in the logs, parameters", recording, ["-QY", "-DY"])


def many_events(_):
    """Events in turn over several days, one channel each, with so few descriptors that files give way."""
    numbers = range(1, 13)
    recording = b"".join(headed("EH", n, second=n * 40000) for n in numbers)
    for part in range(3):
        recording += b"".join(data(n, range(part * 100, part * 100 + 90), second=n * 40000 + part)
                              for n in numbers)
    # The last three end with the input.
    recording += b"".join(headed("ET", n, second=n * 40000) for n in numbers[:9])
    return Scenario("many events at a time, two levels of folders", recording, ["-P2", "-QY"], descriptors=28)


def corrupt(build):
    chance = random.Random(4)
    spoilt = bytearray(build.recording("--seconds", "4", "--bad-check", "--signal", "mixed", "--units", "1"))
    for _ in range(400):
        at = chance.randrange(len(spoilt))
        if at % 1024 > 24:  # types, times and numbers stay: what is spoilt are contents
            spoilt[at] = chance.randrange(256)
    recording = bytes(spoilt) + packet("XX") + packet("SH", fields=b"\0" * 8 + b"a line\r\nand another")
    return Scenario("corrupt stream, dumped in the logs", recording, ["-DY", "-P1"])


def limits(build):
    recording = build.recording("--seconds", "6", "--format", "16,32", "--events", "1", "--no-et")
    return Scenario("limits of samples, no trailers", recording, ["-S300", "-T250", "-VN", "-P4"])


def again(place):
    """A second run into the tree of a first one."""
    from trial import tree

    recording = whole_event(3, range(200), channels=3) + packet("SH", fields=b"\0" * 8 + b"fine")
    recording += whole_event(4, range(9), unit=0x0B0B, second=7)
    place.lay_out(recording)
    first = place.run(["rec.pkt", "out", "-QY"], preload=False)
    assert first.status == 0, first.words
    return Scenario("a second run into one tree", recording, ["-QY"], before=tree(place.out))


def all_of(place):
    build = place.build
    return [steim(build), long_traces(build), statistics(build), many_events(build), corrupt(build), limits(build), again(place)]
