// What holds for the encoders and decoders of every codec.

#include "tests/voice/api/coders.hpp"

#include "signals/measure.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/speech.hpp"
#include "voice/codec/codec.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <thread>

namespace {

using namespace zsp::test;

std::size_t stepOctets(const ZspvCodec* codec)
{
    return static_cast<std::size_t>(zsp::voice::stepBytes(*codec));
}

/// Four seconds of speech at the codec's rate.
Words speechFor(const ZspvCodec* codec)
{
    return talk(codec->sampleRate, 1, 4);
}

TEST(Coders, SpeechComesThrough)
{
    for (const ZspvCodec* codec : allCodecs()) {
        const Words speech = speechFor(codec);
        const Words heard =
            decode(makeDecoder(codec).get(), encode(makeEncoder(codec).get(), speech));
        ASSERT_EQ(heard.size(), speech.size());
        const auto delay = static_cast<std::size_t>(codec->filterDelay);
        const double ratio = zsp::signals::snrDb({speech.data(), speech.size() - delay},
                                                 {heard.data() + delay, heard.size() - delay});
        EXPECT_GT(ratio, codec->bitRates[0] <= 16000   ? 8
                         : codec->bitRates[0] <= 24000 ? 14
                                                       : 18)
            << codec->rtpName;
    }
}

TEST(Coders, SplitCallsEqualOne)
{
    Samples random(11);
    for (const ZspvCodec* codec : allCodecs()) {
        SCOPED_TRACE(codec->rtpName);
        const Words speech = speechFor(codec);
        const Octets wanted = encode(makeEncoder(codec).get(), speech);
        const auto step = static_cast<std::size_t>(codec->stepSamples);
        const auto oneDecoder = makeDecoder(codec);
        const auto otherDecoder = makeDecoder(codec);
        const auto encoder = makeEncoder(codec);
        Octets octets;
        for (std::size_t at = 0; at < speech.size();) {
            const std::size_t steps = static_cast<std::size_t>(1 + random.below(60));
            const std::size_t count = std::min(steps * step, speech.size() - at);
            const Octets part = encode(encoder.get(), {&speech[at], count});
            octets.insert(octets.end(), part.begin(), part.end());
            at += count;
        }
        ASSERT_EQ(octets, wanted);

        // The same with a gap, whose end reaches into the good samples.
        const std::size_t half = wanted.size() / 2 / stepOctets(codec) * stepOctets(codec);
        decode(oneDecoder.get(), {wanted.data(), half});
        decode(otherDecoder.get(), {wanted.data(), half});
        ASSERT_EQ(conceal(oneDecoder.get()), conceal(otherDecoder.get()));
        const Words whole = decode(oneDecoder.get(), std::span(wanted).subspan(half));
        Words parts;
        for (std::size_t at = half; at < wanted.size();) {
            const std::size_t steps = static_cast<std::size_t>(1 + random.below(20));
            const std::size_t count = std::min(steps * stepOctets(codec), wanted.size() - at);
            const Words part = decode(otherDecoder.get(), {&wanted[at], count});
            parts.insert(parts.end(), part.begin(), part.end());
            at += count;
        }
        ASSERT_EQ(parts, whole);
    }
}

} // namespace
