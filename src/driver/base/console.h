// What the console shows before and after the packets: banner, usage text, run summary.
#pragma once

/// Prepares the console; must be called before any file is opened. Opens /dev/null for standard descriptors
/// that are closed, and gives standard output a buffer of 64 KiB.
void console_start();

/// Flushes standard output if it is a terminal: before something that may take long.
void console_show();

/// Flushes standard output, at most every 100 ms, if it is a terminal.
void console_tick();

/// Prints program, version and purpose.
void print_banner();

/// Prints the usage text. The caller ends the run with status 2.
void syntax();

/// Prints the settings and paths of the run.
void print_summary();
