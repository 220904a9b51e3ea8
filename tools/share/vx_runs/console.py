"""What people see and type: messages, standard output, the command line, signals. Begin with start."""
import contextlib
import errno
import os
import re
import signal
import sys
from typing import Callable, Iterator, NamedTuple, Optional

SHARE = os.path.dirname(os.path.dirname(os.path.realpath(__file__)))

# Characters that steer terminals, and marks that turn the direction of writing.
STEERING = dict.fromkeys([*range(32), *range(127, 160), *range(0x202A, 0x202F), *range(0x2066, 0x206A)], "?")

to_be_ended: list[Callable[[int], None]] = []  # whom on_signal tells of a second signal
_tool = "vx_batch"  # the one that speaks; set by start
_output_lost = False  # standard output takes no more
_held: Optional[list[int]] = None  # of signals_held


class Refusal(Exception):
    """The tool cannot begin; the text says why."""


class Answered(Exception):
    """All that was asked for was help, or the version."""


class Interrupted(Exception):
    """A signal asks to end; its number."""


def shown(name: str) -> str:
    """A name for people."""
    return name.translate(STEERING)


def note(text: str) -> None:
    if sys.stderr:
        sys.stderr.write(f"{_tool}: {text}\n")
        sys.stderr.flush()


def reason(error: OSError) -> str:
    """What the system says, with the name it is about."""
    name = f"{shown(os.fsdecode(error.filename))}: " if error.filename else ""
    return f"{name}{error.strerror or error}"


def tell(text: str, end: str = "\n") -> None:
    """To standard output. When that breaks, the work goes on."""
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
        if error.errno != errno.EPIPE:  # whose reader has gone, knows it
            note(f"standard output cannot be written: {error.strerror}")


def on_signal(number: int, _: object) -> None:
    """The first signal that asks to end is raised, the next one ends the program at once. SIGHUP counts as SIGTERM."""
    number = signal.SIGTERM if number == signal.SIGHUP else number
    watch_signals(lambda *_: end_at_once(number))
    if _held is None:
        raise Interrupted(number)
    _held.append(number)


@contextlib.contextmanager
def signals_held() -> Iterator[list[int]]:
    """Within, the first signal goes into the list and is raised at the end: among threads that share locks an
    exception out of nowhere could leave one locked."""
    global _held
    _held = told = []
    try:
        yield told
    finally:
        _held = None
    if told:
        raise Interrupted(told[0])


def watch_signals(handler: Callable[[int, object], None]) -> None:
    """What was ignored from the start (nohup) stays ignored."""
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        if signal.getsignal(number) != signal.SIG_IGN:
            signal.signal(number, handler)


def end_at_once(number: int) -> None:
    for end in to_be_ended:
        end(signal.SIGKILL)
    os._exit(128 + number)


def start(tool: str, work: Callable[[list[str]], int]) -> int:
    """Runs a tool on the command line; gives its exit status. What it cannot do becomes one sentence."""
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
        note("interrupted; started again, it goes on")
        status = 128 + end.args[0]
    except (Refusal, OSError, MemoryError) as error:
        note(reason(error) if isinstance(error, OSError) else str(error) or "out of memory")
        status = 2
    tell("", end="")
    return status


class Arguments(NamedTuple):
    """The command line: options with all values given (of a flag ""), names, and the switches of vx_sac behind --."""
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
    """A value stands behind its option or is glued to it: -j2, --include=*.pkt."""
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
            raise Refusal(f"unknown option '{shown(word)}' (see {_tool} --help; switches of vx_sac stand behind --)")
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
            raise Refusal(f"'{shown(switch)}' is no switch of vx_sac")
    return switches


def project_version() -> str:
    """It is put beside this package when installed; in the source tree CMakeLists.txt tells it."""
    installed = os.path.join(SHARE, "version")
    if os.path.exists(installed):
        with open(installed, encoding="ascii") as file:
            return file.read().strip()
    with open(os.path.join(SHARE, "../../CMakeLists.txt"), encoding="utf-8") as file:
        return re.search(r"^project\(.* VERSION ([0-9.]+)", file.read(), re.M)[1]
