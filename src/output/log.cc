#include "output/log.h"

#include "driver/base/compose.h"
#include "driver/base/settings.h"
#include "driver/base/text.h"
#include "packet/input.h"

#include <algorithm>
#include <cinttypes>
#include <cstring>
#include <ctime>
#include <string_view>
#include <utility>

namespace {

int Sign; ///< result of the latest comparison; take_mark() resets it to 0

/// The start of the run as ctime writes it, without the line end.
Text<25> start_time()
{
    Text<25> shown;
    char made[64] = "";
    if (ctime_r(&Sys_time, made)) shown.put(std::string_view(made).substr(0, 24));
    return shown;
}

/// Writes the three digits of the microseconds. Data packets without an extension have "000", other packets
/// blanks.
char* put_micros(char* to, const PACKET& pkt)
{
    if (pkt.kind != PKT_DT) return put(to, "   ");
    if (!(flags(pkt) & FLAG::Extension)) return put(to, "000");
    char micros[2 * DT::Micros.len];
    digits(pkt, DT::Micros, micros);
    return put(to, {micros + 1, 3});
}

/// Writes "DT 04:123:10:15:30.250000 X:07 U:9A2F".
char* put_type_and_time(char* to, const PACKET& pkt, char mark)
{
    to = put(to, text(pkt, HDR::Type));
    *to++ = mark;
    const char* const time = pkt.time.s;
    to = put(to, {time + AT::Year + 2, 2});
    to = put(put(to, ":"), {time + AT::Day, 3});
    to = put(put(to, ":"), {time + AT::Hour, 2});
    to = put(put(to, ":"), {time + AT::Minute, 2});
    to = put(put(to, ":"), {time + AT::Second, 2});
    to = put(put(to, "."), {time + AT::Milli, 3});
    to = put_micros(to, pkt);
    to = digits(pkt, HDR::Experiment, put(to, " X:"));
    return put_hex(put(to, " U:"), pkt.unit_id, 4);
}

/// Writes " E:0012 D:1 C:3 S:0250 F:32 G:00".
char* put_event(char* to, const PACKET& pkt)
{
    to = digits(pkt, EVT::Number, put(to, " E:"));
    to = put_decimal<1>(put(to, " D:"), pkt.stream + 1U);
    if (pkt.kind == PKT_DT) {
        const unsigned channel = pkt.channel + 1U;
        to = put(to, " C:");
        *to++ = static_cast<char>(channel + (channel <= 9 ? '0' : '7'));
        to = put_decimal<4>(put(to, " S:"), pkt.samples);
    } else {
        to = put(to, "           ");
    }
    to = put(to, " F:");
    to = put_hex(to, byte(pkt, EVT::Format), 2);
    to = put(to, " G:");
    return put_hex(to, flags(pkt), 2);
}

/// Writes the number of the block as a signed 32-bit one, at least ten characters wide.
char* put_block_number(char* to)
{
    if (static_cast<int32_t>(Blk_cnt) >= 0) return put_decimal<10>(to, Blk_cnt);
    *to++ = '-';
    return put_decimal<9>(to, 0U - Blk_cnt);
}

/// Writes the text of an SH packet. Each line is indented.
void log_text(OUT_FILE& file, std::string_view lines)
{
    file.write("     ");
    while (!lines.empty()) {
        const size_t line_end = lines.find('\n');
        const size_t len = line_end == std::string_view::npos ? lines.size() : line_end + 1;
        file.write(lines.substr(0, len));
        if (line_end != std::string_view::npos) file.write("     ");
        lines.remove_prefix(len);
    }
}

/// The byte at an index; a NUL where the index is negative.
uint8_t byte_or_nul(const PACKET& pkt, int at)
{
    return at >= 0 ? byte(pkt, {at, 1}) : '\0';
}

/// Writes the text of an SH packet up to its byte count, and a line end unless it has one.
void log_health_text(OUT_FILE& file, const PACKET& pkt, int count)
{
    log_text(file, text(pkt, {SH::Text, std::max(0, count - SH::Text)}));
    if (byte_or_nul(pkt, count - 1) == '\n') return;
    // kept: carriage-return-before-last. A text that ends in a lone CR gets a second one.
    if (byte_or_nul(pkt, count - 2) != '\r') file.write("\r");
    file.write("\n");
}

/// The longest that log_hex writes at once: "     %03X   ", the line of hex_str, the line end and a NUL.
constexpr uint32_t Hex_line_room = 5 + 3 + 3 + Hex_str_len + 2 + 1;

/// Dumps a packet in lines of 16 bytes, until `count` bytes are shown.
void log_hex(OUT_FILE& file, const PACKET& pkt, int count)
{
    for (int at = 0; at < count; at += 16) {
        char* const line = file.room(Hex_line_room);
        char* to = put(line, "     ");
        to = put_hex(to, static_cast<unsigned>(at), 3);
        to = put(to, "   ");
        hex_str(to, bytes(pkt, {at, 16}));
        to = put(to + Hex_str_len, "\r\n");
        file.took(static_cast<uint32_t>(to - line));
    }
}

} // namespace

