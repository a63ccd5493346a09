#include "common/fft/real_fft.hpp"
#include "ec/subband_fold.hpp"
#include "ec/subband_windows.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/spectrum.hpp"
#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace zsp::test;

constexpr double kMaxInt = std::numeric_limits<std::int32_t>::max();
constexpr double kMinInt = std::numeric_limits<std::int32_t>::min();

std::size_t bytes(std::int32_t size)
{
    return static_cast<std::size_t>(size);
}

/// The float and the 16-bit family, so that one test can run on either.
struct Float {
    using Sample = float;
    using Bin = Zsp32fc;
    static constexpr auto getSize = &zspsSubbandProcessGetSize_32f;
    static constexpr auto init = &zspsSubbandProcessInit_32f;
};

struct Fixed {
    using Sample = std::int16_t;
    using Bin = Zsp32sc;
    static constexpr auto getSize = &zspsSubbandProcessGetSize_16s;
    static constexpr auto init = &zspsSubbandProcessInit_16s;
};

template <typename Family>
struct Sizes {
    std::int32_t state = 0, init = 0, work = 0;

    Sizes(std::int32_t order, std::int32_t windowLen)
    {
        EXPECT_EQ(Family::getSize(order, windowLen, &state, &init, &work), zspStsNoErr);
        EXPECT_EQ(init, 0);
    }
};

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
        .row({{1, number(kMaxInt)}}, zspStsBadArgErr)
        .row({{2, number(20)}, {4, null()}}, zspStsBadArgErr);
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

/// A state with its work buffer, both of the reported sizes and at odd addresses.
template <typename Family>
class Bank {
  public:
    using Samples = std::vector<typename Family::Sample>;
    using Bins = std::vector<typename Family::Bin>;

    Bank(std::int32_t order, std::int32_t frameSize, std::int32_t windowLen,
         const typename Family::Sample* window)
        : bins_((std::size_t{1} << order) / 2 + 1), frame_(bytes(frameSize))
    {
        const Sizes<Family> sizes(order, windowLen);
        state_.resize(bytes(sizes.state) + 1);
        work_.resize(bytes(sizes.work) + 1);
        EXPECT_EQ(Family::init(&state_[1], order, frameSize, windowLen, window, nullptr),
                  zspStsNoErr);
    }

    const Bins& analyse(const Samples& frame, std::int32_t scaleFactor = 0)
    {
        ZspStatus status = zspStsInternalErr;
        if constexpr (std::is_same_v<Family, Float>)
            status = zspsSubbandAnalysis_32f32fc(frame.data(), bins_.data(), &state_[1], &work_[1]);
        else
            status = zspsSubbandAnalysis_16s32sc_Sfs(frame.data(), bins_.data(), &state_[1],
                                                     scaleFactor, &work_[1]);
        EXPECT_EQ(status, zspStsNoErr);
        return bins_;
    }

    const Samples& synthesise(const Bins& bins, std::int32_t scaleFactor = 0)
    {
        ZspStatus status = zspStsInternalErr;
        if constexpr (std::is_same_v<Family, Float>)
            status =
                zspsSubbandSynthesis_32fc32f(bins.data(), frame_.data(), &state_[1], &work_[1]);
        else
            status = zspsSubbandSynthesis_32sc16s_Sfs(bins.data(), frame_.data(), &state_[1],
                                                      scaleFactor, &work_[1]);
        EXPECT_EQ(status, zspStsNoErr);
        return frame_;
    }

  private:
    std::vector<std::byte> state_, work_;
    Bins bins_;
    Samples frame_;
};

struct Shape {
    std::int32_t order, frameSize, windowLen;

