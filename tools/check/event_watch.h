// Follows the open events of one recorder: their channels, their samples, their time.
#pragma once

#include "check/continuity.h"
#include "check/report.h"
#include "check/trace_path.h"
#include "packet/samples.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct EVT_T;
struct UNIT_T;

namespace check {

/// What the watches of all recorders of a file share.
struct Shared {
    Report& report;
    TracePaths paths;
    DATA_BUF samples;
};

class EventWatch {
public:
    EventWatch(Shared& shared, UNIT_T& unit, UnitTally& tally) : shared_(shared), unit_(unit), tally_(tally)
    {
    }

    /// Takes the packets that the converter files under an event. `packet` counts from 1.
    void header(const PACKET& pkt, uint64_t packet);
    void data(const PACKET& pkt, uint64_t packet);
    /// True when the trailer ended the event.
    bool trailer(const PACKET& pkt, uint64_t packet);

    /// The input ends: what is open has no trailer.
    void finish();

private:
    /// A channel of an open event.
    struct Flow {
        EventTally* event;
        ChannelTally* told;
        DayKey key;
        Continuity time;
        Moment stretch_from = No_moment, stretch_to = No_moment; ///< unbroken, not yet counted as present
    };
    /// What the converter keeps of a channel number in an event, whatever the stream.
    struct Line {
        uint32_t last = 0;
        std::optional<std::string> trace;
    };
    struct OpenEvent {
        bool headed = false;
        double rate = 0.0;
        Moment told_first = No_moment;
        uint64_t latest_packet = 0;
        Moment latest = No_moment;
        std::map<uint16_t, EventTally*> parts; ///< by stream
        std::map<uint32_t, Flow> flows;        ///< by stream and channel
        std::map<uint16_t, Line> lines;        ///< by channel
    };

    OpenEvent& enter(const PACKET& pkt, uint64_t packet);
    EventTally& part_of(OpenEvent& open, const PACKET& pkt);
    Flow& flow_of(OpenEvent& open, const PACKET& pkt, uint64_t packet);
    void late_start(const OpenEvent& open, const PACKET& pkt, Moment at, uint64_t packet);
    uint32_t decode(Line& line, ChannelTally& told, const PACKET& pkt, Moment at, uint64_t packet);
    void check_count(const PACKET& pkt, Encoding encoding, Moment at, uint64_t packet);
    void on_break(Flow& flow, const Break& what);
    void on_packet(Flow& flow, const Arrival& arrival, double rate);
    void take_time(OpenEvent& open, Flow& flow, const Arrival& arrival);
    void count_present(Flow& flow);
    void close_flow(Flow& flow);
    void close(OpenEvent& open);
    Place place_of(const Flow& flow, uint64_t packet, Moment at) const;

    Shared& shared_;
    UNIT_T& unit_;
    UnitTally& tally_;
    std::map<uint16_t, OpenEvent> open_;
    bool fine_ = false; ///< the recorder tells microseconds
};

/// A station's name without blanks; empty when it is the number that stands in for one.
std::string station_of(const UNIT_T& unit, std::string_view name);

/// The place of a packet.
Place place_of(const PACKET& pkt, uint64_t packet, Moment at);

} // namespace check
