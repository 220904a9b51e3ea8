#include "output/form.h"

#include "driver/base/text.h"

#include <cstdint>
#include <cstring>

/// How many bytes of a field lie past the packet's end.
static size_t missing(std::string_view field, Span where)
{
    return static_cast<size_t>(where.len) - field.size();
}

static void write_blanks(OUT_FILE& log, size_t n)
{
    memset(log.room(static_cast<uint32_t>(n)), ' ', n);
    log.took(static_cast<uint32_t>(n));
}

void form_label(OUT_FILE& log, Form form, std::string_view label)
{
    // "%*s%-*s: ", by hand for speed: labels are most of what is written for an event.
    const auto column = static_cast<size_t>(form.column);
    write_blanks(log, static_cast<size_t>(form.indent));
    log.write(label);
    if (label.size() < column) write_blanks(log, column - label.size());
    log.write(": ");
}

void form_text(OUT_FILE& log, const PACKET& pkt, Span where)
{
    const std::string_view field = text(pkt, where);
    const std::string_view shown = before_nul(field);
    log.write(shown);
    if (shown.size() < field.size()) return;
    for (size_t n = missing(field, where); n > 0; --n) log.write(" ");
}

/// Writes the characters of a list of channels, with "_" for a blank.
static void write_channels(OUT_FILE& log, const PACKET& pkt, Span where)
{
    const std::string_view field = text(pkt, where);
    for (const char& channel : field) log.write(channel == ' ' ? "_" : std::string_view(&channel, 1));
    for (size_t n = missing(field, where); n > 0; --n) log.write("_");
}

void form_channel_line(OUT_FILE& log, Form form, const PACKET& pkt, const Line& line, int entry)
{
    form_label(log, form, line.label);
    write_channels(log, pkt, in_entry(entry, line.where));
    log.write("\r\n");
}

void form_line(OUT_FILE& log, Form form, const PACKET& pkt, const Line& line, int entry)
{
    form_label(log, form, line.label);
    form_text(log, pkt, in_entry(entry, line.where));
    log.write("\r\n");
}

void form_lines(OUT_FILE& log, Form form, const PACKET& pkt, std::span<const Line> lines, int entry)
{
    for (const Line& line : lines) form_line(log, form, pkt, line, entry);
}

/// kept: blank-first-byte. This tests the first byte only, so an entry numbered " 1" is skipped.
bool form_entry(OUT_FILE& log, const PACKET& pkt, int entry)
{
    if (!given(text(pkt, {entry, 1}))) return false;
    log.write("\r\n");
    return true;
}
