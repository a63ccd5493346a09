// The activity decision of ITU-T G.729 Annex B, clause B.3: energy, low-band energy, spectrum and
// zero crossings of a frame against their running means in the background.

#include "codecs/g729/annexb/g729_annexb.hpp"
#include "common/math/log2_pow2.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace zsp::g729 {

namespace {

constexpr Word kEnergyFloor = 3072; // 15 dB: nothing below it is speech
constexpr Word kLeastStep = 614;    // 3 dB

/// What is measured of a frame. Energies are in 1/2048 of 10 dB... of log2 steps, as the annex has
/// them; all differences are from the background's means.
struct Measures {
    Word energy, lowBand, crossings, distortion;
};

/// log of a sum and its exponent, less the mean's.
Word logEnergy(Long sum, Long exponent) noexcept
{
    const auto [e, fraction_Q15] = common::log2(sum);
    const Long scaled = fx::l_mac(fx::mpy_32_16(fx::SplitLong{e, fraction_Q15}, 9864), 9864,
                                  static_cast<Word>(exponent - 2));
    return fx::sub(fx::extract_h(fx::l_shl(scaled, 11)), 4875);
}

Word lowBandEnergy(std::span<const Long, 13> corr, Long exponent) noexcept
{
    Long sum = 0;
    for (std::size_t i = 1; i < corr.size(); ++i)
        sum = fx::l_mac(sum, fx::extract_h(corr[i]), kLowBand[i]);
    sum = fx::l_mac(fx::l_shl(sum, 1), fx::extract_h(corr[0]), kLowBand[0]);
    return logEnergy(sum, exponent);
}

Measures measure(std::span<const Long, 13> corr, Long exponent, In<kOrder> lsf_Q15,
                 std::span<const Word, 240> x, const ZspG729BVadState& s) noexcept
{
    Measures m{};
    m.energy = logEnergy(corr[0] & ~1, exponent);
    m.lowBand = lowBandEnergy(corr, exponent);
    Long sum = 0;
    for (std::size_t i = 0; i < kOrder; ++i) {
        const Word d = fx::sub(lsf_Q15[i], s.meanLsf[i]);
        sum = fx::l_mac(sum, d, d);
    }
    m.distortion = fx::extract_h(sum);
    for (std::size_t i = 121; i <= 200; ++i)
        if (fx::mult(x[i - 1], x[i]) < 0) m.crossings = fx::add(m.crossings, 410);
    return m;
}

/// The least energy of about the last 128 frames.
void followMinimum(Word energy, ZspG729BVadState& s) noexcept
{
    const bool eighth = s.frame % 8 == 0;
    const auto leastOfAll = [&s] { return *std::ranges::min_element(s.minima); };
    if (s.frame < 129) {
        if (energy < s.minimum) s.minimum = s.lastMinimum = energy;
        if (eighth) {
            s.minima[s.frame / 8 - 1] = s.minimum;
            s.minimum = fx::kMax16;
            s.lastMinimum = leastOfAll();
        }
        return;
    }
    if (s.frame % 8 == 1) {
        s.minimum = s.lastMinimum;
        s.nextMinimum = fx::kMax16;
    }
    s.minimum = std::min(s.minimum, energy);
    s.nextMinimum = std::min(s.nextMinimum, energy);
    if (eighth) {
        std::copy(s.minima + 1, s.minima + 16, s.minima);
        s.minima[15] = s.nextMinimum;
        s.lastMinimum = leastOfAll();
    }
}

/// The means of the first 32 frames, of which only those count that are not quiet.
void startMeans(const Measures& m, In<kOrder> lsf_Q15, ZspG729BVadState& s) noexcept
{
    const auto gather = [](Word& mean, Word value) {
        mean = fx::extract_h(fx::l_mac(fx::l_deposit_h(mean), value, 1024));
    };
    gather(s.meanEnergy, m.energy);
    gather(s.meanCrossings, m.crossings);
    for (std::size_t i = 0; i < kOrder; ++i)
        gather(s.meanLsf[i], lsf_Q15[i]);
}

void finishMeans(ZspG729BVadState& s) noexcept
{
    const auto quiet = static_cast<std::size_t>(s.quiet);
    const auto scale = [quiet](Word& mean) {
        mean = fx::extract_h(fx::l_shl(fx::l_mult(mean, kStartFactor[quiet]), kStartShift[quiet]));
    };
    scale(s.meanEnergy);
    scale(s.meanCrossings);
    for (Word& mean : s.meanLsf)
        scale(mean);
    s.meanFullBand = fx::sub(s.meanEnergy, 2048);
    s.meanLowBand = fx::sub(s.meanEnergy, 2458);
}

/// The fourteen boundaries of clause B.3.5; whether a frame lies on the side of speech of any.
bool beyondBoundaries(Word dS, Word dZ, Word dE, Word dL) noexcept
{
    using fx::l_add, fx::l_deposit_h, fx::l_mac, fx::l_mult;
    return l_add(l_mac(l_mult(dZ, -14680), 8192, -28521) >> 8, l_deposit_h(dS)) > 0 ||
           l_add(l_mac(l_mult(dZ, 19065), 8192, -19446) >> 7, l_deposit_h(dS)) > 0 ||
           l_add(l_mac(l_mult(dZ, 20480), 8192, 16384) >> 2, l_deposit_h(dE)) < 0 ||
           l_add(l_mac(l_mult(dZ, -16384), 8192, 19660) >> 2, l_deposit_h(dE)) < 0 ||
           l_mac(l_mult(dE, 32767), 1024, 30802) < 0 ||
           l_mac(l_mac(l_mult(dS, -28160), 64, 19988), dE, 512) < 0 ||
           l_mac(l_mult(dS, 32767), 32, -30199) > 0 ||
           l_add(l_mac(l_mult(dZ, -20480), 8192, 22938) >> 2, l_deposit_h(dE)) < 0 ||
           l_add(l_mac(l_mult(dZ, 23831), 4096, 31576) >> 2, l_deposit_h(dE)) < 0 ||
           l_mac(l_mult(dE, 32767), 2048, 17367) < 0 ||
           l_mac(l_mac(l_mult(dS, -22400), 32, 25395), dL, 256) < 0 ||
           l_add(l_mac(l_mult(dE, -30427), 256, -29959), l_deposit_h(dL)) > 0 ||
           l_add(l_mac(l_mult(dE, -23406), 512, 28087), l_deposit_h(dL)) < 0 ||
           l_mac(l_mac(l_mult(dE, 24576), 1024, 29491), dL, 16384) < 0;
}

/// How much of a mean stays and how much of a frame's value joins it.
struct Rate {
    Word stays, joins;
};
struct Rates {
    int below; // updates
    Rate energies, crossings, lsf;
};

/// Clause B.3.7: the means settle as updates go on.
constexpr std::array<Rates, 6> kRates = {{
    {20, {24576, 8192}, {26214, 6554}, {19661, 13017}},
    {30, {31130, 1638}, {30147, 2621}, {21299, 11469}},
    {40, {31785, 983}, {30802, 1966}, {22938, 9830}},
    {50, {32440, 328}, {31457, 1311}, {24576, 8192}},
    {60, {32604, 164}, {32440, 328}, {24576, 8192}},
    {32768, {32604, 164}, {32702, 66}, {24576, 8192}},
}};

void updateMeans(const Measures& m, In<kOrder> lsf_Q15, ZspG729BVadState& s) noexcept
{
    const Rates& rates =
        *std::ranges::find_if(kRates, [&s](const Rates& r) { return s.updates < r.below; });
    const auto join = [](Word& mean, Rate rate, Word value) {
        mean = fx::extract_h(fx::l_mac(fx::l_mult(rate.stays, mean), rate.joins, value));
    };
    join(s.meanFullBand, rates.energies, m.energy);
    join(s.meanLowBand, rates.energies, m.lowBand);
    join(s.meanCrossings, rates.crossings, m.crossings);
    for (std::size_t i = 0; i < kOrder; ++i)
        join(s.meanLsf[i], rates.lsf, lsf_Q15[i]);
}

/// The decision by the boundaries, smoothed over time, clauses B.3.5 to B.3.7.
bool decide(const Measures& m, In<kOrder> lsf_Q15, Word reflection_Q15,
            ZspG729BVadState& s) noexcept
{
    const Word dE = fx::sub(s.meanFullBand, m.energy), dL = fx::sub(s.meanLowBand, m.lowBand);
    const Word dZ = fx::sub(s.meanCrossings, m.crossings);
    bool active = m.energy >= kEnergyFloor && beyondBoundaries(m.distortion, dZ, dE, dL);
    bool extended = false;
    const auto steps = [&] { return fx::abs_s(fx::sub(s.lastEnergy, m.energy)) <= kLeastStep; };

    if (s.decisions[0] && !active && fx::add(dE, 410) < 0 && m.energy > kEnergyFloor)
        active = extended = true;
    if (s.mayExtend == 0) {
        s.mayExtend = 1;
    } else if (s.decisions[0] && s.decisions[1] && !active && steps()) {
        active = extended = true;
        if (++s.extensions > 4) s.extensions = s.mayExtend = 0;
    }
    if (!active) {
        s.silent = fx::add(s.silent, 1);
    } else {
        if (s.silent > 10 && fx::sub(m.energy, s.lastEnergy) <= kLeastStep) active = false;
        s.silent = 0;
    }
    const bool nearBackground = fx::sub(m.energy, kLeastStep) < s.meanFullBand;
    if (nearBackground && s.frame > 128 && !extended && reflection_Q15 < 19661) active = false;
    if (nearBackground && reflection_Q15 < 24576 && m.distortion < 83) {
        s.updates = fx::add(s.updates, 1);
        updateMeans(m, lsf_Q15, s);
    }
    if (s.frame > 128 && ((s.meanFullBand < s.minimum && m.distortion < 83) ||
                          fx::sub(s.meanFullBand, s.minimum) > 2048)) {
        s.meanFullBand = s.minimum;
        s.updates = 0;
    }
    return active;
}

} // namespace

