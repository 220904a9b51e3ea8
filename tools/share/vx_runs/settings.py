"""The settings of all runs in an output folder: the program, its switches, the station file."""
import hashlib
import os
import shutil
import stat
import subprocess
import tempfile
from typing import NamedTuple

from vx_runs.console import SHARE, Refusal, note, shown
from vx_runs.files import PATH_MOST, bytes_in, read_text, write_lines

KEY_LENGTH = 16
WORK_LENGTH = len("/work/") + KEY_LENGTH + len(".12345")
OUT_MOST = PATH_MOST - WORK_LENGTH - len("/")


class Program(NamedTuple):
    path: str
    sum: str
    switches: list[str]


def need(*programs: str, package: str) -> None:
    for program in programs:
        if not shutil.which(program):
            raise Refusal(f"{program} is needed and not installed (on Debian: apt-get install {package})")


def sum_of(path: str) -> str:
    with open(path, "rb") as file:
        return hashlib.file_digest(file, "sha256").hexdigest()


def find_program(beside: str, asked: str, switches: list[str]) -> Program:
    """The program named, else the one in the folder of the tools, else in the PATH, else in the build folder."""
    known = [os.path.join(beside, "vx_sac"), shutil.which("vx_sac"), os.path.join(SHARE, "../../build/release/vx_sac")]
    for path in [asked] if asked else known:
        if path and os.path.isfile(path) and os.access(path, os.X_OK):
            path = os.path.realpath(path)
            try_program(path, switches)
            return Program(path, sum_of(path), switches)
    raise Refusal(f"there is no program {shown(asked)}" if asked else "no vx_sac found (name it with --program)")


def try_program(path: str, switches: list[str]) -> None:
    """Checks that the program runs and takes these switches: with an empty input its status must be 1."""
    with tempfile.TemporaryDirectory(prefix="vx.") as folder:
        empty = os.path.join(folder, "empty")
        open(empty, "xb").close()
        try:
            status = subprocess.run([path, empty, folder, *switches], stdin=subprocess.DEVNULL,
                                    stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode
        except OSError as error:
            raise Refusal(f"{shown(path)} does not work here: {error.strerror}") from None
    if status == 2:
        raise Refusal(f"vx_sac does not take these switches: {shown(' '.join(switches))}")
    if status != 1:
        raise Refusal(f"{shown(path)} does not work here (status {status} for an empty input instead of 1)")


def station_file(program: str) -> str:
    """The path at which vx_sac will find the station file."""
    named = os.environ.get("VXU", "")
    if named.startswith("="):
        return named[1:]
    return "vxu.ini" if os.path.exists("vxu.ini") else os.path.join(os.path.dirname(program), "vxu.ini")


def station_sum(program: str) -> str:
    """Fails if the station file cannot be read, because the traces would lack its values."""
    path = station_file(program)
    try:
        mode = os.stat(path).st_mode
        if stat.S_ISFIFO(mode) or stat.S_ISSOCK(mode):
            raise Refusal(f"the station file {shown(path)} is not a regular file")
        return sum_of(path) if stat.S_ISREG(mode) else "none"
    except (FileNotFoundError, NotADirectoryError):
        return "none"
    except OSError as error:
        raise Refusal(f"the station file {shown(path)} cannot be read: {error.strerror}") from None


def settings_of(program: Program) -> list[str]:
    return [f"program\t{program.path}", f"program_sum\t{program.sum}", f"station_sum\t{station_sum(program.path)}",
            *(f"switch\t{switch}" for switch in program.switches)]


def values_of(settings: list[str], key: str) -> list[str]:
    return [line.partition("\t")[2] for line in settings if line.startswith(key + "\t")]


def check_output(out: str) -> None:
    """Refuses a folder with other files. Changes nothing."""
    if "\n" in out:
        raise Refusal(f"the output path has a line end: {out!r}")
    if bytes_in(out) > OUT_MOST:
        raise Refusal(f"the output path is too long: vx_sac allows {OUT_MOST} characters")
    if os.path.isdir(out) and not os.path.isdir(f"{out}/work") and os.listdir(out):
        raise Refusal(f"{shown(out)} holds other files; use a new or an empty folder")


def settings_there(out: str) -> list[str]:
    path = f"{out}/settings"
    if os.path.exists(path) and not os.path.isfile(path):
        raise Refusal(f"{shown(path)} is not a regular file")
    return read_text(path).split("\n") if os.path.exists(path) else []


def check_settings(out: str, now: list[str]) -> None:
    """Refuses a folder whose results have other switches or another station file."""
    before = settings_there(out)
    if not before:
        return
    if (switches := values_of(before, "switch")) != values_of(now, "switch"):
        raise Refusal(f"{shown(out)} has results with other switches ({shown(' '.join(switches))}); use another folder")
    if values_of(before, "station_sum") != values_of(now, "station_sum"):
        raise Refusal(f"{shown(out)} has results with another station file (vxu.ini); use another folder")


def make_output(out: str) -> None:
    try:
        os.makedirs(f"{out}/work", exist_ok=True)
    except OSError as error:
        raise Refusal(f"cannot make the folder {shown(out)}: {error.strerror}") from None


def keep_settings(out: str, now: list[str]) -> None:
    check_settings(out, now)  # another batch may have started since the first check
    before = settings_there(out)
    if before and values_of(before, "program_sum") != values_of(now, "program_sum"):
        note(f"{shown(out)} has results of another build of vx_sac; these are kept")
    write_lines(f"{out}/settings", now)
