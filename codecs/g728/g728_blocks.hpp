// The blocks of ITU-T G.728 in the fixed-point form of Annex G, and of its Annex I. The clause and
// the formats stand in the public header, at the exports that are made from these functions.
// Functions in Scalar are definitions; those in Avx2 equal them in every result.
#pragma once

#include "codecs/g728/g728_ops.hpp"

namespace zsp::g728 {

inline constexpr std::size_t kShapes = 128;
/// Residual and past speech that the post-filter looks back on; past excitation of concealment.
inline constexpr int kLeastPitch = 20, kMostPitch = 140;
inline constexpr std::size_t kPast = 240, kDecimated = 60, kPastExcitation = 140;

// Gain: blocks 46 to 48, 39 to 42, 19 and 21.

Word predictLogGain(In<kShort> predictor, In<kShort> logGain, Word most) noexcept;
Scalar linearGain(Word logGain_Q9) noexcept;
Word nextLogGain(Word predicted_Q9, int index) noexcept;
Vector scaleCodevector(int index, Scalar gain) noexcept;

// Synthesis filter: blocks 9 and 22.

/// `history` is ten vectors, `q` theirs.
Vector zeroInputScalar(In<kLong> a, In<kLong> history, In<kShort> q) noexcept;
Vector zeroInputAvx2(In<kLong> a, In<kLong> history, In<kShort> q) noexcept;
/// Halves the excitation until the response has room. Of `a` the first four count.
void zeroState(In<4> a, Vector& excitation, Out<kVector> response) noexcept;
/// What the synthesis filter gives: `s` is its zero-input response before.
void addResponses(In<kVector> zeroState, int q, Vector& s) noexcept;

// Weighting and target: blocks 4, 10, 11 and 16.

void weightScalar(In<kShort> zero, In<kShort> pole, In<15> src, Out<kShort> memory) noexcept;
void weightAvx2(In<kShort> zero, In<kShort> pole, In<15> src, Out<kShort> memory) noexcept;
/// Adds the weighted zero-state response to the memory of the zero-input side.
void weightZeroState(In<kShort> zero, In<kShort> pole, In<kVector> response, int q,
                     Out<kShort> memory) noexcept;
Vector target(In<kVector> weighted, In<kVector> zeroInput, Scalar gain) noexcept;

// Codebook: blocks 12 to 15, 17 and 18.

using Energies = std::span<Long, kShapes>;
using EnergiesIn = std::span<const Long, kShapes>;

/// Of the coefficients the first four count.
void impulseResponse(In<4> a, In<4> zero, In<4> pole, Out<kVector> h) noexcept;
void shapeEnergiesScalar(In<kVector> h, Energies energies) noexcept;
void shapeEnergiesAvx2(In<kVector> h, Energies energies) noexcept;
/// Block 13: the target seen from before the filter, u[4] for the first sample.
std::array<Word, kVector> reverseConvolve(const Vector& target, In<kVector> h) noexcept;
int searchScalar(In<kVector> u, EnergiesIn energies) noexcept;
int searchAvx2(In<kVector> u, EnergiesIn energies) noexcept;

// Backward adaptation: blocks 36 to 38, 43 to 45, 49 to 51.

/// The shape of a hybrid window: samples that are weighted once, that enter the recursion, lags.
struct WindowShape {
    std::size_t lags;     // order + 1
    std::size_t entering; // N
    std::size_t fresh;    // M
    int decay;            // the recursion keeps 1 - 2^-decay
    std::span<const Word> window;
};
inline constexpr std::size_t kMostWindow = 105, kMostLags = kLong + 1;

/// The windows of the synthesis filter, the weighting filter and the log-gain predictor.
const WindowShape& windowShape(int kind) noexcept;
/// Windowed samples, newest first, and their Q. `q` holds that of each vector of five, for the
/// synthesis filter; others have none.
int applyWindowScalar(const WindowShape& shape, std::span<const Word> src, std::span<const Word> q,
                      std::span<Word> windowed) noexcept;
int applyWindowAvx2(const WindowShape& shape, std::span<const Word> src, std::span<const Word> q,
                    std::span<Word> windowed) noexcept;
/// What the recursion keeps of itself, of 65536.
inline Wide keptOf(const WindowShape& shape) noexcept
{
    return 65536 - (1 << (16 - shape.decay));
}
/// How far sums of products, the recursion and their total are shifted, which lag 0 decides.
struct LagShifts {
    int old, entering; // to the right
    int recursion;     // to the left, and a negative one to the right
    int total, fresh;
    int correlation;
};
/// Renews lag 0 from its sums of products, and the recursion's Q.
LagShifts renewLag0(const WindowShape& shape, int windowedQ, Wide entering, Wide fresh,
                    Word& recursion, int& recursionQ, Word& r) noexcept;
/// Renews the recursion and forms the autocorrelation; whether that is well-conditioned.
bool correlateScalar(const WindowShape& shape, std::span<const Word> windowed, int windowedQ,
                     std::span<Word> recursion, int& recursionQ, std::span<Word> r) noexcept;
bool correlateAvx2(const WindowShape& shape, std::span<const Word> windowed, int windowedQ,
                   std::span<Word> recursion, int& recursionQ, std::span<Word> r) noexcept;

/// A predictor on its way up: coefficients in Q q, energy of the residual, first reflection
/// coefficient in Q15.
struct Predictor {
    std::array<Word, kLong> a{};
    int q = 15;
    Word alpha = 0;
    Word reflection = 0;
};
/// a[j] += k * a[i-1-j] for all j < i, from both ends to the middle. Where a result has no room,
/// all coefficients are halved, renewed ones too, and go on in one Q less. k is in Q16.
bool reflect(std::span<Word> a, Long k, int& halved) noexcept;
/// Orders from + 1 to `to`. A bad end returns false and leaves the predictor as it was.
bool levinsonScalar(std::span<const Word> r, int from, int to, Predictor& p) noexcept;
bool levinsonAvx2(std::span<const Word> r, int from, int to, Predictor& p) noexcept;

/// The weights of bandwidth expansions by the public kinds.
std::span<const Word> expansionWeights(int kind) noexcept;
/// a[i] * weights[i] in Q14, where a has Q 13 to 15; dst may be a. Where a result has no room:
/// false, nothing written.
bool expandBandwidthScalar(std::span<const Word> a, int q, std::span<const Word> weights,
                           std::span<Word> dst) noexcept;
bool expandBandwidthAvx2(std::span<const Word> a, int q, std::span<const Word> weights,
                         std::span<Word> dst) noexcept;

// Post-filter: blocks 71 to 77, 81 to 85.

struct ShortTerm {
    std::array<Word, kShort> pole, zero; // Q14
    Word tilt;                           // Q14
};
struct LongTerm {
    Word gain; // of the sample itself, Q14
    Word tap;  // of the one a pitch period before, Q16
    Word measured_Q14;
};
struct PostMemory {
    std::array<Word, kShort> zero, pole;
    Word level;
};

void inverseFilterScalar(In<kShort> a_Q13, In<kVector> src, Out<kShort> memory,
                         Out<kVector> dst) noexcept;
void inverseFilterAvx2(In<kShort> a_Q13, In<kVector> src, Out<kShort> memory,
                       Out<kVector> dst) noexcept;
bool shortTermCoefs(const Predictor& p, Out<kShort> inverse_Q13, ShortTerm& coefs) noexcept;
int searchPitchScalar(In<kPast> residual, Out<kDecimated> decimated, Out<3> lowpass,
                      int old) noexcept;
int searchPitchAvx2(In<kPast> residual, Out<kDecimated> decimated, Out<3> lowpass,
                    int old) noexcept;
LongTerm longTermCoefsScalar(In<kPast> past, int pitch) noexcept;
LongTerm longTermCoefsAvx2(In<kPast> past, int pitch) noexcept;
void postFilterScalar(In<kVector> src, Out<kPast> past, int pitch, const LongTerm& longTerm,
                      const ShortTerm& shortTerm, PostMemory& memory, Out<kVector> dst) noexcept;
void postFilterAvx2(In<kVector> src, Out<kPast> past, int pitch, const LongTerm& longTerm,
                    const ShortTerm& shortTerm, PostMemory& memory, Out<kVector> dst) noexcept;

// Concealment: Annex I.

/// The random generator, an additive one on the words r(n-17) and r(n-5).
struct Random {
    std::array<Long, 17> words;
    Long first, second;
};
struct Erasure {
    int delay;   // of the excitation that is repeated; negative: drawn anew for every vector
    Scalar mean; // magnitude of five samples before the loss
    Scalar scale;
};

Random freshRandom() noexcept;
/// Phase 0 decides; later ones only fade.
void setUpErasure(int phase, Word tap_Q14, int pitch, In<kPastExcitation> past,
                  Erasure& erasure) noexcept;
Vector erasedExcitation(const Erasure& erasure, In<kPastExcitation> past, Random& random,
                        Word& logGain_Q9) noexcept;

} // namespace zsp::g728
