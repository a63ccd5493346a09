// ITU-T G.726 ADPCM: the state records and the coder's two directions.
#pragma once

#include "core/spans.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace zsp::g726 {

inline constexpr std::size_t kZeros = 6; // coefficients of the zero predictor
inline constexpr std::size_t kTaps = 8;  // and with the two of the pole predictor behind them

/// What encoder and decoder keep from sample to sample. Scale factors are logarithms to base 2 with
/// 9 fraction bits (yl: 15), ap has 8, the predictor coefficients have 14.
struct CoderState {
    std::int16_t pk0 = 0; // signs of the last three partially reconstructed signals, newest first
    std::int16_t pk1 = 0;
    std::int16_t pk2 = 0;
    std::int16_t rateIndex = 0;
    std::int16_t yu = 544;
    std::int16_t ap = 0;
    std::int32_t yl = 34816;
    std::int16_t dms = 0;
    std::int16_t dml = 0;
    std::int16_t td = 0;
    std::int16_t sez = 0;
    // In the order b1..b6, a1, a2: coefficients; delayed dq1..dq6, sr1, sr2 as exponent * 64 +
    // 6-bit mantissa; their signs.
    std::array<std::int16_t, kTaps> coefficient{};
    std::array<std::int16_t, kTaps> delayed = {32, 32, 32, 32, 32, 32, 32, 32};
    std::array<std::int16_t, kTaps> sign{};
};
static_assert(sizeof(CoderState) == 72 && std::is_trivially_copyable_v<CoderState>);

struct EncoderState {
    CoderState coder;
    std::array<std::int16_t, 8> reserved{};
};
static_assert(sizeof(EncoderState) == 88 && std::is_trivially_copyable_v<EncoderState>);

enum class Law : std::int16_t { mulaw = 0, alaw = 1, uniform = 2 };

/// The encoder's record with the law behind it.
struct DecoderState {
    CoderState coder;
    std::array<std::int16_t, 8> reserved{};
    Law law = Law::uniform;
    std::int16_t unused = 0;
};
static_assert(sizeof(DecoderState) == 92 && std::is_trivially_copyable_v<DecoderState>);
static_assert(offsetof(DecoderState, law) == sizeof(EncoderState));

/// The definition: one code word per sample. `code` is as long as `sl`.
void encodeScalar(CoderState& state, In16 sl, Out8 code) noexcept;

/// The definition: one sample per code word, in the law's format. `out` is as long as `code`.
void decodeScalar(CoderState& state, Law law, In8 code, Out16 out) noexcept;

/// Equal to encodeScalar and decodeScalar in every result and in the state.
void encodeAvx2(CoderState& state, In16 sl, Out8 code) noexcept;
void decodeAvx2(CoderState& state, Law law, In8 code, Out16 out) noexcept;

} // namespace zsp::g726
