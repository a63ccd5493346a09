// The steps of a frame half over sixteen channels, one after the other.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/gsmamr/gsmamr_vad2_channels.hpp"

#include <array>

namespace {

using namespace zsp::bench;
using namespace zsp::gsmamr;

using Longs = std::array<std::int32_t, kChannels>;
using Words = std::array<std::int16_t, kChannels>;

struct Record {
    std::array<std::int16_t, kVad2Half> normalised{};
    Longs energies{}, noise{};
    Words levels{}, noiseLevels{}, snrs{}, longTerm{};
};

template <typename Version>
void steps(zsp::In16 samples, zsp::In16 bins, Record& r)
{
    constexpr Mix kHalf = {16384, 16384};
    const int shift = Version::normalise(samples.first<kVad2Half>(), r.normalised);
    Version::smoothEnergies(bins.first<kFftLength>(), shift, kHalf, 1, r.energies);
    benchmark::DoNotOptimize(Version::totalAndPeak(r.energies));
    Version::levels(r.energies, 4, r.levels);
    Version::levels(r.noise, 9, r.noiseLevels);
    benchmark::DoNotOptimize(Version::snrs(r.levels, r.noiseLevels, r.snrs));
    benchmark::DoNotOptimize(Version::ratioSum(r.snrs));
    benchmark::DoNotOptimize(Version::deviation(r.levels, r.longTerm));
    Version::follow(r.levels, kHalf, r.longTerm);
    Version::updateNoise(r.energies, 5, r.noise);
}

using Steps = void (*)(zsp::In16, zsp::In16, Record&);

void halves(benchmark::State& state, Steps kernel)
{
    WordPool pool(1, kLoudSpeech);
    Record record;
    loop(state, kVad2Half, [&] { kernel(pool.next(kVad2Half), pool.next(kFftLength), record); });
}

const bool registered = add<Steps>("vad2Channels", halves,
                                   {{"definition", steps<Vad2Scalar>}, {"avx2", steps<Vad2Avx2>}});

} // namespace
