// The dump of DS packets: five data streams, each with the block of its trigger type. Begin at log_ds. The
// fifth stream runs past the packet's end; what is missing reads blank.
#include "output/dump.h"
#include "output/form.h"

namespace {

constexpr Row Streams{16, 230, 5};
constexpr Span Trg_type{64, 4};
constexpr int Trg_block = 68;

constexpr Line Name_lines[] = {
    {{0, 2}, "Data Stream No"},
    {{2, 24}, "Data Stream Name"},
};
constexpr Line Channels{{26, 16}, "Channels Included"};
constexpr Line Format_lines[] = {
    {{42, 4}, "Sample Rate"},
    {{46, 2}, "Data Format"},
    {Trg_type, "Trigger Type"},
};

// Places in a trigger block count from where the block begins.
constexpr Line Trg_channels{{0, 16}, "Trigger Channels"};
constexpr Line Event_lines[] = {
    {{16, 2}, "Minimum Channels"},   {{18, 8}, "Trigger Window"}, {{26, 8}, "Pretrigger Length"},
    {{34, 8}, "Posttrigger Length"}, {{42, 8}, "Record Length"},  {{58, 8}, "STA Length"},
    {{66, 8}, "LTA Length"},         {{74, 8}, "Mean Removal"},   {{82, 8}, "Trigger Ratio"},
    {{90, 8}, "Detrigger Ratio"},    {{98, 4}, "LTA hold"},
};
constexpr Line Time_lines[] = {
    {{0, 14}, "Start Time"},
    {{14, 8}, "Repeat Interval"},
    {{22, 4}, "Number of Intervals"},
    {{34, 8}, "Record Length"},
};
constexpr Line Level_lines[] = {
    {{0, 8}, "Trigger Level"},
    {{8, 8}, "Pretrigger Length"},
    {{16, 8}, "Record Length"},
};
constexpr Line Continuous_lines[] = {
    {{0, 8}, "Record Length"},
};
constexpr Line Outside_lines[] = {
    {{0, 8}, "Pretrigger Length"},
    {{8, 8}, "Record Length"},
};
constexpr Line Cross_lines[] = {
    {{0, 2}, "Trigger Stream Number"},
    {{2, 8}, "Pretrigger Length"},
    {{10, 8}, "Record Length"},
};
constexpr Row Start_times{0, 14, 11};
constexpr Line Time_list_lines[] = {
    {{154, 8}, "Record Length"},
};

void log_trg_channels(OUT_FILE& log, const PACKET& pkt, int block)
{
    form_channel_line(log, Form_b, pkt, Trg_channels, block);
}

void log_start_times(OUT_FILE& log, const PACKET& pkt, int block)
{
    for (int i = 0; i < Start_times.count; ++i) {
        // kept: narrow-start-times. Three blanks stand before these labels, not the six of their neighbours.
        log.print("   Start Time %02d               : ", i + 1);
        form_text(log, pkt, in_entry(block, Start_times[i]));
        log.write("\r\n");
    }
}

/// The block of a trigger type: what comes before its table, if anything does, and the table.
struct Trigger {
    std::string_view upper, lower;
    void (*head)(OUT_FILE& log, const PACKET& pkt, int block);
    std::span<const Line> lines;
};
constexpr Trigger Triggers[] = {
    {"EVT", "evt", log_trg_channels, Event_lines}, {"TIM", "tim", nullptr, Time_lines},
    {"LEV", "lev", nullptr, Level_lines},          {"CON", "con", nullptr, Continuous_lines},
    {"EXT", "ext", nullptr, Outside_lines},        {"RAD", "rad", nullptr, Outside_lines},
    {"CRS", "crs", nullptr, Cross_lines},          {"TML", "tml", log_start_times, Time_list_lines},
};

/// The first three characters of a trigger type; one leading blank does not count.
std::string_view trigger_name(std::string_view type)
{
    return type.substr(given(type) ? 0 : 1, 3);
}

void log_trigger(OUT_FILE& log, const PACKET& pkt, int stream)
{
    const std::string_view name = trigger_name(text(pkt, in_entry(stream, Trg_type)));
    for (const Trigger& trigger : Triggers) {
        // kept: one-case-triggers. All letters upper or all lower case; "Evt" is no trigger type.
        if (name != trigger.upper && name != trigger.lower) continue;
        if (trigger.head) trigger.head(log, pkt, stream + Trg_block);
        form_lines(log, Form_b, pkt, trigger.lines, stream + Trg_block);
    }
}

} // namespace

void log_ds(OUT_FILE& log, const PACKET& pkt)
{
    for (int i = 0; i < Streams.count; ++i) {
        const int stream = Streams[i].at;
        if (!form_entry(log, pkt, stream)) continue;
        form_lines(log, Form_a, pkt, Name_lines, stream);
        form_channel_line(log, Form_a, pkt, Channels, stream);
        form_lines(log, Form_a, pkt, Format_lines, stream);
        log_trigger(log, pkt, stream);
        log.write("\r\n");
    }
}
