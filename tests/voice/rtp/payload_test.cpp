// Payloads of the codecs of the table, through the public functions: what stands in the packet's
// header, capacities, arguments, and bytes of any number in blocks of exactly their size.

#include "tests/support/samples.hpp"
#include "tests/voice/api/coders.hpp"
#include "voice/codec/codec.hpp"
#include "zspvoice.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using zsp::test::Samples;

using Bytes = std::vector<std::uint8_t>;

template <typename T>
T record()
{
    T r{};
    r.structSize = sizeof r;
    return r;
}

Bytes randomBytes(Samples& random, std::int64_t count)
{
    Bytes bytes(static_cast<std::size_t>(count));
    for (auto& b : bytes)
        b = static_cast<std::uint8_t>(random.below(256));
    return bytes;
}

/// Bytes of any kind; every other time, for codecs with frames, some of these.
Bytes randomPayload(Samples& random, const ZspvCodec* codec)
{
    if (codec->stepSamples < codec->frameSamples || random.below(2) == 0)
        return randomBytes(random, random.below(random.below(8) ? 40 : 700));
    Bytes payload;
    const auto encoder = zsp::test::makeEncoder(codec);
    for (int i = random.below(4); i >= 0; --i) {
        const auto frame = zsp::test::encode(
            encoder.get(), random.words(static_cast<std::size_t>(codec->frameSamples)));
        payload.insert(payload.end(), frame.begin(), frame.end());
    }
    return payload;
}

struct Unpacked {
    ZspStatus status;
    Bytes bytes;
    std::vector<ZspvFrame> frames;
    std::int32_t modeRequest = -1;
};

/// Into blocks of exactly the size that zspvInspect() tells.
Unpacked unpack(const ZspvCodec* codec, const Bytes& payload)
{
    auto info = record<ZspvPayloadInfo>();
    const auto length = static_cast<std::int32_t>(payload.size());
    const std::uint8_t none = 0;
    const std::uint8_t* octets = payload.empty() ? &none : payload.data();
    Unpacked u{zspvInspect(codec, nullptr, octets, length, &info), {}, {}};
    if (u.status != zspStsNoErr) return u;
    Bytes bytes(static_cast<std::size_t>(info.bytes) + 1, 0xA5);
    std::vector<ZspvFrame> frames(static_cast<std::size_t>(info.frames) + 1);
    std::int32_t count = -1;
    u.status = zspvUnpack(codec, nullptr, octets, length, bytes.data(), info.bytes, frames.data(),
                          info.frames, &count, &u.modeRequest);
    EXPECT_EQ(u.status, zspStsNoErr);
    EXPECT_EQ(count, info.frames);
    EXPECT_EQ(bytes.back(), 0xA5);
    std::int32_t samples = 0;
    frames.pop_back();
    for (const ZspvFrame& f : frames) {
        EXPECT_EQ(f.ticks, zspvCodecTicks(codec, samples));
        samples += f.samples;
    }
    EXPECT_EQ(samples, info.samples);
    bytes.pop_back();
    u.bytes = bytes;
    u.frames = frames;
    return u;
}

/// Into a block of exactly the length that a first call with no capacity tells.
ZspStatus pack(const ZspvCodec* codec, const Bytes& bytes, const std::vector<ZspvFrame>& frames,
               Bytes& payload, ZspvPacketInfo& info, ZspvFrameKind before = zspvFrameSpeech)
{
    const auto count = static_cast<std::int32_t>(frames.size());
    std::uint8_t guard = 0x5A;
    info = record<ZspvPacketInfo>();
    ZspStatus status = zspvPack(codec, nullptr, bytes.data(), frames.data(), count, before,
                                ZSPV_NO_REQUEST, &guard, 0, &info);
    EXPECT_EQ(guard, 0x5A);
    if (status != zspStsSizeErr || info.length == 0) return status;
    payload.assign(static_cast<std::size_t>(info.length), 0);
    EXPECT_EQ(zspvPack(codec, nullptr, bytes.data(), frames.data(), count, before, ZSPV_NO_REQUEST,
                       payload.data(), info.length - 1, &info),
              zspStsSizeErr);
    return zspvPack(codec, nullptr, bytes.data(), frames.data(), count, before, ZSPV_NO_REQUEST,
                    payload.data(), info.length, &info);
}

