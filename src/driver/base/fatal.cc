#include "driver/base/fatal.h"

#include "driver/base/file.h"
#include "driver/base/pulse.h"
#include "driver/base/run_files.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <utility>

static bool Ending; ///< the run is ending; a loss is only reported now
static bool Lost;   ///< bytes or a final header were lost, and the run went on

void log_lost(const char* name)
{
    Lost = true;
    fprintf(stderr, "\nFile write error for '%s'", name);
}

void header_lost()
{
    Lost = true;
}

void trace_lost(const char* name)
{
    if (!std::exchange(Ending, true)) shut_down(FATAL_WRITE, name);
    log_lost(name);
}

void end_run(int status)
{
    Ending = true;
    out_close_all();
    exit(status == 0 && Lost ? FATAL_WRITE : status);
}

/// carried: ending-messages. Includes those of sister tools, which read disks.
static void print_message(uint8_t code, const char* name)
{
    switch (code) {
    case FATAL_ABORT: printf("\nProgram aborted by user"); break;
    case FATAL_NO_DIRECTORY: printf("\nUnable to change to directory '%s'", name); break;
    case FATAL_OPEN: printf("\nFile open error for '%s'", name); break;
    case FATAL_READ: printf("\nFile read error for '%s'", name); break;
    case FATAL_WRITE: printf("\nFile write error for '%s'", name); break;
    case FATAL_NO_NAME: printf("\nERROR: unable to generate a unique filename '%s'", name); break;
    case FATAL_EARLY_END: printf("\nUnexpected end of file error on input"); break;
    case FATAL_MEMORY: printf("\nMemory allocation error for '%s'", name); break;
    case FATAL_LINKAGE: printf("\nMemory linkage error"); break;
    case 130: printf("\nSCSI RESET error"); break;
    case 131: printf("\nSCSI READY error"); break;
    case 132: printf("\nSCSI MODE error"); break;
    case 133: printf("\nSCSI LOW-LEVEL FORMAT error"); break;
    case 134: printf("\nSCSI VEXAR FORMAT error"); break;
    case 135: printf("\nSCSI READ error"); break;
    case 136: printf("\nSCSI WRITE error"); break;
    default: printf("\nUnknown error: processing terminated. (%s)", name);
    }
}

/// Every ending calls this. It first waits for the writing thread: if that lost bytes of a trace, the run
/// ends with this loss instead (status 22).
template <class Say>
[[noreturn]] static void end_saying(int status, Say last_words)
{
    out_settle();
    last_words();
    end_run(status);
}

void shut_down(uint8_t code, const char* name, uint8_t* status_byte)
{
    end_saying(code, [=] {
        if (status_byte) *status_byte = code;
        vx::fcloseall();
        print_message(code, name ? name : "(null)");
    });
}

uint16_t vx::fcloseall()
{
    uint16_t closed = 0;
    if (FILE* const in = std::exchange(FdIn, nullptr)) {
        fclose(in);
        ++closed;
    }
    for (OUT_FILE* file : {&FdQcc, &FdLog}) {
        if (!file->open) continue;
        out_close(*file);
        ++closed;
    }
    return closed;
}

void open_file(OUT_FILE& file, const char* path)
{
    if (!out_open_vx(file, path, OUT_MODE::append, log_lost)) shut_down(FATAL_OPEN, path);
}

void end_without_event_memory()
{
    end_saying(255, [] { printf("\n\nOut of Heap allocating Event pointer"); });
}

void end_without_channel_memory()
{
    end_saying(FATAL_MEMORY, [] { printf(" Out of Heap allocating CHNLST_T pointer"); });
}

void end_without_name()
{
    end_saying(FATAL_NO_NAME, [] {
        printf("\n\nERROR!!!!!\n   Unable to create an unique filename.");
        vx::fcloseall();
    });
}

void end_without_trace(const char* name)
{
    end_saying(FATAL_OPEN, [=] {
        printf("\n\nERROR!!!!\n   unable to open %s for output.", name);
        vx::fcloseall();
    });
}

uint16_t any_key()
{
    write_all_collected();
    fprintf(stderr, "\r\nPress ENTER/RETURN to continue.");
    return static_cast<uint16_t>(isatty(STDIN_FILENO) ? getchar() : EOF);
}

void c_break()
{
    shut_down(FATAL_ABORT, nullptr);
}

uint16_t gen_error()
{
    printf("\r\n\n!!!ERROR!!! Processing halted.\n");
    vx::fcloseall();
    return 0;
}
