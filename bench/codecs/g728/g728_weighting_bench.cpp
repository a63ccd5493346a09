// The weighting filter over a vector. No package offers this codec: there is nothing else to
// compare with.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g728/g728_blocks.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

namespace {

using namespace zsp::bench;
using namespace zsp::g728;

using Filter = void (*)(In<kShort>, In<kShort>, In<15>, Out<kShort>) noexcept;

void weight(benchmark::State& state, Filter kernel)
{
    WordPool zero(1, 4000), pole(2, 1500), speech(3, kLoudSpeech);
    std::array<Word, kShort> memory{};
    loop(state, kVector, [&] {
        kernel(zero.next(kShort).first<kShort>(), pole.next(kShort).first<kShort>(),
               speech.next(15).first<15>(), memory);
    });
}

const bool registered =
    add<Filter>("g728Weight", weight, {{"definition", weightScalar}, {"avx2", weightAvx2}});

} // namespace
