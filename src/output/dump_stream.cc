// The dump of DS packets (log_ds): five data streams, each with the fields of its trigger type. The fifth
// stream runs past the packet's end; bytes past it are shown as blanks.
#include "output/dump.h"
#include "output/form.h"

#include <span>
#include <string_view>

namespace {

constexpr Line Name_lines[] = {
    {DS::STRM::Number, "Data Stream No"},
    {DS::STRM::Name, "Data Stream Name"},
};
constexpr Line Channels{DS::STRM::Channels, "Channels Included"};
constexpr Line Format_lines[] = {
    {DS::STRM::Rate, "Sample Rate"},
    {DS::STRM::Format, "Data Format"},
    {DS::STRM::Trg_type, "Trigger Type"},
};

// Places count from the start of the trigger's fields.
constexpr Line Trg_channels{DS::EVT::Channels, "Trigger Channels"};
constexpr Line Event_lines[] = {
    {DS::EVT::Least_chns, "Minimum Channels"},
    {DS::EVT::Window, "Trigger Window"},
    {DS::EVT::Pretrigger, "Pretrigger Length"},
    {DS::EVT::Posttrigger, "Posttrigger Length"},
    {DS::EVT::Length, "Record Length"},
    {DS::EVT::Sta, "STA Length"},
    {DS::EVT::Lta, "LTA Length"},
    {DS::EVT::Mean_removal, "Mean Removal"},
    {DS::EVT::Ratio, "Trigger Ratio"},
    {DS::EVT::Detrigger_ratio, "Detrigger Ratio"},
    {DS::EVT::Lta_hold, "LTA hold"},
};
constexpr Line Time_lines[] = {
    {DS::TIM::Start, "Start Time"},
    {DS::TIM::Interval, "Repeat Interval"},
    {DS::TIM::Count, "Number of Intervals"},
    {DS::TIM::Length, "Record Length"},
};
constexpr Line Level_lines[] = {
    {DS::LEV::Level, "Trigger Level"},
    {DS::LEV::Pretrigger, "Pretrigger Length"},
    {DS::LEV::Length, "Record Length"},
};
constexpr Line Continuous_lines[] = {
    {DS::CON::Length, "Record Length"},
};
constexpr Line Outside_lines[] = {
    {DS::EXT::Pretrigger, "Pretrigger Length"},
    {DS::EXT::Length, "Record Length"},
};
constexpr Line Cross_lines[] = {
    {DS::CRS::Stream, "Trigger Stream Number"},
    {DS::CRS::Pretrigger, "Pretrigger Length"},
    {DS::CRS::Length, "Record Length"},
};
constexpr Line Time_list_lines[] = {
    {DS::TML::Length, "Record Length"},
};

void log_trg_channels(OUT_FILE& log, const PACKET& pkt, int block)
{
    form_channel_line(log, Form_b, pkt, Trg_channels, block);
}

void log_start_times(OUT_FILE& log, const PACKET& pkt, int block)
{
    for (int i = 0; i < DS::TML::Starts.count; ++i) {
        // kept: narrow-start-times. Three blanks precede these labels, six the labels around them.
        log.print("   Start Time %02d               : ", i + 1);
        form_text(log, pkt, in_entry(block, DS::TML::Starts[i]));
        log.write("\r\n");
    }
}

/// How a trigger type is dumped: `head` writes the lines before those of the table; null: none.
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

/// The first three characters of a trigger type, without one leading blank.
std::string_view trigger_name(std::string_view type)
{
    return type.substr(given(type) ? 0 : 1, 3);
}

void log_trigger(OUT_FILE& log, const PACKET& pkt, int stream)
{
    const std::string_view name = trigger_name(text(pkt, in_entry(stream, DS::STRM::Trg_type)));
    const int block = in_entry(stream, DS::STRM::Trigger).at;
    for (const Trigger& trigger : Triggers) {
        // kept: one-case-triggers. The letters are all upper or all lower case; "Evt" is not known.
        if (name != trigger.upper && name != trigger.lower) continue;
        if (trigger.head) trigger.head(log, pkt, block);
        form_lines(log, Form_b, pkt, trigger.lines, block);
    }
}

} // namespace

void log_ds(OUT_FILE& log, const PACKET& pkt)
{
    for (int i = 0; i < DS::Streams.count; ++i) {
        const int stream = DS::Streams[i].at;
        if (!form_entry(log, pkt, stream)) continue;
        form_lines(log, Form_a, pkt, Name_lines, stream);
        form_channel_line(log, Form_a, pkt, Channels, stream);
        form_lines(log, Form_a, pkt, Format_lines, stream);
        log_trigger(log, pkt, stream);
        log.write("\r\n");
    }
}
