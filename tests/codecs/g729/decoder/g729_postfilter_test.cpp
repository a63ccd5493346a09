// The short-term post-filter of G.729's main body, tilt and gain.

#include "codecs/g729/decoder/g729_decoder.hpp"

#include "tests/codecs/g729/g729_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;
using zsp::spanOf;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsShortTermPostFilter_G729_16s),
             {in<std::int16_t>(11), in<std::int16_t>(11), in<std::int16_t>(40),
              out<std::int16_t>(41), out<std::int16_t>(10), out<std::int16_t>(1)}),
    Contract(ZSP_NAMED(zspsTiltCompensation_G729_16s),
             {number(0), in<std::int16_t>(41), out<std::int16_t>(40)}),
    Contract(ZSP_NAMED(zspsGainControl_G729_16s_I),
             {in<std::int16_t>(40), out<std::int16_t>(40), out<std::int16_t>(1)}),
});

const Words kFlat = {4096, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};

TEST(G729PostFilter, AFlatFilterPassesItsInput)
{
    Samples samples(732);
    Words src(40), dst(41), memory(10), tilted(40);
    for (auto& x : src)
        x = static_cast<std::int16_t>(samples.uniform(-8000, 8000));
    memory[9] = 77;
    std::int16_t reflection = 1;
    ASSERT_EQ(zspsShortTermPostFilter_G729_16s(kFlat.data(), kFlat.data(), src.data(), dst.data(),
                                               memory.data(), &reflection),
              0);
    EXPECT_EQ(reflection, 0);
    EXPECT_EQ(dst[0], 77);
    EXPECT_EQ(Words(dst.begin() + 1, dst.end()), src);
    EXPECT_EQ(memory, Words(src.end() - 10, src.end()));
    ASSERT_EQ(zspsTiltCompensation_G729_16s(0, dst.data(), tilted.data()), 0);
    for (std::size_t i = 0; i < 40; ++i)
        EXPECT_NEAR(tilted[i], src[i], 1);
}

/// Poles that raise low frequencies: the response falls off with a positive correlation, and more
/// than its magnitude of 1 is taken back.
TEST(G729PostFilter, ALowPassIsMadeSmallerAndItsTiltFound)
{
    Words poles = kFlat, src(40, 1000), dst(41), memory(10);
    poles[1] = -3000;
    std::int16_t reflection = 0;
    ASSERT_EQ(zspsShortTermPostFilter_G729_16s(kFlat.data(), poles.data(), src.data(), dst.data(),
                                               memory.data(), &reflection),
              0);
    EXPECT_NEAR(reflection, -3000 * 8, 40);
    EXPECT_NEAR(dst[40], 1000, 12); // a gain of 3.7 for direct current, by the sum of the response
    Words tilted(40);
    ASSERT_EQ(zspsTiltCompensation_G729_16s(reflection, dst.data(), tilted.data()), 0);
    EXPECT_NEAR(tilted[39], 1000, 25);
}

TEST(G729PostFilter, FastFormsEqualTheirDefinitions)
{
    Samples samples(7292);
    for (int round = 0; round < 4000; ++round) {
        const Words src = anyWords(samples, 41, round), before = anyWords(samples, 40, round / 5);
        const std::int16_t reflection = samples.words(1)[0];
        Words want(40), got(40);
        zsp::g729::tiltCompensationScalar(reflection, spanOf<41>(src.data()),
                                          spanOf<40>(want.data()));
        zsp::g729::tiltCompensationFast(reflection, spanOf<41>(src.data()), spanOf<40>(got.data()));
        ASSERT_EQ(got, want) << "tilt, round " << round;
        want = got = anyWords(samples, 40, round);
        std::int16_t gain = samples.words(1)[0], same = gain;
        zsp::g729::gainControlScalar(spanOf<40>(before.data()), spanOf<40>(want.data()), gain);
        zsp::g729::gainControlFast(spanOf<40>(before.data()), spanOf<40>(got.data()), same);
        ASSERT_EQ(got, want) << "gain, round " << round;
        ASSERT_EQ(same, gain);
    }
}

TEST(G729PostFilter, TheGainFollowsSlowlyAndSilenceResetsIt)
{
    const Words before(40, 2000);
    std::int16_t gain = 16384;
    Words after(40, 1000);
    ASSERT_EQ(zspsGainControl_G729_16s_I(before.data(), after.data(), &gain), 0);
    EXPECT_NEAR(after[0], 1012, 2);
    EXPECT_TRUE(std::ranges::is_sorted(after));
    for (int i = 0; i < 40; ++i) {
        after.assign(40, 1000);
        zspsGainControl_G729_16s_I(before.data(), after.data(), &gain);
    }
    EXPECT_NEAR(after[39], 2000, 10);
    after.assign(40, 0);
    zspsGainControl_G729_16s_I(before.data(), after.data(), &gain);
    EXPECT_EQ(gain, 0);
    after.assign(40, 1000);
    gain = 16384;
    zspsGainControl_G729_16s_I(Words(40).data(), after.data(), &gain);
    EXPECT_NEAR(gain, 16384 * 0.604, 40); // (1 - 1/80)^40
}

} // namespace
