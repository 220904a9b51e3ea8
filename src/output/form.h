// Writes the lines of the parameter dumps: label, colon, value. A dump is mostly a table of Lines (place and
// label), which form_lines writes. For a value in another form the dump calls form_label and then writes the
// value and the line end. This room knows no packet type.
#pragma once

#include "driver/base/outfile.h"
#include "packet/packet.h"

#include <span>
#include <string_view>

/// A field and its label. In a repeated entry the place counts from the start of the entry.
struct Line {
    Span where;
    const char* label;
};

/// How far a label is indented, and to how many characters it is padded.
struct Form {
    int indent, column;
};
inline constexpr Form Form_a{5, 29}; ///< a field of the packet
inline constexpr Form Form_b{6, 28}; ///< a field of a repeated entry
inline constexpr Form Form_c{3, 23}; ///< a field of an event or network header

/// Writes a line up to its value: indentation, label, padding, ": ".
void form_label(OUT_FILE& log, Form form, std::string_view label);

/// Writes a text value, up to the field's first NUL. Bytes past the packet's end are written as blanks.
void form_text(OUT_FILE& log, const PACKET& pkt, Span where);

/// Writes a line whose value has one character per channel; a blank is written as "_".
void form_channel_line(OUT_FILE& log, Form form, const PACKET& pkt, const Line& line, int entry = 0);

/// Writes a line with a text value.
void form_line(OUT_FILE& log, Form form, const PACKET& pkt, const Line& line, int entry = 0);

/// Writes the lines of a table.
void form_lines(OUT_FILE& log, Form form, const PACKET& pkt, std::span<const Line> lines, int entry = 0);

/// Begins a repeated entry with an empty line. An entry whose first byte is a blank is not in use: returns
/// false and writes nothing.
bool form_entry(OUT_FILE& log, const PACKET& pkt, int entry);
