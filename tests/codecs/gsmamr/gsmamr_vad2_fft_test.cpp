// The FFT of the second GSM-AMR detector: AVX2 against the definition, and the transform itself.

#include "codecs/gsmamr/gsmamr_vad2_fft.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/gsmamr_vad.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using namespace zsp::test;
using namespace zsp::gsmamr;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsFFTFwd_RToPerm_GSMAMR_16s_I), {out<std::int16_t>(128)}),
});

// Full-scale square waves of one frequency and any phases, the even and the odd samples apart,
// drive the sums of every stage into saturation, the last ones on both sides.
Words squareWaves(Samples& samples)
{
    Words waves(kFftLength);
    const double step = std::numbers::pi * samples.below(64) / 32;
    for (const std::size_t odd : {0u, 1u}) {
        const double phase = samples.below(1000) * 0.01;
        for (std::size_t n = odd; n < kFftLength; n += 2)
            waves[n] = std::cos(step * static_cast<double>(n / 2) + phase) < 0 ? -32768 : 32767;
    }
    return waves;
}

TEST(GsmamrVad2Fft, Avx2EqualsDefinition)
{
    Samples samples(3);
    for (int run = 0; run < 6000; ++run) {
        Words want = run % 2 ? squareWaves(samples) : samples.words(kFftLength);
        Words got = want;
        fftScalar(FftBlock{want.data(), kFftLength});
        fftAvx2(FftBlock{got.data(), kFftLength});
        expectEqual(got, want, "run " + std::to_string(run));
    }
}

TEST(GsmamrVad2Fft, IsTheTransform)
{
    Samples samples(4);
    Words block(kFftLength);
    for (auto& sample : block)
        sample = static_cast<std::int16_t>(samples.uniform(-8191, 8191));
    Words got = block;
    ASSERT_EQ(zspsFFTFwd_RToPerm_GSMAMR_16s_I(got.data()), zspStsNoErr);
    for (std::size_t k = 0; k <= 64; ++k) {
        double re = 0, im = 0;
        for (std::size_t n = 0; n < kFftLength; ++n) {
            const double angle = std::numbers::pi * static_cast<double>(k * n) / 64;
            re += block[n] * std::cos(angle) / 64;
            im -= block[n] * std::sin(angle) / 64;
        }
        // six stages round to a unit and halve
        EXPECT_NEAR(got[k == 64 ? 1 : 2 * k], re, 3) << k;
        if (k % 64 == 0) continue;
        EXPECT_NEAR(got[2 * k + 1], im, 3) << k;
    }
}

} // namespace
