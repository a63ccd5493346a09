// G.729 through encoder and decoder objects: the reference's vectors in both forms, with pauses and
// losses, payloads with a silence descriptor at the end, and what a decoder must bear.

#include "tests/voice/api/coders.hpp"

#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

namespace {

using namespace zsp::test;

const ZspvCodec* g729()
{
    return zspvCodecByName("G729", 8000);
}

ZspvParams paramsFor(const std::string& codec)
{
    ZspvParams params = paramsOf(0);
    params.annexA = codec == "g729a";
    return params;
}

Decoder makeG729Decoder(const std::string& codec)
{
    const ZspvParams params = paramsFor(codec);
    ZspvDecoder* decoder = nullptr;
    EXPECT_EQ(zspvDecoderCreate(g729(), &params, &decoder), zspStsNoErr);
    return Decoder(decoder);
}

struct StreamFrame {
    ZspvFrameKind kind;
    Octets octets;
};

std::vector<StreamFrame> framesOf(const std::string& name)
{
    const auto all = readVector<std::uint8_t>("g729codec/" + name);
    const bool isContainer = name.ends_with(".g729f");
    std::vector<StreamFrame> frames;
    for (std::size_t at = isContainer ? 7 : 0; at < all.size();) {
        const std::size_t length =
            isContainer ? all[at++] : std::min<std::size_t>(all.size() - at, 10);
        const ZspvFrameKind kind = length == 255 ? zspvFrameLost
                                   : length == 0 ? zspvFrameNoData
                                   : length == 2 ? zspvFrameSidUpdate
                                                 : zspvFrameSpeech;
        frames.push_back({kind, part(all, at, length % 255)});
        at += length % 255;
    }
    return frames;
}

Words decodeFrame(ZspvDecoder* decoder, const StreamFrame& frame)
{
    Words samples(80);
    std::int32_t count = 0;
    EXPECT_EQ(zspvDecode(decoder, frame.kind, frame.octets.data(),
                         static_cast<std::int32_t>(frame.octets.size()), samples.data(), 80,
                         &count),
              zspStsNoErr);
    EXPECT_EQ(count, 80);
    return samples;
}

TEST(G729Voice, DecoderVectors)
{
    int runs = 0;
    for (const auto& run : readRuns("g729codec/decode.runs.txt")) {
        const auto decoder = makeG729Decoder(run[1]);
        Words got;
        for (const StreamFrame& frame : framesOf(run[3]))
            for (const std::int16_t x : decodeFrame(decoder.get(), frame))
                got.push_back(x);
        EXPECT_EQ(got, readVector<std::int16_t>("g729codec/" + run[4])) << run[1] << " " << run[3];
        ++runs;
    }
    EXPECT_EQ(runs, 27);
}

/// With pauses, and the kinds of what is sent.
TEST(G729Voice, EncoderWithPauses)
{
    for (const std::string codec : {"g729", "g729a"}) {
        ZspvParams params = paramsFor(codec);
        params.dtx = 1;
        ZspvEncoder* made = nullptr;
        ASSERT_EQ(zspvEncoderCreate(g729(), &params, &made), zspStsNoErr);
        const Encoder encoder(made);
        const auto samples = readVector<std::int16_t>("g729codec/speech_noise.pcm");
        const auto want =
            framesOf(codec == "g729" ? "speech_noise.mdtx.g729f" : "speech_noise.adtx.g729f");
        ASSERT_EQ(want.size(), samples.size() / 80);
        for (std::size_t n = 0; n < want.size(); ++n) {
            Octets octets(10);
            std::int32_t length = -1;
            ZspvFrameKind kind = zspvFrameLost;
            ASSERT_EQ(
                zspvEncode(encoder.get(), &samples[80 * n], 80, octets.data(), 10, &length, &kind),
                zspStsNoErr);
            octets.resize(static_cast<std::size_t>(length));
            ASSERT_EQ(octets, want[n].octets) << codec << ", frame " << n;
            const bool isFirst = length == 2 && (n == 0 || want[n - 1].kind == zspvFrameSpeech);
            EXPECT_EQ(kind, isFirst ? zspvFrameSidFirst : want[n].kind) << n;
        }
    }
}

/// RFC 3551: frames of ten octets, and one silence descriptor at the end.
TEST(G729Voice, PayloadsEndInADescriptor)
{
    for (const int length : {10, 20, 22, 2, 12}) {
        const Octets payload(static_cast<std::size_t>(length), 0x54);
        std::vector<ZspvFrame> frames(4);
        Octets octets(40);
        std::int32_t count = 0;
        ASSERT_EQ(zspvUnpack(g729(), nullptr, payload.data(), length, octets.data(), 40,
                             frames.data(), 4, &count, nullptr),
                  zspStsNoErr)
            << length;
        EXPECT_EQ(count, (length + 8) / 10);
        EXPECT_EQ(frames[static_cast<std::size_t>(count - 1)].length, length % 10 == 2 ? 2 : 10);
    }
}

TEST(G729Voice, RefusesWhatIsNoFrame)
{
    const auto decoder = makeG729Decoder("g729a");
    Words samples(80);
    std::int32_t count = 0;
    for (const std::int32_t length : {1, 3, 9})
        EXPECT_EQ(zspvDecode(decoder.get(), zspvFrameSpeech, Octets(10).data(), length,
                             samples.data(), 80, &count),
                  zspStsSizeErr)
            << length;
}

/// Random frames of every kind in any order end in samples, the same from a copied state.
TEST(G729Voice, BearsAnything)
{
    Samples samples(729);
    for (const std::string codec : {"g729", "g729a"}) {
        const auto one = makeG729Decoder(codec), other = makeG729Decoder(codec);
        constexpr ZspvFrameKind kKinds[] = {
            zspvFrameNoData,        zspvFrameSpeech,     zspvFrameSidFirst, zspvFrameSidUpdate,
            zspvFrameSpeechDamaged, zspvFrameSidDamaged, zspvFrameLost};
        for (int n = 0; n < 4000; ++n) {
            const ZspvFrameKind kind = kKinds[samples.uniform(0, 6)];
            const bool isSid = kind == zspvFrameSidFirst || kind == zspvFrameSidUpdate ||
                               kind == zspvFrameSidDamaged;
            StreamFrame frame{kind, {}};
            if (kind != zspvFrameNoData && kind != zspvFrameLost)
                for (int i = 0; i < (isSid ? 2 : 10); ++i)
                    frame.octets.push_back(static_cast<std::uint8_t>(samples.uniform(0, 255)));
            ASSERT_EQ(decodeFrame(one.get(), frame), decodeFrame(other.get(), frame)) << n;
        }
    }
}

} // namespace
