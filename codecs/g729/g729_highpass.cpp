// Second-order high-pass filter in the ITU-T G.729 arithmetic.
//
//   acc = a1 y1 + a2 y2 + b0 x + b1 x1 + b2 x2        32 bits, wrapping
//   y   = acc << (16 - scaleFactor), saturated
//   out = the upper word of y, rounded; at scaleFactor 13 of twice acc << 3
//
// Every y depends on the one before, so there is one version.

#include "codecs/g729/g729_highpass.hpp"

#include "core/entries.hpp"
#include "core/fixed_point.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <cassert>

namespace zsp::g729 {

namespace {

/// Mpy_32_16 without its doubling, as 32 bits to be summed: the product of the upper words plus
/// that of the 15 bits below them >> 15, which is one product of all 31 bits.
std::uint32_t mpy(std::int32_t y, std::int16_t coefficient) noexcept
{
    return static_cast<std::uint32_t>((std::int64_t{y >> 1} * coefficient) >> 15);
}

std::uint32_t product(std::int16_t x, std::int16_t coefficient) noexcept
{
    return static_cast<std::uint32_t>(x * coefficient);
}

} // namespace

void highPass(Out16 samples, int scaleFactor, HighPassState& state) noexcept
{
    assert(scaleFactor == 12 || scaleFactor == 13);
    const int shift = 16 - scaleFactor;
    // The greatest sum that could still be shifted counts as too great already.
    const std::int32_t top = (1 << (31 - shift)) - 1;

    const auto [a0, a1, a2, b0, b1, b2] = state.coeffs;
    auto [y1, y2, x1, x2, coeffs] = state;
    for (std::int16_t& sample : samples) {
        const std::int16_t x = sample;
        const auto acc = static_cast<std::int32_t>(mpy(y1, a1) + mpy(y2, a2) + product(x, b0) +
                                                   product(x1, b1) + product(x2, b2));
        y2 = y1;
        y1 = acc >= top ? fx::kMax32 : acc < -top ? fx::kMin32 : acc * (1 << shift);
        x2 = x1;
        x1 = x;
        sample = scaleFactor == 12 ? fx::round_fx(y1) : fx::sat16((std::int64_t{acc} + 2048) >> 12);
    }
    state = {.y1 = y1, .y2 = y2, .x1 = x1, .x2 = x2, .coeffs = coeffs};
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsHighPassFilterSize_G729(std::int32_t* size)
{
    if (!size) return zspStsNullPtrErr;

    *size = sizeof(g729::HighPassState);
    return zspStsNoErr;
}

ZspStatus zspsHighPassFilterInit_G729(const std::int16_t* coeffs, void* state)
{
    if (!coeffs || !state) return zspStsNullPtrErr;

    g729::HighPassState fresh;
    std::copy_n(coeffs, fresh.coeffs.size(), fresh.coeffs.begin());
    placeRecord(state, fresh);
    return zspStsNoErr;
}

ZspStatus zspsHighPassFilter_G729_16s_ISfs(std::int16_t* srcDst, std::int32_t len,
                                           std::int32_t scaleFactor, void* state)
{
    if (!srcDst || !state) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;
    if (scaleFactor != 12 && scaleFactor != 13) return zspStsScaleRangeErr;

    InPlace<g729::HighPassState> record(state);
    g729::highPass({srcDst, static_cast<std::size_t>(len)}, scaleFactor, *record);
    return zspStsNoErr;
}

} // namespace zsp::entry
