// The sub-band coder of G.722: vectors, modes, state update, and AVX2 against the
// definition.

#include "codecs/g722/g722_adpcm.hpp"

#include "core/state.hpp"

#include "tests/support/g722_pairs.hpp"
#include "zspsc/g722.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace zsp::test;
using zsp::g722::State;

constexpr std::size_t kStateSize = 144;

void init(void* state)
{
    ASSERT_EQ(zspsSBADPCMEncodeInit_G722_16s(state), zspStsNoErr);
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsSBADPCMEncodeStateSize_G722_16s), {out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsSBADPCMDecodeStateSize_G722_16s), {out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsSBADPCMEncodeInit_G722_16s), {state(kStateSize)}),
    Contract(ZSP_NAMED(zspsSBADPCMDecodeInit_G722_16s), {state(kStateSize)}),
    pairsContract(
        Contract(ZSP_NAMED(zspsSBADPCMEncode_G722_16s),
                 {in<std::int16_t>(6), out<std::int16_t>(6), number(6), state(kStateSize, init)})),
    pairsContract(Contract(ZSP_NAMED(zspsSBADPCMDecode_G722_16s),
                           {in<std::int16_t>(6), out<std::int16_t>(6), number(6), number(1),
                            state(kStateSize, init)})),
    // its one other failure comes after it has written: StateUpdateOutOfRange
    Contract(ZSP_NAMED(zspsSBADPCMDecodeStateUpdate_G722_16s),
             {in<std::int16_t>(2), number(1), number(0), state(kStateSize, init)}),
});

/// A fresh state whose buffer begins `offset` bytes after a 16-byte boundary.
class Buffer {
  public:
    explicit Buffer(std::size_t offset)
        : storage_(kStateSize + 32, std::byte{0xA5}), offset_(offset)
    {
        init(data());
    }

    void* data() { return static_cast<std::byte*>(zsp::alignUp(storage_.data(), 16)) + offset_; }
    State& record() { return *zsp::alignedState<State>(data()); }

  private:
    std::vector<std::byte> storage_;
    std::size_t offset_;
};

/// A decoder in mode `mode`.
struct Decoder {
    Buffer state{1};
    std::int16_t mode;

    Words block(Words words)
    {
        EXPECT_EQ(zspsSBADPCMDecode_G722_16s(words.data(), words.data(),
                                             static_cast<std::int32_t>(words.size()), mode,
                                             state.data()),
                  zspStsNoErr);
        return words;
    }
};

TEST(G722, Vectors)
{
    expectConforms("G.722", 6, "sb-");
    expectConforms("G.722", 2, "state-update");
}

// The one check that comes after writing. No decoder reaches such a scale factor.
TEST(G722, StateUpdateOutOfRange)
{
    struct Case {
        std::int16_t nbh;
        ZspStatus want;
        std::int16_t halved, det;
    };
    constexpr Case kCases[] = {
        {22528, zspStsNoErr, 11264, 360}, // the greatest that a decoder reaches
        {32767, zspStsNoErr, 16383, 2004},        {-32768, zspStsNoErr, -16384, 2048},
        {-20353, zspStsNoErr, -10177, 16384}, // the table's last entry
        {-20352, zspStsCodecRangeErr, -10176, 0}, {-1, zspStsCodecRangeErr, -1, 0},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.nbh);
        Buffer buffer(3);
        Words codes = Samples(5).words(400);
        Words out(codes.size());
        ASSERT_EQ(zspsSBADPCMDecode_G722_16s(codes.data(), out.data(), 400, 1, buffer.data()),
                  zspStsNoErr);
        State& s = buffer.record();
        s.high.nb = c.nbh;
        const State before = s;
        const std::int16_t low[] = {-5, 301};
        EXPECT_EQ(zspsSBADPCMDecodeStateUpdate_G722_16s(low, -7, 0, buffer.data()), c.want);

        EXPECT_EQ(s.high.nb, c.halved);
        EXPECT_EQ(s.high.det, c.want == zspStsNoErr ? c.det : before.high.det);
        EXPECT_EQ(s.low.nb, before.low.nb);
        EXPECT_EQ(s.low.det, before.low.det);
        EXPECT_EQ(s.low.a1, before.low.a1);
        EXPECT_EQ(s.low.a2, before.low.a2);
        EXPECT_EQ(s.low.b, State{}.low.b);
        EXPECT_EQ(s.low.d, State{}.low.d);
        const Words got = {s.low.r1, s.low.r2, s.low.p1, s.low.p2, s.low.s, s.low.sz};
        EXPECT_EQ(got, (Words{301, -5, 150, -3, -7, -4}));
    }
}

TEST(G722, ModesShareTheState)
{
    const Words codes = Samples(3).words(4000); // bits above the codes count for nothing
    const auto decode = [](Words input, int mode) {
        Decoder decoder{.mode = static_cast<std::int16_t>(mode)};
        Words output = decoder.block(std::move(input));
        const auto* bytes = reinterpret_cast<const std::int16_t*>(&decoder.state.record());
        return std::pair{output, Words(bytes, bytes + sizeof(State) / 2)};
    };
    Words masked = codes;
    for (std::size_t i = 0; i < masked.size(); ++i)
        masked[i] = static_cast<std::int16_t>(masked[i] & (i % 2 == 0 ? 63 : 3));

    const auto m1 = decode(codes, 1), m2 = decode(codes, 2), m3 = decode(codes, 3);
    EXPECT_EQ(m1, decode(masked, 1));
    EXPECT_NE(m1.first, m2.first);
    EXPECT_NE(m2.first, m3.first);
    EXPECT_EQ(m1.second, m2.second);
    EXPECT_EQ(m2.second, m3.second);
    for (const int mode : {0, 4, 7, -1, -32768, 32767})
        EXPECT_EQ(m3, decode(codes, mode)) << mode;
}

// From any state that a decoder can reach or a state update can set, and with both kinds of input.
TEST(G722, Avx2EqualsDefinition)
{
    using namespace zsp::g722;
    Samples samples(14);
    const auto bytes = [](const State& s) {
        const auto* words = reinterpret_cast<const std::int16_t*>(&s);
        return Words(words, words + sizeof(State) / 2);
    };
    State want, got;
    for (int round = 0; round < 600; ++round) {
        SCOPED_TRACE(round);
        const std::size_t len = 2 * static_cast<std::size_t>(1 + samples.below(400));
        Words input = samples.words(len);
        if (round % 3 == 1) // loud low tones drive the predictors' poles to their limits
            for (std::size_t i = 0; i < len; ++i)
                input[i] = (i / static_cast<std::size_t>(2 + round % 40)) % 2 ? 32767 : -32768;
        if (round % 3 == 2) // a pair again and again drives the zeros there
            for (std::size_t i = 2; i < len; ++i)
                input[i] = input[i - 2];
        Words wanted(len), output(len);
        if (round % 2 == 0) {
            encodeScalar(input, wanted, want);
            encodeAvx2(input, output, got);
        } else {
            const int mode = samples.below(4);
            decodeScalar(input, wanted, mode, want);
            decodeAvx2(input, output, mode, got);
        }
        expectEqual(output, wanted, "output");
        expectEqual(bytes(got), bytes(want), "state");
        if (samples.below(8) == 0) {
            const Words low = samples.words(2);
            const auto x = samples.integer<std::int16_t>();
            const bool reset = samples.below(2) == 0;
            for (State* s : {&want, &got})
                updateState(*s, std::span<const std::int16_t, 2>{low.data(), 2}, x, reset);
        }
    }
}

} // namespace
