// The one writer that all output files share: SAC traces, packet logs, QC files.
//
// Bytes are collected in a buffer and written in large pieces. An open file uses a slot, that is a descriptor
// and a buffer. Slots are few: when none is free, the file that was not written to for the longest time is
// flushed and loses its slot; it gets another one when it is written to again. So any number of files may be
// open at once, while memory and descriptors stay bounded.
//
// A failed write is always noticed: nothing is written behind the lost bytes, so that the file holds a whole
// prefix, and the owner's ON_LOSS is called once. Full buffers are written by a thread while the run goes on
// (driver/base/pieces); a failure there is noticed a little later, at the same place in every run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

/// Called once for a file, with its name, when bytes of it are lost. It decides what becomes of the run;
/// trace_lost and log_lost (driver/base/fatal) are the two there are.
using ON_LOSS = void (*)(const char* name);

struct OUT_FILE {
    const char* name = nullptr; ///< path; the text belongs to the file's owner and outlives the file
    uint32_t number = 0;        ///< of this opening; the thread reports losses by it
    char* buf = nullptr;        ///< null while the file has no slot
    uint32_t cap = 0;           ///< size of buf
    uint32_t used = 0;          ///< bytes in buf not yet written
    int fd = -1;
    ON_LOSS on_loss = nullptr;
    bool open = false;         ///< from out_open to out_close, with or without a slot
    bool broken = false;       ///< a write failed; what comes after is dropped
    OUT_FILE* newer = nullptr; ///< the files that have a slot, in order of use
    OUT_FILE* older = nullptr;

    /// Appends formatted text.
    __attribute__((format(printf, 2, 3))) void print(const char* format, ...);
    /// Appends bytes as they are.
    void write(std::string_view bytes);
    /// Room for n more bytes, n at most Out_room_max. The caller fills it and counts with took() what it
    /// used.
    char* room(uint32_t n);
    void took(uint32_t n) { used += n; }
};

inline constexpr uint32_t Out_room_max = 8192;

enum class OUT_MODE : uint8_t {
    create_new, ///< fails (EEXIST) when the name is taken, even by a dangling link
    truncate,   ///< an existing file is emptied
    append,     ///< an existing file is kept and grows
};

/// Opens a file for writing at its end. True on success; else errno tells why. `name` must outlive the file.
bool out_open(OUT_FILE& file, const char* name, OUT_MODE mode, ON_LOSS on_loss);

/// Writes what is collected and closes. Nothing happens to a file that is not open.
void out_close(OUT_FILE& file);

/// Writes what all files have collected, closes them and ends the writing thread: for the end of the run.
void out_close_all();

/// Overwrites the first bytes of a finished file through a descriptor of its own, without truncating.
/// False when the file cannot be opened; a failed write is a loss.
bool out_overwrite_start(const char* name, std::string_view bytes, ON_LOSS on_loss);

/// Waits until the thread has written all its pieces; a loss calls the file's ON_LOSS now.
void out_settle();

/// Takes the slot of the file that was not written to for the longest time, so that a descriptor becomes
/// free. False when no file has one.
bool out_give_up_oldest();

/// Sets how many files may have a slot; 0 goes by the descriptor limit of the process. For tests.
void out_limit_slots(uint32_t slots);