struct CutRow {
    const char* codec;
    std::int32_t octets;
    std::vector<std::int32_t> lengths, samples, ticks;
};

TEST(Payload, StepsAreCutIntoNominalFrames)
{
    const CutRow rows[] = {
        {"PCMU", 160, {80, 80}, {80, 80}, {0, 80}},
        {"PCMA", 165, {80, 80, 5}, {80, 80, 5}, {0, 80, 160}},
        {"PCMU", 0, {}, {}, {}},
        {"G722", 161, {80, 80, 1}, {160, 160, 2}, {0, 80, 160}},
        {"G726-16", 41, {20, 20, 1}, {80, 80, 4}, {0, 80, 160}},
        {"G726-24", 33, {30, 3}, {80, 8}, {0, 80}},
        {"AAL2-G726-32", 81, {40, 40, 1}, {80, 80, 2}, {0, 80, 160}},
        {"G726-40", 50, {50}, {80}, {0}},
    };
    for (const CutRow& row : rows) {
        SCOPED_TRACE(row.codec);
        Samples random(1);
        const Bytes payload = randomBytes(random, row.octets);
        const Unpacked u = unpack(zspvCodecByName(row.codec, 0), payload);
        ASSERT_EQ(u.status, zspStsNoErr);
        ASSERT_EQ(u.frames.size(), row.lengths.size());
        EXPECT_EQ(u.bytes, payload);
        EXPECT_EQ(u.modeRequest, ZSPV_NO_REQUEST);
        std::int32_t offset = 0;
        for (std::size_t i = 0; i < u.frames.size(); ++i) {
            EXPECT_EQ(u.frames[i].kind, zspvFrameSpeech);
            EXPECT_EQ(u.frames[i].offset, offset);
            EXPECT_EQ(u.frames[i].length, row.lengths[i]);
            EXPECT_EQ(u.frames[i].samples, row.samples[i]);
            EXPECT_EQ(u.frames[i].ticks, row.ticks[i]);
            offset += u.frames[i].length;
        }
    }
    EXPECT_EQ(unpack(zspvCodecByName("G726-24", 0), Bytes(31)).status, zspStsSizeErr);
    EXPECT_EQ(unpack(zspvCodecByName("G726-40", 0), Bytes(4)).status, zspStsSizeErr);
}

// Whatever comes is either refused or survives the way to frames and back.
TEST(Payload, AnyBytesComeBackOrAreRefused)
{
    Samples random(7);
    std::vector<int> good(static_cast<std::size_t>(zspvCodecCount()));
    for (int round = 0; round < 20'000; ++round) {
        const int index = random.below(zspvCodecCount());
        const ZspvCodec* codec = zspvCodecByIndex(index);
        SCOPED_TRACE(std::string(codec->rtpName) + ", round " + std::to_string(round));
        const Bytes payload = randomPayload(random, codec);
        const Unpacked u = unpack(codec, payload);
        if (u.status != zspStsNoErr || u.frames.empty()) continue;
        Bytes again;
        auto info = record<ZspvPacketInfo>();
        ASSERT_EQ(pack(codec, u.bytes, u.frames, again, info), zspStsNoErr);
        ASSERT_EQ(again, payload);
        ++good[static_cast<std::size_t>(index)];
    }
    for (std::int32_t i = 0; i < zspvCodecCount(); ++i)
        EXPECT_GT(good[static_cast<std::size_t>(i)], 100) << zspvCodecByIndex(i)->rtpName;
}

