// Comfort noise of G.723.1, once a frame.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

void draw(benchmark::State& state)
{
    ZspG723Frame f{};
    std::int16_t seed = 12345;
    std::array<std::int16_t, 145> past{};
    std::array<std::int16_t, 240> dst{};
    loop(state, kFrame, [&] { comfortNoise(500, seed, past, f, dst); });
}

BENCHMARK(draw)->Name("g723ComfortNoise/definition");

} // namespace
