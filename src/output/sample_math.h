// The loops over a packet's samples on their way into a trace: conversion, extremes, sums.
#pragma once

#include <cstdint>

struct Statistics;

/// Writes n samples to `to` as big-endian IEEE floats, each the nearest to its sample, and brings the
/// sums and extremes up to date. `before` samples went before them, one sample after the other. A tie keeps
/// the first. The order of the additions is part of the result: sums beyond 2^53 are rounded at each step.
void add_samples_one_by_one(Statistics& stats, uint32_t before, const int32_t* samples, uint32_t n, char* to);

/// The same result, faster: whole numbers while sums are exact, several runs at a time where they are
/// rounded.
void add_samples(Statistics& stats, uint32_t before, const int32_t* samples, uint32_t n, char* to);
