// Trace files for reading. Nothing in them is trusted: sizes come from the file system, and what the header
// says is only compared with them.
#pragma once

#include "trace/header.h"

#include <cstdint>
#include <string>
#include <sys/stat.h>

namespace trace {

enum class Found : uint8_t {
    trace,      ///< a whole header, and what stands behind it
    too_short,  ///< less than a header
    not_sac,    ///< no SAC header, or no regular file
    unreadable, ///< errno tells why
};

struct TraceHeader {
    Order order = Order::none;
    SACHDR_T header{};
    uint64_t data_len = 0; ///< bytes behind the header
};

/// A regular file, open for reading from its start. Closed at the end of the scope.
struct InputFile {
    int fd = -1;
    struct stat is {}; ///< as it was when opened

    InputFile() = default;
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    /// Opens; never waits for a pipe's other side. FOUND::trace when that went well.
    Found open(const std::string& path);
    /// Reads up to n bytes, fewer only at the end of the file. -1 when reading failed; errno tells why.
    int64_t read(char* to, size_t n);
    /// The file is still as long and as old as when it was opened.
    bool is_unchanged() const;
};

/// Opens a file and reads its header; samples can be read from `input` next.
Found open_trace(const std::string& path, InputFile& input, TraceHeader& trace);

} // namespace trace
