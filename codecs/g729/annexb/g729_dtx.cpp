// What an encoder of ITU-T G.729 Annex B sends in pauses, clauses B.4.1 and B.4.2: a silence
// descriptor when the noise has changed, otherwise nothing.

#include "codecs/g729/annexb/g729_annexb.hpp"
#include "codecs/g729/g729_lsf.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace zsp::g729 {

namespace {

/// Correlations with a shift of all.
struct Set {
    std::array<Word, kTaps> words{};
    int shift = 0;
};

Set addSets(const Word* sets, const Word* shifts, std::size_t count) noexcept
{
    const int common = *std::min_element(shifts, shifts + count) + 14;
    std::array<Long, kTaps> sums{};
    for (std::size_t k = 0; k < count; ++k)
        for (std::size_t i = 0; i < kTaps; ++i)
            sums[i] = fx::l_add(sums[i], fx::l_shl(sets[kTaps * k + i], common - shifts[k]));
    const int more = fx::norm_l(sums[0]);
    Set set{.shift = common + more - 16};
    for (std::size_t i = 0; i < kTaps; ++i)
        set.words[i] = fx::extract_h(fx::l_shl(sums[i], more));
    return set;
}

/// The sum of the last two frames joins the three that describe the past.
void keepPair(ZspG729BDtxState& s) noexcept
{
    std::copy_backward(s.sums, s.sums + 2 * kTaps, s.sums + 3 * kTaps);
    std::copy_backward(s.sumShifts, s.sumShifts + 2, s.sumShifts + 3);
    const Set pair = addSets(s.corr, s.shifts, 2);
    std::ranges::copy(pair.words, s.sums);
    s.sumShifts[0] = static_cast<Word>(pair.shift);
}

/// The prediction filter of a set; that of the last stable one, and no other error, where there is
/// none.
void filterOf(const Set& set, StableFilter& last, Out<kTaps> lpc_Q12, Word& error) noexcept
{
    std::array<Long, kTaps> corr{};
    std::ranges::transform(set.words, corr.begin(), fx::l_deposit_h);
    if (Prediction p; levinsonDurbin(corr, p)) {
        std::ranges::copy(p.lpc_Q12, last.lpc_Q12.begin());
        std::ranges::copy(p.reflection_Q15, last.reflection_Q15.begin());
        error = p.error;
    }
    std::ranges::copy(last.lpc_Q12, lpc_Q12.begin());
}

/// The autocorrelation of a filter, by which other spectra are compared with it.
void setFilter(In<kTaps> lpc_Q12, ZspG729BDtxState& s) noexcept
{
    const int shift = fx::norm_l(celp::energy(lpc_Q12));
    s.filterShift = static_cast<Word>(shift);
    for (std::size_t i = 0; i < kTaps; ++i)
        s.filter[i] =
            fx::round_fx(fx::l_shl(celp::dot(lpc_Q12.first(kTaps - i), lpc_Q12.data() + i), shift));
}

/// Whether the filter leaves more of a frame than its own would, by a share of `more` above.
bool differs(const Set& frame, Word energy, Word more_Q15, const ZspG729BDtxState& s) noexcept
{
    std::array<int, 2> shifts{};
    std::size_t turn = 1;
    const auto product = [&](std::size_t i, Word& a, Word& b) {
        a = fx::shr(s.filter[i], shifts[0]);
        b = fx::shr(frame.words[i], shifts[1]);
    };
    Long sum = 0;
    for (bool overflowed = true; overflowed;) {
        Word a = 0, b = 0;
        product(0, a, b);
        celp::MarkedSum marked{0};
        marked.mac(a, b);
        marked.value >>= 1;
        for (std::size_t i = 1; i < kTaps; ++i) {
            product(i, a, b);
            marked.mac(a, b);
        }
        sum = marked.value;
        overflowed = marked.overflowed;
        if (overflowed) {
            ++shifts[turn];
            turn = 1 - turn;
        }
    }
    const Long limit = fx::mult_r(energy, more_Q15) + energy;
    const Long threshold = fx::l_shl(limit, s.filterShift + 9 - (shifts[0] + shifts[1]));
    return fx::l_sub(sum, threshold) > 0;
}

} // namespace

void updateDtx(std::span<const Long, kTaps> corr, Long exponent, bool active,
               ZspG729BDtxState& s) noexcept
{
    std::copy_backward(s.corr, s.corr + kTaps, s.corr + 2 * kTaps);
    std::ranges::transform(corr, s.corr, fx::extract_h);
    s.shifts[1] = s.shifts[0];
    s.shifts[0] = static_cast<Word>(-(16 + exponent));
    if (++s.frames < 2) return;
    s.frames = 0;
    if (active) keepPair(s);
}

