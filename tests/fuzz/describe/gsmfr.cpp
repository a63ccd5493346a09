// The blocks of GSM full rate.

#include "codecs/gsmfr/gsmfr_emphasis.hpp"
#include "codecs/gsmfr/gsmfr_frame.hpp"
#include "codecs/gsmfr/gsmfr_longterm.hpp"
#include "codecs/gsmfr/gsmfr_lpc.hpp"
#include "codecs/gsmfr/gsmfr_rpe.hpp"
#include "codecs/gsmfr/gsmfr_shortterm.hpp"
#include "core/state.hpp"
#include "tests/fuzz/describe.hpp"

#include <array>

namespace zsp::fuzz {

namespace {

using namespace gsmfr;

constexpr int kPastWords = 120;

/// Words of at most so many bits each, the sequence again and again; one in eight blocks may hold
/// any words.
template <std::size_t n>
Argument codes(int count, const std::array<int, n>& bits)
{
    return in(count).fitted([bits](const Call&, std::span<std::byte> bytes) {
        const std::span<Word> words = elements<Word>(bytes);
        if (!words.empty() && words[0] % 8 == 7) return;
        for (std::size_t i = 0; i < words.size(); ++i)
            words[i] = static_cast<Word>(words[i] & ((1 << bits[i % n]) - 1));
    });
}

/// A check that words fit their bits.
template <std::size_t n>
Check beyond(std::size_t argument, std::size_t count, const std::array<int, n>& bits)
{
    return whenContent(
        [=](const Call& c) {
            const Word* words = c.data<Word>(argument);
            for (std::size_t i = 0; i < count; ++i)
                if (words[i] < 0 || words[i] >> bits[i % n] != 0) return true;
            return false;
        },
        zspStsCodecRangeErr);
}

constexpr std::array<int, 1> kPulseBits = {3};

constexpr auto kAllBits = [] {
    std::array<int, kParameters> all{};
    for (std::size_t i = 0; i < all.size(); ++i)
        all[i] = i < kOrder ? kLarBits[i] : kSegmentBits[(i - kOrder) % kSegmentBits.size()];
    return all;
}();

Family linearPrediction()
{
    return {
        .name = "gsmfr-lpc",
        .exports = {
            {ZSP_DESCRIBED(zspsAutoCorr_GSMFR_16s32s_I),
             {inOut(160), out(9), out(1)},
             {nulls()},
             [](Word* s, Long* acf, Long* scale) {
                 *scale = autoCorrScalar(spanOf<160>(s), spanOf<9>(acf));
             }},
            {ZSP_DESCRIBED(zspsSchur_GSMFR_32s16s),
             {in(9), out(8)},
             {nulls()},
             [](const Long* acf, Word* r) { schurScalar(spanOf<9>(acf), spanOf<8>(r)); }},
            {ZSP_DESCRIBED(zspsReflectToLAR_GSMFR_16s),
             {in(8), out(8).orIn({0})},
             {nulls()},
             [](const Word* r, Word* lar) { reflectToLarScalar(spanOf<8>(r), spanOf<8>(lar)); }},
            {ZSP_DESCRIBED(zspsLARQuant_GSMFR_16s),
             {in(8), out(8).orIn({0})},
             {nulls()},
             [](const Word* lar, Word* larc) { larQuantScalar(spanOf<8>(lar), spanOf<8>(larc)); }},
            {ZSP_DESCRIBED(zspsLARDequant_GSMFR_16s),
             {codes(8, kLarBits), out(8).orIn({0})},
             {nulls(), beyond(0, 8, kLarBits)},
             [](const Word* larc, Word* larpp) {
                 larDequantScalar(spanOf<8>(larc), spanOf<8>(larpp));
             }},
            {ZSP_DESCRIBED(zspsLARInterpolateToReflect_GSMFR_16s),
             {in(8), in(8), out(32)},
             {nulls()},
             [](const Word* last, const Word* now, Word* rp) {
                 larInterpolateScalar(spanOf<8>(last), spanOf<8>(now), spanOf<32>(rp));
             }},
            {ZSP_DESCRIBED(zspsShortTermAnalysisFilter_GSMFR_16s),
             {in(160), in(32), out(160).orIn({0}), inOut(8)},
             {nulls()},
             [](const Word* s, const Word* rp, Word* d, Word* u) {
                 analyseScalar(spanOf<160>(s), spanOf<32>(rp), spanOf<160>(d), spanOf<8>(u));
             }},
            {ZSP_DESCRIBED(zspsShortTermSynthesisFilter_GSMFR_16s),
             {in(160), in(32), out(160).orIn({0}), inOut(8)},
             {nulls()},
             [](const Word* wr, const Word* rrp, Word* sr, Word* v) {
                 synthesiseScalar(spanOf<160>(wr), spanOf<32>(rrp), spanOf<160>(sr), spanOf<8>(v));
             }},
        }};
}

Family residual()
{
    const Argument grid = number(0, 3), lag = number(40, 120), gain = number(0, 3);
    const auto outsideRange = [](std::size_t i) { return outside(i, zspStsCodecRangeErr); };
    return {.name = "gsmfr-residual",
            .exports = {
                {ZSP_DESCRIBED(zspsLTPSearch_GSMFR_16s),
                 {in(40), in(0).after(kPastWords), out(1), out(1)},
                 {nulls()},
                 [](const Word* d, const Word* past, Long* nc, Long* bc) {
                     const LongTerm found =
                         ltpSearchScalar(spanOf<40>(d), spanOf<120>(past - kPastWords));
                     *nc = found.lag;
                     *bc = found.gain;
                 }},
                {ZSP_DESCRIBED(zspsLongTermPredict_GSMFR_16s),
                 {in(40), in(0).after(kPastWords), lag, gain, out(40).orIn({0})},
                 {nulls(), outsideRange(2), outsideRange(3)},
                 [](const Word* d, const Word* past, Long nc, Long bc, Word* e) {
                     longTermPredictScalar(spanOf<40>(d), spanOf<120>(past - kPastWords), {nc, bc},
                                           spanOf<40>(e));
                 }},
                {ZSP_DESCRIBED(zspsWeightingFilter_GSMFR_16s),
                 {in(40), out(40).orIn({0})},
                 {nulls()},
                 [](const Word* e, Word* x) { weightScalar(spanOf<40>(e), spanOf<40>(x)); }},
                {ZSP_DESCRIBED(zspsRPEGridSelect_GSMFR_16s),
                 {in(40), out(13), out(1)},
                 {nulls()},
                 [](const Word* x, Word* xm, Long* mc) {
                     *mc = gridSelectScalar(spanOf<40>(x), spanOf<13>(xm));
                 }},
                {ZSP_DESCRIBED(zspsAPCMQuant_GSMFR_16s),
                 {in(13), out(13).orIn({0}), out(1)},
                 {nulls()},
                 [](const Word* xm, Word* xmc, Long* xmaxc) {
                     *xmaxc = apcmQuantScalar(spanOf<13>(xm), spanOf<13>(xmc));
                 }},
                {ZSP_DESCRIBED(zspsAPCMDequant_GSMFR_16s),
                 {codes(13, kPulseBits), number(0, 63), out(13).orIn({0})},
                 {nulls(), outsideRange(1), beyond(0, 13, kPulseBits)},
                 [](const Word* xmc, Long xmaxc, Word* xmp) {
                     apcmDequantScalar(spanOf<13>(xmc), xmaxc, spanOf<13>(xmp));
                 }},
                {ZSP_DESCRIBED(zspsLongTermSynthesis_GSMFR_16s),
                 {in(13), grid, lag, gain, inOut(40).after(kPastWords)},
                 {nulls(), outsideRange(1), outsideRange(2), outsideRange(3)},
                 [](const Word* xmp, Long mc, Long nc, Long bc, Word* dp) {
                     longTermSynthesisScalar(spanOf<13>(xmp), mc, {nc, bc},
                                             spanOf<120>(static_cast<const Word*>(dp) - kPastWords),
                                             spanOf<40>(dp));
                 }},
            }};
}

std::vector<Family> describe()
{
    return {
        linearPrediction(),
        residual(),
        {.name = "gsmfr-frame",
         .exports = {{ZSP_DESCRIBED(zspsPackFrame_GSMFR_16s8u),
                      {codes(76, kAllBits), out(33)},
                      {nulls(), beyond(0, 76, kAllBits)},
                      [](const Word* parameters, std::uint8_t* bytes) {
                          packFrame(spanOf<76>(parameters), spanOf<33>(bytes));
                      }},
                     {ZSP_DESCRIBED(zspsUnpackFrame_GSMFR_8u16s),
                      {in(33).fitted([](const Call&, std::span<std::byte> bytes) {
                           if ((bytes[1] & std::byte{7}) != std::byte{0})
                               bytes[0] = (bytes[0] & std::byte{0x0f}) | std::byte{0xd0};
                       }),
                       out(76)},
                      {nulls(),
                       whenContent(
                           [](const Call& c) { return *c.data<std::uint8_t>(0) >> 4 != 0xd; },
                           zspStsCodecRangeErr)},
                      [](const std::uint8_t* bytes, Word* parameters) {
                          unpackFrame(spanOf<33>(bytes), spanOf<76>(parameters));
                      }}}},
        {.name = "gsmfr-emphasis",
         .exports = {{ZSP_DESCRIBED(zspsPreprocess_GSMFR_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length(), state()},
                      {nulls(), outside(2, zspStsSizeErr)},
                      [](const Word* src, Word* dst, Long len, ZspPreprocessState_GSMFR* state) {
                          InPlace<PreprocessState> record(state);
                          preprocessScalar({src, size(len)}, {dst, size(len)}, *record);
                      }},
                     {ZSP_DESCRIBED(zspsDeemphasis_GSMFR_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length(), inOut(1)},
                      {nulls(), outside(2, zspStsSizeErr)},
                      [](const Word* src, Word* dst, Long len, Word* msr) {
                          deemphasisScalar({src, size(len)}, {dst, size(len)}, *msr);
                      }}},
         .draw = noSetUp,
         .bytes = sizeof(ZspPreprocessState_GSMFR),
         .init = [](const SetUp&, void* state) { placeRecord(state, ZspPreprocessState_GSMFR{}); }},
    };
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
