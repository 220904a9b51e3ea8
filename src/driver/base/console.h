// What the console shows before and after the packets: banner, usage text, run summary.
#pragma once

/// Readies the console, before any file is opened: standard descriptors that are closed lead nowhere, output
/// goes in large pieces, and on a terminal it is flushed a few times a second.
void console_start();

/// Flushes what a person at a terminal should see by now; costs nothing elsewhere.
void console_tick();

void print_banner();

/// The usage text; the caller ends the run with status 2.
void syntax();

/// What was asked for and how it was understood.
void print_summary();
