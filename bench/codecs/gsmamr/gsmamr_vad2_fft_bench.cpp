// The 128-point FFT of words of the second GSM-AMR detector.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/gsmamr/gsmamr_vad2_fft.hpp"

#include <algorithm>
#include <array>

namespace {

using namespace zsp::bench;
using namespace zsp::gsmamr;
using Transform = void (*)(FftBlock);

void transforms(benchmark::State& state, Transform kernel)
{
    WordPool pool(1, 8191);
    std::array<std::int16_t, kFftLength> block{};
    loop(state, kFftLength, [&] {
        std::ranges::copy(pool.next(kFftLength), block.begin());
        kernel(block);
        benchmark::DoNotOptimize(block.data());
    });
}

const bool registered =
    add<Transform>("vad2Fft", transforms, {{"definition", fftScalar}, {"avx2", fftAvx2}});

} // namespace
