// The codebook search of G.728.

#include "codecs/g728/g728_blocks.hpp"

#include "tests/codecs/g728/g728_arguments.hpp"
#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g728/coder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsImpulseResponseAndEnergy_G728_16s32s),
             {in<std::int16_t>(4), in<std::int16_t>(4), in<std::int16_t>(4), out<std::int16_t>(5),
              out<std::int32_t>(128)}),
    Contract(ZSP_NAMED(zspsCodebookSearch_G728_16s), {in(vectorWithQ(64)), in<std::int16_t>(5),
                                                      in<std::int32_t>(128), out<std::int32_t>(1)})
        .row({{0, in(vectorWithQ(65))}}, zspStsScaleRangeErr)
        .row({{0, in(vectorWithQ(-65))}}, zspStsScaleRangeErr),
});

// Responses up to full scale, whose energies leave 32 bits on the way; the last one does with the
// smallest filtered samples that were found to do so.
TEST(G728Codebook, EnergiesByAvx2EqualDefinition)
{
    using namespace zsp::g728;
    Samples samples(12);
    for (int round = 0; round < 5000; ++round) {
        Words h = round % 7 ? samples.words(5) : samples.extremeWords(5);
        if (round % 3)
            for (auto& x : h)
                x = static_cast<std::int16_t>(x / 3);
        if (round == 4999) h = {32767, -32768, 32767, 14448, -15110};
        std::array<std::int32_t, kShapes> want, got;
        const In<kVector> response(h.data(), kVector);
        shapeEnergiesScalar(response, want);
        shapeEnergiesAvx2(response, got);
        expectEqual(got, want, "round " + std::to_string(round));
    }
}

// Energies of responses, of any size, and all the same, so that shapes tie; targets of zeros too.
TEST(G728Codebook, SearchByAvx2EqualsDefinition)
{
    using namespace zsp::g728;
    Samples samples(17);
    for (int round = 0; round < 20000; ++round) {
        Words u = round % 7 ? samples.words(5) : samples.extremeWords(5);
        if (round % 11 == 0) u.assign(5, 0);
        const int manner = round % 5, shift = samples.below(31);
        const auto same = samples.integer<std::int32_t>();
        std::vector<std::int32_t> energies(kShapes);
        for (auto& e : energies)
            e = manner == 0   ? same
                : manner == 1 ? samples.integer<std::int32_t>() >> shift
                : manner == 2 ? samples.below(2)
                              : samples.below(120001);
        if (manner == 4) energies[static_cast<std::size_t>(samples.below(128))] = 120001;
        const In<kVector> target(u.data(), kVector);
        const EnergiesIn behind(energies.data(), kShapes);
        ASSERT_EQ(searchAvx2(target, behind), searchScalar(target, behind)) << round;
    }
}

} // namespace
