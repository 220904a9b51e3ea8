"""Runs that are ended or disturbed from outside at any moment: endings.py PRESET KILLS
Two runs are crossed over one folder at many places; so many runs are killed at random moments."""

import concurrent.futures
import os
import random
import resource
import shutil
import signal
import socket
import sys
import threading
import time

import packets
import scenarios
import trial

SECOND = 1.0  # what an end from outside may cost
SLACK = 0.6  # for the time between two looks at the clock, and for a busy machine
AT_A_TIME = 10


class Console:
    """A narrow console. A run stands still in it until it is read."""

    def __init__(self):
        self.ours, self.theirs = socket.socketpair()
        self.ours.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        self.theirs.setsockopt(socket.SOL_SOCKET, socket.SO_SNDBUF, 4096)
        self.ours.settimeout(trial.PATIENCE)
        self.text = b""

    def read(self, most=65536):
        """False when the run ended."""
        try:
            piece = self.ours.recv(most)
        except TimeoutError:
            piece = b""
        self.text += piece
        return bool(piece)

    def read_up_to(self, wanted):
        while len(self.text) < wanted:
            if not self.read(wanted - len(self.text)):
                return False
        return True


def traces(files):
    return {name: content for name, content in files.items() if trial.is_trace(name)}


def unfinished(files):
    """The traces that have bytes and no final header."""
    none = bytes(4)
    return [name for name, content in traces(files).items()
            if content and content[trial.NPTS : trial.NPTS + 4] in (b"", none)]


def stop(child):
    """True when the run has stopped in the middle."""
    os.kill(child.pid, signal.SIGSTOP)
    what = os.waitid(os.P_PID, child.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
    return what.si_code == os.CLD_STOPPED


class Crossings:
    """A run stands still, somebody empties its folder, another run is done there, and the first goes on."""

    def __init__(self, place, account):
        self.place, self.account = place, account
        self.stopped = 0

    def cross(self, first, second, few, buffers):
        place = self.place
        place.lay_out(first.recording, first.ini)
        (place.run_folder / "second.pkt").write_bytes(second.recording)
        limits = first.limits()
        if few:
            limits = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (28, 28))}
        console = Console()
        # Each look at the clock takes a second: the console is written with every piece of the input.
        child = place.start(first.arguments, {"TICK": 1000}, stdout=console.theirs, **limits)
        console.theirs.close()
        stopped = console.read_up_to(buffers * 15000 + 2000) and stop(child)
        lost = unfinished(trial.tree(place.out))
        shutil.rmtree(place.out)
        place.out.mkdir()
        done = place.run(["second.pkt", "out", *second.switches])
        before = traces(trial.tree(place.out))
        if stopped:
            os.kill(child.pid, signal.SIGCONT)
        while console.read():
            pass
        ended = trial.finish(child, trial.PATIENCE)
        console.ours.close()
        outcome = trial.Outcome(ended.status, console.text, ended.err, ended.hung)
        self.stopped += stopped and bool(lost)
        fault = self.judge(outcome, done, before, lost)
        what = f"{first.name} crossed by {second.name}{' with few descriptors' if few else ''} at {buffers}"
        self.account.note(what, outcome.status, fault)

    def judge(self, outcome, done, before, lost):
        if outcome.hung:
            return "it hangs"
        if done.status != 0:
            return f"the second run ends with {done.status}"
        after = traces(trial.tree(self.place.out))
        for name, content in before.items():
            if after.get(name) != content:
                return f"{name}: a trace of the second run was changed"
        if lost and outcome.status == 0:
            return f"status 0, and {lost[0]} was taken away before its end"
        if outcome.status not in (0, 20, 22):
            return f"status {outcome.status}"
        if outcome.status != 0 and not outcome.has_last_words():
            return f"status {outcome.status} without a word"
        return None

    def all(self, chosen):
        runs = [s for s in chosen if not s.before]
        for first in runs:
            for buffers in (0, 1, 2):
                for few in (False, True):
                    self.cross(first, first, few, buffers)
                    self.cross(first, runs[(runs.index(first) + 1) % len(runs)], few, buffers)
        if self.stopped < len(runs):
            self.account.note("crossings", 0, "too few runs stood still with unfinished traces")


SAMPLES = range(1, 201)


