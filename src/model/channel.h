// The channels of an event: finding, creation, continuity of time, estimate of the sample rate.
#pragma once

#include "packet/packet.h"
#include "packet/timestr.h"

#include <cstdint>

struct CHN_T;
struct EVT_T;

/// The channel of a DT packet, made when needed, with its trace open and its times brought up to date.
/// Never null: no memory, no name and no file end the run.
CHN_T* Chn_find(EVT_T* evt, const PACKET& pkt);

/// A new channel: defaults, INI keys, event header, and the path of its trace. `time` is that of its first
/// packet. Not yet in the event's ring, and no file is made.
CHN_T* Chn_create(EVT_T* evt, uint16_t channel, uint16_t event, uint16_t stream, const TIMESTR& time);

/// Sets `name` to a path that nothing stands at, its directory made. Exit status 23 when none is left.
void Chn_name(CHN_T* chn, const TIMESTR& time);

/// Applies the channel's keys in the unit's section of the INI file.
void Chn_ini(CHN_T* chn);

/// Applies what the event header tells of the channel; it overrides the INI file.
void Chn_ehet(CHN_T* chn);
