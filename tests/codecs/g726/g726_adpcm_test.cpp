// G.726: the sequences of the Recommendation, the record, and AVX2 against the
// definition.

#include "codecs/g726/g726_adpcm.hpp"

#include "tests/support/coder_signal.hpp"
#include "tests/support/contract.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g726.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <utility>

namespace {

using namespace zsp::test;

constexpr std::size_t kEncoderSize = 88;
constexpr std::size_t kDecoderSize = 92;

void initEncoder(void* state)
{
    zspsEncodeInit_G726_16s8u(state, zspG726Rate32);
}

void initDecoder(void* state)
{
    zspsDecodeInit_G726_8u16s(state, zspG726Rate32, zspG726LawMu);
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsEncodeGetStateSize_G726_16s8u), {out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsDecodeGetStateSize_G726_8u16s), {out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsEncodeInit_G726_16s8u), {state(kEncoderSize), number(zspG726Rate16)})
        .row({{1, number(16)}}, zspStsRangeErr)
        .row({{1, number(18)}}, zspStsRangeErr)
        .row({{1, number(21)}}, zspStsRangeErr)
        .row({{1, number(25)}}, zspStsRangeErr)
        .row({{1, number(-2147483648.0)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspsDecodeInit_G726_8u16s),
             {state(kDecoderSize), number(zspG726Rate40), number(zspG726LawLinear)})
        .row({{1, number(16)}}, zspStsRangeErr)
        .row({{1, number(25)}}, zspStsRangeErr)
        .row({{2, number(3)}}, zspStsRangeErr)
        .row({{2, number(-1)}}, zspStsRangeErr),
    Contract(
        ZSP_NAMED(zspsEncode_G726_16s8u),
        {state(kEncoderSize, initEncoder), in<std::int16_t>(20), out<std::uint8_t>(20), number(20)})
        .row({{3, number(0)}}, zspStsSizeErr),
    Contract(
        ZSP_NAMED(zspsDecode_G726_8u16s),
        {state(kDecoderSize, initDecoder), in<std::uint8_t>(20), out<std::int16_t>(20), number(20)})
        .row({{3, number(0)}}, zspStsSizeErr),
});

/// A decoder as a caller has it, its state in a buffer of the caller's at some address.
class Decoder {
  public:
    using In = std::uint8_t;
    using Out = std::int16_t;

    Decoder(std::int32_t rate, std::int32_t law) { zspsDecodeInit_G726_8u16s(state(), rate, law); }
    void run(const In* in, Out* out, std::int32_t len)
    {
        ASSERT_EQ(zspsDecode_G726_8u16s(state(), in, out, len), zspStsNoErr);
    }

  private:
    void* state() { return buffer_.data() + 1; }
    std::array<std::byte, kDecoderSize + 1> buffer_{};
};

TEST(G726, Sequences)
{
    expectConforms("G.726", 82);
}

TEST(G726, StateSizes)
{
    std::int32_t size = 0;
    EXPECT_EQ(zspsEncodeGetStateSize_G726_16s8u(&size), zspStsNoErr);
    EXPECT_EQ(size, static_cast<std::int32_t>(kEncoderSize));
    EXPECT_EQ(zspsDecodeGetStateSize_G726_8u16s(&size), zspStsNoErr);
    EXPECT_EQ(size, static_cast<std::int32_t>(kDecoderSize));
}

template <typename T>
std::vector<T> filled(std::size_t count, int value)
{
    return std::vector<T>(count, static_cast<T>(value));
}

TEST(G726, NegativeLengthDoesNothing)
{
    std::vector<std::uint8_t> encoder(kEncoderSize), decoder(kDecoderSize);
    initEncoder(encoder.data());
    initDecoder(decoder.data());
    const auto encoderBefore = encoder, decoderBefore = decoder;
    auto pcm = filled<std::int16_t>(4, 77);
    auto codes = filled<std::uint8_t>(4, 5);
    for (const std::int32_t len : {-1, -5, -2147483647 - 1}) {
        EXPECT_EQ(zspsEncode_G726_16s8u(encoder.data(), pcm.data(), codes.data(), len), 0);
        EXPECT_EQ(zspsDecode_G726_8u16s(decoder.data(), codes.data(), pcm.data(), len), 0);
    }
    EXPECT_EQ(encoder, encoderBefore);
    EXPECT_EQ(decoder, decoderBefore);
    EXPECT_EQ(pcm, filled<std::int16_t>(4, 77));
    EXPECT_EQ(codes, filled<std::uint8_t>(4, 5));
}

/// A state as the caller holds it: fields by their place in the record.
std::int16_t word(const std::vector<std::uint8_t>& state, std::size_t offset)
{
    std::int16_t value;
    std::memcpy(&value, &state[offset], sizeof value);
    return value;
}

