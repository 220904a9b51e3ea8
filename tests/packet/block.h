// A packet as the decoders get it, and a channel for it.
#pragma once

#include "driver/base/fatal.h"
#include "driver/base/settings.h"
#include "kit/ending.h"
#include "kit/packets.h"
#include "kit/scratch.h"
#include "model/record/records.h"
#include "output/log.h"
#include "packet/packet.h"
#include "packet/samples.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

/// 1024 bytes of their own on the heap, so that a read past their end is noticed.
class Block {
public:
    explicit Block(const std::string& bytes) : bytes_(copy_of(bytes)), pkt_(bytes_.get()) {}
    const PACKET& pkt() const { return pkt_; }
    std::string bytes() const { return {reinterpret_cast<const char*>(bytes_.get()), Packet_size}; }

private:
    static std::unique_ptr<uint8_t[]> copy_of(const std::string& bytes)
    {
        auto copy = std::make_unique<uint8_t[]>(Packet_size);
        memcpy(copy.get(), bytes.data(), Packet_size);
        return copy;
    }
    std::unique_ptr<uint8_t[]> bytes_;
    PACKET pkt_;
};

using Decoder = Decoded (*)(const PACKET&, uint32_t&, DATA_BUF&);
using PlainDecoder = void (*)(const PACKET&, DATA_BUF&);

/// A channel that packets are decoded for, with its unit and the unit's log, where mismatches are marked and
/// told as in a run.
class Channel {
public:
    explicit Channel(uint32_t last = 0)
    {
        chn.unit = &unit;
        chn.last = last;
        out_open(unit.log_fp, log_name().c_str(), OUT_MODE::truncate, log_lost);
    }
    ~Channel() { out_close(unit.log_fp); }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    /// The samples that a decoder makes of a packet.
    std::vector<int32_t> decode(Decoder decoder, const std::string& bytes)
    {
        return decode_block(bytes, [&](const PACKET& pkt, DATA_BUF& out) {
            const Decoded verdict = decoder(pkt, chn.last, out);
            if (verdict.sound) return;
            chn.discontinuous = true;
            if (Log_on) log_mismatch(unit.log_fp, pkt, verdict, out.count);
        });
    }
    static std::vector<int32_t> decode(PlainDecoder decoder, const std::string& bytes)
    {
        return decode_block(bytes, decoder);
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
    template <class Decode>
    static std::vector<int32_t> decode_block(const std::string& bytes, Decode decode)
    {
        const Block block(bytes);
        auto out = std::make_unique<DATA_BUF>(); // of its own, so that a write past its end is noticed
        out->count = 4711;
        decode(block.pkt(), *out);
        if (out->count > Samples_max) return {};
        return {out->sample, out->sample + out->count};
    }
    /// One file for all channels of a test, used one after the other.
    static const std::string& log_name()
    {
        static const kit::Scratch scratch;
        static const std::string name = scratch.path("log");
        return name;
    }
};
