// ITU-T G.711 between 16-bit linear samples and octets, in both laws.
//
// Of a sample mu-law takes the upper 14 bits and A-law the upper 13; what is cut off rounds a
// positive value down and, as negative ones are complemented first, a negative one up. A code word
// gives the middle of its interval.

#include "codecs/g711/g711_pcm.hpp"

#include "codecs/g711/g711.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"

namespace zsp::g711 {

void encodeScalar(In16 samples, Out8 codes, Law law) noexcept
{
    for (std::size_t i = 0; i < samples.size(); ++i)
        codes[i] = static_cast<std::uint8_t>(law == Law::mu ? compressMulaw(samples[i])
                                                            : compressAlaw(samples[i]));
}

void decodeScalar(In8 codes, Out16 samples, Law law) noexcept
{
    for (std::size_t i = 0; i < codes.size(); ++i)
        samples[i] = static_cast<std::int16_t>(law == Law::mu ? expandMulaw(codes[i])
                                                              : expandAlaw(codes[i]));
}

namespace {

/// A table of 16 bytes in both lanes.
__m256i table(char a, char b, char c, char d, char e, char f, char g, char h, char i, char j,
              char k, char l, char m, char n, char o, char p) noexcept
{
    return _mm256_broadcastsi128_si256(
        _mm_setr_epi8(a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p));
}

__m256i words(int value) noexcept
{
    return _mm256_set1_epi16(static_cast<std::int16_t>(value));
}

/// Position of the top bit of words 0..255, which is 0 for 0 as well.
__m256i topBits(__m256i v) noexcept
{
    const __m256i low = table(0, 0, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3, 3);
    const __m256i high = table(0, 4, 5, 5, 6, 6, 6, 6, 7, 7, 7, 7, 7, 7, 7, 7);
    // The upper byte of each word is 0 in v and in its shift, and both tables begin with 0.
    return _mm256_max_epu8(_mm256_shuffle_epi8(low, _mm256_and_si256(v, words(15))),
                           _mm256_shuffle_epi8(high, _mm256_srli_epi16(v, 4)));
}

/// 2^(15-segment), chosen by words 0..7: vpmulhuw by it shifts right by segment + 1.
__m256i downFactor(__m256i segment) noexcept
{
    const __m256i factors = table(-128, 64, 32, 16, 8, 4, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0);
    return _mm256_slli_epi16(_mm256_shuffle_epi8(factors, segment), 8);
}

/// compressMulaw() of 16 samples, in words.
__m256i compressMulaw(__m256i x) noexcept
{
    const __m256i sign = _mm256_srai_epi16(x, 15);
    const __m256i magnitude = _mm256_srli_epi16(_mm256_xor_si256(x, sign), 2);
    const __m256i biased = _mm256_min_epi16(_mm256_add_epi16(magnitude, words(33)), words(8191));
    const __m256i segment = topBits(_mm256_srli_epi16(biased, 5));
    const __m256i step =
        _mm256_and_si256(_mm256_mulhi_epu16(biased, downFactor(segment)), words(15));
    const __m256i v = _mm256_or_si256(_mm256_slli_epi16(segment, 4), step);
    // All bits inverted, the top one of negative values back again.
    return _mm256_xor_si256(_mm256_xor_si256(v, words(255)), _mm256_and_si256(sign, words(128)));
}

/// compressAlaw() of 16 samples, in words.
__m256i compressAlaw(__m256i x) noexcept
{
    const __m256i sign = _mm256_srai_epi16(x, 15);
    const __m256i m = _mm256_srli_epi16(_mm256_xor_si256(x, sign), 4);
    // Segments 0 and 1 have steps of one size: there m is the result already. From 2 on the top bit
    // of m >> 5 is segment - 2.
    const __m256i coarse = _mm256_srli_epi16(m, 5);
    const __m256i segment = topBits(coarse);
    const __m256i step = _mm256_and_si256(_mm256_mulhi_epu16(m, downFactor(segment)), words(15));
    const __m256i upper =
        _mm256_or_si256(_mm256_slli_epi16(_mm256_add_epi16(segment, words(2)), 4), step);
    const __m256i small = _mm256_cmpeq_epi16(coarse, _mm256_setzero_si256());
    const __m256i v = _mm256_blendv_epi8(upper, m, small);
    return _mm256_xor_si256(v, _mm256_xor_si256(words(0xd5), _mm256_and_si256(sign, words(128))));
}

/// 2^segment, chosen by words 0..7.
__m256i upFactor(__m256i segment) noexcept
{
    // The top bit makes the upper byte 0.
    return _mm256_shuffle_epi8(table(1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0),
                               _mm256_or_si256(segment, words(0x8000)));
}

/// Negates where bit 7 of the code word is not set.
__m256i withSign(__m256i value, __m256i code) noexcept
{
    const __m256i negative =
        _mm256_cmpeq_epi16(_mm256_and_si256(code, words(128)), _mm256_setzero_si256());
    return _mm256_sub_epi16(_mm256_xor_si256(value, negative), negative);
}

/// expandMulaw() of 16 code words, in words.
__m256i expandMulaw(__m256i code) noexcept
{
    const __m256i magnitude = _mm256_andnot_si256(code, words(127));
    const __m256i step = _mm256_and_si256(magnitude, words(15));
    const __m256i odd = _mm256_add_epi16(_mm256_slli_epi16(step, 1), words(33));
    const __m256i factor = upFactor(_mm256_srli_epi16(magnitude, 4));
    const __m256i level = _mm256_sub_epi16(_mm256_mullo_epi16(odd, factor), words(33));
    return withSign(_mm256_slli_epi16(level, 2), code);
}

/// expandAlaw() of 16 code words, in words.
__m256i expandAlaw(__m256i code) noexcept
{
    const __m256i magnitude = _mm256_and_si256(_mm256_xor_si256(code, words(0x55)), words(127));
    const __m256i segment = _mm256_srli_epi16(magnitude, 4);
    const __m256i step = _mm256_and_si256(magnitude, words(15));
    const __m256i odd = _mm256_add_epi16(_mm256_slli_epi16(step, 1), words(1));
    // From segment 1 on a leading one, and a factor of two less than the segment says.
    const __m256i one = _mm256_min_epi16(segment, words(1));
    const __m256i base = _mm256_add_epi16(odd, _mm256_slli_epi16(one, 5));
    const __m256i factor = upFactor(_mm256_sub_epi16(segment, one));
    return withSign(_mm256_slli_epi16(_mm256_mullo_epi16(base, factor), 3), code);
}

/// 32 at a time, then the definition.
template <typename Compress>
std::size_t encodeBlocks(In16 samples, Out8 codes, Compress compress) noexcept
{
    std::size_t i = 0;
    for (; i + 32 <= samples.size(); i += 32) {
        const __m256i low = compress(avx2::load(&samples[i]));
        const __m256i high = compress(avx2::load(&samples[i + 16]));
        avx2::store(&codes[i], avx2::swapMiddle(_mm256_packus_epi16(low, high)));
    }
    return i;
}

template <typename Expand>
std::size_t decodeBlocks(In8 codes, Out16 samples, Expand expand) noexcept
{
    std::size_t i = 0;
    for (; i + 16 <= codes.size(); i += 16)
        avx2::store(&samples[i], expand(_mm256_cvtepu8_epi16(avx2::load16(&codes[i]))));
    return i;
}

} // namespace

void encodeAvx2(In16 samples, Out8 codes, Law law) noexcept
{
    const std::size_t done =
        law == Law::mu ? encodeBlocks(samples, codes, [](__m256i x) { return compressMulaw(x); })
                       : encodeBlocks(samples, codes, [](__m256i x) { return compressAlaw(x); });
    encodeScalar(samples.subspan(done), codes.subspan(done), law);
}

void decodeAvx2(In8 codes, Out16 samples, Law law) noexcept
{
    const std::size_t done =
        law == Law::mu ? decodeBlocks(codes, samples, [](__m256i c) { return expandMulaw(c); })
                       : decodeBlocks(codes, samples, [](__m256i c) { return expandAlaw(c); });
    decodeScalar(codes.subspan(done), samples.subspan(done), law);
}

} // namespace zsp::g711

namespace zsp::entry {

ZspStatus zspsEncode_G711_16s8u(const std::int16_t* src, std::uint8_t* dst, std::int32_t len,
                                std::int32_t law)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;
    if (law != zspG711LawMu && law != zspG711LawA) return zspStsRangeErr;

    const auto n = static_cast<std::size_t>(len);
    g711::encodeAvx2({src, n}, {dst, n}, static_cast<g711::Law>(law));
    return zspStsNoErr;
}

ZspStatus zspsDecode_G711_8u16s(const std::uint8_t* src, std::int16_t* dst, std::int32_t len,
                                std::int32_t law)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;
    if (law != zspG711LawMu && law != zspG711LawA) return zspStsRangeErr;

    const auto n = static_cast<std::size_t>(len);
    g711::decodeAvx2({src, n}, {dst, n}, static_cast<g711::Law>(law));
    return zspStsNoErr;
}

} // namespace zsp::entry
