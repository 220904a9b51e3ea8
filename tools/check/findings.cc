#include "check/findings.h"

#include <algorithm>

namespace check {

void Findings::add(Code code, const Place& place, std::string text)
{
    add(code, info_of(code).severity, place, std::move(text));
}

void Findings::add(Code code, Severity severity, const Place& place, std::string text)
{
    if (severity == Severity::error) ++errors_[index_of(code)];
    if (counts_[index_of(code)]++ < Most_each) list_.push_back({code, severity, place, std::move(text)});
}

void Findings::sort()
{
    std::stable_sort(list_.begin(), list_.end(),
                     [](const Finding& a, const Finding& b) { return a.place.packet < b.place.packet; });
}

} // namespace check
