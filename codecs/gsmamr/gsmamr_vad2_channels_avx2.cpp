// The steps of gsmamr_vad2_channels.cpp in AVX2, equal in every result.

#include "codecs/gsmamr/gsmamr_vad2_channels.hpp"
#include "core/avx2.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace zsp::gsmamr {

using fx::Long;
using fx::Word;

namespace {

/// mpy_32_16() of longs and of positive words in 32-bit lanes.
__m256i mpy3216(__m256i a, __m256i word) noexcept
{
    const __m256i low = _mm256_srli_epi32(_mm256_slli_epi32(a, 16), 17);
    const __m256i highProduct = _mm256_madd_epi16(_mm256_srai_epi32(a, 16), word);
    const __m256i lowProduct = _mm256_srai_epi32(_mm256_madd_epi16(low, word), 15);
    return _mm256_slli_epi32(_mm256_add_epi32(highProduct, lowProduct), 1);
}

/// Left shift, up to 30, of longs that are not negative, saturating.
__m256i shiftLeft(__m256i a, int n) noexcept
{
    const __m256i most = _mm256_set1_epi32(fx::kMax32);
    const __m128i count = _mm_cvtsi32_si128(n);
    return _mm256_blendv_epi8(_mm256_sll_epi32(a, count), most,
                              _mm256_cmpgt_epi32(a, _mm256_sra_epi32(most, count)));
}

/// L_shr_r() of longs that are not negative; counts from -30 to 31.
__m256i shiftRightRounded(__m256i a, int n) noexcept
{
    if (n <= 0) return shiftLeft(a, -n);
    const __m256i twice = _mm256_sra_epi32(a, _mm_cvtsi32_si128(n - 1));
    // (a >> n) + bit n - 1
    return _mm256_add_epi32(_mm256_srai_epi32(twice, 1),
                            _mm256_and_si256(twice, _mm256_set1_epi32(1)));
}

/// Linear interpolation at `rest_Q15` of the way from entry `i` of a table to the next: the amount
/// to add to entry i, in units of 2^-15 of an entry; and entry i.
struct Interpolated {
    __m256i entry;
    __m256i beyond_Q15;
};

Interpolated interpolate(const std::array<Word, 33>& table, __m256i i, __m256i rest_Q15) noexcept
{
    const __m256i pair = avx2::gatherPairs<2>(table.data(), i);
    const __m256i entry = _mm256_and_si256(pair, _mm256_set1_epi32(0xffff));
    const __m256i rise = _mm256_sub_epi32(_mm256_srli_epi32(pair, 16), entry);
    return {entry, _mm256_madd_epi16(rise, rest_Q15)}; // words in 32-bit lanes, not negative
}

/// levelOf eight energies.
__m256i eightLevels(__m256i energies, __m256i fractionBits) noexcept
{
    const __m256i one = _mm256_set1_epi32(1);
    const __m256i x = _mm256_max_epi32(energies, one); // the logarithm of 1 is 0 as well
    const __m256i exponent = avx2::leadingBit(x);
    const __m256i y = _mm256_sllv_epi32(x, _mm256_sub_epi32(_mm256_set1_epi32(30), exponent));
    const __m256i index = _mm256_sub_epi32(_mm256_srli_epi32(y, 25), _mm256_set1_epi32(32));
    const __m256i rest_Q15 = _mm256_and_si256(_mm256_srli_epi32(y, 10), _mm256_set1_epi32(0x7fff));
    const auto [entry, beyond_Q15] = interpolate(common::kLog2, index, rest_Q15);
    const __m256i fraction_Q15 = _mm256_add_epi32(entry, _mm256_srai_epi32(beyond_Q15, 15));

    // half the level before its shift by 6, so that the shift is by 5
    const __m256i db = _mm256_set1_epi32(kDb_Q13);
    const __m256i half =
        _mm256_add_epi32(_mm256_madd_epi16(_mm256_sub_epi32(exponent, fractionBits), db),
                         _mm256_srai_epi32(_mm256_madd_epi16(fraction_Q15, db), 15));
    return _mm256_srai_epi32(_mm256_add_epi32(half, _mm256_set1_epi32(16)), 5);
}

/// Eight times the ratios of eight SNRs.
__m256i eightRatios(__m128i snrs) noexcept
{
    const __m256i product =
        _mm256_madd_epi16(_mm256_cvtepi16_epi32(snrs), _mm256_set1_epi32(kOctavesPerDb_Q15));
    const __m256i octaves_Q16 = _mm256_srai_epi32(product, 7);
    const __m256i index =
        _mm256_and_si256(_mm256_srli_epi32(octaves_Q16, 11), _mm256_set1_epi32(31));
    const __m256i rest_Q15 =
        _mm256_and_si256(_mm256_slli_epi32(octaves_Q16, 4), _mm256_set1_epi32(0x7fe0));
    const auto [entry, beyond_Q15] = interpolate(common::kPow2, index, rest_Q15);
    const __m256i mantissa_Q30 =
        _mm256_add_epi32(_mm256_slli_epi32(entry, 16), _mm256_slli_epi32(beyond_Q15, 1));

    // 30 - (exponent + 3). Counts of 32 and more, and negative ones, shift everything out.
    const __m256i count =
        _mm256_sub_epi32(_mm256_set1_epi32(27), _mm256_srai_epi32(octaves_Q16, 16));
    const __m256i minusOne = _mm256_set1_epi32(-1);
    const __m256i twice = _mm256_srlv_epi32(mantissa_Q30, _mm256_add_epi32(count, minusOne));
    const __m256i ratio = _mm256_add_epi32(_mm256_srlv_epi32(mantissa_Q30, count),
                                           _mm256_and_si256(twice, _mm256_set1_epi32(1)));
    // a mantissa is at least 2^30: any left shift saturates
    return _mm256_blendv_epi8(ratio, _mm256_set1_epi32(fx::kMax32),
                              _mm256_cmpgt_epi32(_mm256_setzero_si256(), count));
}

/// The saturated sum of sixteen longs that are not negative.
Long sumOf(__m256i a, __m256i b) noexcept
{
    const __m256i low = _mm256_set1_epi64x(0xffffffff);
    const __m256i even = _mm256_add_epi64(_mm256_and_si256(a, low), _mm256_and_si256(b, low));
    const __m256i odd = _mm256_add_epi64(_mm256_srli_epi64(a, 32), _mm256_srli_epi64(b, 32));
    return fx::sat32(avx2::sum64(_mm256_add_epi64(even, odd)));
}

/// The energy of one channel; squares are not negative, so the sum is limited once. `squares` holds
/// re^2 + im^2 of each bin, at most 2^31.
template <std::size_t channel>
Long channelEnergy(const std::array<std::uint32_t, kFftLength / 2>& squares) noexcept
{
    std::int64_t sum = 0;
    for (std::size_t bin = kChannelBins[channel].first; bin <= kChannelBins[channel].last; ++bin)
        sum += squares[bin];
    return fx::sat32(2 * sum);
}

/// The weight of the new energies by channel, Q15 in 32-bit lanes.
__m256i freshWeights(Mix mix, std::size_t first) noexcept
{
    const __m256i gains = _mm256_cvtepi16_epi32(avx2::load8(&kChannelGain_Q15[first]));
    return _mm256_srli_epi32(_mm256_madd_epi16(gains, _mm256_set1_epi32(mix.fresh_Q15)), 15);
}

} // namespace

