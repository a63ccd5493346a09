// The search of the codebook, and the energies of its shapes. No package offers this codec: there
// is nothing else to compare with.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g728/g728_blocks.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

namespace {

using namespace zsp::bench;
using namespace zsp::g728;

using Search = int (*)(In<kVector>, EnergiesIn) noexcept;
using Energy = void (*)(In<kVector>, Energies) noexcept;

constexpr std::array<Word, kVector> kImpulse = {8192, 6000, 3500, -1000, -2500};

void search(benchmark::State& state, Search kernel)
{
    WordPool targets(1, 1500);
    std::array<Long, kShapes> energies;
    shapeEnergiesScalar(kImpulse, energies);
    loop(state, kShapes, [&] {
        benchmark::DoNotOptimize(kernel(targets.next(kVector).first<kVector>(), energies));
    });
}

void energies(benchmark::State& state, Energy kernel)
{
    std::array<Long, kShapes> energies;
    loop(state, kShapes, [&] { kernel(kImpulse, energies); });
}

const bool registered =
    add<Search>("g728Search", search, {{"definition", searchScalar}, {"avx2", searchAvx2}}) &&
    add<Energy>("g728ShapeEnergies", energies,
                {{"definition", shapeEnergiesScalar}, {"avx2", shapeEnergiesAvx2}});

} // namespace
