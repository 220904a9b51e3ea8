// Does the time of a channel go on? Gaps and overlaps from packet to packet, drift over many packets, and the
// rate of a channel without a header.
#pragma once

#include "check/moment.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace check {

/// A data packet on the axis of time.
struct Arrival {
    Moment time;
    uint32_t told; ///< samples by its header
    uint32_t made; ///< samples decoded
    uint64_t packet;
    bool fine; ///< its recorder tells microseconds
};

/// What a channel's time does.
struct Break {
    enum class Kind : uint8_t { gap, drift } kind;
    Moment due;    ///< when the packet was expected
    double micros; ///< how much later it is; negative: earlier
    const Arrival& arrival;
};

/// The time of one channel of an event.
class Continuity {
public:
    /// Packets that are kept until a rate is known.
    static constexpr size_t Waiting_most = 64;

    using OnBreak = std::function<void(const Break&)>;
    using OnPacket = std::function<void(const Arrival&, double rate)>;

    /// Takes the next packet. `rate` is that of the event's header, 0 without one. Each packet is handed to
    /// `on_packet` once, with the rate that is used for it.
    void take(const Arrival& arrival, double rate, const OnBreak& on_break, const OnPacket& on_packet);

    /// Judges what still waits: the event ends.
    void finish(const OnBreak& on_break, const OnPacket& on_packet);

    double rate() const { return rate_; } ///< in use; 0: none yet

private:
    void judge(const Arrival& arrival, const OnBreak& on_break);
    void release(const OnBreak& on_break, const OnPacket& on_packet);
    void begin_at(const Arrival& arrival);

    double rate_ = 0.0;
    bool exact_ = true; ///< the rate is told, or a whole number: drift can be judged
    bool started_ = false;
    Moment anchor_ = No_moment;    ///< since the latest break
    uint64_t since_ = 0;           ///< samples since then
    Moment before_ = No_moment;    ///< time of the latest packet that has one
    uint64_t told_ = 0, made_ = 0; ///< samples since that packet
    bool fine_ = false;
    std::vector<Arrival> waiting_;
};

/// The most common rate by the distances of packets in time; 0 when no two of them have times in order.
double most_common_rate(const std::vector<Arrival>& arrivals);

} // namespace check
