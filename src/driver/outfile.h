// The one writer that all output files share: SAC traces, packet logs, QC files.
//
// Bytes are collected in a buffer and written in large pieces. An open file holds a slot, that is a
// descriptor and a buffer. Slots are few and lent: when none is left, the file unused for longest is
// flushed and gives its slot up, and takes another when it is written to again. So any number of
// traces may be open at once, while memory and descriptors stay bounded.
//
// A failed write never passes unseen. For a trace it ends the run (status 22). For a log it is told
// once on standard error, the file keeps its whole prefix, and the run's status shows it. Full buffers
// are written by a thread while the run goes on (driver/pieces): their failing is noticed somewhat later,
// at the same place each time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

enum class ON_LOSS : uint8_t {
    end_run,  ///< a trace: the run cannot go on
    tell_once ///< a log or QC file: tell, remember, go on
};

struct OUT_FILE {
    const char* name = nullptr; ///< path; the text belongs to whoever owns the file and outlives it
    char* buf = nullptr;        ///< null while the file holds no slot
    uint32_t cap = 0;           ///< size of buf
    uint32_t used = 0;          ///< bytes in buf not yet written
    int fd = -1;
    ON_LOSS on_loss = ON_LOSS::tell_once;
    bool open = false;         ///< between out_open and out_close, with or without a slot
    bool broken = false;       ///< a write failed; what comes after is dropped
    OUT_FILE* newer = nullptr; ///< the files that hold a slot, in order of use
    OUT_FILE* older = nullptr;

    /// Appends formatted text.
    __attribute__((format(printf, 2, 3))) void print(const char* format, ...);
    /// Appends bytes as they are.
    void write(std::string_view bytes);
    /// Room for n more bytes, n at most Out_room_max, to be filled by the caller and then counted with
    /// took().
    char* room(uint32_t n);
    void took(uint32_t n) { used += n; }
};

inline constexpr uint32_t Out_room_max = 8192;

enum class OUT_MODE : uint8_t {
    create_new, ///< fails (EEXIST) when the name is taken, be it by a dangling link
    truncate,   ///< made anew, emptied if present
    append,     ///< what is there is kept
};

/// Opens a file for writing at its end. True on success; else errno tells why. `name` must outlive the file.
bool out_open(OUT_FILE& file, const char* name, OUT_MODE mode, ON_LOSS on_loss);

/// Writes what is collected and closes. Nothing happens to a file that is not open.
void out_close(OUT_FILE& file);

/// Writes what all files have collected and closes them, for the end of the run. From here on a loss is told
/// and remembered, but ends nothing.
void out_close_all();

/// Overwrites the first bytes of a finished file through a descriptor of its own, without truncating.
/// False when the file cannot be opened; a failed write is a loss as for any trace.
bool out_overwrite_start(const char* name, std::string_view bytes);

/// Waits until all that the thread was given is written. A loss is told now, or ends the run.
void out_settle();

/// True once a file lost bytes and the run went on.
bool out_lost_bytes();

/// Closes the file unused for longest, so that a descriptor becomes free. False when no file holds one.
bool out_give_up_oldest();

/// Sets how many files may hold a slot; 0 goes by the descriptor limit of the process. For tests.
void out_limit_slots(uint32_t slots);
