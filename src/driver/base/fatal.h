// Every way in which a run can end early, and the closing of the run-wide files.
// Nobody else calls exit.
#pragma once

#include "driver/base/outfile.h"

#include <cstdint>

/// The numbered endings: the number is also the exit status.
enum FATAL : uint8_t {
    FATAL_ABORT = 1,
    FATAL_NO_DIRECTORY = 10,
    FATAL_OPEN = 20,
    FATAL_READ = 21,
    FATAL_WRITE = 22,
    FATAL_NO_NAME = 23,
    FATAL_EARLY_END = 29,
    FATAL_MEMORY = 40,
    FATAL_LINKAGE = 41,
};

/// Closes the run-wide files, prints the code's message with `name` ("(null)" when null) and ends the
/// process with the code as exit status. carried: status-byte. Stores the code at `status_byte` first, when
/// given.
[[noreturn]] void shut_down(uint8_t code, const char* name, uint8_t* status_byte = nullptr);

namespace vx { // some C libraries have a function of this name, which closes everything

/// Closes the input, the QC file and the log of the run, whichever are open. Returns how many were closed.
uint16_t fcloseall();

} // namespace vx

/// Ends the process with everything collected so far in its file. Status 0 becomes 22 when bytes of a log or
/// QC file were lost on the way.
[[noreturn]] void end_run(int status);

/// What happens when an output file loses bytes (see ON_LOSS). A trace: the run ends with status 22, unless
/// it is ending already. A log or QC file: a message on standard error, and status 0 becomes 22.
void trace_lost(const char* name);
void log_lost(const char* name);

/// Opens a unit's log or QC file for appending; fatal error 20 naming it when that fails.
void open_file(OUT_FILE& file, const char* path);

/// No memory for an event: own text, exit status 255, run-wide files left to the exit.
[[noreturn]] void end_without_event_memory();

/// No memory for a channel: own text, exit status 40.
[[noreturn]] void end_without_channel_memory();

/// All names of a trace are taken: own text, exit status 23.
[[noreturn]] void end_without_name();

/// A trace cannot be opened: own text, exit status 20.
[[noreturn]] void end_without_trace(const char* name);

/// Prompts on standard error and waits for one character of standard input; returns it (65535 at its end).
uint16_t any_key();

/// carried: interrupt-ending. What an interrupt handler would call; none is installed.
[[noreturn]] void c_break();

/// carried: halt-message. Prints it and closes the run-wide files. Returns 0.
uint16_t gen_error();
