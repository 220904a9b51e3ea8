// The field campaign of a recording: its stations, streams and channels, and when and how long each
// event is. All of it is computed from the options, so any part can be computed at any time.
#pragma once

#include "mkrec/options.h"
#include "mkrec/signal.h"
#include "packet/layout.h"

#include <string>

namespace mkrec {

/// A channel's part of an event.
struct LinePlace {
    int unit = 0, stream = 0;
    int64_t event = 0; ///< of the stream, from 0
    int channel = 0;   ///< of the stream, from 0
};

inline constexpr int Bank_len = EH::Bit_wght.count; ///< channels that one EH or ET describes

struct Survey {
    Options options;
    int64_t slot_ms = 0;        ///< from one event's start to the next one's
    int64_t blocks_each = 0;    ///< data packets of a channel in an event; 0: as many as the samples need
    int64_t one_more_until = 0; ///< so many channel parts have one packet more
};

/// Computes lengths and times. Returns false with a message if the size is too small for the data.
bool make_survey(const Options& options, Survey& survey, std::string& complaint);

/// Packets at a unit's start and at its end.
int opening_packets(const Survey& survey);
int closing_packets(const Survey& survey);
/// SC and DS packets of a unit.
int sc_packets(const Survey& survey);
int ds_packets(const Survey& survey);
/// EH packets of an event, one per bank of channels; as many ET packets.
int banks(const Survey& survey);

uint16_t unit_id(int unit);
std::string station_name(int unit); ///< 5 characters
std::string stream_name(int stream);
SampleFormat format_of(const Survey& survey, int unit, int stream);
int rate_of(const Survey& survey, int stream);

/// The number of channels of a unit in a parameter packet, and the number (from 0) of a stream's channel.
/// If there are more than the 16 inputs of a recorder, streams share them.
int inputs(const Survey& survey);
int channel_number(const Survey& survey, int stream, int channel);
/// Band, instrument and axis letters.
std::string seed_code(const Survey& survey, int stream, int channel);

/// Number of an event, 1 to 9999, then from 1 again; until then it differs for all streams of a unit.
int event_number(const Survey& survey, int stream, int64_t event);

int64_t survey_start_ms(const Survey& survey);
int64_t first_sample_ms(const Survey& survey, const LinePlace& event);
int micros_of(int unit); ///< of all its times
/// The sample of an event that triggered it, from 0.
int64_t trigger_sample(const Survey& survey, const LinePlace& event);

SignalPlan signal_plan(const Survey& survey, const LinePlace& place);
/// Samples of a channel's part; 0: as many as its packets take.
int64_t samples_of(const Survey& survey, const LinePlace& place);
/// Data packets of a channel's part; 0: as many as its samples need.
int64_t blocks_of(const Survey& survey, const LinePlace& place);

/// The most samples that a data packet can hold, and the fewest in a full one.
int most_samples(SampleFormat format);
int least_samples(SampleFormat format);

} // namespace mkrec
