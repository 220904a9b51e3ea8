"""Messages, standard output, the command line, signals. Begin reading at start."""
import contextlib
import errno
import os
import re
import signal
import sys
from typing import Callable, Iterator, NamedTuple, Optional

SHARE = os.path.dirname(os.path.dirname(os.path.realpath(__file__)))

# Characters that control terminals, and marks that change the direction of writing.
STEERING = dict.fromkeys([*range(32), *range(127, 160), *range(0x202A, 0x202F), *range(0x2066, 0x206A)], "?")

to_be_ended: list[Callable[[int], None]] = []  # functions that on_signal calls at a second signal
_tool = "vx_batch"  # the name in messages; set by start
_output_lost = False  # writing to standard output has failed
_held: Optional[list[int]] = None  # signals received within signals_held


class Refusal(Exception):
    """The tool cannot start; the text says why."""


class Answered(Exception):
    """Help or the version was printed; nothing else is to be done."""


class Interrupted(Exception):
    """A signal asks the tool to end; the argument is its number."""


def shown(name: str) -> str:
    """A name for messages."""
    return name.translate(STEERING)


def note(text: str) -> None:
    if sys.stderr:
        sys.stderr.write(f"{_tool}: {text}\n")
        sys.stderr.flush()


def reason(error: OSError) -> str:
    """The text of a system error, with its file name."""
    name = f"{shown(os.fsdecode(error.filename))}: " if error.filename else ""
    return f"{name}{error.strerror or error}"


def tell(text: str, end: str = "\n") -> None:
    """Prints to standard output. If that fails, the work goes on."""
    global _output_lost
    if not sys.stdout or _output_lost:
        return
    try:
        sys.stdout.write(text + end)
        if not end:
            sys.stdout.flush()
    except OSError as error:
        _output_lost = True
        os.dup2(os.open(os.devnull, os.O_WRONLY), 1)
        if error.errno != errno.EPIPE:  # the reader closed it on purpose
            note(f"standard output cannot be written: {error.strerror}")


def on_signal(number: int, _: object) -> None:
    """Raises the first signal as Interrupted; a second one ends the program at once. SIGHUP counts as SIGTERM."""
    number = signal.SIGTERM if number == signal.SIGHUP else number
    watch_signals(lambda *_: end_at_once(number))
    if _held is None:
        raise Interrupted(number)
    _held.append(number)


@contextlib.contextmanager
def signals_held() -> Iterator[list[int]]:
    """Delays signals: the first one is put into the list and raised at the end. With threads, an exception at any
    moment could leave a lock taken."""
    global _held
    _held = told = []
    try:
        yield told
    finally:
        _held = None
    if told:
        raise Interrupted(told[0])


def watch_signals(handler: Callable[[int, object], None]) -> None:
    """A signal that was ignored from the start (nohup) stays ignored."""
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        if signal.getsignal(number) != signal.SIG_IGN:
            signal.signal(number, handler)


def end_at_once(number: int) -> None:
    for end in to_be_ended:
        end(signal.SIGKILL)
    os._exit(128 + number)


def start(tool: str, work: Callable[[list[str]], int]) -> int:
    """Runs a tool with its command line; returns the exit status. A failure is printed as one sentence."""
    global _tool
    _tool = tool
    for stream in (sys.stdout, sys.stderr):
        if stream:
            stream.reconfigure(encoding=sys.getfilesystemencoding(), errors="surrogateescape")
    try:
        watch_signals(on_signal)
        status = work(sys.argv[1:])
    except Answered:
        status = 0
    except Interrupted as end:
        note("interrupted; start it again to continue")
        status = 128 + end.args[0]
    except (Refusal, OSError, MemoryError) as error:
        note(reason(error) if isinstance(error, OSError) else str(error) or "out of memory")
        status = 2
    tell("", end="")
    return status


class Arguments(NamedTuple):
    """Splits the command line: options with their values (a flag has ""), names, switches of vx_sac after --."""
    options: dict[str, list[str]]
    names: list[str]
    switches: list[str]

    def last(self, option: str) -> str:
        return self.options.get(option, [""])[-1]

    def count(self, option: str, default: int) -> int:
        if option not in self.options:
            return default
        if not re.fullmatch("[1-9][0-9]{0,8}", self.last(option)):
            raise Refusal(f"{option} takes a number from 1")
        return int(self.last(option))


def take_arguments(argv: list[str], usage: str, flags: set[str], valued: set[str]) -> Arguments:
    """An option's value is the next argument or part of the same one: -j2, --include=*.pkt."""
    options: dict[str, list[str]] = {}
    names: list[str] = []
    words = iter(argv)
    for word in words:
        if word == "--":
            break
        answer(word, usage)
        if word == "-" or not word.startswith("-"):
            names.append(word)
            continue
        option, glue, value = word.partition("=") if word.startswith("--") else (word[:2], word[2:], word[2:])
        if option in valued:
            value = value if glue else next(words, None)
        elif word not in flags:
            raise Refusal(f"unknown option '{shown(word)}' (see {_tool} --help; switches of vx_sac come after --)")
        if value is None:
            raise Refusal(f"{option} needs a value")
        options.setdefault(option, []).append(value)
    return Arguments(options, names, checked_switches(list(words)))


def answer(word: str, usage: str) -> None:
    if word in ("-h", "--help"):
        tell(usage.strip())
    elif word == "--version":
        tell(f"{_tool} {project_version()}")
    else:
        return
    raise Answered


def checked_switches(switches: list[str]) -> list[str]:
    for switch in switches:
        if not switch.startswith("-") or "\n" in switch:
            raise Refusal(f"'{shown(switch)}' is not a switch of vx_sac")
    return switches


def project_version() -> str:
    """The version: from a file beside this package if installed, from CMakeLists.txt in the source tree."""
    installed = os.path.join(SHARE, "version")
    if os.path.exists(installed):
        with open(installed, encoding="ascii") as file:
            return file.read().strip()
    with open(os.path.join(SHARE, "../../CMakeLists.txt"), encoding="utf-8") as file:
        return re.search(r"^project\(.* VERSION ([0-9.]+)", file.read(), re.M)[1]
