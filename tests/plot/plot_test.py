#!/usr/bin/env python3
"""vx_plot on traces made here, byte by byte; its pictures are looked at pixel by pixel.

plot_test.py MESSAGES|PICTURES|CHOICES with vx_ls in the PATH. Status 77: the pictures cannot be drawn here.
"""
import array
import os
import pathlib
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest

sys.dont_write_bytecode = True
from png import Picture, size_of  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PLOT = ROOT / "tools" / "bin" / "vx_plot"
CANNOT_RUN = 77


def sac_bytes(clock, delta, samples, station="STA01", component="9A01-HHZ", order=">"):
    """clock: year, day of year, hour, minute, second, millisecond."""
    floats = [-12345.0] * 70
    floats[0] = delta
    words = [*clock, 6, -12345, -12345, len(samples)] + [-12345] * 30
    words[15] = 1  # a time series
    words[35:40] = 1, 1, 0, 0, 0
    texts = station.encode().ljust(8, b"\0") + b"-12345  " * 19 + component.encode().ljust(8) + b"-12345  " * 3
    values = array.array("f", samples)
    if (sys.byteorder == "little") != (order == "<"):
        values.byteswap()
    header = struct.pack(f"{order}70f40i", *floats, *words) + texts
    assert len(header) == 632
    return header + values.tobytes()


def six_o_clock(minutes=0, seconds=0):
    return (2023, 10, 6, minutes, seconds, 0)


def spike(count, at, height=1000.0):
    return [height if i == at else 0.0 for i in range(count)]


class Section:
    """A picture of vx_plot, addressed by row of traces and by parts of the axis of time and of the row's height."""

    def __init__(self, path, rows):
        picture = Picture(path)
        self.width, self.height = picture.width, picture.height
        black = picture.where(lambda colours: max(colours) < 190 and max(colours) - min(colours) < 20)
        self.ink = picture.where(lambda colours: max(colours) - min(colours) > 40)
        lines = [y for y in range(self.height) if sum(black[y]) > self.width * 0.6]
        self.top, self.bottom = lines[0], lines[-1]
        inside = black[self.top : self.bottom : 5]
        sides = [x for x, column in enumerate(zip(*inside)) if sum(column) > 0.9 * len(inside)]
        self.left, self.right = sides[0], sides[-1]
        self.rows = rows

    def x_of(self, part):
        return round(self.left + part * (self.right - self.left))

    def band(self, row):
        """The rows of pixels that belong to a trace."""
        height = (self.bottom - self.top) / self.rows
        return range(round(self.top + row * height) + 1, round(self.top + (row + 1) * height))

    def inked(self, row, begin=0.0, end=1.0):
        """Pixels with ink in this row between two parts of the axis, as parts: (along the axis, down the row)."""
        ys = self.band(row)
        xs = range(max(self.x_of(begin), self.left), min(self.x_of(end), self.right) + 1)
        width = self.right - self.left
        return [((x - self.left) / width, (y - ys.start) / len(ys)) for y in ys for x in xs if self.ink[y][x]]


class Case(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="plot_test.")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        self.picture = self.folder / "picture.png"

    def trace(self, name, *arguments, **more):
        path = self.folder / name
        path.write_bytes(sac_bytes(*arguments, **more))
        return path

    def plot(self, *arguments, path=None):
        environment = {**os.environ, "PATH": path or os.environ["PATH"]}
        return subprocess.run([sys.executable, PLOT, *map(str, arguments)], capture_output=True, text=True,
                              env=environment, timeout=300)

    def section(self, *traces, rows=None, status=0, switches=()):
        result = self.plot(*switches, self.picture, *traces)
        self.assertEqual((result.returncode, result.stdout), (status, ""), result.stderr)
        return Section(self.picture, len(traces) if rows is None else rows)


