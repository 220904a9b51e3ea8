#include "driver/base/outfile.h"

#include "driver/base/patience.h"
#include "driver/base/pieces.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

// Buffers come in three sizes; a file gets the largest that is free. A few files thus get large buffers, and
// the buffers of all 1024 slots together take at most 13 MiB. A free buffer is kept for the next file.
struct Tier {
    uint32_t size;
    uint32_t count;        ///< most buffers of this size
    uint32_t made = 0;     ///< allocated so far
    char* spare = nullptr; ///< the first free one; its first bytes point to the next
};
Tier Tiers[] = {{Piece_max, 64}, {16384, 192}, {Out_room_max, 768}};

constexpr uint32_t Slots_max = 64 + 192 + 768;
constexpr uint32_t Descriptors_kept = 24; ///< not for slots: input, INI file, console, C library

uint32_t Slots_allowed;    ///< 0 until the first file is opened
uint32_t Slots_used;       ///< slots in use
uint32_t Openings;         ///< files opened so far
OUT_FILE* Newest;          ///< of the files with a slot, the one written to last
OUT_FILE* Oldest;          ///< the one not written to for the longest time
uint64_t Since_closing;    ///< bytes of full buffers since a slot was last freed
uint64_t Between_closings; ///< the last value of Since_closing when a slot was freed, if not 0

/// How many files may have a slot. Raises the descriptor limit of the process to what all slots need, as far
/// as the hard limit allows.
uint32_t slots_by_limit()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return 8;
    const rlim_t wanted = Slots_max + Descriptors_kept;
    if (limit.rlim_cur < wanted) {
        const rlimit raised{std::min(wanted, limit.rlim_max), limit.rlim_max};
        if (setrlimit(RLIMIT_NOFILE, &raised) == 0) limit = raised;
    }
    if (limit.rlim_cur <= Descriptors_kept + 2) return 2;
    return static_cast<uint32_t>(std::min<rlim_t>(limit.rlim_cur - Descriptors_kept, Slots_max));
}

/// The kernel enlarges the descriptor table of a process step by step, and in a process with two threads each
/// step takes about ten milliseconds. Duplicating standard input to a high number enlarges the table before
/// the thread starts.
void widen_descriptor_table()
{
    const int last = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, static_cast<int>(Slots_max + Descriptors_kept - 1));
    if (last >= 0) ::close(last);
}

void unlink_slot(OUT_FILE& file)
{
    (file.newer ? file.newer->older : Newest) = file.older;
    (file.older ? file.older->newer : Oldest) = file.newer;
    file.newer = file.older = nullptr;
}

void link_newest(OUT_FILE& file)
{
    file.older = Newest;
    (Newest ? Newest->newer : Oldest) = &file;
    Newest = &file;
}

/// A buffer, the largest that is free or can be allocated, and its size. Null without memory.
char* take_buffer(uint32_t& size)
{
    for (Tier& tier : Tiers) {
        char* buf = tier.spare;
        if (buf) {
            memcpy(&tier.spare, buf, sizeof tier.spare);
        } else if (tier.made < tier.count) {
            buf = static_cast<char*>(malloc(tier.size));
            if (buf) ++tier.made;
        }
        if (buf) {
            size = tier.size;
            return buf;
        }
    }
    return nullptr;
}

/// Keeps a buffer for the next file.
void give_buffer(char* buf, uint32_t size)
{
    for (Tier& tier : Tiers) {
        if (tier.size != size) continue;
        memcpy(buf, &tier.spare, sizeof tier.spare);
        tier.spare = buf;
    }
}

/// Drops the rest of a file whose write failed, and calls its ON_LOSS once.
void lose(OUT_FILE& file)
{
    if (file.broken) return;
    file.broken = true;
    file.used = 0;
    file.on_loss(file.name);
}

/// The same by number. The file still has its slot: a slot is freed only when the thread is done.
void lose_numbered(uint32_t number)
{
    // never taken: the file has its slot, so it is found
    for (OUT_FILE* file = Newest; file; file = file->older)
        if (file->number == number) return lose(*file);
}

/// Writes the buffer; the thread has finished.
void write_now(OUT_FILE& file)
{
    if (file.used == 0) return;
    const uint32_t n = file.used;
    file.used = 0; // before the write: an ending after a failure must not write these bytes again
    file.written += n;
    if (!file.broken && !write_all(file.fd, file.buf, n)) lose(file);
}

/// Waits for the thread, then writes the buffer.
void write_collected(OUT_FILE& file)
{
    out_settle();
    write_now(file);
}

/// True when the thread saves time. Each closing of a file waits for the thread, which costs what the thread
/// saves on about ten pieces. So the thread is used when 16 pieces or more were filled since the latest
/// closing, or between the latest two.
bool thread_saves_time()
{
    constexpr uint64_t least = Pieces * Piece_max;
    return std::max(Since_closing, Between_closings) >= least;
}

/// Empties a full buffer: the thread or this call writes it.
void empty_buffer(OUT_FILE& file)
{
    Since_closing += file.used;
    if (!thread_saves_time() || !hand_over(file.fd, {file.buf, file.used}, file.number))
        return write_collected(file);
    file.written += file.used;
    file.used = 0;
}

