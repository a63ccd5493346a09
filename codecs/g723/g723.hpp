// The speech coder of ITU-T G.723.1 at 6.3 and 5.3 kbit/s, with the silence compression of Annex A,
// block by block. A name that ends in Scalar is a definition, its Avx2 or Fast form gives the same
// in every result. A function without such an ending has one form.
#pragma once

#include "codecs/g723/g723_arithmetic.hpp"
#include "codecs/g723/tables/g723_tables.hpp"
#include "zspsc/g723/noise.h"

namespace zsp::g723 {

// What a frame says

inline constexpr Word kLowestLag = 18;
inline constexpr Word kHighestLag = 143; // of comfort noise; coded are lags up to 141

/// Whether the book of 85 gains is in use for a pair of sub-frames.
constexpr bool usesSmallBook(std::int32_t type, Word pairLag) noexcept
{
    return type == zspG723Rate63 && pairLag < 58;
}

/// Whether an adaptive gain index, a lag and its offset can be used together.
bool adaptiveFits(const ZspG723Frame& f, std::size_t subframe) noexcept;

/// Whether all fields that make a fixed vector are in their ranges.
bool fixedFits(const ZspG723Frame& f, std::size_t i) noexcept;

/// Whether every field of the frame fits the bits that its type has for it.
bool framePacks(const ZspG723Frame& f) noexcept;

/// Octets of a frame of a type.
std::size_t frameBytes(std::int32_t type) noexcept;

void packFrame(const ZspG723Frame& f, std::span<std::uint8_t> bytes) noexcept;

/// False for what no encoder sends; the frame is then lost.
bool unpackFrame(std::span<const std::uint8_t> bytes, ZspG723Frame& f) noexcept;

// Front end and LPC

struct HighPassState {
    Long sum;
    Word last;
};
void highPass(std::span<const Word> src, std::span<Word> dst, HighPassState& s) noexcept;
void autoCorrScalar(In<180> samples, Out<11> corr, Word& shift) noexcept;
void autoCorrAvx2(In<180> samples, Out<11> corr, Word& shift) noexcept;

struct Prediction {
    Word error;      // of the prediction
    Word reflection; // the second coefficient
};
Prediction levinsonDurbin(In<11> corr, Out<kOrder> lpc_Q13) noexcept;

// LSP

void lpcToLsp(In<kOrder> lpc_Q13, In<kOrder> previous, Out<kOrder> lsp) noexcept;
Long lspQuant(In<kOrder> lsp, In<kOrder> previous) noexcept;
void lspDequant(Long index, bool erased, In<kOrder> previous, Out<kOrder> lsp) noexcept;
void interpolateToLpc(In<kOrder> previous, In<kOrder> lsp, Out<40> lpc_Q13) noexcept;

// Weighting; `weighting` holds ten zeros and ten poles, Q13

void weightingCoefficients(In<kOrder> lpc_Q13, Out<20> dst_Q13) noexcept;
void perceptualWeightingScalar(In<20> weighting, In<kSubframe> src, Out<kSubframe> dst,
                               Out<20> memory) noexcept;
void perceptualWeightingFast(In<20> weighting, In<kSubframe> src, Out<kSubframe> dst,
                             Out<20> memory) noexcept;

struct Harmonic {
    Word lag, gain_Q15;
};
/// `x` is a sub-frame with 145 samples before it.
Harmonic harmonicSearch(const Word* x, Word lag) noexcept;
void harmonicFilter(const Word* x, Harmonic h, Out<kSubframe> dst) noexcept;

void impulseResponseScalar(In<kOrder> lpc_Q13, In<20> weighting, Harmonic h,
                           Out<kSubframe> dst) noexcept;
void impulseResponseFast(In<kOrder> lpc_Q13, In<20> weighting, Harmonic h,
                         Out<kSubframe> dst) noexcept;

/// Ten words of the synthesis, ten of the weighting, 145 of what came out.
inline constexpr std::size_t kRingingMemory = 165;
void subtractRingingScalar(In<kOrder> lpc_Q13, In<20> weighting, Harmonic h,
                           In<kRingingMemory> memory, Out<kSubframe> target) noexcept;
void subtractRingingFast(In<kOrder> lpc_Q13, In<20> weighting, Harmonic h,
                         In<kRingingMemory> memory, Out<kSubframe> target) noexcept;
void updateRingingScalar(In<kOrder> lpc_Q13, In<20> weighting, In<kSubframe> excitation,
                         Out<kRingingMemory> memory) noexcept;
void updateRingingFast(In<kOrder> lpc_Q13, In<20> weighting, In<kSubframe> excitation,
                       Out<kRingingMemory> memory) noexcept;

// Searches of the encoder

/// The lag of half a frame; `x` has 145 words before it. Fast, or by definition.
Word openLoopLagOf(const Word* x, bool fast) noexcept;
/// Normalises 145 past and 240 new weighted samples and finds the lag of each half.
void openLoopSearch(In<kPast + kFrame> weighted, Out<kPast + kFrame> normalised,
                    Out<2> lags) noexcept;

/// Chooses the lag offset and the gain of a sub-frame; in even ones also the lag of the pair.
void adaptiveSearch(In<kSubframe> target, In<kSubframe> response, In<kPast> past,
                    std::span<const Long, 5> errors, bool sine, std::size_t subframe,
                    ZspG723Frame& f) noexcept;
/// Takes the filtered vector out of the target.
void subtractAdaptiveScalar(In<kSubframe> vector, In<kSubframe> response,
                            Out<kSubframe> target) noexcept;
void subtractAdaptiveAvx2(In<kSubframe> vector, In<kSubframe> response,
                          Out<kSubframe> target) noexcept;
void updateTaming(const ZspG723Frame& f, std::size_t subframe, std::span<Long, 5> errors) noexcept;

void multiPulseSearch(In<kSubframe> target, In<kSubframe> response, std::size_t subframe,
                      ZspG723Frame& f) noexcept;

/// Correlations of the sharpened response: four tracks of 8, six pairs of tracks of 64.
inline constexpr std::size_t kCorrelations = 416;
void acelpCorrelations(In<kSubframe> response, const ZspG723Frame& f, std::size_t subframe,
                       Out<kSubframe> sharpened, Out<kCorrelations> corr) noexcept;
/// Chooses positions, signs and grid, and gives the filtered vector for a gain of 1.
void acelpSearch(In<kSubframe> target, In<kSubframe> sharpened, In<kCorrelations> corr,
                 std::size_t subframe, Word& budget, ZspG723Frame& f,
                 Out<kSubframe> filtered) noexcept;
Word acelpGain(In<kSubframe> target, In<kSubframe> filtered) noexcept;

// Excitation

void adaptiveVector(const ZspG723Frame& f, std::size_t subframe, In<kPast> past,
                    Out<kSubframe> dst) noexcept;
/// Twice the fixed plus the adaptive vector.
void excitation(In<kSubframe> fixed, In<kSubframe> adaptive, Out<kSubframe> dst) noexcept;
void fixedVector(const ZspG723Frame& f, std::size_t subframe, Out<kSubframe> dst) noexcept;

// Decoder

struct PitchPostFilter {
    std::int32_t index; // of what is added, from the present sample; 0: nothing is
    Word gain, scale;   // Q15
};
PitchPostFilter pitchPostFilterOf(In<kPast + kFrame> normalised, Word pairLag, std::size_t subframe,
                                  Word weight) noexcept;
void pitchPostFilter(In<kPast + kFrame> excitation, const ZspG723Frame& f,
                     Out<kFrame> dst) noexcept;

struct Concealment {
    Word lag; // 0: the last frame was not voiced
    Word energy;
    Word shift;
};
Concealment concealAnalysis(In<kPast + kFrame> excitation, Word lastLag) noexcept;

/// The count of lost frames is 1 to 3.
void concealExcitation(Word lag, Word gain, int count, Word& seed, Out<kPast> past,
                       Out<kFrame> dst) noexcept;

void synthesisFilterScalar(In<kOrder> lpc_Q13, In<kSubframe> src, Out<kSubframe> dst,
                           Out<kOrder> memory) noexcept;

/// Words that the formant post-filter keeps: last inputs, last outputs before the tilt, the tilt.
inline constexpr std::size_t kPostFilterMemory = 21;

void synthesisFilterFast(In<kOrder> lpc_Q13, In<kSubframe> src, Out<kSubframe> dst,
                         Out<kOrder> memory) noexcept;
/// Returns the energy of the input, which the gain control takes.
Long formantPostFilterFast(In<kOrder> lpc_Q13, In<kSubframe> src, Out<kSubframe> dst,
                           Out<kPostFilterMemory> memory) noexcept;
void gainControlFast(Out<kSubframe> samples, Long wanted, Word& gain) noexcept;
Long formantPostFilterScalar(In<kOrder> lpc_Q13, In<kSubframe> src, Out<kSubframe> dst,
                             Out<kPostFilterMemory> memory) noexcept;
void gainControlScalar(Out<kSubframe> samples, Long wanted, Word& gain) noexcept;

// Annex A

bool detectActivity(In<kFrame> samples, bool sine, ZspG723VadState& s) noexcept;
void updateSid(In<44> corr, const Word* shifts, ZspG723SidState& s) noexcept;
void encodeSid(bool afterSpeech, bool noiseHolds, In<kOrder> previous, Out<kOrder> noiseLpc_Q13,
               Out<kOrder> sidLsp, ZspG723Frame& f, ZspG723SidState& s) noexcept;

Word sidGain(int index) noexcept;
int sidGainIndex(Long energy) noexcept;
/// The gain index of `count` frames' energies and shifts; count 0 means one of a decoder's.
int sidGainQuant(const Word* energies, const Word* shifts, std::size_t count) noexcept;

void comfortNoise(Word gain, Word& seed, Out<kPast> past, ZspG723Frame& f,
                  Out<kFrame> dst) noexcept;

} // namespace zsp::g723
