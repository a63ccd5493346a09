// Sub-band filter bank, float family.
//
//   analysis    fold[i] = sum of x[i + m N] w[i + m N] over m, then the real FFT of fold
//   synthesis   acc[i] += t[i mod N] w[L-1-i] with the inverse FFT t, then the first hop leaves
//
// x holds the newest L samples, oldest first; N is the transform's length and divides L. The work
// buffer holds the folded block, then the transform's own area.

#include "subband_bank.hpp"

#include "avx2.hpp"
#include "bulk.hpp"
#include "entries.hpp"
#include "state.hpp"
#include "subband_windows.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace zsp::ec {

void foldScalar(InF delay, InF window, OutF fold) noexcept
{
    const std::size_t n = fold.size();
    for (std::size_t i = 0; i < n; ++i)
        fold[i] = delay[i] * window[i];
    for (std::size_t i = n; i < window.size(); ++i)
        fold[i % n] = std::fma(delay[i], window[i], fold[i % n]);
}

void foldAvx2(InF delay, InF window, OutF fold) noexcept
{
    const std::size_t n = fold.size();
    if (n < 8) return foldScalar(delay, window, fold);
    for (std::size_t j = 0; j < n; j += 8) {
        __m256 sum = _mm256_mul_ps(avx2::load(&delay[j]), avx2::load(&window[j]));
        for (std::size_t i = j + n; i < window.size(); i += n)
            sum = _mm256_fmadd_ps(avx2::load(&delay[i]), avx2::load(&window[i]), sum);
        avx2::store(&fold[j], sum);
    }
}

void overlapAddScalar(InF time, InF window, OutF delay) noexcept
{
    const std::size_t n = time.size(), last = window.size() - 1;
    for (std::size_t i = 0; i < delay.size(); ++i)
        delay[i] = std::fma(time[i % n], window[last - i], delay[i]);
}

void overlapAddAvx2(InF time, InF window, OutF delay) noexcept
{
    const std::size_t n = time.size(), len = window.size();
    if (n < 8) return overlapAddScalar(time, window, delay);
    const __m256i reverse = _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0);
    for (std::size_t i = 0; i < len; i += 8) {
        const __m256 taps = _mm256_permutevar8x32_ps(avx2::load(&window[len - 8 - i]), reverse);
        avx2::store(&delay[i],
                    _mm256_fmadd_ps(avx2::load(&time[i & (n - 1)]), taps, avx2::load(&delay[i])));
    }
}

namespace {

/// The folded block at the first 64-byte boundary of the caller's work buffer; the transform's area
/// comes after it.
struct Work {
    Work(void* buffer, std::size_t n) noexcept
        : block(static_cast<float*>(alignUp(buffer, common::kFftAlignment))),
          fft(static_cast<float*>(alignUp(block + n, common::kFftAlignment)))
    {
    }

    float* block;
    float* fft;
};

BankSizes bankSizes(std::int32_t order, std::int32_t windowLen) noexcept
{
    const std::int64_t n = std::int64_t{1} << order;
    // 56 is the record and its alignment; the areas' alignment is in the plan's size. 16 is that of
    // the folded block; the rest of its alignment is in the transform's work size.
    return {.state = common::realFftPlanSize(order) + 8 * std::int64_t{windowLen} + 56,
            .initBuffer = 0,
            .workBuffer = common::realFftWorkSize(order) + 4 * n + 16};
}

bool isBuiltIn(std::int32_t order, std::int32_t frameSize, std::int32_t windowLen) noexcept
{
    return (order == 5 && frameSize == 24 && windowLen == 128) ||
           (order == 6 && frameSize == 44 && windowLen == 256);
}

void initState(void* state, std::int32_t order, std::int32_t frameSize, std::int32_t windowLen,
               const float* window) noexcept
{
    const auto len = static_cast<std::size_t>(windowLen);
    auto* s = alignedState<SubbandState32f>(state);
    auto* taps = static_cast<float*>(alignUp(s + 1, common::kFftAlignment));
    float* delayLine = taps + len;
    *s = {.windowLen = windowLen,
          .fftLen = std::int32_t{1} << order,
          .frameSize = frameSize,
          .delayLine = delayLine,
          .window = taps,
          .fft = common::initRealFft(delayLine + len, order)};
    if (!window) window = order == 5 ? kWindow128.data() : kWindow256.data();
    copy(std::as_bytes(InF{window, len}), std::as_writable_bytes(OutF{taps, len}));
    zeroFill(std::as_writable_bytes(OutF{delayLine, len}));
}

/// Drops the oldest samples of a delay line to make room at its end.
void shift(OutF delay, std::size_t count) noexcept
{
    std::memmove(delay.data(), &delay[count], (delay.size() - count) * sizeof(float));
}

void analyse(const SubbandState32f& s, InF src, common::OutBins dst, void* workBuf) noexcept
{
    const auto len = static_cast<std::size_t>(s.windowLen);
    const auto n = static_cast<std::size_t>(s.fftLen);
    const OutF delay{s.delayLine, len};
    const Work work(workBuf, n);
    shift(delay, src.size());
    std::copy(src.begin(), src.end(), delay.last(src.size()).begin());
    foldAvx2(delay, {s.window, len}, {work.block, n});
    common::realFftForward(*s.fft, {work.block, n}, dst, work.fft);
}

void synthesise(const SubbandState32f& s, common::InBins src, OutF dst, void* workBuf) noexcept
{
    const auto len = static_cast<std::size_t>(s.windowLen);
    const auto n = static_cast<std::size_t>(s.fftLen);
    const OutF delay{s.delayLine, len};
    const Work work(workBuf, n);
    common::realFftInverse(*s.fft, src, {work.block, n}, work.fft);
    shift(delay, dst.size());
    std::fill(delay.end() - s.frameSize, delay.end(), 0.0F);
    overlapAddAvx2({work.block, n}, {s.window, len}, delay);
    std::copy_n(delay.begin(), dst.size(), dst.begin());
}

} // namespace

} // namespace zsp::ec

