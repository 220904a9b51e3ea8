// The dumps of the packets with the parameters of a station: SC, CD, OM and AD. A table per packet type, and
// code for the lines whose value is not a plain text.
#include "output/dump.h"
#include "output/form.h"

#include <string_view>

// SC: the station and its channels

static constexpr Line Station_lines[] = {
    {SC::Exp_number, "Experiment Number"},
    {SC::Exp_name, "Experiment Name"},
    {SC::Exp_comment, "Experiment Comment"},
    {SC::Stn_number, "Station Number"},
    {SC::Stn_name, "Station Name"},
    {SC::Stn_comment, "Station Comment"},
    {SC::Das_model, "DAS Model"},
    {SC::Das_serial, "DAS Serial Number"},
    {SC::Exp_start, "Experiment Start"},
    {SC::Clock_type, "Time Clock Type"},
    {SC::Clock_serial, "Time Clock S/N"},
};
static constexpr Line Channel_lines[] = {
    {SC::CHN::Number, "Channel Number"},  {SC::CHN::Name, "Channel Name"},
    {SC::CHN::Azimuth, "Azimuth"},        {SC::CHN::Inclination, "Inclination"},
    {SC::CHN::X, "X Coordinate"},         {SC::CHN::Y, "Y Coordinate"},
    {SC::CHN::Z, "Z Coordinate"},         {SC::CHN::Unit_xy, "Unit type for X, Y"},
    {SC::CHN::Unit_z, "Unit type for Z"}, {SC::CHN::Preamp, "Preamp Gain"},
    {SC::CHN::Sensor, "Sensor Model"},    {SC::CHN::Sensor_serial, "Sensor Serial Number"},
    {SC::CHN::Comment, "Comments"},       {SC::CHN::Bit_volts, "Bit-count Voltage"},
};

void log_sc(OUT_FILE& log, const PACKET& pkt)
{
    form_lines(log, Form_a, pkt, Station_lines);
    for (int i = 0; i < SC::Channels.count; ++i) {
        const int channel = SC::Channels[i].at;
        if (form_entry(log, pkt, channel)) form_lines(log, Form_b, pkt, Channel_lines, channel);
    }
    log.write("\r\n");
}

// CD: the calibration

static constexpr Line Calibration_lines[] = {
    {CD::Start, "Start Time"},
    {CD::Interval, "Repeat Interval"},
    {CD::Count, "No of Intervals"},
    {CD::Length, "Length of Intervals"},
    {CD::Step, "Step"},
};
static constexpr Line Step_lines[] = {
    {CD::Step_period, "Step Period"},
    {CD::Step_size, "Step Size"},
    {CD::Step_amplitude, "Step Amplitude"},
    {CD::Step_output, "Step Output"},
};

void log_cd(OUT_FILE& log, const PACKET& pkt)
{
    form_lines(log, Form_a, pkt, Calibration_lines);
    const std::string_view step = text(pkt, CD::Step);
    // kept: one-case-step. "On" counts as off.
    if (step.starts_with("ON") || step.starts_with("on")) {
        log.write("\r\n");
        form_lines(log, Form_b, pkt, Step_lines);
    }
    log.write("\r\n");
}

// OM: the operating mode

namespace {

/// A byte that means `chosen` when it is `letter`, else `otherwise`.
struct Choice {
    Line line;
    char letter;
    const char *chosen, *otherwise;
};

} // namespace

static constexpr Line Mode_lines[] = {
    {OM::Power, "Power State"},
    {OM::Mode, "Recording Mode"},
};
static constexpr Line Device_lines[] = {
    {OM::Disk_1, "Primary Disk ID"},
    {OM::Disk_2, "Secondary Disk ID"},
    {OM::Tape, "Tape ID"},
    {OM::Dump_device, "Auto-dump Device"},
};
static constexpr Choice Dump_choices[] = {
    {{OM::Dump_on_et, "Auto-dump on ET Block"}, 'Y', "Enabled", "Disabled"},
    {{OM::Dump_serial, "Auto-dump in Serial Mode"}, 'Y', "Enabled", "Disabled"},
};
static constexpr Line Threshold{OM::Dump_threshold, "Auto-dump Threshold"};
static constexpr Line Powerdown{OM::Powerdown, "SCSI Powerdown Delay"};
static constexpr Choice Disk_choices[] = {
    {{OM::Disk_wrap, "SCSI Disk Wrap"}, 'Y', "Enabled", "Disabled"},
    {{OM::Disk_directory, "SCSI Directory"}, 'Y', "Enabled", "Disabled"},
    {{OM::Device_power, "SCSI Device Power"}, 'O', "Always On", "Toggle"},
    {{OM::Terminator_power, "SCSI Termintor Power"},
     'O',
     "Always On",
     "Toggle"}, // kept: termintor. A misspelt label.
};
static constexpr Line Wake_start_lines[] = {
    {OM::WAKE::Number, "Sequence number"},
    {OM::WAKE::Start, "Start time"},
};
static constexpr Line Wake_period_lines[] = {
    {OM::WAKE::Duration, "Power Duration"},
    {OM::WAKE::Interval, "Repeat Interval"},
};
static constexpr Line Wake_count{OM::WAKE::Count, "Number of Intervals"};

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
        log.write("    "); // these two values are indented further
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
    for (int i = 0; i < OM::Wakes.count; ++i) log_wake(log, pkt, OM::Wakes[i].at);
    log.write("\r\n");
}

// AD: the auxiliary data

static constexpr Line Aux_channels{AD::Channels, "Channels Included"};
static constexpr Line Aux_lines[] = {
    {AD::Interval, "Sample Interval"},
    {AD::Format, "Data Format"},
    {AD::Length, "Record Length"},
};

void log_ad(OUT_FILE& log, const PACKET& pkt)
{
    form_channel_line(log, Form_a, pkt, Aux_channels);
    form_lines(log, Form_a, pkt, Aux_lines);
    log.write("\r\n");
}
