"""Converts many inputs, several at a time, and handles signals. Begin reading at run_all."""
import concurrent.futures
import signal
import sys
import time
from typing import Iterator

from vx_runs.console import signals_held, to_be_ended
from vx_runs.files import size_of
from vx_runs.inputs import Item
from vx_runs.run import Runner

PATIENCE = 5  # seconds that an interrupted vx_sac gets to end


class Bar:
    """Shows the progress on a terminal."""

    def __init__(self, runner: Runner, items: list[Item], is_wanted: bool):
        self.runner, self.inputs = runner, len(items)
        self.is_wanted = is_wanted and sys.stderr is not None and sys.stderr.isatty()
        self.bytes = sum(size_of(item.input) for item in items) if self.is_wanted else 0

    def put(self, text: str) -> None:
        if self.is_wanted:
            sys.stderr.write("\r\033[K" + text)
            sys.stderr.flush()

    def show(self) -> None:
        self.put(f"{self.runner.ended} of {self.inputs} inputs, "
                 f"{self.runner.bytes_read / 1e6:.0f} of {self.bytes / 1e6:.0f} MB")


def work_off(runner: Runner, items: Iterator[Item]) -> bool:
    """The work of each thread; all share the iterator. Returns true if all inputs were converted."""
    good = True
    for item in items:
        if runner.stopped or runner.is_full:
            return False
        good = runner.run(item) and good
    return good


def end_early(runner: Runner, threads: list[concurrent.futures.Future]) -> None:
    """Asks vx_sac to end, then kills it."""
    runner.end(signal.SIGTERM)
    until = time.monotonic() + PATIENCE
    while concurrent.futures.wait(threads, timeout=0.1).not_done:
        if time.monotonic() > until:
            runner.end(signal.SIGKILL)


def run_all(runner: Runner, items: list[Item], at_a_time: int, with_bar: bool) -> bool:
    """Returns true if all inputs were converted. When it raises Interrupted, no run is left."""
    bar = Bar(runner, items, with_bar)
    to_be_ended.append(runner.end)
    left = iter(items)
    with signals_held() as told, concurrent.futures.ThreadPoolExecutor(at_a_time) as pool:
        threads = [pool.submit(work_off, runner, left) for _ in range(min(at_a_time, len(items)))]
        while concurrent.futures.wait(threads, timeout=0.2).not_done and not told:
            bar.show()
        if told:
            end_early(runner, threads)
        bar.put("")
    return all([thread.result() for thread in threads])
