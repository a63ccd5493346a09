// What the coders by linear prediction share: corners, and the fast filter against its definition.

#include "codecs/shared/celp/filters.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsSynthesisFilter_NR_16s_Sfs),
             {in<std::int16_t>(11), in<std::int16_t>(40), out<std::int16_t>(40), number(40),
              out<std::int16_t>(10), number(12)})
        .row({{3, number(0)}}, zspStsSizeErr)
        .row({{5, number(-1)}}, zspStsScaleRangeErr)
        .row({{5, number(16)}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsInterpolateC_NR_16s),
             {in<std::int16_t>(40), number(1), in<std::int16_t>(40), number(1),
              out<std::int16_t>(40), number(40), number(14), number(14)})
        .row({{5, number(0)}}, zspStsSizeErr)
        .row({{6, number(-1)}}, zspStsScaleRangeErr)
        .row({{7, number(-1)}}, zspStsScaleRangeErr)
        .row({{7, number(32)}}, zspStsScaleRangeErr),
});

TEST(CelpFilters, FastSynthesisEqualsDefinition)
{
    Samples samples(90);
    int overflows = 0;
    for (int round = 0; round < 20000; ++round) {
        const int loudness = round % 16, steepness = round / 16 % 16;
        const auto words = [&](std::size_t n, int shift) {
            Words x(n);
            for (auto& v : x)
                v = static_cast<std::int16_t>(samples.uniform(-32768, 32767) >> shift);
            return x;
        };
        Words a = words(11, steepness), x = words(40, loudness), memory = words(10, loudness);
        if (steepness > 1) a[0] = 4096;
        Words wantMemory = memory, want(40), got(40);
        const bool overflowed = zsp::celp::synthesisScalar(
            zsp::spanOf<11>(a.data()), x, want.data(), zsp::spanOf<10>(wantMemory.data()));
        ASSERT_EQ(zsp::celp::synthesis(zsp::spanOf<11>(a.data()), x, got.data(),
                                       zsp::spanOf<10>(memory.data())),
                  overflowed);
        overflows += overflowed;
        expectEqual(got, want, "round " + std::to_string(round));
        expectEqual(memory, wantMemory, "memory, round " + std::to_string(round));
    }
    EXPECT_GT(overflows, 1000);
    EXPECT_LT(overflows, 19000);
}

/// Of any loudness and steepness, and every length up to some vectors.
TEST(CelpFilters, FastResidualEqualsDefinition)
{
    Samples samples(91);
    for (int round = 0; round < 20000; ++round) {
        const auto words = [&](std::size_t n, int shift) {
            Words x(n);
            for (auto& v : x)
                v = static_cast<std::int16_t>(samples.uniform(-32768, 32767) >> shift);
            return x;
        };
        const std::size_t n = 1 + static_cast<std::size_t>(round) % 41;
        const Words a = words(11, round / 16 % 16), x = words(10 + n, round % 16);
        Words want(n), got(n);
        zsp::celp::residual(zsp::spanOf<11>(a.data()), &x[9] + 1, want);
        zsp::celp::residualAvx2(zsp::spanOf<11>(a.data()), &x[9] + 1, got);
        expectEqual(got, want, "round " + std::to_string(round));
    }
}

TEST(CelpFilters, SynthesisUndoesTheResidual)
{
    const Words a = {4096, -6000, 3000, 200, -100, 50, 0, 0, 10, -20, 30};
    Words x(10 + 200);
    for (std::size_t i = 10; i < x.size(); ++i)
        x[i] = static_cast<std::int16_t>(8000 * std::sin(0.3 * static_cast<double>(i)));
    Words residual(200), memory(10), back(200);
    zspsResidualFilter_G729_16s(a.data(), &x[10], residual.data(), 200);
    zspsSynthesisFilter_NR_16s_Sfs(a.data(), residual.data(), back.data(), 200, memory.data(), 12);
    for (std::size_t i = 0; i < 200; ++i)
        ASSERT_NEAR(back[i], x[10 + i], 8) << i; // both round
}

TEST(CelpFilters, ScaleFactors)
{
    const Words a = {16384, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, x = {3, -3};
    Words y(2), memory(10);
    struct Row {
        int scale;
        std::int16_t up, down;
    };
    for (const Row& row : {Row{15, 2, -1}, Row{14, 3, -3}, Row{12, 12, -12}, Row{1, 24576, -24576},
                           Row{0, 32767, -32768}}) {
        zspsSynthesisFilter_NR_16s_Sfs(a.data(), x.data(), y.data(), 2, memory.data(), row.scale);
        EXPECT_EQ(y[0], row.up) << row.scale;
        EXPECT_EQ(y[1], row.down) << row.scale;
    }
}

TEST(CelpFilters, InterpolationRoundsOnce)
{
    struct Row {
        std::int16_t x, f, y, g;
        int scale1, scale2;
        std::int16_t want;
        const char* why;
    };
    const Row rows[] = {
        {1, 1, 1, 1, 1, 1, 1, "two halves are one"},
        {1, 1, 0, 0, 1, 0, 1, "half rounds up"},
        {-1, 1, 0, 0, 1, 0, 0, "also below zero"},
        {1, 1, 1, 1, 2, 1, 1, "three quarters"},
        {-32768, -32768, -32768, -32768, 14, 14, 32767, "too large"},
        {32767, 32767, -32768, 32767, 0, 0, -32767, "cancels exactly"},
        {32767, 32767, -32768, 32767, 31, 31, 0, "the largest scale"},
        {-32768, -32768, 0, 0, 31, 0, 1, "a half at the largest scale"},
        {-32768, -32768, -1, 1, 31, 0, 0, "and half of minus one, which is nothing"},
    };
    for (const Row& r : rows) {
        std::int16_t got = 99;
        zspsInterpolateC_NR_16s(&r.x, r.f, &r.y, r.g, &got, 1, r.scale1, r.scale2);
        EXPECT_EQ(got, r.want) << r.why;
    }
}

} // namespace