int Vad2Avx2::normalise(InHalf samples, OutHalf normalised) noexcept
{
    __m256i peaks = _mm256_setzero_si256();
    for (std::size_t i = 0; i < kVad2Half; i += 16) // 32768 is right as an unsigned word
        peaks = _mm256_max_epu16(peaks, _mm256_abs_epi16(avx2::load(&samples[i])));
    const __m128i most =
        _mm_max_epu16(_mm256_castsi256_si128(peaks), _mm256_extracti128_si256(peaks, 1));
    const int complement =
        _mm_extract_epi16(_mm_minpos_epu16(_mm_xor_si128(most, _mm_set1_epi16(-1))), 0);
    const int shift = shiftFor(fx::sat16(0xffff - complement));

    const __m128i left = _mm_cvtsi32_si128(std::max(shift, 0));
    const __m128i right = _mm_cvtsi32_si128(std::max(-shift, 0));
    for (std::size_t i = 0; i < kVad2Half; i += 16)
        avx2::store(&normalised[i],
                    _mm256_sra_epi16(_mm256_sll_epi16(avx2::load(&samples[i]), left), right));
    return shift;
}

void Vad2Avx2::smoothEnergies(Spectrum bins, int shift, Mix mix, Long least,
                              Energies energies) noexcept
{
    alignas(32) std::array<std::uint32_t, kFftLength / 2> squares;
    for (std::size_t i = 0; i < squares.size(); i += 8) {
        const __m256i z = avx2::load(&bins[2 * i]);
        _mm256_store_si256(reinterpret_cast<__m256i*>(&squares[i]), _mm256_madd_epi16(z, z));
    }
    alignas(32) std::array<Long, kChannels> raw;
    [&]<std::size_t... c>(std::index_sequence<c...>)
    {
        ((raw[c] = channelEnergy<c>(squares)), ...);
    }
    (std::make_index_sequence<kChannels>{});

    for (std::size_t c = 0; c < kChannels; c += 8) {
        const __m256i fresh =
            mpy3216(shiftRightRounded(avx2::load(&raw[c]), shift), freshWeights(mix, c));
        const __m256i old = mpy3216(avx2::load(&energies[c]), _mm256_set1_epi32(mix.old_Q15));
        avx2::store(&energies[c],
                    _mm256_max_epi32(_mm256_add_epi32(fresh, old), _mm256_set1_epi32(least)));
    }
}

