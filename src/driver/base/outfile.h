// The writer that all output files share: SAC traces, packet logs, QC files.
//
// Bytes are collected in a buffer and written in large pieces. An open file uses a slot: a descriptor and a
// buffer. The number of slots is limited. When none is free, the file that was not written to for the longest
// time is flushed and loses its slot; it gets another one at its next write. So any number of files may be
// open at once, with bounded memory and descriptors.
//
// After a failed write no more bytes are written to the file, so that it has no gap, and its ON_LOSS is
// called once. A thread writes full buffers while the run goes on (driver/base/pieces); it reports a failure
// later, but at the same place in every run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <sys/types.h>

/// Called once for a file, with its name, when bytes of it are lost. It decides whether the run goes on. See
/// trace_lost and log_lost (driver/base/fatal).
using ON_LOSS = void (*)(const char* name);

/// By what a file is recognised when it is opened again: name, time and owner prove nothing.
struct FileMark {
    bool known = false; ///< device and inode are; taken when the file loses its descriptor
    dev_t device = 0;
    ino_t inode = 0;
    uint32_t start_len = 0; ///< of the first bytes that were written
    size_t start_hash = 0;  ///< of these, for file systems that give a file new inode numbers
};

struct OUT_FILE {
    const char* name = nullptr; ///< path; the caller's text, which outlives the file
    uint32_t number = 0;        ///< identifies this opening of the file in the thread's reports
    char* buf = nullptr;        ///< null while the file has no slot
    uint32_t cap = 0;           ///< size of buf
    uint32_t used = 0;          ///< bytes in buf not yet written
    int fd = -1;
    ON_LOSS on_loss = nullptr;
    bool created = false; ///< by this run: opened again only if it is recognised
    bool whole = false;   ///< has all its bytes, and is not opened again
    uint64_t written = 0; ///< bytes that left the buffer since the opening
    FileMark mark;
    bool open = false;         ///< from out_open to out_close, with or without a slot
    bool broken = false;       ///< a write failed; later bytes are dropped
    OUT_FILE* newer = nullptr; ///< of the files with a slot, the next in order of use
    OUT_FILE* older = nullptr;

    /// Appends formatted text.
    __attribute__((format(printf, 2, 3))) void print(const char* format, ...);
    /// Appends bytes as they are.
    void write(std::string_view bytes);
    /// A place for n more bytes, n at most Out_room_max. The caller writes there and passes to took() how
    /// many bytes it wrote.
    char* room(uint32_t n);
    void took(uint32_t n) { used += n; }
    /// Keeps by what the file's first bytes are recognised.
    void mark_start(std::string_view bytes);
    /// Puts bytes in place of the first ones while all of the file is still collected: it is then written
    /// once. False, with nothing changed, when some of it is written, or when its owner could not open it
    /// again (umask).
    bool replace_start(std::string_view bytes);
};

inline constexpr uint32_t Out_room_max = 8192; ///< most bytes of one call of room()

enum class OUT_MODE : uint8_t {
    create_new, ///< fails (EEXIST) when the name is taken, even by a dangling link
    truncate,   ///< an existing file is emptied
    append,     ///< an existing file is kept and grows
};

/// Opens a file for writing at its end. False when that fails, with errno set. `name` must outlive the file.
bool out_open(OUT_FILE& file, const char* name, OUT_MODE mode, ON_LOSS on_loss);

/// Writes the buffer and closes the file. Does nothing if the file is not open.
void out_close(OUT_FILE& file);

/// Writes the buffers of all files, closes the files and ends the writing thread: for the end of the run.
void out_close_all();

/// Overwrites the first bytes of a closed file that this run created, without truncating. False when it
/// cannot be opened, within five seconds, or when another file has its name; a failed write is a loss.
bool out_overwrite_start(OUT_FILE& file, std::string_view bytes);

/// Writes what all files have collected; they stay open. A loss may end the run.
void out_write_all();

/// Waits until the thread has written all its pieces. Calls the ON_LOSS of each file of which it lost bytes.
void out_settle();

/// Frees the slot of the file that was not written to for the longest time, and with it a descriptor. False
/// when no file has a slot.
bool out_give_up_oldest();

/// Sets how many files may have a slot; 0: as many as the descriptor limit allows. For tests.
void out_limit_slots(uint32_t slots);
