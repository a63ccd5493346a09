// The controller's AVX2 forms against their definitions.

#include "tests/ec/subband_controller.hpp"

#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace zsp::test;

TEST(SubbandControllerAvx2, EqualsDefinitions)
{
    Samples samples(4);
    for (const std::int32_t bands : {1, 7, 8, 9, 17, 33, 65})
        for (const std::int32_t taps : {1, 2, 7}) {
            Canceller got(bands, taps), want(bands, taps);
            for (int frame = 0; frame < 40; ++frame) {
                const std::string what = std::to_string(bands) + " bands, " + std::to_string(taps) +
                                         " taps, frame " + std::to_string(frame);
                got.history.fill(samples, 1e5F);
                const float threshold = frame % 2 ? got.state().powerThreshold : 1e8F;
                const zsp::ec::StepRule rule = {0.7F, threshold, 1e-9F};
                const auto& newest = got.history.values.front();
                const auto& oldest = got.history.values.back();
                zsp::ec::stepSizesAvx2(rule, newest, oldest, {got.state().inputPower, got.bands},
                                       got.steps);
                zsp::ec::stepSizesScalar(rule, newest, oldest,
                                         {want.state().inputPower, want.bands}, want.steps);
                expectEqual(got.steps, want.steps, what);

                if (frame % 8 == 0) { // taps that then stay for a while settle
                    got.adapt.fill(samples, 1);
                    for (std::size_t t = 0; t < got.taps; ++t)
                        want.adapt.values[t] = got.adapt.values[t];
                }
                got.errors.fill(samples, 1000);
                want.errors.values[0] = got.errors.values[0];
                want.errors.values[1] = got.errors.values[1];
                const auto filters = [](Canceller& c) {
                    return zsp::ec::FilterPair{c.errors.values[0].data(), c.errors.values[1].data(),
                                               c.adapt.out.data(), c.fixed.out.data()};
                };
                const auto gotSums = zsp::ec::compareFiltersAvx2(got.state(), filters(got));
                const auto wantSums =
                    zsp::ec::compareFiltersScalar(want.state(), filters(want), 0, {});
                EXPECT_EQ(gotSums.saved, wantSums.saved) << what;
                EXPECT_EQ(gotSums.restored, wantSums.restored) << what;
                EXPECT_EQ(gotSums.all, wantSums.all) << what;
                expectEqual(powersOf(got.state()), powersOf(want.state()), what);
                expectSameTaps(got.adapt, want.adapt, "adaptive, " + what);
                expectSameTaps(got.fixed, want.fixed, "fixed, " + what);
            }
        }
}

} // namespace
