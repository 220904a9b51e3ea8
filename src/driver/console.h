// What the console shows before and after the packets: banner, usage text, run summary.
#pragma once

/// Readies standard output: large pieces, and on a terminal a flush a few times a second.
void console_start();

/// Flushes what a person at a terminal should see by now; costs nothing elsewhere.
void console_tick();

void print_banner();

/// The usage text; the caller ends the run with status 2.
void syntax();

/// What was asked for and how it was understood.
void print_summary();
