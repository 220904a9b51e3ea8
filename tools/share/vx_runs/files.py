"""Names of files, writing and removing files. Names are texts from os.fsdecode, which can hold any bytes."""
import os
import shutil
import stat
from typing import Iterable, Optional

PATH_MOST = 131  # characters (bytes) of vx_sac's paths


def bytes_in(path: str) -> int:
    return len(os.fsencode(path))


def plain_name(name: str) -> str:
    """A name that vx_sac does not take for a switch."""
    return "./" + name if name.startswith(("-", "?")) else name


def full_path(name: str) -> str:
    """Absolute path without empty and "." parts; ".." stays, because the part before it may be a link."""
    full = name if name.startswith("/") else f"{os.getcwd()}/{name}"
    parts = [part for part in full.split("/") if part not in ("", ".")]
    while parts and parts[0] == "..":
        parts.pop(0)
    return "/" + "/".join(parts)


def state_of(path: str) -> str:
    """Size in bytes and time of change."""
    try:
        state = os.stat(path)
    except OSError:
        return "0 0"
    seconds, rest = divmod(abs(state.st_mtime_ns), 10**9)
    return f"{state.st_size} {'-' if state.st_mtime_ns < 0 else ''}{seconds}.{rest:09d}"


def size_of(path: str) -> int:
    return int(state_of(path).partition(" ")[0])


def open_regular(path: str) -> Optional[int]:
    """A descriptor for reading; None if it is not a regular file. Never waits for the writer of a pipe."""
    descriptor = os.open(path, os.O_RDONLY | os.O_NONBLOCK)
    if stat.S_ISREG(os.fstat(descriptor).st_mode):
        return descriptor
    os.close(descriptor)
    return None


def read_text(path: str) -> str:
    with open(path, "rb") as file:
        return os.fsdecode(file.read())


def write_lines(path: str, lines: Iterable[str]) -> None:
    """Writes a temporary file and renames it, so that the file is always complete. Follows no link at the path."""
    part = path + ".part"
    if os.path.lexists(part):
        os.unlink(part)
    try:
        with open(part, "xb") as file:
            file.writelines(os.fsencode(line + "\n") for line in lines)
        os.replace(part, path)
    except OSError as error:
        if os.path.lexists(part):
            os.unlink(part)
        raise OSError(error.errno, error.strerror, path) from None


def entries_of(folder: str) -> list[str]:
    try:
        return os.listdir(folder)
    except FileNotFoundError:
        return []


def remove(path: str) -> None:
    if os.path.isdir(path) and not os.path.islink(path):
        shutil.rmtree(path)
    else:
        os.unlink(path)
