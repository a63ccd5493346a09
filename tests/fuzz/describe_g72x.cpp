// The waveform coders G.711, G.722 and G.726, and the filter and conversions of G.729.

#include "codecs/g711/g711_pcm.hpp"
#include "codecs/g722/g722_adpcm.hpp"
#include "codecs/g722/g722_qmf.hpp"
#include "codecs/g726/g726_adpcm.hpp"
#include "codecs/g729/g729_highpass.hpp"
#include "core/state.hpp"
#include "tests/fuzz/describe.hpp"

#include <algorithm>

namespace zsp::fuzz {

namespace {

using Word = std::int16_t;
using Long = std::int32_t;

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

/// Checks of a block of pairs, whose length is even.
std::vector<Check> pairChecks()
{
    return {nulls(), when([](const Call& c) { return c.number(2) < 1 || c.number(2) % 2 != 0; },
                          zspStsSizeErr)};
}

/// What is left of one block when it is coded in two: one call equals several on its parts.
Long firstPart(Long len)
{
    return len / 3 / 2 * 2;
}

} // namespace

std::vector<Family> g711()
{
    const Argument law = number(zspG711LawMu, zspG711LawA);
    const std::vector<Check> checks = {nulls(), outside(2, zspStsSizeErr),
                                       outside(3, zspStsRangeErr)};
    return {
        {.name = "g711",
         .exports = {{ZSP_DESCRIBED(zspsEncode_G711_16s8u),
                      {in(arg(2)), out(arg(2)), length(), law},
                      checks,
                      [](const Word* src, std::uint8_t* dst, Long len, Long which) {
                          g711::encodeScalar({src, size(len)}, {dst, size(len)},
                                             static_cast<g711::Law>(which));
                      }},
                     {ZSP_DESCRIBED(zspsDecode_G711_8u16s),
                      {in(arg(2)), out(arg(2)), length(), law},
                      checks,
                      [](const std::uint8_t* src, Word* dst, Long len, Long which) {
                          g711::decodeScalar({src, size(len)}, {dst, size(len)},
                                             static_cast<g711::Law>(which));
                      }}}},
    };
}

std::vector<Family> g722()
{
    const auto draw = [](Choices&) { return SetUp{}; };
    return {
        {.name = "g722-filters",
         .exports = {{ZSP_DESCRIBED(zspsQMFEncode_G722_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length(300).multipleOf(2), inOut(24)},
                      pairChecks(),
                      [](const Word* src, Word* dst, Long len, Word* line) {
                          g722::analyseScalar({src, size(len)}, {dst, size(len)},
                                              g722::DelayLine{line, 24});
                      }},
                     {ZSP_DESCRIBED(zspsQMFDecode_G722_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length(300).multipleOf(2), inOut(24)},
                      pairChecks(),
                      [](const Word* src, Word* dst, Long len, Word* line) {
                          g722::synthesiseScalar({src, size(len)}, {dst, size(len)},
                                                 g722::DelayLine{line, 24});
                      }},
                     {ZSP_DESCRIBED(zspsSBADPCMEncodeInit_G722_16s), {scratch(144)}, {nulls()}},
                     {ZSP_DESCRIBED(zspsSBADPCMDecodeInit_G722_16s), {scratch(144)}, {nulls()}}}},
        {.name = "g722-encoder",
         .exports = {{ZSP_DESCRIBED(zspsSBADPCMEncode_G722_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length(300).multipleOf(2), state()},
                      pairChecks(),
                      [](const Word* src, Word* dst, Long len, void* state) {
                          g722::encodeScalar({src, size(len)}, {dst, size(len)},
                                             *alignedState<g722::State>(state));
                      }}},
         .draw = draw,
         .bytes = 144,
         .init = [](const SetUp&, void* state) { zspsSBADPCMEncodeInit_G722_16s(state); },
         .alignment = 16},
        {.name = "g722-decoder",
         .exports = {{ZSP_DESCRIBED(zspsSBADPCMDecode_G722_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length(300).multipleOf(2),
                       oneOf({1, 2, 3, 0, -1, 32767}), state()},
                      pairChecks(),
                      [](const Word* src, Word* dst, Long len, Word mode, void* state) {
                          g722::decodeScalar({src, size(len)}, {dst, size(len)}, mode,
                                             *alignedState<g722::State>(state));
                      }},
                     {ZSP_DESCRIBED(zspsSBADPCMDecodeStateUpdate_G722_16s),
                      {in(2), anyWord(), number(kMin, kMax), state()},
                      {nulls()}}},
         .draw = draw,
         .bytes = 144,
         .init = [](const SetUp&, void* state) { zspsSBADPCMDecodeInit_G722_16s(state); },
         .alignment = 16},
    };
}

std::vector<Family> g726()
{
    return {
        {.name = "g726-set-up",
         .exports = {{ZSP_DESCRIBED(zspsEncodeInit_G726_16s8u),
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

std::vector<Family> g729()
{
    return {
        {.name = "g729",
         .exports = {{ZSP_DESCRIBED(zspsHighPassFilterInit_G729),
                      {in(6), out(24)},
                      {nulls()},
                      [](const Word* coeffs, void* state) {
                          g729::HighPassState fresh;
                          std::copy_n(coeffs, 6, fresh.coeffs.begin());
                          placeRecord(state, fresh);
                      }},
                     {ZSP_DESCRIBED(zspsLSPToLSF_G729_16s), {in(10), out(10).orIn({0})}, {nulls()}},
                     {ZSP_DESCRIBED(zspsLSPToLSF_Norm_G729_16s),
                      {in(10), out(10).orIn({0})},
                      {nulls()}}}},
        {.name = "g729-highpass",
         .exports = {{ZSP_DESCRIBED(zspsHighPassFilter_G729_16s_ISfs),
                      {inOut(arg(1)), length(), oneOf({12, 13}), state()},
                      {nulls(), outside(1, zspStsSizeErr), outside(2, zspStsScaleRangeErr)},
                      [](Word* x, Long len, Long scaleFactor, void* state) {
                          const Long first = firstPart(len);
                          if (first > 0)
                              zspsHighPassFilter_G729_16s_ISfs(x, first, scaleFactor, state);
                          zspsHighPassFilter_G729_16s_ISfs(x + first, len - first, scaleFactor,
                                                           state);
                      }}},
         .draw =
             [](Choices& choices) {
                 SetUp coeffs = choices.below(2) ? SetUp{4096, 7807, -3733, 1899, -3798, 1899}
                                                 : SetUp{8192, 15836, -7667, 7699, -15398, 7699};
                 if (choices.oneIn(4))
                     for (auto& c : coeffs)
                         c = static_cast<Word>(choices.bits<std::uint16_t>());
                 return coeffs;
             },
         .bytes = 24,
         .init =
             [](const SetUp& s, void* state) {
                 const std::vector<Word> coeffs(s.begin(), s.end());
                 zspsHighPassFilterInit_G729(coeffs.data(), state);
             }},
    };
}

} // namespace zsp::fuzz
