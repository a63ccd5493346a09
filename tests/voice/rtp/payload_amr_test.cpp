// Payloads of AMR and AMR-WB against a definition that writes them as texts of zeros and ones.

#include "tests/support/samples.hpp"
#include "voice/rtp/payload_format.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace zsp::voice;
using zsp::test::Samples;

using Bytes = std::vector<std::uint8_t>;

Codec codecOf(bool wide)
{
    Codec c{};
    c.info.frameSamples = c.info.stepSamples = wide ? 320 : 160;
    c.info.sampleRate = c.info.rtpClock = wide ? 16000 : 8000;
    return c;
}

const PayloadFormat& formatOf(bool wide)
{
    return wide ? kAmrWbPayload : kAmrPayload;
}

/// Bits of each type, TS 26.101 and TS 26.201; -1: reserved.
int bitsOf(bool wide, int type)
{
    constexpr int kNarrow[] = {95, 103, 118, 134, 148, 159, 204, 244, 39};
    constexpr int kWide[] = {132, 177, 253, 285, 317, 365, 397, 461, 477, 40};
    if (type == 15) return 0;
    if (wide) return type < 10 ? kWide[type] : type == 14 ? 0 : -1;
    return type < 9 ? kNarrow[type] : -1;
}

struct Wanted {
    int type;
    bool good;
    std::string bits;
};

std::string number(int value, int digits)
{
    std::string text;
    for (int i = digits - 1; i >= 0; --i)
        text += (value >> i & 1) != 0 ? '1' : '0';
    return text;
}

void fillOctet(std::string& text)
{
    text.append((8 - text.size() % 8) % 8, '0');
}

Bytes octets(std::string text)
{
    fillOctet(text);
    Bytes bytes(text.size() / 8);
    for (std::size_t i = 0; i < text.size(); ++i)
        bytes[i / 8] = static_cast<std::uint8_t>(bytes[i / 8] << 1 | (text[i] - '0'));
    return bytes;
}

Bytes payloadOf(const std::vector<Wanted>& frames, int request, bool aligned)
{
    std::string text = number(request, 4);
    if (aligned) fillOctet(text);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        text += number(i + 1 < frames.size(), 1) + number(frames[i].type, 4);
        text += number(frames[i].good, 1);
        if (aligned) fillOctet(text);
    }
    for (const Wanted& f : frames) {
        text += f.bits;
        if (aligned) fillOctet(text);
    }
    return octets(text);
}

struct Split {
    ZspStatus status;
    Bytes bytes;
    std::vector<ZspvFrame> frames;
    int request = -1;
};

Split split(bool wide, bool aligned, const Bytes& payload)
{
    const Codec codec = codecOf(wide);
    ZspvParams params{};
    params.octetAlign = aligned;
    FrameSink counts(codec);
    Split s{formatOf(wide).split(codec, params, payload, counts), {}, {}};
    if (s.status != zspStsNoErr) return s;
    s.bytes.resize(static_cast<std::size_t>(counts.bytes()));
    s.frames.resize(static_cast<std::size_t>(counts.frames()));
    std::uint8_t none = 0;
    FrameSink sink(codec, s.bytes.empty() ? &none : s.bytes.data(), s.frames.data());
    formatOf(wide).split(codec, params, payload, sink);
    EXPECT_EQ(sink.bytes(), counts.bytes());
    EXPECT_EQ(sink.samples(), counts.frames() * codec.info.frameSamples);
    s.request = sink.modeRequest;
    return s;
}

std::pair<ZspStatus, Bytes> join(bool wide, const ZspvParams& params, const Split& s)
{
    const Codec codec = codecOf(wide);
    const std::uint8_t none = 0;
    const Packet packet{s.bytes.empty() ? &none : s.bytes.data(), s.frames, s.request};
    PayloadSink counts;
    const ZspStatus status = formatOf(wide).join(codec, params, packet, counts);
    if (status != zspStsNoErr) return {status, {}};
    Bytes payload(counts.length(), 0xFF);
    PayloadSink sink(payload.data());
    formatOf(wide).join(codec, params, packet, sink);
    return {status, payload};
}

Wanted randomFrame(Samples& random, bool wide)
{
    Wanted w{};
    do
        w.type = random.below(16);
    while (bitsOf(wide, w.type) < 0);
    w.good = w.type == 15 || (w.type != 14 && random.below(4) != 0);
    for (int i = bitsOf(wide, w.type); i > 0; --i)
        w.bits += static_cast<char>('0' + random.below(2));
    return w;
}

