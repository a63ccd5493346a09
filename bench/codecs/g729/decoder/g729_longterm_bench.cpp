// The long-term post-filter of G.729's main body, once a sub-frame: on a voiced residual.

#include "bench/codecs/g729/decoder/g729_decoder_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

template <auto filter>
void voiced(benchmark::State& state)
{
    WordPool pool(1, 400);
    std::array<std::array<Word, 192>, 16> residuals{};
    for (auto& r : residuals) {
        std::ranges::copy(take<192>(pool), r.begin());
        for (std::size_t i = 3; i < r.size(); i += 57)
            r[i] = 6000;
    }
    Subframe dst{};
    std::size_t n = 0;
    loop(state, kSubframe, [&] { benchmark::DoNotOptimize(filter(57, residuals[n++ % 16], dst)); });
}

BENCHMARK(voiced<longTermPostFilterScalar>)->Name("g729LongTermPostFilter/definition");
BENCHMARK(voiced<longTermPostFilterAvx2>)->Name("g729LongTermPostFilter/avx2");

} // namespace
