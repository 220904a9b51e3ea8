#include "driver/fatal.h"

#include "driver/outfile.h"
#include "driver/settings.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

// Each ending settles first what the writing thread was given: a trace that lost bytes before is why the run
// ends.

// The shared vocabulary of endings, kept whole: also what nothing raises, and the SCSI texts of a
// disk-reading tool.
static const char* message_of(uint8_t code)
{
    switch (code) {
    case FATAL_ABORT: return "\nProgram aborted by user";
    case FATAL_NO_DIRECTORY: return "\nUnable to change to directory '%s'";
    case FATAL_OPEN: return "\nFile open error for '%s'";
    case FATAL_READ: return "\nFile read error for '%s'";
    case FATAL_WRITE: return "\nFile write error for '%s'";
    case FATAL_NO_NAME: return "\nERROR: unable to generate a unique filename '%s'";
    case FATAL_EARLY_END: return "\nUnexpected end of file error on input";
    case FATAL_MEMORY: return "\nMemory allocation error for '%s'";
    case FATAL_LINKAGE: return "\nMemory linkage error";
    case 130: return "\nSCSI RESET error";
    case 131: return "\nSCSI READY error";
    case 132: return "\nSCSI MODE error";
    case 133: return "\nSCSI LOW-LEVEL FORMAT error";
    case 134: return "\nSCSI VEXAR FORMAT error";
    case 135: return "\nSCSI READ error";
    case 136: return "\nSCSI WRITE error";
    default: return "\nUnknown error: processing terminated. (%s)";
    }
}

/// Prints a message of the table, which is not a literal where it is printed: the name goes in here.
static void print_message(const char* message, const char* name)
{
    const char* slot = strstr(message, "%s");
    if (!slot) {
        fputs(message, stdout);
        return;
    }
    fwrite(message, 1, static_cast<size_t>(slot - message), stdout);
    fputs(name ? name : "(null)", stdout);
    fputs(slot + 2, stdout);
}

void end_run(int status)
{
    out_close_all();
    exit(status == 0 && out_lost_bytes() ? FATAL_WRITE : status);
}

void shut_down(uint8_t code, const char* name, uint8_t* status_byte)
{
    out_settle();
    if (status_byte) *status_byte = code;
    vx::fcloseall();
    print_message(message_of(code), name);
    end_run(code);
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

void end_without_event_memory()
{
    out_settle();
    printf("\n\nOut of Heap allocating Event pointer");
    end_run(255);
}

void end_without_channel_memory()
{
    out_settle();
    printf(" Out of Heap allocating CHNLST_T pointer");
    end_run(FATAL_MEMORY);
}

void end_without_name()
{
    out_settle();
    printf("\n\nERROR!!!!!\n   Unable to create an unique filename.");
    vx::fcloseall();
    end_run(FATAL_NO_NAME);
}

void end_without_trace(const char* name)
{
    out_settle();
    printf("\n\nERROR!!!!\n   unable to open %s for output.", name);
    vx::fcloseall();
    end_run(FATAL_OPEN);
}

uint16_t any_key()
{
    fflush(stdout);
    fprintf(stderr, "\r\nPress ENTER/RETURN to continue.");
    return static_cast<uint16_t>(getchar());
}

void c_break()
{
    shut_down(FATAL_ABORT, nullptr, nullptr);
}

uint16_t gen_error()
{
    printf("\r\n\n!!!ERROR!!! Processing halted.\n");
    vx::fcloseall();
    return 0;
}