// A block that is longer than a nominal frame counts as one frame where frames have no length.
TEST(Payload, BlocksOfAnyLengthArePacked)
{
    const ZspvCodec* codec = zspvCodecByName("G722", 8000);
    const Bytes bytes(400, 3);
    const std::vector<ZspvFrame> frames = {{zspvFrameSpeech, 100, 240, 0, 0},
                                           {zspvFrameSpeech, 0, 7, 0, 0}};
    Bytes payload;
    auto info = record<ZspvPacketInfo>();
    ASSERT_EQ(pack(codec, bytes, frames, payload, info), zspStsNoErr);
    EXPECT_EQ(info.length, 247);
    EXPECT_EQ(info.samples, 494);
    EXPECT_EQ(info.ticks, 247);
}

// Without silence frames of its own, a sender sends nothing in a pause; time goes on.
TEST(Payload, MarkerAndTimeAroundPauses)
{
    struct Row {
        std::vector<ZspvFrameKind> kinds;
        ZspvFrameKind before;
        ZspStatus status;
        std::int32_t length, ticks, marker;
    };
    const auto speech = zspvFrameSpeech, none = zspvFrameNoData;
    const Row rows[] = {
        {{speech}, none, zspStsNoErr, 80, 80, 1},
        {{speech}, speech, zspStsNoErr, 80, 80, 0},
        {{speech}, zspvFrameSidFirst, zspStsNoErr, 80, 80, 1},
        {{speech}, zspvFrameSidUpdate, zspStsNoErr, 80, 80, 1},
        {{speech}, zspvFrameLost, zspStsNoErr, 80, 80, 0},
        {{none, none}, speech, zspStsNoErr, 0, 160, 0},
        {{none}, none, zspStsNoErr, 0, 80, 0},
        {{speech, none, none}, none, zspStsNoErr, 80, 240, 1},
        {{none, speech}, none, zspStsCodecRangeErr, 0, 0, 0},
        {{zspvFrameSidFirst}, speech, zspStsCodecRangeErr, 0, 0, 0},
        {{zspvFrameSpeechDamaged}, speech, zspStsCodecRangeErr, 0, 0, 0},
        {{zspvFrameLost}, speech, zspStsCodecRangeErr, 0, 0, 0},
        {{static_cast<ZspvFrameKind>(7)}, speech, zspStsCodecRangeErr, 0, 0, 0},
    };
    const ZspvCodec* codec = zspvCodecByName("PCMA", 8000);
    const Bytes bytes(80, 0xD5);
    for (const Row& row : rows) {
        std::vector<ZspvFrame> frames;
        for (const ZspvFrameKind kind : row.kinds)
            frames.push_back({kind, 0, kind == none || kind == zspvFrameLost ? 0 : 80, 0, 0});
        Bytes payload;
        auto info = record<ZspvPacketInfo>();
        EXPECT_EQ(pack(codec, bytes, frames, payload, info, row.before), row.status);
        if (row.status != zspStsNoErr) continue;
        EXPECT_EQ(info.length, row.length);
        EXPECT_EQ(info.ticks, row.ticks);
        EXPECT_EQ(info.marker, row.marker);
    }
}

TEST(Payload, CapacitiesAreCheckedBeforeAnythingIsWritten)
{
    const ZspvCodec* codec = zspvCodecByName("PCMU", 8000);
    const Bytes payload(200, 1);
    for (const auto& [byteCapacity, frameCapacity] : {std::pair{199, 3}, {200, 2}, {-1, 3}}) {
        Bytes bytes(200, 0xA5);
        std::vector<ZspvFrame> frames(3, ZspvFrame{zspvFrameLost, 9, 9, 9, 9});
        std::int32_t count = -1, request = -1;
        EXPECT_EQ(zspvUnpack(codec, nullptr, payload.data(), 200, bytes.data(), byteCapacity,
                             frames.data(), frameCapacity, &count, &request),
                  zspStsSizeErr);
        EXPECT_EQ(count, 3);
        EXPECT_EQ(request, -1);
        EXPECT_EQ(bytes, Bytes(200, 0xA5));
        EXPECT_EQ(frames[0].offset, 9);
    }
}

