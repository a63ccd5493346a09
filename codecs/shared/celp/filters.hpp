// The filters of ten coefficients that the ITU-T and 3GPP coders by code-excited linear prediction
// share. Coefficients are Q12, a[0] among them; signals have their past before them or in a memory
// whose last word is the newest.
#pragma once

#include "codecs/shared/celp/arithmetic.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace zsp::celp {

inline constexpr std::size_t kOrder = 10;
inline constexpr std::size_t kTaps = kOrder + 1;

/// Residu: y[n] = sum of a[j] x[n-j], with ten words before x.
constexpr void residual(In<kTaps> a_Q12, const Word* x, std::span<Word> y) noexcept
{
    for (std::size_t n = 0; n < y.size(); ++n) {
        const Word* now = x + n;
        Long s = fx::l_mult(*now, a_Q12[0]);
        for (std::size_t j = 1; j < kTaps; ++j)
            s = fx::l_mac(s, a_Q12[j], *(now - j));
        y[n] = fx::round_fx(fx::l_shl(s, 3));
    }
}

/// Equal to residual(). As long as no sum of products can leave 31 bits, nothing but the words
/// saturates.
void residualAvx2(In<kTaps> a_Q12, const Word* x, std::span<Word> y) noexcept;

/// Syn_filt: y[n] = a[0] x[n] - sum of a[j] y[n-j], shifted left by `shift` + 1 and rounded. x and
/// y may be one array. True if any operation has saturated.
constexpr bool synthesisScalar(In<kTaps> a, std::span<const Word> x, Word* y, Out<kOrder> memory,
                               int shift = 3) noexcept
{
    bool overflowed = false;
    std::array<Word, kOrder> past; // the newest first
    std::reverse_copy(memory.begin(), memory.end(), past.begin());
    for (std::size_t n = 0; n < x.size(); ++n) {
        MarkedSum s{0};
        s.mac(x[n], a[0]);
        for (std::size_t j = 1; j < kTaps; ++j)
            s.msu(a[j], past[j - 1]);
        s.add(std::int64_t{s.value} * (std::int64_t{1} << shift));
        s.add(std::int64_t{s.value} + 0x8000);
        overflowed |= s.overflowed;
        std::copy_backward(past.begin(), past.end() - 1, past.end());
        y[n] = past[0] = fx::extract_h(s.value);
    }
    std::reverse_copy(past.begin(), past.end(), memory.begin());
    return overflowed;
}

/// Equal to synthesisScalar(). Sums wrap; when the largest output could have made one leave 32
/// bits, or an output is at the end of the range, the definition decides. The first wrong output
/// would need a sum beyond the bound from right ones, so the largest of all tells.
inline bool synthesis(In<kTaps> a, std::span<const Word> x, Word* y, Out<kOrder> memory) noexcept
{
    constexpr std::size_t kMost = 80;
    if (x.size() > kMost) return synthesisScalar(a, x, y, memory);
    std::array<std::int32_t, kOrder + kMost> out;
    std::array<std::int32_t, kMost> in;
    std::copy(memory.begin(), memory.end(), out.begin());
    std::copy(x.begin(), x.end(), in.begin());
    const std::uint32_t c0 = static_cast<std::uint32_t>(std::int32_t{a[0]});
    const std::uint32_t c1 = static_cast<std::uint32_t>(std::int32_t{a[1]});
    std::array<std::uint64_t, kTaps> pairs{}; // a[j], and a[j + 1] above it
    std::int64_t reach = std::abs(std::int32_t{a[0]});
    for (std::size_t j = 1; j < kTaps; ++j) {
        const std::int64_t next = j < kOrder ? a[j + 1] : 0;
        pairs[j] = static_cast<std::uint64_t>(std::int64_t{a[j]} + next * (std::int64_t{1} << 32));
        reach += std::abs(std::int32_t{a[j]});
    }
    // Two outputs at a time: one product of 64 bits is that of a word with two coefficients. As
    // long as the lower sum fits 32 bits, it and what is above it come apart again.
    for (std::size_t n = 0; n < x.size(); n += 2) {
        const bool isLast = n + 1 == x.size();
        const auto fresh = [&](std::size_t i) {
            const auto sum =
                static_cast<std::int32_t>(c0 * static_cast<std::uint32_t>(in[i]) + 2048);
            return static_cast<std::uint64_t>(std::int64_t{sum});
        };
        std::uint64_t both = fresh(n) + (isLast ? 0 : fresh(n + 1) << 32);
        const std::int32_t* past = &out[n];
        for (std::size_t j = kOrder; j > 0; --j)
            both -= pairs[j] * static_cast<std::uint64_t>(std::int64_t{past[kOrder - j]});
        const auto low = static_cast<std::int32_t>(both & 0xffffffff);
        out[kOrder + n] = low >> 12;
        if (isLast) break;
        const auto above = static_cast<std::uint32_t>(
            (both - static_cast<std::uint64_t>(std::int64_t{low})) >> 32);
        out[kOrder + n + 1] =
            static_cast<std::int32_t>(above - c1 * static_cast<std::uint32_t>(low >> 12)) >> 12;
    }
    std::int32_t low = 0, high = 0;
    for (std::size_t n = 0; n < kOrder + x.size(); ++n) {
        low = std::min(low, out[n]);
        high = std::max(high, out[n]);
    }
    for (std::size_t n = 0; n < x.size(); ++n) {
        low = std::min(low, in[n]);
        high = std::max(high, in[n]);
    }
    if (low <= fx::kMin16 || high >= fx::kMax16 ||
        reach * std::max(-low, high) >= (std::int64_t{1} << 30) - 4096)
        return synthesisScalar(a, x, y, memory);
    for (std::size_t n = 0; n < x.size(); ++n)
        y[n] = static_cast<Word>(out[kOrder + n]);
    for (std::size_t n = 0; n < kOrder; ++n)
        memory[n] = static_cast<Word>(out[x.size() + n]);
    return false;
}

/// Weight_Az: p[i] = a[i] gamma^i, the power rounded from step to step.
constexpr void weight(In<kTaps> a_Q12, Word gamma_Q15, Out<kTaps> p_Q12) noexcept
{
    Word factor = gamma_Q15;
    p_Q12[0] = a_Q12[0];
    for (std::size_t i = 1; i < kOrder; ++i) {
        p_Q12[i] = fx::round_fx(fx::l_mult(a_Q12[i], factor));
        factor = fx::round_fx(fx::l_mult(factor, gamma_Q15));
    }
    p_Q12[kOrder] = fx::round_fx(fx::l_mult(a_Q12[kOrder], factor));
}

/// dst[i] = src1[i] factor1 / 2^scale1 + src2[i] factor2 / 2^scale2, rounded once and limited.
/// Scales are 0 to 31.
void interpolate(In16 src1, Word factor1, int scale1, In16 src2, Word factor2, int scale2,
                 Out16 dst) noexcept;

} // namespace zsp::celp
