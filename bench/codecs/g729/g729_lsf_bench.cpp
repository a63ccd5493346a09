// G.729's two conversions of ten line spectral pairs.

#include "bench/support/speech.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g729/g729_lsf.hpp"

#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace {

using namespace zsp::bench;
using zsp::g729::kOrder;

/// Sets of ten cosines around even distances, all different.
std::vector<std::int16_t> lspSets()
{
    std::vector<std::int16_t> lsp;
    for (int set = 0; set < 1000; ++set)
        for (int i = 0; i < 10; ++i) {
            const double shift = 0.8 * std::sin(set * (1.0 + 0.37 * i));
            lsp.push_back(static_cast<std::int16_t>(
                32767 * std::cos(std::numbers::pi * (i + 1 + shift / 2) / 11)));
        }
    return lsp;
}

using Convert = void (*)(zsp::g729::LspIn, zsp::g729::LsfOut) noexcept;

void convert(benchmark::State& state, Convert kernel)
{
    Blocks sets(lspSets(), kOrder);
    std::array<std::int16_t, kOrder> lsf;
    loop(state, std::size_t{1}, [&] { kernel(zsp::g729::LspIn(sets.next().data(), kOrder), lsf); });
}

const bool registered =
    add<Convert>("g729LspToLsf/radian", convert,
                 {{"definition", zsp::g729::lspToLsfScalar}, {"avx2", zsp::g729::lspToLsfAvx2}}) &&
    add<Convert>(
        "g729LspToLsf/norm", convert,
        {{"definition", zsp::g729::lspToLsfNormScalar}, {"avx2", zsp::g729::lspToLsfNormAvx2}});

} // namespace
