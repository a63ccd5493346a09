// Concealment: what it does to tones and noise, and that good samples stay as they are.

#include "voice/codec/shared/concealer.hpp"

#include "signals/measure.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/speech.hpp"
#include "tests/voice/codec/lossy_call.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

using namespace zsp::test;
using zsp::voice::Concealer;

/// A tone and its harmonics, with a period of so many samples.
Words voiced(double period, std::size_t count)
{
    Words samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double phase = 2 * std::numbers::pi * static_cast<double>(i) / period;
        samples[i] = static_cast<std::int16_t>(
            6000 * std::sin(phase) + 3000 * std::sin(2 * phase + 1) + 1500 * std::sin(5 * phase));
    }
    return samples;
}

TEST(Concealer, GoodSamplesStayAsTheyAre)
{
    Samples random(4);
    Concealer concealer;
    concealer.start(8000);
    for (int block = 0; block < 300; ++block) {
        Words samples = random.words(static_cast<std::size_t>(1 + random.below(500)));
        const Words before = samples;
        concealer.good(samples);
        ASSERT_EQ(samples, before);
    }
}

// What is periodic goes on, with the right period, through the whole range and at both rates.
TEST(Concealer, GoesOnWithAPeriodicSignal)
{
    for (const int rate : {8000, 16000})
        for (const int period : {40, 41, 57, 80, 99, 119, 120}) {
            const int scaled = period * rate / 8000;
            const auto frame = static_cast<std::size_t>(rate / 100);
            const Words signal = voiced(scaled, 30 * frame);
            Words past(signal.begin(), signal.begin() + static_cast<int>(20 * frame));
            Concealer concealer;
            concealer.start(rate);
            concealer.good(past);
            Words gap(frame);
            concealer.gap(gap);
            EXPECT_GT(zsp::signals::snrDb({&signal[20 * frame], frame}, gap), 50)
                << period << " at " << rate;
            for (std::size_t more = 1; more <= 5; ++more) { // from 1 to 0 within 50 ms
                concealer.gap(gap);
                Words wanted(frame);
                for (std::size_t i = 0; i < frame; ++i)
                    wanted[i] = static_cast<std::int16_t>(
                        signal[(20 + more) * frame + i] *
                        (1 - 0.2 * (static_cast<double>(more - 1) +
                                    static_cast<double>(i) / static_cast<double>(frame))));
                EXPECT_GT(zsp::signals::snrDb(wanted, gap), more == 5 ? 30 : 45)
                    << more << " frames, " << period << " at " << rate;
            }
            concealer.gap(gap);
            EXPECT_EQ(gap, Words(frame)) << "after 60 ms";
        }
}

// At a quarter of a period behind a gap good samples are untouched again.
TEST(Concealer, LeadsIntoTheGoodSamplesAndNoFurther)
{
    const Words signal = voiced(80, 4000);
    Concealer concealer;
    concealer.start(8000);
    Words past(signal.begin(), signal.begin() + 800);
    concealer.good(past);
    Words gap(80);
    concealer.gap(gap);
    concealer.gap(gap);
    Words good = Samples(6).words(400);
    const Words before = good;
    concealer.good(good);
    EXPECT_NE(good.front(), before.front());
    EXPECT_LT(std::abs(good.front() - gap.back()), 4000) << "no click";
    EXPECT_TRUE(std::equal(good.begin() + 20, good.end(), before.begin() + 20));
}

TEST(Concealer, NoiseAndFullScaleAreBounded)
{
    Samples random(9);
    Concealer concealer;
    for (const int rate : {8000, 16000}) {
        concealer.start(rate);
        Words gap(static_cast<std::size_t>(rate / 100));
        for (int run = 0; run < 200; ++run) {
            Words samples = run % 2 ? random.extremeWords(900) : random.words(900);
            concealer.good(samples);
            const int frames = random.below(9);
            for (int i = 0; i < frames; ++i)
                concealer.gap(gap); // the undefined-behaviour sanitizer watches
        }
    }
}

// The reason for all of this. Figures of every codec: bench/voice/codec/concealment_quality.cpp.
TEST(Concealer, BeatsRepetitionAndSilence)
{
    for (const char* name : {"PCMU", "G726-32", "G722"}) {
        const ZspvCodec* codec = zspvCodecByName(name, 8000);
        const LossyCall call(codec, talk(codec->sampleRate, 0, 10));
        for (const double share : {0.03, 0.10}) {
            const auto concealed = call.damage(share, Filling::concealment, 2);
            const auto repeated = call.damage(share, Filling::repetition, 2);
            const auto silent = call.damage(share, Filling::silence, 2);
            EXPECT_GT(concealed.segmentalSnrDb, repeated.segmentalSnrDb + 2) << name << share;
            EXPECT_GT(concealed.segmentalSnrDb, silent.segmentalSnrDb + 0.5) << name << share;
            EXPECT_LT(concealed.spectralDistanceDb, repeated.spectralDistanceDb - 0.5)
                << name << share;
            EXPECT_LT(concealed.spectralDistanceDb, silent.spectralDistanceDb - 2) << name << share;
        }
    }
}

} // namespace
