// Packing and unpacking of G.723.1 frames.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

void packAndUnpack(benchmark::State& state)
{
    ZspG723Frame f = frameOf(zspG723Rate63, 40);
    std::array<std::uint8_t, 24> bytes{};
    loop(state, std::size_t{1}, [&] {
        packFrame(f, bytes);
        unpackFrame(bytes, f);
    });
}

BENCHMARK(packAndUnpack)->Name("g723Frame/definition");

} // namespace
