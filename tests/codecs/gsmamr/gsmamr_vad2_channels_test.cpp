// The channels of the second GSM-AMR detector on spectra louder than its own.

#include "codecs/gsmamr/gsmamr_vad2_channels.hpp"

#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

namespace {

using namespace zsp::test;
using namespace zsp::gsmamr;
using Words = std::vector<std::int16_t>;

// Louder spectra than the detector's own.
TEST(GsmamrVad2Channels, EnergiesEqualDefinition)
{
    Samples samples(5);
    for (int run = 0; run < 4000; ++run) {
        const Words bins = samples.words(kFftLength);
        const auto old = samples.longs(kChannels);
        const int shift = static_cast<int>(samples.uniform(-14, 23));
        std::vector<std::int32_t> want = old, got = old;
        const Spectrum spectrum{bins.data(), kFftLength};
        Vad2Scalar::smoothEnergies(spectrum, shift, {32767, 1}, 1,
                                   Energies{want.data(), kChannels});
        Vad2Avx2::smoothEnergies(spectrum, shift, {32767, 1}, 1, Energies{got.data(), kChannels});
        expectEqual(got, want, "shift " + std::to_string(shift));
    }
}

} // namespace
