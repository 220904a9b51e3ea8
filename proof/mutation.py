# Turns round jumps of the library under the tests, one at a time, and counts which changes the tests notice.
# mutation.py BUILD COUNT; see proof/mutation. The last line on standard output is the finding.

import contextlib
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

    def turned(self):
        code = bytearray(self.code)
        code[1 if code[0] == 0x0F else 0] ^= 1
        return bytes(code)

    def __str__(self):
        return f"{self.file}:{self.line} in {self.function}"

    def source(self):
        with open(self.file, encoding="utf-8") as file:
            return file.read().splitlines()[self.line - 1].strip()


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, timeout=600).stdout


def jumps_of(library):
    """All conditional jumps whose line is one of src/, not one of a header of the standard library."""
    found = []
    function = ""
    for line in output_of("objdump", "-d", "-w", "-C", library).splitlines():
        if m := re.match(r"[0-9a-f]+ <(.*)>:$", line):
            function = re.split(r"[(<\[]", m[1].replace("(anonymous namespace)::", ""))[0].split(" ")[-1]
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
        if name.startswith(source) and number.isdigit() and number != "0":
            jumps.append(Jump(address, code, function, "src/" + name[len(source):], int(number)))
    return jumps


def offset_of_text(library):
    """What an address in .text must be lowered by to be a place in the file."""
    for line in output_of("objdump", "-h", "-w", library).splitlines():
        fields = line.split()
        if len(fields) > 5 and fields[1] == ".text":
            return int(fields[3], 16) - int(fields[5], 16)
    sys.exit("mutation: the library has no .text")


def limit():
    resource.setrlimit(resource.RLIMIT_CPU, (CPU_MOST, CPU_MOST + 2))
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


def run(command, folder, seconds):
    """Status and output; -1 when the time ran out. Nothing that the command started stays behind."""
    child = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=limit,
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
        killer = self.one_by_one()
        if killer:
            sys.exit(f"mutation: the unchanged library fails: {killer}")

    def together(self, room, seconds):
        """What fails first of a room's tests, in one process; empty if nothing does."""
        rest = "*-" + ":".join(LEFT_OUT + self.apart[room])
        with scratch() as folder:
            status, text = run([self.programs[room], "--gtest_fail_fast", "--gtest_brief=1",
                                f"--gtest_filter={rest}"], folder, seconds)
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

    def killer(self, first):
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
    """File, function and source line of each: line numbers would not last."""
    known = set()
    with open("proof/mutation-survivors", encoding="utf-8") as file:
        for line in file:
            fields = [field.strip() for field in line.split(" | ")]
            if not line.startswith("#") and len(fields) == 4:
                known.add(tuple(fields[:3]))
    return known


def main():
    build, count = sys.argv[1], int(sys.argv[2])
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

        picked = random.Random(SEED).sample(jumps, min(count, len(jumps)))
        survivors = []
        for number, jump in enumerate(picked, 1):
            library.put([jump])
            killer = suite.killer(jump.file.split("/")[1])
            print(f"{number} {jump}: {killer or 'NOT NOTICED: ' + jump.source()}", flush=True)
            if not killer:
                survivors.append(jump)

        # The unchanged library must still pass, or the failures were not the changes'.
        library.put([])
        if suite.killer("runs"):
            sys.exit("mutation: the unchanged library fails after the run")

    killed = len(picked) - len(survivors)
    explained = sum((jump.file, jump.function, jump.source()) in known for jump in survivors)
    print(f"{killed} of {len(picked)} changed jumps noticed ({100 * killed / len(picked):.1f} %),"
          f" {len(survivors)} not, {explained} of those explained; {len(jumps)} jumps in all")
    return 0 if killed >= LEAST_KILLED * len(picked) else 1


if __name__ == "__main__":
    sys.exit(main())
