// The searches of an encoder of ITU-T G.729 and Annex A. Names ending in Avx2 or Fast equal the
// definitions, which end in Scalar, in every result; what has no second form has no ending.
#pragma once

#include "codecs/g729/coder/g729_coder.hpp"
#include "codecs/g729/decoder/g729_decoder.hpp"
#include "codecs/g729/g729_lsf_memory.hpp"

#include <array>

namespace zsp::g729 {

// Line spectral pairs, clause 3.2.4

/// L0 and L1, L2 and L3 as they stand in a frame.
struct LsfCode {
    Word first, second;
};
LsfCode quantiseLsfScalar(In<kOrder> lsf_Q13, Out<kLsfMemory> memory,
                          Out<kOrder> quantised_Q13) noexcept;
LsfCode quantiseLsfAvx2(In<kOrder> lsf_Q13, Out<kLsfMemory> memory,
                        Out<kOrder> quantised_Q13) noexcept;
/// Places in the books: of the nearest of the first stage, and in the second of frequencies `from`
/// to `from` + 4.
std::size_t lsfNearestScalar(const LsfVector& target) noexcept;
std::size_t lsfNearestPartScalar(const LsfVector& rest, const LsfVector& weights,
                                 std::size_t from) noexcept;
std::size_t lsfNearestAvx2(const LsfVector& target) noexcept;
std::size_t lsfNearestPartAvx2(const LsfVector& rest, const LsfVector& weights,
                               std::size_t from) noexcept;

// Weighting of the main body, clause 3.3

struct WeightingMemory {
    std::array<Word, 2> ratios; // log area ratios of the last frame, Q11
    Word isFlat;                // 1 or 0
};
/// Factors of both subframes from their frequencies (parts of the sampling rate, Q15).
void weightingFactors(In<kOrder> between, In<kOrder> lsf_Q15, In<2> reflection_Q15,
                      Out<2> gamma1_Q15, Out<2> gamma2_Q15, WeightingMemory& memory) noexcept;

/// Of the synthesis and both weighting filters in series.
void impulseResponse(In<kTaps> numerator_Q12, In<kTaps> denominator_Q12, In<kTaps> lpc_Q12,
                     Out<kSubframe> dst) noexcept;

// Lags

inline constexpr std::size_t kHighestSearched = 143;
inline constexpr std::size_t kOpenLoop = kHighestSearched + kFrame;
using OpenLoopSpeech = In<kOpenLoop>;
int openLoopLagScalar(OpenLoopSpeech speech) noexcept;
int openLoopLagAScalar(OpenLoopSpeech speech) noexcept;
int openLoopLagAvx2(OpenLoopSpeech speech) noexcept;
int openLoopLagAAvx2(OpenLoopSpeech speech) noexcept;

/// The first 40 words of the response to x, truncated.
void convolveScalar(In<kSubframe> x, In<kSubframe> h, Out<kSubframe> y) noexcept;
void convolveAvx2(In<kSubframe> x, In<kSubframe> h, Out<kSubframe> y) noexcept;

/// Ranges of lags are within 20 to 143 and of ten lags at most. The excitation begins with the
/// past; its last 40 words are the residual, which is replaced by the vector.
using Excitation = Out<kPast + kSubframe>;
inline constexpr int kMostLags = 10;
Lag adaptiveSearchScalar(In<kSubframe> target, In<kSubframe> response, int first, int last,
                         bool isFirst, Excitation excitation) noexcept;
Lag adaptiveSearchAvx2(In<kSubframe> target, In<kSubframe> response, int first, int last,
                       bool isFirst, Excitation excitation) noexcept;
/// The target's correlation with the response in place of both.
Lag adaptiveSearchAScalar(In<kSubframe> correlation, int first, int last, bool isFirst,
                          Excitation excitation) noexcept;
Lag adaptiveSearchAAvx2(In<kSubframe> correlation, int first, int last, bool isFirst,
                        Excitation excitation) noexcept;

// Gains

/// Energy of the filtered adaptive vector and its correlation with the target, each with its
/// exponent, as the trace `pitch_correlations` has them.
struct PitchSums {
    Word energy, energyExponent, correlation, correlationExponent;
};
PitchSums pitchSums(In<kSubframe> target, In<kSubframe> filtered) noexcept;
Word pitchGain(const PitchSums& sums) noexcept;

inline constexpr Word kTamedGain = 15564; // Q14
using TamingErrors = std::span<Long, 4>;
bool needsTaming(std::span<const Long, 4> errors, Lag lag) noexcept;
void updateTaming(Word gain_Q14, Word lag, TamingErrors errors) noexcept;

/// Five correlations and their exponents.
struct GainSums {
    std::array<Word, 5> sums, exponents;
};
GainSums gainSums(const PitchSums& pitch, In<kSubframe> target, In<kSubframe> adaptive,
                  In<kSubframe> fixed) noexcept;
/// The index that is sent; `past` as in decodeGains().
int quantiseGains(const GainSums& g, bool isTamed, In<kSubframe> code, Out<4> past,
                  Gains& gains) noexcept;

// Fixed codebook, clauses 3.8 and A.3.8

/// Eight energies for each of five tracks, then 64 sums for each pair of tracks.
inline constexpr std::size_t kMatrix = 616;
void toeplizMatrixScalar(In<kSubframe> response, Out<kMatrix> matrix) noexcept;
void toeplizMatrixAvx2(In<kSubframe> response, Out<kMatrix> matrix) noexcept;

struct FixedCode {
    Word positions, signs;
};
FixedCode fixedSearchScalar(In<kSubframe> correlation, In<kMatrix> matrix, bool isFirst,
                            Word& extra) noexcept;
FixedCode fixedSearchAvx2(In<kSubframe> correlation, In<kMatrix> matrix, bool isFirst,
                          Word& extra) noexcept;
FixedCode fixedSearchAScalar(In<kSubframe> correlation, In<kMatrix> matrix) noexcept;
FixedCode fixedSearchAAvx2(In<kSubframe> correlation, In<kMatrix> matrix) noexcept;
/// The pulses, each with the response.
void filterPulses(const FixedCode& code, In<kSubframe> response, Out<kSubframe> dst) noexcept;

} // namespace zsp::g729
