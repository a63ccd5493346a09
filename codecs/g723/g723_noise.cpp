// Comfort noise of ITU-T G.723.1, Annex A: the quantiser of its gain and the excitation that
// encoder and decoder draw alike from a seed.

#include "codecs/g723/g723.hpp"
#include "codecs/g723/g723_searches.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <array>
#include <numeric>

namespace zsp::g723 {

namespace {

constexpr Word levelOf(std::size_t segment, int i) noexcept
{
    return static_cast<Word>(kSidBase[segment] + (i << (segment + 1)));
}

constexpr Long costOf(std::size_t segment, int i) noexcept
{
    const Word level = levelOf(segment, i);
    return fx::l_mult(level, level);
}

} // namespace

int sidGainIndex(Long energy) noexcept
{
    if (energy >= kSidSegment[2]) return 63;
    const std::size_t s = energy >= kSidSegment[1] ? 2 : energy >= kSidSegment[0] ? 1 : 0;
    const int steps = s == 2 ? 4 : 3;
    int j = 1 << steps, k = j >> 1;
    for (int i = 0; i < steps; ++i, k >>= 1)
        j += energy >= costOf(s, j) ? k : -k;

    const Long distance = fx::l_sub(costOf(s, j), energy);
    if (distance <= 0) {
        if (distance <= fx::l_sub(energy, costOf(s, j + 1))) ++j;
    } else if (distance >= fx::l_sub(energy, costOf(s, j - 1))) {
        --j;
    }
    return 16 * static_cast<int>(s) + j;
}

Word sidGain(int index) noexcept
{
    const auto segment = static_cast<std::size_t>(std::min(2, index >> 4));
    return static_cast<Word>(levelOf(segment, index - 16 * static_cast<int>(segment)) * 32);
}

int sidGainQuant(const Word* energies, const Word* shifts, std::size_t count) noexcept
{
    if (count == 0)
        return sidGainIndex(mls(fx::l_shl(energies[0], 16 - 2 * shifts[0]), kSidFactor[0]));

    const Word least = *std::min_element(shifts, shifts + count);
    Long sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum += fx::mult_r(kSidFactor[count], fx::shr(energies[i], shifts[i] - least));
    return sidGainIndex(fx::l_shl(sum, 15 - least));
}

namespace {

/// A number of 0 to limit - 1.
Word number(Word& seed, Word limit) noexcept
{
    return fx::mult(static_cast<Word>(random(seed) & 0x7fff), limit);
}

constexpr std::size_t kPair = 2 * kSubframe;
constexpr std::size_t kPulses = 11;

/// Where the pulses of a pair of sub-frames stand, and their signs as 16384 or -16384.
struct PulseTrain {
    std::array<std::size_t, kPulses> places;
    std::array<Word, kPulses> signs;
    std::array<std::size_t, 2> grids;
};

void drawSigns(Word& seed, PulseTrain& train) noexcept
{
    int v = number(seed, 8192);
    train.grids[0] = static_cast<std::size_t>(v & 1);
    v >>= 1;
    train.grids[1] = 60 + static_cast<std::size_t>(v & 1);
    for (Word& sign : train.signs) {
        sign = static_cast<Word>(((v & 2) - 1) * 16384);
        v >>= 1;
    }
}

void drawPlaces(Word& seed, PulseTrain& train) noexcept
{
    std::size_t pulse = 0;
    for (std::size_t half = 0; half < 2; ++half) {
        std::array<std::size_t, 30> free{};
        std::iota(free.begin(), free.end(), std::size_t{0});
        std::size_t left = free.size();
        for (int i = 0; i < kPulseCount[half]; ++i) {
            const auto j = static_cast<std::size_t>(number(seed, static_cast<Word>(left)));
            train.places[pulse++] = 2 * free[j] + train.grids[half];
            free[j] = free[--left];
        }
    }
}

/// The amplitude that gives 120 samples the energy of the wanted gain, once pulses stand on them.
Word pulseAmplitude(In<kPair> y, const PulseTrain& train, Word gain) noexcept
{
    const Word most = largest(y);
    const int shift = most == 0 ? 0 : std::max(-2, 4 - fx::norm_s(most));
    std::array<Word, kPair> t{};
    for (std::size_t i = 0; i < kPair; ++i)
        t[i] = fx::shr(y[i], shift);
    Long cross = 0;
    for (std::size_t i = 0; i < kPulses; ++i)
        cross = fx::l_mac(cross, t[train.places[i]], train.signs[i]);
    const Word x = fx::extract_h(fx::l_shl(cross, 1));

    const Word u = fx::extract_l(fx::l_mult(gain, 60) >> 6);
    const Long lack = fx::l_sub(energy(t), fx::l_shr(fx::l_mult(u, gain), 2 * shift + 4));
    const Long c = mls(lack, 2979);
    const Word b = fx::mult_r(x, 2979);
    const Long discriminant = fx::l_negate(fx::l_msu(c, b, b));
    Word g = fx::negate(b);
    if (discriminant > 0) {
        const Word root = sqrt_l(discriminant);
        g = fx::sub(root, b);
        const Word other = fx::add(b, root);
        if (fx::abs_s(other) < fx::abs_s(g)) g = fx::negate(other);
    }
    return std::clamp<Word>(fx::shl(g, shift + 1), -10000, 10000);
}

} // namespace

void comfortNoise(Word gain, Word& seed, Out<kPast> past, ZspG723Frame& f, Out<kFrame> dst) noexcept
{
    f.lag[0] = static_cast<Word>(123 + number(seed, 21));
    f.lag[1] = static_cast<Word>(123 + number(seed, 19));
    constexpr std::array<Word, 4> kOffsets = {1, 0, 1, 3};
    for (std::size_t i = 0; i < 4; ++i) {
        f.acbGain[i] = static_cast<Word>(1 + number(seed, 50));
        f.lagOffset[i] = kOffsets[i];
    }
    std::array<PulseTrain, 2> trains{};
    for (PulseTrain& train : trains)
        drawSigns(seed, train);
    for (PulseTrain& train : trains)
        drawPlaces(seed, train);

    for (std::size_t pair = 0; pair < 2; ++pair) {
        const Out<kPair> y = pair == 0 ? dst.first<kPair>() : dst.last<kPair>();
        const PulseTrain& train = trains[pair];
        for (std::size_t half = 0; half < 2; ++half) {
            // The second sub-frame too is made of what lies before the pair.
            std::array<Word, kPast + kSubframe> shifted{};
            std::copy(past.begin() + static_cast<std::ptrdiff_t>(kSubframe * half), past.end(),
                      shifted.begin());
            adaptiveVector(f, 2 * pair + half, In<kPast>(shifted.data(), kPast),
                           Out<kSubframe>(&y[kSubframe * half], kSubframe));
        }
        const Word amplitude = pulseAmplitude(y, train, gain);
        for (std::size_t i = 0; i < kPulses; ++i)
            y[train.places[i]] = fx::add(y[train.places[i]], fx::mult(amplitude, train.signs[i]));
        std::copy(past.begin() + kPair, past.end(), past.begin());
        std::ranges::copy(y, past.end() - kPair);
    }
}

} // namespace zsp::g723

