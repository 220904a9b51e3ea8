// The report as JSON. Unknown values are null; no key is ever missing.
#include "check/metrics.h"
#include "check/write.h"
#include "ls/text.h"

#include <nlohmann/json.hpp>

namespace check {

namespace {

using Json = nlohmann::ordered_json;

/// A text of any bytes: one that is no UTF-8 becomes the character of its number, as in all JSON of these
/// tools.
Json words(std::string_view text)
{
    return ls::is_utf8(text) ? Json(std::string(text)) : Json::parse(ls::json_string(text));
}

Json words_or_null(const std::optional<std::string>& text)
{
    return text ? words(*text) : Json();
}

Json moment(Moment at)
{
    return at == No_moment ? Json() : Json(iso(at));
}

Json number_or_null(int value)
{
    return value == Nowhere ? Json() : Json(value);
}

std::string hex_id(unsigned id)
{
    char text[16];
    snprintf(text, sizeof text, "%04X", id);
    return text;
}

std::string hex_format(unsigned format)
{
    char text[16];
    snprintf(text, sizeof text, "%02x", format);
    return text;
}

Json unit_or_null(int unit)
{
    return unit == Nowhere ? Json() : Json(hex_id(static_cast<unsigned>(unit)));
}

Json positive_or_null(double value)
{
    return value > 0 ? Json(value) : Json();
}

Json channel(uint16_t number, const ChannelTally& told)
{
    Json gaps = Json::array();
    for (const Gap& gap : told.gaps)
        gaps.push_back({{"at", moment(gap.at)},
                        {"packet", gap.packet},
                        {"seconds", gap.seconds},
                        {"samples", gap.samples}});
    return {{"channel", number + 1},
            {"format", hex_format(told.format)},
            {"packets", told.packets},
            {"samples", told.samples},
            {"first", moment(told.first)},
            {"last", moment(told.last)},
            {"trace", words_or_null(told.trace)},
            {"gaps", std::move(gaps)},
            {"bad_packets", told.bad_packets}};
}

Json event(const EventTally& told)
{
    Json channels = Json::array();
    for (const auto& [number, tally] : told.channels) channels.push_back(channel(number, tally));
    return {{"event", told.event},         {"stream", told.stream + 1}, {"rate", positive_or_null(told.rate)},
            {"first", moment(told.first)}, {"last", moment(told.last)}, {"channels", std::move(channels)}};
}

Json position(const std::optional<PositionTold>& told)
{
    if (!told) return {};
    return {{"lat", told->lat},
            {"lon", told->lon},
            {"elev", told->elev},
            {"source", told->by_header ? "header" : "ini"}};
}

Json clocks(const UnitTally& told)
{
    Json all = Json::array();
    for (const ClockTold& clock : told.clock) {
        const bool named = clock.source != ' ' && clock.source != '\0';
        all.push_back({{"at", moment(clock.at)},
                       {"source", named ? words(std::string(1, clock.source)) : Json()},
                       {"days_since_lock", clock.days ? Json(*clock.days) : Json()}});
    }
    return all;
}

/// An object up to its closing brace, for more keys.
std::string opened(const Json& object)
{
    std::string text = object.dump();
    text.pop_back();
    return text;
}

/// Appends an entry of an array.
void add_entry(std::string& array, const std::string& entry)
{
    if (array.back() != '[') array += ',';
    array += entry;
}

/// Events are written one by one: as JSON in memory they would take many times as much.
std::string unit(uint16_t id, const UnitTally& told)
{
    Json health = Json::array();
    for (const HealthTold& h : told.health)
        health.push_back({{"at", moment(h.at)}, {"packet", h.packet}, {"text", words(h.text)}});
    std::string text = opened({{"unit", hex_id(id)},
                               {"station", told.station.empty() ? Json() : words(told.station)},
                               {"position", position(told.position)},
                               {"clock", clocks(told)},
                               {"health", std::move(health)}});
    text += ",\"events\":[";
    for (const auto& e : told.events) add_entry(text, event(*e).dump());
    return text + "]}";
}

Json metric(const DayKey& key, const DayMetric& told)
{
    return {{"unit", hex_id(key.unit)},        {"station", key.station.empty() ? Json() : words(key.station)},
            {"stream", key.stream + 1},        {"channel", key.channel + 1},
            {"day", iso_day(key.day)},         {"num_gaps", told.num_gaps},
            {"max_gap", told.max_gap},         {"num_overlaps", told.num_overlaps},
            {"max_overlap", told.max_overlap}, {"percent_availability", availability(told)}};
}

Json finding(const Finding& f)
{
    return {{"code", info_of(f.code).name},
            {"severity", f.severity == Severity::error ? "error" : "note"},
            {"packet", f.place.packet ? Json(f.place.packet) : Json()},
            {"unit", unit_or_null(f.place.unit)},
            {"event", number_or_null(f.place.event)},
            {"stream", number_or_null(f.place.stream)},
            {"channel", number_or_null(f.place.channel)},
            {"at", moment(f.place.at)},
            {"text", words(f.text)}};
}

const char* kind_name(FileKind kind)
{
    return kind == FileKind::recording ? "recording" : kind == FileKind::empty ? "empty" : "other";
}

/// EH, ET and so on, "unknown" last.
Json types(const Report& report)
{
    Json all = Json::object();
    for (size_t kind = 1; kind < report.types.size(); ++kind) all[letters_of(kind)] = report.types[kind];
    all[letters_of(PKT_UNKNOWN)] = report.types[PKT_UNKNOWN];
    return all;
}

} // namespace

std::string as_json(const Report& report, const Options& options)
{
    std::string text = opened({{"schema", 1},
                               {"program", "vx_check " VX_VERSION},
                               {"file", words(report.file)},
                               {"bytes", report.bytes},
                               {"packets", report.packets},
                               {"left_over_bytes", report.left_over},
                               {"kind", kind_name(report.kind)},
                               {"looks_like", words_or_null(report.looks_like)},
                               {"types", types(report)},
                               {"first", moment(report.first)},
                               {"last", moment(report.last)}});
    text += ",\"units\":[";
    for (const auto& [id, told] : report.units) add_entry(text, unit(id, told));
    text += "],\"metrics\":[";
    for (const auto& [key, told] : report.metrics) add_entry(text, metric(key, told).dump());
    text += "],\"findings\":[";
    for (const Finding& f : report.findings.list())
        if (options.shows(f.code)) add_entry(text, finding(f).dump());
    Json counts = Json::object();
    for (const CodeInfo& info : Codes)
        counts[std::string(info.name)] = options.shows(info.code) ? report.findings.count(info.code) : 0;
    return text + "],\"counts\":" + counts.dump() + "}\n";
}

} // namespace check
