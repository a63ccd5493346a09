// Line spectral pairs of G.723.1: the reference's traces, and pairs that do not come apart.

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsLPCToLSP_G723_16s), {words(10), words(10), out<std::int16_t>(10)}),
    Contract(ZSP_NAMED(zspsLSPQuant_G723_16s32s), {words(10), words(10), out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsLSPDequant_G723_16s),
             {number(0), number(0), words(10), out<std::int16_t>(10)})
        .row({{0, number(-1)}}, zspStsCodecRangeErr)
        .row({{0, number(0x1000000)}}, zspStsCodecRangeErr)
        .row({{1, number(2)}}, zspStsCodecRangeErr)
        .row({{1, number(-1)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsLSPInterpolateToLPC_G723_16s),
             {words(10), words(10), out<std::int16_t>(40)}),
});

const Words kMean(zsp::g723::kLspMean.begin(), zsp::g723::kLspMean.end());

TEST(G723Lsp, Traces)
{
    for (const std::string& mode : kModes) {
        Words last = kMean;
        for (const TracedFrame& t : traced(mode, "encode")) {
            Words lsp(10), lpc(40);
            zspsLPCToLSP_G723_16s(t.words("lpc", 3).data(), last.data(), lsp.data());
            expectEqual(lsp, t.words("lsp"), mode);
            std::int32_t index = 0;
            zspsLSPQuant_G723_16s32s(lsp.data(), last.data(), &index);
            EXPECT_EQ(index, t.value("lsp_index"));
            Words next = isActive(t) ? Words(10) : t.words("sid_lsp");
            if (isActive(t)) {
                zspsLSPDequant_G723_16s(index, 0, last.data(), next.data());
                expectEqual(next, t.words("quantised_lsp"), mode);
            }
            zspsLSPInterpolateToLPC_G723_16s(last.data(), next.data(), lpc.data());
            expectEqual(lpc, t.words("quantised_lpc"), mode);
            last = next;
        }
    }
}

TEST(G723Lsp, WithoutTenRootsThePreviousStay)
{
    Words lpc(10, 32767), lsp(10);
    zspsLPCToLSP_G723_16s(lpc.data(), kMean.data(), lsp.data());
    EXPECT_EQ(lsp, kMean);
}

TEST(G723Lsp, DecodedPairsAreApartOrThePrevious)
{
    Samples samples(3);
    int kept = 0;
    for (int round = 0; round < 3000; ++round) {
        Words last = kMean, lsp(10);
        for (auto& x : last)
            x = static_cast<std::int16_t>(x + samples.uniform(-9000, 5000));
        const auto erased = static_cast<std::int32_t>(round % 2);
        zspsLSPDequant_G723_16s(static_cast<std::int32_t>(samples.uniform(0, 0xffffff)), erased,
                                last.data(), lsp.data());
        if (lsp == last) {
            ++kept;
            continue;
        }
        for (std::size_t j = 1; j < 10; ++j)
            EXPECT_GE(lsp[j] - lsp[j - 1], (erased ? 512 : 256) - 4);
    }
    EXPECT_GT(kept, 0);
    EXPECT_LT(kept, 1500);
}

} // namespace