bool detectActivity(std::span<const Word, 240> x, std::span<const Long, 13> corr, Long exponent,
                    In<kOrder> lsf_Q15, Word reflection_Q15, ZspG729BVadState& s) noexcept
{
    constexpr std::int32_t kWrap = 256; // keeps what frame numbers are asked for
    s.frame = s.frame == 32767 ? kWrap : s.frame + 1;
    const Measures m = measure(corr, exponent, lsf_Q15, x, s);
    followMinimum(m.energy, s);

    bool active = true;
    if (s.frame <= 32) {
        if (m.energy < kEnergyFloor) {
            active = false;
            ++s.quiet;
        } else {
            startMeans(m, lsf_Q15, s);
        }
        if (s.frame == 32) finishMeans(s);
    }
    if (s.frame >= 32) active = decide(m, lsf_Q15, reflection_Q15, s);
    s.lastEnergy = m.energy;
    s.decisions[1] = s.decisions[0];
    s.decisions[0] = active ? 1 : 0;
    return active;
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsVADGetSize_G729B_16s(std::int32_t* size)
{
    if (!size) return zspStsNullPtrErr;

    *size = sizeof(ZspG729BVadState);
    return zspStsNoErr;
}

ZspStatus zspsVADInit_G729B_16s(ZspG729BVadState* state)
{
    if (!state) return zspStsNullPtrErr;

    ZspG729BVadState fresh{};
    fresh.mayExtend = 1;
    fresh.minimum = fx::kMax16;
    fresh.decisions[0] = fresh.decisions[1] = 1;
    placeRecord(state, fresh);
    return zspStsNoErr;
}

ZspStatus zspsVAD_G729B_16s(const std::int16_t* src, const std::int32_t* corr,
                            std::int32_t exponent, const std::int16_t* lsf, std::int16_t reflection,
                            ZspG729BVadState* state, std::int16_t* active)
{
    if (!src || !corr || !lsf || !state || !active) return zspStsNullPtrErr;
    if (exponent < -32 || exponent > 31) return zspStsRangeErr;

    InPlace<ZspG729BVadState> s(state);
    *active = g729::detectActivity(spanOf<240>(src), spanOf<13>(corr), exponent, spanOf<10>(lsf),
                                   reflection, *s)
                  ? 1
                  : 0;
    return zspStsNoErr;
}

} // namespace zsp::entry
