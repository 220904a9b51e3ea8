"""Writes summary.tsv and prints it. Begin reading at summarize."""
import collections
import re
from typing import Iterator, NamedTuple, Optional

from vx_runs.console import note, reason, shown, tell
from vx_runs.files import entries_of, state_of, write_lines
from vx_runs.inputs import FOLDER_FORM, Item, item_of
from vx_runs.run import Ended, read_status
from vx_runs.settings import KEY_LENGTH

GOOD = "converted to the end"
MEANINGS = {
    0: GOOD,
    1: "the input is empty",
    2: "mistake on the command line",
    10: "the output path does not exist",
    20: "a file could not be opened",
    21: "a file could not be read",
    22: "a file could not be written",
    23: "no free name was left for a trace",
    40: "out of memory",
    126: "the program could not be started; to be done again",
    127: "the program could not be started; to be done again",
    255: "out of memory",
}


def meaning_of(status: int) -> str:
    if status in MEANINGS:
        return MEANINGS[status]
    if status > 128:
        return f"ended by signal {status - 128}; to be done again"
    return "unknown"


class Row(NamedTuple):
    """A line of the table."""
    input: str
    status: str
    meaning: str
    traces: str
    bytes_read: str
    bytes_written: str
    seconds: str
    folder: str

    @property
    def is_good(self) -> bool:
        return self.meaning.startswith(GOOD)


def row_of(name: str, folder: str, ended: Optional[Ended], changed: bool) -> Row:
    if not ended:
        return Row(name, "-", "not finished; to be done again", "-", "-", "-", "-", folder)
    meaning = meaning_of(ended.status)
    if ended.status == 0 and changed:
        meaning = "the input has changed since"
    elif ended.status == 0 and ended.traces == "0":
        meaning += "; it held no traces"
    return Row(name, str(ended.status), meaning, ended.traces, ended.read, ended.written, ended.seconds, folder)


def left_overs(out: str) -> dict[str, str]:
    """Folders of unfinished runs, by the key of the input."""
    form = re.compile(r"[0-9a-f]{%d}\.[0-9]+" % KEY_LENGTH)
    return {name[:KEY_LENGTH]: f"{out}/work/{name}" for name in entries_of(f"{out}/work") if form.fullmatch(name)}


def row_of_input(out: str, item: Item, halves: dict[str, str]) -> Row:
    folder = f"{out}/{item.folder}"
    ended = read_status(folder)
    if not ended:
        folder = halves.get(item.key, "-")
        ended = read_status(folder)
    return row_of(item.input, folder, ended, bool(ended) and ended.of != state_of(item.input))


def row_of_folder(folder: str, key: str) -> Row:
    """A run of an input that this call did not name. The input is checked for changes only if its name, from here,
    still gives this folder."""
    ended = read_status(folder)
    if not ended:
        return row_of("-", folder, None, False)
    is_seen = "\0" not in ended.input and item_of(ended.input).key == key
    return row_of(ended.input, folder, ended, is_seen and ended.of != state_of(ended.input))


def other_folders(out: str, plan: list[Item], halves: dict[str, str]) -> Iterator[tuple[str, str]]:
    """Run folders, and their keys, of inputs that are not in the plan; unfinished ones come last."""
    keys = {item.key for item in plan}
    for name in sorted(entries_of(out)):
        if FOLDER_FORM.fullmatch(name) and (key := name[-KEY_LENGTH:]) not in keys:
            keys.add(key)
            yield f"{out}/{name}", key
    yield from ((folder, key) for key, folder in halves.items() if key not in keys)


def line_of(row: Row) -> str:
    """A line of the table; tabs and backslashes in names are escaped."""
    return "\t".join(cell.replace("\\", "\\\\").replace("\t", "\\t") for cell in row)


def tell_line(status: str, traces: str, read: str, written: str, seconds: str, name: str) -> None:
    tell(f"{status:>6} {traces:>8} {read:>14} {written:>14} {seconds:>10}  {name}")


def tell_row(row: Row) -> None:
    meaning = "" if row.meaning == GOOD else ": " + row.meaning
    tell_line(row.status, row.traces, row.bytes_read, row.bytes_written, row.seconds, shown(row.input) + meaning)


class Summary:
    """Makes and prints the table line by line, and counts."""

    def __init__(self, out: str, plan: list[Item], quiet: bool):
        self.out, self.plan, self.quiet = out, plan, quiet
        self.good = self.others = 0

    def lines(self) -> Iterator[str]:
        yield "\t".join(Row._fields)
        halves = left_overs(self.out)
        for item in self.plan:
            row = row_of_input(self.out, item, halves)
            self.good += row.is_good
            if not self.quiet or row.meaning != GOOD:
                tell_row(row)
            yield line_of(row)
        for folder, key in other_folders(self.out, self.plan, halves):
            self.others += 1
            yield line_of(row_of_folder(folder, key))

    def closing_line(self, is_written: bool) -> str:
        more = f", with {self.others} earlier runs," if self.others else ""
        where = f"is {shown(self.out)}/summary.tsv" if is_written else "is not written"
        return (f"{self.good} of {len(self.plan)} inputs converted to the end, {len(self.plan) - self.good} not; "
                f"the table{more} {where}")


def summarize(out: str, plan: list[Item], quiet: bool = False) -> bool:
    """Writes OUT/summary.tsv for all runs there, and prints the lines of these inputs; with `quiet`, only of those that
    failed. Returns true if each of these inputs is converted and the table is written."""
    summary = Summary(out, plan, quiet)
    lines = summary.lines()
    is_written = True
    if not quiet:
        tell_line("status", "traces", "bytes read", "bytes written", "seconds", "input")
    try:
        write_lines(f"{out}/summary.tsv", lines)
    except OSError as error:
        note(f"the table cannot be written: {reason(error)}")
        is_written = False
        collections.deque(lines, maxlen=0)  # still prints the table
    if not quiet or summary.good < len(plan):
        tell(summary.closing_line(is_written))
    return is_written and summary.good == len(plan)
