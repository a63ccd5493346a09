#include "codecs/gsmamr/gsmamr_vad2.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numbers>

namespace {

using namespace zsp::test;
using namespace zsp::gsmamr;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsVAD2_GSMAMR_16s),
             {in<std::int16_t>(160), state(sizeof(Vad2State)), out<std::int16_t>(1), number(0)}),
    Contract(ZSP_NAMED(zspsPreemphasize_GSMAMR_16s),
             {number(-26214), in<std::int16_t>(80), out<std::int16_t>(80), number(80),
              out<std::int16_t>(1)})
        .row({{3, number(0)}}, zspStsSizeErr)
        .row({{3, number(-2147483648.0)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspsFFTFwd_RToPerm_GSMAMR_16s_I), {out<std::int16_t>(128)}),
});

/// The words of a record as the vectors have them.
std::array<std::int16_t, 94> wordsOf(const Vad2State& state)
{
    return std::bit_cast<std::array<std::int16_t, 94>>(state);
}

TEST(GsmamrVad2, Vectors)
{
    bool onlyFirstHalf = false;
    for (const char* signal :
         {"extremes", "music", "silence_steps", "speech_babble15", "speech_car10", "speech_clean",
          "speech_loud_clip", "speech_pink5", "speech_quiet", "speech_white20", "tones"}) {
        const std::string name = std::string("gsmamr/") + signal;
        const auto pcm = readVector<std::int16_t>(name + ".pcm");
        const auto side = readVector<std::int16_t>(name + ".side");
        const auto want = readVector<std::int16_t>(name + ".vad2");
        const std::size_t frames = want.size() / 96;
        ASSERT_GT(frames, 0u);
        ASSERT_GE(pcm.size(), 160 * frames);
        ASSERT_EQ(side.size(), 4 * frames);

        Vad2State state{}, defined{};
        for (std::size_t t = 0; t < frames; ++t) {
            const std::int16_t* frame = &pcm[160 * t];
            const std::int16_t* record = &want[96 * t];
            const bool ltp = side[4 * t + 3] != 0;
            const std::string what = name + ", frame " + std::to_string(t);
            std::int16_t flag = -1;
            // any bit of the flag counts
            ASSERT_EQ(zspsVAD2_GSMAMR_16s(frame, &state, &flag, ltp ? 1 << 16 : 0), zspStsNoErr);
            ASSERT_EQ(flag, record[0]) << what;
            expectEqual(wordsOf(state), std::span(record + 2, 94), what);
            ASSERT_EQ(vad2Scalar(Vad2Frame{frame, 160}, defined, ltp), record[0] != 0) << what;
            expectEqual(wordsOf(defined), std::span(record + 2, 94), what + ", definition");
            onlyFirstHalf |= record[0] == 1 && record[1] == 1;
        }
    }
    EXPECT_TRUE(onlyFirstHalf) << "no frame was speech in its first half only";
}

// From any record whatever, also those that no signal leads to.
TEST(GsmamrVad2, Avx2EqualsDefinition)
{
    Samples samples(1);
    for (int run = 0; run < 4000; ++run) {
        Vad2State want{};
        if (run % 4) {
            std::array<std::int16_t, 94> any{};
            for (auto& word : any)
                word = samples.integer<std::int16_t>();
            want = std::bit_cast<Vad2State>(any);
            if (run % 4 == 2) want.frame_cnt = samples.below(6);
        }
        Vad2State got = want;
        for (int t = 0; t < 4; ++t) {
            Words frame = samples.words(160);
            const int quieter = samples.below(16);
            for (auto& sample : frame)
                sample = static_cast<std::int16_t>(sample >> quieter);
            const Vad2Frame span{frame.data(), 160};
            const bool ltp = samples.below(2) != 0;
            const std::string what = "run " + std::to_string(run) + ", frame " + std::to_string(t);
            ASSERT_EQ(vad2Avx2(span, got, ltp), vad2Scalar(span, want, ltp)) << what;
            expectEqual(wordsOf(got), wordsOf(want), what);
        }
    }
}

