// Silence compression in an encoder of ITU-T G.723.1, Annex A: the activity decision of clause A.2
// and the silence descriptors of clauses A.3 and A.4.

#include "codecs/g723/g723.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <array>
#include <cstdlib>

namespace zsp::g723 {

namespace {

/// Whether the lags of the last two frames are multiples of the smallest, within 3.
bool isVoiced(const Word* lags) noexcept
{
    Word least = kPast;
    for (std::size_t i = 0; i < 4; ++i)
        least = std::min(least, lags[i]);
    int pairs = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        Word multiple = least;
        for (int k = 0; k < 8; ++k, multiple = fx::add(multiple, least))
            if (std::abs(multiple - lags[i]) <= 3) ++pairs;
    }
    return pairs == 4;
}

/// The energy that the filter of the noise leaves.
Long residualEnergy(In<kFrame> samples, const Word* noiseLpc_Q13) noexcept
{
    Long sum = 0;
    for (std::size_t i = kSubframe; i < kFrame; ++i) {
        Long rest = fx::l_mult(samples[i], 8192);
        for (std::size_t j = 0; j < kOrder; ++j)
            rest = fx::l_msu(rest, samples[i - j - 1], noiseLpc_Q13[j]);
        const Word t = fx::round_fx(rest);
        sum = fx::l_mac(sum, t, t);
    }
    return mls(sum, 2913);
}

Long nextNoiseLevel(Long noise, Long lastEnergy, Word adaptation) noexcept
{
    if (noise > lastEnergy) noise = fx::l_add(fx::l_sub(lastEnergy, lastEnergy >> 2), noise >> 2);
    noise = adaptation == 0 ? fx::l_add(noise, noise >> 5) : fx::l_sub(noise, noise >> 11);
    return std::clamp(noise, 128, 131071);
}

/// The energy above which a frame is active.
Long thresholdOf(Long noise) noexcept
{
    const Long scaled = fx::l_shl(noise, 13);
    const int n = fx::norm_l(scaled); // 1 to 10
    const Long normalised = fx::l_shl(scaled, n);
    const Word part = fx::extract_h((normalised & 0x3f000000) << 1);
    const Word lower = kVadScale[static_cast<std::size_t>(n)];
    const Word upper = kVadScale[static_cast<std::size_t>(n - 1)];
    const Word factor =
        fx::extract_h(fx::l_msu(fx::l_mac(fx::l_deposit_h(lower), part, upper), part, lower));
    return fx::l_mult(fx::extract_l(noise >> 2), factor) >> 11;
}

} // namespace

bool detectActivity(In<kFrame> samples, bool sine, ZspG723VadState& s) noexcept
{
    const bool tonal = isVoiced(s.lags) || sine;
    s.adaptation = std::clamp<Word>(fx::add(s.adaptation, tonal ? 2 : -1), 0, 6);
    const Long energy = residualEnergy(samples, s.noiseLpc);
    s.noise = nextNoiseLevel(s.noise, s.energy, s.adaptation);
    s.energy = energy;

    bool active = thresholdOf(s.noise) <= energy;
    if (active) {
        s.count = fx::add(s.count, 1);
        s.hangover = fx::add(s.hangover, 1);
    } else {
        s.count = std::max<Word>(0, fx::sub(s.count, 1));
    }
    if (s.count >= 2) {
        s.hangover = 6;
        s.count = std::min<Word>(s.count, 3);
    }
    if (s.hangover > 0) {
        active = true;
        if (s.count == 0) --s.hangover;
    }
    s.lags[0] = s.lags[2];
    s.lags[1] = s.lags[3];
    return active;
}

namespace {

using Set = std::array<Word, kOrder + 1>;

/// The sum of sets of correlations, each with its shift.
struct Sum {
    std::array<Long, kOrder + 1> values{};
    int shift = 0;
};

Sum addSets(const Word* sets, const Word* shifts, std::size_t count) noexcept
{
    Sum sum;
    sum.shift = *std::min_element(shifts, shifts + count) + 14;
    for (std::size_t k = 0; k < count; ++k)
        for (std::size_t i = 0; i <= kOrder; ++i)
            sum.values[i] = fx::l_add(sum.values[i],
                                      fx::l_shl(sets[(kOrder + 1) * k + i], sum.shift - shifts[k]));
    return sum;
}

/// A sum as words; its shift follows.
Set narrow(Sum& sum) noexcept
{
    const int excess = std::max(0, 16 - fx::norm_l(sum.values[0]));
    sum.shift -= excess;
    Set set{};
    for (std::size_t i = 0; i < set.size(); ++i)
        set[i] = fx::extract_l(sum.values[i] >> excess);
    return set;
}

/// The autocorrelation of a prediction filter, by which another spectrum is compared with it.
void setFilter(In<kOrder> lpc_Q13, ZspG723SidState& s) noexcept
{
    const Long own = fx::l_add(energy(lpc_Q13) >> 1, 1 << 26);
    const int shift = fx::norm_l(own) - 2;
    s.filter[0] = fx::round_fx(fx::l_shl(own, shift));
    for (std::size_t i = 1; i <= kOrder; ++i) {
        const Long sum =
            dot(lpc_Q13.first(kOrder - i), &lpc_Q13[0] + i, fx::l_mult(-8192, lpc_Q13[i - 1]));
        s.filter[i] = fx::round_fx(fx::l_shl(sum, shift));
    }
    s.filterShift = static_cast<Word>(shift);
}

bool differsFromFilter(const ZspG723SidState& s) noexcept
{
    Long sum = 0;
    for (std::size_t i = 0; i <= kOrder; ++i)
        sum = fx::l_mac(sum, s.filter[i], static_cast<Word>(s.corr[i] >> 2));
    const Long threshold = s.energies[0] + fx::mult_r(s.energies[0], 7000);
    return sum > fx::l_shl(threshold, s.filterShift + 9);
}

} // namespace

