// How far a long look is, on standard error while that is a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace check {

class Progress {
public:
    Progress(const std::string& file, int descriptor);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Shows the bytes read so far, from the first second on and ten times a second at most.
    void tell(uint64_t bytes);

private:
    std::string name_;
    uint64_t size_ = 0; ///< 0: unknown
    bool on_ = false, shown_ = false;
    std::chrono::steady_clock::time_point due_;
};

} // namespace check
