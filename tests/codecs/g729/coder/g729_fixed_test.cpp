// The fixed codebook of G.729: the reference's traces, all of the codebook by brute force, and the
// fast forms.

#include "codecs/g729/coder/g729_matrix.hpp"

#include "tests/codecs/g729/g729_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;
namespace coder = zsp::g729;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsToeplizMatrix_G729_16s), {in<std::int16_t>(40), out<std::int16_t>(616)}),
    Contract(ZSP_NAMED(zspsFixedCodebookSearch_G729_16s),
             {in<std::int16_t>(40), in<std::int16_t>(616), in<std::int16_t>(40), number(1),
              out<std::int16_t>(1), out<std::int16_t>(1), out<std::int16_t>(1),
              out<std::int16_t>(40)})
        .row({{3, number(2)}}, zspStsCodecRangeErr)
        .row({{4, buffer(Argument::Kind::output, Words{106})}}, zspStsRangeErr)
        .row({{4, buffer(Argument::Kind::output, Words{-1})}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspsFixedCodebookSearch_G729A_16s),
             {in<std::int16_t>(40), in<std::int16_t>(616), in<std::int16_t>(40),
              out<std::int16_t>(1), out<std::int16_t>(1), out<std::int16_t>(40)}),
});

TEST(G729Fixed, Traces)
{
    forEachEncoded([](const TracedFrame& t, bool isMain, const std::string& what) {
        std::int16_t extra = 0;
        for (std::size_t k = 0; k < 2; ++k) {
            const Words response = t.words("impulse_response_sharpened", k);
            const Words corr = t.words("fixed_correlations", k);
            Words matrix(616), filtered(40), target = t.words("target_fixed", k), found(40);
            ASSERT_EQ(zspsToeplizMatrix_G729_16s(response.data(), matrix.data()), zspStsNoErr);
            if (t.has("impulse_correlations"))
                expectEqual(matrix, t.words("impulse_correlations", k), what);
            zspsCrossCorr_NormM_16s(target.data(), response.data(), 40, found.data());
            expectEqual(found, corr, what);
            std::int16_t positions = 0, signs = 0;
            if (isMain)
                zspsFixedCodebookSearch_G729_16s(corr.data(), matrix.data(), response.data(),
                                                 static_cast<int>(k), &extra, &positions, &signs,
                                                 filtered.data());
            else
                zspsFixedCodebookSearch_G729A_16s(corr.data(), matrix.data(), response.data(),
                                                  &positions, &signs, filtered.data());
            EXPECT_EQ(positions, t.word("pulse_positions", k)) << what;
            EXPECT_EQ(signs, t.word("pulse_signs", k)) << what;
            expectEqual(filtered, t.words("filtered_fixed", k), what);
        }
    });
}

TEST(G729Fixed, FindsTheVectorThatTheTargetIsMadeOf)
{
    Words response(40);
    response[0] = 4096;
    response[1] = 1000;
    Words matrix(616), corr(40), target(40), filtered(40);
    zspsToeplizMatrix_G729_16s(response.data(), matrix.data());
    Samples samples(38);
    for (int round = 0; round < 200; ++round) {
        const coder::FixedCode code = {static_cast<std::int16_t>(samples.below(8192)),
                                       static_cast<std::int16_t>(samples.below(16))};
        coder::filterPulses(code, zsp::spanOf<40>(response.data()), zsp::spanOf<40>(target.data()));
        zspsCrossCorr_NormM_16s(target.data(), response.data(), 40, corr.data());
        std::int16_t positions = 0, signs = 0, extra = 0;
        zspsFixedCodebookSearch_G729_16s(corr.data(), matrix.data(), response.data(), 0, &extra,
                                         &positions, &signs, filtered.data());
        expectEqual(filtered, target, "main, code " + std::to_string(code.positions));
        zspsFixedCodebookSearch_G729A_16s(corr.data(), matrix.data(), response.data(), &positions,
                                          &signs, filtered.data());
        expectEqual(filtered, target, "Annex A, code " + std::to_string(code.positions));
    }
}

TEST(G729Fixed, FastEqualsDefinition)
{
    Samples samples(380);
    for (int round = 0; round < 3000; ++round) {
        Words response = anyWords(samples, 40, round);
        for (std::size_t n = 0; n < 40 && round % 5 != 0; ++n) // as responses are
            response[n] = static_cast<std::int16_t>(response[n] >> (n / 8));
        const Words target = anyWords(samples, 40, round / 16);
        Words want(616), got(616), corr(40);
        coder::toeplizMatrixScalar(zsp::spanOf<40>(response.data()), zsp::spanOf<616>(want.data()));
        coder::toeplizMatrixAvx2(zsp::spanOf<40>(response.data()), zsp::spanOf<616>(got.data()));
        expectEqual(got, want, "matrix, round " + std::to_string(round));
        zspsCrossCorr_NormM_16s(target.data(), response.data(), 40, corr.data());
        if (round % 7 == 0) { // what no response has
            want = samples.words(616);
            corr = samples.words(40);
        }
        const auto d = zsp::spanOf<40>(corr.data());
        const auto m = zsp::spanOf<616>(want.data());
        std::int16_t wantExtra = static_cast<std::int16_t>(samples.below(106)),
                     gotExtra = wantExtra;
        const bool isFirst = samples.below(2) == 0;
        coder::FixedCode a = coder::fixedSearchScalar(d, m, isFirst, wantExtra);
        coder::FixedCode b = coder::fixedSearchAvx2(d, m, isFirst, gotExtra);
        ASSERT_EQ(b.positions, a.positions) << round;
        ASSERT_EQ(b.signs, a.signs) << round;
        ASSERT_EQ(gotExtra, wantExtra) << round;
        a = coder::fixedSearchAScalar(d, m);
        b = coder::fixedSearchAAvx2(d, m);
        ASSERT_EQ(b.positions, a.positions) << round;
        ASSERT_EQ(b.signs, a.signs) << round;
    }
}

} // namespace
