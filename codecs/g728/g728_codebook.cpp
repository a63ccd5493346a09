// The codebook search of ITU-T G.728, blocks 12 to 18: of 128 shapes and four gains with a sign,
// the pair whose filtered excitation comes closest to the target.
//
//   distortion = gain^2 * energy[shape] - 2 * gain * |sum(shape[i] * u[i])|

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_tables.hpp"
#include "core/entries.hpp"

namespace zsp::g728 {

void impulseResponse(In<4> a, In<4> zero, In<4> pole, Out<kVector> h) noexcept
{
    std::array<Word, kVector> synthesised{8192};
    h[0] = 8192;
    for (std::size_t i = 1; i < kVector; ++i) {
        Wide d = 0;
        for (std::size_t k = 0; k < i; ++k)
            d -= Wide{a[k]} * synthesised[i - 1 - k];
        Wide e = d;
        for (std::size_t k = 0; k < i; ++k)
            e += Wide{zero[k]} * synthesised[i - 1 - k] - Wide{pole[k]} * h[i - 1 - k];
        synthesised[i] = sat16(d >> 14);
        h[i] = sat16(e >> 14);
    }
}

void shapeEnergiesScalar(In<kVector> h, Energies energies) noexcept
{
    for (std::size_t shape = 0; shape < kShapes; ++shape) {
        const Word* y = &kShape[shape * kVector];
        Wide energy = 0;
        for (std::size_t n = 0; n < kVector; ++n) {
            Wide sum = 0;
            for (std::size_t k = 0; k <= n; ++k)
                sum += Wide{h[k]} * y[kVector - 1 - n + k];
            energy += (sum >> 14) * (sum >> 14);
        }
        energies[shape] = static_cast<Long>(energy >> 15); // below 2^25: |sum| < 5 * 32768 * 17467
    }
}

std::array<Word, kVector> reverseConvolve(const Vector& target, In<kVector> h) noexcept
{
    const int shift = target.q + 6;
    std::array<Word, kVector> u;
    for (std::size_t j = 0; j < kVector; ++j) {
        Wide sum = 0;
        for (std::size_t k = 0; k <= j; ++k)
            sum += Wide{h[j - k]} * target.m[k];
        u[j] = shift > 30 ? static_cast<Word>(sum < 0 ? -1 : 0)
                          : sat16(shifted(sat32(sum), std::max(shift, -16)));
    }
    return u;
}

int searchScalar(In<kVector> u, EnergiesIn energies) noexcept
{
    Wide best = fx::kMax32;
    int index = 0;
    for (std::size_t shape = 0; shape < kShapes; ++shape) {
        Wide c = 0;
        for (std::size_t i = 0; i < kVector; ++i)
            c += Wide{kShape[shape * kVector + i]} * u[i];
        const bool isNegative = c <= 0;
        if (isNegative) c = -c;
        const Wide energy = energies[shape];
        std::size_t gain = 0;
        while (gain < kGainBoundary.size() && c > kGainBoundary[gain] * energy)
            ++gain;
        const Wide distortion =
            kGainSquared[gain] * energy - kGainTwice[gain] * std::min<Wide>(c >> 14, 32767);
        if (distortion < best) {
            best = distortion;
            index = static_cast<int>(shape * 8 + gain + (isNegative ? 4 : 0));
        }
    }
    return index;
}

} // namespace zsp::g728

namespace zsp::entry {

using namespace g728;

ZspStatus zspsImpulseResponseAndEnergy_G728_16s32s(const std::int16_t* lpc,
                                                   const std::int16_t* zero,
                                                   const std::int16_t* pole, std::int16_t* impulse,
                                                   std::int32_t* energy)
{
    if (!lpc || !zero || !pole || !impulse || !energy) return zspStsNullPtrErr;

    impulseResponse(In<4>(lpc, 4), In<4>(zero, 4), In<4>(pole, 4), Out<kVector>(impulse, kVector));
    shapeEnergiesAvx2(In<kVector>(impulse, kVector), Energies(energy, kShapes));
    return zspStsNoErr;
}

ZspStatus zspsCodebookSearch_G728_16s(const std::int16_t* target, const std::int16_t* impulse,
                                      const std::int32_t* energy, std::int32_t* index)
{
    if (!target || !impulse || !energy || !index) return zspStsNullPtrErr;
    if (!hasQ(target[kVector])) return zspStsScaleRangeErr;

    const auto u = reverseConvolve(vectorAt(target), In<kVector>(impulse, kVector));
    *index = searchAvx2(u, EnergiesIn(energy, kShapes));
    return zspStsNoErr;
}

} // namespace zsp::entry
