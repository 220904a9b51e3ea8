// The metrics of a channel and day.
#pragma once

#include "check/report.h"

namespace check {

/// Counts a gap or an overlap on the day of its moment.
void add_gap(Report& report, DayKey key, const Gap& gap);

/// Adds a stretch of time, in microseconds, to what is present on its days, or to what the event spans.
void add_present(Report& report, DayKey key, Moment from, Moment to);
void add_span(Report& report, DayKey key, Moment from, Moment to);

/// What is present of the span, in per cent with two decimals.
double availability(const DayMetric& metric);

} // namespace check
