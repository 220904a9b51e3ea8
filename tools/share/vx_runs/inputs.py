"""Makes the plan from names, lists and folders: all inputs, each with the name of its output folder."""
import fnmatch
import hashlib
import os
import re
from typing import Iterable, Iterator, NamedTuple

from vx_runs.console import Refusal, note, shown
from vx_runs.files import PATH_MOST, bytes_in, full_path, open_regular, plain_name, read_text
from vx_runs.settings import KEY_LENGTH, WORK_LENGTH

NAME_MOST = 40  # characters of a folder's name before the key
FOLDER_FORM = re.compile(r"[A-Za-z0-9_+][A-Za-z0-9._+-]{0,%d}-[0-9a-f]{%d}" % (NAME_MOST - 1, KEY_LENGTH))


class Item(NamedTuple):
    """An input and the name of its output folder."""
    folder: str
    input: str

    @property
    def key(self) -> str:
        return self.folder[-KEY_LENGTH:]


def item_of(name: str) -> Item:
    full = os.fsencode(full_path(name))
    base = re.sub(rb"[^A-Za-z0-9._+-]", b"_", full.rpartition(b"/")[2])
    base = re.sub(rb"^[.-]", b"_", base)[:NAME_MOST]
    return Item(f"{base.decode()}-{hashlib.sha256(full).hexdigest()[:KEY_LENGTH]}", name)


def listed(path: str) -> list[str]:
    """The names in a list, one per line; "-" is standard input."""
    try:
        return read_text("/dev/stdin" if path == "-" else path).split("\n")
    except OSError as error:
        raise Refusal(f"cannot read the list {shown(path)}: {error.strerror}") from None


def files_below(folder: str, globs: list[str]) -> Iterator[str]:
    """All files in and below a folder, following links; with globs, those whose names match one of them."""
    waiting = [(folder, frozenset())]
    while waiting:
        path, above = waiting.pop()
        state = os.stat(path)
        identity = (state.st_dev, state.st_ino)
        if identity in above:
            raise Refusal(f"not all inputs could be found: {shown(path)} leads back to a folder above it")
        with os.scandir(path) as entries:
            for entry in entries:
                if entry.is_dir():
                    waiting.append((entry.path, above | {identity}))
                elif entry.is_file() and (not globs or any(fnmatch.fnmatchcase(entry.name, glob) for glob in globs)):
                    yield entry.path


def expand(out: str, names: Iterable[str], globs: list[str]) -> Iterator[str]:
    """Replaces folders by the files in them, sorted by bytes."""
    for name in map(plain_name, filter(None, names)):
        if not os.path.isdir(name):
            yield name
            continue
        real = os.path.realpath(name)
        if os.path.commonpath([real, os.path.realpath(out)]) == real:
            raise Refusal(f"the output folder lies inside the input folder {shown(name)}")
        try:
            yield from sorted(files_below(name, globs), key=os.fsencode)
        except OSError as error:
            raise Refusal(f"not all inputs could be found: {shown(error.filename)}: {error.strerror}") from None


def plan_inputs(out: str, names: Iterable[str], globs: list[str]) -> list[Item]:
    """Removes duplicates."""
    plan: dict[str, Item] = {}
    for name in expand(out, names, globs):
        if "\n" in name:
            raise Refusal(f"a name with a line end: {name!r}")
        if "\0" in name:
            raise Refusal(f"a name with a zero byte: {name!r}")
        item = item_of(name)
        other = plan.setdefault(item.folder, item)
        if other is not item and full_path(other.input) != full_path(name):
            raise Refusal(f"two inputs would share the folder {item.folder}")
    if not plan:
        raise Refusal("no inputs" + (" that --include matches" if globs else ""))
    return list(plan.values())


def link_of(item: Item, work: str) -> str:
    """The link for an input whose path is too long for vx_sac. vx_sac names its logs by the part before the last "." of
    the path; a name without "." gets one at its end, because an earlier "." in the path would be used."""
    name = os.path.basename(item.input)
    return f"{work}/in/{name}" + ("" if "." in name else ".")


def needs_link(item: Item) -> bool:
    return bytes_in(item.input) > PATH_MOST


def objection(out: str, item: Item) -> str:
    """Why an input cannot be converted; None if it can."""
    try:
        descriptor = open_regular(item.input)
    except OSError as error:
        return error.strerror
    if descriptor is None:
        return "not a regular file"
    os.close(descriptor)
    if needs_link(item) and bytes_in(out) + WORK_LENGTH + bytes_in(link_of(item, "")) > PATH_MOST:
        return f"a path of more than {PATH_MOST} characters, and the output path leaves no room for a link to it"
    return ""


def check_inputs(out: str, pending: list[Item]) -> None:
    """Fails before any conversion if one of the inputs cannot be converted."""
    bad = [(item, why) for item in pending if (why := objection(out, item))]
    for item, why in bad[:9]:
        note(f"{shown(item.input)}: {why}")
    if bad:
        raise Refusal(f"{len(bad)} of {len(pending)} inputs cannot be converted; no conversion was started")
