// The inverse filter and the post-filter over a vector. No package offers this codec: there is
// nothing else to compare with.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g728/g728_blocks.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

namespace {

using namespace zsp::bench;
using namespace zsp::g728;

using Inverse = void (*)(In<kShort>, In<kVector>, Out<kShort>, Out<kVector>) noexcept;
using Filter = void (*)(In<kVector>, Out<kPast>, int, const LongTerm&, const ShortTerm&,
                        PostMemory&, Out<kVector>) noexcept;

void inverse(benchmark::State& state, Inverse kernel)
{
    WordPool coefficients(1, 4000), speech(2, kLoudSpeech);
    std::array<Word, kShort> memory{};
    std::array<Word, kVector> residual;
    loop(state, kVector, [&] {
        kernel(coefficients.next(kShort).first<kShort>(), speech.next(kVector).first<kVector>(),
               memory, residual);
    });
}

void filter(benchmark::State& state, Filter kernel)
{
    WordPool speech(2, kLoudSpeech);
    std::array<Word, kPast> past{};
    const LongTerm longTerm{14000, 8000, 14000};
    const ShortTerm shortTerm{{-9000, 4000, -2000, 900, 500, -300, 200, 100, -50, 20},
                              {-7000, 3000, -1000, 500, 200, -100, 90, 50, -20, 10},
                              -2000};
    PostMemory memory{{}, {}, 16384};
    std::array<Word, kVector> heard;
    loop(state, kVector, [&] {
        kernel(speech.next(kVector).first<kVector>(), past, 77, longTerm, shortTerm, memory, heard);
    });
}

const bool registered =
    add<Inverse>("g728Inverse", inverse,
                 {{"definition", inverseFilterScalar}, {"avx2", inverseFilterAvx2}}) &&
    add<Filter>("g728PostFilter", filter,
                {{"definition", postFilterScalar}, {"avx2", postFilterAvx2}});

} // namespace
