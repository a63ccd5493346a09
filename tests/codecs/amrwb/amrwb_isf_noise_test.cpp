// The comfort-noise quantiser of AMR-WB: vectors, and AVX2 against the definition.

#include "codecs/amrwb/amrwb_isf.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/amrwb/isf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsISFQuantDTX_AMRWB_16s),
             {in<std::int16_t>(16), out<std::int16_t>(16), out<std::int16_t>(5)}),
    Contract(ZSP_NAMED(zspsISFQuantDecodeDTX_AMRWB_16s),
             {in<std::int16_t>(5), out<std::int16_t>(16)}),
});

TEST(AmrwbIsfNoise, Vectors)
{
    expectConforms("AMR-WB", 2, "comfort-noise");
}

// Bits above the codebooks' sizes do not count.
TEST(AmrwbIsfNoise, DecoderTakesTheLowBitsOfIndices)
{
    constexpr int kSizes[] = {64, 64, 64, 32, 32};
    Samples samples(3);
    for (int run = 1; run < 500; ++run) {
        Words indices(5), isf(16), again(16);
        for (std::size_t b = 0; b < 5; ++b)
            indices[b] = static_cast<std::int16_t>(samples.below(kSizes[b]));
        ASSERT_EQ(zspsISFQuantDecodeDTX_AMRWB_16s(indices.data(), isf.data()), zspStsNoErr);
        for (std::size_t b = 0; b < 5; ++b)
            indices[b] = static_cast<std::int16_t>(indices[b] - kSizes[b] * (run % 7));
        ASSERT_EQ(zspsISFQuantDecodeDTX_AMRWB_16s(indices.data(), again.data()), zspStsNoErr);
        expectEqual(again, isf, "higher bits, run " + std::to_string(run));
    }
}

// Near the codevectors, where errors are small and equal ones occur; and anywhere.
TEST(AmrwbIsfNoise, QuantiserEqualsDefinition)
{
    Samples samples(2);
    for (int run = 0; run < 20000; ++run) {
        std::array<std::int16_t, 16> isf{};
        const auto words = samples.words(16);
        std::copy(words.begin(), words.end(), isf.begin());
        if (run % 2) {
            const zsp::amrwb::NoiseIndices any = {words[0], words[1], words[2], words[3], words[4]};
            zsp::amrwb::decodeNoise(any, isf);
            for (auto& element : isf)
                element = static_cast<std::int16_t>(element + samples.uniform(-40, 40));
        }
        expectEqual(zsp::amrwb::quantiseNoiseAvx2(isf), zsp::amrwb::quantiseNoiseScalar(isf),
                    "run " + std::to_string(run));
    }
}

} // namespace
