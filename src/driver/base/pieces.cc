#include "driver/base/pieces.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <new>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

static_assert((Pieces & (Pieces - 1)) == 0, "Pieces must be a power of two");

struct QueuedPiece {
    uint32_t number = 0; ///< of the file
    int fd = -1;
    uint32_t n = 0;
    bool lost = false; ///< not written, and not reported yet
};

/// The bytes of piece k are in row k modulo Pieces. The thread owns them from take() until they are written.
char Bytes[Pieces][Piece_max];

/// The thread, and what it shares with the run. Both use the pieces and the counts under the lock; the run
/// also without it while no piece is waiting.
class PieceWriter {
public:
    bool start();
    bool take(int fd, std::string_view bytes, uint32_t number);
    void finish(void (*report_loss)(uint32_t number));
    void end();

private:
    using Held = std::unique_lock<std::mutex>;
    void write_pieces();
    void wait_until_left(uint32_t few, Held& held);

    std::mutex lock;
    std::condition_variable work;     ///< for the thread: a piece was handed over, or no more will be
    std::condition_variable few_left; ///< for the run: only `awaited` pieces are left
    QueuedPiece ring[Pieces];         ///< piece k is at k modulo Pieces
    uint32_t given = 0;               ///< pieces handed over
    uint32_t done = 0;                ///< pieces written or lost
    uint32_t awaited = Pieces;        ///< pieces that may be left when the run's wait ends; Pieces: no wait
    bool ending = false;
    bool refused = false; ///< starting the thread failed
    std::thread thread;
};

/// Never destroyed. end() joins the thread, and race checkers report the destruction of a condition variable
/// on which no thread has waited.
alignas(PieceWriter) char Writer_place[sizeof(PieceWriter)];
PieceWriter& Writer = *new (Writer_place) PieceWriter;

bool PieceWriter::start()
{
    if (thread.joinable() || refused) return !refused;
    try {
        thread = std::thread([this] { write_pieces(); });
    } catch (...) {
        refused = true;
    }
    return !refused;
}

void PieceWriter::write_pieces()
{
    Held held(lock);
    for (;;) {
        work.wait(held, [this] { return given != done || ending; });
        if (given == done) return;
        const uint32_t place = done % Pieces;
        QueuedPiece& piece = ring[place];
        bool lost = std::any_of(ring, ring + Pieces,
                                [&](const QueuedPiece& p) { return p.lost && p.number == piece.number; });
        held.unlock();
        lost = lost || !write_all(piece.fd, Bytes[place], piece.n);
        held.lock();
        piece.lost = lost;
        ++done;
        if (given - done == awaited) few_left.notify_one();
    }
}

/// Waits until at most `few` pieces are left.
void PieceWriter::wait_until_left(uint32_t few, Held& held)
{
    awaited = few;
    few_left.wait(held, [&] { return given - done <= few; });
    awaited = Pieces;
}

bool PieceWriter::take(int fd, std::string_view bytes, uint32_t number)
{
    Held held(lock);
    if (given - done == Pieces) wait_until_left(Pieces / 2, held);
    const uint32_t place = given % Pieces;
    if (ring[place].lost) return false;
    ring[place] = {number, fd, static_cast<uint32_t>(bytes.size())};
    held.unlock(); // the thread may write other pieces meanwhile
    memcpy(Bytes[place], bytes.data(), bytes.size());
    held.lock();
    ++given;
    work.notify_one();
    return true;
}

void PieceWriter::finish(void (*report_loss)(uint32_t number))
{
    Held held(lock);
    wait_until_left(0, held);
    held.unlock(); // the thread is idle, and a report may end the run
    for (uint32_t i = 0; i < Pieces; ++i) {
        QueuedPiece& piece = ring[(given + i) % Pieces];
        if (std::exchange(piece.lost, false)) report_loss(piece.number);
    }
}

void PieceWriter::end()
{
    if (!thread.joinable()) return;
    Held held(lock);
    ending = true;
    work.notify_one();
    held.unlock();
    thread.join();
    ending = false;
}

} // namespace

bool hand_over(int fd, std::string_view bytes, uint32_t number)
{
    return Writer.start() && Writer.take(fd, bytes, number);
}

void finish_pieces(void (*report_loss)(uint32_t number))
{
    Writer.finish(report_loss);
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
