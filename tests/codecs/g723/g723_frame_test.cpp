// Frames of G.723.1: the reference's traces and streams, and what no frame can say.

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;
using Bytes = std::vector<std::uint8_t>;
using F = ZspG723Frame;

const Argument kHigh = frameArgument(), kLow = frameArgument(zspG723Rate53);
const Argument kSid = frameArgument(zspG723Sid);

Argument octets(std::uint8_t first, std::uint8_t others = 0)
{
    Bytes bytes(24, others);
    bytes[0] = first;
    return in(bytes);
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsPackFrame_G723_8u), {kHigh, out<std::uint8_t>(24), out<std::int32_t>(1)})
        .row({{0, spoilt(kHigh, &F::type, 4)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::lspIndex, 1 << 24)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kSid, &F::lspIndex, -1)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kSid, &F::sidGain, 64)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::lag, 142)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::lagOffset, 2)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::lagOffset, 4, 1)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::acbGain, 170, 3)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::fcbGain, 24)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::train, 2)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::grid, -1)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::position, 593776)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::position, 142507, 1)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kLow, &F::position, 4096)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::signs, 32, 1)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsUnpackFrame_G723_8u), {octets(0), number(24), asOutput(kHigh)})
        .row({{1, number(0)}}, zspStsSizeErr)
        .row({{1, number(23)}}, zspStsSizeErr)
        .row({{0, octets(1)}}, zspStsSizeErr)
        .row({{0, octets(0, 0xff)}}, zspStsCodecRangeErr),
});

Bytes packed(const ZspG723Frame& f)
{
    Bytes bytes(24);
    std::int32_t length = 0;
    EXPECT_EQ(zspsPackFrame_G723_8u(&f, bytes.data(), &length), zspStsNoErr);
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

TEST(G723Frame, Traces)
{
    forEachFrame("encode", [](const TracedFrame& t, const std::string& what) {
        const Words frame = t.words("frame");
        const Bytes want(frame.begin(), frame.end());
        ZspG723Frame f{};
        ASSERT_EQ(zspsUnpackFrame_G723_8u(want.data(), static_cast<std::int32_t>(want.size()), &f),
                  zspStsNoErr);
        expectEqual(packed(f), want, what);
        if (!isActive(t)) return;
        const ZspG723Frame fields = fieldsOf(t);
        EXPECT_EQ(std::memcmp(&f, &fields, sizeof f), 0) << what;
    });
}

TEST(G723Frame, EverythingThatCanBePackedComesBack)
{
    Samples samples(723);
    const auto pick = [&](int limit) { return static_cast<std::int16_t>(samples.below(limit)); };
    for (int round = 0; round < 2000; ++round) {
        ZspG723Frame f{};
        f.type = round % 2;
        const bool high = f.type == zspG723Rate63;
        f.lspIndex = samples.below(1 << 24);
        for (std::size_t i = 0; i < 4; ++i) {
            if (i % 2 == 0) f.lag[i / 2] = static_cast<std::int16_t>(18 + pick(124));
            const bool small = high && f.lag[i / 2] < 58;
            f.lagOffset[i] = i % 2 == 0 ? std::int16_t{1} : pick(4);
            f.acbGain[i] = pick(small ? 85 : 170);
            f.fcbGain[i] = pick(24);
            f.train[i] = small ? pick(2) : std::int16_t{0};
            f.grid[i] = pick(2);
            f.signs[i] = pick(high ? (i % 2 == 0 ? 64 : 32) : 16);
            f.position[i] = samples.below(high ? (i % 2 == 0 ? 593776 : 142507) : 4096);
        }
        const Bytes bytes = packed(f);
        ZspG723Frame back{};
        ASSERT_EQ(
            zspsUnpackFrame_G723_8u(bytes.data(), static_cast<std::int32_t>(bytes.size()), &back),
            zspStsNoErr);
        ASSERT_EQ(std::memcmp(&f, &back, sizeof f), 0) << round;
    }
}

TEST(G723Frame, LagsBeyondTheLastAreDamage)
{
    for (const int lag : {123, 124, 127}) {
        Bytes bytes(20);
        bytes[0] = 1;
        bytes[3] = static_cast<std::uint8_t>((lag & 63) << 2);
        bytes[4] = static_cast<std::uint8_t>(lag >> 6);
        ZspG723Frame f{};
        EXPECT_EQ(zspsUnpackFrame_G723_8u(bytes.data(), 20, &f),
                  lag == 123 ? zspStsNoErr : zspStsCodecRangeErr)
            << lag;
    }
}

} // namespace
