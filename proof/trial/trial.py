"""Runs of vx_sac under faults, and what may be said of what they leave."""

import os
import re
import shutil
import signal
import struct
import subprocess
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
HEADER = 632  # of a trace
NPTS = 316  # where it tells the number of its samples
KINDS = ("open", "read", "write", "close", "mkdir", "stat", "memory", "console", "limit")
PATIENCE = 10  # seconds until a run counts as hanging

# What a run says when it goes on with less than it was given.
TOLD_AND_GONE_ON = (
    "WARNING: Unable to open the INI file",
    "- not found; using defaults",
)
# What it says of a trace that keeps its provisional header: no sample is lost, yet the run's status is not 0.
HEADER_LOST = b"!!!Could not re-open"
# What a run says when it ends early.
EARLY_END = re.compile(
    rb"(open|read|write|allocation) error for '|Out of Heap|unable to open .* for output"
    rb"|Unable to create an unique filename|Unable to change to directory"
)


class Build:
    """The programs of one build folder."""

    def __init__(self, preset):
        folder = ROOT / "build" / preset
        self.program = folder / "vx_sac"
        self.maker = folder / "tools" / "vx_mkrec"
        self.faults = ROOT / "build" / "dev" / "tests" / "libvx_faulty_calls.so"

    def recording(self, *options):
        """A recording by the maker."""
        made = subprocess.run([self.maker, *options, "-"], stdout=subprocess.PIPE, check=True, timeout=60)
        return made.stdout


class Outcome:
    def __init__(self, status, out, err, hung, cpu=0.0, peak_kb=0):
        self.status, self.out, self.err, self.hung = status, out, err, hung
        self.cpu, self.peak_kb = cpu, peak_kb

    @property
    def words(self):
        return self.out + self.err

    def told(self):
        return any(text.encode() in self.out for text in TOLD_AND_GONE_ON)

    def has_last_words(self):
        """True when the run said why its status is not 0."""
        return bool(HEADER_LOST in self.out or EARLY_END.search(self.words))


