// Sub-band filter bank.
//
//   analysis    the newest L samples, windowed and folded onto N points, and their real FFT
//   synthesis   the inverse FFT, overlap-added with the reversed window into L accumulators, of
//               which the first hop leaves
//
// One set-up serves both families. The work buffer holds, from its first 16-byte boundary on, the
// block of N values that stands between window and transform, in 32 bits each, then the transform's
// own area.

#include "common/fft/real_fft.hpp"
#include "common/fft/real_fft_16s.hpp"
#include "core/bulk.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"
#include "ec/subband_fold.hpp"
#include "ec/subband_windows.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>

namespace zsp::ec {

namespace {

/// The window stands behind the record, then the room of the delay line, then the transform's plan.
struct State32f {
    using Sample = float;
    using Folded = float;

    std::int32_t windowLen;
    std::int32_t fftLen;
    std::int32_t frameSize;
    float* delayLine; // the newest windowLen samples, or the accumulators
    float* window;
    const common::RealFftPlan* fft;
};

struct State16s {
    using Sample = std::int16_t;
    using Folded = std::int32_t; // a word

    std::int16_t* delayLine;
    std::int16_t* window; // Q13
    const common::RealFftPlan* fft;
    std::int32_t windowLen;
    std::int32_t fftLen;
    std::int32_t frameSize;
};
static_assert(sizeof(State32f) == 40 && sizeof(State16s) == 40);

struct Sizes {
    std::int64_t state;
    std::int64_t workBuffer;
};

constexpr std::int64_t roundUp16(std::int64_t bytes) noexcept
{
    return (bytes + 15) & ~std::int64_t{15};
}

/// Instead of being shifted in every frame, the delay line moves on by one hop. It has room for
/// this many further samples, and is copied back to the beginning when it reaches the end.
constexpr std::int64_t spareSamples(std::int64_t fftLen) noexcept
{
    return 4 * fftLen;
}

/// Bytes of all that depends on the order alone: the transform's plan and the spare room.
template <typename Sample>
std::int64_t planSize(std::int32_t order) noexcept
{
    const std::int64_t spare = spareSamples(std::int64_t{1} << order);
    return common::realFftPlanSize(order) + spare * std::int64_t{sizeof(Sample)};
}

// Room for the record, the areas, and aligning state and work buffer to 16 bytes. The sizes of the
// plan and of the transform's work area include aligning the areas to 64 bytes.

Sizes sizesOf(const State32f*, std::int32_t order, std::int64_t windowLen) noexcept
{
    return {.state = planSize<float>(order) + 8 * windowLen + 40 + 16,
            .workBuffer = common::realFftWorkSize(order) + (std::int64_t{4} << order) + 16};
}

Sizes sizesOf(const State16s*, std::int32_t order, std::int64_t windowLen) noexcept
{
    return {
        .state = roundUp16(planSize<std::int16_t>(order)) + 2 * roundUp16(2 * windowLen) + 48 + 16,
        .workBuffer = common::realFft16sWorkSize(order) + roundUp16(std::int64_t{4} << order) + 16};
}

const float* builtInWindow(const State32f*, std::int32_t order) noexcept
{
    return order == 5 ? kWindow128.data() : kWindow256.data();
}

const std::int16_t* builtInWindow(const State16s*, std::int32_t order) noexcept
{
    return order == 5 ? kWindow128_Q13.data() : kWindow256_Q13.data();
}

/// Whether a window consists of whole transform lengths; for any order above 0.
constexpr bool isWholeBlocks(std::int32_t windowLen, std::int32_t order) noexcept
{
    return order < 31 && windowLen % (std::int32_t{1} << order) == 0;
}

constexpr bool isBuiltIn(std::int32_t order, std::int32_t frameSize,
                         std::int32_t windowLen) noexcept
{
    return (order == 5 && frameSize == 24 && windowLen == 128) ||
           (order == 6 && frameSize == 44 && windowLen == 256);
}

/// The whole room that the delay line moves through.
template <typename State>
std::span<typename State::Sample> delayRoom(const State& s) noexcept
{
    auto* start = static_cast<typename State::Sample*>(alignUp(s.window + s.windowLen, 16));
    return {start, static_cast<std::size_t>(s.windowLen + spareSamples(s.fftLen))};
}

template <typename State>
ZspStatus getSize(std::int32_t order, std::int32_t windowLen, std::int32_t* stateSize,
                  std::int32_t* initBufSize, std::int32_t* workBufSize) noexcept
{
    constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
    if (order < 1 || windowLen < 1) return zspStsBadArgErr;
    if (!stateSize || !initBufSize || !workBufSize) return zspStsNullPtrErr;
    if (!isWholeBlocks(windowLen, order)) return zspStsBadArgErr;
    const Sizes sizes = sizesOf(static_cast<State*>(nullptr), order, windowLen);
    if (sizes.state > kMax || sizes.workBuffer > kMax) return zspStsBadArgErr;

    *stateSize = static_cast<std::int32_t>(sizes.state);
    *initBufSize = 0; // the plan is built where it stays
    *workBufSize = static_cast<std::int32_t>(sizes.workBuffer);
    return zspStsNoErr;
}

template <typename State>
ZspStatus init(void* state, std::int32_t order, std::int32_t frameSize, std::int32_t windowLen,
               const typename State::Sample* window) noexcept
{
    using Sample = typename State::Sample;
    if (order < 1 || frameSize < 1 || windowLen < 1) return zspStsBadArgErr;
    if (order < 31 && frameSize > std::int32_t{1} << order) return zspStsBadArgErr;
    if (!state) return zspStsNullPtrErr;
    if (!isWholeBlocks(windowLen, order)) return zspStsBadArgErr;
    auto* s = alignedState<State>(state);
    s->window = static_cast<Sample*>(alignUp(s + 1, common::kFftAlignment)); // before all the rest
    if (!window && !isBuiltIn(order, frameSize, windowLen)) return zspStsBadArgErr;
    if (order > common::kMaxFftOrder) return zspStsInternalErr;

    const auto len = static_cast<std::size_t>(windowLen);
    s->windowLen = windowLen;
    s->fftLen = std::int32_t{1} << order;
    s->frameSize = frameSize;
    const std::span<Sample> room = delayRoom(*s);
    s->delayLine = room.data();
    s->fft = common::initRealFft(room.data() + room.size(), order);
    if (!window) window = builtInWindow(s, order);
    copy(std::as_bytes(std::span{window, len}), std::as_writable_bytes(std::span{s->window, len}));
    zeroFill(std::as_writable_bytes(std::span{s->delayLine, len}));
    return zspStsNoErr;
}

/// A state's arrays and the parts of the caller's work buffer.
template <typename State>
struct Frame {
    using Sample = typename State::Sample;
    using Folded = typename State::Folded;

