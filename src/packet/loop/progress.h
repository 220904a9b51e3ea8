// What the console shows while packets go by: a table with one line that is printed over, or a counter.
#pragma once

#include "packet/packet.h"

#include <cstdint>

struct CHN_T;
struct EVT_T;
struct UNIT_T;

/// The head of the table, or the counter at 0.
void Progress_start();

void Progress_event(const PACKET& pkt, const EVT_T& evt);     ///< EH, ET
void Progress_data(const UNIT_T& unit, const CHN_T& chn);     ///< DT
void Progress_health(const PACKET& pkt, const UNIT_T& unit);  ///< SH
void Progress_parameters(const PACKET& pkt);                  ///< SC, DS, CD, OM, AD, DR, FD
void Progress_network(const PACKET& pkt, const UNIT_T& unit); ///< NH, NT
