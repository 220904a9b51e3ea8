"""Converts one input into its folder. Begin reading at Runner.run."""
import ctypes
import errno
import os
import re
import shutil
import signal
import subprocess
import threading
import time
from typing import BinaryIO, NamedTuple, Optional

from vx_runs.console import note, reason, shown
from vx_runs.files import entries_of, full_path, open_regular, remove, state_of, write_lines
from vx_runs.inputs import Item, link_of, needs_link
from vx_runs.settings import Program

STATUS_MOST = 65536  # bytes of run.status; a longer file was not written by a run

# The lines of run.status: a key, a tab, a value of this form.
STATUS_FORM = {
    "input": re.compile(".+"),
    "of": re.compile(r"[0-9]{1,20} -?[0-9]{1,20}(\.[0-9]{9})?"),
    "status": re.compile("[0-9]{1,2}|1[0-9]{2}|2[0-4][0-9]|25[0-5]"),
    "traces": re.compile("[0-9]{1,20}"),
    "read": re.compile("[0-9]{1,20}"),
    "written": re.compile("[0-9]{1,20}"),
    "seconds": re.compile(r"[0-9]{1,10}\.[0-9]{3}"),
    "program_sum": re.compile("[0-9a-f]{64}"),
}


class Ended(NamedTuple):
    """How a run ended. Numbers are texts as in run.status, except the status."""
    input: str
    of: str  # size of the input and its time of change
    status: int
    traces: str
    read: str
    written: str
    seconds: str


def read_status(folder: str) -> Optional[Ended]:
    """The contents of run.status; None if it is missing or incomplete."""
    try:
        descriptor = open_regular(f"{folder}/run.status")
        if descriptor is None:
            return None
        with open(descriptor, "rb") as file:
            text = os.fsdecode(file.read(STATUS_MOST))
    except OSError:
        return None
    lines = [line.partition("\t") for line in text.split("\n")]
    said = {key: value for key, _, value in lines}
    if not text.endswith("\n") or not all(form.fullmatch(said.get(key, "")) for key, form in STATUS_FORM.items()):
        return None
    return Ended(said["input"], said["of"], int(said["status"]), *(said[key] for key in Ended._fields[3:]))


def is_due(item: Item, ended: Optional[Ended], again: bool) -> bool:
    """True if the input is not converted; with `again`, also if it failed or has changed since."""
    return ended is None or (again and (ended.status != 0 or ended.of != state_of(item.input)))


def pending_of(out: str, plan: list[Item], again: bool) -> list[Item]:
    return [item for item in plan if is_due(item, read_status(f"{out}/{item.folder}"), again)]


def was_interrupted(status: int) -> bool:
    """True if a run ended by a signal or was never started: then its status says nothing about the input."""
    return status in (126, 127) or 128 < status < 255


# ---- the work folder ---------------------------------------------------------------------------------------------


def random_number() -> int:
    return int.from_bytes(os.urandom(4), "little") % 100000


def make_work_folder(out: str, key: str) -> str:
    for _ in range(9):
        work = f"{out}/work/{key}.{random_number()}"
        try:
            os.mkdir(work)
            return work
        except FileExistsError:
            continue
    raise FileExistsError(errno.EEXIST, os.strerror(errno.EEXIST), work)


def discard(out: str, path: str) -> None:
    """Renames the folder before removing it, so that a program that still writes there cannot finish it."""
    dead = f"{out}/work/dead.{time.time_ns()}{random_number():05d}"
    os.rename(path, dead)
    remove(dead)


def discard_the_dead(out: str) -> None:
    """Removes discarded folders that could not be removed before."""
    for name in entries_of(f"{out}/work"):
        try:
            if name.startswith("dead."):
                remove(f"{out}/work/{name}")
        except OSError as error:
            note(f"cannot be removed: {reason(error)}")


def discard_left_overs(out: str, key: str) -> None:
    """Removes what interrupted runs of this input left. Folders that cannot be removed do no harm."""
    for name in entries_of(f"{out}/work"):
        try:
            if name.startswith(key + "."):
                discard(out, f"{out}/work/{name}")
        except OSError:
            pass


def count_output(folder: str) -> tuple[int, int]:
    """The number of traces, and the bytes of all files that vx_sac wrote."""
    traces = written = 0
    waiting = [folder]
    while waiting:
        with os.scandir(waiting.pop()) as entries:
            for entry in entries:
                if entry.is_dir(follow_symlinks=False):
                    waiting.append(entry.path)
                elif entry.is_file(follow_symlinks=False) and entry.name not in ("run.out", "run.err"):
                    traces += entry.name.endswith(".sac")
                    written += entry.stat(follow_symlinks=False).st_size
    return traces, written


