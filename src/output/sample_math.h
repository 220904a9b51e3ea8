// The loops over the samples of a packet before they are written: conversion, extremes, sums.
#pragma once

#include <cstdint>

struct TraceStatistics;

/// Writes n samples to `to` as the nearest big-endian IEEE floats, and updates sums and extremes. The trace
/// already holds `before` samples. Of equal extremes the first counts. The samples are added one after the
/// other: this order is part of the result, since sums beyond 2^53 are rounded at each addition.
void add_samples_one_by_one(TraceStatistics& stats, uint32_t before, const int32_t* samples, uint32_t n,
                            char* to);

/// The same result, bit for bit, and faster: adds integers while sums are exact, and several runs of samples
/// at once where they are rounded.
void add_samples(TraceStatistics& stats, uint32_t before, const int32_t* samples, uint32_t n, char* to);
