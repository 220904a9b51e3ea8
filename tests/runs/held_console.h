// A console that stops the run: too narrow for what the run has to say, and read only as far as a test wants.
#pragma once

#include <chrono>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace runs {

inline constexpr int Patience_ms = 30000;
inline constexpr size_t Console_buffer = 65536; ///< bytes that a run writes to its console at a time at most

/// A pair of sockets with room for a few thousand bytes, which is less than any pipe promises. A run stands
/// still in the first write that is longer, until its console is read.
class HeldConsole {
public:
    HeldConsole()
    {
        if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends_) != 0) return;
        const int few = 4096;
        setsockopt(ends_[0], SOL_SOCKET, SO_RCVBUF, &few, sizeof few);
        setsockopt(ends_[1], SOL_SOCKET, SO_SNDBUF, &few, sizeof few);
    }
    ~HeldConsole() { close(ends_[0]); }
    HeldConsole(const HeldConsole&) = delete;
    HeldConsole& operator=(const HeldConsole&) = delete;

    int for_the_run() const { return ends_[1]; } ///< for RunOptions::stdout_fd

    /// Reads until so many bytes are there in all. False if the run ends or says no more.
    bool take_up_to(size_t wanted)
    {
        while (text_.size() < wanted)
            if (!take(wanted - text_.size())) return false;
        return true;
    }
    /// Reads all that the run has to say until it ends.
    const std::string& take_all()
    {
        while (take(Console_buffer)) {
        }
        return text_;
    }

private:
    bool take(size_t most)
    {
        pollfd ready = {ends_[0], POLLIN, 0};
        if (poll(&ready, 1, Patience_ms) != 1) return false;
        std::string piece(most, '\0');
        const ssize_t n = read(ends_[0], piece.data(), most);
        if (n > 0) text_.append(piece, 0, static_cast<size_t>(n));
        return n > 0;
    }

    int ends_[2] = {-1, -1};
    std::string text_;
};

/// True as soon as `happens` is; false when it never is.
template <class What>
bool eventually(What happens)
{
    for (int ms = 0; ms < Patience_ms; ms += 10) {
        if (happens()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

} // namespace runs
