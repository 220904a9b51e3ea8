#include "output/log.h"

#include "driver/compose.h"
#include "driver/settings.h"
#include "driver/text.h"
#include "packet/codec.h"
#include "packet/input.h"
#include "packet/kind.h"

#include <algorithm>
#include <cinttypes>
#include <cstring>

int sign;

namespace {

/// Time of the run's start as ctime writes it, without its line end.
Text<25> start_time()
{
    Text<25> shown;
    char made[64] = "";
    if (ctime_r(&Sys_time, made)) shown.put(std::string_view(made).substr(0, 24));
    return shown;
}

/// The digits of BCD bytes, as they are.
char* put_bcd(char* to, const PACKET& pkt, Span field)
{
    unbcd(to, pkt.bytes + field.at, static_cast<uint16_t>(field.len));
    return to + 2 * field.len;
}

/// "DT 04:123:10:15:30.250000 X:07 U:9A2F"
char* put_type_and_time(char* to, const PACKET& pkt, uint16_t type)
{
    to = put(to, text(pkt, HDR::Type));
    *to++ = sign == 0 ? ' ' : sign < 0 ? '-' : '+';
    sign = 0;

    char digits[12];
    unbcd(digits, pkt.bytes + HDR::Time.at, HDR::Time.len);
    to = put_bcd(to, pkt, HDR::Year);
    *to++ = ':';
    to = put(to, {digits, 3});
    *to++ = ':';
    to = put(to, {digits + 3, 2});
    *to++ = ':';
    to = put(to, {digits + 5, 2});
    *to++ = ':';
    to = put(to, {digits + 7, 2});
    *to++ = '.';
    to = put(to, {digits + 9, 3});

    if (type != PKT_DT) {
        to = put(to, "   ");
    } else if (flags(pkt) & FLAG::Extension) {
        unbcd(digits, pkt.bytes + DT::Micros.at, DT::Micros.len);
        to = put(to, {digits + 1, 3});
    } else {
        to = put(to, "000");
    }
    to = put(to, " X:");
    to = put_bcd(to, pkt, HDR::Experiment);
    to = put(to, " U:");
    return put_hex(to, raw_unit_id(pkt), 4);
}

/// " E:0012 D:1 C:3 S:0250 F:32 G:00"
char* put_event(char* to, const PACKET& pkt, uint16_t type)
{
    to = put(to, " E:");
    to = put_bcd(to, pkt, EVT::Number);
    to = put(to, " D:");
    to = put_decimal<1>(to, bcd(pkt, EVT::Stream) + 1U);
    if (type == PKT_DT) {
        const unsigned channel = bcd(pkt, EVT::Channel) + 1U;
        to = put(to, " C:");
        *to++ = static_cast<char>(channel + (channel <= 9 ? '0' : '7'));
        to = put(to, " S:");
        to = put_decimal<4>(to, bcd(pkt, EVT::Samples));
    } else {
        to = put(to, "           ");
    }
    to = put(to, " F:");
    to = put_hex(to, byte(pkt, EVT::Format), 2);
    to = put(to, " G:");
    return put_hex(to, flags(pkt), 2);
}

bool belongs_to_event(uint16_t type)
{
    return type == PKT_EH || type == PKT_ET || type == PKT_DT || type == PKT_NH || type == PKT_NT;
}

/// The number of the block as a signed 32-bit one, at least ten characters wide.
char* put_block_number(char* to)
{
    if (static_cast<int32_t>(Blk_cnt) >= 0) return put_decimal<10>(to, Blk_cnt);
    *to++ = '-';
    return put_decimal<9>(to, 0U - Blk_cnt);
}

/// Writes the text of an SH packet, each of its lines indented.
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

/// The byte at an index that may lie before the packet; a NUL then.
uint8_t byte_or_nul(const PACKET& pkt, int at)
{
    return at >= 0 ? byte(pkt, {at, 1}) : '\0';
}

void log_health_text(OUT_FILE& file, const PACKET& pkt, int count)
{
    log_text(file, text(pkt, {SH::Text, std::max(0, count - SH::Text)}));
    if (byte_or_nul(pkt, count - 1) == '\n') return;
    // kept: carriage-return-before-last. A text that ends in a lone CR gets a second one.
    if (byte_or_nul(pkt, count - 2) != '\r') file.write("\r");
    file.write("\n");
}

/// Room for "     %03X   " and the line end around hex_str's line.
constexpr uint32_t Hex_line_room = 96;

void log_hex(OUT_FILE& file, const PACKET& pkt, int count)
{
    for (int at = 0; at < count; at += 16) {
        char* const line = file.room(Hex_line_room);
        char* to = put(line, "     ");
        to = put_hex(to, static_cast<unsigned>(at), 3);
        to = put(to, "   ");
        hex_str(to, pkt.bytes + at);
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
    file.print("\r\n         Gather : %s", yes_no(Flag_info.gather));
    file.print("\r\n      trace Hdr : %s", yes_no(Flag_info.trace_hdr));
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

void log_head(OUT_FILE& file, const PACKET& pkt, uint16_t type, uint16_t file_num)
{
    char* const line = file.room(160);
    char* to = line;
    if (type != PKT_UNKNOWN)
        to = put_type_and_time(to, pkt, type);
    else
        to = put(to, "UNKNOWN BLOCK TYPE!          "
                     "   "
                     "     ");
    if (belongs_to_event(type))
        to = put_event(to, pkt, type);
    else
        to = put(to, "                           "
                     "     ");
    to = put(to, " L:");
    to = put_bcd(to, pkt, HDR::Byte_cnt);
    to = put(to, " N:");
    to = put_bcd(to, pkt, HDR::Seq);
    to = put(to, " B:");
    if (file_num)
        to += snprintf(to, 32, "%04d:%05" PRId32, file_num, static_cast<int32_t>(Blk_cnt));
    else
        to = put_block_number(to);
    to = put(to, "\r\n");
    file.took(static_cast<uint32_t>(to - line));
}

void log_block(OUT_FILE& file, const PACKET& pkt, uint16_t kind)
{
    const int count = std::min<int>(bcd(pkt, HDR::Byte_cnt), Packet_size);
    switch (kind) {
    case DUMP_TEXT: log_health_text(file, pkt, count); break;
    case DUMP_WHOLE: log_hex(file, pkt, Packet_size); break;
    case DUMP_COUNTED: log_hex(file, pkt, count); break;
    default: break;
    }
    file.write("\r\n");
}

void log_fd() {}
