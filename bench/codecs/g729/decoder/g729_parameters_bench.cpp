// Fields and gains of G.729.

#include "bench/codecs/g729/decoder/g729_decoder_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

void unpack(benchmark::State& state)
{
    std::array<std::uint8_t, 10> bytes = {12, 200, 33, 4, 95, 176, 77, 18, 209, 10};
    std::array<Word, kParameters> fields{};
    loop(state, kFrame, [&] {
        ++bytes[3];
        unpackFields(bytes, fields);
    });
}

void gains(benchmark::State& state)
{
    Subframe code{};
    fixedVector(1234, 5, code);
    std::array<Word, 4> past = {-14336, -14336, -14336, -14336};
    int index = 0;
    loop(state, kSubframe, [&] {
        index = (index + 37) & 127;
        benchmark::DoNotOptimize(decodeGains(index, code, past));
    });
}

BENCHMARK(unpack)->Name("g729UnpackFrame/definition");
BENCHMARK(gains)->Name("g729GainDecode/definition");

} // namespace
