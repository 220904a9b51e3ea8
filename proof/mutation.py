# Turns round jumps of the library under the tests, one at a time, and counts which changes the tests notice.
#   mutation.py BUILD COUNT          so many, picked by chance; see proof/mutation
#   mutation.py BUILD FILE:LINE...   all of these lines
#   mutation.py BUILD known          those that proof/mutation-survivors names
# The last line on standard output is the finding.

import collections
import contextlib
import functools
import json
import os
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor

SEED = 2004
LEAST_KILLED = 0.9
ROOMS = ["driver", "packet", "model", "output", "runs"]
SLOW = 0.3  # seconds; such tests wait for something, and are run side by side at the end
CPU_MOST = 15  # seconds of a process; a loop without end stops there
# Loops over samples are compiled twice (driver/simd.h). A machine with wide vectors never runs the plain copy:
# where that is changed, the tests of the rooms that have such loops run on an emulated machine without.
OLD_PROCESSOR = ["qemu-x86_64-static", "-cpu", "Nehalem"]
OLD_ROOMS = ["packet", "output"]
OLD_SLOWER = 20
FILE_MOST = 1 << 29
LEFT_OUT = ["*gigabytes*", "*a_terminal_sees_the_progress_while*"]  # tests that make longer files than that
MEMORY_MOST = 8 << 30
SCRATCH = "/dev/shm" if os.path.isdir("/dev/shm") else None


class Jump:
    def __init__(self, address, code, function, file, line):
        self.address = address
        self.code = code  # the bytes of the instruction
        self.function = function  # in which it stands, inlined ones being part of it
        self.file, self.line = file, line
        self.source = source_lines(file)[line - 1].strip()
        self.which = ""  # "2 of 3" jumps of the same line and function

    def turned(self):
        code = bytearray(self.code)
        code[1 if code[0] == 0x0F else 0] ^= 1
        return bytes(code)

    def __str__(self):
        return f"{self.file}:{self.line} in {self.function}"

    def name(self):
        """Line numbers would not last."""
        return self.file, self.function, self.source, self.which

    def of_plain_copy(self):
        return self.function.endswith(".default")


@functools.cache
def source_lines(file):
    with open(file, encoding="utf-8") as text:
        return text.read().splitlines()


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, timeout=600).stdout


def jumps_of(library):
    """All conditional jumps whose line is one of src/, not one of a header of the standard library."""
    found = []
    function = ""
    for line in output_of("objdump", "-d", "-w", "-C", library).splitlines():
        if m := re.match(r"[0-9a-f]+ <(.*)>:$", line):
            function = re.split(r"[(<\[]", m[1].replace("(anonymous namespace)::", ""))[0].split(" ")[-1]
            if copy := re.search(r"\[clone (\.default|\.avx2)\]", m[1]):
                function += copy[1]
        m = re.match(r"\s*([0-9a-f]+):\t((?:[0-9a-f]{2} )+)\s*\tj\w+", line)
        if not m:
            continue
        code = bytes.fromhex(m[2])
        if 0x70 <= code[0] <= 0x7F or (code[0] == 0x0F and 0x80 <= code[1] <= 0x8F):
            found.append((int(m[1], 16), code, function))
    ask = "".join(f"{address:x}\n" for address, _, _ in found)
    lines = subprocess.run(["addr2line", "-e", library], input=ask, check=True, capture_output=True, text=True,
                           timeout=600).stdout.splitlines()
    source = os.path.abspath("src") + "/"
    jumps = []
    for (address, code, function), where in zip(found, lines, strict=True):
        name, _, number = where.split(" ")[0].rpartition(":")
        name = os.path.normpath(name)
        if not name.startswith(source) or not number.isdigit() or number == "0":
            continue
        file = "src/" + name[len(source):]
        # Now and then the number is one of a header, though the name is ours.
        if int(number) <= len(source_lines(file)):
            jumps.append(Jump(address, code, function, file, int(number)))
    of_line = collections.defaultdict(list)
    for jump in jumps:
        of_line[jump.name()].append(jump)
    for same in of_line.values():
        for number, jump in enumerate(same, 1):
            jump.which = f"{number} of {len(same)}"
    return jumps


def offset_of_text(library):
    """What an address in .text must be lowered by to be a place in the file."""
    for line in output_of("objdump", "-h", "-w", library).splitlines():
        fields = line.split()
        if len(fields) > 5 and fields[1] == ".text":
            return int(fields[3], 16) - int(fields[5], 16)
    sys.exit("mutation: the library has no .text")


