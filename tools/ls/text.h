// Texts for a terminal and for JSON, from any bytes in headers and file names.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ls {

/// A text that is safe on a terminal: each byte of a control character, of a mark of direction, or that is
/// not UTF-8, becomes "?".
std::string printable(std::string_view text);

bool is_utf8(std::string_view text);

/// Number of characters of a UTF-8 text.
size_t width(std::string_view text);

/// The text in quotes, escaped. A byte that is not UTF-8 becomes the character with its number (\u0080 to
/// \u00ff).
std::string json_string(std::string_view text);

/// The shortest decimal number that gives the same value when it is read.
std::string shortest(float value);

/// The same for JSON, which has no infinity and no NaN: null.
std::string json_number(float value);

} // namespace ls
