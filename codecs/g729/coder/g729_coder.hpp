// The encoder of ITU-T G.729 at 8 kbit/s block by block, main body and Annex A. Names ending in
// Avx2 or Fast equal the definitions, which end in Scalar, in every result; what has no second form
// has no ending.
#pragma once

#include "codecs/g729/g729.hpp"

#include <span>

namespace zsp::g729 {

inline constexpr std::size_t kLags = 13; // of the autocorrelation; the last two are of Annex B

// Linear prediction

/// Windows 240 samples. Normalised sums, the largest first; they are 2^exponent smaller than they
/// are with exponent 0.
void autoCorrScalar(In<240> x, std::span<Long, kLags> corr, Word& exponent) noexcept;
void autoCorrAvx2(In<240> x, std::span<Long, kLags> corr, Word& exponent) noexcept;
void lagWindow(std::span<Long, kLags> corr) noexcept;

struct Prediction {
    std::array<Word, kTaps> lpc_Q12;
    std::array<Word, kOrder> reflection_Q15;
    Word error; // energy, in the format of the upper words of the correlations
};
/// False for an unstable filter. corr[0] is normalised.
bool levinsonDurbin(std::span<const Long, kTaps> corr, Prediction& p) noexcept;

// Line spectral pairs

/// `previous` where fewer than ten roots are found: then false.
/// The definitions.
bool lpcToLspScalar(In<kTaps> lpc_Q12, In<kOrder> previous, Out<kOrder> lsp_Q15) noexcept;
bool lpcToLspAScalar(In<kTaps> lpc_Q12, In<kOrder> previous, Out<kOrder> lsp_Q15) noexcept;
/// Equal to them in every result.
bool lpcToLsp(In<kTaps> lpc_Q12, In<kOrder> previous, Out<kOrder> lsp_Q15) noexcept;
bool lpcToLspA(In<kTaps> lpc_Q12, In<kOrder> previous, Out<kOrder> lsp_Q15) noexcept;
void lspToLpc(In<kOrder> lsp_Q15, Out<kTaps> lpc_Q12) noexcept;
void interpolateLsp(In<kOrder> previous, In<kOrder> lsp, Out<kOrder> between) noexcept;
/// Frequencies are not negative.
void lsfToLsp(In<kOrder> lsf_Q13, Out<kOrder> lsp_Q15) noexcept;

// Weighting

/// The filter widened by 0.75^i, and the same with a low-pass in series.
void weightA(In<kTaps> lpc_Q12, Out<kTaps> weighted_Q12, Out<kTaps> lowPass_Q12) noexcept;

} // namespace zsp::g729
