// The loops over a packet's samples on their way into a trace: conversion, extremes, sums.
#pragma once

#include <cstdint>

struct CHN_T;

/// Writes n samples to `to` as big-endian IEEE floats, each the nearest to its sample, and brings the
/// channel's count, sums and extremes up to date, one sample after the other. A tie keeps the first. The
/// order of the additions is part of the result: sums beyond 2^53 are rounded at each step.
void add_samples_one_by_one(CHN_T* chn, const int32_t* samples, uint32_t n, char* to);

/// The same result, faster: whole numbers while sums are exact, several runs at a time where they are
/// rounded.
void add_samples(CHN_T* chn, const int32_t* samples, uint32_t n, char* to);
