// The tables of ITU-T G.726 in the form in which the vector coder reads them: by code word, and by
// number of decision levels above a difference. Made from those of g726_tables.hpp.
#pragma once

#include "codecs/g726/g726_tables.hpp"

namespace zsp::g726 {

inline constexpr std::int32_t kNegative = -2147483647 - 1; // the top bit

/// What a code word means to the adaptation.
struct alignas(32) Step {
    std::int32_t level;  // RECONST, in 1/128
    std::int32_t w;      // 32 * W(I)
    std::int32_t f;      // F(I) << 9
    std::int32_t ugb;    // UGB for a positive delayed dq, in the upper half; 0 for a dq of 0
    std::int32_t marked; // of dq: its sign in the top bit, and bit 0 set
    std::int32_t code;
};

template <std::size_t Index>
struct Rate {
    static constexpr const RateTables& kTables = kRates[Index];
    static constexpr std::size_t kCodes = std::size_t{1} << kTables.bits;
    static constexpr std::size_t kHalf = kCodes / 2;

    static constexpr Step step(std::size_t code)
    {
        const bool negative = code >= kHalf;
        const std::int32_t ugb = (negative ? -128 : 128) * 65536;
        return {kTables.level[code],
                32 * kTables.w[code],
                kTables.f[code] * 512,
                kTables.level[code] == -2048 ? 0 : ugb,
                (negative ? kNegative : 0) | 1,
                static_cast<std::int32_t>(code)};
    }

    static constexpr std::array<Step, kCodes> kSteps = [] {
        std::array<Step, kCodes> steps{};
        for (std::size_t code = 0; code < kCodes; ++code)
            steps[code] = step(code);
        return steps;
    }();

    // The decision levels between two code words, highest first: how many of them lie above a
    // difference chooses its code word. 9 octaves up, so that the thresholds are in the upper half.
    static constexpr std::size_t kLevels = kHalf - 1;
    static constexpr std::size_t kLanes = kHalf <= 8 ? 8 : 16;
    static constexpr std::array<std::int32_t, kLanes> kDecision = [] {
        std::array<std::int32_t, kLanes> levels{};
        levels.fill(-2048);
        std::size_t n = 0;
        for (std::size_t i = 1; i < kTables.decision.size(); ++i)
            if (kTables.positiveCode[i] != kTables.positiveCode[i + 1])
                levels[n++] = kTables.decision[i] + 9 * 128;
        return levels;
    }();

    /// Above 16 kbit/s the smallest differences have one code word for both signs.
    static constexpr bool kSingleZero = Index > 0;

    /// The code words by sign of the difference and by number of levels above it.
    static constexpr std::array<std::array<Step, kHalf>, 2> kQuantised = [] {
        std::array<std::array<Step, kHalf>, 2> all{};
        for (std::size_t above = 0; above < kHalf; ++above) {
            const std::size_t magnitude = kLevels - above;
            all[0][above] = step(kSingleZero && magnitude == 0 ? kCodes - 1 : magnitude);
            all[1][above] = step(kCodes - 1 - magnitude);
        }
        return all;
    }();

    /// Their reconstruction levels.
    static constexpr std::array<std::int32_t, kLanes> kReconstructed = [] {
        std::array<std::int32_t, kLanes> levels{};
        levels.fill(-2048);
        for (std::size_t above = 0; above < kHalf; ++above)
            levels[above] = kQuantised[1][above].level;
        return levels;
    }();
};

} // namespace zsp::g726
