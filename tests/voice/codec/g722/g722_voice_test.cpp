// G.722 through encoder and decoder objects against the blocks' exports and vectors.

#include "tests/voice/api/coders.hpp"

#include "tests/support/vectors.hpp"

#include <algorithm>

namespace {

using namespace zsp::test;

const ZspvCodec* codec()
{
    return zspvCodecByName("G722", 8000);
}

/// Pairs of codes (I_L, I_H) as octets, of which a lower rate leaves the last bits out.
Octets packed(const Words& pairs, int unused)
{
    Octets octets;
    for (std::size_t i = 0; i + 1 < pairs.size(); i += 2)
        octets.push_back(
            static_cast<std::uint8_t>((pairs[i + 1] * 64 + pairs[i]) >> unused << unused));
    return octets;
}

TEST(G722Voice, EncodesTheSequenceAtAllBitRates)
{
    const auto speech = readVector<std::int16_t>("g722/speech.pcm");
    const auto codes = readVector<std::int16_t>("g722/speech.cod");
    int unused = 0;
    for (const std::int32_t bitRate : {64000, 56000, 48000})
        expectEqual(encode(makeEncoder(codec(), bitRate).get(), speech), packed(codes, unused++),
                    std::to_string(bitRate));
}

TEST(G722Voice, DecodesTheSequenceByBitRate)
{
    const auto octets = packed(readVector<std::int16_t>("g722/speech.cod"), 0);
    for (const auto& [bitRate, file] :
         {std::pair{64000, "g722/speech_m1.pcm"}, {48000, "g722/speech_m3.pcm"}})
        expectEqual(decode(makeDecoder(codec(), bitRate).get(), octets),
                    readVector<std::int16_t>(file), file);
}

// The rate changes from one packet to the next, on both sides alike; 56 kbit/s ignores one bit, and
// 48 kbit/s two.
TEST(G722Voice, BitRateChangesInMidCall)
{
    const auto speech = readVector<std::int16_t>("g722/speech.pcm");
    const auto encoder = makeEncoder(codec());
    const auto one = makeDecoder(codec());
    const auto other = makeDecoder(codec());
    int unused = 0;
    for (std::size_t at = 0; at + 320 <= speech.size(); at += 320, unused = (unused + 1) % 3) {
        const std::int32_t bitRate = codec()->bitRates[unused];
        ASSERT_EQ(zspvEncoderSetBitRate(encoder.get(), bitRate), zspStsNoErr);
        ASSERT_EQ(zspvDecoderSetBitRate(one.get(), bitRate), zspStsNoErr);
        ASSERT_EQ(zspvDecoderSetBitRate(other.get(), bitRate), zspStsNoErr);
        Octets octets = encode(encoder.get(), {&speech[at], 320});
        const Words heard = decode(one.get(), octets);
        for (auto& octet : octets) {
            ASSERT_EQ(octet & ((1 << unused) - 1), 0);
            octet = static_cast<std::uint8_t>(octet | ((1 << unused) - 1)); // other data
        }
        ASSERT_EQ(decode(other.get(), octets), heard) << bitRate;
    }
}

} // namespace
