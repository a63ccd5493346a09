#include "subband_bank.hpp"
#include "subband_windows.hpp"

#include "support/contract.hpp"
#include "support/samples.hpp"
#include "support/spectrum.hpp"
#include "support/vectors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace zsp::test;

constexpr std::int32_t kMaxInt = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMinInt = std::numeric_limits<std::int32_t>::min();

struct Sizes {
    std::int32_t state = 0, init = 0, work = 0;

    Sizes(std::int32_t order, std::int32_t windowLen)
    {
        zspsSubbandProcessGetSize_32f(order, windowLen, &state, &init, &work);
    }
};

std::size_t bytes(std::int32_t size)
{
    return static_cast<std::size_t>(size);
}

Argument readyState()
{
    return state(bytes(Sizes(5, 128).state),
                 [](void* s) { zspsSubbandProcessInit_32f(s, 5, 24, 128, nullptr, nullptr); });
}

const bool registered = addContracts({
    Contract(
        ZSP_NAMED(zspsSubbandProcessGetSize_32f),
        {number(5), number(128), out<std::int32_t>(1), out<std::int32_t>(1), out<std::int32_t>(1)})
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
        .row({{0, number(30)}, {1, number(1 << 30)}}, zspStsBadArgErr),
    Contract(ZSP_NAMED(zspsSubbandProcessInit_32f),
             {state(bytes(Sizes(5, 128).state)), number(5), number(24), number(128),
              in<float>(128).optional(), null().optional()})
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
        .row({{1, number(kMaxInt)}}, zspStsBadArgErr)
        .row({{2, number(20)}, {4, null()}}, zspStsBadArgErr),
    Contract(ZSP_NAMED(zspsSubbandAnalysis_32f32fc), {in<float>(24), out<Zsp32fc>(17), readyState(),
                                                      out<std::byte>(bytes(Sizes(5, 128).work))}),
    Contract(
        ZSP_NAMED(zspsSubbandSynthesis_32fc32f),
        {in<Zsp32fc>(17), out<float>(24), readyState(), out<std::byte>(bytes(Sizes(5, 128).work))}),
});

/// A float state with its work buffer, both of the reported sizes and at odd addresses.
class Bank {
  public:
    Bank(std::int32_t order, std::int32_t frameSize, std::int32_t windowLen, const float* window)
        : bins_((std::size_t{1} << order) / 2 + 1), frame_(bytes(frameSize))
    {
        const Sizes sizes(order, windowLen);
        state_.resize(bytes(sizes.state) + 1);
        work_.resize(bytes(sizes.work) + 1);
        EXPECT_EQ(sizes.init, 0);
        EXPECT_EQ(
            zspsSubbandProcessInit_32f(&state_[1], order, frameSize, windowLen, window, nullptr),
            zspStsNoErr);
    }

    const std::vector<Zsp32fc>& analyse(const float* frame)
    {
        EXPECT_EQ(zspsSubbandAnalysis_32f32fc(frame, bins_.data(), &state_[1], &work_[1]),
                  zspStsNoErr);
        return bins_;
    }

    const std::vector<float>& synthesise(const std::vector<Zsp32fc>& bins)
    {
        EXPECT_EQ(zspsSubbandSynthesis_32fc32f(bins.data(), frame_.data(), &state_[1], &work_[1]),
                  zspStsNoErr);
        return frame_;
    }

  private:
    std::vector<std::byte> state_, work_;
    std::vector<Zsp32fc> bins_;
    std::vector<float> frame_;
};

struct Shape {
    std::int32_t order, frameSize, windowLen;
};

/// Every order, with one block and several, hops from one sample to a whole block.
std::vector<Shape> shapes()
{
    std::vector<Shape> all = {{5, 24, 128}, {6, 44, 256}, {5, 20, 160}, {6, 40, 320}};
    for (std::int32_t order = 1; order <= 12; ++order) {
        const std::int32_t n = 1 << order;
        all.insert(all.end(), {{order, n, n}, {order, n / 2, 2 * n}, {order, 1, 3 * n}});
        if (order > 2) all.push_back({order, n - 3, 5 * n});
    }
    return all;
}

std::string name(const Shape& s)
{
    return "order " + std::to_string(s.order) + ", hop " + std::to_string(s.frameSize) + ", " +
           std::to_string(s.windowLen) + " taps";
}

/// The delay line after a shift by one frame.
std::vector<float> shifted(std::vector<float> delay, const std::vector<float>& frame)
{
    delay.erase(delay.begin(), delay.begin() + static_cast<std::ptrdiff_t>(frame.size()));
    delay.insert(delay.end(), frame.begin(), frame.end());
    return delay;
}

TEST(Subband, AnalysisIsTheTransformOfTheFold)
{
    Samples samples(1);
    for (const Shape& shape : shapes()) {
        const auto window = samples.floats(bytes(shape.windowLen), 1);
        Bank bank(shape.order, shape.frameSize, shape.windowLen, window.data());
        std::vector<float> delay(window.size()), fold(std::size_t{1} << shape.order);
        for (int i = 0; i < 3; ++i) {
            const auto frame = samples.floats(bytes(shape.frameSize), 32768);
            delay = shifted(delay, frame);
            zsp::ec::foldScalar(delay, window, fold);
            const auto& bins = bank.analyse(frame.data());
            EXPECT_LT(errorDb(bins, exactBins(fold)), -130) << name(shape);
            EXPECT_TRUE(bins.front().im == 0 && bins.back().im == 0);
        }
    }
}