    std::size_t points() const { return std::size_t{1} << order; }
    std::string name() const
    {
        return "order " + std::to_string(order) + ", hop " + std::to_string(frameSize) + ", " +
               std::to_string(windowLen) + " taps";
    }
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

/// The delay line after the frame has come in.
template <typename T>
std::vector<T> shifted(std::vector<T> delay, const std::vector<T>& frame)
{
    delay.erase(delay.begin(), delay.begin() + static_cast<std::ptrdiff_t>(frame.size()));
    delay.insert(delay.end(), frame.begin(), frame.end());
    return delay;
}

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

template <typename T>
void expectVectorLoops(const std::vector<T>& window, const std::vector<T>& delay,
                       const std::vector<T>& time, const std::string& what)
{
    std::vector<T> want(time.size()), got(time.size());
    zsp::ec::foldScalar(delay, window, want);
    zsp::ec::foldAvx2(delay, window, got);
    expectEqual(got, want, "fold, " + what);

    auto wantSum = delay, gotSum = delay;
    zsp::ec::overlapAddScalar(time, window, wantSum);
    zsp::ec::overlapAddAvx2(time, window, gotSum);
    expectEqual(gotSum, wantSum, "overlap-add, " + what);
}

TEST(Subband, VectorLoopsEqualDefinitions)
{
    Samples samples(3);
    for (const Shape& shape : shapes())
        for (int i = 0; i < 5; ++i) {
            const std::size_t taps = bytes(shape.windowLen), n = shape.points();
            expectVectorLoops(samples.floats(taps, 1), samples.floats(taps, 32768),
                              samples.floats(n, 32768), shape.name());
            expectVectorLoops(samples.words(taps), samples.words(taps), samples.words(n),
                              "words, " + shape.name());
        }
}

// With taps of 1.0 and more a product alone leaves the range of a word: the first one saturates,
// a later one is added as it is.
TEST(Subband, WordsSaturateAtEachAddition)
{
    struct Case {
        std::vector<std::int16_t> samples, taps;
        std::int16_t want;
        const char* why;
    };
    const Case cases[] = {
        {{1, 1}, {4096, 4095}, 1, "half rounds up"},
        {{-1, -1}, {4096, 4097}, -1, "also below zero"},
        {{32767, 32767}, {32767, 8192}, 32767, "above"},
        {{-32768, -32768}, {32767, 8192}, -32768, "below"},
        {{32767, -32768}, {32767, 32767}, -32768, "32767 - 131068"},
        {{-32768, 32767}, {-8192, 16384}, 32767, "32767 + 65534"},
        {{-32768, 20000}, {32767, 32767}, 32767, "-32768 + 79998"},
        {{-32768, 10000}, {32767, 32767}, 7231, "-32768 + 39999, not + 32767"},
        {{-32768, -32768}, {-32768, 32767}, -32768, "32767 - 131068"},
    };
    for (const Case& c : cases)
        for (const std::size_t n : {std::size_t{2}, std::size_t{32}}) {
            std::vector<std::int16_t> delay, window, fold(n);
            for (std::size_t m = 0; m < 2; ++m) {
                delay.insert(delay.end(), n, c.samples[m]);
                window.insert(window.end(), n, c.taps[m]);
            }
            zsp::ec::foldAvx2(delay, window, fold);
            expectEqual(fold, std::vector<std::int16_t>(n, c.want), c.why);
        }
    std::vector<std::int16_t> sum(32, -32768);
    zsp::ec::overlapAddAvx2(std::vector<std::int16_t>(32, 10000),
                            std::vector<std::int16_t>(32, 32767), sum);
    expectEqual(sum, std::vector<std::int16_t>(32, 7231), "a product beyond a word is added whole");
}

constexpr std::int32_t kScaleFactors[] = {0,
                                          1,
                                          3,
                                          8,
                                          15,
                                          31,
                                          64,
                                          5000,
                                          -1,
                                          -4,
                                          -20,
                                          -5000,
                                          std::numeric_limits<std::int32_t>::max(),
                                          std::numeric_limits<std::int32_t>::min()};

/// The wanted value before rounding is `exact`; the bound has the transform's error before scaling.
template <typename T>
void expectRounded(T got, long double exact, long double magnitudes, std::int32_t scaleFactor,
                   const std::string& what)
{
    const long double scale = std::ldexp(1.0L, -std::clamp(scaleFactor, -9000, 9000));
    const long double want =
        std::clamp(exact * scale, static_cast<long double>(std::numeric_limits<T>::min()),
                   static_cast<long double>(std::numeric_limits<T>::max()));
    const long double bound = 0.5L + (0.5L + std::ldexp(magnitudes, -20)) * scale;
    ASSERT_LE(std::abs(static_cast<long double>(got) - want), bound)
        << what << ", scale factor " << scaleFactor << ", want " << want;
}

/// Words that load different parts of a transform.
std::vector<std::vector<std::int16_t>> words(Samples& samples, std::size_t n)
{
    std::vector<std::vector<std::int16_t>> all = {
        samples.words(n), std::vector<std::int16_t>(n, -32768), std::vector<std::int16_t>(n, 0)};
    all.back()[n - 1] = 32767;
    all.emplace_back(n, std::int16_t{-1});
    all.back()[n / 2] = 0;
    all.emplace_back(n);
    for (std::size_t i = 0; i < n; ++i)
        all.back()[i] = static_cast<std::int16_t>(32767 * std::sin(1.1 * static_cast<double>(i)));
    return all;
}

TEST(Subband, IntegerAnalysisKeepsItsBound)
{
    Samples samples(4);
    for (std::int32_t order = 1; order <= 12; ++order) {
        const std::int32_t n = 1 << order;
        const std::vector<std::int16_t> one(bytes(n), 8192);
        Bank<Fixed> bank(order, n, n, one.data());
        for (const auto& frame : words(samples, bytes(n))) {
            const auto want = exactBins(frame);
            long double magnitudes = 0;
            for (const std::int16_t x : frame)
                magnitudes += std::abs(x);
            for (const std::int32_t scaleFactor : kScaleFactors) {
                const auto& bins = bank.analyse(frame, scaleFactor);
                for (std::size_t k = 0; k < bins.size(); ++k) {
                    const std::string what =
                        "order " + std::to_string(order) + ", bin " + std::to_string(k);
                    expectRounded(bins[k].re, want[k].real(), magnitudes, scaleFactor, what);
                    expectRounded(bins[k].im, want[k].imag(), magnitudes, scaleFactor, what);
                }
                EXPECT_TRUE(bins.front().im == 0 && bins.back().im == 0);
            }
        }
    }
}

// One block, no overlap and a window of 1.0: the frame is the rounded inverse transform.
TEST(Subband, IntegerSynthesisKeepsItsBound)
{
    Samples samples(5);
    for (std::int32_t order = 1; order <= 12; ++order) {
        const std::int32_t n = 1 << order;
        const std::vector<std::int16_t> one(bytes(n), 8192);
        Bank<Fixed> bank(order, n, n, one.data());
        for (const int limit : {5, 16, 31}) {
            std::vector<Zsp32sc> bins(bytes(n) / 2 + 1);
            long double magnitudes = 0;
            for (auto& b : bins) {
                b = {samples.integer<std::int32_t>() >> (31 - limit),
                     samples.integer<std::int32_t>() >> (31 - limit)};
                magnitudes +=
                    2 * std::hypot(static_cast<long double>(b.re), static_cast<long double>(b.im)) /
                    n;
            }
            const auto want = exactTime(bins);
            for (const std::int32_t scaleFactor : kScaleFactors) {
                const auto& frame = bank.synthesise(bins, scaleFactor);
                for (std::size_t i = 0; i < frame.size(); ++i)
                    expectRounded(frame[i], want[i], magnitudes, scaleFactor,
                                  "order " + std::to_string(order) + ", sample " +
                                      std::to_string(i));
            }
        }
    }
}

TEST(Subband, HalvesRoundUp)
{
    const std::vector<std::int16_t> one(64, 8192);
    Bank<Fixed> bank(6, 64, 64, one.data());
    std::vector<std::int16_t> frame(64);
    for (const auto& [sum, want] : {std::pair{5, 3}, {-5, -2}, {1, 1}, {-1, 0}, {-3, -1}}) {
        frame[0] = static_cast<std::int16_t>(sum);
        EXPECT_EQ(bank.analyse(frame, 1)[0].re, want) << sum;
    }
    std::vector<Zsp32sc> bins(33);
    for (const auto& [dc, want] : {std::pair{96, 2}, {-96, -1}, {32, 1}, {-32, 0}}) {
        bins[0] = {dc, 12345};
        EXPECT_EQ(bank.synthesise(bins)[17], want) << dc;
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
    std::vector<Sample> delay(window.size()), sum(window.size()), fold(shape.points());
    for (int i = std::min(5 * n / shape.frameSize + 3, 40); i > 0; --i) {
        const std::vector<Sample> frame = make(bytes(shape.frameSize));
        delay = shifted(delay, frame);
        zsp::ec::foldScalar(delay, window, fold);
        const auto want = plain.analyse(fold, 3), got = bank.analyse(frame, 3);
        for (std::size_t k = 0; k < want.size(); ++k)
            ASSERT_TRUE(got[k].re == want[k].re && got[k].im == want[k].im) << shape.name();

        sum = shifted(sum, std::vector<Sample>(bytes(shape.frameSize)));
        zsp::ec::overlapAddScalar(plainBack.synthesise(want, 2), window, sum);
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

/// A state without a window does what a state with these taps does.
template <typename Family, std::size_t L>
void expectBuiltIn(std::int32_t order, std::int32_t frameSize,
                   const std::array<typename Family::Sample, L>& taps)
{
    Bank<Family> builtIn(order, frameSize, L, nullptr), given(order, frameSize, L, taps.data());
    typename Bank<Family>::Samples frame(bytes(frameSize));
    Samples samples(7);
    for (int i = 0; i < 12; ++i) {
        for (auto& x : frame)
            x = samples.integer<std::int16_t>();
        const auto want = given.analyse(frame), got = builtIn.analyse(frame);
        for (std::size_t k = 0; k < want.size(); ++k)
            ASSERT_TRUE(got[k].re == want[k].re && got[k].im == want[k].im) << i << ", bin " << k;
    }
}

TEST(Subband, BuiltInWindows)
{
    using namespace zsp::ec;
    expectBuiltIn<Float>(5, 24, kWindow128);
    expectBuiltIn<Float>(6, 44, kWindow256);
    expectBuiltIn<Fixed>(5, 24, kWindow128_Q13);
    expectBuiltIn<Fixed>(6, 44, kWindow256_Q13);

    const auto sum = [](const auto& window) {
        double all = 0;
        for (const auto tap : window)
            all += static_cast<double>(tap);
        return all;
    };
    EXPECT_NEAR(sum(kWindow128), 27.1875, 5e-5);
    EXPECT_NEAR(sum(kWindow256), 50.3192, 5e-5);
    EXPECT_EQ(sum(kWindow128_Q13), 222718);
    EXPECT_EQ(sum(kWindow256_Q13), 412198);
}

/// The output of both directions in series, the bins untouched.
template <typename Family>
std::vector<double> throughBoth(const Shape& shape, const std::vector<std::int16_t>& in)
{
    Bank<Family> analysis(shape.order, shape.frameSize, shape.windowLen, nullptr);
    Bank<Family> synthesis(shape.order, shape.frameSize, shape.windowLen, nullptr);
    std::vector<double> all;
    for (auto at = in.begin(); at != in.end(); at += shape.frameSize) {
        const auto& out = synthesis.synthesise(analysis.analyse({at, at + shape.frameSize}));
        all.insert(all.end(), out.begin(), out.end());
    }
    return all;
}

// With untouched bins in between, the input comes back one window less one hop later, at its level.
TEST(Subband, BuiltInWindowsReconstruct)
{
    for (const Shape& shape : {Shape{5, 24, 128}, Shape{6, 44, 256}}) {
        const auto hop = bytes(shape.frameSize), delay = bytes(shape.windowLen) - hop;
        std::vector<std::int16_t> in(60 * hop);
        Samples samples(8);
        for (auto& x : in)
            x = static_cast<std::int16_t>(samples.uniform(-10000, 10000));
        for (const auto& out : {throughBoth<Float>(shape, in), throughBoth<Fixed>(shape, in)}) {
            double cross = 0, inEnergy = 0, outEnergy = 0;
            for (std::size_t i = 2 * bytes(shape.windowLen); i < out.size(); ++i) {
                const double x = in[i - delay], y = out[i];
                cross += x * y;
                inEnergy += x * x;
                outEnergy += y * y;
            }
            EXPECT_NEAR(cross / inEnergy, 1, 0.02) << shape.name();
            // What is no copy of the input, in the output's energy: aliasing on white noise.
            const double residue = 1 - cross * cross / (inEnergy * outEnergy);
            EXPECT_LT(10 * std::log10(residue), shape.order == 5 ? -15 : -23) << shape.name();
        }
    }
}

TEST(Subband, OrdersWithoutTransform)
{
    std::vector<std::byte> state(4096, std::byte{0xA5});
    const auto before = state;
    EXPECT_EQ(zspsSubbandProcessInit_32f(state.data(), 27, 1, 1 << 27, zsp::ec::kWindow128.data(),
                                         nullptr),
              zspStsInternalErr);
    EXPECT_EQ(zspsSubbandProcessInit_16s(state.data(), 30, 1, 1 << 30,
                                         zsp::ec::kWindow128_Q13.data(), nullptr),
              zspStsInternalErr);
    EXPECT_EQ(state, before);
}

} // namespace
