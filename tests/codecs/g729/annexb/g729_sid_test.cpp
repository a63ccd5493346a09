// Silence descriptors of G.729 Annex B: what is quantised is what is decoded.

#include "codecs/g729/annexb/g729_annexb.hpp"

#include "tests/codecs/g729/g729_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsSIDLSFQuant_G729B_16s), {in<std::int16_t>(10), out<std::int16_t>(40),
                                                    out<std::int16_t>(10), out<std::int16_t>(3)}),
    Contract(ZSP_NAMED(zspsSIDLSFDecode_G729B_16s),
             {number(1), number(31), number(15), out<std::int16_t>(40), out<std::int16_t>(10)})
        .row({{0, number(-1)}}, zspStsCodecRangeErr)
        .row({{0, number(2)}}, zspStsCodecRangeErr)
        .row({{1, number(-1)}}, zspStsCodecRangeErr)
        .row({{1, number(32)}}, zspStsCodecRangeErr)
        .row({{2, number(-1)}}, zspStsCodecRangeErr)
        .row({{2, number(16)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsSIDGainQuant_G729B_16s),
             {in<std::int16_t>(2), in<std::int16_t>(2), number(2), out<std::int16_t>(1)})
        .row({{2, number(-1)}}, zspStsSizeErr)
        .row({{2, number(3)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspsSIDGainDecode_G729B_16s), {number(31), out<std::int16_t>(1)})
        .row({{0, number(-1)}}, zspStsCodecRangeErr)
        .row({{0, number(32)}}, zspStsCodecRangeErr),
});

TEST(G729BSid, DecodesWhatItHasQuantised)
{
    Samples samples(736);
    Words encoder(40), decoder;
    for (std::size_t i = 0; i < 40; ++i)
        encoder[i] = static_cast<std::int16_t>(2339 * (i % 10 + 1));
    decoder = encoder;
    for (int round = 0; round < 500; ++round) {
        Words lsf(10), quantised(10), decoded(10), fields(3);
        for (std::size_t j = 0; j < 10; ++j)
            lsf[j] = static_cast<std::int16_t>(2339 * (j + 1) +
                                               static_cast<std::size_t>(samples.uniform(0, 1800)));
        ASSERT_EQ(
            zspsSIDLSFQuant_G729B_16s(lsf.data(), encoder.data(), quantised.data(), fields.data()),
            0);
        ASSERT_EQ(zspsSIDLSFDecode_G729B_16s(fields[0], fields[1], fields[2], decoder.data(),
                                             decoded.data()),
                  0);
        ASSERT_EQ(decoded, quantised);
        ASSERT_EQ(decoder, encoder);
        for (std::size_t j = 0; j + 1 < 10; ++j)
            ASSERT_LT(decoded[j], decoded[j + 1]);
    }
}

/// Steps are 2 dB but for the lowest ones. A gain is eight times the root mean square of the 80
/// samples of a frame, of which an energy is twice the squares' sum; where a decoder has to do with
/// that of its last excitation, it takes 4 dB more.
TEST(G729BSid, GainsAreStepsOfTwoAndFourDecibels)
{
    double last = 0;
    for (std::int32_t index = 0; index < 32; ++index) {
        std::int16_t gain = 0;
        ASSERT_EQ(zspsSIDGainDecode_G729B_16s(index, &gain), 0);
        if (index >= 8) {
            EXPECT_NEAR(20 * std::log10(gain / last), 2.0, 0.1) << index;
        }
        last = gain;
        // The energy of a frame of that level, as a word and a shift.
        const double energy = 2 * 80 * (gain / 8.0) * (gain / 8.0);
        const int shift = 14 - static_cast<int>(std::floor(std::log2(energy)));
        const Words energies(1, static_cast<std::int16_t>(std::lround(std::ldexp(energy, shift))));
        const Words shifts(1, static_cast<std::int16_t>(-shift));
        std::int16_t found = -1;
        ASSERT_EQ(zspsSIDGainQuant_G729B_16s(energies.data(), shifts.data(), 0, &found), 0);
        if (index >= 7) {
            EXPECT_EQ(found, std::min(index + 2, 31)) << gain;
        }
    }
}

} // namespace