ZspvFrameKind kindOf(const Wanted& w, bool wide)
{
    if (w.type >= 14) return w.type == 15 ? zspvFrameNoData : zspvFrameLost;
    if (w.type != (wide ? 9 : 8)) return w.good ? zspvFrameSpeech : zspvFrameSpeechDamaged;
    if (!w.good) return zspvFrameSidDamaged;
    return w.bits[35] == '1' ? zspvFrameSidUpdate : zspvFrameSidFirst;
}

TEST(PayloadAmr, BothFormsAreTheDefinitions)
{
    Samples random(3);
    for (int round = 0; round < 4000; ++round) {
        const bool wide = random.below(2) != 0, aligned = random.below(2) != 0;
        SCOPED_TRACE(round);
        std::vector<Wanted> frames;
        for (int i = random.below(5); i >= 0; --i)
            frames.push_back(randomFrame(random, wide));
        const int request = random.below(16);
        const Bytes payload = payloadOf(frames, request, aligned);

        Split s = split(wide, aligned, payload);
        ASSERT_EQ(s.status, zspStsNoErr);
        ASSERT_EQ(s.frames.size(), frames.size());
        EXPECT_EQ(s.request, request < (wide ? 9 : 8) ? request : ZSPV_NO_REQUEST);
        std::size_t offset = 0;
        for (std::size_t i = 0; i < frames.size(); ++i) {
            const Wanted& w = frames[i];
            EXPECT_EQ(s.frames[i].kind, kindOf(w, wide));
            Bytes stored;
            if (!w.bits.empty()) stored = octets(number(w.type << 3 | w.good << 2, 8) + w.bits);
            ASSERT_EQ(s.frames[i].length, static_cast<int>(stored.size()));
            ASSERT_EQ(s.frames[i].offset, static_cast<int>(offset));
            EXPECT_TRUE(std::equal(stored.begin(), stored.end(), s.bytes.data() + offset));
            offset += stored.size();
        }

        s.request = request;
        ZspvParams params{};
        params.octetAlign = aligned;
        const auto [status, again] = join(wide, params, s);
        ASSERT_EQ(status, zspStsNoErr);
        EXPECT_EQ(again, payload);
    }
}

// One octet more or less than the table says, and reserved types.
TEST(PayloadAmr, WrongLengthsAndTypesAreRefused)
{
    Samples random(4);
    for (int round = 0; round < 2000; ++round) {
        const bool wide = random.below(2) != 0, aligned = random.below(2) != 0;
        const std::vector<Wanted> frames = {randomFrame(random, wide), randomFrame(random, wide)};
        const Bytes payload = payloadOf(frames, 15, aligned);
        Bytes longer = payload;
        longer.push_back(0);
        EXPECT_EQ(split(wide, aligned, longer).status, zspStsSizeErr);
        for (Bytes shorter(payload); shorter.size() > 1;) {
            shorter.pop_back();
            EXPECT_EQ(split(wide, aligned, shorter).status, zspStsSizeErr);
        }
    }
    for (int type = 0; type < 16; ++type)
        for (const bool wide : {false, true})
            if (bitsOf(wide, type) < 0) {
                const Bytes payload = payloadOf({{type, true, ""}, {15, true, ""}}, 15, true);
                EXPECT_EQ(split(wide, true, payload).status, zspStsCodecRangeErr) << type;
            }
}

// Whatever is accepted means the same after the way back; padding and reserved bits may differ.
TEST(PayloadAmr, AnyBytesAreRefusedOrKeepTheirMeaning)
{
    Samples random(5);
    int accepted = 0;
    for (int round = 0; round < 200'000; ++round) {
        const bool wide = random.below(2) != 0, aligned = random.below(2) != 0;
        Bytes payload(static_cast<std::size_t>(1 + random.below(random.below(4) ? 70 : 7)));
        for (auto& b : payload)
            b = static_cast<std::uint8_t>(random.below(256));
        if (payload.size() > 1 && random.below(2)) // one frame
            payload[aligned ? 1 : 0] &= aligned ? 0x7F : 0xF7;
        const Split s = split(wide, aligned, payload);
        if (s.status != zspStsNoErr) continue;
        ++accepted;
        ZspvParams params{};
        params.octetAlign = aligned;
        const auto [status, again] = join(wide, params, s);
        ASSERT_EQ(status, zspStsNoErr);
        ASSERT_EQ(again.size(), payload.size());
        const Split t = split(wide, aligned, again);
        ASSERT_EQ(t.bytes, s.bytes);
        ASSERT_EQ(t.request, s.request);
    }
    EXPECT_GT(accepted, 1000);
}

