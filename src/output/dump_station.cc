// The dumps of the packets that tell how a station is set up: SC, CD, OM and AD. A table per packet type,
// and the few lines that are more than a text.
#include "output/dump.h"
#include "output/form.h"

// SC: the station and its channels

static constexpr Line Station_lines[] = {
    {{16, 2}, "Experiment Number"}, {{18, 24}, "Experiment Name"},    {{42, 40}, "Experiment Comment"},
    {{82, 4}, "Station Number"},    {{86, 24}, "Station Name"},       {{110, 40}, "Station Comment"},
    {{150, 12}, "DAS Model"},       {{162, 12}, "DAS Serial Number"}, {{174, 14}, "Experiment Start"},
    {{188, 4}, "Time Clock Type"},  {{192, 10}, "Time Clock S/N"},
};
static constexpr Row Channels{202, 146, 5};
static constexpr Line Channel_lines[] = {
    {{0, 2}, "Channel Number"}, {{2, 10}, "Channel Name"},       {{12, 10}, "Azimuth"},
    {{22, 10}, "Inclination"},  {{32, 10}, "X Coordinate"},      {{42, 10}, "Y Coordinate"},
    {{52, 10}, "Z Coordinate"}, {{62, 4}, "Unit type for X, Y"}, {{66, 4}, "Unit type for Z"},
    {{70, 4}, "Preamp Gain"},   {{74, 12}, "Sensor Model"},      {{86, 12}, "Sensor Serial Number"},
    {{98, 40}, "Comments"},     {{138, 8}, "Bit-count Voltage"},
};

void log_sc(OUT_FILE& log, const PACKET& pkt)
{
    form_lines(log, Form_a, pkt, Station_lines);
    for (int i = 0; i < Channels.count; ++i)
        if (form_entry(log, pkt, Channels[i].at)) form_lines(log, Form_b, pkt, Channel_lines, Channels[i].at);
    log.write("\r\n");
}

// CD: the calibration

static constexpr Span Step{50, 4};
static constexpr Line Calibration_lines[] = {
    {{16, 14}, "Start Time"},
    {{30, 8}, "Repeat Interval"},
    {{38, 4}, "No of Intervals"},
    {{42, 8}, "Length of Intervals"},
    {Step, "Step"},
};
static constexpr Line Step_lines[] = {
    {{54, 8}, "Step Period"},
    {{62, 8}, "Step Size"},
    {{70, 8}, "Step Amplitude"},
    {{78, 4}, "Step Output"},
};

void log_cd(OUT_FILE& log, const PACKET& pkt)
{
    form_lines(log, Form_a, pkt, Calibration_lines);
    const std::string_view step = text(pkt, Step);
    // kept: one-case-step. "On" counts as off.
    if (step.starts_with("ON") || step.starts_with("on")) {
        log.write("\r\n");
        form_lines(log, Form_b, pkt, Step_lines);
    }
    log.write("\r\n");
}

// OM: the operating mode

namespace {

/// A byte that says one thing when it is a certain letter, the other when it is anything else.
struct Choice {
    Line line;
    char letter;
    const char *chosen, *otherwise;
};

} // namespace

static constexpr Line Mode_lines[] = {
    {{16, 2}, "Power State"},
    {{18, 2}, "Recording Mode"},
};
static constexpr Line Device_lines[] = {
    {{20, 1}, "Primary Disk ID"},
    {{21, 1}, "Secondary Disk ID"},
    {{22, 1}, "Tape ID"},
    {{23, 1}, "Auto-dump Device"},
};
static constexpr Choice Dump_choices[] = {
    {{{24, 1}, "Auto-dump on ET Block"}, 'Y', "Enabled", "Disabled"},
    {{{25, 1}, "Auto-dump in Serial Mode"}, 'Y', "Enabled", "Disabled"},
};
static constexpr Line Threshold{{26, 2}, "Auto-dump Threshold"};
static constexpr Line Powerdown{{28, 4}, "SCSI Powerdown Delay"};
static constexpr Choice Disk_choices[] = {
    {{{32, 1}, "SCSI Disk Wrap"}, 'Y', "Enabled", "Disabled"},
    {{{33, 1}, "SCSI Directory"}, 'Y', "Enabled", "Disabled"},
    {{{34, 1}, "SCSI Device Power"}, 'O', "Always On", "Toggle"},
    {{{35, 1}, "SCSI Termintor Power"}, 'O', "Always On", "Toggle"}, // kept: termintor. So spelled.
};
static constexpr Row Wakes{48, 64, 8};
static constexpr Line Wake_start_lines[] = {
    {{0, 2}, "Sequence number"},
    {{2, 12}, "Start time"},
};
static constexpr Line Wake_period_lines[] = {
    {{14, 6}, "Power Duration"},
    {{20, 6}, "Repeat Interval"},
};
static constexpr Line Wake_count{{26, 2}, "Number of Intervals"};

/// A byte as it is, a NUL included.
static void log_character(OUT_FILE& log, const PACKET& pkt, const Line& line)
{
    form_label(log, Form_a, line.label);
    log.print("%c\r\n", byte(pkt, line.where));
}

static void log_choice(OUT_FILE& log, const PACKET& pkt, const Choice& choice)
{
    form_label(log, Form_a, choice.line.label);
    log.print("%s\r\n", byte(pkt, choice.line.where) == choice.letter ? choice.chosen : choice.otherwise);
}

static void log_wake(OUT_FILE& log, const PACKET& pkt, int wake)
{
    if (!form_entry(log, pkt, wake)) return;
    form_lines(log, Form_b, pkt, Wake_start_lines, wake);
    for (const Line& line : Wake_period_lines) {
        form_label(log, Form_b, line.label);
        log.write("    "); // these two values stand further in
        form_text(log, pkt, in_entry(wake, line.where));
        log.write("\r\n");
    }
    form_line(log, Form_b, pkt, Wake_count, wake);
}

void log_om(OUT_FILE& log, const PACKET& pkt)
{
    form_lines(log, Form_a, pkt, Mode_lines);
    for (const Line& line : Device_lines) log_character(log, pkt, line);
    for (const Choice& choice : Dump_choices) log_choice(log, pkt, choice);

    form_label(log, Form_a, Threshold.label);
    form_text(log, pkt, Threshold.where);
    log.write("%\r\n");
    form_label(log, Form_a, Powerdown.label);
    form_text(log, pkt, Powerdown.where);
    log.write(" seconds\r\n");

    for (const Choice& choice : Disk_choices) log_choice(log, pkt, choice);
    log.write("     Wake Sequence Information\r\n");
    for (int i = 0; i < Wakes.count; ++i) log_wake(log, pkt, Wakes[i].at);
    log.write("\r\n");
}

// AD: the auxiliary data

static constexpr Line Aux_channels{{18, 16}, "Channels Included"};
static constexpr Line Aux_lines[] = {
    {{34, 8}, "Sample Interval"},
    {{42, 2}, "Data Format"},
    {{44, 8}, "Record Length"},
};

void log_ad(OUT_FILE& log, const PACKET& pkt)
{
    form_channel_line(log, Form_a, pkt, Aux_channels);
    form_lines(log, Form_a, pkt, Aux_lines);
    log.write("\r\n");
}