TEST(Subband, SynthesisAddsTheInverseTransforms)
{
    Samples samples(2);
    for (const Shape& shape : shapes()) {
        const auto window = samples.floats(bytes(shape.windowLen), 1);
        Bank bank(shape.order, shape.frameSize, shape.windowLen, window.data());
        std::vector<double> sum(window.size());
        std::vector<float> got;
        std::vector<double> want;
        for (int i = 0; i < 3; ++i) {
            std::vector<Zsp32fc> bins((std::size_t{1} << shape.order) / 2 + 1);
            for (auto& b : bins)
                b = {samples.floats(1, 1e6F)[0], samples.floats(1, 1e6F)[0]};
            const auto time = exactTime(bins);
            sum.erase(sum.begin(), sum.begin() + shape.frameSize);
            sum.resize(window.size());
            for (std::size_t k = 0; k < sum.size(); ++k)
                sum[k] += static_cast<double>(time[k % time.size()]) *
                          static_cast<double>(window[window.size() - 1 - k]);
            const auto& frame = bank.synthesise(bins);
            got.insert(got.end(), frame.begin(), frame.end());
            want.insert(want.end(), sum.begin(), sum.begin() + shape.frameSize);
        }
        EXPECT_LT(errorDb(got, want), -120) << name(shape);
    }
}

TEST(Subband, VectorLoopsEqualDefinitions)
{
    Samples samples(3);
    for (const Shape& shape : shapes()) {
        const std::size_t n = std::size_t{1} << shape.order;
        const auto window = samples.floats(bytes(shape.windowLen), 1);
        const auto delay = samples.floats(window.size(), 32768);
        const auto time = samples.floats(n, 32768);
        std::vector<float> want(n), got(n);
        zsp::ec::foldScalar(delay, window, want);
        zsp::ec::foldAvx2(delay, window, got);
        expectEqual(got, want, "fold, " + name(shape));

        auto wantSum = delay, gotSum = delay;
        zsp::ec::overlapAddScalar(time, window, wantSum);
        zsp::ec::overlapAddAvx2(time, window, gotSum);
        expectEqual(gotSum, wantSum, "overlap-add, " + name(shape));
    }
}

/// No window means these taps.
template <std::size_t L>
void expectTaps(std::int32_t order, std::int32_t frameSize, const std::array<float, L>& taps)
{
    Bank bank(order, frameSize, L, nullptr), given(order, frameSize, L, taps.data());
    std::vector<float> frame(bytes(frameSize));
    Samples samples(4);
    for (int i = 0; i < 12; ++i) {
        frame = samples.floats(frame.size(), 32768);
        const auto want = given.analyse(frame.data()), got = bank.analyse(frame.data());
        for (std::size_t k = 0; k < want.size(); ++k)
            ASSERT_TRUE(got[k].re == want[k].re && got[k].im == want[k].im) << i << ", bin " << k;
    }
}

TEST(Subband, BuiltInWindows)
{
    expectTaps(5, 24, zsp::ec::kWindow128);
    expectTaps(6, 44, zsp::ec::kWindow256);
    double sum128 = 0, sum256 = 0;
    for (const float tap : zsp::ec::kWindow128)
        sum128 += static_cast<double>(tap);
    for (const float tap : zsp::ec::kWindow256)
        sum256 += static_cast<double>(tap);
    EXPECT_NEAR(sum128, 27.1875, 5e-5);
    EXPECT_NEAR(sum256, 50.3192, 5e-5);
}

// With untouched bins in between, the input comes back one window less one hop later, at its level.
TEST(Subband, BuiltInWindowsReconstruct)
{
    for (const Shape& shape : {Shape{5, 24, 128}, Shape{6, 44, 256}}) {
        Bank analysis(shape.order, shape.frameSize, shape.windowLen, nullptr);
        Bank synthesis(shape.order, shape.frameSize, shape.windowLen, nullptr);
        const auto hop = bytes(shape.frameSize), delay = bytes(shape.windowLen) - hop;
        std::vector<float> in(60 * hop), out;
        Samples samples(5);
        for (auto& x : in)
            x = static_cast<float>(samples.uniform(-10000, 10000));
        for (std::size_t at = 0; at < in.size(); at += hop) {
            const auto& frame = synthesis.synthesise(analysis.analyse(&in[at]));
            out.insert(out.end(), frame.begin(), frame.end());
        }
        double cross = 0, inEnergy = 0, outEnergy = 0;
        for (std::size_t i = 2 * bytes(shape.windowLen); i < out.size(); ++i) {
            const double x = static_cast<double>(in[i - delay]), y = static_cast<double>(out[i]);
            cross += x * y;
            inEnergy += x * x;
            outEnergy += y * y;
        }
        EXPECT_NEAR(cross / inEnergy, 1, 0.02) << name(shape);
        // What is no copy of the input, in the output's energy: aliasing on white noise.
        const double residue = 1 - cross * cross / (inEnergy * outEnergy);
        EXPECT_LT(10 * std::log10(residue), shape.order == 5 ? -15 : -23) << name(shape);
    }
}

TEST(Subband, OrdersWithoutTransform)
{
    std::vector<std::byte> state(4096, std::byte{0xA5}), before = state;
    const float tap = 1;
    EXPECT_EQ(zspsSubbandProcessInit_32f(state.data(), 28, 1, 1 << 28, &tap, nullptr),
              zspStsInternalErr);
    EXPECT_EQ(state, before);
}

} // namespace