class Place:
    """A folder in which runs happen: the input, vxu.ini and out/ stand in a/run/, so that a way out is seen.
    The working folder is the same for all runs, since logs and console name it."""

    def __init__(self, build):
        self.build = build
        roomy = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
        self.top = Path(tempfile.mkdtemp(prefix="vx-trial.", dir=roomy))
        self.top.chmod(0o755)
        self.run_folder = self.top / "a" / "run"
        self.out = self.run_folder / "out"
        self.counts_file = self.top / "counts"
        self.counts_file.write_bytes(bytes(4 * (len(KINDS) + 1)))

    def close(self):
        shutil.rmtree(self.top, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def lay_out(self, recording, ini=None, before=None, name="rec.pkt"):
        """`before` is a tree that stands in out/ already."""
        shutil.rmtree(self.top / "a", ignore_errors=True)
        self.out.mkdir(parents=True)
        for path, content in (before or {}).items():
            (self.out / path).parent.mkdir(parents=True, exist_ok=True)
            (self.out / path).write_bytes(content)
        (self.run_folder / name).write_bytes(recording)
        if ini is not None:
            (self.run_folder / "vxu.ini").write_bytes(ini)

    def around(self):
        """Everything outside of out/, with its bytes."""
        found = {}
        for folder, names, files in os.walk(self.top / "a"):
            if Path(folder) == self.run_folder and "out" in names:
                names.remove("out")
            for name in names:
                found[os.path.join(folder, name)] = None
            for name in files:
                found[os.path.join(folder, name)] = read(os.path.join(folder, name))
        return found

    def start(self, arguments, faults=None, preload=True, stdout=subprocess.PIPE, **popen):
        env = {"TZ": "UTC", "LC_ALL": "C", "PATH": os.environ.get("PATH", "")}
        if preload:
            self.counts_file.write_bytes(bytes(4 * (len(KINDS) + 1)))
            env["LD_PRELOAD"] = str(self.build.faults)
            env["VX_FAULT_COUNTS"] = str(self.counts_file)
            env.update({"VX_FAULT_" + key: str(value) for key, value in (faults or {}).items()})
        return subprocess.Popen(
            ["vx_sac", *arguments], executable=self.build.program, cwd=self.run_folder, env=env,
            stdin=subprocess.DEVNULL, stdout=stdout, stderr=subprocess.PIPE, start_new_session=True, **popen,
        )

    def run(self, arguments, faults=None, **more):
        return finish(self.start(arguments, faults, **more), PATIENCE)

    def run_command(self, command, seconds):
        """Any command that runs the program, its console going nowhere."""
        env = {"TZ": "UTC", "LC_ALL": "C", "PATH": os.environ.get("PATH", "")}
        child = subprocess.Popen(
            command, cwd=self.run_folder, env=env, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.PIPE, start_new_session=True,
        )
        return finish(child, seconds)

    def counts(self):
        """How often each kind of call was made in the last run, and under "faults" how many failed."""
        numbers = struct.unpack(f"{len(KINDS) + 1}I", self.counts_file.read_bytes())
        return dict(zip((*KINDS, "faults"), numbers))


def finish(child, seconds):
    """Waits for a child; what does not end in time is killed with all that it started."""
    hung = False
    try:
        out, err = child.communicate(timeout=seconds)
    except subprocess.TimeoutExpired:
        hung = True
        os.killpg(child.pid, signal.SIGKILL)
        out, err = child.communicate()
    return Outcome(child.returncode, out or b"", err or b"", hung)


def read(path):
    with open(path, "rb") as file:
        return file.read()


def tree(folder):
    found = {}
    for where, names, files in os.walk(folder):
        for name in names:
            path = os.path.join(where, name)
            if os.path.islink(path):
                found[os.path.relpath(path, folder)] = b""
        for name in files:
            path = os.path.join(where, name)
            found[os.path.relpath(path, folder)] = masked(name, read(path))
    return found


CLOCK = re.compile(rb"(System time: )[^\r]{1,24}")


def masked(name, content):
    """The clock in logs and the run's date in traces are not compared."""
    if name.endswith(".sac"):
        return content[:616] + b"????????"[: max(0, len(content) - 616)] + content[624:]
    return CLOCK.sub(lambda m: m[1] + b"*" * (len(m[0]) - len(m[1])), content)


def is_trace(name):
    return name.endswith(".sac")


def samples(files):
    """The samples of all traces, whatever their names and headers."""
    return sorted(content[HEADER:] for name, content in files.items() if is_trace(name))


def trace_fault(name, content, whole):
    """A trace of a run that ended early against the one of the undisturbed run."""
    if whole.startswith(content):
        return None  # also a short trace that was written by one call, and cut
    if not whole.startswith(content[HEADER:], HEADER) and len(content) > HEADER:
        return f"{name}: its samples are no beginning of the undisturbed run's"
    if len(content) >= HEADER and content[NPTS : NPTS + 4] != bytes(4):
        return f"{name}: a finished trace is not that of the undisturbed run"
    return None


def early_end_fault(files, reference, before, told):
    """What is left must be beginnings of what the undisturbed run leaves, finished traces whole."""
    for name, content in files.items():
        if is_trace(name) and name in before:
            if content != before[name]:
                return f"{name}: stood there before, and was changed"
        elif is_trace(name):
            if not told and name not in reference:
                return f"{name}: the undisturbed run has no such file"
            if name in reference and not told:
                fault = trace_fault(name, content, reference[name])
                if fault:
                    return fault
        elif name in reference and not told and not reference[name].startswith(content):
            return f"{name}: no beginning of the undisturbed run's"
    for name, content in before.items():
        if name not in files:
            return f"{name}: stood there before, and is gone"
        if name.startswith("ID") and not files[name].startswith(content):
            return f"{name}: stood there before, and was changed"
    return None


def header_fault(outcome, files, reference):
    """What is wrong with a run that could not rewrite a header."""
    if HEADER_LOST not in outcome.out:
        return None
    if outcome.status == 0:
        return "status 0 after a header that was not finished"
    if not EARLY_END.search(outcome.words) and samples(files) != samples(reference):
        return "only headers were not finished, and samples are missing"
    return None


def same_fault(files, reference):
    if sorted(files) != sorted(reference):
        odd = sorted(set(files) ^ set(reference))
        return f"status 0, and files differ: {odd[:3]}"
    for name, content in reference.items():
        if files[name] != content:
            return f"status 0, and {name} differs"
    return None


class Account:
    """What was tried, and what was found."""

    def __init__(self, findings_kept=20):
        self.runs = 0
        self.struck = 0
        self.findings = []
        self.statuses = {}
        self.left_out = []
        self.findings_kept = findings_kept
        self.began = time.monotonic()

    def note(self, what, status, fault, struck=True):
        self.runs += 1
        self.struck += bool(struck)
        self.statuses[status] = self.statuses.get(status, 0) + 1
        if fault:
            self.findings.append(f"{what}: {fault}")
            if len(self.findings) <= self.findings_kept:
                print(f"   FOUND {what}: {fault}", flush=True)

    def leave_out(self, what):
        self.left_out.append(what)
        print(f"   left out: {what}", flush=True)

    def figures(self):
        statuses = ", ".join(f"{status}: {n}" for status, n in sorted(self.statuses.items()))
        return (f"{self.runs} runs, {self.struck} of them struck, {len(self.findings)} findings, "
                f"{len(self.left_out)} left out; by status {statuses}")
