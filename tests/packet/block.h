// A packet as the decoders get it, and a channel for it.
#pragma once

#include "driver/settings.h"
#include "kit/ending.h"
#include "kit/packets.h"
#include "kit/scratch.h"
#include "model/records.h"
#include "packet/packet.h"
#include "packet/samples.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

/// 1024 bytes of their own on the heap, so that a read past their end is noticed.
class Block {
public:
    explicit Block(const std::string& bytes) { memcpy(bytes_.get(), bytes.data(), Packet_size); }
    const PACKET& pkt() const { return pkt_; }
    std::string bytes() const { return {reinterpret_cast<const char*>(bytes_.get()), Packet_size}; }

private:
    std::unique_ptr<uint8_t[]> bytes_ = std::make_unique<uint8_t[]>(Packet_size);
    PACKET pkt_{bytes_.get()};
};

using Decoder = void (*)(CHN_T*, const PACKET&, DATA_BUF&);

/// A channel that packets are decoded for, with its unit and the unit's log.
class Channel {
public:
    explicit Channel(uint32_t last = 0)
    {
        chn.unit = &unit;
        chn.last = last;
        out_open(unit.log_fp, log_name().c_str(), OUT_MODE::truncate, ON_LOSS::tell_once);
    }
    ~Channel() { out_close(unit.log_fp); }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    /// The samples that a decoder makes of a packet.
    std::vector<int32_t> decode(Decoder decoder, const std::string& bytes)
    {
        const Block block(bytes);
        auto out = std::make_unique<DATA_BUF>(); // of its own, for the same reason
        out->count = 4711;
        decoder(&chn, block.pkt(), *out);
        if (out->count > Samples_max) return {};
        return {out->sample, out->sample + out->count};
    }
    /// What the log has got so far; nothing can be logged behind that.
    std::string log()
    {
        out_close(unit.log_fp);
        return kit::read_file(log_name());
    }

    UNIT_T unit;
    CHN_T chn;

private:
    /// One file for all channels of a test, used one after the other.
    static const std::string& log_name()
    {
        static const kit::Scratch scratch;
        static const std::string name = scratch.path("log");
        return name;
    }
};