/// Takes device and inode of a file that may be opened again.
void mark_file(OUT_FILE& file)
{
    struct stat what;
    file.mark.known = fstat(file.fd, &what) == 0;
    if (!file.mark.known) return; // never taken: fstat of an open file fails
    file.mark.device = what.st_dev;
    file.mark.inode = what.st_ino;
}

/// Writes the buffer and frees the slot. `open` does not change: the next write gets a slot again.
void free_slot(OUT_FILE& file)
{
    if (!file.buf) return;
    write_collected(file);
    if (file.created && !file.whole) mark_file(file);
    if (Since_closing > 0) Between_closings = std::exchange(Since_closing, 0);
    const bool closed = ::close(file.fd) == 0;
    file.fd = -1;
    unlink_slot(file);
    give_buffer(file.buf, file.cap);
    file.buf = nullptr;
    file.cap = 0;
    --Slots_used;
    if (!closed && errno != EINTR) lose(file);
}

/// Opens a path. When descriptors run out, frees the slot of the file not written to for the longest time and
/// tries again.
int open_somehow(const char* path, int how)
{
    for (;;) {
        const int fd = ::open(path, how | O_CLOEXEC | O_NOCTTY, 0666);
        if (fd >= 0 || (errno != EMFILE && errno != ENFILE) || !out_give_up_oldest()) return fd;
    }
}

/// A log or QC file may be a FIFO, whose opening must not wait for a reader.
int open_waiting_for_nobody(const char* name, int how)
{
    const int fd = open_somehow(name, how | O_NONBLOCK);
    if (fd >= 0) fcntl(fd, F_SETFL, how);
    return fd;
}

int open_by_mode(const char* name, OUT_MODE mode)
{
    constexpr int how = O_WRONLY | O_APPEND | O_CREAT;
    switch (mode) { // never taken: the enumeration has no other value
    case OUT_MODE::create_new: return open_somehow(name, how | O_EXCL);
    case OUT_MODE::truncate: return open_waiting_for_nobody(name, how | O_TRUNC);
    case OUT_MODE::append: break;
    }
    return open_waiting_for_nobody(name, how);
}

size_t hash_of(std::string_view bytes)
{
    return std::hash<std::string_view>{}(bytes);
}

/// True if a file begins with the bytes that this run wrote there.
bool begins_as_marked(const FileMark& mark, int fd)
{
    std::string start(mark.start_len, '\0');
    const ssize_t n = pread(fd, start.data(), start.size(), 0);
    return n > 0 && hash_of(start) == mark.start_hash; // a part, or nothing, has another hash
}

/// True if a descriptor leads to the file that this run created under the name, with the bytes that it wrote.
bool recognised(const OUT_FILE& file, int fd)
{
    struct stat what;
    // never taken: fstat of an open file fails
    if (fstat(fd, &what) != 0 || !S_ISREG(what.st_mode)) return false;
    if (static_cast<uint64_t>(what.st_size) != file.written) return false;
    const FileMark& mark = file.mark;
    const bool same = what.st_dev == mark.device && what.st_ino == mark.inode; // never taken: on one device
    return (mark.known && same) || begins_as_marked(mark, fd); // never taken: fstat of an open file fails
}

/// Opens for reading, too, by which a file may be recognised; for writing alone where the umask forbids
/// reading.
int open_readable_or_not(const char* name, int how)
{
    const int fd = open_somehow(name, how | O_RDWR);
    // never taken: a run with few rights does not write its counts
    return fd < 0 && errno == EACCES ? open_somehow(name, how | O_WRONLY) : fd;
}

/// One attempt to open a file again. `foreign` becomes true if another file has its name.
int open_again_once(const OUT_FILE& file, int how, bool& foreign)
{
    const int fd = open_readable_or_not(file.name, how | O_NOFOLLOW | O_NONBLOCK);
    foreign = fd < 0 ? errno == ELOOP : !recognised(file, fd);
    if (fd >= 0 && foreign) ::close(fd);
    return foreign ? -1 : fd;
}

bool Patience_spent; ///< five seconds passed in vain, and no file could be opened again since

/// Opens a file that this run created again. -1 when that fails: at once if another file has its name, else
/// after five seconds, which are spent once.
int open_again(const OUT_FILE& file, int how)
{
    int fd = -1;
    bool foreign = false;
    const auto attempt = [&] {
        fd = open_again_once(file, how, foreign);
        return fd >= 0 || foreign;
    };
    const auto write_meanwhile = [] {
        out_write_all();
        fflush(stdout);
    };
    const bool decided = Patience_spent ? attempt() : with_patience(attempt, write_meanwhile);
    if (!decided) Patience_spent = true;
    if (fd >= 0) Patience_spent = false;
    return fd;
}

