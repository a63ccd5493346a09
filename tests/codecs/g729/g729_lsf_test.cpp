// The conversion of line spectral pairs to frequencies of G.729: vectors and known frequencies.

#include "codecs/g729/g729_lsf.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g729/filters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsLSPToLSF_G729_16s), {in<std::int16_t>(10), out<std::int16_t>(10)}),
    Contract(ZSP_NAMED(zspsLSPToLSF_Norm_G729_16s), {in<std::int16_t>(10), out<std::int16_t>(10)}),
});

TEST(G729Lsf, Vectors)
{
    expectConforms("G.729", 2, "LSP to LSF");
}

struct Frequency {
    std::array<std::int16_t, 3> lsp; // the last ones; those before are 32767
    std::array<std::int16_t, 3> radian, norm;
    const char* why;
};

constexpr Frequency kFrequencies[] = {
    {{32767, 32767, 32767}, {0, 0, 0}, {0, 0, 0}, "the top"},
    {{32767, 0, -32729}, {0, 12868, 25333}, {0, 8192, 16128}, "grid points"},
    {{32767, 32767, -32768}, {0, 0, -25736}, {0, 0, 16384}, "32768 wraps in radians"},
    {{-20000, 10000, 10000}, {18230, 10326, 10326}, {11606, 6574, 6574}, "out of order"},
    {{-32768, 32767, 32767}, {6598, 0, 0}, {-28567, 0, 0}, "far out of order: wraps in both"},
};

TEST(G729Lsf, KnownFrequencies)
{
    for (const Frequency& f : kFrequencies) {
        Words lsp(10, 32767), radian(10), norm(10);
        std::copy(f.lsp.begin(), f.lsp.end(), lsp.begin() + 7);
        ASSERT_EQ(zspsLSPToLSF_G729_16s(lsp.data(), radian.data()), zspStsNoErr);
        ASSERT_EQ(zspsLSPToLSF_Norm_G729_16s(lsp.data(), norm.data()), zspStsNoErr);
        expectEqual(Words(radian.begin() + 7, radian.end()), f.radian, f.why);
        expectEqual(Words(norm.begin() + 7, norm.end()), f.norm, f.why);
    }
}

/// Both conversions of ten cosines, fast and by definition.
void expectEqualVersions(const Words& lsp, const std::string& what)
{
    using namespace zsp::g729;
    const LspIn in(lsp.data(), kOrder);
    for (const auto& [fast, definition] :
         {std::pair{&lspToLsfAvx2, &lspToLsfScalar}, {&lspToLsfNormAvx2, &lspToLsfNormScalar}}) {
        Words got(kOrder), want(kOrder);
        definition(in, LsfOut(want.data(), kOrder));
        fast(in, LsfOut(got.data(), kOrder));
        expectEqual(got, want, what);
        Words inPlace = lsp;
        fast(LspIn(inPlace.data(), kOrder), LsfOut(inPlace.data(), kOrder));
        expectEqual(inPlace, want, what + ", in place");
    }
}

TEST(G729Lsf, FastVersionsEqualDefinitions)
{
    for (int x = -32768; x <= 32767; ++x) // every cosine in every place
        expectEqualVersions(Words(10, static_cast<std::int16_t>(x)), std::to_string(x));
    Samples samples(32);
    for (int round = 0; round < 20000; ++round) {
        Words lsp = samples.words(10);
        if (round % 4) std::sort(lsp.begin(), lsp.end(), std::greater<>());
        if (round % 4 == 1) // ordered but for one place
            std::swap(lsp[static_cast<std::size_t>(samples.below(9))], lsp[9]);
        expectEqualVersions(lsp, "round " + std::to_string(round));
    }
}

} // namespace
