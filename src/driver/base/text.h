// Texts of fixed capacity, as the records hold them: at most N characters, always ended by a NUL.
// The capacity stands in the record's declaration and nowhere else.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

/// The part of a text field that print shows: everything before its first NUL.
inline std::string_view before_nul(std::string_view field)
{
    return field.substr(0, field.find('\0'));
}

template <size_t N>
struct Text {
    char s[N + 1] = {};

    /// Takes over a text: stops at its first NUL, cuts what is longer than N.
    void put(std::string_view from)
    {
        const std::string_view kept = before_nul(from).substr(0, N);
        memcpy(s, kept.data(), kept.size());
        memset(s + kept.size(), 0, sizeof s - kept.size());
    }

    /// Takes over a text right-aligned: blanks on the left up to N characters, cut at N.
    void put_right(std::string_view from)
    {
        const std::string_view kept = before_nul(from).substr(0, N);
        memset(s, ' ', N - kept.size());
        memcpy(s + N - kept.size(), kept.data(), kept.size());
        s[N] = '\0';
    }

    /// Prints into the text, cut at N characters.
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
