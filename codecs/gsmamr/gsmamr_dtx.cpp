// Discontinuous transmission of GSM-AMR, 3GPP TS 26.093.
//
// The handler keeps seven frames of speech mode after the detector's last speech frame, so that the
// comfort noise is averaged over background alone. A burst that follows soon after the last
// averaging needs no such hangover: the old parameters still hold.

#include "codecs/gsmamr/gsmamr_dtx.hpp"

#include "common/correlation/energy.hpp"
#include "common/math/log2_pow2.hpp"
#include "core/entries.hpp"

#include <algorithm>

namespace zsp::gsmamr {

namespace {

constexpr fx::Word kHangover = 7;                     // DTX_HANG_CONST
constexpr fx::Word kElapsedShort = 30;                // DTX_ELAPSED_FRAMES_THRESH
constexpr fx::Word kLog2FrameEnergyOffset_Q10 = 8521; // log2(2 * 160), for the mean of a sample

/// log2 of a sample's mean energy, Q10. Exponents reach 30, so the sum does not saturate.
fx::Word logFrameEnergy(std::span<const std::int16_t, kFrame> frame) noexcept
{
    const auto [exponent, fraction_Q15] = common::log2(common::energyAvx2(frame));
    return static_cast<fx::Word>((exponent << 10) + (fraction_Q15 >> 5) -
                                 kLog2FrameEnergyOffset_Q10);
}

} // namespace

DtxDecision encDtxHandler(DtxCounters& counters, bool isSpeech) noexcept
{
    counters.elapsed = fx::add(counters.elapsed, 1);
    if (isSpeech) {
        counters.hangover = kHangover;
        return {.isDtx = false, .newSidPossible = false};
    }
    if (counters.hangover == 0) {
        counters.elapsed = 0;
        return {.isDtx = true, .newSidPossible = true};
    }
    counters.hangover = fx::sub(counters.hangover, 1);
    return {.isDtx = fx::add(counters.elapsed, counters.hangover) < kElapsedShort,
            .newSidPossible = false};
}

void dtxBuffer(std::span<const std::int16_t, kFrame> frame,
               std::span<const std::int16_t, kLpcOrder> lsp_Q15, fx::Word& index,
               std::span<std::int16_t, kDtxHistory * kLpcOrder> lspHistory_Q15,
               std::span<std::int16_t, kDtxHistory> logEnergyHistory, LogEnergyScale scale) noexcept
{
    index = fx::add(index, 1);
    if (index >= static_cast<fx::Word>(kDtxHistory)) index = 0;

    const auto at = static_cast<std::size_t>(index);
    std::copy(lsp_Q15.begin(), lsp_Q15.end(), &lspHistory_Q15[at * kLpcOrder]);
    logEnergyHistory[at] = static_cast<fx::Word>(logFrameEnergy(frame) >> static_cast<int>(scale));
}

} // namespace zsp::gsmamr

namespace zsp::entry {

using namespace gsmamr;

ZspStatus zspsEncDTXHandler_GSMAMR_16s(std::int16_t* hangover, std::int16_t* elapsed,
                                       std::int16_t* mode, std::int16_t* newSid,
                                       std::int16_t vadFlag)
{
    if (!hangover || !elapsed || !mode || !newSid) return zspStsNullPtrErr;

    DtxCounters counters{*hangover, *elapsed};
    const DtxDecision decision = encDtxHandler(counters, vadFlag != 0);
    *hangover = counters.hangover;
    *elapsed = counters.elapsed;
    if (decision.isDtx) *mode = kModeDtx;
    *newSid = decision.newSidPossible;
    return zspStsNoErr;
}

ZspStatus zspsEncDTXBuffer_GSMAMR_16s(const std::int16_t* speech, const std::int16_t* lsp,
                                      std::int16_t* index, std::int16_t* lspHistory,
                                      std::int16_t* logEnergyHistory)
{
    if (!speech || !lsp || !index || !lspHistory || !logEnergyHistory) return zspStsNullPtrErr;

    dtxBuffer(spanOf<kFrame>(speech), spanOf<kLpcOrder>(lsp), *index,
              spanOf<kDtxHistory * kLpcOrder>(lspHistory), spanOf<kDtxHistory>(logEnergyHistory),
              LogEnergyScale::encoder);
    return zspStsNoErr;
}

ZspStatus zspsDecDTXBuffer_GSMAMR_16s(const std::int16_t* speech, const std::int16_t* lsp,
                                      std::int16_t* index, std::int16_t* lspHistory,
                                      std::int16_t* logEnergyHistory)
{
    if (!speech || !lsp || !index || !lspHistory || !logEnergyHistory) return zspStsNullPtrErr;

    dtxBuffer(spanOf<kFrame>(speech), spanOf<kLpcOrder>(lsp), *index,
              spanOf<kDtxHistory * kLpcOrder>(lspHistory), spanOf<kDtxHistory>(logEnergyHistory),
              LogEnergyScale::decoder);
    return zspStsNoErr;
}

} // namespace zsp::entry
