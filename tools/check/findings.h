// The findings of a file: a bounded list, and counts that have no bound.
#pragma once

#include "check/codes.h"
#include "check/moment.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace check {

inline constexpr int Nowhere = -1;

/// Where a finding is; what is not known is Nowhere, packet 0 or No_moment.
struct Place {
    uint64_t packet = 0; ///< counted from 1
    int unit = Nowhere, event = Nowhere;
    int stream = Nowhere, channel = Nowhere; ///< counted from 1
    Moment at = No_moment;
};

struct Finding {
    Code code;
    Severity severity;
    Place place;
    std::string text;
};

class Findings {
public:
    static constexpr size_t Most_each = 200; ///< findings that are kept of a code

    void add(Code code, const Place& place, std::string text);
    void add(Code code, Severity severity, const Place& place, std::string text);

    /// Puts the list into the order of the packets.
    void sort();
    void clear() { *this = {}; }

    const std::vector<Finding>& list() const { return list_; }
    uint64_t count(Code code) const { return counts_[index_of(code)]; }
    uint64_t errors(Code code) const { return errors_[index_of(code)]; }

private:
    std::vector<Finding> list_;
    std::array<uint64_t, Code_cnt> counts_{}, errors_{};
};

} // namespace check
