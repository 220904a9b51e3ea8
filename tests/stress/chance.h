// Repeatable random numbers: all values of a case come from one seed.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>

namespace stress {

class Chance {
public:
    explicit Chance(uint64_t seed) : engine_(seed) {}

    /// 0 to n - 1. Not by a library's distribution: those differ from one library to the next.
    unsigned below(unsigned n) { return static_cast<unsigned>((engine_() >> 32) % n); }
    unsigned from_to(unsigned first, unsigned last) { return first + below(last - first + 1); }
    bool one_in(unsigned n) { return below(n) == 0; }
    int32_t word() { return static_cast<int32_t>(static_cast<uint32_t>(engine_())); }
    char byte() { return static_cast<char>(below(256)); }

    template <class T, size_t N>
    const T& of(const T (&list)[N])
    {
        return list[below(N)];
    }
    template <class T>
    T of(std::initializer_list<T> list)
    {
        return list.begin()[below(static_cast<unsigned>(list.size()))];
    }

    std::string bytes(size_t n)
    {
        std::string s;
        while (s.size() < n) s += byte();
        return s;
    }
    std::string digits(size_t n)
    {
        std::string s;
        while (s.size() < n) s += static_cast<char>('0' + below(10));
        return s;
    }

private:
    std::mt19937_64 engine_;
};

} // namespace stress
