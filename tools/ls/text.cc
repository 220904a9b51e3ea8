#include "ls/text.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace ls {

namespace {

uint8_t byte_of(std::string_view text, size_t at)
{
    return at < text.size() ? static_cast<uint8_t>(text[at]) : 0;
}

/// Length of the UTF-8 character at the start of a text that is not empty; 0 if it is not valid UTF-8.
/// Overlong forms, surrogates and values above U+10FFFF are not valid.
size_t utf8_length(std::string_view text)
{
    const uint8_t first = byte_of(text, 0), second = byte_of(text, 1);
    if (first < 0x80) return 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    const size_t len = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    for (size_t i = 1; i < len; ++i)
        if ((byte_of(text, i) & 0xC0) != 0x80) return 0;
    if ((first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F)) return 0;
    if ((first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F)) return 0;
    return len;
}

/// C0, DEL and C1.
bool is_control(std::string_view character)
{
    const uint8_t first = byte_of(character, 0);
    return first < 0x20 || first == 0x7F || (first == 0xC2 && byte_of(character, 1) < 0xA0);
}

/// Marks that change the direction of writing, so that a name is shown in another order: U+061C,
/// U+200E, U+200F, U+202A to U+202E, U+2066 to U+2069.
bool turns_direction(std::string_view character)
{
    if (character == "\xD8\x9C") return true;
    if (!character.starts_with("\xE2\x80") && !character.starts_with("\xE2\x81")) return false;
    const uint8_t second = byte_of(character, 1), third = byte_of(character, 2);
    if (second == 0x81) return 0xA6 <= third && third <= 0xA9;
    return third == 0x8E || third == 0x8F || (0xAA <= third && third <= 0xAE);
}

} // namespace

std::string printable(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const size_t len = utf8_length(text);
        const std::string_view character = text.substr(0, len ? len : 1);
        if (len == 0 || is_control(character) || turns_direction(character))
            out.append(character.size(), '?');
        else
            out += character;
        text.remove_prefix(character.size());
    }
    return out;
}

bool is_utf8(std::string_view text)
{
    while (!text.empty()) {
        const size_t len = utf8_length(text);
        if (len == 0) return false;
        text.remove_prefix(len);
    }
    return true;
}

size_t width(std::string_view text)
{
    size_t n = 0;
    for (const char c : text) n += (static_cast<uint8_t>(c) & 0xC0) != 0x80;
    return n;
}

std::string json_string(std::string_view text)
{
    std::string out = "\"";
    while (!text.empty()) {
        const size_t len = utf8_length(text);
        const std::string_view character = text.substr(0, len ? len : 1);
        text.remove_prefix(character.size());
        if (len == 0 || (len == 1 && is_control(character))) {
            char escape[8];
            snprintf(escape, sizeof escape, "\\u%04x", byte_of(character, 0));
            out += escape;
            continue;
        }
        if (character == "\"" || character == "\\") out += '\\';
        out += character;
    }
    return out + '"';
}

std::string shortest(float value)
{
    char text[64];
    return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

std::string json_number(float value)
{
    return std::isfinite(value) ? shortest(value) : "null";
}

} // namespace ls
