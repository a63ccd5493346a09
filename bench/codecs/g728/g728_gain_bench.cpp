// The gain of a vector: predicted, made linear, and used. No package offers this codec: there is
// nothing else to compare with.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "zspsc/g728/coder.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

namespace {

using namespace zsp::bench;

void gain(benchmark::State& state)
{
    WordPool pool(1, 16384);
    std::array<std::int16_t, 6> excitation;
    std::array<std::int16_t, 2> gain;
    std::int16_t level = 0;
    loop(state, std::size_t{1}, [&] {
        zspsLogGainPredict_G728_16s(pool.next(10).data(), pool.next(10).data(), 14336, &level,
                                    gain.data());
        zspsCodevectorScale_G728_16s(level & 1023, gain.data(), excitation.data());
        zspsLogGainUpdate_G728_16s(level, level & 1023, &level);
    });
}
BENCHMARK(gain)->Name("g728Gain/definition");

} // namespace