namespace zsp::entry {

ZspStatus zspsSIDGainQuant_G723_16s(const std::int16_t* energies, const std::int16_t* shifts,
                                    std::int32_t count, std::int16_t* index)
{
    if (!energies || !shifts || !index) return zspStsNullPtrErr;
    if (count < 0 || count > 3) return zspStsSizeErr;

    *index = static_cast<std::int16_t>(
        g723::sidGainQuant(energies, shifts, static_cast<std::size_t>(count)));
    return zspStsNoErr;
}

ZspStatus zspsSIDGainDequant_G723_16s(std::int16_t index, std::int16_t* gain)
{
    if (!gain) return zspStsNullPtrErr;
    if (index < 0 || index > 63) return zspStsCodecRangeErr;

    *gain = g723::sidGain(index);
    return zspStsNoErr;
}

ZspStatus zspsComfortNoiseExcitation_G723_16s(std::int16_t gain, std::int16_t* seed,
                                              std::int16_t* past, ZspG723Frame* frame,
                                              std::int16_t* dst)
{
    if (!seed || !past || !frame || !dst) return zspStsNullPtrErr;

    InPlace<ZspG723Frame> f(frame);
    g723::comfortNoise(gain, *seed, spanOf<145>(past), *f, spanOf<240>(dst));
    return zspStsNoErr;
}

} // namespace zsp::entry
