// Discontinuous transmission of G.729 Annex B. Which frames of whole signals are silence
// descriptors, and every bit of these, the conformance checks hold against streams.

#include "tests/codecs/g729/g729_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;

const Argument kDtx = state(sizeof(ZspG729BDtxState), [](void* s) {
    ZspG729BDtxState fresh;
    zspsDTXInit_G729B_16s(&fresh);
    std::memcpy(s, &fresh, sizeof fresh);
});

Argument words(std::size_t count)
{
    return out<std::int16_t>(count);
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsDTXInit_G729B_16s), {state(sizeof(ZspG729BDtxState))}),
    Contract(ZSP_NAMED(zspsDTXUpdate_G729B_32s16s),
             {in<std::int32_t>(11), number(-32), number(1), kDtx})
        .row({{1, number(-33)}}, zspStsRangeErr)
        .row({{1, number(32)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspsDTXEncode_G729B_16s),
             {number(0), number(1), in<std::int16_t>(10), words(11), words(10), words(40),
              words(10), words(4), out<std::int32_t>(1), kDtx}),
    Contract(ZSP_NAMED(zspsComfortNoiseGain_G729B_16s), {number(0), number(1), words(1)})
        .row({{0, number(-1)}}, zspStsRangeErr),
});

static_assert(sizeof(ZspG729BDtxState) == 166);

/// One descriptor when the noise begins, none while it stays, and one when it is 12 dB louder.
TEST(G729BDtx, SendsWhenTheNoiseChanges)
{
    ZspG729BDtxState dtx;
    ASSERT_EQ(zspsDTXInit_G729B_16s(&dtx), 0);
    const std::vector<std::int32_t> corr = {30000 << 16, 12000 << 16, 3000 << 16, 0, 0, 0,
                                            0,           0,           0,          0, 0};
    Words lpc(11), reflection(10), lsfMemory, sidLsp(10), fields(4);
    lpc[0] = 4096;
    for (int i = 0; i < 40; ++i)
        lsfMemory.push_back(static_cast<std::int16_t>(2339 * (i % 10 + 1)));
    const Words previous = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
    std::vector<int> sent;
    for (int frame = 0; frame < 40; ++frame) {
        ASSERT_EQ(zspsDTXUpdate_G729B_32s16s(corr.data(), frame < 20 ? -12 : -8, 0, &dtx), 0);
        std::int32_t sends = -1;
        ASSERT_EQ(zspsDTXEncode_G729B_16s(0, frame == 0, previous.data(), lpc.data(),
                                          reflection.data(), lsfMemory.data(), sidLsp.data(),
                                          fields.data(), &sends, &dtx),
                  0);
        if (sends != 0) sent.push_back(frame);
    }
    EXPECT_EQ(sent, (std::vector<int>{0, 20, 23}));
}

TEST(G729BDtx, TheGainComesNearADescriptorsInEighths)
{
    std::int16_t gain = 500;
    ASSERT_EQ(zspsComfortNoiseGain_G729B_16s(800, 1, &gain), 0);
    EXPECT_EQ(gain, 800);
    ASSERT_EQ(zspsComfortNoiseGain_G729B_16s(1600, 0, &gain), 0);
    EXPECT_EQ(gain, 900);
}

} // namespace
