// The regular-pulse excitation of GSM full rate, over sub-segments of noise: filter, grid, coding
// and decoding.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/gsmfr/gsmfr_rpe.hpp"

#include <array>

namespace {

using namespace zsp::bench;
using namespace zsp::gsmfr;

struct Excitation {
    void (*weight)(InSegment, Segment) noexcept;
    int (*select)(InSegment, Pulses) noexcept;
    int (*quant)(InPulses, Pulses) noexcept;
    void (*dequant)(InPulses, int, Pulses) noexcept;
};

void weight(benchmark::State& state, Excitation kernel)
{
    WordPool pool(13, kLoudSpeech);
    std::array<std::int16_t, kSegment> x;
    loop(state, std::size_t{1}, [&] { kernel.weight(pool.next(kSegment).first<kSegment>(), x); });
}

void code(benchmark::State& state, Excitation kernel)
{
    WordPool pool(14, kLoudSpeech);
    std::array<std::int16_t, kPulses> pulses;
    loop(state, std::size_t{1}, [&] {
        benchmark::DoNotOptimize(kernel.select(pool.next(kSegment).first<kSegment>(), pulses));
        kernel.dequant(pulses, kernel.quant(pulses, pulses), pulses);
    });
}

constexpr Excitation kDefinition = {weightScalar, gridSelectScalar, apcmQuantScalar,
                                    apcmDequantScalar};
constexpr Excitation kAvx2 = {weightAvx2, gridSelectAvx2, apcmQuantAvx2, apcmDequantAvx2};

const bool registered[] = {
    add<Excitation>("gsmfrWeight", weight, {{"definition", kDefinition}, {"avx2", kAvx2}}),
    add<Excitation>("gsmfrPulses", code, {{"definition", kDefinition}, {"avx2", kAvx2}}),
};

} // namespace
