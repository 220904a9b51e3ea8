// Characters by the rules of the C locale, whatever locale the user has.
#pragma once

/// Blank, tab, line feed, vertical tab, form feed or carriage return.
inline bool is_space(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

inline bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

inline char to_upper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// The value of a hexadecimal digit in either case; -1 for any other character.
inline int hex_digit(char c)
{
    if (is_digit(c)) return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}
