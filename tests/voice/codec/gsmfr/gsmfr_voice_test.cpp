// GSM full rate through encoder and decoder objects: the vectors, homing, damaged frames, and what
// stands in for lost ones.

#include "tests/voice/api/coders.hpp"

#include "signals/measure.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "voice/codec/gsmfr/gsmfr_substitution.hpp"
#include "zspsc/gsmfr/frame.h"

#include <array>
#include <string>

namespace {

using namespace zsp::test;

constexpr std::size_t kFrame = 160, kBytes = 33;

const ZspvCodec* codec()
{
    return zspvCodecByPayloadType(3);
}

TEST(GsmVoice, Vectors)
{
    for (const std::string name : {"speech", "quiet", "clip", "noisy", "music", "tones", "steps",
                                   "extreme", "pauses", "wrap", "random"}) {
        SCOPED_TRACE(name);
        const auto frames = readVector<std::uint8_t>("gsmfr/" + name + ".gsm");
        ASSERT_FALSE(frames.empty());
        expectEqual(decode(makeDecoder(codec()).get(), frames),
                    readVector<std::int16_t>("gsmfr/" + name + ".out.pcm"), "decoded");
        if (name == "random") continue; // no signal codes to these frames
        expectEqual(
            encode(makeEncoder(codec()).get(), readVector<std::int16_t>("gsmfr/" + name + ".pcm")),
            frames, "encoded");
    }
}

/// GSM 06.10, the frame that an encoder in its start state makes of 160 samples of 8.
Octets homingFrame()
{
    Octets frame = {0xd2, 0x57, 0x7a, 0x1c, 0xda};
    for (int j = 0; j < 4; ++j)
        for (const int octet : {0x50, 0x00, 0x49, j == 3 ? 0x23 : 0x24, 0x92, 0x49, 0x24})
            frame.push_back(static_cast<std::uint8_t>(octet));
    return frame;
}

TEST(GsmVoice, Homing)
{
    const Words speech = readVector<std::int16_t>("gsmfr/speech.pcm");
    const Octets coded = readVector<std::uint8_t>("gsmfr/speech.gsm");
    const Words heard = readVector<std::int16_t>("gsmfr/speech.out.pcm");

    // In the start state homing frames answer each other. The low three bits are not coded.
    const auto encoder = makeEncoder(codec());
    EXPECT_EQ(encode(encoder.get(), Words(kFrame, 8)), homingFrame());
    EXPECT_EQ(encode(encoder.get(), Words(kFrame, 15)), homingFrame());
    const auto decoder = makeDecoder(codec());
    EXPECT_EQ(decode(decoder.get(), homingFrame()), Words(kFrame, 8));
    EXPECT_EQ(decode(decoder.get(), homingFrame()), Words(kFrame, 8));

    // In speech they are coded like any other, and then the coders are in their start state.
    expectEqual(encode(encoder.get(), speech), coded, "before");
    EXPECT_NE(encode(encoder.get(), Words(kFrame, 8)), homingFrame());
    expectEqual(encode(encoder.get(), speech), coded, "after");
    expectEqual(decode(decoder.get(), coded), heard, "before");
    EXPECT_NE(decode(decoder.get(), homingFrame()), Words(kFrame, 8));
    expectEqual(decode(decoder.get(), coded), heard, "after");
    Octets other = homingFrame();
    other[32] ^= 1;
    decode(decoder.get(), homingFrame());
    EXPECT_NE(decode(decoder.get(), other), Words(kFrame, 8)) << "one bit is another";
    EXPECT_NE(decode(decoder.get(), homingFrame()), Words(kFrame, 8)) << "not home any more";
}

TEST(GsmVoice, OnlyWholeFramesWithTheSignature)
{
    struct Row {
        std::size_t length;
        int first;
        ZspStatus want;
    };
    constexpr Row kRows[] = {
        {33, 0xd0, zspStsNoErr},         {33, 0xdf, zspStsNoErr},   {33, 0xc0, zspStsCodecRangeErr},
        {33, 0x00, zspStsCodecRangeErr}, {32, 0xd0, zspStsSizeErr}, {32, 0x00, zspStsSizeErr},
        {34, 0xd0, zspStsSizeErr},       {66, 0xd0, zspStsSizeErr}, {1, 0xd0, zspStsSizeErr},
    };
    const auto decoder = makeDecoder(codec());
    for (const Row& row : kRows) {
        Octets octets(row.length, 0);
        octets[0] = static_cast<std::uint8_t>(row.first);
        Words samples(kFrame, 77);
        std::int32_t count = -1;
        EXPECT_EQ(zspvDecode(decoder.get(), zspvFrameSpeech, octets.data(),
                             static_cast<std::int32_t>(row.length), samples.data(), 160, &count),
                  row.want)
            << row.length << " octets from " << row.first;
        EXPECT_EQ(count, row.want == zspStsNoErr ? 160 : -1);
        if (row.want != zspStsNoErr) {
            EXPECT_EQ(samples, Words(kFrame, 77));
        }
    }
}

/// The parameters of a stored frame, and back.
zsp::voice::gsmfr::Parameters unpacked(std::span<const std::uint8_t> frame)
{
    zsp::voice::gsmfr::Parameters parameters;
    EXPECT_EQ(zspsUnpackFrame_GSMFR_8u16s(frame.data(), parameters.data()), zspStsNoErr);
    return parameters;
}

// The rule of GSM 06.11 in parameters: the last frame again, amplitudes lowered by 4 per frame and
// grids at random, the frame of silence.
TEST(GsmVoice, LostFramesAreRepeatedThenMuted)
{
    using namespace zsp::voice::gsmfr;
    const Octets coded = readVector<std::uint8_t>("gsmfr/speech.gsm");
    const std::size_t good = 40 * kBytes;
    const Parameters last = unpacked(std::span(coded).subspan(good - kBytes, kBytes));
    Substitution substitution;
    substitution.start();
    substitution.received(last);
    std::array<int, 4> grids{};
    for (int lost = 1; lost <= 40; ++lost) {
        SCOPED_TRACE(lost);
        const Parameters now = substitution.lost();
        if (lost == 1) {
            EXPECT_EQ(now, last);
            continue;
        }
        if (lost > 16) {
            EXPECT_EQ(now, kSilence);
            continue;
        }
        Parameters want = last;
        for (std::size_t j = 0; j < 4; ++j) {
            std::int16_t* segment = segmentOf(want, j);
            segment[kAmplitude] =
                static_cast<std::int16_t>(std::max(0, segment[kAmplitude] - 4 * (lost - 1)));
            segment[kGrid] = segmentOf(now, j)[kGrid];
            ASSERT_TRUE(segment[kGrid] >= 0 && segment[kGrid] <= 3);
            ++grids[static_cast<std::size_t>(segment[kGrid])];
        }
        EXPECT_EQ(now, want);
    }
    substitution.received(last);
    EXPECT_EQ(substitution.lost(), last) << "a good frame ends the muting";
    for (const int count : grids)
        EXPECT_GT(count, 5) << "60 grids, evenly spread";
}

TEST(GsmVoice, ConcealsAndGoesOn)
{
    const Octets coded = readVector<std::uint8_t>("gsmfr/speech.gsm");
    const std::span<const std::uint8_t> before(coded.data(), 40 * kBytes);
    const auto lossy = makeDecoder(codec()), repeating = makeDecoder(codec());
    decode(lossy.get(), before);
    decode(repeating.get(), before);

    // The first lost frame is the last one again; so is a damaged one, whatever is in it.
    EXPECT_EQ(conceal(lossy.get()), decode(repeating.get(), before.last(kBytes)));
    const auto damaged = makeDecoder(codec()), other = makeDecoder(codec());
    decode(damaged.get(), before);
    decode(other.get(), before);
    Words heard(kFrame);
    std::int32_t count = 0;
    ASSERT_EQ(zspvDecode(damaged.get(), zspvFrameSpeechDamaged, homingFrame().data(), 33,
                         heard.data(), 160, &count),
              zspStsNoErr);
    EXPECT_EQ(heard, conceal(other.get()));

    // Fading, to the silence of GSM 06.11: about -70 dB of full scale.
    double last = 0;
    for (int lost = 2; lost <= 40; ++lost) {
        const double level = zsp::signals::levelDbfs(conceal(lossy.get()));
        if (lost % 4 == 0) {
            EXPECT_LE(level, last + 1) << lost;
            last = level;
        }
        if (lost > 18) {
            EXPECT_LT(level, -65) << lost;
        }
    }
    const std::span<const std::uint8_t> after(coded.data() + 40 * kBytes, 20 * kBytes);
    EXPECT_GT(zsp::signals::levelDbfs(decode(lossy.get(), after)), -40);
}

// Every frame of 260 bits is legal, also between lost ones; the sanitizers watch.
TEST(GsmVoice, AnyBitsDecode)
{
    Samples random(611);
    const auto decoder = makeDecoder(codec());
    for (int i = 0; i < 3000; ++i) {
        Octets frame = random.integers<std::uint8_t>(kBytes);
        frame[0] = static_cast<std::uint8_t>(0xd0 | (frame[0] & 15));
        for (const std::int16_t x : decode(decoder.get(), frame))
            ASSERT_EQ(x & 7, 0) << "13 bits";
        if (random.below(4) == 0) conceal(decoder.get());
    }
}

} // namespace
