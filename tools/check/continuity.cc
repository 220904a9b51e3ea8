#include "check/continuity.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace check {

namespace {

constexpr double Hair = 0.001; ///< microseconds; below any clock, above the rounding of doubles

double resolution(bool fine)
{
    return fine ? 1.0 : 1000.0;
}

/// A whole number of samples per second, or of seconds per sample, if the distance of two packets allows it;
/// else four digits of the rate.
double plausible_rate(double samples, double micros)
{
    const double rate = samples * Second / micros;
    const double slack = 2000.0 / micros; // two times may be cut by a millisecond each
    const double whole = std::round(rate);
    if (whole >= 1 && std::abs(rate / whole - 1) <= slack) return whole;
    const double period = std::round(1 / rate);
    if (period >= 1 && std::abs(period * rate - 1) <= slack) return 1 / period;
    const double unit = std::pow(10.0, std::floor(std::log10(rate)) - 3);
    return std::round(rate / unit) * unit;
}

} // namespace

double most_common_rate(const std::vector<Arrival>& arrivals)
{
    std::map<double, int> votes;
    for (size_t i = 1; i < arrivals.size(); ++i) {
        const Arrival &a = arrivals[i - 1], &b = arrivals[i];
        if (a.time == No_moment || b.time == No_moment || b.time <= a.time || a.told == 0) continue;
        ++votes[plausible_rate(a.told, static_cast<double>(b.time - a.time))];
    }
    const auto most = std::max_element(votes.begin(), votes.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    return most == votes.end() ? 0.0 : most->first;
}

void Continuity::begin_at(const Arrival& arrival)
{
    anchor_ = arrival.time;
    since_ = 0;
}

void Continuity::judge(const Arrival& arrival, const OnBreak& on_break)
{
    if (arrival.time != No_moment) {
        const double sample = Second / rate_;
        const double step = resolution(fine_ && arrival.fine);
        if (!started_) {
            begin_at(arrival);
            started_ = true;
        } else {
            const auto after = static_cast<double>(arrival.time - before_);
            const double off = after - static_cast<double>(told_) * sample;
            const double off_by_made = after - static_cast<double>(made_) * sample;
            const double allowed = std::max(0.5 * sample, step) + Hair;
            const double run =
                static_cast<double>(arrival.time - anchor_) - static_cast<double>(since_) * sample;
            if (std::abs(off) > allowed && std::abs(off_by_made) > allowed) {
                on_break({Break::Kind::gap, arrival.time - std::llround(off), off, arrival});
                begin_at(arrival);
            } else if (exact_ && told_ == made_ && std::abs(run) > std::max(sample, step) + Hair) {
                on_break({Break::Kind::drift, arrival.time - std::llround(run), run, arrival});
                begin_at(arrival);
            } else if (std::abs(off) > allowed) {
                begin_at(arrival); // the header's count is wrong, the time is not
            }
        }
        before_ = arrival.time;
        told_ = made_ = 0;
        fine_ = arrival.fine;
    }
    told_ += arrival.told;
    made_ += arrival.made;
    since_ += arrival.told;
}

void Continuity::release(const OnBreak& on_break, const OnPacket& on_packet)
{
    for (const Arrival& arrival : waiting_) {
        if (rate_ > 0) judge(arrival, on_break);
        on_packet(arrival, rate_);
    }
    waiting_ = {};
}

void Continuity::take(const Arrival& arrival, double rate, const OnBreak& on_break, const OnPacket& on_packet)
{
    if (rate_ <= 0 && rate > 0) {
        rate_ = rate;
        release(on_break, on_packet);
    }
    if (rate_ > 0) {
        judge(arrival, on_break);
        on_packet(arrival, rate_);
        return;
    }
    waiting_.push_back(arrival);
    if (waiting_.size() >= Waiting_most) finish(on_break, on_packet);
}

void Continuity::finish(const OnBreak& on_break, const OnPacket& on_packet)
{
    if (waiting_.empty()) return;
    rate_ = most_common_rate(waiting_);
    exact_ = rate_ == std::round(rate_) || 1 / rate_ == std::round(1 / rate_);
    release(on_break, on_packet);
}

} // namespace check