TEST(GsmamrVad2, PreEmphasis)
{
    Samples samples(2);
    for (int run = 0; run < 4000; ++run) {
        const std::int16_t factor = samples.integer<std::int16_t>();
        const auto len = static_cast<std::size_t>(1 + run % 100);
        const Words src = samples.words(len);
        const std::int16_t before = samples.integer<std::int16_t>();
        Words want(len), got(len), inPlace = src;
        std::int16_t wantMemory = before, gotMemory = before, inPlaceMemory = before;
        preEmphasiseScalar(factor, src, want, wantMemory);
        ASSERT_EQ(zspsPreemphasize_GSMAMR_16s(factor, src.data(), got.data(),
                                              static_cast<std::int32_t>(len), &gotMemory),
                  zspStsNoErr);
        preEmphasiseAvx2(factor, inPlace, inPlace, inPlaceMemory);
        const std::string what = "length " + std::to_string(len);
        expectEqual(got, want, what);
        expectEqual(inPlace, want, what + ", in place");
        ASSERT_EQ(wantMemory, src.back());
        ASSERT_EQ(gotMemory, src.back()) << what;
        ASSERT_EQ(inPlaceMemory, src.back()) << what;
    }
}

// Full-scale square waves of one frequency and any phases, the even and the odd samples apart,
// drive the sums of every stage into saturation, the last ones on both sides.
Words squareWaves(Samples& samples)
{
    Words waves(kFftLength);
    const double step = std::numbers::pi * samples.below(64) / 32;
    for (const std::size_t odd : {0u, 1u}) {
        const double phase = samples.below(1000) * 0.01;
        for (std::size_t n = odd; n < kFftLength; n += 2)
            waves[n] = std::cos(step * static_cast<double>(n / 2) + phase) < 0 ? -32768 : 32767;
    }
    return waves;
}

TEST(GsmamrVad2, FftAvx2EqualsDefinition)
{
    Samples samples(3);
    for (int run = 0; run < 6000; ++run) {
        Words want = run % 2 ? squareWaves(samples) : samples.words(kFftLength);
        Words got = want;
        fftScalar(FftBlock{want.data(), kFftLength});
        fftAvx2(FftBlock{got.data(), kFftLength});
        expectEqual(got, want, "run " + std::to_string(run));
    }
}

// Louder spectra than the detector's own.
TEST(GsmamrVad2, EnergiesEqualDefinition)
{
    Samples samples(5);
    for (int run = 0; run < 4000; ++run) {
        const Words bins = samples.words(kFftLength);
        const auto old = samples.longs(kChannels);
        const int shift = static_cast<int>(samples.uniform(-14, 23));
        std::vector<std::int32_t> want = old, got = old;
        const Spectrum spectrum{bins.data(), kFftLength};
        Vad2Scalar::smoothEnergies(spectrum, shift, {32767, 1}, 1,
                                   Energies{want.data(), kChannels});
        Vad2Avx2::smoothEnergies(spectrum, shift, {32767, 1}, 1, Energies{got.data(), kChannels});
        expectEqual(got, want, "shift " + std::to_string(shift));
    }
}

TEST(GsmamrVad2, FftIsTheTransform)
{
    Samples samples(4);
    Words block(kFftLength);
    for (auto& sample : block)
        sample = static_cast<std::int16_t>(samples.uniform(-8191, 8191));
    Words got = block;
    ASSERT_EQ(zspsFFTFwd_RToPerm_GSMAMR_16s_I(got.data()), zspStsNoErr);
    for (std::size_t k = 0; k <= 64; ++k) {
        double re = 0, im = 0;
        for (std::size_t n = 0; n < kFftLength; ++n) {
            const double angle = std::numbers::pi * static_cast<double>(k * n) / 64;
            re += block[n] * std::cos(angle) / 64;
            im -= block[n] * std::sin(angle) / 64;
        }
        // six stages round to a unit and halve
        EXPECT_NEAR(got[k == 64 ? 1 : 2 * k], re, 3) << k;
        if (k % 64 == 0) continue;
        EXPECT_NEAR(got[2 * k + 1], im, 3) << k;
    }
}

} // namespace
