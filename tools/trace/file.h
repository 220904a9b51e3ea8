// Opens and reads trace files. Sizes come from the file system; those in the header are only compared with
// them.
#pragma once

#include "trace/header.h"

#include <cstdint>
#include <string>
#include <sys/stat.h>

namespace trace {

enum class Found : uint8_t {
    trace,      ///< a complete header, samples may follow
    too_short,  ///< shorter than a header
    not_sac,    ///< not a SAC header, or not a regular file
    unreadable, ///< errno says why
};

struct TraceHeader {
    Order order = Order::none;
    SACHDR_T header{};
    uint64_t data_len = 0; ///< bytes after the header
};

/// A regular file, open for reading from its start. Closed at the end of the scope.
struct InputFile {
    int fd = -1;
    struct stat is {}; ///< as it was when opened

    InputFile() = default;
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    /// Opens the file; never waits for a writer of a pipe. Found::trace on success.
    Found open(const std::string& path);
    /// Reads up to n bytes, fewer only at the end of the file. -1 with errno if reading fails.
    int64_t read(char* to, size_t n);
    /// True if length and time of change are still those at the opening.
    bool is_unchanged() const;
};

/// Opens a file and reads its header; then samples can be read from `input`.
Found open_trace(const std::string& path, InputFile& input, TraceHeader& trace);

} // namespace trace
