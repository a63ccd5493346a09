// Line spectral pairs of G.729: the reference's traces and known filters.

#include "codecs/g729/coder/g729_coder.hpp"

#include "tests/codecs/g729/g729_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;

const Words kFirst = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsLPCToLSP_G729_16s),
             {in<std::int16_t>(11), in<std::int16_t>(10), out<std::int16_t>(10)}),
    Contract(ZSP_NAMED(zspsLPCToLSP_G729A_16s),
             {in<std::int16_t>(11), in<std::int16_t>(10), out<std::int16_t>(10)}),
    Contract(ZSP_NAMED(zspsLSPToLPC_G729_16s), {in<std::int16_t>(10), out<std::int16_t>(11)}),
    Contract(ZSP_NAMED(zspsLSPInterpolate_G729_16s),
             {in<std::int16_t>(10), in<std::int16_t>(10), out<std::int16_t>(10)}),
    Contract(ZSP_NAMED(zspsLSFToLSP_G729_16s), {in<std::int16_t>(10), out<std::int16_t>(10)})
        .row({{0, buffer(Argument::Kind::input, Words{0, 1, 2, 3, 4, 5, 6, 7, 8, -1})}},
             zspStsNegativeValueErr),
});

TEST(G729Lsp, Traces)
{
    Words last, lastQuantised;
    int number = 0;
    forEachEncoded([&](const TracedFrame& t, bool isMain, const std::string& what) {
        const bool follows = t.value("frame") == number + 1 || t.value("frame") == 0;
        if (t.value("frame") == 0) last = lastQuantised = kFirst;
        number = t.value("frame");
        Words lsp(10), lpc(11);
        const Words from = t.words("lpc");
        const auto toLsp = isMain ? zspsLPCToLSP_G729_16s : zspsLPCToLSP_G729A_16s;
        ASSERT_EQ(toLsp(from.data(), kFirst.data(), lsp.data()), zspStsNoErr);
        expectEqual(lsp, t.words("lsp"), what);
        if (isMain && follows) {
            Words between(10);
            zspsLSPInterpolate_G729_16s(last.data(), lsp.data(), between.data());
            zspsLSPToLPC_G729_16s(between.data(), lpc.data());
            expectEqual(lpc, half(t.words("lpc_interpolated"), 0), what);
        }
        last = lsp;

        Words quantised(10);
        ASSERT_EQ(zspsLSFToLSP_G729_16s(t.words("lsf_quantised").data(), quantised.data()), 0);
        expectEqual(quantised, t.words("lsp_quantised"), what);
        zspsLSPToLPC_G729_16s(quantised.data(), lpc.data());
        expectEqual(lpc, half(t.words("lpc_quantised"), 1), what);
        if (follows) {
            zspsLSPInterpolate_G729_16s(lastQuantised.data(), quantised.data(), lsp.data());
            zspsLSPToLPC_G729_16s(lsp.data(), lpc.data());
            expectEqual(lpc, half(t.words("lpc_quantised"), 0), what);
        }
        lastQuantised = quantised;
    });
}

TEST(G729Lsp, LostRootsKeepThePairsBefore)
{
    // 1 + 4 z^-1 has its root outside the unit circle: the pairs do not interlace.
    const Words lpc = {4096, 16384, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    for (const auto convert : {zspsLPCToLSP_G729_16s, zspsLPCToLSP_G729A_16s}) {
        Words lsp(10);
        ASSERT_EQ(convert(lpc.data(), kFirst.data(), lsp.data()), zspStsNoErr);
        EXPECT_EQ(lsp, kFirst);
    }
}

TEST(G729Lsp, EndsOfTheGrid)
{
    const Words lsf = {0, 511, 512, 12868, 25333, 25736, 26000, 32767, 1, 2};
    Words lsp(10);
    ASSERT_EQ(zspsLSFToLSP_G729_16s(lsf.data(), lsp.data()), zspStsNoErr);
    EXPECT_EQ(lsp[0], 32767);
    EXPECT_NEAR(lsp[3], 0, 2);
    EXPECT_NEAR(lsp[4], -32729, 4);
    EXPECT_EQ(lsp[5], -32729); // the last step begins anew
    EXPECT_EQ(lsp[7], -32749);
}

TEST(G729Lsp, FastEqualsDefinition)
{
    Samples samples(323);
    int found = 0;
    for (int round = 0; round < 6000; ++round) {
        Words lpc(11), want(10), got(10);
        if (round % 2) { // as filters are
            Words lsp(10);
            for (std::size_t i = 0; i < 10; ++i)
                lsp[i] = static_cast<std::int16_t>(30000 - 6000 * static_cast<int>(i) +
                                                   samples.uniform(-2900, 2900));
            zspsLSPToLPC_G729_16s(lsp.data(), lpc.data());
        } else {
            lpc = anyWords(samples, 11, round / 2);
        }
        const auto a = zsp::spanOf<11>(lpc.data());
        const auto first = zsp::spanOf<10>(kFirst.data());
        found += zsp::g729::lpcToLspScalar(a, first, zsp::spanOf<10>(want.data()));
        zsp::g729::lpcToLsp(a, first, zsp::spanOf<10>(got.data()));
        expectEqual(got, want, "main, round " + std::to_string(round));
        zsp::g729::lpcToLspAScalar(a, first, zsp::spanOf<10>(want.data()));
        zsp::g729::lpcToLspA(a, first, zsp::spanOf<10>(got.data()));
        expectEqual(got, want, "Annex A, round " + std::to_string(round));
    }
    EXPECT_GT(found, 2500);
}

} // namespace