def long_recording():
    """Events of two channels that no trailer ends, of one recorder after the other: most are left early."""
    units = [unit for unit in (0x9A01, 0x9A02, 0x9A03) for _ in range(1500)] + [0x9A04] * 8000
    return [(unit, n % 2, packets.data(5, SAMPLES, channel=n % 2, unit=unit)) for n, unit in enumerate(units)]


def folder_of(place):
    """As the logs show it; as long for each place."""
    return str(place.run_folder).encode()


class Kills:
    """The second's rule: what the console showed a second before the end is in the files."""

    def __init__(self, build, account):
        self.build, self.account = build, account
        self.lock = threading.Lock()
        self.packets = long_recording()
        self.recording = b"".join(bytes_ for _, _, bytes_ in self.packets)
        with trial.Place(build) as place:
            place.lay_out(self.recording)
            whole = place.run(["rec.pkt", "out"], preload=False)
            assert whole.status == 0, whole.words
            self.folder = folder_of(place)
            self.reference = trial.tree(place.out)
            sizes = []
            for n in (1, 2):
                place.lay_out(self.recording[: n * packets.PACKET])
                sizes.append(len(place.run(["rec.pkt", "out"], preload=False).out))
                sizes.append(len(trial.tree(place.out)["rec.vxl"]))
        self.console_line, self.log_line = sizes[2] - sizes[0], sizes[3] - sizes[1]
        self.console_head, self.log_head = sizes[0] - self.console_line, sizes[1] - self.log_line

    def kill_one(self, number):
        chance = random.Random(number)
        alive = chance.uniform(1.3, 3.5)
        speed = chance.choice((120_000, 200_000))  # bytes of the console in a second
        with trial.Place(self.build) as place:
            place.lay_out(self.recording)
            console = Console()
            child = place.start(["rec.pkt", "out"], preload=False, stdout=console.theirs)
            console.theirs.close()
            shown = self.read_slowly(console, alive, speed)
            os.kill(child.pid, signal.SIGKILL)
            ended = trial.finish(child, trial.PATIENCE)
            console.ours.close()
            fault = self.judge(place, ended, shown)
        with self.lock:
            what = f"killed after {alive:.2f} seconds, number {number}, {shown} packets"
            self.account.note(what, ended.status, fault)

    def read_slowly(self, console, alive, speed):
        """Reads for so many seconds. Returns how many packets were shown a second before the end."""
        began = time.monotonic()
        seen = []
        while (now := time.monotonic() - began) < alive:
            if now * speed > len(console.text) and not console.read(4096):
                break
            seen.append((time.monotonic() - began, len(console.text)))
            time.sleep(0.005)
        end = time.monotonic() - began
        early = max((size for at, size in seen if at <= end - SECOND - SLACK), default=0)
        return max(0, (early - self.console_head) // self.console_line)

    def judge(self, place, ended, shown):
        if ended.status != -signal.SIGKILL:
            return f"status {ended.status}: it ended by itself"
        files = {n: c.replace(folder_of(place), self.folder) for n, c in trial.tree(place.out).items()}
        fault = trial.early_end_fault(files, self.reference, {}, False)
        if fault:
            return fault
        if len(files.get("rec.vxl", b"")) < self.log_head + shown * self.log_line:
            return "rec.vxl misses lines that were shown a second before the end"
        for (unit, channel), count in self.samples_of(shown).items():
            names = [n for n in traces(files) if f"_0{unit:04X}_" in n and n.endswith(f"{channel + 1}.sac")]
            if len(names) != 1 or len(files[names[0]]) < trial.HEADER + 4 * count:
                return f"the trace of {unit:04X}, channel {channel + 1}, misses samples of a second before the end"
        return None

    def samples_of(self, shown):
        counts = {}
        for unit, channel, _ in self.packets[:shown]:
            counts[unit, channel] = counts.get((unit, channel), 0) + len(SAMPLES)
        return counts

    def all(self, kills):
        with concurrent.futures.ThreadPoolExecutor(AT_A_TIME) as pool:
            list(pool.map(self.kill_one, range(kills)))


def main():
    build = trial.Build(sys.argv[1])
    account = trial.Account()
    with trial.Place(build) as place:
        crossings = Crossings(place, account)
        crossings.all(scenarios.all_of(place))
        print(f"   crossed: {account.runs} runs, {crossings.stopped} of them with unfinished traces", flush=True)
    Kills(build, account).all(int(sys.argv[2]))
    print(account.figures())
    sys.exit(1 if account.findings else 0)


main()
