// The loops over the window: AVX2 against the definitions, and saturation.

#include "ec/subband_fold.hpp"

#include "tests/ec/subband_bank.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace zsp::test;

template <typename T, typename Folded>
void expectVectorLoops(const std::vector<T>& window, const std::vector<T>& delay,
                       const std::vector<Folded>& time, const std::string& what)
{
    std::vector<Folded> want(time.size()), got(time.size());
    zsp::ec::foldScalar(delay, window, want);
    zsp::ec::foldAvx2(delay, window, got);
    expectEqual(got, want, "fold, " + what);

    auto wantSum = delay, gotSum = delay;
    zsp::ec::overlapAddScalar(time, window, wantSum);
    zsp::ec::overlapAddAvx2(time, window, gotSum);
    expectEqual(gotSum, wantSum, "overlap-add, " + what);
}

TEST(SubbandFold, VectorLoopsEqualDefinitions)
{
    Samples samples(3);
    for (const Shape& shape : shapes())
        for (int i = 0; i < 5; ++i) {
            const std::size_t taps = bytes(shape.windowLen), n = shape.points();
            expectVectorLoops(samples.floats(taps, 1), samples.floats(taps, 32768),
                              samples.floats(n, 32768), shape.name());
            const auto time = samples.words(n);
            expectVectorLoops(samples.words(taps), samples.words(taps),
                              std::vector<std::int32_t>(time.begin(), time.end()),
                              "words, " + shape.name());
        }
}

// With taps of 1.0 and more a product alone leaves the range of a word: the first one saturates,
// a later one is added as it is.
TEST(SubbandFold, WordsSaturateAtEachAddition)
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
            std::vector<std::int16_t> delay, window;
            std::vector<std::int32_t> fold(n);
            for (std::size_t m = 0; m < 2; ++m) {
                delay.insert(delay.end(), n, c.samples[m]);
                window.insert(window.end(), n, c.taps[m]);
            }
            zsp::ec::foldAvx2(delay, window, fold);
            expectEqual(fold, std::vector<std::int32_t>(n, c.want), c.why);
        }
    std::vector<std::int16_t> sum(32, -32768);
    zsp::ec::overlapAddAvx2(std::vector<std::int32_t>(32, 10000),
                            std::vector<std::int16_t>(32, 32767), sum);
    expectEqual(sum, std::vector<std::int16_t>(32, 7231), "a product beyond a word is added whole");
}

} // namespace
