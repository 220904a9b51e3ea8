// Writes a file from its first byte to its last, in large pieces. A failure is remembered until close().
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace mkrec {

class RecordingFile {
public:
    RecordingFile();
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;
    /// Removes a file that open() made, unless close() succeeded.
    ~RecordingFile();

    /// Makes the file; "-" is standard output. An existing file is opened only with `force`, devices and
    /// pipes always. Returns false with errno on failure; EEXIST means that force is needed. An existing file
    /// is not changed before the first byte is written.
    bool open(const std::string& path, bool force = false);

    /// True if both write to the same file or pipe.
    bool is_same_as(const RecordingFile& other) const;

    /// Appends bytes. After a failure nothing more is written.
    void write(const uint8_t* bytes, size_t n);

    /// Writes what is left and closes. Returns false if any byte was lost since open().
    bool close();

    bool failed() const { return error_ != 0; }
    /// True if open() made the file; then the destructor removes it unless it is complete.
    bool is_new() const { return !made_.empty(); }
    /// errno of the last call that failed, and its text.
    int error() const { return error_; }
    std::string why() const;

private:
    void flush();
    void empty(); ///< removes the previous contents, once

    std::vector<uint8_t> buffer_;
    size_t used_ = 0;
    int fd_ = -1;
    int error_ = 0;
    bool emptied_ = false;
    std::string made_; ///< path of a file that did not exist before
};

} // namespace mkrec
