// The console while packets are read: a table whose one line is overwritten, or a counter.
#pragma once

#include "packet/packet.h"

#include <cstdint>

struct CHN_T;
struct EVT_T;
struct UNIT_T;

/// Prints the head of the table, or the counter at 0.
void Progress_start();

/// Prints the line of a packet of these types, or the counter.
void Progress_event(const PACKET& pkt, const EVT_T& evt);     ///< EH, ET
void Progress_data(const UNIT_T& unit, const CHN_T& chn);     ///< DT
void Progress_health(const PACKET& pkt, const UNIT_T& unit);  ///< SH
void Progress_parameters(const PACKET& pkt);                  ///< SC, DS, CD, OM, AD, DR, FD
void Progress_network(const PACKET& pkt, const UNIT_T& unit); ///< NH, NT
