// The filters of the weighted domain of G.723.1 in sums that wrap, whose reach tells afterwards
// that no step would have saturated; else the definitions decide. What the zeros and the first
// filter give is one sum over the same past.

#include "codecs/g723/g723.hpp"
#include "codecs/g723/g723_fast.hpp"

#include <array>

namespace zsp::g723 {

namespace {

In<kOrder> zerosOf(In<20> weighting) noexcept
{
    return weighting.first<kOrder>();
}

In<kOrder> polesOf(In<20> weighting) noexcept
{
    return weighting.last<kOrder>();
}

} // namespace

void perceptualWeightingFast(In<20> weighting, In<kSubframe> src, Out<kSubframe> dst,
                             Out<20> memory) noexcept
{
    ZerosAndPoles filter;
    if (!filter.run(zerosOf(weighting), polesOf(weighting), src, memory.data()))
        return perceptualWeightingScalar(weighting, src, dst, memory);
    for (std::size_t i = 0; i < kSubframe; ++i)
        dst[i] = static_cast<Word>(filter.y[i]);
    filter.keep(memory.data());
}

namespace {

/// Both filters of a Cascade over a sub-frame, in sums of Q29. False where a step could saturate.
bool runCascade(const std::array<Long, kSubframe>& input, In<kOrder> lpc_Q13, In<20> weighting,
                bool doubled, Signal& fir, Signal& iir) noexcept
{
    const Taps a(lpc_Q13), zeros(zerosOf(weighting)), poles(polesOf(weighting));
    std::array<std::uint32_t, kSubframe> sums;
    for (std::size_t i = 0; i < kSubframe; ++i) {
        sums[i] = static_cast<std::uint32_t>(input[i]) + a.over(fir, i);
        fir[i] = outputOf(sums[i]);
    }
    addTaps<-1>(sums, zeros, fir);
    if ((1 << 28) + a.reach(fir) + zeros.reach(fir) > kReach) return false;

    std::int64_t most = 0; // of what goes into the second filter
    for (std::uint32_t& sum : sums) {
        most = std::max(most, std::abs(std::int64_t{static_cast<Long>(sum)}));
        sum *= doubled ? 2 : 1;
    }
    for (std::size_t i = 0; i < kSubframe; ++i)
        iir[i] = outputOf(sums[i] + poles.over(iir, i));
    return (doubled ? 2 * most : most) + poles.reach(iir) <= kReach;
}

} // namespace

void impulseResponseFast(In<kOrder> lpc_Q13, In<20> weighting, Harmonic h,
                         Out<kSubframe> dst) noexcept
{
    constexpr std::array<Long, kSubframe> kImpulse = {1 << 26};
    constexpr std::array<Word, kOrder> kSilence{};
    Signal fir, iir;
    fir.begin(kSilence.data());
    iir.begin(kSilence.data());
    if (!runCascade(kImpulse, lpc_Q13, weighting, true, fir, iir))
        return impulseResponseScalar(lpc_Q13, weighting, h, dst);
    std::array<Word, kPast + kSubframe> response{};
    for (std::size_t i = 0; i < kSubframe; ++i)
        response[kPast + i] = static_cast<Word>(iir[i]);
    harmonicFilter(&response[kPast], h, dst);
}

void subtractRingingFast(In<kOrder> lpc_Q13, In<20> weighting, Harmonic h,
                         In<kRingingMemory> memory, Out<kSubframe> target) noexcept
{
    constexpr std::array<Long, kSubframe> kSilence{};
    Signal fir, iir;
    fir.begin(memory.data());
    iir.begin(memory.data() + kOrder);
    if (!runCascade(kSilence, lpc_Q13, weighting, false, fir, iir))
        return subtractRingingScalar(lpc_Q13, weighting, h, memory, target);
    std::array<Word, kPast + kSubframe> ringing;
    std::copy(memory.begin() + 2 * kOrder, memory.end(), ringing.begin());
    for (std::size_t i = 0; i < kSubframe; ++i)
        ringing[kPast + i] = static_cast<Word>(iir[i]);
    for (std::size_t i = 0; i < kSubframe; ++i) {
        const Word left = fx::sub(target[i], ringing[kPast + i]);
        const Word past = ringing[kPast + i - static_cast<std::size_t>(h.lag)];
        target[i] = fx::round_fx(fx::l_mac(fx::l_deposit_h(left), h.gain_Q15, past));
    }
}

void updateRingingFast(In<kOrder> lpc_Q13, In<20> weighting, In<kSubframe> excitation,
                       Out<kRingingMemory> memory) noexcept
{
    std::array<Long, kSubframe> input;
    for (std::size_t i = 0; i < kSubframe; ++i)
        input[i] = excitation[i] * 8192;
    Signal fir, iir;
    fir.begin(memory.data());
    iir.begin(memory.data() + kOrder);
    if (!runCascade(input, lpc_Q13, weighting, false, fir, iir))
        return updateRingingScalar(lpc_Q13, weighting, excitation, memory);
    fir.end(memory.data());
    iir.end(memory.data() + kOrder);
    const Out<kPast> past = memory.last<kPast>();
    std::copy(past.begin() + kSubframe, past.end(), past.begin());
    for (std::size_t i = 0; i < kSubframe; ++i)
        past[kPast - kSubframe + i] = static_cast<Word>(iir[i]);
}

} // namespace zsp::g723
