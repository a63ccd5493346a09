// The filters of G.722: vectors, and AVX2 against the definitions.

#include "codecs/g722/g722_qmf.hpp"

#include "tests/support/g722_pairs.hpp"
#include "zspsc/g722.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>

namespace {

using namespace zsp::test;

const bool registered = addContracts({
    pairsContract(
        Contract(ZSP_NAMED(zspsQMFEncode_G722_16s),
                 {in<std::int16_t>(6), out<std::int16_t>(6), number(6), out<std::int16_t>(24)})),
    pairsContract(
        Contract(ZSP_NAMED(zspsQMFDecode_G722_16s),
                 {in<std::int16_t>(6), out<std::int16_t>(6), number(6), out<std::int16_t>(24)})),
});

TEST(G722Qmf, Vectors)
{
    expectConforms("G.722", 5, "qmf-");
}

TEST(G722Qmf, Avx2EqualsDefinition)
{
    using namespace zsp::g722;
    Samples samples(15);
    for (const auto& [scalar, avx2] :
         {std::pair{&analyseScalar, &analyseAvx2}, {&synthesiseScalar, &synthesiseAvx2}}) {
        std::array<std::int16_t, 24> want{}, got{};
        for (const std::size_t len : {2u, 4u, 14u, 16u, 18u, 40u, 160u, 254u, 256u, 258u, 1030u}) {
            for (int round = 0; round < 30; ++round) {
                Words input = samples.words(len);
                if (round % 3 == 0) // full scale, also with the signs of the taps
                    for (auto& x : input)
                        x = samples.below(2) ? 32767 : -32768;
                Words wanted(len), output(len);
                scalar(input, wanted, want);
                avx2(input, output, got);
                expectEqual(output, wanted, "length " + std::to_string(len));
                expectEqual(got, want, "line, length " + std::to_string(len));
            }
        }
    }
}

} // namespace
