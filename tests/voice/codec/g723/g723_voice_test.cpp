// G.723.1 through encoder and decoder objects: the vectors, changes of rate, silence compression,
// what is lost or damaged.

#include "tests/voice/api/coders.hpp"

#include "signals/measure.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

#include <algorithm>
#include <array>
#include <string>

namespace {

using namespace zsp::test;

constexpr std::size_t kFrame = 240;

const ZspvCodec* codec()
{
    return zspvCodecByPayloadType(4);
}

/// As the names of the vectors' files say it.
ZspvParams paramsOfMode(const std::string& mode)
{
    ZspvParams p = zsp::test::paramsOf(mode.starts_with("53") ? 5300 : 6300);
    p.dtx = mode.ends_with("dtx");
    p.noHighPass = mode.ends_with("nohp");
    p.noPostFilter = mode.ends_with("nopf");
    return p;
}

Encoder encoderFor(const ZspvParams& params)
{
    ZspvEncoder* encoder = nullptr;
    EXPECT_EQ(zspvEncoderCreate(codec(), &params, &encoder), zspStsNoErr);
    return Encoder(encoder);
}

Decoder decoderFor(const ZspvParams& params)
{
    ZspvDecoder* decoder = nullptr;
    EXPECT_EQ(zspvDecoderCreate(codec(), &params, &decoder), zspStsNoErr);
    return Decoder(decoder);
}

/// One frame as it stands in a file, and its kind.
Octets frameOf(ZspvEncoder* encoder, const std::int16_t* samples, ZspvFrameKind& kind)
{
    Octets octets(24);
    std::int32_t length = -1;
    EXPECT_EQ(zspvEncode(encoder, samples, kFrame, octets.data(), 24, &length, &kind), zspStsNoErr);
    if (length == 0) return {3};
    octets.resize(static_cast<std::size_t>(length));
    return octets;
}

Words heard(ZspvDecoder* decoder, ZspvFrameKind kind, const Octets& frame)
{
    Words samples(kFrame);
    std::int32_t count = 0;
    EXPECT_EQ(zspvDecode(decoder, kind, frame.data(), static_cast<std::int32_t>(frame.size()),
                         samples.data(), kFrame, &count),
              zspStsNoErr);
    EXPECT_EQ(count, static_cast<std::int32_t>(kFrame));
    return samples;
}

std::vector<Octets> framesOf(const Octets& stream)
{
    constexpr std::array<std::size_t, 4> kBytes = {24, 20, 4, 1};
    std::vector<Octets> frames;
    for (std::size_t at = 0; at < stream.size(); at += frames.back().size())
        frames.push_back(part(stream, at, kBytes[stream[at] & 3]));
    return frames;
}

TEST(G723Voice, EncoderVectors)
{
    for (const std::string name :
         {"speech.63", "speech.53", "speech.63dtx", "speech.53dtx", "speech.63nohp", "pauses.63",
          "pauses.53", "pauses.63dtx", "pauses.53dtx", "tones.63", "tones.53", "extreme.63",
          "extreme.53", "budget.53"}) {
        SCOPED_TRACE(name);
        const std::size_t dot = name.find('.');
        const auto encoder = encoderFor(paramsOfMode(name.substr(dot + 1)));
        const Words samples = readVector<std::int16_t>("g723/" + name.substr(0, dot) + ".pcm");
        Octets got;
        bool inPause = false;
        for (std::size_t at = 0; at + kFrame <= samples.size(); at += kFrame) {
            ZspvFrameKind kind = zspvFrameLost;
            const Octets frame = frameOf(encoder.get(), &samples[at], kind);
            got.insert(got.end(), frame.begin(), frame.end());
            const ZspvFrameKind want = frame.size() >= 20  ? zspvFrameSpeech
                                       : frame.size() == 1 ? zspvFrameNoData
                                       : inPause           ? zspvFrameSidUpdate
                                                           : zspvFrameSidFirst;
            ASSERT_EQ(kind, want);
            inPause = frame.size() < 20;
        }
        expectEqual(got, readVector<std::uint8_t>("g723/" + name + ".g723"), "encoded");
    }
}

TEST(G723Voice, DecoderVectors)
{
    for (const std::string name :
         {"speech.63", "speech.63.nopf", "pauses.53dtx", "extreme.53", "lost.63", "lost.53dtx",
          "mixed.rates", "lsp.63", "random.all"}) {
        SCOPED_TRACE(name);
        const std::string stream = name == "speech.63.nopf" ? "speech.63" : name;
        const auto decoder = decoderFor(paramsOfMode(name));
        const Words want = readVector<std::int16_t>("g723/" + name + ".out.pcm");
        Words got;
        for (const Octets& frame : framesOf(readVector<std::uint8_t>("g723/" + stream + ".g723"))) {
            if (got.size() == want.size()) break;
            const Words samples = heard(decoder.get(), zspvFrameSpeech, frame);
            got.insert(got.end(), samples.begin(), samples.end());
            std::int32_t rate = 0;
            zspvDecoderGetBitRate(decoder.get(), &rate);
            if (frame.size() >= 20) {
                ASSERT_EQ(rate, frame.size() == 24 ? 6300 : 5300);
            }
        }
        expectEqual(got, want, "decoded");
    }
}

/// What is told to be lost is what a frame that nobody can send is, and a damaged frame too.
TEST(G723Voice, LostFramesAreThoseThatNoEncoderSends)
{
    const auto frames = framesOf(readVector<std::uint8_t>("g723/lost.53dtx.g723"));
    const auto told = decoderFor(paramsOfMode("53")), found = decoderFor(paramsOfMode("53"));
    int lost = 0;
    for (const Octets& frame : frames) {
        const bool hasLag = frame.size() >= 20;
        const int firstLag = hasLag ? frame[3] >> 2 | (frame[4] & 1) << 6 : 0;
        const bool illegal = firstLag > 123;
        lost += illegal;
        const Words want = heard(found.get(), zspvFrameSpeech, frame);
        const ZspvFrameKind kind = !illegal   ? zspvFrameSpeech
                                   : lost % 2 ? zspvFrameLost
                                              : zspvFrameSpeechDamaged;
        ASSERT_EQ(heard(told.get(), kind, frame), want);
    }
    EXPECT_GT(lost, 3);
}

TEST(G723Voice, RateAndSilenceCompressionChangeBetweenFrames)
{
    const Words samples = readVector<std::int16_t>("g723/pauses.pcm");
    const auto encoder = encoderFor(paramsOfMode("63"));
    const auto decoder = decoderFor(paramsOfMode("63"));
    Words echo;
    std::array<int, 25> count{};
    for (std::size_t at = 0, n = 0; at + kFrame <= samples.size(); at += kFrame, ++n) {
        zspvEncoderSetBitRate(encoder.get(), n % 3 == 0 ? 5300 : 6300);
        zspvEncoderSetDtx(encoder.get(), n / 40 % 2 == 1);
        ZspvFrameKind kind = zspvFrameLost;
        const Octets frame = frameOf(encoder.get(), &samples[at], kind);
        ++count[frame.size()];
        if (n / 40 % 2 == 0) {
            ASSERT_EQ(frame.size(), n % 3 == 0 ? 20u : 24u);
        }
        const Words x = heard(decoder.get(), zspvFrameSpeech, frame);
        echo.insert(echo.end(), x.begin(), x.end());
    }
    EXPECT_GT(count[4], 0);
    EXPECT_GT(count[1], count[4]);
    EXPECT_NEAR(zsp::signals::levelDbfs(echo), zsp::signals::levelDbfs(samples), 2);
}

} // namespace
