// Discontinuous transmission of GSM-AMR: when comfort noise may start, and the histories from which
// its parameters are averaged. 3GPP TS 26.093.
#pragma once

#include "core/fixed_point.hpp"
#include "core/spans.hpp"

namespace zsp::gsmamr {

inline constexpr std::size_t kFrame = 160;
inline constexpr std::size_t kLpcOrder = 10;
inline constexpr std::size_t kDtxHistory = 8;

/// Value of the mode word that stands for comfort noise.
inline constexpr fx::Word kModeDtx = 25;

/// The counters of the handler.
struct DtxCounters {
    fx::Word hangover; // speech frames left after the detector's last speech frame
    fx::Word elapsed;  // frames since comfort noise parameters were last computed anew
};

/// What one frame's decision asks of the encoder.
struct DtxDecision {
    bool isDtx;
    bool newSidPossible;
};

/// tx_dtx_handler.
DtxDecision encDtxHandler(DtxCounters& counters, bool isSpeech) noexcept;

/// The decoder keeps the log energy in Q11, the encoder in Q10.
enum class LogEnergyScale { decoder = 0, encoder = 1 };

/// dtx_buffer of the encoder, and the same step in the decoder's activity update.
void dtxBuffer(std::span<const std::int16_t, kFrame> frame,
               std::span<const std::int16_t, kLpcOrder> lsp_Q15, fx::Word& index,
               std::span<std::int16_t, kDtxHistory * kLpcOrder> lspHistory_Q15,
               std::span<std::int16_t, kDtxHistory> logEnergyHistory,
               LogEnergyScale scale) noexcept;

} // namespace zsp::gsmamr
