// The comfort-noise quantiser of AMR-WB: vectors, and AVX2 against the definition.

#include "codecs/amrwb/amrwb_isf.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

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

TEST(AmrwbIsfNoise, QuantiserVectors)
{
    const auto file = readVector<std::int16_t>("amrwb/sid_quant.bin");
    ASSERT_GE(file.size(), 37u);
    for (std::size_t r = 0; r < file.size() / 37; ++r) {
        const Words given = part(file, 37 * r, 37);
        const std::string what = "record " + std::to_string(r);
        Words isf = part(given, 0, 16), quantised(16), indices(5);
        ASSERT_EQ(zspsISFQuantDTX_AMRWB_16s(isf.data(), quantised.data(), indices.data()),
                  zspStsNoErr);
        expectEqual(quantised, part(given, 16, 16), what);
        expectEqual(indices, part(given, 32, 5), what + ", indices");
        ASSERT_EQ(zspsISFQuantDTX_AMRWB_16s(isf.data(), isf.data(), indices.data()), zspStsNoErr);
        expectEqual(isf, quantised, what + ", in place");
    }
}

TEST(AmrwbIsfNoise, DecoderVectors)
{
    const auto file = readVector<std::int16_t>("amrwb/sid_decode.bin");
    ASSERT_GE(file.size(), 21u);
    for (std::size_t r = 0; r < file.size() / 21; ++r) {
        Words given = part(file, 21 * r, 21);
        Words isf(16);
        ASSERT_EQ(zspsISFQuantDecodeDTX_AMRWB_16s(given.data(), isf.data()), zspStsNoErr);
        expectEqual(isf, part(given, 5, 16), "record " + std::to_string(r));

        // bits above the codebooks' sizes do not count
        constexpr int kSizes[] = {64, 64, 64, 32, 32};
        for (std::size_t b = 0; b < 5; ++b)
            given[b] = static_cast<std::int16_t>(given[b] - kSizes[b] * static_cast<int>(r % 7));
        Words again(16);
        ASSERT_EQ(zspsISFQuantDecodeDTX_AMRWB_16s(given.data(), again.data()), zspStsNoErr);
        expectEqual(again, isf, "higher bits, record " + std::to_string(r));
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
