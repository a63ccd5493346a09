// What encoder and decoder of G.728 have in common: the synthesis filter, the log-gain predictor
// and how both are renewed from past output. Everything is kept as the blocks want it, newest
// first.
#pragma once

#include "voice/codec/shared/probe.hpp"
#include "zspsc/g728/adapt.h"
#include "zspsc/g728/coder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zsp::voice {

inline constexpr std::size_t kG728Vector = 5, kG728Frame = 20, kG728FrameBytes = 5;

/// Five mantissas and their Q; one and its Q.
using G728Vector = std::array<std::int16_t, kG728Vector + 1>;
using G728Scalar = std::array<std::int16_t, 2>;
using G728Samples = std::array<std::int16_t, kG728Vector>;

template <std::size_t n, std::size_t m>
void pushSamples(std::array<std::int16_t, n>& buffer,
                 const std::array<std::int16_t, m>& fresh) noexcept
{
    constexpr std::size_t kCount = m == kG728Vector + 1 ? kG728Vector : m;
    std::copy_backward(buffer.begin(), buffer.end() - kCount, buffer.end());
    std::copy_n(fresh.begin(), kCount, buffer.begin());
}

/// A mantissa of Q `q` in Q2, rounded down and saturated.
inline std::int16_t inQ2(std::int16_t mantissa, int q) noexcept
{
    const int shift = q - 2;
    if (shift >= 0) return static_cast<std::int16_t>(mantissa >> std::min(shift, 15));
    return static_cast<std::int16_t>(
        std::clamp(mantissa * (1 << std::min(-shift, 15)), -32768, 32767));
}

/// A mantissa of Q `q` in Q `wanted`, rounded to nearest and saturated.
inline std::int16_t roundedTo(int wanted, std::int16_t mantissa, int q) noexcept
{
    const int shift = wanted + 16 - q; // to the upper half of 32 bits
    const std::int64_t wide = shift >= 0 ? mantissa * (std::int64_t{1} << std::min(shift, 47))
                                         : std::int64_t{mantissa} >> std::min(-shift, 63);
    const std::int64_t limited = std::clamp<std::int64_t>(wide, INT32_MIN, INT32_MAX);
    return static_cast<std::int16_t>(std::min<std::int64_t>((limited + 0x8000) >> 16, 32767));
}

/// A plain record.
template <typename Probe>
struct G728Side {
    std::array<std::int16_t, 105> history;  // quantised speech, 21 vectors
    std::array<std::int16_t, 21> historyQ;  // of each of them
    std::array<std::int16_t, 50> lpc, next; // synthesis filter, and the one from vector 2 on
    std::array<std::int16_t, 50> predictor; // on its way up to `next`
    std::array<std::int16_t, 3> predictorState;
    std::array<std::int16_t, 51> correlation;
    std::array<std::int16_t, 51> recursion;
    std::array<std::int16_t, 34> logGains;
    std::array<std::int16_t, 10> gainPredictor;
    std::array<std::int16_t, 11> gainRecursion;
    std::int16_t recursionQ, gainRecursionQ;
    std::int16_t logGain;  // predicted for this vector
    std::int32_t isUsable; // predictor, and then `next`

    void start() noexcept
    {
        *this = G728Side{};
        historyQ.fill(16);
        std::fill_n(logGains.begin(), 3, std::int16_t{-16384});
        gainPredictor[0] = -16384;
        recursionQ = gainRecursionQ = 31;
        predictorState[0] = 15;
    }

    G728Scalar predictGain(std::int16_t most) noexcept
    {
        G728Scalar gain;
        zspsLogGainPredict_G728_16s(gainPredictor.data(), logGains.data(), most, &logGain,
                                    gain.data());
        Probe::show("log_gain", logGain);
        Probe::show("gain", gain);
        return gain;
    }

    G728Vector zeroInput() const noexcept
    {
        G728Vector s;
        zspsSyntesisFilterZeroInput_G728_16s(lpc.data(), history.data(), historyQ.data(), s.data());
        Probe::show("zero_input", s);
        return s;
    }

