// Real FFT: the definition, and the choice of the fast transform by order.

#include "common/fft/real_fft.hpp"

#include "common/fft/dft.hpp"
#include "common/fft/real_fft_avx2.hpp"

#include <cstddef>

namespace zsp::common {

void realFftForwardScalar(InF time, OutBins bins) noexcept
{
    for (std::size_t k = 0; k < bins.size(); ++k) {
        const Root bin = dftBin(time, k);
        bins[k] = {static_cast<float>(bin.re), static_cast<float>(bin.im)};
    }
    bins.front().im = bins.back().im = 0;
}

void realFftInverseScalar(InBins bins, OutF time) noexcept
{
    for (std::size_t n = 0; n < time.size(); ++n)
        time[n] = static_cast<float>(dftSample(bins, n));
}

void realFftForward(const RealFftPlan& plan, InF time, OutBins bins, float* work) noexcept
{
    float* out = &bins[0].re;
    if (plan.order == 5) return forward32(plan, time.data(), out);
    if (plan.order == 6) return forward64(plan, time.data(), out);
    if (plan.order <= kMaxMatrixOrder) return forwardShort(plan, time.data(), out);
    return forwardLong(plan, time.data(), out, work);
}

void realFftInverse(const RealFftPlan& plan, InBins bins, OutF time, float* work) noexcept
{
    const float* in = &bins[0].re;
    if (plan.order == 5) return inverse32(plan, in, time.data());
    if (plan.order == 6) return inverse64(plan, in, time.data());
    if (plan.order <= kMaxMatrixOrder) return inverseShort(plan, in, time.data());
    return inverseLong(plan, in, time.data(), work);
}

} // namespace zsp::common
