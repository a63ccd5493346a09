// What the searches of ITU-T G.723.1 share with the vectors that they choose.
#pragma once

#include "codecs/g723/g723.hpp"

namespace zsp::g723 {

/// The lag of a sub-frame: its pair's, moved by its own offset.
inline int lagOf(const ZspG723Frame& f, std::size_t subframe) noexcept
{
    return f.lag[subframe / 2] + f.lagOffset[subframe] - 1;
}

inline constexpr std::size_t kGainWords = 20;

/// A vector of the adaptive codebook's gains.
const Word* gainVector(bool smallBook, std::size_t index) noexcept;

/// The last period of the excitation, again and again, and two words before it.
void pastPeriod(In<kPast> past, int lag, Out<kSubframe + 4> residual) noexcept;

/// Five taps over a residual.
void filterPeriod(In<kSubframe + 4> residual, const Word* taps_Q14, Out<kSubframe> dst) noexcept;

/// Adds a vector to itself, later by one period, by two and so on.
void repeatPulses(Out<kSubframe> x, std::size_t period) noexcept;

/// The recursion over the pitch at 5.3 kbit/s; out of use with a lag of 58 or more.
struct Sharpening {
    int lag;
    Word gain_Q15;
};
Sharpening sharpeningOf(const ZspG723Frame& f, std::size_t subframe) noexcept;
void sharpen(Out<kSubframe> x, const Sharpening& s) noexcept;

} // namespace zsp::g723
