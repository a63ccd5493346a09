// G.726 through encoder and decoder objects against the block's exports, in both octet orders.

#include "tests/voice/api/coders.hpp"

#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

#include <map>

namespace {

using namespace zsp::test;

const ZspvCodec* codecOf(const std::string& rate, bool highFirst)
{
    return zspvCodecByName(((highFirst ? "AAL2-G726-" : "G726-") + rate).c_str(), 8000);
}

/// Code words to octets bit by bit: the next code word above the bits that are there, or below.
Octets packed(const Octets& codes, int bits, bool highFirst)
{
    Octets octets(codes.size() * static_cast<std::size_t>(bits) / 8);
    std::size_t place = 0;
    for (const int code : codes)
        for (int b = 0; b < bits; ++b, ++place) {
            const int bit = highFirst ? code >> (bits - 1 - b) & 1 : code >> b & 1;
            const auto shift = static_cast<int>(highFirst ? 7 - place % 8 : place % 8);
            octets[place / 8] = static_cast<std::uint8_t>(octets[place / 8] | bit << shift);
        }
    return octets;
}

Words fromFourteenBits(Words samples)
{
    for (auto& x : samples)
        x = static_cast<std::int16_t>(x * 4);
    return samples;
}

// The encoder's sequences, and the decoder's that end in linear PCM, in both orders of packing.
TEST(G726Voice, Sequences)
{
    int encoded = 0, decoded = 0;
    for (const auto& run : readRuns("g726/runs.txt")) {
        const int bits = std::stoi(run[1]) / 8;
        for (const bool highFirst : {false, true}) {
            const ZspvCodec* codec = codecOf(run[1], highFirst);
            const auto whole = [codec](std::size_t count) {
                return count - count % static_cast<std::size_t>(codec->stepSamples);
            };
            if (run[0] == "encode") {
                const auto encoder = makeEncoder(codec);
                if (run[3] != "-")
                    encode(encoder.get(),
                           fromFourteenBits(readVector<std::int16_t>("g726/" + run[3])));
                auto samples = fromFourteenBits(readVector<std::int16_t>("g726/" + run[4]));
                auto codes = readVector<std::uint8_t>("g726/" + run[5]);
                samples.resize(whole(samples.size()));
                codes.resize(samples.size());
                expectEqual(encode(encoder.get(), samples), packed(codes, bits, highFirst), run[5]);
                ++encoded;
            } else if (run[2] == "linear" && run[3] == "-") {
                auto codes = readVector<std::uint8_t>("g726/" + run[4]);
                auto samples = fromFourteenBits(readVector<std::int16_t>("g726/" + run[5]));
                codes.resize(whole(codes.size()));
                samples.resize(codes.size());
                expectEqual(decode(makeDecoder(codec).get(), packed(codes, bits, highFirst)),
                            samples, run[5]);
                ++decoded;
            }
        }
    }
    EXPECT_GE(encoded, 32);
    EXPECT_GE(decoded, 4);
}

TEST(G726Voice, BothOrdersMeanTheSame)
{
    const Words samples = Samples(8).words(4000);
    for (const std::string rate : {"16", "24", "32", "40"}) {
        const ZspvCodec* low = codecOf(rate, false);
        const ZspvCodec* high = codecOf(rate, true);
        const Octets lowFirst = encode(makeEncoder(low).get(), samples);
        const Octets highFirst = encode(makeEncoder(high).get(), samples);
        EXPECT_NE(lowFirst, highFirst);
        EXPECT_EQ(decode(makeDecoder(low).get(), lowFirst),
                  decode(makeDecoder(high).get(), highFirst));
    }
}

} // namespace