    Frame(void* state, void* workBuf) noexcept
        : s(*alignedState<State>(state)), n(static_cast<std::size_t>(s.fftLen)),
          window(s.window, static_cast<std::size_t>(s.windowLen)),
          block(static_cast<Folded*>(alignUp(workBuf, 16)), n), fft(*s.fft),
          work(static_cast<float*>(alignUp(block.data() + n, common::kFftAlignment)))
    {
    }

    /// Drops the oldest samples and returns the delay line with room for a new frame at its end.
    std::span<Sample> advance() const noexcept
    {
        const std::span<Sample> room = delayRoom(s);
        Sample* moved = s.delayLine + s.frameSize;
        if (moved + s.windowLen > room.data() + room.size()) {
            const auto kept = static_cast<std::size_t>(s.windowLen - s.frameSize);
            std::memmove(room.data(), moved, kept * sizeof(Sample));
            moved = room.data();
        }
        s.delayLine = moved;
        return {moved, window.size()};
    }

    void analyse(const Sample* src) const noexcept
    {
        const std::span<Sample> delay = advance();
        std::copy_n(src, s.frameSize, delay.end() - s.frameSize);
        foldAvx2(delay, window, block);
    }

    void synthesise(Sample* dst) const noexcept
    {
        const std::span<Sample> delay = advance();
        std::fill_n(delay.end() - s.frameSize, s.frameSize, Sample{0});
        overlapAddAvx2(block, window, delay);
        std::copy_n(delay.begin(), s.frameSize, dst);
    }

