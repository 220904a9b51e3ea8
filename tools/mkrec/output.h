// A file written from first byte to last, in large pieces. A loss is remembered, never passed over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace mkrec {

class OUTPUT {
public:
    OUTPUT();
    OUTPUT(const OUTPUT&) = delete;
    OUTPUT& operator=(const OUTPUT&) = delete;
    ~OUTPUT();

    /// Makes the file, or empties it; "-" is standard output. False when it cannot be had.
    bool open(const std::string& path);

    /// Appends bytes. After a failure nothing more is written.
    void write(const uint8_t* bytes, size_t n);

    /// Writes what is left and closes. False when any byte was lost since it was opened.
    bool close();

    bool failed() const { return error_ != 0; }
    /// Why the last call failed, for people.
    std::string why() const;

private:
    void flush();

    std::vector<uint8_t> buffer_;
    size_t used_ = 0;
    int fd_ = -1;
    int error_ = 0;
};

} // namespace mkrec
