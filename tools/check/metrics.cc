#include "check/metrics.h"

#include <algorithm>
#include <cmath>

namespace check {

namespace {

constexpr int64_t Most_days = 400; ///< a longer stretch comes from a damaged time

template <class Add>
void each_day(Report& report, DayKey& key, Moment from, Moment to, Add add)
{
    if (to <= from || day_of(to) - day_of(from) > Most_days) return;
    while (from < to) {
        key.day = day_of(from);
        const Moment end = std::min(to, (key.day + 1) * Day);
        add(report.metrics[key], static_cast<double>(end - from));
        from = end;
    }
}

} // namespace

void add_gap(Report& report, DayKey key, const Gap& gap)
{
    key.day = day_of(gap.at);
    DayMetric& metric = report.metrics[key];
    const bool is_gap = gap.seconds > 0;
    ++(is_gap ? metric.num_gaps : metric.num_overlaps);
    double& longest = is_gap ? metric.max_gap : metric.max_overlap;
    longest = std::max(longest, std::abs(gap.seconds));
}

void add_present(Report& report, DayKey key, Moment from, Moment to)
{
    each_day(report, key, from, to, [](DayMetric& metric, double micros) { metric.present += micros; });
}

void add_span(Report& report, DayKey key, Moment from, Moment to)
{
    each_day(report, key, from, to, [](DayMetric& metric, double micros) { metric.span += micros; });
}

double availability(const DayMetric& metric)
{
    if (metric.span <= 0) return 0.0;
    return std::round(std::min(1.0, metric.present / metric.span) * 10000) / 100;
}

} // namespace check