def limit(cpu):
    resource.setrlimit(resource.RLIMIT_CPU, (cpu, cpu + 2))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_MOST, FILE_MOST))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_MOST, MEMORY_MOST))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def session_members(session):
    for entry in os.listdir("/proc"):
        if not entry.isdigit():
            continue
        try:
            with open(f"/proc/{entry}/stat", encoding="ascii", errors="replace") as stat:
                fields = stat.read().rpartition(")")[2].split()
        except OSError:
            continue
        if int(fields[3]) == session and fields[0] != "Z":
            yield int(entry)


def run(command, folder, seconds, cpu=CPU_MOST):
    """Status and output; -1 when the time ran out. Nothing that the command started stays behind."""
    child = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=lambda: limit(cpu),
                             env=os.environ | {"TMPDIR": folder, "TEST_TMPDIR": folder})
    status, text = -1, b""
    try:
        text = child.communicate(timeout=seconds)[0]
        status = child.returncode
    except subprocess.TimeoutExpired:
        pass
    finally:
        for member in session_members(child.pid):
            with contextlib.suppress(ProcessLookupError):
                os.kill(member, signal.SIGKILL)
    if status == -1:
        child.communicate()
    return status, text.decode("latin-1")


@contextlib.contextmanager
def scratch():
    """A folder that others may enter too: some tests give up their rights."""
    with tempfile.TemporaryDirectory(dir=SCRATCH, prefix="vx-mutation-", ignore_cleanup_errors=True) as folder:
        os.chmod(folder, 0o755)
        yield folder


class Suite:
    """The test programs, and which of their tests go together in one process."""

    def __init__(self, build):
        self.programs = {room: os.path.abspath(f"{build}/tests/test_{room}") for room in ROOMS}
        self.apart = {room: [] for room in ROOMS}  # tests that wait, or that want a process of their own
        self.seconds = {room: 0.0 for room in ROOMS}
        self.tests = 0

    def learn(self):
        """Runs everything on the unchanged library: what fails then is no judge."""
        for room in ROOMS:
            with scratch() as folder:
                report = folder + "/report.json"
                status, text = run([self.programs[room], "--gtest_brief=1", f"--gtest_output=json:{report}",
                               "--gtest_filter=*-" + ":".join(LEFT_OUT)], folder, 900)
                if not os.path.exists(report):
                    sys.exit(f"mutation: test_{room} ends early:\n{status} {text[-3000:]}")
                with open(report, encoding="latin-1") as file:
                    suites = json.loads(file.read())["testsuites"]
            for suite in suites:
                for test in suite["testsuite"]:
                    if test["result"] != "COMPLETED":
                        continue
                    self.tests += 1
                    if "failures" in test or float(test["time"].rstrip("s")) > SLOW:
                        self.apart[room].append(suite["name"] + "." + test["name"])
        for room in ROOMS:
            began = time.monotonic()
            killer = self.together(room, 900)
            self.seconds[room] = time.monotonic() - began
            if killer:
                sys.exit(f"mutation: the unchanged library fails: {killer}")
        killer = self.one_by_one() or self.on_old_processor("packet")
        if killer:
            sys.exit(f"mutation: the unchanged library fails: {killer}")

    def together(self, room, seconds, emulator=()):
        """What fails first of a room's tests, in one process; empty if nothing does."""
        rest = "*-" + ":".join(LEFT_OUT + self.apart[room])
        with scratch() as folder:
            status, text = run([*emulator, self.programs[room], "--gtest_fail_fast", "--gtest_brief=1",
                                f"--gtest_filter={rest}"], folder, seconds,
                               CPU_MOST * (OLD_SLOWER if emulator else 1))
        if status == 0:
            return ""
        failed = re.search(r"\[  FAILED  \] (\S+)", text)
        return failed[1] if failed else f"test_{room}, " + ("time" if status == -1 else f"status {status}")

    def one_by_one(self):
        def alone(test):
            room, name = test
            with scratch() as folder:
                status, _ = run([self.programs[room], f"--gtest_filter={name}"], folder, 150)
            return "" if status == 0 else name

        with ThreadPoolExecutor(16) as side_by_side:
            tests = [(room, name) for room in ROOMS for name in self.apart[room]]
            return next((name for name in side_by_side.map(alone, tests) if name), "")

    def on_old_processor(self, first):
        rooms = sorted(OLD_ROOMS, key=lambda room: room != first)
        tries = (self.together(room, 60 + OLD_SLOWER * self.seconds[room], OLD_PROCESSOR) for room in rooms)
        return next((killer for killer in tries if killer), "")

    def killer(self, jump):
        room = jump.file.split("/")[1]
        return self.on_old_processor(room) if jump.of_plain_copy() else self.killer_from(room)

    def killer_from(self, first):
        order = [first] + [room for room in ["runs", "packet", "model", "output", "driver"]
                           if room != first]
        for room in order:
            killer = self.together(room, 60 + 10 * self.seconds[room])
            if killer:
                return killer
        return self.one_by_one()


