// The excitation of a vector that was lost. No package offers this codec: there is nothing else to
// compare with.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "zspsc/g728/postfilter.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

namespace {

using namespace zsp::bench;

void erased(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    std::array<std::uint8_t, 76> random;
    std::array<std::int16_t, 6> excitation;
    std::int16_t level = 0;
    const std::array<std::int16_t, 2> scale = {20000, 2};
    zspsErasedExcitationInit_G728_16s(random.data());
    loop(state, std::size_t{5}, [&] {
        zspsErasedExcitation_G728_16s(-1, scale.data(), pool.next(140).data(), random.data(),
                                      excitation.data(), &level);
    });
}
BENCHMARK(erased)->Name("g728Erased/definition");

} // namespace