TEST(G726, InitRestartsAndFillsTheRecord)
{
    auto fresh = filled<std::uint8_t>(kDecoderSize, 0xee);
    ASSERT_EQ(zspsDecodeInit_G726_8u16s(fresh.data(), zspG726Rate40, zspG726LawA), zspStsNoErr);
    EXPECT_EQ(word(fresh, 6), 3) << "rate index";
    EXPECT_EQ(word(fresh, 8), 544) << "yu";
    EXPECT_EQ(word(fresh, 12) | word(fresh, 14), 34816 - 65536) << "yl";
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(word(fresh, 24 + 2 * i), 0) << "coefficient " << i;
        EXPECT_EQ(word(fresh, 40 + 2 * i), 32) << "delayed value " << i;
        EXPECT_EQ(word(fresh, 56 + 2 * i), 0) << "sign " << i;
    }
    EXPECT_EQ(word(fresh, 88), zspG726LawA) << "law, behind the bytes of an encoder's record";
    auto encoder = filled<std::uint8_t>(kEncoderSize, 0xee);
    ASSERT_EQ(zspsEncodeInit_G726_16s8u(encoder.data(), zspG726Rate40), zspStsNoErr);
    EXPECT_TRUE(std::equal(encoder.begin(), encoder.end(), fresh.begin()));

    auto used = fresh;
    const auto codes = filled<std::uint8_t>(100, 9);
    std::vector<std::int16_t> out(codes.size());
    ASSERT_EQ(zspsDecode_G726_8u16s(used.data(), codes.data(), out.data(), 100), zspStsNoErr);
    EXPECT_NE(used, fresh);
    ASSERT_EQ(zspsDecodeInit_G726_8u16s(used.data(), zspG726Rate40, zspG726LawA), zspStsNoErr);
    EXPECT_EQ(used, fresh);
}

TEST(G726, OutputStaysInItsRange)
{
    Samples samples(3);
    for (const auto& [bits, rate] : {std::pair{2, zspG726Rate16}, std::pair{5, zspG726Rate40}})
        for (const std::int32_t law : {zspG726LawMu, zspG726LawA, zspG726LawLinear}) {
            std::vector<std::uint8_t> codes(50000);
            for (auto& code : codes) // mostly the largest differences: overload
                code = static_cast<std::uint8_t>(samples.below(4) ? (1 << (bits - 1)) - 1
                                                                  : samples.below(1 << bits));
            std::vector<std::int16_t> out(codes.size());
            Decoder decoder(rate, law);
            decoder.run(codes.data(), out.data(), static_cast<std::int32_t>(codes.size()));
            const auto [low, high] = std::minmax_element(out.begin(), out.end());
            EXPECT_GE(*low, law == zspG726LawLinear ? -8192 : 0);
            EXPECT_LE(*high, law == zspG726LawLinear ? 8191 : 255);
            EXPECT_TRUE(law != zspG726LawLinear || *high == 8191) << "no overload reached";
        }
}

void expectSameState(const zsp::g726::CoderState& got, const zsp::g726::CoderState& want,
                     const std::string& what)
{
    EXPECT_EQ(std::memcmp(&got, &want, sizeof want), 0) << what << ": states differ";
}

TEST(G726, Avx2EqualsDefinition)
{
    using namespace zsp::g726;
    for (std::int16_t rateIndex = 0; rateIndex < 4; ++rateIndex)
        for (std::uint32_t seed = 0; seed < 6; ++seed) {
            const std::string what =
                "rate index " + std::to_string(rateIndex) + ", seed " + std::to_string(seed);
            CoderSignal signal(seed);
            CoderState definition{.rateIndex = rateIndex}, fast = definition;
            for (const std::size_t len : {20000u, 1u, 2u, 3001u}) {
                const auto sl = signal.pcm(len);
                std::vector<std::uint8_t> want(len), got(len);
                encodeScalar(definition, sl, want);
                encodeAvx2(fast, sl, got);
                expectEqual(got, want, "encoder, " + what);
                expectSameState(fast, definition, "encoder, " + what);
            }
            for (const Law law : {Law::mulaw, Law::alaw, Law::uniform}) {
                definition = fast = CoderState{.rateIndex = rateIndex};
                for (const std::size_t len : {20000u, 1u, 2u, 3001u}) {
                    const auto codes = signal.codes(len, rateIndex + 2);
                    std::vector<std::int16_t> want(len), got(len);
                    decodeScalar(definition, law, codes, want);
                    decodeAvx2(fast, law, codes, got);
                    expectEqual(got, want, "decoder, " + what);
                    expectSameState(fast, definition, "decoder, " + what);
                }
            }
        }
}

} // namespace
