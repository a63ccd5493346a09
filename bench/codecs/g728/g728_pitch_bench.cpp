// The pitch search and the coefficients that follow from it, once a frame. No package offers this
// codec: there is nothing else to compare with.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g728/g728_blocks.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

namespace {

using namespace zsp::bench;
using namespace zsp::g728;

using Search = int (*)(In<kPast>, Out<kDecimated>, Out<3>, int) noexcept;
using Coefs = LongTerm (*)(In<kPast>, int) noexcept;

void search(benchmark::State& state, Search kernel)
{
    WordPool pool(1, kLoudSpeech);
    std::array<Word, kDecimated> decimated{};
    std::array<Word, 3> lowpass{};
    loop(state, std::size_t{20}, [&] {
        benchmark::DoNotOptimize(kernel(pool.next(kPast).first<kPast>(), decimated, lowpass, 20));
    });
}

void coefs(benchmark::State& state, Coefs kernel)
{
    WordPool pool(1, kLoudSpeech);
    loop(state, std::size_t{20}, [&] {
        auto c = kernel(pool.next(kPast).first<kPast>(), 77);
        benchmark::DoNotOptimize(c);
    });
}

const bool registered =
    add<Search>("g728Pitch", search,
                {{"definition", searchPitchScalar}, {"avx2", searchPitchAvx2}}) &&
    add<Coefs>("g728LongTerm", coefs,
               {{"definition", longTermCoefsScalar}, {"avx2", longTermCoefsAvx2}});

} // namespace
