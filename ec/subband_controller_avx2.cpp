// The controller's two loops over the bins of a frame, eight bins at a time. What is left over
// takes the definitions.

#include "core/avx2.hpp"
#include "ec/subband_controller.hpp"

#include <cstddef>

namespace zsp::ec {

namespace {

// Eight bins at a time. The powers of eight complex values leave vhaddps in the order
// 0 1 4 5 2 3 6 7; avx2::swapMiddle() puts them right, once per sum.
__m256 powers(const Zsp32fc* v) noexcept
{
    const __m256 low = avx2::load(&v[0].re), high = avx2::load(&v[4].re);
    return _mm256_hadd_ps(_mm256_mul_ps(low, low), _mm256_mul_ps(high, high));
}

__m256 smooth(float alpha, __m256 value, __m256 next) noexcept
{
    return _mm256_add_ps(_mm256_mul_ps(_mm256_set1_ps(alpha), value),
                         _mm256_mul_ps(_mm256_set1_ps(1 - alpha), next));
}

/// Copies the bins whose lanes in `which` are set, of eight from `bin` on, in all taps.
void copyTaps(Zsp32fc* const* from, Zsp32fc* const* to, std::size_t numTaps, std::size_t bin,
              __m256 which) noexcept
{
    const __m256i lanes = _mm256_castps_si256(which);
    const __m256 low = _mm256_castsi256_ps(_mm256_cvtepi32_epi64(_mm256_castsi256_si128(lanes)));
    const __m256 high =
        _mm256_castsi256_ps(_mm256_cvtepi32_epi64(_mm256_extracti128_si256(lanes, 1)));
    for (std::size_t t = 0; t < numTaps; ++t) {
        const float* source = &from[t][bin].re;
        float* target = &to[t][bin].re;
        avx2::store(target, _mm256_blendv_ps(avx2::load(target), avx2::load(source), low));
        avx2::store(target + 8,
                    _mm256_blendv_ps(avx2::load(target + 8), avx2::load(source + 8), high));
    }
}

/// Continues a sum lane by lane, in order.
float addLanes(float sum, __m256 lanes) noexcept
{
    alignas(32) float values[8];
    avx2::store(values, lanes);
    for (const float v : values)
        sum += v;
    return sum;
}

} // namespace

void stepSizesAvx2(const StepRule& rule, SubbandVector newest, SubbandVector oldest,
                   OutF inputPower, std::span<double> stepSize) noexcept
{
    const __m256 mu = _mm256_set1_ps(rule.mu);
    const __m256 threshold = _mm256_set1_ps(rule.powerThreshold);
    const __m256 minStep = _mm256_set1_ps(rule.minStep);
    std::size_t k = 0;
    for (; k + 8 <= inputPower.size(); k += 8) {
        const __m256 full =
            _mm256_add_ps(avx2::load(&inputPower[k]), avx2::swapMiddle(powers(&newest[k])));
        const __m256 step = _mm256_blendv_ps(minStep, _mm256_div_ps(mu, full),
                                             _mm256_cmp_ps(full, threshold, _CMP_GT_OQ));
        _mm256_storeu_pd(&stepSize[k], _mm256_cvtps_pd(_mm256_castps256_ps128(step)));
        _mm256_storeu_pd(&stepSize[k + 4], _mm256_cvtps_pd(_mm256_extractf128_ps(step, 1)));
        const __m256 left = _mm256_sub_ps(full, avx2::swapMiddle(powers(&oldest[k])));
        avx2::store(&inputPower[k], _mm256_max_ps(left, _mm256_setzero_ps()));
    }
    stepSizesScalar(rule, newest.subspan(k), oldest.subspan(k), inputPower.subspan(k),
                    stepSize.subspan(k));
}

ErrorSums compareFiltersAvx2(ControllerState& s, const FilterPair& filters) noexcept
{
    const auto numBands = static_cast<std::size_t>(s.numBands);
    const auto numTaps = static_cast<std::size_t>(s.numTaps);
    const __m256 sign = _mm256_set1_ps(-0.0F);
    ErrorSums sums;
    std::size_t k = 0;
    for (; k + 8 <= numBands; k += 8) {
        __m256 coefs = _mm256_setzero_ps();
        for (std::size_t t = 0; t < numTaps; ++t)
            coefs = _mm256_add_ps(coefs, powers(&filters.adaptCoefs[t][k]));
        coefs = avx2::swapMiddle(coefs);

        const __m256 oldCoefs = avx2::load(&s.coefPower[k]);
        const __m256 change = _mm256_andnot_ps(sign, _mm256_sub_ps(oldCoefs, coefs));
        const __m256 newCoefs = smooth(s.alpha9, oldCoefs, coefs);
        avx2::store(&s.coefPower[k], newCoefs);
        __m256 fixedErr = smooth(s.alpha15, avx2::load(&s.fixedErrPower[k]),
                                 avx2::swapMiddle(powers(&filters.fixedErr[k])));
        __m256 adaptErr = smooth(s.alpha15, avx2::load(&s.adaptErrPower[k]),
                                 avx2::swapMiddle(powers(&filters.adaptErr[k])));

        const __m256 settled =
            _mm256_cmp_ps(change, _mm256_mul_ps(_mm256_set1_ps(0.1F), newCoefs), _CMP_LT_OQ);
        const __m256 better =
            _mm256_cmp_ps(adaptErr, _mm256_mul_ps(_mm256_set1_ps(0.35F), fixedErr), _CMP_LT_OQ);
        const __m256 worse =
            _mm256_cmp_ps(adaptErr, _mm256_mul_ps(_mm256_set1_ps(1.5F), fixedErr), _CMP_GT_OQ);
        const __m256 save = _mm256_and_ps(settled, better);
        const __m256 restore = _mm256_andnot_ps(save, worse);

        if (_mm256_movemask_ps(save)) {
            copyTaps(filters.adaptCoefs, filters.fixedCoefs, numTaps, k, save);
            fixedErr = _mm256_blendv_ps(fixedErr, adaptErr, save);
            sums.saved = addLanes(sums.saved, _mm256_and_ps(fixedErr, save));
        }
        if (_mm256_movemask_ps(restore)) {
            copyTaps(filters.fixedCoefs, filters.adaptCoefs, numTaps, k, restore);
            adaptErr = _mm256_blendv_ps(adaptErr, fixedErr, restore);
            sums.restored = addLanes(sums.restored, _mm256_and_ps(fixedErr, restore));
        }
        sums.all = addLanes(sums.all, fixedErr);
        avx2::store(&s.fixedErrPower[k], fixedErr);
        avx2::store(&s.adaptErrPower[k], adaptErr);
    }
    return compareFiltersScalar(s, filters, k, sums);
}

} // namespace zsp::ec