TEST(Payload, ChecksItsArguments)
{
    const ZspvCodec* codec = zspvCodecByName("G726-24", 8000);
    const ZspvCodec foreign = *codec;
    Bytes bytes(70'000), payload(70'000);
    auto info = record<ZspvPayloadInfo>(), odd = info;
    odd.structSize = 3;
    auto params = record<ZspvParams>();
    params.structSize = 0;
    const auto inspect = [&](const ZspvCodec* c, const ZspvParams* p, std::int32_t length) {
        return zspvInspect(c, p, payload.data(), length, &info);
    };
    EXPECT_EQ(inspect(nullptr, &params, -1), zspStsNullPtrErr);
    EXPECT_EQ(zspvInspect(codec, &params, nullptr, -1, &info), zspStsNullPtrErr);
    EXPECT_EQ(zspvInspect(codec, &params, payload.data(), -1, nullptr), zspStsNullPtrErr);
    EXPECT_EQ(zspvInspect(codec, nullptr, payload.data(), 3, &odd), zspStsSizeErr);
    EXPECT_EQ(inspect(&foreign, &params, 3), zspStsSizeErr);
    EXPECT_EQ(inspect(&foreign, nullptr, -1), zspStsSizeErr);
    EXPECT_EQ(inspect(codec, nullptr, 65'538), zspStsSizeErr);
    EXPECT_EQ(inspect(&foreign, nullptr, 3), zspStsRangeErr);
    EXPECT_EQ(inspect(codec, nullptr, 65'535), zspStsNoErr);
    EXPECT_EQ(info.samples, 65'535 / 3 * 8);

    auto packet = record<ZspvPacketInfo>();
    const auto pack = [&](std::vector<ZspvFrame> frames, std::int32_t request = ZSPV_NO_REQUEST) {
        return zspvPack(codec, nullptr, bytes.data(), frames.data(),
                        static_cast<std::int32_t>(frames.size()), zspvFrameSpeech, request,
                        payload.data(), 70'000, &packet);
    };
    const ZspvFrame frame{zspvFrameSpeech, 0, 30, 80, 0};
    EXPECT_EQ(pack({frame}), zspStsNoErr);
    EXPECT_EQ(zspvPack(codec, nullptr, bytes.data(), &frame, 0, zspvFrameSpeech, 99, payload.data(),
                       70'000, &packet),
              zspStsSizeErr);
    EXPECT_EQ(pack({frame}, 0), zspStsRangeErr);
    EXPECT_EQ(pack({frame}, -1), zspStsRangeErr);
    EXPECT_EQ(pack({frame}, 16), zspStsRangeErr);
    EXPECT_EQ(pack({{zspvFrameSpeech, 0, 31, 0, 0}}), zspStsSizeErr);
    EXPECT_EQ(pack({{zspvFrameSpeech, 0, 0, 80, 0}}), zspStsSizeErr);
    EXPECT_EQ(pack({{zspvFrameSpeech, -1, 30, 80, 0}}), zspStsSizeErr);
    EXPECT_EQ(pack({{zspvFrameSpeech, 0, -30, 80, 0}}), zspStsSizeErr);
    EXPECT_EQ(pack({frame, {zspvFrameNoData, 0, 3, 80, 0}}), zspStsSizeErr);
    EXPECT_EQ(pack({frame, {zspvFrameNoData, 0, 0, -1, 0}}), zspStsSizeErr);
    EXPECT_EQ(pack({{zspvFrameSpeech, 0, 65'535, 0, 0}}), zspStsNoErr);
    EXPECT_EQ(pack({{zspvFrameSpeech, 0, 65'538, 0, 0}}), zspStsSizeErr);
    EXPECT_EQ(pack({frame, {zspvFrameSpeech, 0, 65'535, 0, 0}}), zspStsSizeErr);
    EXPECT_EQ(pack({frame, {zspvFrameNoData, 0, 0, 0x7FFFFFFF, 0}}), zspStsSizeErr);
}

} // namespace
