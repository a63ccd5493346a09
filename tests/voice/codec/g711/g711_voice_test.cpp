// G.711 through encoder and decoder objects against the block's exports.

#include "tests/voice/api/coders.hpp"

#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g711.h"

namespace {

using namespace zsp::test;

TEST(G711Voice, IsTheBlockAlone)
{
    const Words samples = Samples(2).words(1000);
    for (const auto& [name, law] : {std::pair{"PCMU", zspG711LawMu}, {"PCMA", zspG711LawA}}) {
        const ZspvCodec* codec = zspvCodecByName(name, 8000);
        Octets octets(samples.size());
        Words heard(samples.size());
        ASSERT_EQ(zspsEncode_G711_16s8u(samples.data(), octets.data(), 1000, law), zspStsNoErr);
        ASSERT_EQ(zspsDecode_G711_8u16s(octets.data(), heard.data(), 1000, law), zspStsNoErr);
        EXPECT_EQ(encode(makeEncoder(codec).get(), samples), octets);
        EXPECT_EQ(decode(makeDecoder(codec).get(), octets), heard);
    }
}

// The inputs of the G.726 sequences, in both laws and in linear PCM of 14 bits.
TEST(G711Voice, ExpandsTheSequences)
{
    for (const auto& [name, suffix] : {std::pair{"PCMU", "m"}, {"PCMA", "a"}})
        for (const std::string sequence : {"nrm_", "ovr_"}) {
            const auto octets = readVector<std::uint8_t>("g726/" + sequence + suffix + ".g711");
            auto wanted = readVector<std::int16_t>("g726/" + sequence + suffix + ".sl");
            for (auto& x : wanted)
                x = static_cast<std::int16_t>(x * 4);
            Words heard = decode(makeDecoder(zspvCodecByName(name, 0)).get(), octets);
            for (auto& x : heard)
                x = static_cast<std::int16_t>(x & ~3); // A-law has values between
            expectEqual(heard, wanted, sequence + suffix);
        }
}

} // namespace
