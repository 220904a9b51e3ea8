// Texts of fixed capacity, for fields of records: at most N characters and a NUL. Only the declaration of the
// field gives its capacity.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

/// The part of a field before its first NUL, or all of it: what "%s" prints.
inline std::string_view before_nul(std::string_view field)
{
    return field.substr(0, field.find('\0'));
}

template <size_t N>
struct Text {
    char s[N + 1] = {};

    /// Copies a text up to its first NUL, N characters at most. The rest becomes NUL.
    void put(std::string_view from)
    {
        const std::string_view kept = before_nul(from).substr(0, N);
        memcpy(s, kept.data(), kept.size());
        memset(s + kept.size(), 0, sizeof s - kept.size());
    }

    /// Copies a text up to its first NUL, N characters at most, with blanks before it up to N.
    void put_right(std::string_view from)
    {
        const std::string_view kept = before_nul(from).substr(0, N);
        memset(s, ' ', N - kept.size());
        memcpy(s + N - kept.size(), kept.data(), kept.size());
        s[N] = '\0';
    }

    /// Formats the text; characters after the Nth are dropped.
    __attribute__((format(printf, 2, 3))) void print(const char* format, ...)
    {
        va_list args;
        va_start(args, format);
        vsnprintf(s, sizeof s, format, args);
        va_end(args);
    }

    void clear() { memset(s, 0, sizeof s); }
    bool operator==(const Text&) const = default;
    bool empty() const { return s[0] == '\0'; }
    size_t length() const { return strlen(s); }
    std::string_view view() const { return s; }
};
