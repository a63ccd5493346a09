// The LSP quantiser of G.729: the reference's traces, and the nearest vectors of the books.

#include "codecs/g729/coder/g729_searches.hpp"

#include "codecs/g729/tables/g729_lsp_tables.hpp"
#include "tests/codecs/g729/g729_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;
using zsp::g729::LsfVector;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsLSPQuant_G729_16s), {in<std::int16_t>(10), out<std::int16_t>(40),
                                                out<std::int16_t>(10), out<std::int16_t>(2)}),
});

TEST(G729Quantiser, Traces)
{
    Words memory(40);
    bool follows = false;
    forEachEncoded([&](const TracedFrame& t, bool, const std::string& what) {
        const int number = t.value("frame");
        follows = number == 0 || (follows && number < 60);
        if (number == 0)
            for (std::size_t i = 0; i < 40; ++i)
                memory[i] = zsp::g729::kLspReset[i % 10];
        if (!follows) return;
        Words quantised(10), fields(2);
        ASSERT_EQ(zspsLSPQuant_G729_16s(t.words("lsp").data(), memory.data(), quantised.data(),
                                        fields.data()),
                  zspStsNoErr);
        expectEqual(quantised, t.words("lsp_quantised"), what);
        const Words want = t.words("parameters");
        expectEqual(fields, Words(want.begin(), want.begin() + 2), what);
    });
}

TEST(G729Quantiser, FindsEveryVectorOfItsBooks)
{
    for (std::size_t i = 0; i < zsp::g729::kLspBook1.size(); ++i)
        EXPECT_EQ(zsp::g729::lsfNearestScalar(zsp::g729::kLspBook1[i]), i);
    const LsfVector even = {16384, 16384, 16384, 16384, 16384, 16384, 16384, 16384, 16384, 16384};
    for (std::size_t i = 0; i < zsp::g729::kLspBook2.size(); ++i)
        for (const std::size_t from : {std::size_t{0}, std::size_t{5}})
            EXPECT_EQ(zsp::g729::lsfNearestPartScalar(zsp::g729::kLspBook2[i], even, from), i);
}

TEST(G729Quantiser, FastEqualsDefinition)
{
    Samples samples(37);
    for (int round = 0; round < 8000; ++round) {
        LsfVector target, weights;
        for (std::size_t j = 0; j < 10; ++j) {
            // Around a vector of the book, near or as far as words reach.
            const auto base =
                round % 4 == 3 ? 0 : zsp::g729::kLspBook1[static_cast<std::size_t>(round) % 128][j];
            const auto off = samples.uniform(-32768, 32767) >> (round % 16);
            target[j] =
                static_cast<std::int16_t>(std::clamp<std::int64_t>(base + off, -32768, 32767));
            weights[j] = static_cast<std::int16_t>(samples.uniform(0, 32767));
        }
        ASSERT_EQ(zsp::g729::lsfNearestAvx2(target), zsp::g729::lsfNearestScalar(target)) << round;
        LsfVector rest = target;
        if (round % 2)
            for (auto& x : rest)
                x = static_cast<std::int16_t>(x >> 5);
        for (const std::size_t from : {std::size_t{0}, std::size_t{5}})
            ASSERT_EQ(zsp::g729::lsfNearestPartAvx2(rest, weights, from),
                      zsp::g729::lsfNearestPartScalar(rest, weights, from))
                << round;
    }
}

} // namespace
