// The packets that make up an event: header, data, trailer.
#pragma once

#include "mkrec/channel_run.h"
#include "mkrec/page.h"

namespace mkrec {

/// When things happen in an event, in milliseconds.
struct EVENT_TIMES {
    int64_t first, trigger;
    int64_t detrigger, last; ///< -1 while the event goes on
};

/// An event header, or the trailer when `trailer` is set, for one bank of channels.
void write_event_page(PAGE& page, const SURVEY& survey, const PLACE& event, const EVENT_TIMES& times,
                      bool trailer, int bank, int sequence);

/// A network header (NH) or trailer (NT); they tell about an event like its header does.
void write_network_page(PAGE& page, const SURVEY& survey, const PLACE& event, const EVENT_TIMES& times,
                        const char* type, int sequence);

/// A data packet.
void write_data_page(PAGE& page, const SURVEY& survey, const PLACE& place, const BLOCK& block, int sequence);

/// The nominal bit weight of a stream's channels, 8 characters.
const char* bit_weight(const SURVEY& survey, int unit, int stream);

/// The time of a sample of an event.
int64_t sample_ms(const SURVEY& survey, const PLACE& event, int64_t sample);

} // namespace mkrec