bool encodeDtx(bool annexA, bool afterSpeech, In<kOrder> previousLsp, StableFilter last,
               Out<kLsfMemory> lsfMemory, Out<kOrder> sidLsp, Out<kSidParameters> fields,
               ZspG729BDtxState& s) noexcept
{
    s.energies[1] = s.energies[0];
    s.energyShifts[1] = s.energyShifts[0];
    const Set current = addSets(s.corr, s.shifts, 2);
    s.energyShifts[0] = static_cast<Word>(current.shift);
    std::array<Word, kTaps> own{4096};
    if (current.words[0] <= 0)
        s.energies[0] = 0;
    else
        filterOf(current, last, own, s.energies[0]);

    s.energyCount = afterSpeech ? Word{1} : static_cast<Word>(std::min(s.energyCount + 1, 2));
    const auto count = static_cast<std::size_t>(s.energyCount);
    const SidGain gain = quantiseSidGain({s.energies, count}, {s.energyShifts, count});
    bool sends = afterSpeech;
    if (!afterSpeech) {
        if (differs(current, s.energies[0], 4855, s)) s.changed = 1;
        if (std::abs(s.sentLevel - gain.level) > 2) s.changed = 1;
        s.count = static_cast<Word>(std::min(s.count + 1, 3));
        sends = s.count == 3 && s.changed != 0;
    }

    if (sends) {
        s.count = s.changed = 0;
        std::array<Word, kTaps> lpc{4096};
        Word unused = 0;
        const Set past = addSets(s.sums, s.sumShifts, 3);
        if (past.words[0] > 0) filterOf(past, last, lpc, unused);
        setFilter(lpc, s);
        if (differs(current, s.energies[0], 3161, s)) {
            lpc = own;
            setFilter(lpc, s);
        }
        LsfVector lsp{}, lsf{};
        (annexA ? lpcToLspA : lpcToLsp)(lpc, previousLsp, lsp);
        lspToLsfAvx2(lsp, lsf);
        const SidLsf indices = quantiseSidLsf(lsf, lsfMemory, lsf);
        lsfToLsp(lsf, sidLsp);
        s.sentLevel = static_cast<Word>(gain.level);
        s.sidGain = kSidGain[static_cast<std::size_t>(gain.index)];
        const std::array<int, kSidParameters> words = {indices.predictor, indices.first,
                                                       indices.second, gain.index};
        std::ranges::transform(words, fields.begin(), [](int x) { return static_cast<Word>(x); });
    }
    s.gain = afterSpeech ? s.sidGain : nextNoiseGain(s.gain, s.sidGain);
    if (s.frames == 0) keepPair(s);
    return sends;
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsDTXInit_G729B_16s(ZspG729BDtxState* state)
{
    if (!state) return zspStsNullPtrErr;

    ZspG729BDtxState fresh{};
    std::fill_n(fresh.shifts, 2, std::int16_t{40});
    std::fill_n(fresh.sumShifts, 3, std::int16_t{40});
    std::fill_n(fresh.energyShifts, 2, std::int16_t{40});
    placeRecord(state, fresh);
    return zspStsNoErr;
}

ZspStatus zspsDTXUpdate_G729B_32s16s(const std::int32_t* corr, std::int32_t exponent,
                                     std::int32_t active, ZspG729BDtxState* state)
{
    if (!corr || !state) return zspStsNullPtrErr;
    if (exponent < -32 || exponent > 31) return zspStsRangeErr;

    InPlace<ZspG729BDtxState> s(state);
    g729::updateDtx(spanOf<11>(corr), exponent, active != 0, *s);
    return zspStsNoErr;
}

ZspStatus zspsDTXEncode_G729B_16s(std::int32_t annexA, std::int32_t afterSpeech,
                                  const std::int16_t* previous, std::int16_t* lpc,
                                  std::int16_t* reflection, std::int16_t* lsfMemory,
                                  std::int16_t* sidLsp, std::int16_t* fields, std::int32_t* sends,
                                  ZspG729BDtxState* state)
{
    if (!previous || !lpc || !reflection || !lsfMemory || !sidLsp || !fields || !sends || !state)
        return zspStsNullPtrErr;

    InPlace<ZspG729BDtxState> s(state);
    *sends = g729::encodeDtx(annexA != 0, afterSpeech != 0, spanOf<10>(previous),
                             {spanOf<11>(lpc), spanOf<10>(reflection)}, spanOf<40>(lsfMemory),
                             spanOf<10>(sidLsp), spanOf<4>(fields), *s)
                 ? 1
                 : 0;
    return zspStsNoErr;
}

ZspStatus zspsComfortNoiseGain_G729B_16s(std::int16_t sidGain, std::int32_t first,
                                         std::int16_t* gain)
{
    if (!gain) return zspStsNullPtrErr;
    if (sidGain < 0) return zspStsRangeErr;

    *gain = first != 0 ? sidGain : g729::nextNoiseGain(*gain, sidGain);
    return zspStsNoErr;
}

} // namespace zsp::entry