    /// The response to an excitation, which may be halved for it.
    G728Samples zeroState(G728Vector& excitation) const noexcept
    {
        G728Samples response;
        Probe::show("excitation", excitation);
        zspsSynthesisFilterZeroState_G728_16s(lpc.data(), excitation.data(), response.data());
        Probe::show("excitation_scaled", excitation);
        return response;
    }

    void pushSpeech(const G728Vector& s) noexcept
    {
        Probe::show("state", s);
        pushSamples(history, s);
        pushSamples(historyQ, std::array<std::int16_t, 1>{s[kG728Vector]});
    }

    void pushLogGain(std::int16_t next_Q9) noexcept
    {
        Probe::show("log_gain_new", next_Q9);
        pushSamples(logGains, std::array<std::int16_t, 1>{next_Q9});
    }

    /// Behind vector 3: the synthesis filter's autocorrelation and its first ten orders.
    void beginSynthesis() noexcept
    {
        std::int32_t isGood = 0;
        zspsHybridWindow_G728_16s(zspG728WindowSynthesis, history.data(), historyQ.data(),
                                  recursion.data(), &recursionQ, correlation.data(), &isGood);
        isUsable = 0;
        if (isGood)
            zspsLevinsonDurbin_G728_16s(correlation.data(), 0, 10, predictor.data(),
                                        predictorState.data(), &isUsable);
        Probe::show("synthesis_exponent", recursionQ);
        Probe::show("synthesis_recursive", recursion);
        Probe::show("synthesis_autocorrelation", correlation);
        Probe::show("synthesis_ok", static_cast<std::int16_t>(isUsable));
        if (isUsable) {
            Probe::show("synthesis_q10", predictorState[0]);
            Probe::show("synthesis_durbin10", std::span(predictor).template first<10>());
            Probe::show("synthesis_alpha", predictorState[1]);
        }
    }

    /// Behind vector 0: the other forty orders. Long losses have no use for them.
    void finishSynthesis(bool isWanted) noexcept
    {
        if (isUsable && isWanted)
            zspsLevinsonDurbin_G728_16s(correlation.data(), 10, 50, predictor.data(),
                                        predictorState.data(), &isUsable);
        if (isUsable && isWanted)
            zspsBandwidthExpand_G728_16s(zspG728ExpandSynthesis, predictor.data(),
                                         predictorState[0], next.data(), &isUsable);
        Probe::show("synthesis_ok50", static_cast<std::int16_t>(isUsable));
        if (isUsable && isWanted) {
            Probe::show("synthesis_q50", predictorState[0]);
            Probe::show("synthesis_durbin50", predictor);
            Probe::show("synthesis_next", next);
        }
    }

    /// Behind vector 0 as well. What is lost leaves the predictor alone.
    void adaptLogGain(bool isLost) noexcept
    {
        std::array<std::int16_t, 11> r;
        std::array<std::int16_t, 10> a;
        std::array<std::int16_t, 3> state;
        std::int32_t isGood = 0;
        zspsHybridWindow_G728_16s(zspG728WindowLogGain, logGains.data(), historyQ.data(),
                                  gainRecursion.data(), &gainRecursionQ, r.data(), &isGood);
        if (isGood && !isLost) {
            zspsLevinsonDurbin_G728_16s(r.data(), 0, 10, a.data(), state.data(), &isGood);
            if (isGood)
                zspsBandwidthExpand_G728_16s(zspG728ExpandLogGain, a.data(), state[0],
                                             gainPredictor.data(), &isGood);
        }
        Probe::show("gain_exponent", gainRecursionQ);
        Probe::show("gain_recursive", gainRecursion);
        Probe::show("gain_autocorrelation", r);
        Probe::show("gain_predictor", gainPredictor);
    }

    /// Behind vector 1: from the next vector on.
    void takeNext() noexcept
    {
        if (isUsable) lpc = next;
    }
};

} // namespace zsp::voice
