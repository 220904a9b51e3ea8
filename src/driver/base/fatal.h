// The endings of a run, and the closing of the run-wide files. Only this room calls exit().
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

/// Closes the run-wide files, prints the message of the code with `name` ("(null)" when null) and ends the
/// run with the code as exit status. carried: status-byte. Stores the code at `status_byte` first, unless
/// that is null.
[[noreturn]] void shut_down(uint8_t code, const char* name, uint8_t* status_byte = nullptr);

namespace vx { // some C libraries have a function of this name, which closes everything

/// Closes the input, the QC file and the log of the run, whichever are open. Returns how many were closed.
uint16_t fcloseall();

} // namespace vx

/// Writes and closes all output files and ends the process. Status 0 becomes 22 when bytes of a log or QC
/// file were lost.
[[noreturn]] void end_run(int status);

/// The two values of ON_LOSS. For a trace, the run ends with status 22; if it is ending already, there is a
/// message on standard error. For a log or QC file, there is a message on standard error, and status 0
/// becomes 22.
void trace_lost(const char* name);
void log_lost(const char* name);

/// A trace keeps its provisional header: the run goes on, and status 0 becomes 22.
void header_lost();

/// Opens a unit's log or QC file for appending. If that fails, the run ends (20) and names the path.
void open_file(OUT_FILE& file, const char* path);

/// No memory for an event: message, exit status 255.
[[noreturn]] void end_without_event_memory();

/// No memory for a channel: message, exit status 40.
[[noreturn]] void end_without_channel_memory();

/// All names of a trace are taken: message, exit status 23.
[[noreturn]] void end_without_name();

/// A trace cannot be created: message that names it, exit status 20.
[[noreturn]] void end_without_trace(const char* name);

/// Prints a prompt on standard error. If standard input is a terminal, reads one character and returns it;
/// else, and at the end of input, returns 65535.
uint16_t any_key();

/// carried: interrupt-ending. Ends the run with status 1. An interrupt handler would call it; none is
/// installed.
[[noreturn]] void c_break();

/// carried: halt-message. Prints that processing has halted and closes the run-wide files. Returns 0.
uint16_t gen_error();