namespace zsp::entry {

ZspStatus zspsSubbandProcessGetSize_32f(std::int32_t order, std::int32_t windowLen,
                                        std::int32_t* stateSize, std::int32_t* initBufSize,
                                        std::int32_t* workBufSize)
{
    if (order < 1 || windowLen < 1) return zspStsBadArgErr;
    if (!stateSize || !initBufSize || !workBufSize) return zspStsNullPtrErr;
    if (!ec::isWholeBlocks(windowLen, order)) return zspStsBadArgErr;
    const ec::BankSizes sizes = ec::bankSizes(order, windowLen);
    if (!sizes.fit()) return zspStsBadArgErr;

    *stateSize = static_cast<std::int32_t>(sizes.state);
    *initBufSize = static_cast<std::int32_t>(sizes.initBuffer);
    *workBufSize = static_cast<std::int32_t>(sizes.workBuffer);
    return zspStsNoErr;
}

ZspStatus zspsSubbandProcessInit_32f(void* state, std::int32_t order, std::int32_t frameSize,
                                     std::int32_t windowLen, const float* window,
                                     [[maybe_unused]] void* initBuf)
{
    if (order < 1 || frameSize < 1 || windowLen < 1) return zspStsBadArgErr;
    if (order < 31 && frameSize > std::int32_t{1} << order) return zspStsBadArgErr;
    if (!state) return zspStsNullPtrErr;
    if (!ec::isWholeBlocks(windowLen, order)) return zspStsBadArgErr;
    if (!window && !ec::isBuiltIn(order, frameSize, windowLen)) return zspStsBadArgErr;
    if (order > common::kMaxFftOrder) return zspStsInternalErr;

    ec::initState(state, order, frameSize, windowLen, window);
    return zspStsNoErr;
}

ZspStatus zspsSubbandAnalysis_32f32fc(const float* src, Zsp32fc* dst, void* state, void* workBuf)
{
    if (!src || !dst || !state || !workBuf) return zspStsNullPtrErr;

    const auto& s = *alignedState<ec::SubbandState32f>(state);
    const auto n = static_cast<std::size_t>(s.fftLen);
    ec::analyse(s, {src, static_cast<std::size_t>(s.frameSize)}, {dst, n / 2 + 1}, workBuf);
    return zspStsNoErr;
}

ZspStatus zspsSubbandSynthesis_32fc32f(const Zsp32fc* src, float* dst, void* state, void* workBuf)
{
    if (!src || !dst || !state || !workBuf) return zspStsNullPtrErr;

    const auto& s = *alignedState<ec::SubbandState32f>(state);
    const auto n = static_cast<std::size_t>(s.fftLen);
    ec::synthesise(s, {src, n / 2 + 1}, {dst, static_cast<std::size_t>(s.frameSize)}, workBuf);
    return zspStsNoErr;
}

} // namespace zsp::entry