TotalAndPeak Vad2Avx2::totalAndPeak(InEnergies energies) noexcept
{
    const __m256i lower = avx2::load(&energies[0]);
    const __m256i upper = avx2::load(&energies[8]);
    static_assert(kPeakFrom == 2);
    const __m256i counting = _mm256_blend_epi32(lower, _mm256_setzero_si256(), 0b11);
    return {sumOf(lower, upper), avx2::max32(_mm256_max_epi32(counting, upper))};
}

void Vad2Avx2::levels(InEnergies energies, int fractionBits, Levels levels) noexcept
{
    const __m256i bits = _mm256_set1_epi32(fractionBits);
    avx2::store(levels.data(), avx2::packInOrder(eightLevels(avx2::load(&energies[0]), bits),
                                                 eightLevels(avx2::load(&energies[8]), bits)));
}

Word Vad2Avx2::snrs(InLevels levels, InLevels noise, Levels snrs) noexcept
{
    const __m256i snr = _mm256_subs_epi16(avx2::load(levels.data()), avx2::load(noise.data()));
    avx2::store(snrs.data(), snr);
    const __m256i steps = _mm256_srai_epi16(
        _mm256_add_epi16(avx2::mult(_mm256_set1_epi16(kSnrStep_Q15), snr), _mm256_set1_epi16(32)),
        6);
    alignas(32) std::array<Word, kChannels> index;
    avx2::store(index.data(), _mm256_min_epi16(_mm256_max_epi16(steps, _mm256_setzero_si256()),
                                               _mm256_set1_epi16(static_cast<Word>(kLastMetric))));
    int metric = 0; // sixteen times at most 50
    for (const Word i : index)
        metric += kVoiceMetric[static_cast<std::size_t>(i)];
    return static_cast<Word>(metric);
}

Long Vad2Avx2::ratioSum(InLevels snrs) noexcept
{
    return sumOf(eightRatios(avx2::load8(&snrs[0])), eightRatios(avx2::load8(&snrs[8])));
}

Word Vad2Avx2::deviation(InLevels levels, InLevels longTerm) noexcept
{
    const __m256i d = _mm256_subs_epi16(avx2::load(longTerm.data()), avx2::load(levels.data()));
    const __m256i distance = _mm256_max_epi16(d, _mm256_subs_epi16(_mm256_setzero_si256(), d));
    return fx::sat16(avx2::sum32(_mm256_madd_epi16(distance, _mm256_set1_epi16(1))));
}

void Vad2Avx2::follow(InLevels levels, Mix mix, Levels longTerm) noexcept
{
    const __m256i fresh = avx2::load(levels.data());
    const __m256i old = avx2::load(longTerm.data());
    const __m256i weights = _mm256_set1_epi32(mix.old_Q15 * 65536 + mix.fresh_Q15);
    const auto rounded = [&](__m256i freshAndOld) {
        return _mm256_srai_epi32(
            _mm256_add_epi32(_mm256_madd_epi16(freshAndOld, weights), _mm256_set1_epi32(1 << 14)),
            15);
    };
    avx2::store(longTerm.data(), _mm256_packs_epi32(rounded(_mm256_unpacklo_epi16(fresh, old)),
                                                    rounded(_mm256_unpackhi_epi16(fresh, old))));
}

void Vad2Avx2::updateNoise(InEnergies energies, int shift, Energies noise) noexcept
{
    for (std::size_t c = 0; c < kChannels; c += 8) {
        const __m256i fresh = mpy3216(shiftLeft(avx2::load(&energies[c]), shift),
                                      _mm256_set1_epi32(kNoiseMix.fresh_Q15));
        const __m256i old = mpy3216(avx2::load(&noise[c]), _mm256_set1_epi32(kNoiseMix.old_Q15));
        avx2::store(&noise[c], _mm256_max_epi32(_mm256_add_epi32(fresh, old),
                                                _mm256_set1_epi32(kMinNoise_Q9)));
    }
}

} // namespace zsp::gsmamr