void Log_fhdr(OUT_FILE& file)
{
    file.print("%s - Version %s", Program, Version);
    file.print("\r\n%s", Banner);
    file.print("\r\nSystem time: %.24s", start_time().s);
    file.print("\r\n\r\n     Input File : %s", FileIn.c_str());
    file.print("\r\n       INI File : %s", FileIni.c_str());
    file.print("\r\n  Original Path : %s", DirOrg.c_str());
    file.print("\r\n    Output Path : %s", DirOut.c_str());
    file.print("\r\n    Path Option : %u", Path_option);
    file.print("\r\n    Name Option : %s", name_option_text());
    // kept: gather-and-trace-hdr. Switches of earlier releases; programs that read logs expect these lines.
    file.print("\r\n         Gather : NO");
    file.print("\r\n      trace Hdr : YES");
    file.print("\r\n     Log enable : %s", yes_no(Log_on));
    file.print("\r\n    Log DT Blks : %s", yes_no(Log_dt));
    file.print("\r\n       Log File : %s", FileLog.c_str());
    file.print("\r\n     QCC enable : %s", yes_no(Qcc_on));
    file.print("\r\n       QCC File : %s", FileQcc.c_str());
    file.print("\r\n    Sample Rate : %.4f", static_cast<double>(Smp_rate_cmd));
    file.print("\r\n    Max Samples : %" PRIu32, Smp_limit);
    file.print("\r\n   Skip Samples : %" PRIu32, Smp_skip);
    file.print("\r\n   Command Line : %s", Cmd_line.c_str());
    file.print("\r\n\r\n");
}

void mark_continuity(int comparison)
{
    Sign = comparison;
}

char take_mark()
{
    const int sign = std::exchange(Sign, 0);
    return sign == 0 ? ' ' : sign < 0 ? '-' : '+';
}

/// The longest summary line: type, mark and time; the fields of an event at their widest; counts and block
/// number.
constexpr uint32_t Head_line_room = (2 + 1 + 23 + 5 + 7) + (7 + 8 + 4 + 8 + 5 + 5) + (7 + 7 + 3 + 10 + 2);

void log_head(OUT_FILE& file, const PACKET& pkt, char mark)
{
    char* const line = file.room(Head_line_room);
    char* to = put_type_and_time(line, pkt, mark);
    if (belongs_to_event(pkt))
        to = put_event(to, pkt);
    else
        to = put(to, "                           "
                     "     ");
    to = digits(pkt, HDR::Byte_cnt, put(to, " L:"));
    to = digits(pkt, HDR::Seq, put(to, " N:"));
    to = put(put_block_number(put(to, " B:")), "\r\n");
    file.took(static_cast<uint32_t>(to - line));
}

void log_block(OUT_FILE& file, const PACKET& pkt, BlockDump dump)
{
    const int count = std::min<int>(bcd(pkt, HDR::Byte_cnt), Packet_size);
    switch (dump) {
    case DUMP_TEXT: log_health_text(file, pkt, count); break;
    case DUMP_WHOLE: log_hex(file, pkt, Packet_size); break;
    case DUMP_COUNTED: log_hex(file, pkt, count); break;
    default: break;
    }
    file.write("\r\n");
}

void log_mismatch(OUT_FILE& file, const PACKET& pkt, const Decoded& d, uint32_t count)
{
    file.print("     Read start 0x%08" PRIX32 "  ", d.read_first);
    file.print("stop 0x%08" PRIX32 "  ", d.read_last);
    file.print("samples %d\r\n", pkt.samples);
    file.print("     Calc start 0x%08" PRIX32 "  ", d.calc_first);
    file.print("stop 0x%08" PRIX32 "  ", d.calc_last);
    file.print("samples %d\r\n", static_cast<int>(count));
    log_block(file, pkt, DUMP_WHOLE);
}
