// A file written from first byte to last, in large pieces. A loss is remembered, never passed over.
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
    /// Removes a file that open() made, unless close() found it whole.
    ~RecordingFile();

    /// Makes the file; "-" is standard output. A file that exists is taken only with `force`, devices and
    /// pipes always. False when the file cannot be had; EEXIST stands for one that needs force. Nothing that
    /// exists is changed before the first byte is written.
    bool open(const std::string& path, bool force = false);

    /// Both write to the same file or pipe.
    bool is_same_as(const RecordingFile& other) const;

    /// Appends bytes. After a failure nothing more is written.
    void write(const uint8_t* bytes, size_t n);

    /// Writes what is left and closes. False when any byte was lost since it was opened.
    bool close();

    bool failed() const { return error_ != 0; }
    /// A file that open() made: it is gone when the output is.
    bool is_new() const { return !made_.empty(); }
    /// errno of the last call that failed, and the same for people.
    int error() const { return error_; }
    std::string why() const;

private:
    void flush();
    void empty(); ///< of what stood in it before, once

    std::vector<uint8_t> buffer_;
    size_t used_ = 0;
    int fd_ = -1;
    int error_ = 0;
    bool emptied_ = false;
    std::string made_; ///< path of a file that was not there before
};

} // namespace mkrec
