// The packets that make up an event: header, data, trailer.
#pragma once

#include "mkrec/channel_run.h"
#include "mkrec/page.h"

namespace mkrec {

/// Times of an event, in milliseconds.
struct MadeTimes {
    int64_t first, trigger;
    int64_t detrigger, last; ///< -1 before the event ends
};

/// An event header, or a trailer if `trailer` is set, for one bank of channels.
void write_event_page(TextPage& page, const Survey& survey, const LinePlace& event, const MadeTimes& times,
                      bool trailer, int bank, int sequence);

/// A network header (NH) or trailer (NT); they describe an event with the fields of an EH.
void write_network_page(TextPage& page, const Survey& survey, const LinePlace& event, const MadeTimes& times,
                        const char* type, int sequence);

/// A data packet.
void write_data_page(TextPage& page, const Survey& survey, const LinePlace& place, const SampleBlock& block,
                     int sequence);

/// The nominal bit weight of a stream's channels, 8 characters.
const char* bit_weight(const Survey& survey, int unit, int stream);

/// The time of a sample of an event.
int64_t sample_ms(const Survey& survey, const LinePlace& event, int64_t sample);

} // namespace mkrec