// For one frame: that of the file, or one octet more for the modes whose bits leave no room for the
// ten bits of request and table.
TEST(PayloadAmr, EfficientLengthOfOneFrame)
{
    for (int type = 0; type <= 8; ++type) {
        const bool longer = type == 0 || type == 1 || type == 5 || type == 8;
        const int bits = bitsOf(false, type);
        const Bytes payload =
            payloadOf({{type, true, std::string(static_cast<std::size_t>(bits), '1')}}, 15, false);
        const Split s = split(false, false, payload);
        ASSERT_EQ(s.status, zspStsNoErr);
        EXPECT_EQ(static_cast<int>(payload.size()), s.frames[0].length + longer) << type;
    }
}

TEST(PayloadAmr, WhatCannotBePacked)
{
    struct Row {
        ZspvFrameKind kind;
        std::uint8_t header;
        std::int32_t length, modeSet;
        ZspStatus want;
    };
    constexpr Row kRows[] = {
        {zspvFrameSpeech, 7 << 3 | 4, 32, 0, zspStsNoErr},
        {zspvFrameSpeech, 7 << 3 | 4, 32, 0x80, zspStsNoErr},
        {zspvFrameSpeech, 7 << 3 | 4, 32, 0x7F, zspStsCodecRangeErr},
        {zspvFrameSpeech, 7 << 3 | 4, 31, 0, zspStsSizeErr},
        {zspvFrameSpeech, 7 << 3 | 4, 0, 0, zspStsSizeErr},
        {zspvFrameSpeech, 8 << 3 | 4, 6, 0, zspStsCodecRangeErr},
        {zspvFrameSidUpdate, 8 << 3 | 4, 6, 0x01, zspStsNoErr},
        {zspvFrameSidUpdate, 7 << 3 | 4, 32, 0, zspStsCodecRangeErr},
        {zspvFrameSpeech, 9 << 3 | 4, 6, 0, zspStsCodecRangeErr},
        {zspvFrameSpeech, 15 << 3 | 4, 1, 0, zspStsCodecRangeErr},
        {zspvFrameNoData, 0, 0, 0, zspStsNoErr},
        {zspvFrameNoData, 0, 1, 0, zspStsSizeErr},
        {zspvFrameLost, 0, 0, 0, zspStsNoErr},
        {static_cast<ZspvFrameKind>(7), 7 << 3 | 4, 32, 0, zspStsCodecRangeErr},
    };
    for (const Row& row : kRows) {
        Bytes bytes(static_cast<std::size_t>(row.length) + 1, 0);
        bytes[0] = row.header;
        ZspvParams params{};
        params.modeSet = row.modeSet;
        const Split s{zspStsNoErr, bytes, {{row.kind, 0, row.length, 160, 0}}, 15};
        const auto [status, payload] = join(false, params, s);
        EXPECT_EQ(status, row.want) << "row " << &row - kRows;
        if (status != zspStsNoErr) continue;
        EXPECT_EQ(split(false, false, payload).status, zspStsNoErr);
    }
    ZspvParams agreed{};
    agreed.modeSet = 0x81;
    EXPECT_TRUE(mayAsk(kAmrPayload, agreed, 7));
    EXPECT_FALSE(mayAsk(kAmrPayload, agreed, 6));
    EXPECT_FALSE(mayAsk(kAmrPayload, {}, 8));
    EXPECT_TRUE(mayAsk(kAmrWbPayload, {}, 8));
    EXPECT_FALSE(mayAsk(kAmrWbPayload, {}, 9));
    for (std::int32_t ZspvParams::*field : {&ZspvParams::crc, &ZspvParams::robustSorting,
                                            &ZspvParams::interleaving, &ZspvParams::channels}) {
        ZspvParams params{};
        EXPECT_TRUE(kAmrPayload.supports(params));
        params.*field = 2;
        EXPECT_FALSE(kAmrPayload.supports(params));
    }
}

} // namespace