libc = ctypes.CDLL(None, use_errno=True)


def reach_disk(folder: str) -> None:
    """Waits until everything written to the folder's file system is on the disk."""
    descriptor = os.open(folder, os.O_RDONLY | os.O_DIRECTORY)
    try:
        if libc.syncfs(descriptor) != 0:
            number = ctypes.get_errno()
            raise OSError(number, os.strerror(number), folder)
    finally:
        os.close(descriptor)


# ---- the run -----------------------------------------------------------------------------------------------------


class Runner:
    """Runs vx_sac on inputs, each in its own folder. Several threads may use it at a time."""

    def __init__(self, out: str, program: Program, again: bool, held: tuple[int, ...] = ()):
        self.out, self.program, self.again = out, program, again
        self.held = held  # descriptors that vx_sac inherits, so that the lock is held until its last run ends
        self.stopped = False
        self.is_full = False  # writing to the output folder has failed
        self.children: set[subprocess.Popen] = set()
        self.lock = threading.Lock()
        self.ended = self.bytes_read = 0  # ended runs, and the total size of their inputs

    def run(self, item: Item) -> bool:
        """True when vx_sac ended with 0, now or before."""
        ended = read_status(f"{self.out}/{item.folder}")
        if ended and not is_due(item, ended, self.again):
            return ended.status == 0
        try:
            return self.run_anew(item) == 0
        except OSError as error:
            self.is_full = self.is_full or error.errno in (errno.ENOSPC, errno.EDQUOT, errno.EROFS)
            note(f"the run of {shown(item.input)} cannot be kept: {reason(error)}")
            return False

    def run_anew(self, item: Item) -> int:
        discard_left_overs(self.out, item.key)
        work = make_work_folder(self.out, item.key)
        of = state_of(item.input)
        began = time.monotonic()
        status = self.convert(item, work)
        if self.stopped:
            return 128 + signal.SIGTERM
        self.write_status(work, item, of, status, time.monotonic() - began)
        if not was_interrupted(status):
            self.publish(work, item)
        with self.lock:
            self.ended += 1
            self.bytes_read += int(of.split()[0])
        return status

    def convert(self, item: Item, work: str) -> int:
        name = item.input
        if needs_link(item):
            name = link_of(item, work)
            os.mkdir(os.path.dirname(name))
            os.symlink(full_path(item.input), name)
        with open(f"{work}/run.out", "xb") as out, open(f"{work}/run.err", "xb") as err:
            status = self.wait_for([self.program.path, name, work, *self.program.switches], out, err)
        if name != item.input:
            shutil.rmtree(os.path.dirname(name))
        return status

    def wait_for(self, command: list[str], out: BinaryIO, err: BinaryIO) -> int:
        """The exit status as a shell gives it. The program has its own process group, so that everything it starts
        can be ended with it."""
        try:
            child = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=out, stderr=err, pass_fds=self.held,
                                     process_group=0)
        except OSError as error:
            return 127 if error.errno == errno.ENOENT else 126
        self.children.add(child)
        if self.stopped:
            self.end(signal.SIGTERM)
        status = child.wait()
        self.children.discard(child)
        return status if status >= 0 else 128 - status

    def end(self, number: int) -> None:
        """Starts no further run, and sends the signal to those that are running."""
        self.stopped = True
        for child in list(self.children):
            try:
                if child.returncode is None:
                    os.killpg(child.pid, number)
            except ProcessLookupError:
                pass

    def write_status(self, work: str, item: Item, of: str, status: int, seconds: float) -> None:
        traces, written = count_output(work)
        write_lines(f"{work}/run.status", [
            f"input\t{item.input}", f"of\t{of}", f"status\t{status}", f"traces\t{traces}", f"read\t{of.split()[0]}",
            f"written\t{written}", f"seconds\t{seconds:.3f}", f"program_sum\t{self.program.sum}"])

    def publish(self, work: str, item: Item) -> None:
        """Moves the result from work to its place. A complete result that exists meanwhile is replaced only with
        --retry-failed; another run of the same input gave the same result."""
        place = f"{self.out}/{item.folder}"
        reach_disk(work)
        # Taken over, it must not throw away what came in its stead.
        if os.path.isdir(work) and os.path.lexists(place) and (self.again or not read_status(place)):
            discard(self.out, place)
        try:
            os.rename(work, place)
        except OSError:
            if not read_status(place):
                raise
            discard_left_overs(self.out, item.key)
