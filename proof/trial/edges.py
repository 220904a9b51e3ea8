"""Runs at the edge of what a host gives: edges.py PRESET STEP
STEP 1 tries every point, a larger one every STEP-th."""

import itertools
import os
import random
import resource
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

import packets
import scenarios
import trial

NOBODY = 65534


def left_fault(files, reference, before, told=False):
    return trial.early_end_fault(files, reference, before, told)


class Edges:
    def __init__(self, place, step):
        self.place, self.step = place, step
        self.account = trial.Account()
        self.scenarios = scenarios.all_of(place)
        self.references = {}
        for scenario in self.scenarios:
            outcome = self.run(scenario)
            assert outcome.status == 0, outcome.words
            self.references[scenario.name] = (trial.tree(place.out), outcome.out, place.counts())

    def run(self, scenario, faults=None, **more):
        self.place.lay_out(scenario.recording, scenario.ini, scenario.before)
        self.around = self.place.around()
        return self.place.run(scenario.arguments, faults, **{**scenario.limits(), **more})

    def judge(self, what, scenario, outcome, statuses, may_kill=False, console=True):
        """The run has a status of these, and what it left is what that status says."""
        reference, out, _ = self.references[scenario.name]
        files = trial.tree(self.place.out)
        fault = None
        told = outcome.told() and any(
            t.encode() in outcome.out and t.encode() not in out for t in trial.TOLD_AND_GONE_ON)
        if outcome.hung:
            fault = "it hangs"
        elif may_kill and outcome.status == -signal.SIGKILL:
            fault = left_fault(files, reference, scenario.before)
        elif outcome.status not in statuses:
            fault = f"status {outcome.status}"
        elif outcome.status == 0 and told:
            if trial.samples(files) != trial.samples(reference):
                fault = "told of a loss, and samples are missing"
        elif outcome.status == 0:
            fault = trial.same_fault(files, reference)
            if not fault and console and outcome.out != out:
                fault = "status 0, and the console differs"
        else:
            if console and not outcome.has_last_words():
                fault = f"status {outcome.status} without a word"
            fault = fault or left_fault(files, reference, scenario.before, told)
        fault = fault or trial.header_fault(outcome, files, reference)
        if not fault and self.place.around() != self.around:
            fault = "something outside of the output folder changed"
        self.account.note(f"{scenario.name}, {what}", outcome.status, fault)

    def every(self, points):
        """Every STEP-th point, beginning somewhere among the first."""
        points = list(points)
        return points[random.Random(len(points)).randrange(min(self.step, max(1, len(points)))) :: self.step]

    def full_disk(self):
        """So many bytes in all, then the disk is full."""
        for scenario in self.scenarios:
            total = sum(len(c) for c in self.references[scenario.name][0].values())
            total -= sum(len(c) for c in scenario.before.values())
            chance = random.Random(total)
            spaces = {0, 1, 631, 632, *(chance.randrange(total) for _ in range(200 // self.step))}
            for space in sorted(spaces):
                outcome = self.run(scenario, {"SPACE": space})
                self.judge(f"{space} bytes on the disk", scenario, outcome, {20, 22})

    def full_mount(self):
        """The same on a real file system that is too small."""
        if os.geteuid() != 0:
            return self.account.leave_out("a small file system, since this is not the superuser")
        for scenario in self.scenarios:
            if scenario.before:
                continue
            for kilobytes in (16, 64, 200):
                self.place.lay_out(scenario.recording, scenario.ini)
                mount = ["mount", "-t", "tmpfs", "-o", f"size={kilobytes}k", "vx-trial", str(self.place.out)]
                if subprocess.run(mount, stderr=subprocess.DEVNULL, timeout=20).returncode != 0:
                    return self.account.leave_out("a small file system, since none can be mounted here")
                try:
                    self.around = self.place.around()
                    outcome = self.place.run(scenario.arguments, **scenario.limits())
                    self.judge(f"{kilobytes} KB of disk", scenario, outcome, {0, 20, 22})
                finally:
                    subprocess.run(["umount", str(self.place.out)], check=True, timeout=20)

    def file_size(self):
        """No file may be longer than so many bytes."""
        for scenario in self.scenarios:
            longest = max(len(c) for c in self.references[scenario.name][0].values())
            sizes = [0, 1, 600, 632, 633, 1000, 4096, longest - 1, longest, longest + 1]
            for size in self.every(sizes):
                def limit(size=size):
                    resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
                outcome = self.run(scenario, stdout=subprocess.PIPE, preexec_fn=limit)
                self.judge(f"files of {size} bytes at most", scenario, outcome, {0, 20, 22})

    def few_descriptors(self):
        for scenario in self.scenarios:
            for most in self.every(range(4, 41)):
                def limit(most=most):
                    resource.setrlimit(resource.RLIMIT_NOFILE, (most, most))
                self.judge(f"{most} descriptors", scenario, self.run(scenario, preexec_fn=limit), {0, 20, 22})

    def odd_inputs(self):
        """What is no file of packets: a folder, nothing, a pipe."""
        place = self.place
        place.lay_out(b"")
        for what, argument, status in (("a folder", "out", 21), ("nothing at all", "/dev/null", 1),
                                       ("an empty file", "rec.pkt", 1), ("no file", "none.pkt", 20)):
            outcome = place.run([argument, "out", "-L-"])
            files = trial.tree(place.out)
            fault = f"status {outcome.status}, files {list(files)}"
            if outcome.status == status and not files:
                fault = None
            self.account.note(f"{what} as input", outcome.status, fault)
        place.lay_out(b"")
        os.mkfifo(place.run_folder / "pipe")
        keeper = os.open(place.run_folder / "pipe", os.O_RDWR)
        os.write(keeper, packets.whole_event(1, [1, 2, 3]))
        outcome = place.run(["pipe", "out", "-L-"])
        os.close(keeper)
        fault = None if outcome.status == 1 else "not taken for empty"
        self.account.note("a pipe as input", outcome.status, fault)

    def moving_input(self):
        """An input that grows, shrinks or is removed while it is read: only whole packets count."""
        values = range(200)
        recording = b"".join(packets.data(5, values, seq=n) for n in range(1, 4000))
        trace = b"".join(packets.floats(values) for _ in range(1, 4000))
        for round_ in range(max(2, 12 // self.step)):
            for what in ("grows", "shrinks", "is removed"):
                self.place.lay_out(recording[: len(recording) // 2] if what == "grows" else recording)
                path = self.place.run_folder / "rec.pkt"
                many_reads = {"KIND": "read", "AT": 1, "HOW": "short", "ALWAYS": 1}
                child = self.place.start(["rec.pkt", "out", "-VN", "-L-"], many_reads)
                chance = random.Random(round_)
                some_reads = 1 + chance.randrange(8)
                while self.place.counts()["read"] < some_reads and child.poll() is None:
                    time.sleep(0.0002)
                if what == "grows":
                    with open(path, "ab") as file:
                        for at in range(len(recording) // 2, len(recording), 70000):
                            file.write(recording[at : at + 70000])
                            file.flush()
                elif what == "shrinks":
                    os.truncate(path, chance.randrange(len(recording)))
                else:
                    path.unlink()
                child.communicate(timeout=trial.PATIENCE)
                fault = None if child.returncode == 0 else f"status {child.returncode}"
                for name, content in trial.tree(self.place.out).items():
                    count = int.from_bytes(content[trial.NPTS : trial.NPTS + 4], "big")
                    if content[trial.HEADER :] != trace[: 4 * count] or count % 200:
                        fault = f"{name} is not what a part of the input says"
                self.account.note(f"an input that {what}", child.returncode, fault)

    def unwritable(self):
        """An output folder that this user may not write to, and a folder in it."""
        scenario = self.scenarios[4]  # makes folders
        as_nobody = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
        program = self.place.top / "vx_sac"
        shutil.copy(self.place.build.program, program)
        library = self.place.top / "faults.so"
        shutil.copy(self.place.build.faults, library)
        self.place.counts_file.chmod(0o666)
        kept = self.place.build.program, self.place.build.faults
        self.place.build.program, self.place.build.faults = program, library
        try:
            self.place.lay_out(scenario.recording)
            self.place.out.chmod(0o555)
            self.around = self.place.around()
            self.judge("a folder that may not be written", scenario,
                       self.place.run(scenario.arguments, **as_nobody), {20})
            self.place.lay_out(scenario.recording)
            self.place.out.chmod(0o777)
            for name in self.references[scenario.name][0]:
                if "/" in name:
                    folder = self.place.out / Path(name).parts[0]
                    folder.mkdir(exist_ok=True)
                    folder.chmod(0o555)
            self.around = self.place.around()
            self.judge("folders of traces that may not be written", scenario,
                       self.place.run(scenario.arguments, **as_nobody), {20})
        finally:
            self.place.build.program, self.place.build.faults = kept

    def read_only_mount(self):
        if os.geteuid() != 0:
            return self.account.leave_out("a read-only file system, since this is not the superuser")
        scenario = self.scenarios[0]
        self.place.lay_out(scenario.recording, scenario.ini)
        mount = ["mount", "-t", "tmpfs", "-o", "ro", "vx-trial", str(self.place.out)]
        if subprocess.run(mount, stderr=subprocess.DEVNULL, timeout=20).returncode != 0:
            return self.account.leave_out("a read-only file system, since none can be mounted here")
        try:
            self.around = self.place.around()
            self.judge("a read-only file system", scenario, self.place.run(scenario.arguments), {20})
        finally:
            subprocess.run(["umount", str(self.place.out)], check=True, timeout=20)

    def vanishing_folder(self):
        """The output folder is moved away before the n-th write: nothing is lost without a word."""
        for scenario in self.scenarios:
            reference, _, counts = self.references[scenario.name]
            for at in self.every(range(1, counts["write"] + 1)):
                outcome = self.run(scenario, {"KIND": "write", "AT": at, "HOW": "move", "FOLDER": "out"})
                away = self.place.run_folder / "out.away"
                files = trial.tree(away)
                fault = None
                if outcome.hung or outcome.status < 0 or outcome.status not in {0, 20, 22}:
                    fault = f"status {outcome.status}"
                elif self.place.out.exists():
                    fault = "the output path was made again"
                elif outcome.status == 0:
                    fault = trial.same_fault(files, reference)
                elif not outcome.has_last_words():
                    fault = "without a word"
                else:
                    fault = left_fault(files, reference, scenario.before)
                fault = fault or trial.header_fault(outcome, files, reference)
                self.account.note(f"{scenario.name}, output folder gone at write {at}", outcome.status, fault)

    def closed_descriptors(self):
        for scenario in self.scenarios:
            some = (itertools.combinations((0, 1, 2), n) for n in range(4))
            for closed in itertools.chain.from_iterable(some):
                def close(closed=closed):
                    if scenario.descriptors:
                        scenario.limits()["preexec_fn"]()
                    for fd in closed:
                        os.close(fd)
                outcome = self.run(scenario, preload=False, preexec_fn=close)
                self.judge(f"descriptors {closed} closed", scenario, outcome, {0}, console=1 not in closed)

    def full_console(self):
        if not os.path.exists("/dev/full"):
            return self.account.leave_out("a full console, since there is no /dev/full")
        for scenario in self.scenarios:
            with open("/dev/full", "wb") as full:
                outcome = self.run(scenario, stdout=full)
            self.judge("a full console", scenario, outcome, {0}, console=False)

    def killed(self):
        """The end comes before or in the middle of a write, or before a file is opened or closed."""
        for scenario in self.scenarios:
            counts = self.references[scenario.name][2]
            for kind, how in (("write", "kill"), ("write", "torn"), ("open", "kill"), ("close", "kill")):
                for at in self.every(range(1, counts[kind] + 1)):
                    outcome = self.run(scenario, {"KIND": kind, "AT": at, "HOW": how})
                    self.judge(f"{how} at {kind} {at}", scenario, outcome, set(), may_kill=True)

    def all(self):
        for part in (self.full_disk, self.full_mount, self.file_size, self.few_descriptors, self.odd_inputs,
                     self.moving_input, self.unwritable, self.read_only_mount, self.vanishing_folder,
                     self.closed_descriptors, self.full_console, self.killed):
            before = self.account.runs
            part()
            print(f"   {part.__name__.replace('_', ' ')}: {self.account.runs - before} runs", flush=True)


def main():
    with trial.Place(trial.Build(sys.argv[1])) as place:
        edges = Edges(place, int(sys.argv[2]))
        edges.all()
    print(edges.account.figures())
    sys.exit(1 if edges.account.findings else 0)


main()
