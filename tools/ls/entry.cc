#include "ls/entry.h"

#include "driver/base/settings.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <tuple>

namespace ls {

namespace {

void judge_length(Entry& e)
{
    const uint64_t said = 4 * static_cast<uint64_t>(e.npts.value_or(0));
    if (said == 0) {
        e.set(e.data_len == 0 ? TraceFlag::empty : TraceFlag::unfinished);
        if (e.data_len % 4 != 0) e.set(TraceFlag::cut);
    } else if (e.data_len < said) {
        e.set(TraceFlag::cut);
    } else if (e.data_len > said) {
        e.set(TraceFlag::extra);
    }
}

/// The values that a run writes before the first sample are not statistics.
void judge_statistics(Entry& e, const SACHDR_T& h)
{
    const bool reset = trace::statistics_are_reset(h);
    e.has_statistics = !reset && !trace::statistics_are_undefined(h);
    if (reset && !e.has(TraceFlag::unfinished) && !e.has(TraceFlag::empty)) e.set(TraceFlag::qc_reset);
}

void take_header(Entry& e, const SACHDR_T& h)
{
    e.has_header = true;
    e.delta = h.DELTA;
    e.depmin = h.DEPMIN;
    e.depmax = h.DEPMAX;
    e.depmen = h.DEPMEN;
    e.rate = trace::rate_of(h);
    e.start = trace::start_of(h);
    e.npts = trace::samples_said(h);
    e.kstnm = trace::text_of({h.KSTNM, sizeof h.KSTNM});
    e.kcmpnm = trace::text_of({h.KCMPNM, sizeof h.KCMPNM});
    e.knetwk = trace::text_of({h.KNETWK, sizeof h.KNETWK});
    judge_length(e);
    judge_statistics(e, h);
    if (!e.rate) e.set(TraceFlag::no_rate);
    if (!e.start) e.set(TraceFlag::no_time);
}

/// Stream and channel from the name of a trace, YYYYDDDHHMMSSmmm_STATN_s_c.sac; the last "_" may be a letter.
/// They are needed because components named by letters do not contain the stream. Empty for other names.
std::string_view stream_and_channel(std::string_view path)
{
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const bool is_so_named =
        name.size() >= 30 && trace::is_trace_name(name) && name[16] == '_' && name[22] == '_' &&
        std::all_of(name.begin(), name.begin() + 16, [](char c) { return '0' <= c && c <= '9'; }) &&
        (name[24] == '_' || ('A' <= name[24] && name[24] <= 'X'));
    return is_so_named ? name.substr(23, name.size() - 23 - strlen(Fn_ext_chn)) : std::string_view();
}

/// The letter that vx_sac put in to get a free name is not part of the channel.
auto channel_key(const Entry& e)
{
    const std::string_view place = stream_and_channel(e.path);
    return std::make_tuple(std::cref(e.knetwk), std::cref(e.kstnm), std::cref(e.kcmpnm), place.substr(0, 1),
                           place.substr(place.empty() ? 0 : 2));
}

/// The end of the traces of a channel seen so far.
struct SoFar {
    bool known = false; ///< false after a trace without a sample rate
    double end = 0.0;   ///< when the next sample is due, in milliseconds
};

constexpr double Millisecond = 1.0;

void follow(SoFar& so_far, Entry& e)
{
    const double begin = static_cast<double>(*e.start);
    const double period = e.rate ? 1000.0 / *e.rate : 0.0;
    const double tolerance = std::max(period / 2, Millisecond);
    if (so_far.known && begin > so_far.end + tolerance) e.set(TraceFlag::gap);
    if (so_far.known && begin < so_far.end - tolerance) e.set(TraceFlag::overlap);
    const double end = begin + static_cast<double>(e.samples_there()) * period;
    so_far.end = so_far.known ? std::max(so_far.end, end) : end;
    so_far.known = e.rate.has_value();
}

} // namespace

uint64_t Entry::samples_there() const
{
    const uint64_t there = data_len / 4;
    return has(TraceFlag::unfinished) || !npts ? there : std::min<uint64_t>(there, *npts);
}

Entry make_entry(const std::string& path, trace::Found found, const trace::InputFile& input,
                 const trace::TraceHeader& trace)
{
    Entry e;
    e.path = path;
    e.file_len = static_cast<uint64_t>(input.is.st_size);
    switch (found) {
    case trace::Found::unreadable:
        e.error = errno;
        e.set(TraceFlag::unreadable);
        break;
    case trace::Found::not_sac: e.set(TraceFlag::not_sac); break;
    case trace::Found::too_short: e.set(TraceFlag::cut); break;
    case trace::Found::trace: e.data_len = trace.data_len; take_header(e, trace.header);
    }
    return e;
}

Entry read_entry(const std::string& path)
{
    trace::InputFile input;
    trace::TraceHeader trace;
    const trace::Found found = trace::open_trace(path, input, trace);
    return make_entry(path, found, input, trace);
}

void mark_gaps(std::vector<Entry>& entries)
{
    std::vector<Entry*> order;
    for (Entry& e : entries)
        if (e.start && e.samples_there() > 0) order.push_back(&e);
    std::sort(order.begin(), order.end(), [](const Entry* a, const Entry* b) {
        return std::make_tuple(channel_key(*a), *a->start, std::string_view(a->path)) <
               std::make_tuple(channel_key(*b), *b->start, std::string_view(b->path));
    });

    SoFar so_far;
    const Entry* before = nullptr;
    for (Entry* e : order) {
        if (before && channel_key(*before) != channel_key(*e)) so_far = {};
        follow(so_far, *e);
        before = e;
    }
}

} // namespace ls
