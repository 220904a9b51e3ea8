#include "driver/pieces.h"

#include "driver/outfile.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

/// So many pieces may be on their way that neither side has to wait for the other at each of them.
constexpr uint32_t Pieces = 16;
static_assert((Pieces & (Pieces - 1)) == 0, "the place of a piece goes on where counts wrap");

struct PIECE {
    OUT_FILE* file = nullptr;
    int fd = -1;
    uint32_t n = 0;
    bool lost = false; ///< not written, and not told of yet
};

/// The bytes of piece k stand at k modulo Pieces. They are the thread's from their handing over to their
/// writing.
char Bytes[Pieces][Piece_max];

/// The thread, and what it shares with the run. Both sides touch the pieces and the counts under the lock;
/// the run also without it while no piece is on its way.
class WRITER {
public:
    ~WRITER() { end(); }
    bool start();
    bool take(OUT_FILE& file);
    void finish(void (*tell_loss)(OUT_FILE& file));
    void end();

private:
    using HELD = std::unique_lock<std::mutex>;
    void write_pieces();
    void wait_until_left(uint32_t few, HELD& held);

    std::mutex lock;
    std::condition_variable work;     ///< for the thread: a piece was handed over, or no more will be
    std::condition_variable few_left; ///< for the run: no more pieces are left than it waits for
    PIECE ring[Pieces];               ///< piece k stands at k modulo Pieces
    uint32_t given = 0;               ///< pieces handed over
    uint32_t done = 0;                ///< pieces written or lost
    uint32_t awaited = Pieces;        ///< the run waits until so many are left; Pieces when it does not wait
    bool ending = false;
    bool refused = false; ///< no thread can be had
    std::thread thread;
};

WRITER Writer;

bool WRITER::start()
{
    if (thread.joinable() || refused) return !refused;
    try {
        thread = std::thread([this] { write_pieces(); });
    } catch (...) {
        refused = true;
    }
    return !refused;
}

void WRITER::write_pieces()
{
    HELD held(lock);
    for (;;) {
        work.wait(held, [this] { return given != done || ending; });
        if (given == done) return;
        const uint32_t place = done % Pieces;
        PIECE& piece = ring[place];
        bool lost =
            std::any_of(ring, ring + Pieces, [&](const PIECE& p) { return p.lost && p.file == piece.file; });
        held.unlock();
        lost = lost || !write_all(piece.fd, Bytes[place], piece.n);
        held.lock();
        piece.lost = lost;
        ++done;
        if (given - done == awaited) few_left.notify_one();
    }
}

void WRITER::wait_until_left(uint32_t few, HELD& held)
{
    awaited = few;
    few_left.wait(held, [&] { return given - done <= few; });
    awaited = Pieces;
}

bool WRITER::take(OUT_FILE& file)
{
    HELD held(lock);
    if (given - done == Pieces) wait_until_left(Pieces / 2, held);
    const uint32_t place = given % Pieces;
    if (ring[place].lost) return false;
    ring[place] = {&file, file.fd, file.used};
    held.unlock(); // the thread goes on with others meanwhile
    memcpy(Bytes[place], file.buf, file.used);
    file.used = 0;
    held.lock();
    ++given;
    work.notify_one();
    return true;
}

void WRITER::finish(void (*tell_loss)(OUT_FILE& file))
{
    HELD held(lock);
    wait_until_left(0, held);
    held.unlock(); // the thread rests, and telling may end the run
    for (uint32_t i = 0; i < Pieces; ++i) {
        PIECE& piece = ring[(given + i) % Pieces];
        if (std::exchange(piece.lost, false)) tell_loss(*piece.file);
    }
}

void WRITER::end()
{
    if (!thread.joinable()) return;
    HELD held(lock);
    ending = true;
    work.notify_one();
    held.unlock();
    thread.join();
    ending = false;
}

} // namespace

bool hand_over(OUT_FILE& file)
{
    return Writer.start() && Writer.take(file);
}

void finish_pieces(void (*tell_loss)(OUT_FILE& file))
{
    Writer.finish(tell_loss);
}

void end_pieces()
{
    Writer.end();
}

bool write_all(int fd, const char* bytes, size_t n)
{
    while (n > 0) {
        const ssize_t done = write(fd, bytes, n);
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) return false;
        bytes += done;
        n -= static_cast<size_t>(done);
    }
    return true;
}
