// What holds for the encoders and decoders of every codec.

#include "tests/voice/api/coders.hpp"

#include "signals/measure.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/speech.hpp"
#include "voice/codec/codec.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
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
        Words speech = speechFor(codec);
        speech.resize(speech.size() -
                      speech.size() % static_cast<std::size_t>(codec->frameSamples));
        const Words heard =
            decode(makeDecoder(codec).get(), encode(makeEncoder(codec).get(), speech));
        ASSERT_EQ(heard.size(), speech.size());
        const auto delay = static_cast<std::size_t>(codec->filterDelay + codec->lookAhead);
        const double ratio = zsp::signals::snrDb({speech.data(), speech.size() - delay},
                                                 {heard.data() + delay, heard.size() - delay});
        EXPECT_GT(ratio, codec->bitRates[0] <= 8000    ? 4
                         : codec->bitRates[0] <= 16000 ? 8
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

TEST(Coders, LiveAtAnyAddressAndCopiesGoOnAlike)
{
    for (const ZspvCodec* codec : allCodecs()) {
        SCOPED_TRACE(codec->rtpName);
        const Words speech = talk(codec->sampleRate, 2, 0.5);
        const Octets octets = encode(makeEncoder(codec).get(), speech);
        const Words wanted = decode(makeDecoder(codec).get(), octets);
        const std::size_t half = octets.size() / 2 / stepOctets(codec) * stepOctets(codec);
        const std::size_t halfWords =
            half / stepOctets(codec) * static_cast<std::size_t>(codec->stepSamples);

        std::int32_t encoderSize = 0, decoderSize = 0;
        ASSERT_EQ(zspvEncoderGetSize(codec, nullptr, &encoderSize), zspStsNoErr);
        ASSERT_EQ(zspvDecoderGetSize(codec, nullptr, &decoderSize), zspStsNoErr);
        const auto bytes = static_cast<std::size_t>(std::max(encoderSize, decoderSize)) + 16;
        for (std::size_t offset = 0; offset < 16; ++offset) {
            std::vector<std::byte> memory(bytes), copy(bytes);
            ZspvEncoder* encoder = nullptr;
            ASSERT_EQ(zspvEncoderInit(&memory[offset], encoderSize, codec, nullptr, &encoder),
                      zspStsNoErr);
            Octets got = encode(encoder, {speech.data(), halfWords});
            copy = memory;
            std::fill(memory.begin(), memory.end(), std::byte{0xA5});
            const Octets rest = encode(reinterpret_cast<ZspvEncoder*>(&copy[offset]),
                                       std::span(speech).subspan(halfWords));
            got.insert(got.end(), rest.begin(), rest.end());
            ASSERT_EQ(got, octets) << "encoder at " << offset;

            ZspvDecoder* decoder = nullptr;
            ASSERT_EQ(zspvDecoderInit(&memory[offset], decoderSize, codec, nullptr, &decoder),
                      zspStsNoErr);
            Words heard = decode(decoder, {octets.data(), half});
            copy = memory;
            std::fill(memory.begin(), memory.end(), std::byte{0xA5});
            const Words more = decode(reinterpret_cast<ZspvDecoder*>(&copy[offset]),
                                      std::span(octets).subspan(half));
            heard.insert(heard.end(), more.begin(), more.end());
            ASSERT_EQ(heard, wanted) << "decoder at " << offset;
        }
    }
}

TEST(Coders, ResetForgetsTheSignalAndKeepsTheSettings)
{
    for (const ZspvCodec* codec : allCodecs()) {
        SCOPED_TRACE(codec->rtpName);
        const std::int32_t lowest = codec->bitRates[codec->bitRateCount - 1];
        const Words speech = talk(codec->sampleRate, 3, 0.5);
        const auto encoder = makeEncoder(codec);
        const auto decoder = makeDecoder(codec);
        ASSERT_EQ(zspvEncoderSetBitRate(encoder.get(), lowest), zspStsNoErr);
        ASSERT_EQ(zspvDecoderSetBitRate(decoder.get(), lowest), zspStsNoErr);
        const Octets octets = encode(encoder.get(), speech);
        ASSERT_EQ(octets, encode(makeEncoder(codec, lowest).get(), speech)) << "setter";
        const Words heard = decode(decoder.get(), octets);
        conceal(decoder.get());
        ASSERT_EQ(zspvEncoderReset(encoder.get()), zspStsNoErr);
        ASSERT_EQ(zspvDecoderReset(decoder.get()), zspStsNoErr);
        EXPECT_EQ(encode(encoder.get(), speech), octets);
        EXPECT_EQ(decode(decoder.get(), octets), heard);
        std::int32_t bitRate = 0;
        EXPECT_EQ(zspvEncoderGetBitRate(encoder.get(), &bitRate), zspStsNoErr);
        EXPECT_EQ(bitRate, lowest);
        EXPECT_EQ(zspvDecoderGetBitRate(decoder.get(), &bitRate), zspStsNoErr);
        EXPECT_EQ(bitRate, lowest);
    }
}

TEST(Coders, ConcealAnyNumberOfTimes)
{
    for (const ZspvCodec* codec : allCodecs()) {
        SCOPED_TRACE(codec->rtpName);
        const Words speech = talk(codec->sampleRate, 1.5, 0.5);
        const Octets octets = encode(makeEncoder(codec).get(), speech);
        const auto decoder = makeDecoder(codec);
        // The concealment of a standard fades by its own rule, to a frame of very low level.
        const bool own = (codec->flags & zspvCodecConceals) != 0;
        // Frames: of 10 ms, or of a standard's own length, but 400 ms at least; G.729 takes 2 %
        // away every 5 ms and no more.
        const int samples = std::string(codec->rtpName) == "G729" ? 16000 : 3200;
        const int fading = own ? std::max(20, samples / codec->frameSamples) : 6;
        const auto isSilence = [own](const Words& heard) {
            return own ? zsp::signals::levelDbfs(heard) < -65 : heard == Words(heard.size());
        };
        EXPECT_TRUE(isSilence(conceal(decoder.get()))) << "before anything came";
        decode(decoder.get(), octets);
        EXPECT_GT(zsp::signals::levelDbfs(conceal(decoder.get())), -60);
        for (int i = 1; i < 1000; ++i) {
            const Words heard = conceal(decoder.get());
            ASSERT_TRUE(i < fading || isSilence(heard)) << i;
        }
        decode(decoder.get(), octets);
    }
}

TEST(Coders, KindsWithoutBytesAreConcealed)
{
    for (const ZspvCodec* codec : allCodecs()) {
        const Octets octets = encode(makeEncoder(codec).get(), talk(codec->sampleRate, 1, 0.4));
        const auto wanted = makeDecoder(codec);
        decode(wanted.get(), octets);
        const Words concealed = conceal(wanted.get());
        for (const ZspvFrameKind kind : {zspvFrameNoData, zspvFrameLost}) {
            const auto decoder = makeDecoder(codec);
            decode(decoder.get(), octets);
            Words heard(concealed.size());
            std::int32_t count = 0;
            EXPECT_EQ(zspvDecode(decoder.get(), kind, nullptr, 0, heard.data(),
                                 static_cast<std::int32_t>(heard.size()), &count),
                      zspStsNoErr);
            // What was not sent on purpose is silence, for codecs that know of that.
            if (kind == zspvFrameLost || (codec->flags & zspvCodecDtx) == 0)
                EXPECT_EQ(heard, concealed) << codec->rtpName;
            else
                EXPECT_NE(heard, concealed) << codec->rtpName;
        }
    }
}

// Whatever lengths and kinds come, statuses are those that the header lists, and nothing is written
// behind what the capacity allows. The address sanitizer watches the inputs.
TEST(Coders, HostileCalls)
{
    Samples random(17);
    for (const ZspvCodec* codec : allCodecs()) {
        const auto decoder = makeDecoder(codec);
        const auto encoder = makeEncoder(codec);
        for (int call = 0; call < 3000; ++call) {
            const std::int32_t length = random.below(400) - 8;
            const std::int32_t capacity = random.below(1700) - 8;
            const auto kind = static_cast<ZspvFrameKind>(random.below(8));
            const Octets octets =
                random.integers<std::uint8_t>(static_cast<std::size_t>(std::max(length, 0)));
            Words samples(static_cast<std::size_t>(std::max(capacity, 0)) + 1, 4711);
            std::int32_t count = -1;
            const ZspStatus status = zspvDecode(decoder.get(), kind, octets.data(), length,
                                                samples.data(), capacity, &count);
            ASSERT_TRUE(status == zspStsNoErr || status == zspStsSizeErr ||
                        status == zspStsNullPtrErr || status == zspStsCodecRangeErr);
            ASSERT_EQ(samples.back(), 4711);
            if (status == zspStsNoErr) {
                ASSERT_LE(count, capacity);
            }

            Octets coded(static_cast<std::size_t>(std::max(length, 0)) + 1, 0xA5);
            const ZspStatus encoded = zspvEncode(encoder.get(), samples.data(), capacity,
                                                 coded.data(), length, &count, nullptr);
            ASSERT_TRUE(encoded == zspStsNoErr || encoded == zspStsSizeErr);
            ASSERT_EQ(coded.back(), 0xA5);
        }
    }
}

TEST(Coders, ManyObjectsOnEightThreads)
{
    const auto all = allCodecs();
    const auto call = [](const ZspvCodec* codec) {
        const auto decoder = makeDecoder(codec);
        const Octets octets = encode(makeEncoder(codec).get(), talk(codec->sampleRate, 1, 1));
        Words heard = decode(decoder.get(), octets);
        const Words gap = conceal(decoder.get());
        heard.insert(heard.end(), gap.begin(), gap.end());
        return heard;
    };
    std::vector<Words> wanted;
    for (const ZspvCodec* codec : all)
        wanted.push_back(call(codec));
    std::array<std::vector<Words>, 8> results;
    std::vector<std::thread> threads;
    for (auto& result : results)
        threads.emplace_back([&] {
            for (const ZspvCodec* codec : all)
                result.push_back(call(codec));
        });
    for (auto& thread : threads)
        thread.join();
    for (const auto& result : results)
        EXPECT_EQ(result, wanted);
}

} // namespace
