// Regular-pulse excitation, GSM 06.10, clauses 5.2.13 to 5.2.16: a symmetric low-pass filter over
// the residual, the grid of every third sample with the most energy, and its 13 samples as one
// logarithmic amplitude and thirteen codes of three bits.

#include "codecs/gsmfr/gsmfr_rpe.hpp"

#include "codecs/shared/words.hpp"
#include "common/correlation/lag_sums.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/fixed_point.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>

namespace zsp::gsmfr {

namespace {

constexpr std::size_t kReach = 5; ///< of the weighting filter to either side

/// Exponent -4 to 6 and mantissa 0 to 7 of a decoded amplitude.
struct Amplitude {
    int exponent, mantissa;
};

Amplitude decoded(int xmaxc) noexcept
{
    int exponent = xmaxc > 15 ? (xmaxc >> 3) - 1 : 0;
    int mantissa = xmaxc - (exponent << 3);
    if (mantissa == 0) return {-4, 7};
    while (mantissa <= 7) {
        mantissa = mantissa << 1 | 1;
        --exponent;
    }
    return {exponent, mantissa - 8};
}

/// xmaxc of the largest magnitude.
int coded(fx::Word xmax) noexcept
{
    const auto exponent =
        static_cast<int>(std::bit_width(static_cast<unsigned>(xmax >> 9))); // at most 6
    return (xmax >> (exponent + 5)) + (exponent << 3);
}

fx::Word factor(const std::array<fx::Word, 8>& table, Amplitude a) noexcept
{
    return table[static_cast<std::size_t>(a.mantissa)];
}

} // namespace

void weightScalar(InSegment e, Segment x) noexcept
{
    std::array<fx::Word, kReach + kSegment + kReach> around{};
    std::copy(e.begin(), e.end(), &around[kReach]);
    for (std::size_t k = 0; k < kSegment; ++k) {
        fx::Long sum = 4096; // |sum of the taps| * 32768 < 2^30
        for (std::size_t i = 0; i <= 2 * kReach; ++i)
            sum += kWeighting_Q13[i] * around[k + 2 * kReach - i];
        x[k] = fx::sat16(sum >> 13);
    }
}

int gridSelectScalar(InSegment x, Pulses xm) noexcept
{
    std::size_t grid = 0;
    fx::Long most = 0;
    for (std::size_t m = 0; m <= 3; ++m) {
        fx::Long energy = 0; // 26 * 2^26 fits
        for (std::size_t i = 0; i < kPulses; ++i) {
            const fx::Word t = fx::shr(x[m + 3 * i], 2);
            energy = fx::l_mac(energy, t, t);
        }
        if (energy > most) {
            most = energy;
            grid = m;
        }
    }
    for (std::size_t i = 0; i < kPulses; ++i)
        xm[i] = x[grid + 3 * i];
    return static_cast<int>(grid);
}

int apcmQuantScalar(InPulses xm, Pulses xmc) noexcept
{
    const int xmaxc = coded(codecs::largest(xm));
    const Amplitude a = decoded(xmaxc);
    for (std::size_t i = 0; i < kPulses; ++i) {
        const auto shifted = static_cast<fx::Word>(xm[i] << (6 - a.exponent));
        const fx::Word t = fx::mult(shifted, factor(kInverseMantissa_Q15, a));
        xmc[i] = static_cast<fx::Word>((t >> 12) + 4);
    }
    return xmaxc;
}

void apcmDequantScalar(InPulses xmc, int xmaxc, Pulses xmp) noexcept
{
    const Amplitude a = decoded(xmaxc);
    const int shift = 6 - a.exponent;
    const auto half = static_cast<fx::Word>(shift == 0 ? 0 : 1 << (shift - 1));
    for (std::size_t i = 0; i < kPulses; ++i) {
        const auto t = static_cast<fx::Word>((2 * xmc[i] - 7) << 12); // -7 to 7
        xmp[i] = fx::shr(fx::add(fx::mult_r(factor(kMantissa_Q15, a), t), half), shift);
    }
}

namespace {

/// Thirteen words as two vectors of eight, of which three are in both.
struct Thirteen {
    __m128i low, high;