void updateSid(In<44> corr, const Word* shifts, ZspG723SidState& s) noexcept
{
    std::copy_backward(s.corr, s.corr + 33, s.corr + 44);
    std::copy_backward(s.shifts, s.shifts + 3, s.shifts + 4);
    Sum sum = addSets(corr.data(), shifts, 4);
    std::ranges::copy(narrow(sum), s.corr);
    s.shifts[0] = fx::sat16(sum.shift);
}

void encodeSid(bool afterSpeech, bool noiseHolds, In<kOrder> previous, Out<kOrder> noiseLpc_Q13,
               Out<kOrder> sidLsp, ZspG723Frame& f, ZspG723SidState& s) noexcept
{
    std::copy_backward(s.energies, s.energies + 2, s.energies + 3);
    std::array<Word, kOrder> current{}, lpc{};
    s.energies[0] = levinsonDurbin(In<11>(s.corr, 11), current).error;
    s.count = afterSpeech ? Word{1} : std::clamp<Word>(fx::add(s.count, 1), 1, 3);
    const int index = sidGainQuant(s.energies, s.shifts, static_cast<std::size_t>(s.count));
    f.type = zspG723Sid;
    if (!afterSpeech && !differsFromFilter(s) && std::abs(index - s.index) <= 3) {
        f.type = zspG723Untransmitted;
        return;
    }

    Sum past = addSets(s.corr + 11, s.shifts + 1, 3);
    levinsonDurbin(narrow(past), lpc);
    if (noiseHolds) std::ranges::copy(lpc, noiseLpc_Q13.begin());
    setFilter(lpc, s);
    if (differsFromFilter(s)) {
        lpc = current;
        setFilter(lpc, s);
    }
    s.index = static_cast<Word>(index);
    f.sidGain = s.index;

    std::array<Word, kOrder> lsp{};
    lpcToLsp(lpc, previous, lsp);
    f.lspIndex = lspQuant(lsp, previous);
    lspDequant(f.lspIndex, false, previous, sidLsp);
}

} // namespace zsp::g723

namespace zsp::entry {

ZspStatus zspsVADInit_G723(ZspG723VadState* state)
{
    if (!state) return zspStsNullPtrErr;

    ZspG723VadState fresh{};
    fresh.energy = fresh.noise = 1024;
    fresh.hangover = 3;
    fresh.lags[0] = fresh.lags[1] = 1;
    fresh.lags[2] = fresh.lags[3] = 60;
    placeRecord(state, fresh);
    return zspStsNoErr;
}

ZspStatus zspsVAD_G723_16s(const std::int16_t* src, std::int32_t sine, ZspG723VadState* state,
                           std::int16_t* active)
{
    if (!src || !state || !active) return zspStsNullPtrErr;

    InPlace<ZspG723VadState> s(state);
    *active = g723::detectActivity(spanOf<240>(src), sine != 0, *s) ? 1 : 0;
    return zspStsNoErr;
}

ZspStatus zspsSIDInit_G723(ZspG723SidState* state)
{
    if (!state) return zspStsNullPtrErr;

    ZspG723SidState fresh{};
    std::fill_n(fresh.shifts, 4, std::int16_t{40});
    placeRecord(state, fresh);
    return zspStsNoErr;
}

ZspStatus zspsSIDUpdate_G723_16s(const std::int16_t* corr, const std::int16_t* shifts,
                                 ZspG723SidState* state)
{
    if (!corr || !shifts || !state) return zspStsNullPtrErr;

    InPlace<ZspG723SidState> s(state);
    g723::updateSid(spanOf<44>(corr), shifts, *s);
    return zspStsNoErr;
}

ZspStatus zspsSIDEncode_G723_16s(std::int32_t afterSpeech, std::int32_t noiseHolds,
                                 const std::int16_t* previous, std::int16_t* noiseLpc,
                                 std::int16_t* sidLsp, ZspG723Frame* frame, ZspG723SidState* state)
{
    if (!previous || !noiseLpc || !sidLsp || !frame || !state) return zspStsNullPtrErr;

    InPlace<ZspG723Frame> f(frame);
    InPlace<ZspG723SidState> s(state);
    g723::encodeSid(afterSpeech != 0, noiseHolds != 0, spanOf<10>(previous), spanOf<10>(noiseLpc),
                    spanOf<10>(sidLsp), *f, *s);
    return zspStsNoErr;
}

} // namespace zsp::entry