class MESSAGES(Case):
    def path_without(self, missing):
        """A PATH with nothing in it but the programs that vx_plot calls, less one."""
        folder = self.folder / "bin"
        folder.mkdir()
        for name in {"gmt", "gs", "vx_ls"} - {missing}:
            program = folder / name
            program.write_text("#!/bin/sh\necho 6.4.0\n")
            program.chmod(0o755)
        return str(folder)

    def assert_no_picture(self, result, word):
        self.assertEqual(result.returncode, 3)
        self.assertRegex(result.stderr, f"^vx_plot: .*{word}")
        self.assertEqual(result.stderr.count("\n"), 1)
        self.assertFalse(self.picture.exists())

    def test_a_missing_gmt_is_named_with_its_package(self):
        trace = self.trace("a.sac", six_o_clock(), 0.01, [1, 2])
        result = self.plot(self.picture, trace, path=self.path_without("gmt"))
        self.assert_no_picture(result, "GMT is missing: .*apt-get install gmt")

    def test_a_missing_ghostscript_is_named_with_its_package(self):
        trace = self.trace("a.sac", six_o_clock(), 0.01, [1, 2])
        result = self.plot(self.picture, trace, path=self.path_without("gs"))
        self.assert_no_picture(result, "Ghostscript is missing.*apt-get install ghostscript")

    def test_an_old_gmt_is_refused(self):
        path = self.path_without(None)
        (pathlib.Path(path) / "gmt").write_text("#!/bin/sh\necho 5.4.5\n")
        result = self.plot(self.picture, self.trace("a.sac", six_o_clock(), 0.01, [1, 2]), path=path)
        self.assert_no_picture(result, "GMT 6 or newer is needed, .*'5.4.5'")

    def test_a_missing_vx_ls_is_named(self):
        alone = self.folder / "alone" / "vx_plot"
        alone.parent.mkdir()
        shutil.copy(PLOT, alone)
        trace = self.trace("a.sac", six_o_clock(), 0.01, [1, 2])
        environment = {**os.environ, "PATH": self.path_without("vx_ls")}
        result = subprocess.run([sys.executable, alone, self.picture, trace], capture_output=True, text=True,
                                env=environment, timeout=300)
        self.assert_no_picture(result, "vx_ls is missing")

    def test_a_trace_is_not_taken_for_the_name_of_the_picture(self):
        trace = self.trace("a.sac", six_o_clock(), 0.01, [1, 2])
        before = trace.read_bytes()
        result = self.plot(trace, trace)
        self.assertEqual(result.returncode, 2)
        self.assertIn("does not end in .png or .pdf", result.stderr)
        self.assertEqual(trace.read_bytes(), before)

    def test_a_window_that_ends_before_it_begins_is_refused(self):
        result = self.plot(self.picture, "x", "--from", "2023-01-10T06:00", "--to", "2023-01-10T05:00")
        self.assertEqual(result.returncode, 2)
        self.assertIn("--from must be earlier than --to", result.stderr)

    def test_a_word_that_is_no_time_is_refused(self):
        result = self.plot(self.picture, "x", "--from", "noon")
        self.assertEqual(result.returncode, 2)
        self.assertIn("'noon' is not a time", result.stderr)

    def test_times_that_no_calendar_has_are_refused(self):
        for word in ("2023-366", "2024-367", "2023-000", "+0", "+", "-5", "+1e3", "2023-010Tnoon", "0000-01-01", "99999-01-01"):
            with self.subTest(word=word):
                result = self.plot(self.picture, "x", f"--from={word}")
                self.assertEqual(result.returncode, 2)
                self.assertIn(f"'{word}' is not a time", result.stderr)

    def test_zones_and_days_of_the_year_are_told_apart_before_anything_is_read(self):
        later = (("2023-01-10T08:00+02:00", "2023-01-10T06:00"), ("2023-010T12:00", "2023-01-10T12:00Z"),
                 ("2024-366", "2024-12-31"), ("2023-010T12:00+12:00", "2023-010"))
        for begin, end in later:
            with self.subTest(begin=begin):
                result = self.plot(self.picture, "x", "--from", begin, "--to", end)
                self.assertIn("--from must be earlier than --to", result.stderr)

    def test_an_interrupt_leaves_the_old_picture(self):
        folder = self.folder / "bin"
        folder.mkdir()
        (folder / "gs").write_text("#!/bin/sh\n")
        (folder / "gmt").write_text(f"#!/bin/sh\n[ $1 != --version ] || exec echo 6.4.0\n: >{self.folder}/begun\n"
                                    "exec sleep 100\n")
        for name in ("gs", "gmt"):
            (folder / name).chmod(0o755)
        self.trace("a.sac", six_o_clock(), 0.01, [1, 2])
        self.picture.write_text("old")
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(signal=number):
                environment = {**os.environ, "PATH": f"{folder}:{os.environ['PATH']}", "TMPDIR": str(folder)}
                run = subprocess.Popen([sys.executable, PLOT, self.picture, self.folder / "a.sac"], text=True,
                                       stderr=subprocess.PIPE, env=environment,
                                       preexec_fn=lambda: signal.signal(signal.SIGINT, signal.default_int_handler))
                while not (self.folder / "begun").exists():
                    self.assertIsNone(run.poll())
                    time.sleep(0.01)
                run.send_signal(number)
                self.assertEqual(run.communicate(timeout=60)[1], "vx_plot: interrupted\n")
                self.assertEqual(run.returncode, -number)
                (self.folder / "begun").unlink()
                self.assertEqual(self.picture.read_text(), "old")
                self.assertEqual(sorted(p.name for p in self.folder.iterdir()), ["a.sac", "bin", "picture.png"])
                self.assertEqual(sorted(p.name for p in folder.iterdir()), ["gmt", "gs"])

    def test_what_nobody_thought_of_is_a_word_and_no_picture(self):
        folder = pathlib.Path(self.path_without("vx_ls"))
        (folder / "vx_ls").write_text("#!/bin/sh\necho '[{\"file\": 7}]'\n")
        (folder / "vx_ls").chmod(0o755)
        alone = self.folder / "alone" / "vx_plot"
        alone.parent.mkdir()
        shutil.copy(PLOT, alone)
        result = subprocess.run([sys.executable, alone, self.picture, "x"], capture_output=True, text=True,
                                env={**os.environ, "PATH": str(folder)}, timeout=300)
        self.assert_no_picture(result, "AttributeError")

    def test_the_version_is_the_projects(self):
        project = re.search(r"project\(vx_sac VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text())
        self.assertEqual(self.plot("--version").stdout, f"vx_plot {project[1]}\n")

    def test_the_help_names_every_switch_and_status(self):
        result = self.plot("--help")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        for word in ("--from", "--to", "--common-scale", "--version", "0 all drawn", "3 no picture"):
            self.assertIn(word, result.stdout)


class PICTURES(Case):
    def test_a_spike_stands_at_its_time_in_its_row(self):
        quiet = self.trace("a.sac", six_o_clock(), 0.01, [5.0] * 10001)
        high = self.trace("b.sac", six_o_clock(), 0.01, spike(10001, 2500))
        low = self.trace("c.sac", six_o_clock(), 0.01, spike(10001, 7500, -1000.0))
        section = self.section(quiet, high, low)
        for row in range(3):  # a line from end to end, but for the frame
            middle = [x for x, y in section.inked(row) if abs(y - 0.5) < 0.02]
            self.assertGreater(len(set(middle)), 0.98 * (section.right - section.left))
        self.assertEqual([y for _, y in section.inked(0) if abs(y - 0.5) > 0.02], [])
        above = [x for x, y in section.inked(1) if y < 0.4]
        self.assertTrue(above and all(abs(x - 0.25) < 0.002 for x in above), above[:5])
        self.assertLess(min(y for _, y in section.inked(1)), 0.06)
        self.assertEqual([y for _, y in section.inked(1) if y > 0.6], [])
        below = [x for x, y in section.inked(2) if y > 0.6]
        self.assertTrue(below and all(abs(x - 0.75) < 0.002 for x in below), below[:5])

    def test_traces_of_different_rates_and_starts_share_the_axis(self):
        # A spike at 06:01:00 in each; the axis goes from 06:00:00 to 06:02:00.
        slow = self.trace("a.sac", six_o_clock(), 1.0, spike(121, 60))
        fast = self.trace("b.sac", six_o_clock(seconds=30), 0.005, spike(12001, 6000))
        section = self.section(slow, fast)
        for row in range(2):
            high = [x for x, y in section.inked(row) if y < 0.1]
            self.assertTrue(high and all(abs(x - 0.5) < 0.002 for x in high), high[:5])
        self.assertLess(abs(min(x for x, _ in section.inked(1)) - 0.25), 0.002)
        self.assertLess(abs(max(x for x, _ in section.inked(1)) - 0.75), 0.002)

    def test_a_gap_between_events_stays_empty(self):
        early = self.trace("a.sac", six_o_clock(), 0.1, spike(601, 300))
        late = self.trace("b.sac", six_o_clock(minutes=9), 0.1, spike(601, 300))
        section = self.section(early, late)
        self.assertLess(max(x for x, _ in section.inked(0)), 0.102)
        self.assertGreater(min(x for x, _ in section.inked(1)), 0.898)

    def test_one_sample_of_a_million_is_seen(self):
        section = self.section(self.trace("a.sac", six_o_clock(), 0.001, spike(1000001, 333333)))
        high = [x for x, y in section.inked(0) if y < 0.1]
        self.assertTrue(high and all(abs(x - 1 / 3) < 0.002 for x in high), high[:5])

    def test_traces_without_length_rate_or_samples_are_marked_at_their_start(self):
        long = self.trace("a.sac", six_o_clock(), 0.1, [1.0, -1.0] * 500)
        single = self.trace("b.sac", six_o_clock(seconds=50), 0.1, [42.0])
        unrated = self.trace("c.sac", six_o_clock(seconds=25), -12345.0, [1.0, 2.0, 3.0])
        empty = self.trace("d.sac", six_o_clock(minutes=1, seconds=15), 0.1, [])
        section = self.section(long, single, unrated, empty)
        for row, part in ((1, 0.5), (2, 0.25), (3, 0.75)):
            marks = section.inked(row)
            self.assertTrue(marks)
            self.assertTrue(all(abs(x - part) < 0.01 and abs(y - 0.5) < 0.1 for x, y in marks), (row, marks[:5]))

    def test_a_lone_sample_has_an_axis_of_its_own(self):
        section = self.section(self.trace("a.sac", six_o_clock(), 0.01, [7.0]))
        self.assertTrue(all(abs(x - 0.5) < 0.01 for x, _ in section.inked(0)))
        self.assertTrue(section.inked(0))

    def test_years_between_two_traces_leave_two_marks(self):
        old = self.trace("a.sac", (1989, 300, 1, 2, 3, 4), 0.01, spike(1000, 500))
        new = self.trace("b.sac", (2023, 10, 6, 0, 0, 0), 0.01, spike(1000, 500))
        section = self.section(old, new)
        self.assertLess(max(x for x, _ in section.inked(0)), 0.01)
        self.assertGreater(min(x for x, _ in section.inked(1)), 0.99)

    def test_every_row_has_its_ink_and_pictures_stay_bounded(self):
        paths = [self.trace(f"{n:03}.sac", six_o_clock(), 0.01, spike(1000, n)) for n in range(900)]
        for rows in (1, 3, 30, 300):
            with self.subTest(rows=rows):
                section = self.section(*paths[:rows])
                empty = [row for row in range(rows) if not section.inked(row, 0.9, 1.0)]
                self.assertEqual(empty, [])
                self.assertLess(section.width, 1800)
        self.assertEqual(self.plot(self.picture, *paths).returncode, 0)
        self.assertLess(size_of(self.picture)[1], 4800)


class CHOICES(Case):
    def test_traces_keep_the_order_they_are_named_in(self):
        late = self.trace("late.sac", six_o_clock(), 0.01, spike(1001, 800))
        early = self.trace("early.sac", six_o_clock(), 0.01, spike(1001, 200))
        section = self.section(late, early)
        for row, part in ((0, 0.8), (1, 0.2)):
            high = [x for x, y in section.inked(row) if y < 0.1]
            self.assertTrue(high and all(abs(x - part) < 0.003 for x in high), high[:5])

    def test_traces_of_either_byte_order_are_read(self):
        path = self.trace("a.sac", six_o_clock(), 0.01, spike(1001, 300), order="<")
        high = [x for x, y in self.section(path).inked(0) if y < 0.1]
        self.assertTrue(high and all(abs(x - 0.3) < 0.003 for x in high), high[:5])

    def test_a_directory_is_looked_through(self):
        (self.folder / "day").mkdir()
        self.trace("day/2023010060000000_AAA___1_1.sac", six_o_clock(), 0.01, spike(1001, 100))
        self.trace("day/2023010060000000_AAA___1_2.sac", six_o_clock(), 0.01, spike(1001, 200))
        (self.folder / "day" / "rec.vxl").write_text("no trace\n")
        section = self.section(self.folder / "day", rows=2)
        for row, part in ((0, 0.1), (1, 0.2)):
            high = [x for x, y in section.inked(row) if y < 0.1]
            self.assertTrue(high and all(abs(x - part) < 0.003 for x in high), high[:5])

    def test_a_window_shows_its_part_of_the_axis(self):
        inside = self.trace("a.sac", six_o_clock(), 0.01, spike(10001, 5500))
        outside = self.trace("b.sac", six_o_clock(minutes=5), 0.01, spike(1000, 5))
        window = ("--from", "2023-01-10T06:00:50", "--to", "2023-01-10T06:01:00Z")
        section = self.section(inside, outside, rows=1, switches=window)
        high = [x for x, y in section.inked(0) if y < 0.1]
        self.assertTrue(high and all(abs(x - 0.5) < 0.003 for x in high), high[:5])

    def test_samples_at_the_ends_of_a_window_belong_to_it(self):
        path = self.trace("a.sac", six_o_clock(), 0.005, [1000.0 if i in (1780, 1880) else 0.0 for i in range(9000)])
        window = ("--from", "2023-01-10T06:00:08.9", "--to", "2023-01-10T06:00:09.4")
        section = self.section(path, switches=window)
        high = [x for x, y in section.inked(0) if y < 0.3]
        self.assertTrue([x for x in high if x < 0.01] and [x for x in high if x > 0.99], high)

    def test_a_common_scale_keeps_small_traces_small(self):
        big = self.trace("a.sac", six_o_clock(), 0.01, spike(1001, 500, 1000.0))
        small = self.trace("b.sac", six_o_clock(), 0.01, spike(1001, 500, 500.0))
        section = self.section(big, small, switches=["--common-scale"])
        self.assertLess(min(y for _, y in section.inked(0)), 0.06)
        self.assertAlmostEqual(min(y for _, y in section.inked(1)), 0.27, delta=0.02)

    def test_what_is_no_trace_is_told_and_the_rest_is_drawn(self):
        good = self.trace("a.sac", six_o_clock(), 0.01, spike(1001, 500))
        dateless = self.trace("b.sac", (-12345,) * 6, 0.01, [1.0, 2.0])
        result = self.plot(self.picture, good, dateless)
        self.assertEqual(result.returncode, 1)
        self.assertIn("b.sac: left out, its header has no start time", result.stderr)
        self.assertTrue(Section(self.picture, 1).inked(0))

    def assert_no_picture(self, result, *words):
        self.assertEqual(result.returncode, 3)
        self.assertNotIn("Traceback", result.stderr)
        for word in words:
            self.assertIn(word, result.stderr)
        self.assertFalse(self.picture.exists())

    def test_a_name_that_is_not_utf_8_draws_its_own_file(self):
        latin = os.fsdecode(b"\xe9.sac")
        self.trace(latin, six_o_clock(), 0.01, spike(1001, 200))
        self.trace("\u00e9.sac", six_o_clock(), 0.01, spike(1001, 800))
        section = self.section(self.folder, rows=2)  # in the order of the bytes: C3 A9 before E9
        for row, part in ((0, 0.8), (1, 0.2)):
            high = [x for x, y in section.inked(row) if y < 0.1]
            self.assertTrue(high and all(abs(x - part) < 0.003 for x in high), high[:5])
        (self.folder / "\u00e9.sac").unlink()
        self.assertTrue(self.section(self.folder / latin).inked(0))

    def test_names_that_steer_a_terminal_are_told_without_that(self):
        dateless = self.trace(os.fsdecode(b"\x1b[2J\xff.sac"), (-12345,) * 6, 0.01, [1.0, 2.0])
        result = self.plot(self.picture, dateless)
        self.assert_no_picture(result, "?[2J?.sac: left out, its header has no start time")
        self.assertNotIn("\x1b", result.stderr)

    def test_one_odd_header_leaves_out_its_trace(self):
        good = self.trace("a.sac", six_o_clock(), 0.01, spike(1001, 500))
        odd = {"slow": (six_o_clock(), 1e30, [1.0, 2.0]), "late": ((9999, 365, 23, 59, 59, 0), 0.01, [1.0] * 200),
               "first": ((1, 1, 0, 0, 0, 0), 0.01, [1.0]), "last": ((9999, 100, 0, 0, 0, 0), 0.01, [1.0, 2.0])}
        for name, arguments in odd.items():
            with self.subTest(name=name):
                path = self.trace(f"{name}.sac", *arguments)
                result = self.plot(self.picture, good, path)
                self.assertEqual(result.returncode, 1)
                self.assertEqual(result.stderr, f"vx_plot: {path}: left out, its start and rate put samples outside "
                                                "of the years 2 to 9998\n")
                self.assertTrue([y for _, y in Section(self.picture, 1).inked(0, 0.49, 0.51) if y < 0.1])
                self.picture.unlink()
                self.assert_no_picture(self.plot(self.picture, path), "there is no trace to draw")

    def test_the_longest_axis_is_drawn(self):
        first = self.trace("a.sac", (2, 1, 0, 0, 0, 0), 0.01, spike(1000, 500))
        last = self.trace("b.sac", (9998, 365, 23, 0, 0, 0), 0.01, spike(1000, 500))
        section = self.section(first, last)
        self.assertTrue(section.inked(0, 0, 0.01) and section.inked(1, 0.99, 1))

    def test_a_window_may_be_told_in_zones_days_of_the_year_and_seconds(self):
        path = self.trace("a.sac", six_o_clock(), 0.01, spike(10001, 5500))
        for window in (("--from", "2023-01-10T08:00:50+02:00", "--to", "2023-01-10T00:01:00-06:00"),
                       ("--from", "2023-010T06:00:50", "--to", "2023-010T06:01:00Z"),
                       ("--from", "2023-010T06:00:50", "--to", "+10"), ("--from", "+50", "--to", "+10.0")):
            with self.subTest(window=window):
                high = [x for x, y in self.section(path, switches=window).inked(0) if y < 0.1]
                self.assertTrue(high and all(abs(x - 0.5) < 0.003 for x in high), high[:5])
        high = [x for x, y in self.section(path, switches=("--to", "+60")).inked(0) if y < 0.1]
        self.assertTrue(high and all(abs(x - 55 / 60) < 0.003 for x in high), high[:5])

    def test_a_window_without_samples_tells_where_there_are_some(self):
        path = self.trace("a.sac", six_o_clock(), 0.01, spike(1001, 500))
        self.trace("b.sac", six_o_clock(minutes=5), 0.01, spike(1001, 500))
        result = self.plot(self.picture, path, self.folder / "b.sac", "--from", "2024-01-01")
        self.assert_no_picture(result, "no trace has samples in this window of time; there are samples from "
                                       "2023-01-10 06:00:00.000 to 2023-01-10 06:05:10.000 UTC")
        self.assert_no_picture(self.plot(self.picture, path, "--from", "+5", "--to", "2023-01-10T06:00:05"),
                               "the window ends at 2023-01-10 06:00:05.000 UTC, and begins at 2023-01-10 06:00:05.000")

    def test_the_picture_takes_the_place_of_the_old_one_whole(self):
        path = self.trace("a.sac", six_o_clock(), 0.01, spike(1001, 500))
        store = self.folder / "store.png"
        store.write_text("old")
        store.chmod(0o640)
        os.link(store, self.folder / "second_name")
        self.picture.symlink_to("store.png")
        self.section(path)
        self.assertTrue(self.picture.is_symlink())
        self.assertEqual((self.folder / "second_name").read_text(), "old")
        self.assertEqual(store.stat().st_mode & 0o7777, 0o640)
        self.assertEqual(sorted(p.name for p in self.folder.iterdir()),
                         ["a.sac", "picture.png", "second_name", "store.png"])

    def test_a_folder_that_is_not_there_is_told(self):
        path = self.trace("a.sac", six_o_clock(), 0.01, spike(1001, 500))
        result = self.plot(self.folder / "nowhere" / "a.png", path)
        self.assert_no_picture(result, f"no file can be made in {self.folder}/nowhere: No such file or directory")

    def test_names_are_labels_and_no_orders_to_gmt(self):
        plain = self.section(self.trace("a.sac", six_o_clock(), 0.01, spike(1001, 500), station="STA01"))
        colour = self.section(self.trace("b.sac", six_o_clock(), 0.01, spike(1001, 500), station="@;red;A"))
        self.assertAlmostEqual(colour.left, plain.left, delta=2)  # no long number of a colour in the margin
        margin = [sum(row[: colour.left - 2]) for row in colour.ink]
        self.assertEqual(sum(margin), 0)

    def test_a_dash_and_capitals_in_names(self):
        path = self.trace("-x.SAC", six_o_clock(), 0.01, spike(1001, 300))
        result = subprocess.run([sys.executable, PLOT, self.picture, "--", path.name], capture_output=True, text=True,
                                cwd=self.folder, timeout=300)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        high = [x for x, y in self.section(self.folder, rows=1).inked(0) if y < 0.1]
        self.assertTrue(high and all(abs(x - 0.3) < 0.003 for x in high), high[:5])

    def test_what_vx_ls_has_told_is_not_told_again(self):
        good = self.trace("a.sac", six_o_clock(), 0.01, spike(1001, 500))
        short = self.folder / "b.sac"
        short.write_text("short")
        result = self.plot(self.picture, good, short)
        self.assertEqual((result.returncode, result.stderr), (1, f"vx_ls: {short}: shorter than a SAC header: 5 bytes\n"))

    def test_a_pdf_is_made_by_its_name(self):
        picture = self.folder / "picture.pdf"
        result = self.plot(picture, self.trace("a.sac", six_o_clock(), 0.01, spike(1001, 500)))
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(picture.read_bytes()[:5], b"%PDF-")
        self.assertEqual([p.name for p in self.folder.iterdir() if p.suffix == ".png"], [])


if __name__ == "__main__":
    if "MESSAGES" not in sys.argv and not (shutil.which("gmt") and shutil.which("gs")):
        print("left out, GMT and Ghostscript are not here (scripts/setup plot installs them)")
        sys.exit(CANNOT_RUN)
    unittest.main(verbosity=2)
