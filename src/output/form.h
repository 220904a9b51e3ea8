// The line forms of the parameter dumps: label, colon, value. A dump is mostly a table of lines, place and
// label side by side, handed to form_lines; what is special about a value is written between form_label and
// the line end. Nothing here knows a packet type.
#pragma once

#include "driver/base/outfile.h"
#include "packet/packet.h"

#include <span>
#include <string_view>

/// A field and its label. In a repeated entry the place counts from where the entry begins.
struct Line {
    Span where;
    const char* label;
};

/// How far a label is indented, and the column it fills.
struct Form {
    int indent, column;
};
inline constexpr Form Form_a{5, 29}; ///< a field of the packet
inline constexpr Form Form_b{6, 28}; ///< a field of a repeated entry
inline constexpr Form Form_c{3, 23}; ///< a field of an event or network header

/// Begins a line: all of it that stands before the value.
void form_label(OUT_FILE& log, Form form, std::string_view label);

/// A text value: ends at the field's first NUL, is not padded. What lies past the packet's end reads blank.
void form_text(OUT_FILE& log, const PACKET& pkt, Span where);

/// A whole line with a list of channels: one character each, as it is, but "_" for a blank.
void form_channel_line(OUT_FILE& log, Form form, const PACKET& pkt, const Line& line, int entry = 0);

/// A whole line with a text value.
void form_line(OUT_FILE& log, Form form, const PACKET& pkt, const Line& line, int entry = 0);

/// All lines of a table.
void form_lines(OUT_FILE& log, Form form, const PACKET& pkt, std::span<const Line> lines, int entry = 0);

/// Begins a repeated entry with an empty line. False, and nothing written, when the entry is not in use,
/// that is, begins with a blank.
bool form_entry(OUT_FILE& log, const PACKET& pkt, int entry);
