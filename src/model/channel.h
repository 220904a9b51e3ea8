// Finds and creates the channels of an event, checks the continuity of time, estimates the sample rate.
#pragma once

#include "packet/packet.h"

struct CHN_T;
struct EVT_T;

/// Finds the channel of a DT packet, or creates it. Opens its trace, updates its times and, without an event
/// header, estimates the rate. The run ends without memory (40), without a free name (23), or when the trace
/// cannot be created (20).
CHN_T& Chn_find(EVT_T& evt, const PACKET& pkt);

/// Creates a channel from its first packet: defaults, INI keys, event header, path of the trace. It is not
/// yet in the event's ring, and its trace is not yet created. The caller frees it.
CHN_T* Chn_create(EVT_T& evt, const PACKET& pkt);

/// Sets `name` to a free path made from the time of the first packet, and creates its directories. The run
/// ends (23) when all names are taken.
void Chn_name(CHN_T& chn);

/// Applies the channel's keys in the unit's section of the INI file.
void Chn_ini(CHN_T& chn);

/// Applies the fields of the event header, which override the INI file.
void Chn_ehet(CHN_T& chn);
