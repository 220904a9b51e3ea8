"""Inputs that no recorder and no careful person would make: hostile.py PRESET SCALE
SCALE multiplies the sizes. Each run ends by itself within one second of processor time per megabyte of input,
in bounded memory, and changes nothing outside of the output path."""

import re
import sys
from pathlib import Path

import packets
import trial
from packets import PACKET, data, event, headed, packet

MEGABYTE = 1 << 20
SECONDS_LEAST = 1.0  # for inputs of less than a megabyte
BASE_KB = 10 << 10  # the program, its buffers, its tables
MEMORY_PER_INPUT = 3  # bytes kept per byte of recording, where every packet is another unit, event or channel
MEMORY_PER_INI = 20  # bytes kept per byte of station file, where every line begins a section
FILE_MOST = 256 * MEGABYTE  # of one output file; the status is then 22
TYPES = ("EH", "ET", "DT", "SH", "SC", "DS", "CD", "OM", "AD", "DR", "NH", "NT", "FD")
FILLS = (b"\x00", b"\xff", b"\x0a", b"\xa0", b"\xaa", b"\x99", b"\x39", b" ", b"-", b"%", b"\x01\x00", b"ON ")
LAYOUT = trial.ROOT / "src/packet/layout.h"


class Case:
    def __init__(self, name, recording, switches, ini=None, statuses=(0,), output_counts=False, waits=False):
        self.name, self.recording, self.switches, self.ini = name, recording, switches, ini
        self.statuses = statuses
        self.waits = waits  # for a file that cannot be opened; the clock is made to run faster
        self.output_counts = output_counts  # what is written is so much more that it takes its own time

    def megabytes(self):
        return (len(self.recording) + len(self.ini or b"")) / MEGABYTE


def fields(scale):
    """Where the program's own layouts say that fields lie, and a grid for what they leave out."""
    found = set()
    for at, length, count in re.findall(r"\{(\d+), (\d+)(?:, (\d+))?\}", LAYOUT.read_text()):
        for i in range(int(count or 1)):
            found.add((int(at) + i * int(length), int(length)))
    assert len(found) > 300, "the layouts are written otherwise now"
    found.update((at, 4 if scale == 1 else 1) for at in range(0, PACKET, 4 if scale == 1 else 1))
    found.update((at, 64) for at in range(0, PACKET, 64))
    return sorted((at, length) for at, length in found if at + length <= PACKET and length > 0)


def usual(kind, second):
    if kind in ("EH", "ET"):
        return headed(kind, 5, second=second)
    if kind == "DT":
        return data(5, range(100), channel=1, second=second)
    return packet(kind, fields=event(5) if kind in ("NH", "NT") else b"\0" * 8)


def field_sweep(kind, scale):
    """A packet of one type with each of its fields at each limit, among good ones of other seconds."""
    whole = bytearray()
    for number, (at, length) in enumerate(fields(scale)):
        if kind == "DR" and at < 48 and at + length > 26:
            continue  # counts and lengths of directories have a case of their own
        whole += packets.whole_event(5, range(20), second=100 * number)
        for turn, fill in enumerate(FILLS):
            spoilt = bytearray(usual(kind, 100 * number + turn))
            spoilt[at : at + length] = (fill * length)[:length]
            whole += spoilt
    return Case(f"fields of {kind}", bytes(whole), ["-QY", "-DY", "-VN"])


def units(scale):
    """As many recorders as there are numbers, a data packet of each in turn."""
    recording = b"".join(data(1, [unit], unit=unit, second=second) for second in range(scale)
                         for unit in range(1, 0x10000))
    return Case(f"65535 units, {scale} times", recording, ["-QY", "-VN"])


def events(scale):
    """As many open events as a unit can have, data of each in turn, twice."""
    recording = b"".join(data(number, [1, 2], unit=unit, second=number + second)
                         for second in range(2) for unit in range(1, scale + 1) for number in range(10000))
    return Case(f"{scale} units with 10000 open events", recording, ["-VN", "-P2", "-QY"])