class Library:
    """The file that all programs load, put back at the end."""

    def __init__(self, build):
        self.path = os.path.abspath(f"{build}/libvx.so")
        self.whole = self.path + ".whole"
        with open(self.path, "rb") as file:
            self.bytes = file.read()
        self.lowered = offset_of_text(self.path)

    def __enter__(self):
        shutil.copy2(self.path, self.whole)
        return self

    def __exit__(self, *_):
        os.replace(self.whole, self.path)

    def expect_loaded_by(self, programs):
        for program in programs:
            if f"libvx.so => {self.path} " not in output_of("ldd", program):
                sys.exit(f"mutation: {program} does not load {self.path}")

    def put(self, jumps):
        code = bytearray(self.bytes)
        for jump in jumps:
            at = jump.address - self.lowered
            assert code[at:at + len(jump.code)] == jump.code
            code[at:at + len(jump.code)] = jump.turned()
        with open(self.path + ".new", "wb") as file:
            file.write(code)
        shutil.copymode(self.whole, self.path + ".new")
        os.replace(self.path + ".new", self.path)


def known_survivors():
    """What Jump.name() gives of each."""
    known = set()
    with open("proof/mutation-survivors", encoding="utf-8") as file:
        for line in file:
            # A source line may have bars, too.
            if m := re.fullmatch(r"(src/\S+) \| (\S+) \| (.+) \| (\d+ of \d+) \| .+\n", line):
                known.add(m.groups())
            elif not line.startswith("#"):
                sys.exit(f"mutation: not understood in proof/mutation-survivors: {line}")
    return known


def picked_of(jumps, what, known):
    if what == ["known"]:
        return [jump for jump in jumps if jump.name() in known]
    if what[0].isdigit():
        return random.Random(SEED).sample(jumps, min(int(what[0]), len(jumps)))
    return [jump for jump in jumps if f"{jump.file}:{jump.line}" in what]


def main():
    build, *what = sys.argv[1:]
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    known = known_survivors()
    suite = Suite(build)
    with Library(build) as library:
        jumps = jumps_of(library.path)
        # test_runs speaks to vx_sac only, and needs nothing of the library itself.
        loading = [suite.programs[room] for room in ROOMS if room != "runs"]
        library.expect_loaded_by([f"{build}/vx_sac", f"{build}/tests/vx_sac_failing_new", *loading])
        suite.learn()
        print(f"{len(jumps)} jumps, {suite.tests} tests, {sum(map(len, suite.apart.values()))} of them in"
              " processes of their own", flush=True)

        picked = picked_of(jumps, what, known)
        gone = known - {jump.name() for jump in jumps}
        for name in sorted(gone):
            print(f"proof/mutation-survivors names no jump of this library: {' | '.join(name)}", flush=True)
        survivors = []
        for number, jump in enumerate(picked, 1):
            library.put([jump])
            killer = suite.killer(jump)
            print(f"{number} {jump}: {killer or f'NOT NOTICED: {jump.source} ({jump.which})'}", flush=True)
            if not killer:
                survivors.append(jump)

        # The unchanged library must still pass, or the failures were not the changes'.
        library.put([])
        if suite.killer_from("runs"):
            sys.exit("mutation: the unchanged library fails after the run")

    killed = len(picked) - len(survivors)
    explained = sum(jump.name() in known for jump in survivors)
    print(f"{killed} of {len(picked)} changed jumps noticed ({100 * killed / len(picked):.1f} %),"
          f" {len(survivors)} not, {explained} of those explained; {len(jumps)} jumps in all")
    if what == ["known"]:  # wrong once a test notices the change, or nothing is there to change
        return 1 if killed or gone else 0
    return 0 if killed >= LEAST_KILLED * len(picked) else 1


if __name__ == "__main__":
    sys.exit(main())
