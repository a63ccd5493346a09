// Quantiser of the comfort-noise (SID) ISFs, 3GPP TS 26.190 and 26.192: the mean is taken off and
// five sub-vectors go each to the codevector of least squared error; no prediction.
//
//   isf = mean + codevectors, then raised to at least 128 above the element before

#include "codecs/amrwb/amrwb_isf.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <algorithm>

namespace zsp::amrwb {

namespace {

constexpr fx::Word kSpacing = 128;

struct Codebook {
    std::size_t first;               // element of the ISF vector
    std::size_t dimension;           // 2 to 4
    std::span<const fx::Word> words; // kCodevector a codevector

    constexpr std::size_t size() const noexcept { return words.size() / kCodevector; }
};

constexpr std::array<Codebook, kNoiseBooks> kBooks = {{
    {0, 2, kNoiseBook1},
    {2, 3, kNoiseBook2},
    {5, 3, kNoiseBook3},
    {8, 4, kNoiseBook4},
    {12, 4, kNoiseBook5},
}};
static_assert(std::ranges::all_of(kBooks, [](const Codebook& book) {
    return std::has_single_bit(book.size()) && book.size() % 8 == 0;
}));

/// A sub-vector without its mean, padded with zeros as the codevectors are.
using Residual = std::array<fx::Word, kCodevector>;

/// The definition. Errors saturate, and of equal ones the first wins: where all saturate, entry 0.
std::size_t nearestScalar(const Codebook& book, const Residual& residual) noexcept
{
    std::size_t nearest = 0;
    fx::Long least = fx::kMax32;
    for (std::size_t entry = 0; entry < book.size(); ++entry) {
        fx::Long error = 0;
        for (std::size_t j = 0; j < kCodevector; ++j) {
            const fx::Word d = fx::sub(residual[j], book.words[entry * kCodevector + j]);
            error = fx::l_mac(error, d, d);
        }
        if (error < least) {
            least = error;
            nearest = entry;
        }
    }
    return nearest;
}

/// Half the saturated errors of eight codevectors, 0, 1, 4, 5, 2, 3, 6 and 7.
///
/// Squares are not negative, so the sum saturates in the end if it does on the way. vpmaddwd gives
/// at most 2^31, which is right as an unsigned number.
__m256i halfErrors(const fx::Word* codevectors, __m256i residual) noexcept
{
    const __m256i half = _mm256_set1_epi32(1 << 30);
    const auto squares = [&](const fx::Word* four) {
        const __m256i d = _mm256_subs_epi16(residual, avx2::load(four));
        return _mm256_min_epu32(_mm256_madd_epi16(d, d), half);
    };
    const __m256i sums =
        _mm256_hadd_epi32(squares(codevectors), squares(codevectors + 4 * kCodevector));
    return _mm256_min_epu32(sums, half);
}

std::size_t nearestAvx2(const Codebook& book, const Residual& residual) noexcept
{
    __m256i entry = _mm256_setr_epi32(0, 1, 4, 5, 2, 3, 6, 7);
    __m256i nearest = _mm256_setzero_si256();
    __m256i least = _mm256_set1_epi32(1 << 30);
    const __m256i target = _mm256_set1_epi64x(std::bit_cast<std::int64_t>(residual));
    for (std::size_t i = 0; i < book.words.size(); i += 8 * kCodevector) {
        const __m256i errors = halfErrors(&book.words[i], target);
        const __m256i isLess = _mm256_cmpgt_epi32(least, errors);
        nearest = _mm256_blendv_epi8(nearest, entry, isLess);
        least = _mm256_min_epi32(least, errors);
        entry = _mm256_add_epi32(entry, _mm256_set1_epi32(8));
    }
    const __m256i isLeast = _mm256_cmpeq_epi32(least, _mm256_set1_epi32(avx2::min32(least)));
    const __m256i others = _mm256_andnot_si256(isLeast, _mm256_set1_epi32(fx::kMax32));
    return static_cast<std::size_t>(avx2::min32(_mm256_or_si256(nearest, others)));
}

template <auto nearest>
NoiseIndices quantise(InIsf isf) noexcept
{
    NoiseIndices indices{};
    for (std::size_t b = 0; b < kNoiseBooks; ++b) {
        const Codebook& book = kBooks[b];
        Residual residual{};
        for (std::size_t j = 0; j < book.dimension; ++j)
            residual[j] = fx::sub(isf[book.first + j], kNoiseMean[book.first + j]);
        indices[b] = static_cast<fx::Word>(nearest(book, residual));
    }
    return indices;
}

} // namespace

NoiseIndices quantiseNoiseScalar(InIsf isf) noexcept
{
    return quantise<nearestScalar>(isf);
}

NoiseIndices quantiseNoiseAvx2(InIsf isf) noexcept
{
    return quantise<nearestAvx2>(isf);
}

void decodeNoise(const NoiseIndices& indices, OutIsf isf) noexcept
{
    for (std::size_t b = 0; b < kNoiseBooks; ++b) {
        const Codebook& book = kBooks[b];
        const std::size_t entry = static_cast<std::uint16_t>(indices[b]) & (book.size() - 1);
        for (std::size_t j = 0; j < book.dimension; ++j)
            isf[book.first + j] =
                fx::add(book.words[entry * kCodevector + j], kNoiseMean[book.first + j]);
    }
    fx::Word least = kSpacing;
    for (fx::Word& element : isf.first<kIsfOrder - 1>()) { // the last one is at half scale
        element = std::max(element, least);
        least = fx::add(element, kSpacing);
    }
}

} // namespace zsp::amrwb

namespace zsp::entry {

ZspStatus zspsISFQuantDTX_AMRWB_16s(const std::int16_t* isf, std::int16_t* quantised,
                                    std::int16_t* indices)
{
    if (!isf || !quantised || !indices) return zspStsNullPtrErr;

    const amrwb::NoiseIndices best = amrwb::quantiseNoiseAvx2(amrwb::InIsf{isf, amrwb::kIsfOrder});
    std::ranges::copy(best, indices);
    amrwb::decodeNoise(best, amrwb::OutIsf{quantised, amrwb::kIsfOrder});
    return zspStsNoErr;
}

ZspStatus zspsISFQuantDecodeDTX_AMRWB_16s(const std::int16_t* indices, std::int16_t* isf)
{
    if (!indices || !isf) return zspStsNullPtrErr;

    amrwb::NoiseIndices given;
    std::copy_n(indices, given.size(), given.begin());
    amrwb::decodeNoise(given, amrwb::OutIsf{isf, amrwb::kIsfOrder});
    return zspStsNoErr;
}

} // namespace zsp::entry