def channels(scale, name="each packet another channel", ini=None, number_of_events=100):
    """All channels that a byte of two decimal or other digits can name, in many events."""
    recording = bytearray()
    for number in range(number_of_events * scale):
        for channel in range(100):
            recording += data(number % 10000, [7], unit=1 + number // 10000, channel=channel, second=number)
    return Case(name, bytes(recording), ["-VN"], ini)


def long_lines(scale):
    ini = b"[0001]\nStation=" + b"A" * MEGABYTE * scale + b"\nCh1Azm=" + b"9" * MEGABYTE * scale + b"\n"
    return Case(f"station file lines of {scale} MB", data(1, [1], unit=1) * 50, ["-VN", "-L-"], ini)


def sections(scale):
    section = "[{:04X}]\nStation=S{}\nCh1Azm=5\n"
    lines = "".join(section.format(n & 0xFFFF, n % 10000) for n in range(100000 * scale)).encode()
    recording = b"".join(data(1, [unit], unit=unit) for unit in range(1, 4000))
    yield Case(f"{100000 * scale} sections", recording, ["-VN", "-L-"], lines)
    headers = b"".join(b"[%04X]\n" % (n & 0xFFFF) for n in range(scale * MEGABYTE // 7))
    yield Case(f"headers of sections of {scale} MB", recording, ["-VN", "-L-"], headers)


def long_sections(scale):
    """Long sections and many channels: each channel asks what its section says."""
    kinds = {"empty lines": b"\n", "lines of its own": b"Ch1Res=\n", "models": b"ch1SnsModel=FBA-1\n",
             "lines of others": b"ChZ\n", "stations": b"Stat\n"}
    for name, line in kinds.items():
        ini = b"[0001]\n" + line * (scale * MEGABYTE // len(line))
        yield channels(scale, f"a section of {scale} MB of {name}", ini, 40)
        recording = b"".join(data(number, [7], unit=1, second=number) for number in range(4000))
        yield Case(f"a section of {scale} MB of {name}, one channel", recording, ["-VN", "-P1"], ini)


def same_names(scale):
    recording = packets.whole_event(5, [1, 2, 3], channels=3) * 30 * scale
    return Case("more traces of one name than there are letters", recording, ["-VN"], statuses=(23,))


def directories(_):
    """A directory whose first entry has no length is written out as often as entries are counted."""
    directory = bytearray(packet("DR", fields=b"\0" * 8, fill=b"\0"))
    directory[26:28] = b"\xff\xff"
    directory[32:104] = b"\x01" * 38 + b"\0" * 34
    directory[38:40] = b"\0\0"
    return Case("directory entries without length", bytes(directory) * 2, ["-VN"], statuses=(0, 22),
                output_counts=True)


def ways_out():
    """Names that lead out of the output path, if they are let."""
    for name in ("/", "../..", "a/../", "/../a", "./../"):
        recording = packets.whole_event(5, [1, 2, 3])
        spoilt = recording.replace(b"STA1", name.encode()[:4])
        yield Case(f"station {name} in the header", spoilt, ["-VN", "-P2"], statuses=(0, 20), waits=True)
        yield Case(f"station {name} in the station file", data(5, [1, 2], unit=1), ["-VN"],
                   f"[0001]\nStation={name}\n".encode(), statuses=(0, 20), waits=True)


def run(place, case):
    """A run with its processor seconds and its most memory. Another process starts and watches the program:
    what this one has in memory would count for its children."""
    figures = place.top / "figures"
    watch = ["/usr/bin/time", "-q", "-f", "%U %S %M", "-o", figures]
    waits = ["env", f"LD_PRELOAD={place.build.faults}"] if case.waits else []
    limits = ["prlimit", f"--fsize={FILE_MOST}"]
    command = [*watch, *limits, *waits, place.build.program, "rec.pkt", "out", *case.switches]
    outcome = place.run_command(command, 60 + 3 * case.megabytes())
    user, system, peak = figures.read_text().split()[-3:]
    outcome.cpu, outcome.peak_kb = float(user) + float(system), int(peak)
    return outcome


def escape_fault(place, around):
    now = place.around()
    if now == around:
        return None
    return f"something outside of the output folder changed: {sorted(set(now) ^ set(around))[:3]}"


def written(place):
    return sum(entry.stat().st_size for entry in Path(place.out).rglob("*") if entry.is_file()) / MEGABYTE


def try_case(place, case, account, worst):
    place.lay_out(case.recording, case.ini)
    around = place.around()
    outcome = run(place, case)
    megabytes = case.megabytes()
    seconds_most = max(SECONDS_LEAST, megabytes, written(place) / 50 if case.output_counts else 0)
    memory_most = BASE_KB + MEMORY_PER_INPUT * len(case.recording) // 1024
    memory_most += MEMORY_PER_INI * len(case.ini or b"") // 1024
    fault = None
    if outcome.hung:
        fault = "it hangs"
    elif outcome.status not in case.statuses:
        fault = f"status {outcome.status}"
    elif outcome.cpu > seconds_most:
        fault = f"{outcome.cpu:.1f} s of processor time, {seconds_most:.1f} s at most"
    elif outcome.peak_kb > memory_most:
        fault = f"{outcome.peak_kb} KB of memory, {memory_most} KB at most"
    fault = fault or escape_fault(place, around)
    account.note(case.name, outcome.status, fault)
    worst["share"] = max(worst["share"], outcome.cpu / seconds_most)
    worst["peak"] = max(worst["peak"], outcome.peak_kb)
    print(f"   {case.name}: {megabytes:.1f} MB, {outcome.cpu:.2f} s, {outcome.peak_kb >> 10} MB of memory, "
          f"status {outcome.status}", flush=True)


def cases(scale):
    for kind in TYPES:
        yield field_sweep(kind, scale)
    yield from ways_out()
    yield long_lines(scale)
    yield from sections(scale)
    yield from long_sections(scale)
    yield same_names(scale)
    yield directories(scale)
    yield channels(scale)
    yield events(scale)
    yield units(scale)


def main():
    account = trial.Account()
    worst = {"share": 0.0, "peak": 0}
    with trial.Place(trial.Build(sys.argv[1])) as place:
        for case in cases(int(sys.argv[2])):
            try_case(place, case, account, worst)
    most = f"at most {worst['share']:.0%} of the time allowed, {worst['peak'] >> 10} MB of memory"
    print(f"{account.figures()}; {most}")
    sys.exit(1 if account.findings else 0)


main()
