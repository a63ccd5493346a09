// The sub-band filter bank: against the transform, and from frame to frame.

#include "ec/subband_fold.hpp"

#include "tests/ec/subband_bank.hpp"
#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/spectrum.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/ec/bank.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <vector>

namespace {

using namespace zsp::test;

constexpr double kMaxInt = std::numeric_limits<std::int32_t>::max();
constexpr double kMinInt = std::numeric_limits<std::int32_t>::min();

Contract getSizeContract(const char* name, decltype(Float::getSize) function)
{
    const auto size = out<std::int32_t>(1);
    return Contract(name, function, {number(5), number(128), size, size, size})
        .nullChecksInRows()
        .row({{0, number(0)}}, zspStsBadArgErr)
        .row({{0, number(kMinInt)}}, zspStsBadArgErr)
        .row({{1, number(0)}}, zspStsBadArgErr)
        .row({{1, number(kMinInt)}}, zspStsBadArgErr)
        .row({{2, null()}}, zspStsNullPtrErr)
        .row({{3, null()}}, zspStsNullPtrErr)
        .row({{4, null()}}, zspStsNullPtrErr)
        .row({{1, number(127)}}, zspStsBadArgErr)
        .row({{1, number(16)}}, zspStsBadArgErr)
        .row({{0, number(31)}}, zspStsBadArgErr)
        .row({{0, number(64)}}, zspStsBadArgErr)
        .row({{0, number(kMaxInt)}}, zspStsBadArgErr)
        .row({{0, number(1)}, {1, number(kMaxInt - 1)}}, zspStsBadArgErr)
        .row({{0, number(30)}, {1, number(1 << 30)}}, zspStsBadArgErr);
}

template <typename Family>
Contract initContract(const char* name)
{
    return Contract(name, Family::init,
                    {state(bytes(Sizes<Family>(5, 128).state)), number(5), number(24), number(128),
                     in<typename Family::Sample>(128).optional(), null().optional()})
        .nullChecksInRows()
        .row({{1, number(0)}}, zspStsBadArgErr)
        .row({{1, number(kMinInt)}}, zspStsBadArgErr)
        .row({{2, number(0)}}, zspStsBadArgErr)
        .row({{2, number(33)}}, zspStsBadArgErr)
        .row({{2, number(kMaxInt)}}, zspStsBadArgErr)
        .row({{3, number(0)}}, zspStsBadArgErr)
        .row({{3, number(kMinInt)}}, zspStsBadArgErr)
        .row({{0, null()}}, zspStsNullPtrErr)
        .row({{3, number(127)}}, zspStsBadArgErr)
        .row({{3, number(16)}}, zspStsBadArgErr)
        .row({{1, number(31)}}, zspStsBadArgErr)
        .row({{1, number(kMaxInt)}}, zspStsBadArgErr);
}

template <typename Family>
Argument readyState()
{
    return state(bytes(Sizes<Family>(5, 128).state),
                 [](void* s) { Family::init(s, 5, 24, 128, nullptr, nullptr); });
}

template <typename Family>
Argument workBuffer()
{
    return out<std::byte>(bytes(Sizes<Family>(5, 128).work));
}

const bool registered = addContracts({
    getSizeContract(ZSP_NAMED(zspsSubbandProcessGetSize_32f)),
    getSizeContract(ZSP_NAMED(zspsSubbandProcessGetSize_16s)),
    initContract<Float>("zspsSubbandProcessInit_32f"),
    initContract<Fixed>("zspsSubbandProcessInit_16s"),
    Contract(ZSP_NAMED(zspsSubbandAnalysis_32f32fc),
             {in<float>(24), out<Zsp32fc>(17), readyState<Float>(), workBuffer<Float>()}),
    Contract(ZSP_NAMED(zspsSubbandSynthesis_32fc32f),
             {in<Zsp32fc>(17), out<float>(24), readyState<Float>(), workBuffer<Float>()}),
    Contract(ZSP_NAMED(zspsSubbandAnalysis_16s32sc_Sfs),
             {in<std::int16_t>(24), out<Zsp32sc>(17), readyState<Fixed>(), number(0),
              workBuffer<Fixed>()}),
    Contract(ZSP_NAMED(zspsSubbandSynthesis_32sc16s_Sfs),
             {in<Zsp32sc>(17), out<std::int16_t>(24), readyState<Fixed>(), number(0),
              workBuffer<Fixed>()}),
});

std::vector<Zsp32fc> randomBins(Samples& samples, std::size_t count)
{
    std::vector<Zsp32fc> bins(count);
    for (auto& b : bins)
        b = {samples.floats(1, 1e6F)[0], samples.floats(1, 1e6F)[0]};
    return bins;
}

TEST(Subband, AnalysisIsTheTransformOfTheFold)
{
    Samples samples(1);
    for (const Shape& shape : shapes()) {
        const auto window = samples.floats(bytes(shape.windowLen), 1);
        Bank<Float> bank(shape.order, shape.frameSize, shape.windowLen, window.data());
        std::vector<float> delay(window.size()), fold(shape.points());
        for (int i = 0; i < 2; ++i) {
            const auto frame = samples.floats(bytes(shape.frameSize), 32768);
            delay = shifted(delay, frame);
            zsp::ec::foldScalar(delay, window, fold);
            const auto& bins = bank.analyse(frame);
            EXPECT_LT(errorDb(bins, exactBins(fold)), -130) << shape.name();
            EXPECT_TRUE(bins.front().im == 0 && bins.back().im == 0);
        }
    }
}

TEST(Subband, SynthesisAddsTheInverseTransforms)
{
    Samples samples(2);
    for (const Shape& shape : shapes()) {
        const auto window = samples.floats(bytes(shape.windowLen), 1);
        Bank<Float> bank(shape.order, shape.frameSize, shape.windowLen, window.data());
        std::vector<long double> sum(window.size()), want;
        std::vector<float> got;
        for (int i = 0; i < 3; ++i) {
            const auto bins = randomBins(samples, shape.points() / 2 + 1);
            const auto time = exactTime(bins);
            sum = shifted(sum, std::vector<long double>(bytes(shape.frameSize)));
            for (std::size_t k = 0; k < sum.size(); ++k)
                sum[k] +=
                    time[k % time.size()] * static_cast<long double>(window[window.size() - 1 - k]);
            const auto& frame = bank.synthesise(bins);
            got.insert(got.end(), frame.begin(), frame.end());
            want.insert(want.end(), sum.begin(), sum.begin() + shape.frameSize);
        }
        EXPECT_LT(errorDb(got, want), -120) << shape.name();
    }
}

// With any hop and window, a bank does what its two loops and its transforms do, for longer than
// the delay line takes to come back to where it began.
template <typename Family, typename Make>
void expectFramesOverlap(const Shape& shape, Make make)
{
    using Sample = typename Family::Sample;
    const std::int32_t n = 1 << shape.order;
    const std::vector<Sample> window = make(bytes(shape.windowLen));
    const std::vector<Sample> one(shape.points(), std::is_same_v<Family, Float> ? 1 : 8192);
    Bank<Family> bank(shape.order, shape.frameSize, shape.windowLen, window.data());
    Bank<Family> back(shape.order, shape.frameSize, shape.windowLen, window.data());
    Bank<Family> plain(shape.order, n, n, one.data()), plainBack(shape.order, n, n, one.data());
    std::vector<Sample> delay(window.size()), sum(window.size());
    std::vector<typename Family::Folded> fold(shape.points());
    for (int i = std::min(5 * n / shape.frameSize + 3, 40); i > 0; --i) {
        const std::vector<Sample> frame = make(bytes(shape.frameSize));
        delay = shifted(delay, frame);
        zsp::ec::foldScalar(delay, window, fold);
        const auto want = plain.analyse({fold.begin(), fold.end()}, 3);
        const auto got = bank.analyse(frame, 3);
        expectEqual(bank.block(), fold, "fold, " + shape.name());
        for (std::size_t k = 0; k < want.size(); ++k)
            ASSERT_TRUE(got[k].re == want[k].re && got[k].im == want[k].im) << shape.name();

        sum = shifted(sum, std::vector<Sample>(bytes(shape.frameSize)));
        const auto time = plainBack.synthesise(want, 2);
        zsp::ec::overlapAddScalar(std::vector<typename Family::Folded>(time.begin(), time.end()),
                                  window, sum);
        const auto& out = back.synthesise(want, 2);
        expectEqual(out, std::vector(sum.begin(), sum.begin() + shape.frameSize), shape.name());
    }
}

TEST(Subband, FramesOverlap)
{
    Samples samples(6);
    for (const Shape& shape : shapes()) {
        expectFramesOverlap<Float>(shape, [&](std::size_t len) { return samples.floats(len, 2); });
        expectFramesOverlap<Fixed>(shape, [&](std::size_t len) { return samples.words(len); });
    }
}

// The one thing that a failed initialisation writes: the pointer to the window's place, set before
// anybody asks whether there is such a window, or such a transform.
template <typename Family>
void expectWindowPointerAlone(std::size_t offset, std::int32_t order, std::int32_t frameSize,
                              const typename Family::Sample* window, ZspStatus want)
{
    alignas(16) std::array<std::byte, 512> state;
    state.fill(std::byte{0xA5});
    const auto before = state;
    EXPECT_EQ(Family::init(state.data(), order, frameSize, 1 << order, window, nullptr), want);
    std::byte* place = nullptr;
    std::memcpy(&place, &state[offset], sizeof place);
    EXPECT_TRUE(place >= &state[40] && place < &state[40 + 64]) << "behind the record";
    std::copy_n(before.begin() + static_cast<std::ptrdiff_t>(offset), sizeof place,
                state.begin() + static_cast<std::ptrdiff_t>(offset));
    EXPECT_EQ(state, before);
}

TEST(Subband, FailedInitialisationSetsTheWindowPointer)
{
    constexpr std::size_t kIn32f = 24, kIn16s = 8; // its offset in the record
    expectWindowPointerAlone<Float>(kIn32f, 5, 20, nullptr, zspStsBadArgErr);
    expectWindowPointerAlone<Fixed>(kIn16s, 6, 64, nullptr, zspStsBadArgErr);
    const float tap = 1;
    const std::int16_t tap_Q13 = 8192;
    expectWindowPointerAlone<Float>(kIn32f, 27, 1, &tap, zspStsInternalErr);
    expectWindowPointerAlone<Fixed>(kIn16s, 30, 1, &tap_Q13, zspStsInternalErr);
}

} // namespace
