// The conversions of AMR-WB: vectors, every value of a pair, and the cosine they stand for.

#include "codecs/amrwb/amrwb_isf.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/amrwb/isf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

using namespace zsp::test;
using zsp::In16;
using zsp::Out16;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsISFToISP_AMRWB_16s),
             {in<std::int16_t>(16), out<std::int16_t>(16), number(16)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-1)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspsISPToISF_Norm_AMRWB_16s),
             {in<std::int16_t>(16), out<std::int16_t>(16), number(16)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-2147483648.0)}}, zspStsSizeErr),
});

using Kernel = void (*)(In16, Out16) noexcept;

struct Conversion {
    const char* name;
    Kernel definition;
    Kernel avx2;
};

constexpr Conversion kConversions[] = {
    {"isf_to_isp", zsp::amrwb::isfToIspScalar, zsp::amrwb::isfToIspAvx2},
    {"isp_to_isf", zsp::amrwb::ispToIsfScalar, zsp::amrwb::ispToIsfAvx2},
};

TEST(AmrwbIsf, ConversionVectors)
{
    expectConforms("AMR-WB", 2, "IS");
}

TEST(AmrwbIsf, ConversionsEqualDefinitions)
{
    Samples samples(1);
    for (const Conversion& c : kConversions)
        for (int run = 0; run < 4000; ++run) {
            const std::size_t len = run % 3 ? 16 : static_cast<std::size_t>(1 + samples.below(40));
            Words given = samples.words(len);
            if (run % 2) std::sort(given.rbegin(), given.rend() - 1); // all but one in order
            Words want(len), got(len);
            c.definition(given, want);
            c.avx2(given, got);
            expectEqual(got, want, c.name + std::string(", length ") + std::to_string(len));
        }
}

// Every value of a cosine, at every place.
TEST(AmrwbIsf, EveryPairFindsItsStep)
{
    for (int isp = -32768; isp <= 32767; ++isp) {
        const Words given(16, static_cast<std::int16_t>(isp));
        Words want(16), got(16);
        zsp::amrwb::ispToIsfScalar(given, want);
        zsp::amrwb::ispToIsfAvx2(given, got);
        expectEqual(got, want, "isp " + std::to_string(isp));
    }
}

TEST(AmrwbIsf, ConversionsFollowTheCosine)
{
    for (int isf = -3; isf <= 16390; ++isf) {
        const Words given = {static_cast<std::int16_t>(isf), 0};
        Words isp(2), back(2);
        ASSERT_EQ(zspsISFToISP_AMRWB_16s(given.data(), isp.data(), 2), zspStsNoErr);
        const int limited = std::clamp(isf, 0, 16383);
        ASSERT_NEAR(isp[0], 32768 * std::cos(std::numbers::pi * limited / 16384), 4.5) << isf;
        ASSERT_EQ(zspsISPToISF_Norm_AMRWB_16s(isp.data(), back.data(), 2), zspStsNoErr);
        // near the ends one unit of the cosine is up to 1/9 of a step of 128
        ASSERT_NEAR(back[0], limited, isf < 512 || isf > 15872 ? 15 : 2) << isf;
    }
}

TEST(AmrwbIsf, TheOnlyElementIsTheLast)
{
    constexpr struct {
        std::int16_t isf, isp, back;
    } kRows[] = {{0, 32767, 0},
                 {4096, 0, 4096},
                 {8191, -32768, 8192},
                 {32767, -32768, 8192},
                 {-1, 32767, 0}};
    for (const auto& row : kRows) {
        std::int16_t isp = 0, back = -1;
        ASSERT_EQ(zspsISFToISP_AMRWB_16s(&row.isf, &isp, 1), zspStsNoErr);
        EXPECT_EQ(isp, row.isp) << row.isf;
        ASSERT_EQ(zspsISPToISF_Norm_AMRWB_16s(&isp, &back, 1), zspStsNoErr);
        EXPECT_EQ(back, row.back) << row.isf;
    }
}

} // namespace
