// Decoding of G.729's line spectral frequencies, once a frame.

#include "bench/codecs/g729/decoder/g729_decoder_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

void decode(benchmark::State& state)
{
    std::array<Word, kLsfMemory> memory{};
    LsfVector lsf{};
    std::int32_t n = 0;
    loop(state, kFrame, [&] {
        ++n;
        decodeLsf({n & 1, n & 127, n & 31, (n >> 2) & 31}, memory, lsf);
    });
}

BENCHMARK(decode)->Name("g729LSFDecode/definition");

} // namespace