    static Thirteen load(const std::int16_t* p) noexcept
    {
        return {avx2::load8(p), avx2::load8(p + 5)};
    }
    void store(std::int16_t* p) const noexcept
    {
        avx2::store8(p, low);
        avx2::store8(p + 5, high);
    }
    template <typename F>
    Thirteen each(F f) const noexcept
    {
        return {f(low), f(high)};
    }
};

/// Words of all ones at every third place, from place `first` on of the 48 from a multiple of 16.
constexpr std::array<fx::Word, 48 + 2> everyThird() noexcept
{
    std::array<fx::Word, 48 + 2> mask{};
    for (std::size_t i = 2; i < mask.size(); i += 3)
        mask[i] = -1;
    return mask;
}
constexpr auto kEveryThird = everyThird(); // from element 2 - m on: for the samples m, m + 3, ...

} // namespace

// Sixteen results at a time, as correlations with the symmetric taps; the last eight of 48 are not
// stored.
void weightAvx2(InSegment e, Segment x) noexcept
{
    constexpr std::size_t kRounded = 48;
    alignas(32) std::array<fx::Word, kRounded + common::kLags> around{};
    alignas(32) std::array<fx::Word, kRounded> out;
    std::copy(e.begin(), e.end(), &around[kReach]);
    const __m256i half = _mm256_set1_epi32(4096);
    for (std::size_t k = 0; k < kRounded; k += 16) {
        common::WrappingSums sums;
        common::addLags(kWeighting_Q13.data(), &around[k], kWeighting_Q13.size(), sums);
        const auto rounded = [half](__m256i sum) {
            return _mm256_srai_epi32(_mm256_add_epi32(sum, half), 13);
        };
        avx2::store(&out[k], avx2::packInOrder(rounded(sums.low()), rounded(sums.high())));
    }
    std::copy_n(out.begin(), kSegment, x.begin());
}

// Grid 3 is grid 0 without its first sample and with the last one. Not doubled: the order of the
// energies is the same.
int gridSelectAvx2(InSegment x, Pulses xm) noexcept
{
    std::array<fx::Long, 4> energy;
    const __m256i first = _mm256_srai_epi16(avx2::load(&x[0]), 2);
    const __m256i second = _mm256_srai_epi16(avx2::load(&x[16]), 2);
    const __m256i third = _mm256_zextsi128_si256(_mm_srai_epi16(avx2::load8(&x[32]), 2));
    for (std::size_t m = 0; m < 3; ++m) {
        const fx::Word* mask = &kEveryThird[2 - m];
        const auto squares = [](__m256i v, const fx::Word* places) {
            return _mm256_madd_epi16(v, _mm256_and_si256(v, avx2::load(places)));
        };
        const __m256i sum = _mm256_add_epi32(squares(first, mask), squares(second, mask + 16));
        energy[m] = avx2::sum32(_mm256_add_epi32(sum, squares(third, mask + 32)));
    }
    const fx::Long head = x[0] >> 2, tail = x[39] >> 2;
    energy[0] -= tail * tail; // place 39 is every third as well
    energy[3] = energy[0] - head * head + tail * tail;

    const auto grid = static_cast<std::size_t>(std::max_element(energy.begin(), energy.end()) -
                                               energy.begin()); // the first of equals
    for (std::size_t i = 0; i < kPulses; ++i)
        xm[i] = x[grid + 3 * i];
    return static_cast<int>(grid);
}

// mult(x, f) >> 12 is x * f >> 27, the product's upper half >> 11: f is never -32768.
int apcmQuantAvx2(InPulses xm, Pulses xmc) noexcept
{
    const Thirteen x = Thirteen::load(xm.data());
    const int xmaxc =
        coded(avx2::maxMagnitude(_mm256_set_m128i(_mm_abs_epi16(x.low), _mm_abs_epi16(x.high))));
    const Amplitude a = decoded(xmaxc);
    const __m128i f = _mm_set1_epi16(factor(kInverseMantissa_Q15, a));
    x.each([&](__m128i v) {
         const __m128i product = _mm_mulhi_epi16(_mm_slli_epi16(v, 6 - a.exponent), f);
         return _mm_add_epi16(_mm_srai_epi16(product, 11), _mm_set1_epi16(4));
     }).store(xmc.data());
    return xmaxc;
}

bool pulsesInRange(InPulses xmc) noexcept
{
    const Thirteen x = Thirteen::load(xmc.data());
    return _mm_testz_si128(_mm_or_si128(x.low, x.high), _mm_set1_epi16(~7)) != 0;
}

void apcmDequantAvx2(InPulses xmc, int xmaxc, Pulses xmp) noexcept
{
    const Amplitude a = decoded(xmaxc);
    const int shift = 6 - a.exponent;
    const __m128i half = _mm_set1_epi16(static_cast<fx::Word>(shift == 0 ? 0 : 1 << (shift - 1)));
    const __m128i f = _mm_set1_epi16(factor(kMantissa_Q15, a));
    const auto decode = [&](__m128i v) {
        v = _mm_sub_epi16(_mm_slli_epi16(v, 13), _mm_set1_epi16(static_cast<fx::Word>(7 << 12)));
        return _mm_srai_epi16(_mm_adds_epi16(_mm_mulhrs_epi16(f, v), half), shift);
    };
    Thirteen::load(xmc.data()).each(decode).store(xmp.data());
}

} // namespace zsp::gsmfr

namespace zsp::entry {

using gsmfr::kPulses;

ZspStatus zspsWeightingFilter_GSMFR_16s(const std::int16_t* src, std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;

    gsmfr::weightAvx2(spanOf<gsmfr::kSegment>(src), spanOf<gsmfr::kSegment>(dst));
    return zspStsNoErr;
}

ZspStatus zspsRPEGridSelect_GSMFR_16s(const std::int16_t* src, std::int16_t* dst,
                                      std::int32_t* grid)
{
    if (!src || !dst || !grid) return zspStsNullPtrErr;

    *grid = gsmfr::gridSelectAvx2(spanOf<gsmfr::kSegment>(src), spanOf<kPulses>(dst));
    return zspStsNoErr;
}

ZspStatus zspsAPCMQuant_GSMFR_16s(const std::int16_t* src, std::int16_t* dst,
                                  std::int32_t* amplitude)
{
    if (!src || !dst || !amplitude) return zspStsNullPtrErr;

    *amplitude = gsmfr::apcmQuantAvx2(spanOf<kPulses>(src), spanOf<kPulses>(dst));
    return zspStsNoErr;
}

ZspStatus zspsAPCMDequant_GSMFR_16s(const std::int16_t* src, std::int32_t amplitude,
                                    std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (amplitude < 0 || amplitude > 63) return zspStsCodecRangeErr;
    if (!gsmfr::pulsesInRange(spanOf<kPulses>(src))) return zspStsCodecRangeErr;

    gsmfr::apcmDequantAvx2(spanOf<kPulses>(src), amplitude, spanOf<kPulses>(dst));
    return zspStsNoErr;
}

} // namespace zsp::entry
