// The blocks of G.723.1.

#include "codecs/g723/g723.hpp"
#include "core/state.hpp"
#include "tests/fuzz/describe.hpp"

#include <algorithm>

namespace zsp::fuzz {

namespace {

using Fits = bool (*)(const ZspG723Frame&, std::size_t);

/// Makes fields legal, but for one frame in eight.
void makeLegal(const Call&, std::span<std::byte> bytes)
{
    auto f = readRecord<ZspG723Frame>(bytes.data());
    if ((f.reserved & 7) == 7) return;
    const auto below = [](auto x, int limit) {
        return static_cast<Word>(static_cast<std::uint32_t>(x) % static_cast<std::uint32_t>(limit));
    };
    f.type &= 1;
    f.lspIndex &= 0xffffff;
    const bool high = f.type == zspG723Rate63;
    for (std::size_t i = 0; i < 4; ++i) {
        if (i % 2 == 0) f.lag[i / 2] = static_cast<Word>(18 + below(f.lag[i / 2], 124));
        f.lagOffset[i] = i % 2 == 0 ? Word{1} : below(f.lagOffset[i], 4);
        f.acbGain[i] = below(f.acbGain[i], high && f.lag[i / 2] < 58 ? 85 : 170);
        f.fcbGain[i] = below(f.fcbGain[i], 24);
        f.train[i] &= 1;
        f.grid[i] &= 1;
        f.signs[i] = below(f.signs[i], high ? (i % 2 == 0 ? 64 : 32) : 16);
        f.position[i] &= high ? 0x1ffff : 0xfff;
    }
    f.sidGain &= 63;
    placeRecord(bytes.data(), f);
}

Argument frameIn()
{
    return in(1).fitted(makeLegal);
}

Argument frameInOut()
{
    return inOut(1).fitted(makeLegal);
}

Argument subframe()
{
    return number(0, 3);
}

ZspG723Frame frameOf(const Call& c, std::size_t argument)
{
    return readRecord<ZspG723Frame>(c.data<std::byte>(argument));
}

/// A frame whose fields do not fit, in the sub-frame of another argument.
Check unfit(std::size_t frame, std::size_t subframeAt, Fits fits)
{
    return whenContent(
        [=](const Call& c) { return !fits(frameOf(c, frame), size(c.number(subframeAt))); },
        zspStsCodecRangeErr);
}

bool isSpeech(const ZspG723Frame& f)
{
    return f.type == zspG723Rate63 || f.type == zspG723Rate53;
}

bool between(int x, int low, int high)
{
    return x >= low && x <= high;
}

bool searchFits(const ZspG723Frame& f, std::size_t i)
{
    return isSpeech(f) && between(f.lag[i / 2], 18, i % 2 == 0 ? 142 : 141);
}

bool pulsesFit(const ZspG723Frame& f, std::size_t i)
{
    return between(f.lag[i / 2], 18, 141);
}

bool tracksFit(const ZspG723Frame& f, std::size_t i)
{
    return f.type == zspG723Rate53 && g723::adaptiveFits(f, i);
}

bool postFilterFits(const ZspG723Frame& f)
{
    return isSpeech(f) && between(f.lag[0], 18, 143) && between(f.lag[1], 18, 143);
}

bool analysisFits(const ZspG723Frame& f)
{
    return between(f.lag[1], 18, 143) && between(f.fcbGain[2], 0, 23) &&
           between(f.fcbGain[3], 0, 23);
}

Check notForAll(std::size_t frame, bool (*fits)(const ZspG723Frame&))
{
    return whenContent([=](const Call& c) { return !fits(frameOf(c, frame)); },
                       zspStsCodecRangeErr);
}

const auto kRange = [](std::size_t i) { return outside(i, zspStsCodecRangeErr); };

std::vector<Description> decoderBlocks()
{
    return {
        {ZSP_DESCRIBED(zspsPackFrame_G723_8u),
         {frameIn(), scratch(24), out(1)},
         {nulls(), notForAll(0, g723::framePacks)}},
        {ZSP_DESCRIBED(zspsUnpackFrame_G723_8u),
         {in(24), oneOf({24, 20, 4, 1}), out(1)},
         {nulls(), outside(1, zspStsSizeErr),
          whenContent(
              [](const Call& c) {
                  return size(c.number(1)) != g723::frameBytes(c.data<std::uint8_t>(0)[0] & 3);
              },
              zspStsSizeErr),
          whenContent(
              [](const Call& c) {
                  ZspG723Frame f;
                  return !g723::unpackFrame({c.data<std::uint8_t>(0), size(c.number(1))}, f);
              },
              zspStsCodecRangeErr)}},
        {ZSP_DESCRIBED(zspsLPCToLSP_G723_16s), {in(10), in(10), out(10).orIn({1})}, {nulls()}},
        {ZSP_DESCRIBED(zspsLSPQuant_G723_16s32s), {in(10), in(10), out(1)}, {nulls()}},
        {ZSP_DESCRIBED(zspsLSPDequant_G723_16s),
         {number(0, 0xffffff), number(0, 1), in(10), out(10).orIn({2})},
         {nulls(), kRange(0), kRange(1)}},
        {ZSP_DESCRIBED(zspsLSPInterpolateToLPC_G723_16s), {in(10), in(10), out(40)}, {nulls()}},
        {ZSP_DESCRIBED(zspsDecodeFixedVector_G723_16s),
         {frameIn(), subframe(), out(60)},
         {nulls(), kRange(1), unfit(0, 1, g723::fixedFits)}},
        {ZSP_DESCRIBED(zspsDecodeAdaptiveVector_G723_16s),
         {frameIn(), subframe(), in(145), out(60)},
         {nulls(), kRange(1), unfit(0, 1, g723::adaptiveFits)}},
        {ZSP_DESCRIBED(zspsExcitation_G723_16s), {in(60), in(60), out(60).orIn({0, 1})}, {nulls()}},
        {ZSP_DESCRIBED(zspsPitchPostFilter_G723_16s),
         {frameIn(), in(385), out(240)},
         {nulls(), notForAll(0, postFilterFits)}},
        {ZSP_DESCRIBED(zspsConcealAnalysis_G723_16s),
         {frameIn(), in(385), out(1), out(1), out(1), out(1)},
         {nulls(), notForAll(0, analysisFits)}},
        {ZSP_DESCRIBED(zspsConcealExcitation_G723_16s),
         {number(0, 145), anyWord(), number(1, 3), inOut(1), inOut(145), out(240)},
         {nulls(), kRange(0), kRange(2)}},
        {ZSP_DESCRIBED(zspsSynthesisFilter_G723_16s),
         {in(10), in(60), out(60).orIn({1}), inOut(10)},
         {nulls()},
         [](const Word* lpc, const Word* src, Word* dst, Word* memory) {
             g723::synthesisFilterScalar(spanOf<10>(lpc), spanOf<60>(src), spanOf<60>(dst),
                                         spanOf<10>(memory));
         }},
        {ZSP_DESCRIBED(zspsFormantPostFilter_G723_16s),
         {in(10), in(60), out(60).orIn({1}), out(1), inOut(21)},
         {nulls()},
         [](const Word* lpc, const Word* src, Word* dst, Long* energy, Word* memory) {
             *energy = g723::formantPostFilterScalar(spanOf<10>(lpc), spanOf<60>(src),
                                                     spanOf<60>(dst), spanOf<21>(memory));
         }},
        {ZSP_DESCRIBED(zspsGainControl_G723_16s_I),
         {inOut(60), number(0, kMax), inOut(1)},
         {nulls(), outside(1, zspStsRangeErr)},
         [](Word* x, Long energy, Word* gain) {
             g723::gainControlScalar(spanOf<60>(x), energy, *gain);
         }},
    };
}

std::vector<Description> encoderBlocks()
{
    return {
        {ZSP_DESCRIBED(zspsHighPassFilter_G723_16s),
         {in(arg(2)), out(arg(2)).orIn({0}), length(), inOut(2)},
         {nulls(), outside(2, zspStsSizeErr)}},
        {ZSP_DESCRIBED(zspsAutoCorr_G723_16s),
         {in(180), out(11), out(1)},
         {nulls()},
         [](const Word* x, Word* corr, Word* shift) {
             g723::autoCorrScalar(spanOf<180>(x), spanOf<11>(corr), *shift);
         }},
        {ZSP_DESCRIBED(zspsLevinsonDurbin_G723_16s), {in(11), out(10), out(1), out(1)}, {nulls()}},
        {ZSP_DESCRIBED(zspsWeightingCoefs_G723_16s), {in(10), out(20)}, {nulls()}},
        {ZSP_DESCRIBED(zspsPerceptualWeighting_G723_16s),
         {in(20), in(60), out(60).orIn({1}), inOut(20)},
         {nulls()},
         [](const Word* coefs, const Word* src, Word* dst, Word* memory) {
             g723::perceptualWeightingScalar(spanOf<20>(coefs), spanOf<60>(src), spanOf<60>(dst),
                                             spanOf<20>(memory));
         }},
        {ZSP_DESCRIBED(zspsOpenLoopPitchSearch_G723_16s),
         {in(385), out(385).orIn({0}), out(2)},
         {nulls()},
         [](const Word* x, Word* normalised, Word* lags) {
             g723::openLoopSearch(spanOf<385>(x), spanOf<385>(normalised), spanOf<2>(lags));
             for (std::size_t half = 0; half < 2; ++half)
                 lags[half] = g723::openLoopLagOf(normalised + 145 + 120 * half, false);
         }},
        {ZSP_DESCRIBED(zspsHarmonicSearch_G723_16s),
         {in(60).after(145), number(18, 142), out(1), out(1)},
         {nulls(), kRange(1)}},
        {ZSP_DESCRIBED(zspsHarmonicFilter_G723_16s),
         {in(60).after(145), number(1, 145), anyWord(), out(60)},
         {nulls(), kRange(1)}},
        {ZSP_DESCRIBED(zspsImpulseResponse_G723_16s),
         {in(10), in(20), number(1, 145), anyWord(), out(60)},
         {nulls(), kRange(2)},
         [](const Word* lpc, const Word* coefs, Word lag, Word gain, Word* dst) {
             g723::impulseResponseScalar(spanOf<10>(lpc), spanOf<20>(coefs), {lag, gain},
                                         spanOf<60>(dst));
         }},
        {ZSP_DESCRIBED(zspsRingingSubtract_G723_16s_I),
         {in(10), in(20), number(1, 145), anyWord(), in(165), inOut(60)},
         {nulls(), kRange(2)},
         [](const Word* lpc, const Word* coefs, Word lag, Word gain, const Word* memory, Word* x) {
             g723::subtractRingingScalar(spanOf<10>(lpc), spanOf<20>(coefs), {lag, gain},
                                         spanOf<165>(memory), spanOf<60>(x));
         }},
        {ZSP_DESCRIBED(zspsRingingUpdate_G723_16s),
         {in(10), in(20), in(60), inOut(165)},
         {nulls()},
         [](const Word* lpc, const Word* coefs, const Word* excitation, Word* memory) {
             g723::updateRingingScalar(spanOf<10>(lpc), spanOf<20>(coefs), spanOf<60>(excitation),
                                       spanOf<165>(memory));
         }},
        {ZSP_DESCRIBED(zspsAdaptiveCodebookSearch_G723_16s),
         {in(60), in(60), in(145), in(5), number(kMin, kMax), subframe(), frameInOut()},
         {nulls(), kRange(5), unfit(6, 5, searchFits)}},
        {ZSP_DESCRIBED(zspsAdaptiveSubtract_G723_16s_I),
         {in(60), in(60), inOut(60)},
         {nulls()},
         [](const Word* vector, const Word* response, Word* target) {
             g723::subtractAdaptiveScalar(spanOf<60>(vector), spanOf<60>(response),
                                          spanOf<60>(target));
         }},
        {ZSP_DESCRIBED(zspsTamingUpdate_G723_32s_I),
         {frameIn(), subframe(), inOut(5)},
         {nulls(), kRange(1), unfit(0, 1, g723::adaptiveFits)}},
        {ZSP_DESCRIBED(zspsMPMLQSearch_G723_16s),
         {in(60), in(60), subframe(), frameInOut()},
         {nulls(), kRange(2), unfit(3, 2, pulsesFit)}},
        {ZSP_DESCRIBED(zspsACELPCorrelations_G723_16s),
         {frameIn(), subframe(), in(60), out(60), out(416)},
         {nulls(), kRange(1), unfit(0, 1, tracksFit)}},
        {ZSP_DESCRIBED(zspsACELPSearch_G723_16s),
         {in(60), in(60), in(416), subframe(), inOut(1), frameInOut(), out(60)},
         {nulls(), kRange(3),
          whenContent([](const Call& c) { return c.data<Word>(4)[0] < 0; }, zspStsRangeErr)}},
        {ZSP_DESCRIBED(zspsACELPGainQuant_G723_16s), {in(60), in(60), out(1)}, {nulls()}},
    };
}

std::vector<Description> noiseBlocks()
{
    return {
        {ZSP_DESCRIBED(zspsSIDGainQuant_G723_16s),
         {in(3), in(3), number(0, 3), out(1)},
         {nulls(), outside(2, zspStsSizeErr)}},
        {ZSP_DESCRIBED(zspsSIDGainDequant_G723_16s), {number(0, 63), out(1)}, {nulls(), kRange(0)}},
        {ZSP_DESCRIBED(zspsComfortNoiseExcitation_G723_16s),
         {anyWord(), inOut(1), inOut(145), frameInOut(), out(240)},
         {nulls()}},
        {ZSP_DESCRIBED(zspsVADInit_G723), {inOut(1)}, {nulls()}},
        {ZSP_DESCRIBED(zspsSIDInit_G723), {inOut(1)}, {nulls()}},
    };
}

std::vector<Family> describe()
{
    return {
        {.name = "g723-decoder", .exports = decoderBlocks()},
        {.name = "g723-encoder", .exports = encoderBlocks()},
        {.name = "g723-noise", .exports = noiseBlocks()},
        {.name = "g723-vad",
         .exports = {{ZSP_DESCRIBED(zspsVAD_G723_16s),
                      {in(240), number(kMin, kMax), state(), out(1)},
                      {nulls()}}},
         .draw = noSetUp,
         .bytes = sizeof(ZspG723VadState),
         .init = [](const SetUp&,
                    void* state) { zspsVADInit_G723(static_cast<ZspG723VadState*>(state)); }},
        {.name = "g723-sid",
         .exports = {{ZSP_DESCRIBED(zspsSIDUpdate_G723_16s), {in(44), in(4), state()}, {nulls()}},
                     {ZSP_DESCRIBED(zspsSIDEncode_G723_16s),
                      {number(kMin, kMax), number(kMin, kMax), in(10), inOut(10), inOut(10),
                       frameInOut(), state()},
                      {nulls()}}},
         .draw = noSetUp,
         .bytes = sizeof(ZspG723SidState),
         .init = [](const SetUp&,
                    void* state) { zspsSIDInit_G723(static_cast<ZspG723SidState*>(state)); }},
    };
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
