// The conversions of log area ratios of GSM full rate, over any words.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/gsmfr/gsmfr_lar.hpp"

#include <array>

namespace {

using namespace zsp::bench;
using namespace zsp::gsmfr;

/// The way of a frame's coefficients: to codes and back, and between two frames.
struct Way {
    void (*toLar)(InCoefs, Coefs) noexcept;
    void (*quant)(InCoefs, Coefs) noexcept;
    void (*dequant)(InCoefs, Coefs) noexcept;
    void (*interpolate)(InCoefs, InCoefs, Reflect) noexcept;
};

void ratios(benchmark::State& state, Way way)
{
    WordPool pool(26);
    std::array<std::int16_t, kOrder> last{}, now;
    std::array<std::int16_t, kSets * kOrder> reflect;
    loop(state, std::size_t{1}, [&] {
        way.toLar(pool.next(kOrder).first<kOrder>(), now);
        way.quant(now, now);
        way.dequant(now, now);
        way.interpolate(last, now, reflect);
        last = now;
    });
}

const bool registered = add<Way>(
    "gsmfrRatios", ratios,
    {{"definition", {reflectToLarScalar, larQuantScalar, larDequantScalar, larInterpolateScalar}},
     {"avx2", {reflectToLarAvx2, larQuantAvx2, larDequantAvx2, larInterpolateAvx2}}});

} // namespace
