// Stored frames of GSM full rate: 76 parameters to 33 bytes and back.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "zspsc/gsmfr/frame.h"

#include <array>

namespace {

using namespace zsp::bench;

void pack(benchmark::State& state)
{
    std::array<std::uint8_t, 33> frame{};
    frame[0] = 0xd0;
    std::array<std::int16_t, 76> parameters;
    std::uint8_t next = 0;
    loop(state, std::size_t{1}, [&] {
        frame[7] = ++next;
        zspsUnpackFrame_GSMFR_8u16s(frame.data(), parameters.data());
        zspsPackFrame_GSMFR_16s8u(parameters.data(), frame.data());
    });
}

BENCHMARK(pack)->Name("gsmfrUnpackAndPackFrame/definition");

} // namespace
