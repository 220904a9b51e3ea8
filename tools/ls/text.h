// Texts for a terminal and for JSON, whatever bytes stand in headers and file names.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ls {

/// The text without what could move a terminal's cursor or turn its writing round: each byte of a control
/// character, and each that is no UTF-8, becomes "?".
std::string printable(std::string_view text);

bool is_utf8(std::string_view text);

/// Characters of a UTF-8 text.
size_t width(std::string_view text);

/// The text between quotes, escaped. A byte that is no UTF-8 becomes the character of its number (\u0080 to
/// \u00ff).
std::string json_string(std::string_view text);

/// The shortest decimal number that reads back as the same value.
std::string shortest(float value);

/// The same for JSON, which has no infinity and no NaN: null.
std::string json_number(float value);

} // namespace ls
