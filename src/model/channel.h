// The channels of an event: finding, creation, continuity of time, estimate of the sample rate.
#pragma once

#include "packet/packet.h"

struct CHN_T;
struct EVT_T;

/// The channel of a DT packet, made when needed, with its trace open and its times brought up to date.
/// Without memory, a name or a file the run ends (40, 23, 20).
CHN_T& Chn_find(EVT_T& evt, const PACKET& pkt);

/// A new channel for its first packet: defaults, INI keys, event header, and the path of its trace. It is not
/// yet in the event's ring, and no file is made.
CHN_T* Chn_create(EVT_T& evt, const PACKET& pkt);

/// Sets `name` to a path that nothing has yet, from the time of the first packet, and makes its directory.
/// Exit status 23 when none is left.
void Chn_name(CHN_T& chn);

/// Applies the channel's keys in the unit's section of the INI file.
void Chn_ini(CHN_T& chn);

/// Applies what the event header says of the channel; it overrides the INI file.
void Chn_ehet(CHN_T& chn);
