// Exports on floats take denormal numbers as zero, give normal numbers what they give without that,
// and leave the caller's floating-point modes and flags alone.

#include "core/denormals.hpp"

#include "core/leaving.hpp"
#include "tests/core/denormals_cases.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <immintrin.h>
#include <set>
#include <string>

namespace {

using namespace zsp::test;
using namespace zsp::test::denormals;

class Denormals : public testing::TestWithParam<Case> {};

bool isDenormal(float v)
{
    return std::fpclassify(v) == FP_SUBNORMAL;
}

/// Bits, so that not-a-number and the sign of zero count.
bool same(const Floats& a, const Floats& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0;
}

TEST_P(Denormals, NormalResultsStay)
{
    for (const float level : {32768.0F, 1.0F, 1e-6F}) {
        const Signal signal{Samples(31).floats(12000, level)};
        EXPECT_TRUE(same(GetParam().run({.direct = false}, signal),
                         GetParam().run({.direct = true}, signal)))
            << "level " << level;
    }
}

TEST_P(Denormals, AreZero)
{
    Signal fading{Samples(32).floats(12000, 1)};
    for (std::size_t i = 0; i < fading.samples.size(); ++i) {
        const double share = static_cast<double>(i) / 12000;
        const double level = std::pow(10.0, std::lerp(GetParam().first, GetParam().last, share));
        fading.samples[i] = static_cast<float>(level * static_cast<double>(fading.samples[i]));
    }
    EXPECT_EQ(std::ranges::count_if(GetParam().run({.direct = false}, fading), isDenormal), 0);
    EXPECT_GT(std::ranges::count_if(GetParam().run({.direct = true}, fading), isDenormal), 0)
        << "the signal meets none";
}

// However large a factor makes them.
TEST(DenormalsScope, ArgumentsAreZero)
{
    float memory = 1e-40F, x = 0;
    zspsPreemphasize_32f_I(1e30F, &x, 1, &memory);
    EXPECT_EQ(x, 0);
}

// Rounding down and denormal operands as zero, with two flags raised, all exceptions masked; and
// what a program starts with.
TEST(DenormalsScope, CallersModesAndFlagsStay)
{
    const unsigned before = _mm_getcsr();
    for (const unsigned modes : {0x3fe4U, 0x1f80U, 0x9fc0U}) {
        _mm_setcsr(modes);
        std::array<std::int32_t, 20> state{};
        std::int32_t result = 0;
        const ZspStatus failed = zspsToneDetect_EC_32f(nullptr, 40, &result, state.data());
        const unsigned afterFailure = _mm_getcsr();
        float memory = 3, x = 1e-40F;
        zspsPreemphasize_32f_I(0.1F, &x, 1, &memory); // would raise the flag of inexact results
        const unsigned after = _mm_getcsr();
        _mm_setcsr(before);
        EXPECT_EQ(failed, zspStsNullPtrErr);
        EXPECT_EQ(afterFailure, modes);
        EXPECT_EQ(after, modes);
    }
}

INSTANTIATE_TEST_SUITE_P(Export, Denormals, testing::ValuesIn(kCases),
                         [](const auto& found) { return std::string(found.param.name); });

// Whoever adds an export on floats finds here that it has no case.
TEST(DenormalsTable, NamesEveryExportOnFloats)
{
    std::set<std::string> want;
    const auto add = [&want]<typename R, typename... Arguments>(const char* name,
                                                                R (*)(Arguments...)) {
        if ((zsp::hasFloats<Arguments> || ...)) want.insert(name);
    };
#define ZSP_EXPORT(name) add(#name, &::name);
#define ZSP_EXPORT_AS(name, shared) add(#name, &::name);
#include "core/exports.inc"
    // A window that is copied, decibels, and the step sizes once more.
    std::set<std::string> got = {"zspsSubbandProcessInit_32f", "zspsALCSetGain_G169_16s",
                                 "zspsALCSetLevel_G169_16s", "zspsSubbandControllerUpdate_EC_32f"};
    for (const Case& c : kCases)
        got.insert(c.name);
    EXPECT_EQ(got, want);
}

} // namespace