    State& s;
    std::size_t n;
    std::span<const Sample> window;
    std::span<Folded> block;
    const common::RealFftPlan& fft;
    float* work;
};

} // namespace

} // namespace zsp::ec

namespace zsp::entry {

ZspStatus zspsSubbandProcessGetSize_32f(std::int32_t order, std::int32_t windowLen,
                                        std::int32_t* stateSize, std::int32_t* initBufSize,
                                        std::int32_t* workBufSize)
{
    return ec::getSize<ec::State32f>(order, windowLen, stateSize, initBufSize, workBufSize);
}

ZspStatus zspsSubbandProcessGetSize_16s(std::int32_t order, std::int32_t windowLen,
                                        std::int32_t* stateSize, std::int32_t* initBufSize,
                                        std::int32_t* workBufSize)
{
    return ec::getSize<ec::State16s>(order, windowLen, stateSize, initBufSize, workBufSize);
}

ZspStatus zspsSubbandProcessInit_32f(void* state, std::int32_t order, std::int32_t frameSize,
                                     std::int32_t windowLen, const float* window, void* /*initBuf*/)
{
    return ec::init<ec::State32f>(state, order, frameSize, windowLen, window);
}

ZspStatus zspsSubbandProcessInit_16s(void* state, std::int32_t order, std::int32_t frameSize,
                                     std::int32_t windowLen, const std::int16_t* window,
                                     void* /*initBuf*/)
{
    return ec::init<ec::State16s>(state, order, frameSize, windowLen, window);
}

ZspStatus zspsSubbandAnalysis_32f32fc(const float* src, Zsp32fc* dst, void* state, void* workBuf)
{
    if (!src || !dst || !state || !workBuf) return zspStsNullPtrErr;

    const ec::Frame<ec::State32f> frame(state, workBuf);
    frame.analyse(src);
    common::realFftForward(frame.fft, frame.block, {dst, frame.n / 2 + 1}, frame.work);
    return zspStsNoErr;
}

ZspStatus zspsSubbandAnalysis_16s32sc_Sfs(const std::int16_t* src, Zsp32sc* dst, void* state,
                                          std::int32_t scaleFactor, void* workBuf)
{
    if (!src || !dst || !state || !workBuf) return zspStsNullPtrErr;

    const ec::Frame<ec::State16s> frame(state, workBuf);
    frame.analyse(src);
    common::realFftForward16s(frame.fft, frame.block, {dst, frame.n / 2 + 1}, scaleFactor,
                              frame.work);
    return zspStsNoErr;
}

ZspStatus zspsSubbandSynthesis_32fc32f(const Zsp32fc* src, float* dst, void* state, void* workBuf)
{
    if (!src || !dst || !state || !workBuf) return zspStsNullPtrErr;

    const ec::Frame<ec::State32f> frame(state, workBuf);
    common::realFftInverse(frame.fft, {src, frame.n / 2 + 1}, frame.block, frame.work);
    frame.synthesise(dst);
    return zspStsNoErr;
}

ZspStatus zspsSubbandSynthesis_32sc16s_Sfs(const Zsp32sc* src, std::int16_t* dst, void* state,
                                           std::int32_t scaleFactor, void* workBuf)
{
    if (!src || !dst || !state || !workBuf) return zspStsNullPtrErr;

    const ec::Frame<ec::State16s> frame(state, workBuf);
    common::realFftInverse16s(frame.fft, {src, frame.n / 2 + 1}, frame.block, scaleFactor,
                              frame.work);
    frame.synthesise(dst);
    return zspStsNoErr;
}

} // namespace zsp::entry
