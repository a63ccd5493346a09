// G.728 through encoder and decoder objects: the reference's vectors, with and without post-filter,
// with lost frames, and what a decoder must bear.

#include "tests/voice/api/coders.hpp"

#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

namespace {

using namespace zsp::test;

const ZspvCodec* g728()
{
    return zspvCodecByName("G728", 8000);
}

Decoder makeG728Decoder(bool hasPostFilter)
{
    ZspvParams params = paramsOf(0);
    params.noPostFilter = hasPostFilter ? 0 : 1;
    ZspvDecoder* decoder = nullptr;
    EXPECT_EQ(zspvDecoderCreate(g728(), &params, &decoder), zspStsNoErr);
    return Decoder(decoder);
}

/// Frames of a file; lost ones are empty.
std::vector<Octets> framesOf(const std::string& name)
{
    const auto bytes = readVector<std::uint8_t>("g728/" + name);
    const bool isContainer = name.ends_with(".g728f");
    std::vector<Octets> frames;
    for (std::size_t at = isContainer ? 7 : 0; at < bytes.size();) {
        const bool isLost = isContainer && bytes[at++] == 255;
        frames.push_back(isLost ? Octets() : part(bytes, at, 5));
        at += frames.back().size();
    }
    return frames;
}

Words decodeFrames(ZspvDecoder* decoder, const std::vector<Octets>& frames)
{
    Words samples;
    for (const Octets& frame : frames) {
        const Words some = frame.empty() ? conceal(decoder) : decode(decoder, frame);
        samples.insert(samples.end(), some.begin(), some.end());
    }
    return samples;
}

TEST(G728Voice, Vectors)
{
    int runs = 0;
    for (const auto& run : readRuns("g728/runs.txt")) {
        ++runs;
        const std::string what = run[2] + ", post-filter " + run[1];
        if (run[0] == "encode") {
            const auto encoder = makeEncoder(g728());
            const auto samples = readVector<std::int16_t>("g728/" + run[2]);
            Octets octets;
            for (std::size_t i = 0; i < samples.size(); i += 20) {
                const Octets some = encode(encoder.get(), std::span(samples).subspan(i, 20));
                octets.insert(octets.end(), some.begin(), some.end());
            }
            expectEqual(octets, readVector<std::uint8_t>("g728/" + run[3]), what);
        } else {
            const auto decoder = makeG728Decoder(run[1] == "on");
            expectEqual(decodeFrames(decoder.get(), framesOf(run[2])),
                        readVector<std::int16_t>("g728/" + run[3]), what);
        }
    }
    EXPECT_EQ(runs, 42);
}

// Pitch and voicing are known without the filter too: a loss sounds alike, but for the filter.
TEST(G728Voice, ConcealsWithoutPostFilter)
{
    const auto frames = framesOf("speech_erased.g728f");
    const Words with = decodeFrames(makeG728Decoder(true).get(), frames);
    const Words without = decodeFrames(makeG728Decoder(false).get(), frames);
    double signal = 0, difference = 0;
    for (std::size_t i = 0; i < with.size(); ++i) {
        signal += double(without[i]) * without[i];
        difference += double(with[i] - without[i]) * (with[i] - without[i]);
    }
    EXPECT_GT(difference, 0);
    EXPECT_LT(difference, signal / 10);
}

// Any octets and any losses: frames of any indices, runs of losses longer than any counter.
TEST(G728Voice, BearsAnything)
{
    Samples random(728);
    for (const bool hasPostFilter : {true, false}) {
        const auto decoder = makeG728Decoder(hasPostFilter);
        for (int n = 0; n < 6000; ++n) {
            const bool isLost = n % 3000 > 1600 || random.below(5) == 0;
            if (isLost) {
                conceal(decoder.get());
                continue;
            }
            Octets frame(5);
            for (auto& octet : frame)
                octet = static_cast<std::uint8_t>(n % 64 < 32 ? random.below(256) : n / 7);
            decode(decoder.get(), frame);
        }
    }
    const auto encoder = makeEncoder(g728());
    for (int n = 0; n < 6000; ++n) {
        const auto samples = n % 3 ? random.words(20) : random.extremeWords(20);
        EXPECT_EQ(encode(encoder.get(), samples).size(), 5u);
    }
}

} // namespace