/// Gives a file its slot: this descriptor and a buffer. False without memory.
bool give_slot(OUT_FILE& file, int fd)
{
    if (Slots_allowed == 0) {
        Slots_allowed = slots_by_limit();
        widen_descriptor_table();
    }
    // never taken: a slot that is lent can be given up
    while (Slots_used >= Slots_allowed && out_give_up_oldest()) {
    }
    do {
        file.buf = take_buffer(file.cap);
    } while (!file.buf && out_give_up_oldest());
    if (!file.buf) return false;
    file.fd = fd;
    file.used = 0;
    link_newest(file);
    ++Slots_used;
    return true;
}

/// Gives a slot to a file that lost its own and is written to again.
void regain_slot(OUT_FILE& file)
{
    const int fd =
        file.created ? open_again(file, O_APPEND) : open_waiting_for_nobody(file.name, O_WRONLY | O_APPEND);
    if (fd < 0 || !give_slot(file, fd)) { // never taken: a file that had a buffer gets one again
        if (fd >= 0) ::close(fd);         // never taken: a file that had a buffer gets one again
        lose(file);
    }
}

/// The place where the bytes of a broken file are written; nothing reads them.
char* discarded()
{
    static char bin[Out_room_max];
    return bin;
}

} // namespace

bool out_open(OUT_FILE& file, const char* name, OUT_MODE mode, ON_LOSS on_loss)
{
    const int fd = open_by_mode(name, mode);
    if (fd < 0) return false;
    if (!give_slot(file, fd)) {
        ::close(fd);
        if (mode == OUT_MODE::create_new) ::unlink(name); // otherwise the next try would find the name taken
        errno = ENOMEM;
        return false;
    }
    file.name = name;
    file.number = ++Openings;
    file.on_loss = on_loss;
    file.created = mode == OUT_MODE::create_new;
    file.whole = false;
    file.written = 0;
    file.mark = {};
    file.open = true;
    file.broken = false;
    return true;
}

void out_close(OUT_FILE& file)
{
    if (!file.open) return;
    free_slot(file);
    file.open = false;
}

void out_close_all()
{
    while (out_give_up_oldest()) {
    }
    end_pieces();
}

bool out_overwrite_start(OUT_FILE& file, std::string_view bytes)
{
    out_settle();
    const int fd = open_again(file, 0);
    if (fd < 0) return false;
    const bool written = write_all(fd, bytes.data(), bytes.size());
    const bool closed = ::close(fd) == 0 || errno == EINTR;
    if (!written || !closed) file.on_loss(file.name);
    return true;
}

void out_write_all()
{
    out_settle();
    for (OUT_FILE* file = Newest; file; file = file->older) write_now(*file);
}

void out_settle()
{
    finish_pieces(lose_numbered);
}

bool out_give_up_oldest()
{
    if (!Oldest) return false;
    free_slot(*Oldest);
    return true;
}

void out_limit_slots(uint32_t slots)
{
    Slots_allowed = slots;
}

char* OUT_FILE::room(uint32_t n)
{
    if (!buf && !broken) regain_slot(*this);
    if (broken || !buf) { // never taken: a slot is regained, or the file is marked as broken
        used = 0;
        return discarded();
    }
    if (Newest != this) {
        unlink_slot(*this);
        link_newest(*this);
    }
    if (cap - used < n) empty_buffer(*this);
    return broken ? discarded() : buf + used;
}

void OUT_FILE::mark_start(std::string_view bytes)
{
    mark.start_len = static_cast<uint32_t>(bytes.size());
    mark.start_hash = hash_of(bytes);
}

/// The umask. Reading it sets it for a moment, so it is read once, before there is a second thread.
static mode_t read_umask()
{
    const mode_t current = umask(0);
    umask(current);
    return current;
}

static const mode_t Umask = read_umask();

bool OUT_FILE::replace_start(std::string_view bytes)
{
    const bool could_be_opened_again = (Umask & S_IWUSR) == 0; // by its owner
    // never taken: a run with few rights does not write its counts
    if (!buf || written > 0 || used < bytes.size() || !could_be_opened_again) return false;
    memcpy(buf, bytes.data(), bytes.size());
    whole = true;
    return true;
}

void OUT_FILE::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const size_t n = std::min<size_t>(bytes.size(), Out_room_max);
        memcpy(room(static_cast<uint32_t>(n)), bytes.data(), n);
        took(static_cast<uint32_t>(n));
        bytes.remove_prefix(n);
    }
}

/// Formats a text of n characters again, since the rest of the buffer was too small.
__attribute__((format(printf, 3, 0))) static void print_anew(OUT_FILE& file, uint32_t n, const char* format,
                                                             va_list args)
{
    std::string whole(n + 1, '\0');
    vsnprintf(whole.data(), whole.size(), format, args);
    file.write(std::string_view(whole).substr(0, n));
}

void OUT_FILE::print(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    char* to = room(1);
    const uint32_t left = broken ? Out_room_max : cap - used;
    const int n = vsnprintf(to, left, format, args);
    if (n >= 0 && static_cast<uint32_t>(n) < left)
        took(static_cast<uint32_t>(n));
    else if (n >= 0)
        print_anew(*this, static_cast<uint32_t>(n), format, again);
    va_end(again);
    va_end(args);
}
