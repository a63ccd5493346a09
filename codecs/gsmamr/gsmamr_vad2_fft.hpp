// 128-point real FFT of words, in place.
#pragma once

#include "common/math/cosine.hpp"
#include "core/fixed_point.hpp"
#include "core/spans.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zsp::gsmamr {

inline constexpr std::size_t kFftLength = 128;
using FftBlock = std::span<std::int16_t, kFftLength>;

/// The definition of the real FFT: 128 samples become the spectrum over 128, packed.
void fftScalar(FftBlock block) noexcept;

/// Equal to fftScalar in every result.
void fftAvx2(FftBlock block) noexcept;

// What both versions need

inline constexpr std::size_t kPoints = kFftLength / 2;

struct Twiddle {
    fx::Word c;
    fx::Word s;
};

/// cos and -sin of 2 pi k / 128, Q15, with +1 as 32767. 3GPP TS 26.073.
inline constexpr auto kTwiddles_Q15 = [] {
    std::array<Twiddle, kPoints> table{};
    for (std::size_t k = 0; k < kPoints; ++k) {
        const int angle = 2 * static_cast<int>(k); // in steps of pi / 128
        table[k] = {fx::sat16(common::cosine_Q15(angle)),
                    fx::sat16(-common::cosine_Q15(angle < 64 ? 64 - angle : angle - 64))};
    }
    return table;
}();

struct Complex {
    fx::Word re;
    fx::Word im;
};

inline Complex at(std::span<const fx::Word, kFftLength> block, std::size_t k) noexcept
{
    return {block[2 * k], block[2 * k + 1]};
}

inline void put(FftBlock block, std::size_t k, Complex z) noexcept
{
    block[2 * k] = z.re;
    block[2 * k + 1] = z.im;
}

/// Bins 0 and 64, both real, from bin 0 of the complex spectrum.
inline void endBins(FftBlock block) noexcept
{
    const Complex z = at(block, 0);
    put(block, 0, {fx::add(z.re, z.im), fx::sub(z.re, z.im)});
}

} // namespace zsp::gsmamr
