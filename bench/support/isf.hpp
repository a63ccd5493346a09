// Immittance spectral frequencies for benchmarks.
#pragma once

#include "bench/support/pool.hpp"
#include "codecs/amrwb/amrwb_isf.hpp"

#include <array>
#include <vector>

namespace zsp::bench {

using Isf = std::array<std::int16_t, amrwb::kIsfOrder>;

/// Vectors as the codec has them: the mean and some noise.
inline std::vector<Isf> frequencies()
{
    WordPool pool(1, 150);
    std::vector<Isf> all(512);
    for (Isf& isf : all) {
        const auto noise = pool.next(isf.size());
        for (std::size_t i = 0; i < isf.size(); ++i)
            isf[i] = static_cast<std::int16_t>(amrwb::kNoiseMean[i] + noise[i]);
    }
    return all;
}

} // namespace zsp::bench
