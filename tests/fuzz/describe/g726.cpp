// Encoder and decoder of G.726.

#include "codecs/g726/g726_adpcm.hpp"
#include "core/state.hpp"
#include "tests/fuzz/describe.hpp"

namespace zsp::fuzz {

namespace {

constexpr std::array<Long, 4> kG726Rates = {zspG726Rate16, zspG726Rate24, zspG726Rate32,
                                            zspG726Rate40};

Argument g726Rate()
{
    return oneOf({zspG726Rate16, zspG726Rate24, zspG726Rate32, zspG726Rate40});
}

/// A negative length is accepted and does nothing.
Argument g726Length()
{
    return number(-4, 300);
}

Check isEmpty()
{
    return when([](const Call& c) { return c.number(3) == 0; }, zspStsSizeErr);
}

std::vector<Family> describe()
{
    return {
        {.name = "g726-set-up",
         .exports = {sizeOf<88>(ZSP_DESCRIBED(zspsEncodeGetStateSize_G726_16s8u)),
                     sizeOf<92>(ZSP_DESCRIBED(zspsDecodeGetStateSize_G726_8u16s)),
                     {ZSP_DESCRIBED(zspsEncodeInit_G726_16s8u),
                      {out(88), g726Rate()},
                      {nulls(), outside(1, zspStsRangeErr)}},
                     {ZSP_DESCRIBED(zspsDecodeInit_G726_8u16s),
                      {out(92), g726Rate(), number(0, 2)},
                      {nulls(), outside(1, zspStsRangeErr), outside(2, zspStsRangeErr)}}}},
        {.name = "g726-encoder",
         .exports = {{ZSP_DESCRIBED(zspsEncode_G726_16s8u),
                      {state(), in(arg(3)).fitted([](const Call&, std::span<std::byte> bytes) {
                           for (Word& sample : elements<Word>(bytes)) // 14 bits
                               sample = static_cast<Word>(sample >> 2);
                       }),
                       out(arg(3)), g726Length()},
                      {nulls(), isEmpty()},
                      [](void* state, const Word* src, std::uint8_t* dst, Long len) {
                          if (len < 0) return;
                          InPlace<g726::EncoderState> record(state);
                          g726::encodeScalar(record->coder, {src, size(len)}, {dst, size(len)});
                      }}},
         .draw = [](Choices& choices) { return SetUp{choices.oneOf(kG726Rates)}; },
         .bytes = 88,
         .init = [](const SetUp& s,
                    void* state) { zspsEncodeInit_G726_16s8u(state, static_cast<Long>(s[0])); }},
        {.name = "g726-decoder",
         .exports = {{ZSP_DESCRIBED(zspsDecode_G726_8u16s),
                      {state(), in(arg(3)).fitted([](const Call& c, std::span<std::byte> bytes) {
                           for (std::byte& code : bytes) // right-aligned code words
                               code &= static_cast<std::byte>(c.setUp(2));
                       }),
                       out(arg(3)), g726Length()},
                      {nulls(), isEmpty()},
                      [](void* state, const std::uint8_t* src, Word* dst, Long len) {
                          if (len < 0) return;
                          InPlace<g726::DecoderState> record(state);
                          g726::decodeScalar(record->coder, record->law, {src, size(len)},
                                             {dst, size(len)});
                      }}},
         .draw =
             [](Choices& choices) {
                 const int bits = 2 + choices.below(4);
                 return SetUp{kG726Rates[size(bits - 2)], choices.below(3), (1 << bits) - 1};
             },
         .bytes = 92,
         .init =
             [](const SetUp& s, void* state) {
                 zspsDecodeInit_G726_8u16s(state, static_cast<Long>(s[0]), static_cast<Long>(s[1]));
             }},
    };
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
