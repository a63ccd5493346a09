// Frames that follow each other, of two codecs made up for the test: one tells its frames apart by
// what is left of the payload, as G.729 does, the other by the frame's low bits, as G.723.1 does.

#include "tests/support/samples.hpp"
#include "voice/rtp/payload_format.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace zsp::voice;

Frame ofSize(ZspvFrameKind kind, std::size_t bytes, std::size_t there, std::int32_t samples)
{
    return {bytes <= there ? zspStsNoErr : zspStsSizeErr, kind, bytes, samples};
}

Codec framesOf(std::int32_t samples, std::int32_t bytes, std::int32_t flags)
{
    Codec c{};
    c.info.sampleRate = c.info.rtpClock = 8000;
    c.info.frameSamples = c.info.stepSamples = samples;
    c.info.maxFrameBytes = bytes;
    c.info.flags = flags;
    return c;
}

Codec byLength()
{
    Codec c = framesOf(80, 10, zspvCodecSid);
    c.look = [](const Codec&, In8 rest) noexcept {
        return rest.size() == 2 ? ofSize(zspvFrameSidFirst, 2, 2, 80)
                                : ofSize(zspvFrameSpeech, 10, rest.size(), 80);
    };
    return c;
}

Codec byBits()
{
    Codec c = framesOf(240, 24, zspvCodecSid | zspvCodecFrameHasKind);
    c.look = [](const Codec&, In8 rest) noexcept {
        constexpr std::size_t kBytes[] = {24, 20, 4, 0};
        const unsigned type = rest[0] & 3U;
        if (type == 3) return Frame{zspStsCodecRangeErr};
        return ofSize(type == 2 ? zspvFrameSidFirst : zspvFrameSpeech, kBytes[type], rest.size(),
                      240);
    };
    return c;
}

/// The frames' kinds as letters, or the status.
std::string split(const Codec& codec, const std::vector<std::uint8_t>& payload)
{
    FrameSink counts(codec);
    const ZspStatus status = kPlainPayload.split(codec, {}, payload, counts);
    if (status != zspStsNoErr) return std::to_string(status);
    std::vector<std::uint8_t> bytes(payload.size());
    std::vector<ZspvFrame> frames(static_cast<std::size_t>(counts.frames()));
    FrameSink sink(codec, bytes.data(), frames.data());
    kPlainPayload.split(codec, {}, payload, sink);
    EXPECT_EQ(bytes, payload);
    std::string kinds;
    for (const ZspvFrame& f : frames)
        kinds += isSid(f.kind) ? 's' : 'S';

    EXPECT_EQ(counts.hasSid(), kinds.find('s') != kinds.npos);
    std::vector<std::uint8_t> again(payload.size());
    PayloadSink packed(again.data());
    EXPECT_EQ(kPlainPayload.join(codec, {}, {bytes.data(), frames, ZSPV_NO_REQUEST}, packed),
              zspStsNoErr);
    EXPECT_EQ(again, payload);
    return kinds;
}

TEST(PayloadPlain, KindByWhatIsLeft)
{
    const Codec codec = byLength();
    EXPECT_EQ(split(codec, std::vector<std::uint8_t>(2, 1)), "s");
    EXPECT_EQ(split(codec, std::vector<std::uint8_t>(12, 1)), "Ss");
    EXPECT_EQ(split(codec, std::vector<std::uint8_t>(20, 1)), "SS");
    EXPECT_EQ(split(codec, std::vector<std::uint8_t>(22, 1)), "SSs");
    EXPECT_EQ(split(codec, std::vector<std::uint8_t>(14, 1)), "-6");
    EXPECT_EQ(split(codec, std::vector<std::uint8_t>(1, 1)), "-6");
}

TEST(PayloadPlain, KindByTheBits)
{
    const Codec codec = byBits();
    std::vector<std::uint8_t> payload(4 + 24 + 20, 0);
    payload[0] = 2;
    payload[28] = 1;
    EXPECT_EQ(split(codec, payload), "sSS");
    payload.pop_back();
    EXPECT_EQ(split(codec, payload), "-6");
    payload[28] = 3;
    EXPECT_EQ(split(codec, payload), std::to_string(zspStsCodecRangeErr));
}

TEST(PayloadPlain, WhatCannotStandTogether)
{
    struct Row {
        Codec codec;
        std::vector<ZspvFrame> frames;
        ZspStatus want;
    };
    const auto speech = [](std::int32_t n) { return ZspvFrame{zspvFrameSpeech, 0, n, 0, 0}; };
    const auto sid = [](std::int32_t offset, std::int32_t n) {
        return ZspvFrame{zspvFrameSidUpdate, offset, n, 0, 0};
    };
    const Row rows[] = {
        {byLength(), {speech(10), sid(0, 2)}, zspStsNoErr},
        {byLength(), {sid(0, 2), speech(10)}, zspStsCodecRangeErr},
        {byLength(), {sid(0, 2), sid(0, 2)}, zspStsCodecRangeErr},
        {byLength(), {speech(2)}, zspStsCodecRangeErr},
        {byLength(), {sid(0, 10)}, zspStsCodecRangeErr},
        {byLength(), {speech(20)}, zspStsSizeErr},
        {byLength(), {speech(9)}, zspStsSizeErr},
        {byLength(), {{zspvFrameSidDamaged, 0, 2, 0, 0}}, zspStsCodecRangeErr},
        {byBits(), {sid(1, 4), speech(24), sid(1, 4)}, zspStsNoErr},
        {byBits(), {speech(20)}, zspStsSizeErr},
        {byBits(), {sid(0, 24)}, zspStsCodecRangeErr},
    };
    std::vector<std::uint8_t> bytes(40, 0);
    bytes[1] = 2; // a silence descriptor, by its bits
    for (const Row& row : rows) {
        PayloadSink counts;
        EXPECT_EQ(kPlainPayload.join(row.codec, {}, {bytes.data(), row.frames, 15}, counts),
                  row.want)
            << "row " << &row - rows;
    }
}

} // namespace
