// The blocks of a decoder of ITU-T G.729 and its Annex A. Names ending in Avx2 or Fast equal the
// definitions, which end in Scalar, in every result; what has no second form has no ending.
#pragma once

#include "codecs/g729/g729.hpp"
#include "codecs/g729/g729_lsf_memory.hpp"

#include <algorithm>
#include <array>

namespace zsp::g729 {

/// Lags that frames can have; searches and concealment stay within 143.
inline constexpr Word kLowestLag = 18;
inline constexpr Word kHighestLag = 144;

// Fields of a frame

inline constexpr std::size_t kSpeechBytes = 10, kParameters = 11;
inline constexpr std::size_t kSidBytes = 2, kSidParameters = 4;

bool fieldsFit(std::span<const Word> fields, std::size_t bytes) noexcept;
void packFields(std::span<const Word> fields, std::span<std::uint8_t> bytes) noexcept;
/// Those that the frame does not have are 0.
void unpackFields(std::span<const std::uint8_t> bytes, Out<kParameters> fields) noexcept;

struct LsfIndices {
    std::int32_t predictor, first, low, high;
};
void decodeLsf(const LsfIndices& indices, Out<kLsfMemory> memory, Out<kOrder> lsf_Q13) noexcept;
void decodeLsfErased(std::int32_t predictor, In<kOrder> lsf_Q13, Out<kLsfMemory> memory) noexcept;

struct Lag {
    Word whole, thirds;
};
Lag firstLag(int index) noexcept;
Lag secondLag(int index, Word first) noexcept;

/// A gain as mantissa 2^-q.
struct PredictedGain {
    Word mantissa, q;
};
PredictedGain predictCodeGain(In<kSubframe> code, In<4> past) noexcept;
void updateGainMemory(Long correction_Q13, Out<4> past) noexcept;

struct Gains {
    Word pitch_Q14, code_Q1;
};
Gains decodeGains(int index, In<kSubframe> code, Out<4> past) noexcept;
void fadeGains(Gains& gains, Out<4> past) noexcept;

// Excitation, clauses 3.7, 3.8 and 4.1.3 to 4.1.5

/// The past excitation, `lag` and a number of thirds ago, into the last 40 words, which have the
/// past before them.
void adaptiveVectorScalar(Word lag, Word fraction, Out<kPast + kSubframe> excitation) noexcept;
void adaptiveVector(Word lag, Word fraction, Out<kPast + kSubframe> excitation) noexcept;

struct Pulse {
    std::size_t at;
    bool positive;
};
using Pulses = std::array<Pulse, 4>;
Pulses pulsesOf(int positions, int signs) noexcept;
void fixedVector(int positions, int signs, Out<kSubframe> code) noexcept;

/// Adds what lies a lag before, with a gain in Q14; nothing for lags of a sub-frame and more.
void sharpen(Word lag, Word gain_Q14, Out<kSubframe> x) noexcept;

void excitationScalar(Word pitchGain_Q14, Word codeGain_Q1, In<kSubframe> code,
                      Out<kSubframe> adaptive) noexcept;
void excitationAvx2(Word pitchGain_Q14, Word codeGain_Q1, In<kSubframe> code,
                    Out<kSubframe> adaptive) noexcept;

// Synthesis, clause 4.1.6

inline constexpr std::size_t kExcitation = kPast + kFrame;
/// A filter that overflows is run again, with all of the excitation divided by four.
void synthesise(In<kTaps> lpc_Q12, std::size_t subframe, Out<kExcitation> excitation,
                Out<kSubframe> dst, Out<kOrder> memory) noexcept;

// Post-filter of the main body, clause 4.2

inline constexpr std::size_t kResidualPast = 152;
using PostResidual = In<kResidualPast + kSubframe>;
/// The delay that is found, 0 where the filter does nothing.
Word longTermPostFilterScalar(Word lag, PostResidual residual, Out<kSubframe> dst) noexcept;
Word longTermPostFilterAvx2(Word lag, PostResidual residual, Out<kSubframe> dst) noexcept;

/// Filters and gives the tilt of the response, -k1; dst begins with the last word before.
Word shortTermPostFilter(In<kTaps> zeros_Q12, In<kTaps> poles_Q12, In<kSubframe> src,
                         Out<kSubframe + 1> dst, Out<kOrder> memory) noexcept;
void tiltCompensationScalar(Word reflection_Q15, In<kSubframe + 1> src,
                            Out<kSubframe> dst) noexcept;
void tiltCompensationFast(Word reflection_Q15, In<kSubframe + 1> src, Out<kSubframe> dst) noexcept;
void gainControlScalar(In<kSubframe> before, Out<kSubframe> samples, Word& gain_Q14) noexcept;
void gainControlFast(In<kSubframe> before, Out<kSubframe> samples, Word& gain_Q14) noexcept;

// Post-filter of Annex A, clause A.4.2

inline constexpr std::size_t kResidualPastA = 143;
using PostResidualA = In<kResidualPastA + kSubframe>;
void longTermPostFilterAScalar(Word lag, PostResidualA residual, Out<kSubframe> dst) noexcept;
void longTermPostFilterAAvx2(Word lag, PostResidualA residual, Out<kSubframe> dst) noexcept;
/// `last` is the last word of the sub-frame before, as it was.
void tiltCompensationA(In<kTaps> zeros_Q12, In<kTaps> poles_Q12, Out<kSubframe> samples,
                       Word& last) noexcept;
void gainControlAScalar(In<kSubframe> before, Out<kSubframe> samples, Word& gain_Q12) noexcept;
void gainControlAFast(In<kSubframe> before, Out<kSubframe> samples, Word& gain_Q12) noexcept;

} // namespace zsp::g729
