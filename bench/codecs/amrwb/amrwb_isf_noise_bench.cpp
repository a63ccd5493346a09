// The comfort-noise quantiser of AMR-WB and its decoder.

#include "bench/support/isf.hpp"
#include "bench/support/versions.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::amrwb;
using Quantise = NoiseIndices (*)(InIsf);

/// Quantised and decoded.
void isfQuantDtx(benchmark::State& state, Quantise kernel)
{
    const std::vector<Isf> inputs = frequencies();
    Isf result{};
    std::size_t next = 0;
    loop(state, kIsfOrder, [&] {
        decodeNoise(kernel(inputs[next]), result);
        benchmark::DoNotOptimize(result.data());
        next = (next + 1) % inputs.size();
    });
}

const bool registered = add<Quantise>(
    "isfQuantDtx", isfQuantDtx, {{"definition", quantiseNoiseScalar}, {"avx2", quantiseNoiseAvx2}});

} // namespace
