// The dump of DR packets: the directory of a recording medium. Its fields are binary. An entry is made once
// in memory and then written as often as needed: a damaged directory can repeat one entry thousands of times.
#include "output/dump.h"
#include "output/form.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string_view>

namespace {

constexpr Line Prev_dir{DR::Prev_dir, "Prev Dir Location (Block)"};
constexpr Line Next_dir{DR::Next_dir, "Next Dir Location (Block)"};
constexpr Line Sector_flag{DR::Sector_flag, "Block/Sector Flag"};
constexpr Line Entry_cnt{DR::Entry_cnt, "No of dir entries"};
constexpr Line Last_entry{DR::Last_entry, "Last Entry Number"};

/// How the value of an entry's field is shown.
enum class ShownAs : uint8_t { number, four_digits, ten_digits, hex, block, name };

/// A field of an entry, its form and its label.
struct EntryLine {
    Span where;
    ShownAs as;
    const char* label;
};
constexpr EntryLine Entry_lines[] = {
    {DR::ENTRY::Number, ShownAs::number, "Entry Number"},
    {DR::ENTRY::Status, ShownAs::number, "Entry Status"},
    {DR::ENTRY::Format, ShownAs::number, "Entry Format"},
    {DR::ENTRY::Length, ShownAs::number, "Entry Length"},
    {DR::ENTRY::Unit_id, ShownAs::four_digits,
     "Unit ID"}, // kept: decimal-unit-id. Hexadecimal everywhere else.
    {DR::ENTRY::Event, ShownAs::number, "Event Number"},
    {DR::ENTRY::Header_flag, ShownAs::number, "Event Header Flag"},
    {DR::ENTRY::Trailer_flag, ShownAs::number, "Event Trailer Flag"},
    {DR::ENTRY::Stream, ShownAs::number, "Stream Number"},
    {DR::ENTRY::Strm_name, ShownAs::name, "Data Stream Name"},
    {DR::ENTRY::Trg_type, ShownAs::name, "Trigger Type"},
    {DR::ENTRY::Data_format, ShownAs::hex, "Data Format"},
    {DR::ENTRY::Location, ShownAs::block, "Data Location (Block)"},
    {DR::ENTRY::Blocks, ShownAs::ten_digits, "Data Length (Blocks)"},
    {DR::ENTRY::Errors, ShownAs::number, "Disk Errors (Blocks)"},
};

constexpr const char* Time_labels[DR::ENTRY::Times.count] = {
    "Trigger time", "First sample time", "Detrigger time", "Last sample time", "Entry time",
};

/// The lines of one entry, each at most 64 characters long.
struct TextPage {
    char bytes[64 * (std::size(Entry_lines) + std::size(Time_labels) + 1)];
    size_t used = 0;

    __attribute__((format(printf, 2, 3))) void print(const char* format, ...)
    {
        va_list args;
        va_start(args, format);
        const int n = vsnprintf(bytes + used, sizeof bytes - used, format, args);
        va_end(args);
        used = std::min(used + static_cast<size_t>(std::max(n, 0)), sizeof bytes - 1);
    }
    void label(const char* label) { print("%*s%-*s: ", Form_b.indent, "", Form_b.column, label); }
    std::string_view view() const { return {bytes, used}; }
};

/// Adds the value of a field. `origin` is the block that locations count from.
void put_value(TextPage& page, const PACKET& pkt, Span where, ShownAs as, uint32_t origin)
{
    switch (as) { // never taken: the enumeration has no other value
    case ShownAs::number: page.print("%u", number(pkt, where)); break;
    case ShownAs::four_digits: page.print("%04u", number(pkt, where)); break;
    case ShownAs::ten_digits: page.print("%010u", number(pkt, where)); break;
    case ShownAs::hex: page.print("%02X", number(pkt, where)); break;
    case ShownAs::block: page.print("%010u", number(pkt, where) + origin); break;
    case ShownAs::name: page.print("%*.*s", where.len, where.len, text(pkt, where).data()); break;
    }
}

/// Adds a time; nothing if its packed form is 0.
void put_time(TextPage& page, const PACKET& pkt, Span packed, Span millis)
{
    if (number(pkt, packed) == 0) return;
    char digits[14];
    secs_split(bytes(pkt, packed), digits);
    page.print("%4.4s:%3.3s:%2.2s:%2.2s:%2.2s.%.3u", digits, digits + 4, digits + 7, digits + 9, digits + 11,
               number(pkt, millis));
}

void make_entry(TextPage& page, const PACKET& pkt, int entry, uint32_t origin)
{
    page.print("\r\n");
    for (const EntryLine& line : Entry_lines) {
        page.label(line.label);
        put_value(page, pkt, in_entry(entry, line.where), line.as, origin);
        page.print("\r\n");
    }
    for (int i = 0; i < DR::ENTRY::Times.count; ++i) {
        page.label(Time_labels[i]);
        put_time(page, pkt, in_entry(entry, DR::ENTRY::Times[i]), in_entry(entry, DR::ENTRY::Millis[i]));
        page.print("\r\n");
    }
}

/// Writes an entry `times` times; nothing if it is not in use.
void log_entry(OUT_FILE& log, const PACKET& pkt, int entry, uint32_t origin, uint32_t times)
{
    if (!given(text(pkt, {entry, 1}))) return;
    TextPage page;
    make_entry(page, pkt, entry, origin);
    for (; times > 0; --times) log.write(page.view());
}

/// Writes the entries up to the first that does not lie wholly in the packet.
void log_entries(OUT_FILE& log, const PACKET& pkt, uint32_t count, uint32_t origin)
{
    int entry = DR::Entries.at;
    while (count > 0 && entry + DR::Entries.len <= Packet_size) {
        const uint32_t len = number(pkt, in_entry(entry, DR::ENTRY::Length));
        // kept: entry-that-stays. An entry of length 0 is shown once for each entry that remains.
        const uint32_t times = len == 0 ? count : 1;
        log_entry(log, pkt, entry, origin, times);
        entry += static_cast<int>(len);
        count -= times;
    }
}

} // namespace

void log_dr(OUT_FILE& log, const PACKET& pkt)
{
    const uint32_t flag = number(pkt, Sector_flag.where);
    const uint32_t half = flag != 0 ? 1 : 0; // locations count sectors: two per block
    const uint32_t prev = number(pkt, Prev_dir.where) >> half;
    const uint32_t next = number(pkt, Next_dir.where) >> half;
    const uint32_t count = number(pkt, Entry_cnt.where);

    form_label(log, Form_a, Prev_dir.label);
    log.print("%010u\r\n", prev);
    form_label(log, Form_a, Next_dir.label);
    log.print("%010u\r\n", next);
    form_label(log, Form_a, Sector_flag.label);
    log.print("%u\r\n", flag);
    form_label(log, Form_a, Entry_cnt.label);
    log.print("%u\r\n", count);
    form_label(log, Form_a, Last_entry.label);
    log.print("%u\r\n", number(pkt, Last_entry.where));
    // kept: data-behind-directory. Data locations are shown with that of the previous directory added.
    log_entries(log, pkt, count, prev);
}
