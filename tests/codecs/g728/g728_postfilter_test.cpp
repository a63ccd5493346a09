// The post-filter of G.728.

#include "codecs/g728/g728_blocks.hpp"

#include "tests/codecs/g728/g728_arguments.hpp"
#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g728/postfilter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsInverseFilter_G728_16s), {in<std::int16_t>(10), in<std::int16_t>(5),
                                                     out<std::int16_t>(10), out<std::int16_t>(5)}),
    Contract(ZSP_NAMED(zspsShortTermPostFilterCoefs_G728_16s),
             {in<std::int16_t>(10), number(13), number(0), out<std::int16_t>(10),
              out<std::int16_t>(21), out<std::int32_t>(1)})
        .row({{1, number(12)}}, zspStsScaleRangeErr)
        .row({{1, number(16)}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsPostFilter_G728_16s),
             {in<std::int16_t>(5), out<std::int16_t>(240), number(140), in<std::int16_t>(3),
              in<std::int16_t>(21), out<std::int16_t>(21), out<std::int16_t>(5)})
        .row({{2, number(141)}}, zspStsCodecRangeErr)
        .row({{2, number(19)}}, zspStsCodecRangeErr),
});

// Without pitch and spectrum the filter is flat, and its level settles where the input's is.
TEST(G728PostFilter, LetsFlatSpeechThrough)
{
    Words past(240), memory(21), heard(5);
    memory[20] = 16384;
    const Words flat{16384, 0, 0}, none(21, 0), input{1000, -900, 800, -700, 600};
    for (int n = 0; n < 100; ++n)
        ASSERT_EQ(zspsPostFilter_G728_16s(input.data(), past.data(), 50, flat.data(), none.data(),
                                          memory.data(), heard.data()),
                  zspStsNoErr);
    for (std::size_t i = 0; i < heard.size(); ++i)
        EXPECT_NEAR(heard[i], 2 * input[i], 4) << i;
}

TEST(G728PostFilter, InverseByAvx2EqualsDefinition)
{
    using namespace zsp::g728;
    Samples samples(81);
    for (int round = 0; round < 20000; ++round) {
        const Words a = wordsOf(samples, 10, round), src = wordsOf(samples, 5, round / 2);
        Words wantMemory = wordsOf(samples, 10, round / 3), memory = wantMemory, want(5), got(5);
        const In<kShort> filter(a.data(), kShort);
        const In<kVector> x(src.data(), kVector);
        inverseFilterScalar(filter, x, Out<kShort>(wantMemory.data(), kShort),
                            Out<kVector>(want.data(), kVector));
        inverseFilterAvx2(filter, x, Out<kShort>(memory.data(), kShort),
                          Out<kVector>(got.data(), kVector));
        expectEqual(got, want, "residual, round " + std::to_string(round));
        expectEqual(memory, wantMemory, "memory, round " + std::to_string(round));
    }
}

TEST(G728PostFilter, Avx2EqualsDefinition)
{
    using namespace zsp::g728;
    Samples samples(71);
    for (int round = 0; round < 20000; ++round) {
        const auto fill = [&](std::array<Word, kShort>& words, int manner) {
            std::ranges::copy(wordsOf(samples, kShort, manner), words.begin());
        };
        ShortTerm shortTerm;
        fill(shortTerm.pole, round);
        fill(shortTerm.zero, round);
        shortTerm.tilt = samples.integer<std::int16_t>();
        const LongTerm longTerm{samples.integer<std::int16_t>(), samples.integer<std::int16_t>(),
                                0};
        PostMemory wantMemory;
        fill(wantMemory.zero, round / 2);
        fill(wantMemory.pole, round / 3);
        wantMemory.level = samples.integer<std::int16_t>();
        PostMemory memory = wantMemory;
        const Words src = wordsOf(samples, 5, round / 2);
        Words wantPast = samples.words(240), past = wantPast, want(5), got(5);
        const int pitch = 20 + samples.below(121);
        const In<kVector> x(src.data(), kVector);
        postFilterScalar(x, Out<kPast>(wantPast.data(), kPast), pitch, longTerm, shortTerm,
                         wantMemory, Out<kVector>(want.data(), kVector));
        postFilterAvx2(x, Out<kPast>(past.data(), kPast), pitch, longTerm, shortTerm, memory,
                       Out<kVector>(got.data(), kVector));
        const std::string what = "round " + std::to_string(round);
        expectEqual(got, want, what);
        expectEqual(past, wantPast, "past, " + what);
        expectEqual(memory.zero, wantMemory.zero, "memory of zeros, " + what);
        expectEqual(memory.pole, wantMemory.pole, "memory of poles, " + what);
        ASSERT_EQ(memory.level, wantMemory.level) << what;
    }
}

} // namespace
