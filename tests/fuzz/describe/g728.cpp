// The blocks of G.728.

#include "tests/codecs/g728/g728_definitions.hpp"
#include "tests/fuzz/describe.hpp"
#include "zspsc/g728/adapt.h"
#include "zspsc/g728/coder.h"
#include "zspsc/g728/postfilter.h"

#include <algorithm>
#include <cstdlib>

namespace zsp::fuzz {

namespace {

namespace definitions = g728::definitions;

/// Words from `first` on are brought into a range: checks of numbers follow those of content.
Argument within(Argument a, std::size_t first, int low, int high)
{
    return a.fitted([=](const Call&, std::span<std::byte> bytes) {
        const auto words = elements<Word>(bytes);
        if (words.size() <= first) return;
        for (Word& w : words.subspan(first))
            w = static_cast<Word>(low + (w & 0x7fff) % (high - low + 1));
    });
}

/// One of a block's words from `first` on is outside a range.
Check beyond(std::size_t argument, std::size_t first, std::size_t count, int low, int high,
             ZspStatus status)
{
    return whenContent(
        [=](const Call& c) {
            const Word* words = c.data<Word>(argument) + first;
            return !std::all_of(words, words + count,
                                [=](Word w) { return low <= w && w <= high; });
        },
        status);
}

/// A block whose last word is a Q.
Argument withQ(Argument a, std::size_t words)
{
    return within(std::move(a), words - 1, -64, 64);
}
Check badQ(std::size_t argument, std::size_t words)
{
    return beyond(argument, words - 1, 1, -64, 64, zspStsScaleRangeErr);
}

Argument q()
{
    return number(-64, 64);
}

Length perKind(int first, int others, int kinds)
{
    return {[=](const Call& c) -> std::int64_t {
        const auto kind = c.number(0);
        return kind == 0 || kind == kinds - 1 ? first : others;
    }};
}

/// Samples or lags of the three windows.
Length ofWindow(int synthesis, int weighting, int logGain)
{
    return {[=](const Call& c) -> std::int64_t {
        return c.number(0) == 1 ? weighting : c.number(0) == 2 ? logGain : synthesis;
    }};
}

Family coder()
{
    return {.name = "g728-coder",
            .exports = {{ZSP_DESCRIBED(zspsLogGainPredict_G728_16s),
                         {in(10), in(10), number(-16384, 14336), out(1), out(2)},
                         {nulls(), outside(2, zspStsRangeErr)}},
                        {ZSP_DESCRIBED(zspsLogGainUpdate_G728_16s),
                         {anyWord(), number(0, 1023), out(1)},
                         {nulls(), outside(1, zspStsCodecRangeErr)}},
                        {ZSP_DESCRIBED(zspsCodevectorScale_G728_16s),
                         {number(0, 1023), withQ(in(2), 2), out(6)},
                         {nulls(), badQ(1, 2), outside(0, zspStsCodecRangeErr)}},
                        {ZSP_DESCRIBED(zspsSyntesisFilterZeroInput_G728_16s),
                         {in(50), in(50), within(in(10), 0, -64, 64), out(6)},
                         {nulls(), beyond(2, 0, 10, -64, 64, zspStsScaleRangeErr)},
                         definitions::zspsSyntesisFilterZeroInput_G728_16s},
                        {ZSP_DESCRIBED(zspsSynthesisFilterZeroState_G728_16s),
                         {in(4), withQ(inOut(6), 6), out(5)},
                         {nulls(), badQ(1, 6)}},
                        {ZSP_DESCRIBED(zspsSynthesisFilterUpdate_G728_16s),
                         {in(5), q(), withQ(inOut(6), 6)},
                         {nulls(), outside(1, zspStsScaleRangeErr), badQ(2, 6)}},
                        {ZSP_DESCRIBED(zspsWeightingFilter_G728_16s),
                         {in(10), in(10), in(15), inOut(10)},
                         {nulls()},
                         definitions::zspsWeightingFilter_G728_16s},
                        {ZSP_DESCRIBED(zspsWeightingFilterUpdate_G728_16s),
                         {in(10), in(10), in(5), q(), inOut(10)},
                         {nulls(), outside(3, zspStsScaleRangeErr)}},
                        {ZSP_DESCRIBED(zspsTargetNormalize_G728_16s),
                         {in(5), in(5), withQ(in(2), 2), out(6)},
                         {nulls(), badQ(2, 2), beyond(2, 0, 1, 1, 32767, zspStsRangeErr)}},
                        {ZSP_DESCRIBED(zspsImpulseResponseAndEnergy_G728_16s32s),
                         {in(4), in(4), in(4), out(5), out(128)},
                         {nulls()},
                         definitions::zspsImpulseResponseAndEnergy_G728_16s32s},
                        {ZSP_DESCRIBED(zspsCodebookSearch_G728_16s),
                         {withQ(in(6), 6), in(5), in(128), out(1)},
                         {nulls(), badQ(0, 6)},
                         definitions::zspsCodebookSearch_G728_16s}}};
}

Family adaptation()
{
    return {.name = "g728-adaptation",
            .exports = {
                {ZSP_DESCRIBED(zspsHybridWindow_G728_16s),
                 {number(0, 2), in(ofWindow(105, 60, 34)), within(in(21), 0, -64, 64),
                  inOut(ofWindow(51, 11, 11)), within(inOut(1), 0, -256, 256),
                  out(ofWindow(51, 11, 11)), out(1)},
                 {nulls(), outside(0, zspStsCodecRangeErr),
                  beyond(4, 0, 1, -256, 256, zspStsScaleRangeErr),
                  beyond(2, 0, 21, -64, 64, zspStsScaleRangeErr)},
                 definitions::zspsHybridWindow_G728_16s},
                {ZSP_DESCRIBED(zspsLevinsonDurbin_G728_16s),
                 {in(51), number(0, 49), number(1, 50), inOut(50),
                  inOut(3).fitted([](const Call&, std::span<std::byte> bytes) {
                      const auto words = elements<Word>(bytes);
                      if (!words.empty() && words[0] % 8 != 7)
                          words[0] = static_cast<Word>(13 + (words[0] & 0x7fff) % 3);
                  }),
                  out(1)},
                 {nulls(),
                  when(
                      [](const Call& c) {
                          return c.number(1) < 0 || c.number(2) <= c.number(1) || c.number(2) > 50;
                      },
                      zspStsSizeErr),
                  whenContent(
                      [](const Call& c) {
                          const Word w = c.data<Word>(4)[0];
                          return c.number(1) > 0 && (w < 13 || w > 15);
                      },
                      zspStsScaleRangeErr)},
                 definitions::zspsLevinsonDurbin_G728_16s},
                {ZSP_DESCRIBED(zspsBandwidthExpand_G728_16s),
                 {number(0, 6), in(perKind(50, 10, 7)), number(13, 15),
                  inOut(perKind(50, 10, 7)).orIn({1}), out(1)},
                 {nulls(), outside(2, zspStsScaleRangeErr), outside(0, zspStsCodecRangeErr)},
                 definitions::zspsBandwidthExpand_G728_16s}}};
}

Argument pitch()
{
    return number(20, 140);
}

Family postFilter()
{
    return {
        .name = "g728-postfilter",
        .exports = {{ZSP_DESCRIBED(zspsInverseFilter_G728_16s),
                     {in(10), in(5), inOut(10), out(5)},
                     {nulls()},
                     definitions::zspsInverseFilter_G728_16s},
                    {ZSP_DESCRIBED(zspsPitchSearch_G728_16s),
                     {in(240), inOut(60), inOut(3), within(inOut(1), 0, 20, 140)},
                     {nulls(), beyond(3, 0, 1, 20, 140, zspStsCodecRangeErr)},
                     definitions::zspsPitchSearch_G728_16s},
                    {ZSP_DESCRIBED(zspsLongTermPostFilterCoefs_G728_16s),
                     {in(240), pitch(), out(3)},
                     {nulls(), outside(1, zspStsCodecRangeErr)},
                     definitions::zspsLongTermPostFilterCoefs_G728_16s},
                    {ZSP_DESCRIBED(zspsShortTermPostFilterCoefs_G728_16s),
                     {in(10), number(13, 15), anyWord(), out(10), inOut(21), out(1)},
                     {nulls(), outside(1, zspStsScaleRangeErr)}},
                    {ZSP_DESCRIBED(zspsPostFilter_G728_16s),
                     {in(5), inOut(240), pitch(), in(3), in(21), inOut(21), out(5).orIn({0})},
                     {nulls(), outside(2, zspStsCodecRangeErr)},
                     definitions::zspsPostFilter_G728_16s},
                    {ZSP_DESCRIBED(zspsErasureSetup_G728_16s),
                     {number(0, 7).with([](Argument& a) { a.high = kMax; }), anyWord(), pitch(),
                      in(140), within(inOut(1), 0, -1, 135), withQ(inOut(2), 2), out(2)},
                     {nulls(),
                      whenContent(
                          [](const Call& c) {
                              return c.number(0) != 0 && std::abs(c.data<Word>(5)[1]) > 64;
                          },
                          zspStsScaleRangeErr),
                      outside(2, zspStsCodecRangeErr),
                      whenContent(
                          [](const Call& c) {
                              const Word delay = c.data<Word>(4)[0];
                              return c.number(0) != 0 && (delay < -1 || delay > 135);
                          },
                          zspStsCodecRangeErr),
                      outside(0, zspStsRangeErr)}},
                    sizeOf<76>(ZSP_DESCRIBED(zspsErasedExcitationGetStateSize_G728_16s)),
                    {ZSP_DESCRIBED(zspsErasedExcitationInit_G728_16s), {scratch(76)}, {nulls()}}}};
}

Family erasure()
{
    return {.name = "g728-erasure",
            .exports = {{ZSP_DESCRIBED(zspsErasedExcitation_G728_16s),
                         {number(-1, 135), withQ(in(2), 2), in(140), state(), out(6), out(1)},
                         {nulls(), badQ(1, 2), outside(0, zspStsCodecRangeErr)}}},
            .draw = noSetUp,
            .bytes = 76,
            .init = [](const SetUp&, void* state) { zspsErasedExcitationInit_G728_16s(state); }};
}

std::vector<Family> describe()
{
    return {coder(), adaptation(), postFilter(), erasure()};
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
