// Activity decision of G.729 Annex B: what it learns. What it decides in whole signals, the
// conformance checks hold against streams.

#include "tests/codecs/g729/g729_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;

const Argument kVad = state(sizeof(ZspG729BVadState), [](void* s) {
    ZspG729BVadState fresh;
    zspsVADInit_G729B_16s(&fresh);
    std::memcpy(s, &fresh, sizeof fresh);
});

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsVADGetSize_G729B_16s), {out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsVADInit_G729B_16s), {state(sizeof(ZspG729BVadState))}),
    Contract(ZSP_NAMED(zspsVAD_G729B_16s),
             {in<std::int16_t>(240), in<std::int32_t>(13), number(31), in<std::int16_t>(10),
              number(0), kVad, out<std::int16_t>(1)})
        .row({{2, number(-33)}}, zspStsRangeErr)
        .row({{2, number(32)}}, zspStsRangeErr),
});

static_assert(sizeof(ZspG729BVadState) == 88);

/// Sums of white noise whose energy is 2^-exponent of the largest.
std::int16_t decide(std::int16_t exponent, ZspG729BVadState& vad)
{
    static const Words window(240);
    static const std::vector<std::int32_t> corr = {1 << 30, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    static const Words lsf = {1489, 2979, 4468, 5958, 7447, 8937, 10426, 11916, 13405, 14895};
    std::int16_t active = -1;
    EXPECT_EQ(zspsVAD_G729B_16s(window.data(), corr.data(), exponent, lsf.data(), 0, &vad, &active),
              0);
    return active;
}

/// A start is active unless it is quiet; then a steady background becomes one, and what is much
/// louder is active.
TEST(G729BVad, LearnsTheBackground)
{
    ZspG729BVadState vad;
    ASSERT_EQ(zspsVADInit_G729B_16s(&vad), 0);
    for (int frame = 1; frame < 32; ++frame)
        EXPECT_EQ(decide(frame % 2 == 0 ? -4 : -29, vad), frame % 2 == 0 ? 1 : 0) << frame;
    EXPECT_EQ(vad.quiet, 16);
    for (int frame = 0; frame < 200; ++frame)
        decide(-16, vad);
    EXPECT_EQ(decide(-16, vad), 0);
    EXPECT_EQ(vad.meanFullBand, vad.lastEnergy);
    EXPECT_EQ(decide(-6, vad), 1);
    EXPECT_EQ(vad.decisions[0], 1);
    EXPECT_EQ(vad.decisions[1], 0);
}

TEST(G729BVad, TheNumberOfTheFrameGoesOnInEights)
{
    ZspG729BVadState vad;
    ASSERT_EQ(zspsVADInit_G729B_16s(&vad), 0);
    vad.frame = 32766;
    decide(-16, vad);
    EXPECT_EQ(vad.frame, 32767);
    decide(-16, vad);
    EXPECT_EQ(vad.frame, 256);
}

} // namespace
